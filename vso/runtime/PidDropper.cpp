#include "vso/runtime/PidDropper.h"

#include <unistd.h>

#include <fstream>

namespace qx {

PidDropper::PidDropper(const std::string& path, bool remove) : path_(path), remove_(remove) {
  std::ofstream file(path_, std::ios::trunc);
  file << std::to_string(::getpid()) << '\n';  // as text: a locale may group the digits of a number
}

PidDropper::~PidDropper() {
  if (remove_) ::unlink(path_.c_str());
}

}  // namespace qx
