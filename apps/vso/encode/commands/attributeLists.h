// The list of a general command, from the arguments to the frame.
#pragma once

#include "apps/vso/encode/Arguments.h"
#include "vso/zcl/ZclMessage.h"

namespace qx::app {

// Each takes the argument "attribute", and throws BadArgument if the list does not fit into the frame.
void fillReadAttributes(ZclMessage& frame, const Arguments& in);
void fillReadAttributesResponse(ZclMessage& frame, const Arguments& in);
void fillNoReadAttributesResponse(ZclMessage& frame, const Arguments& in);
void fillWriteAttributes(ZclMessage& frame, const Arguments& in);
void fillWriteAttributesResponse(ZclMessage& frame, const Arguments& in);
void fillReportAttributes(ZclMessage& frame, const Arguments& in);

// The argument "attribute" in the kinds that these lists are made of.
constexpr Argument attributes(ArgumentKind kind, const char* description) {
  return Argument{"attribute", kind, description}.repeated();
}
constexpr Argument ATTRIBUTE_IDS = attributes(ArgumentKind::ATTRIBUTE_ID, "Id of an attribute");
constexpr Argument ATTRIBUTE_VALUES =
    attributes(ArgumentKind::ATTRIBUTE_VALUE, "An attribute and its value: 0x0000:uint16:5");
constexpr Argument ATTRIBUTE_ANSWERS =
    attributes(ArgumentKind::ATTRIBUTE_ANSWER,
               "An attribute and its value, 0x0000:uint16:5, or why there is none, 0x0001:unsupported-attribute");
constexpr Argument ATTRIBUTE_STATUSES =
    attributes(ArgumentKind::ATTRIBUTE_STATUS, "An attribute and its status: 0x0000:success, 0x0001:0x88");

}  // namespace qx::app
