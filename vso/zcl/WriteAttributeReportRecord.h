// One attribute of a write attributes response.
#pragma once

#include "vso/zcl/AttributeRecordData.h"

namespace qx {

/// Type and value are zero in a record that was read from a frame: the response does not repeat them.
class WriteAttributeReportRecord : public AttributeRecordData {
 public:
  using AttributeRecordData::AttributeRecordData;

  /// A ZclStatus.
  unsigned char status_ = 0;
};

}  // namespace qx
