#include <algorithm>

#include "apps/vso/encode/builtFrames.h"
#include "apps/vso/encode/commands/commandGroups.h"
#include "vso/zcl/ZclOtaUpgrade.h"

namespace qx::app {

namespace {

constexpr Argument STATUS = status("status", "Number or name of a status");
constexpr Argument MANUFACTURER_CODE = u16("manufacturer-code", "Manufacturer of the image");
constexpr Argument IMAGE_TYPE = u16("image-type", "Type of the image");
constexpr Argument FILE_VERSION = u32("file-version", "Version of the image");
constexpr Argument FILE_OFFSET = u32("file-offset", "Bytes in front of those in question");

/// Bytes of an image that a frame has room for.
constexpr long long LARGEST_BLOCK = 238;

/// Reads what names an image.
template <typename Record>
void takeImage(const Arguments& in, Record& record) {
  record.manufacturerCode = in.u16("manufacturer-code");
  record.imageType = in.u16("image-type");
  record.fileVersion = in.u32("file-version");
}

BuiltFrame imageNotify(const Arguments& in) {
  ImageNotifyCommand command;
  command.payloadType = in.u8("payload-type");
  command.queryJitter = in.u8("query-jitter");
  in.goOutIf(command.payloadType >= ImageNotifyCommand::WITH_MANUFACTURER_CODE, "payload type 1 to 3",
             {"manufacturer-code"});
  in.goOutIf(command.payloadType >= ImageNotifyCommand::WITH_IMAGE_TYPE, "payload type 2 and 3", {"image-type"});
  in.goOutIf(command.payloadType >= ImageNotifyCommand::WITH_FILE_VERSION, "payload type 3", {"file-version"});
  takeImage(in, command);
  ZclOtaUpgrade frame(ZclOtaUpgrade::IMAGE_NOTIFY);
  frame.imageNotify(command);
  return zclFrame(frame, in);
}

BuiltFrame queryNextImageResponse(const Arguments& in) {
  QueryNextImageResponse response;
  response.status = in.status("status");
  in.goOutIf(response.status == 0, "status 0", {"manufacturer-code", "image-type", "file-version", "image-size"});
  takeImage(in, response);
  response.imageSize = in.u32("image-size");
  ZclOtaUpgrade frame(ZclOtaUpgrade::QUERY_NEXT_IMAGE_RESPONSE);
  frame.queryNextImageResponse(response);
  return zclFrame(frame, in);
}

BuiltFrame imageBlockResponse(const Arguments& in) {
  ImageBlockResponse response;
  response.status = in.status("status");
  takeImage(in, response);
  response.fileOffset = in.u32("file-offset");
  const std::vector<unsigned char> data = in.octets("data");
  ZclOtaUpgrade frame(ZclOtaUpgrade::IMAGE_BLOCK_RESPONSE);
  frame.imageBlockResponse(response, data.data(), static_cast<unsigned char>(data.size()));
  return zclFrame(frame, in);
}

BuiltFrame upgradeEndResponse(const Arguments& in) {
  UpgradeEndResponse response;
  takeImage(in, response);
  response.currentTime = in.u32("current-time");
  response.upgradeTime = in.u32("upgrade-time");
  ZclOtaUpgrade frame(ZclOtaUpgrade::UPGRADE_END_RESPONSE);
  frame.upgradeEndResponse(response);
  return zclFrame(frame, in);
}

/// A frame of the device's side, which does not come from the server.
ZclOtaUpgrade request(unsigned char commandId) {
  ZclOtaUpgrade frame(commandId);
  frame.setFcf(0);
  return frame;
}

BuiltFrame upgradeEndRequest(const Arguments& in) {
  UpgradeEndRequest end;
  end.status = in.status("status");
  takeImage(in, end);
  ZclOtaUpgrade frame = request(ZclOtaUpgrade::UPGRADE_END_REQUEST);
  frame.sendUpgradeEndRequest(end);
  return zclFrame(frame, in);
}

BuiltFrame imagePageRequest(const Arguments& in) {
  ImagePageRequest page;
  takeImage(in, page);
  page.fileOffset = in.u32("file-offset");
  page.maximumDataSize = in.u8("maximum-data-size");
  page.pageSize = in.u16("page-size");
  page.responseSpacing = in.u16("response-spacing");
  if (in.has("request-node-address")) {
    page.fieldControl = ImagePageRequest::HAS_REQUEST_NODE_ADDRESS;
    const Euid address = in.address("request-node-address");
    std::reverse_copy(address.cArray(), address.cArray() + address.length(), page.requestNodeAddress.begin());
  }
  ZclOtaUpgrade frame = request(ZclOtaUpgrade::IMAGE_PAGE_REQUEST);
  frame.testingImagePageRequest(page);
  return zclFrame(frame, in);
}

/// A read of attributes. An object that was made for a command stays cluster specific and would not do.
template <void (ZclOtaUpgrade::*command)()>
BuiltFrame readAttributes(const Arguments& in) {
  ZclOtaUpgrade frame(std::vector<unsigned short>{});
  (frame.*command)();
  return zclFrame(frame, in);
}

BuiltFrame unsupportedCommand(const Arguments& in) {
  // The frame takes its sequence number when the answer is made of it, and needs none before.
  ZclOtaUpgrade frame{U255Buff<unsigned char>()};
  frame.sendUnsupportedCommand(in.u8("command-id"));
  return zclFrame(frame, in);
}

}  // namespace

CommandGroup otaCommands() {
  return {
      "ota",
      "New firmware for devices, over the air",
      {
          {"image-notify", "Tell devices that there may be a new image",
           zclArguments(
               {u8("payload-type", "0: the jitter alone; 1: the manufacturer too; 2: the image type too; 3: all")
                    .within(0, ImageNotifyCommand::WITH_FILE_VERSION),
                u8("query-jitter", "Share of the devices that are to ask").within(1, 100).orElse("100"),
                MANUFACTURER_CODE.optional(), IMAGE_TYPE.optional(), FILE_VERSION.optional()}),
           imageNotify},
          {"query-next-image-response", "Answer whether there is an image",
           zclArguments({STATUS.orElse("success"), MANUFACTURER_CODE.optional(), IMAGE_TYPE.optional(),
                         FILE_VERSION.optional(), u32("image-size", "Bytes of the image").optional()}),
           queryNextImageResponse},
          {"image-block-response", "Send a piece of an image",
           zclArguments({STATUS.orElse("success"), MANUFACTURER_CODE, IMAGE_TYPE, FILE_VERSION, FILE_OFFSET,
                         octets("data", "The piece, at most 238 bytes", LARGEST_BLOCK)}),
           imageBlockResponse},
          {"upgrade-end-response", "Tell a device when to switch to its new image",
           zclArguments({MANUFACTURER_CODE, IMAGE_TYPE, FILE_VERSION,
                         u32("current-time", "Seconds since the start of 2000").orElse("0"),
                         u32("upgrade-time", "The same; with a current time of 0 seconds from now").orElse("0")}),
           upgradeEndResponse},
          {"unsupported-command", "Refuse a command as not supported",
           zclArguments({u8("command-id", "The command that is refused")}), unsupportedCommand},
          {"get-attributes", "Read file version, manufacturer and image type", zclArguments({}),
           readAttributes<&ZclOtaUpgrade::getOtaAttributes>},
          {"get-upgrade-status", "Read the status of the upgrade", zclArguments({}),
           readAttributes<&ZclOtaUpgrade::getOtaUpgradeStatus>},
          {"image-page-request", "From a device: ask for a page of an image",
           zclArguments({MANUFACTURER_CODE, IMAGE_TYPE, FILE_VERSION, FILE_OFFSET,
                         u8("maximum-data-size", "Bytes of a block at most"), u16("page-size", "Bytes of the page"),
                         u16("response-spacing", "Milliseconds between two blocks"),
                         address("request-node-address", "Long address of the device").optional()}),
           imagePageRequest},
          {"upgrade-end-request", "From a device: say how the download ended",
           zclArguments({STATUS.orElse("success"), MANUFACTURER_CODE, IMAGE_TYPE, FILE_VERSION}), upgradeEndRequest},
      }};
}

}  // namespace qx::app
