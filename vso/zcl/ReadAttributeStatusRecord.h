// One attribute of a read attributes response.
#pragma once

#include "vso/zcl/AttributeRecordData.h"

namespace qx {

/// Type and value mean something only if `status_` is 0: the record of a failed attribute that was read from a frame
/// shows those of the record before it.
class ReadAttributeStatusRecord : public AttributeRecordData {
 public:
  using AttributeRecordData::AttributeRecordData;

  /// A ZclStatus.
  unsigned char status_ = 0;
};

}  // namespace qx
