#include <algorithm>

#include "apps/vso/encode/builtFrames.h"
#include "apps/vso/encode/commands/commandGroups.h"
#include "vso/zcl/QxZclAnnounce.h"
#include "vso/zcl/QxZclImmediateAnnounce.h"
#include "vso/zcl/ZclGeneralCommand.h"

namespace qx::app {

namespace {

constexpr long long LONGEST_TEXT = 199;

/// Arguments of the constructor that takes attributes.
constexpr const char* FIVE[] = {"announce-window", "boot-count", "reflash-version", "firmware-version",
                                "product-string"};

constexpr Argument ATTRIBUTES[] = {
    u8("device-type", "Kind of device").optional(),
    u16("mtorr-period", "Period of many-to-one route requests").optional(),
    u8("num-zaps", "Access points that the device knows").optional(),
    u16("ap-poll-interval", "How often the device polls its access point").optional(),
    u8("channel", "Radio channel").optional(),
    u16("parent-poll-interval", "How often the device polls its parent").optional(),
    i8("node-rssi", "dBm").optional(),
    u8("node-lqi", "Link quality").optional(),
    i8("battery-level", "State of the battery").optional(),
    u8("node-radio-bars", "Bars of the radio's signal").optional(),
    u16("announce-window", "Announce window").optional(),
    u16("boot-count", "How often the device started").optional(),
    u8("reflash-version", "Version of the reflash").optional(),
    text("firmware-version", "Does not read back in a frame that has a product string too", LONGEST_TEXT).optional(),
    text("product-string", "Name of the product", LONGEST_TEXT).optional(),
};

bool areExactlyFive(const Arguments& in) {
  return std::all_of(std::begin(ATTRIBUTES), std::end(ATTRIBUTES), [&in](const Argument& attribute) {
    const bool isOfFive = std::find(std::begin(FIVE), std::end(FIVE), std::string(attribute.name)) != std::end(FIVE);
    return in.has(attribute.name) == isOfFive;
  });
}

/// A report of the attributes that were given. Of the strings of a frame only the one that was written last reads
/// back, so both come behind the numbers.
QxZclAnnounce reportOf(const Arguments& in) {
  if (areExactlyFive(in)) {
    return QxZclAnnounce(in.u16("announce-window"), in.u16("boot-count"), in.u8("reflash-version"),
                         in.text("firmware-version"), in.text("product-string"));
  }
  QxZclAnnounce frame(ZclMessage(ZclGeneralCommand::REPORT_ATTRIBUTES, false, false));
  if (in.has("device-type")) frame.deviceType(in.u8("device-type"));
  if (in.has("mtorr-period")) frame.mtorrPeriod(in.u16("mtorr-period"));
  if (in.has("num-zaps")) frame.numZaps(in.u8("num-zaps"));
  if (in.has("ap-poll-interval")) frame.apPollInterval(in.u16("ap-poll-interval"));
  if (in.has("channel")) frame.channel(in.u8("channel"));
  if (in.has("parent-poll-interval")) frame.parentPollInterval(in.u16("parent-poll-interval"));
  if (in.has("node-rssi")) frame.nodeRssi(in.i8("node-rssi"));
  if (in.has("node-lqi")) frame.nodeLqi(in.u8("node-lqi"));
  if (in.has("battery-level")) frame.batteryLevel(in.i8("battery-level"));
  if (in.has("node-radio-bars")) frame.nodeRadioBars(in.u8("node-radio-bars"));
  if (in.has("announce-window")) frame.announceWindow(in.u16("announce-window"));
  if (in.has("boot-count")) frame.bootCount(in.u16("boot-count"));
  if (in.has("reflash-version")) frame.reflashVersion(in.u8("reflash-version"));
  if (in.has("firmware-version")) frame.firmwareVersion(in.text("firmware-version"));
  if (in.has("product-string")) frame.productString(in.text("product-string"));
  return frame;
}

BuiltFrame report(const Arguments& in) {
  QxZclAnnounce frame = reportOf(in);
  // The library drops what does not fit. How much that is cannot be told beforehand: the first character of a string
  // that is written anew counts as its length.
  if (frame.length_ == ZclMessage::CAPACITY) throw BadArgument("the attributes do not fit into a frame");
  return zclFrame(frame, in);
}

}  // namespace

CommandGroup announceCommands() {
  return {"announce",
          "What a device tells the server of itself",
          {
              {"report", "A report of those attributes that are given, without all of them an empty one",
               zclArguments({std::begin(ATTRIBUTES), std::end(ATTRIBUTES)}), report},
          }};
}

CommandGroup immediateAnnounceCommands() {
  return {"immediate-announce",
          "Ask devices to announce themselves now",
          {
              {"request", "The maker's own list of ids", zclArguments({u16List("ids", "The ids").orElse("")}),
               [](const Arguments& in) {
                 QxZclImmediateAnnounce frame(in.u16List("ids"));
                 return zclFrame(frame, in);
               }},
          }};
}

}  // namespace qx::app
