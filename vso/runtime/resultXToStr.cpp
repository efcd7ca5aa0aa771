#include "vso/runtime/resultXToStr.h"

namespace qx {

const char* resultXToStr(long result) {
  switch (result) {
    case 0:
      return "RX_SUCCESS";
    case -1:
      return "RX_FAIL";
    case -2:
      return "RX_OUTOFMEMORY";
    case -3:
      return "RX_POINTER";
    case -4:
      return "RX_NOINTERFACE";
    case -5:
      return "RX_NOTIMPL";
    case -6:
      return "RX_DISCONNECTED";
    case -7:
      return "RX_TIMEOUT";
    case -8:
      return "RX_SHUTDOWN";
    case -9:
      return "RX_NOBINDING";
    default:
      return "RX_UNKNOWN";
  }
}

}  // namespace qx
