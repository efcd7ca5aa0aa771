// The names of the platform's result codes.
#pragma once

namespace qx {

/// "RX_SUCCESS" for 0, the name of the failure for -1 to -9, "RX_UNKNOWN" for any other.
const char* resultXToStr(long result);

}  // namespace qx
