// What the commands of the OTA Upgrade cluster carry.
#pragma once

#include <boost/array.hpp>

namespace qx {

/// Long address of the requesting device as it stands in the frame: least significant byte first, the reverse of an
/// Euid.
using OtaNodeAddress = boost::array<unsigned char, 8>;

// Manufacturer code, image type and file version name an image together. Sizes and offsets are in bytes.

/// A device asks whether there is an image for it.
struct QueryNextImageRequest {
  static constexpr unsigned char HAS_HARDWARE_VERSION = 0x01;

  unsigned char fieldControl = 0;  ///< Says which of the fields further on are there.
  unsigned short manufacturerCode = 0;
  unsigned short imageType = 0;
  unsigned int fileVersion = 0;  ///< That the device runs now.
  unsigned short hardwareVersion = 0;
};

/// The server says whether there is an image, and which.
struct QueryNextImageResponse {
  unsigned char status = 0;  ///< A ZclStatus or one of the cluster's own; the other fields go out with 0 alone.
  unsigned short manufacturerCode = 0;
  unsigned short imageType = 0;
  unsigned int fileVersion = 0;
  unsigned int imageSize = 0;
};

/// A device asks for a piece of an image.
struct ImageBlockRequest {
  static constexpr unsigned char HAS_REQUEST_NODE_ADDRESS = 0x01;
  static constexpr unsigned char HAS_MINIMUM_BLOCK_PERIOD = 0x02;

  unsigned char fieldControl = 0;  ///< Says which of the fields further on are there.
  unsigned short manufacturerCode = 0;
  unsigned short imageType = 0;
  unsigned int fileVersion = 0;
  unsigned int fileOffset = 0;
  unsigned char maximumDataSize = 0;
  OtaNodeAddress requestNodeAddress{};
  unsigned short minimumBlockPeriod = 0;  ///< Milliseconds.
};

/// A device asks for a page of an image, to be sent as a row of blocks.
struct ImagePageRequest {
  static constexpr unsigned char HAS_REQUEST_NODE_ADDRESS = 0x01;

  unsigned char fieldControl = 0;  ///< Says whether the address is there.
  unsigned short manufacturerCode = 0;
  unsigned short imageType = 0;
  unsigned int fileVersion = 0;
  unsigned int fileOffset = 0;
  unsigned char maximumDataSize = 0;
  unsigned short pageSize = 0;
  unsigned short responseSpacing = 0;  ///< Milliseconds.
  OtaNodeAddress requestNodeAddress{};
};

/// The fields in front of the data.
struct ImageBlockResponse {
  unsigned char status = 0;  ///< A ZclStatus or one of the cluster's own.
  unsigned short manufacturerCode = 0;
  unsigned short imageType = 0;
  unsigned int fileVersion = 0;
  unsigned int fileOffset = 0;
  unsigned char dataSize = 0;
};

/// A device says how the download ended.
struct UpgradeEndRequest {
  unsigned char status = 0;  ///< A ZclStatus or one of the cluster's own.
  unsigned short manufacturerCode = 0;
  unsigned short imageType = 0;
  unsigned int fileVersion = 0;
};

/// Tells a device when to switch to its new image. Times are in seconds since the start of 2000; with a current time of
/// 0 the upgrade time is seconds from now.
struct UpgradeEndResponse {
  unsigned short manufacturerCode = 0;
  unsigned short imageType = 0;
  unsigned int fileVersion = 0;
  unsigned int currentTime = 0;
  unsigned int upgradeTime = 0;
};

/// Tells devices that there may be a new image.
struct ImageNotifyCommand {
  // Payload types. Each has the fields of those before it.
  static constexpr unsigned char WITH_MANUFACTURER_CODE = 1;
  static constexpr unsigned char WITH_IMAGE_TYPE = 2;
  static constexpr unsigned char WITH_FILE_VERSION = 3;

  unsigned char payloadType = 0;  ///< Says which of the fields behind the jitter go out.
  unsigned char queryJitter = 0;  ///< 1 to 100: the share of devices that are to ask.
  unsigned short manufacturerCode = 0;
  unsigned short imageType = 0;
  unsigned int fileVersion = 0;
};

}  // namespace qx
