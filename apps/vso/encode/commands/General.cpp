#include "apps/vso/encode/builtFrames.h"
#include "apps/vso/encode/commands/attributeLists.h"
#include "apps/vso/encode/commands/commandGroups.h"
#include "vso/zcl/ZclGeneralCommand.h"

namespace qx::app {

namespace {

using Fill = void(ZclMessage& frame, const Arguments& in);

/// Any cluster has these commands, so that the ids and the direction are arguments.
template <unsigned char command, Fill& fill>
BuiltFrame general(const Arguments& in) {
  const bool isMakers = in.has("manufacturer-code");
  ZclMessage frame(command, isMakers, false);
  if (in.has("from-server")) frame.setFcf(ZclMessage::FROM_SERVER);
  if (isMakers) frame.setMc(in.u16("manufacturer-code"));
  fill(frame, in);
  return zclFrame(frame, in.u16("profile"), in.u16("cluster"), in);
}

std::vector<Argument> argumentsWith(const Argument& attributes) {
  return zclArguments({attributes, u16("cluster", "Cluster of the attributes"),
                       u16("profile", "Profile of the cluster").within(1, 0xFFFF).orElse("0x0104"),
                       u16("manufacturer-code", "For attributes of a manufacturer's own").optional(),
                       flag("from-server", "The frame goes from the cluster's server to a client")});
}

}  // namespace

CommandGroup generalCommands() {
  using namespace ZclGeneralCommand;
  const std::vector<Argument> ids = argumentsWith(ATTRIBUTE_IDS);
  const std::vector<Argument> values = argumentsWith(ATTRIBUTE_VALUES);
  return {
      "general",
      "Commands that every cluster has",
      {
          {"read-attributes", "Ask for the values of attributes", ids, general<READ_ATTRIBUTES, fillReadAttributes>},
          {"read-attributes-response", "Answer with the values of attributes", argumentsWith(ATTRIBUTE_ANSWERS),
           general<READ_ATTRIBUTES_RESPONSE, fillReadAttributesResponse>},
          {"no-read-attributes-response", "Refuse each attribute as unsupported", ids,
           general<READ_ATTRIBUTES_RESPONSE, fillNoReadAttributesResponse>},
          {"write-attributes", "Give attributes a value", values, general<WRITE_ATTRIBUTES, fillWriteAttributes>},
          {"write-attributes-no-response", "The same, to be left without an answer", values,
           general<WRITE_ATTRIBUTES_NO_RESPONSE, fillWriteAttributes>},
          {"write-attributes-response", "Answer how writing went", argumentsWith(ATTRIBUTE_STATUSES),
           general<WRITE_ATTRIBUTES_RESPONSE, fillWriteAttributesResponse>},
          {"report-attributes", "Tell the values of attributes unasked", values,
           general<REPORT_ATTRIBUTES, fillReportAttributes>},
      }};
}

}  // namespace qx::app
