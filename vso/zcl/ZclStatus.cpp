#include "vso/zcl/ZclStatus.h"

#include "vso/zcl/ZclMessage.h"

namespace qx {

const char* ZclMessage::zclStatusToStr(ZclStatus status) {
  switch (status) {
    case ZCL_SUCCESS:
      return "ZCL_SUCCESS";
    case ZCL_FAILURE:
      return "ZCL_FAILURE";
    case ZCL_MALFORMED_COMMAND:
      return "ZCL_MALFORMED_COMMAND";
    case ZCL_UNSUP_CLUSTER_COMMAND:
      return "ZCL_UNSUP_CLUSTER_COMMAND";
    case ZCL_UNSUP_GENERAL_COMMAND:
      return "ZCL_UNSUP_GENERAL_COMMAND";
    case ZCL_UNSUP_MANUF_CLUSTER_COMMAND:
      return "ZCL_UNSUP_MANUF_CLUSTER_COMMAND";
    case ZCL_UNSUP_MANUF_GENERAL_COMMAND:
      return "ZCL_UNSUP_MANUF_GENERAL_COMMAND";
    case ZCL_INVALID_FIELD:
      return "ZCL_INVALID_FIELD";
    case ZCL_UNSUPPORTED_ATTRIBUTE:
      return "ZCL_UNSUPPORTED_ATTRIBUTE";
    case ZCL_INVALID_VALUE:
      return "ZCL_INVALID_VALUE";
    case ZCL_READ_ONLY:
      return "ZCL_READ_ONLY";
    case ZCL_INSUFFICIENT_SPACE:
      return "ZCL_INSUFFICIENT_SPACE";
    case ZCL_DUPLICATE_EXISTS:
      return "ZCL_DUPLICATE_EXISTS";
    case ZCL_NOT_FOUND:
      return "ZCL_NOT_FOUND";
    case ZCL_UNREPORTABLE_ATTRIBUTE:
      return "ZCL_UNREPORTABLE_ATTRIBUTE";
    case ZCL_INVALID_DATA_TYPE:
      return "ZCL_INVALID_DATA_TYPE";
    case ZCL_HARDWARE_FAILURE:
      return "ZCL_HARDWARE_FAILURE";
    case ZCL_SOFTWARE_FAILURE:
      return "ZCL_SOFTWARE_FAILURE";
    case ZCL_CALIBRATION_ERROR:
      return "ZCL_CALIBRATION_ERROR";
  }
  return "ZCL_UKNOWN_STATUS";
}

}  // namespace qx
