#include "vso/zdo/ZdoStatus.h"

#include "vso/zdo/ZdoResponse.h"

namespace qx {

const char* ZdoResponse::statusStr(ZdoStatus status) {
  switch (status) {
    case QX_ZDP_SUCCESS:
      return "QX_ZDP_SUCCESS";
    case QX_ZDP_INVALID_REQUEST_TYPE:
      return "QX_ZDP_INVALID_REQUEST_TYPE";
    case QX_ZDP_DEVICE_NOT_FOUND:
      return "QX_ZDP_DEVICE_NOT_FOUND";
    case QX_ZDP_INVALID_ENDPOINT:
      return "QX_ZDP_INVALID_ENDPOINT";
    case QX_ZDP_NOT_ACTIVE:
      return "QX_ZDP_NOT_ACTIVE";
    case QX_ZDP_NOT_SUPPORTED:
      return "QX_ZDP_NOT_SUPPORTED";
    case QX_ZDP_TIMEOUT:
      return "QX_ZDP_TIMEOUT";
    case QX_ZDP_NO_MATCH:
      return "QX_ZDP_NO_MATCH";
    case QX_ZDP_TABLE_FULL:
      return "QX_ZDP_TABLE_FULL";
    case QX_ZDP_NO_ENTRY:
      return "QX_ZDP_NO_ENTRY";
    case QX_ZDP_NO_DESCRIPTOR:
      return "QX_ZDP_NO_DESCRIPTOR";
    case QX_NWK_ALREADY_PRESENT:
      return "QX_NWK_ALREADY_PRESENT";
    case QX_NWK_TABLE_FULL:
      return "QX_NWK_TABLE_FULL";
    case QX_NWK_UNKNOWN_DEVICE:
      return "QX_NWK_UNKNOWN_DEVICE";
  }
  return "QX_UKNOWN_ZDP_STATUS";
}

}  // namespace qx
