#include "vso/zcl/getHostName.h"

#include <unistd.h>

namespace qx {

std::string getHostName() {
  char name[80] = {};
  // A failure leaves zeros, or a name that was cut.
  static_cast<void>(::gethostname(name, sizeof name - 1));
  return name;
}

}  // namespace qx
