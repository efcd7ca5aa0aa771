#include "vso/runtime/sleep.h"

#include <unistd.h>

namespace qx {

void msleep(unsigned int milliseconds) { ::usleep(milliseconds * 1000); }

void zyield() { ::usleep(100); }

}  // namespace qx
