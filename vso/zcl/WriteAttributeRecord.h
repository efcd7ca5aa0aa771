// One attribute of a write attributes command.
#pragma once

#include "vso/zcl/AttributeRecordData.h"

namespace qx {

class WriteAttributeRecord : public AttributeRecordData {
 public:
  using AttributeRecordData::AttributeRecordData;
};

}  // namespace qx
