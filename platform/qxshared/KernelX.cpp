#include "qxshared/KernelX.h"

namespace qx {

int KernelX::gettime(timespec& now) { return clock_gettime(CLOCK_REALTIME, &now); }

}  // namespace qx
