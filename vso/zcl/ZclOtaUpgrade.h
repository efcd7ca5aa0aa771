// The OTA Upgrade cluster: new firmware for devices, over the air.
#pragma once

#include <boost/logic/tribool.hpp>
#include <string>
#include <vector>

#include "vso/zcl/ZclMessage.h"
#include "vso/zcl/ZclOtaUpgradeRecords.h"

namespace qx {

/// A frame of the OTA Upgrade cluster, as the server sees it. Numbers on the wire are little-endian.
///
/// The builders of payloads append behind what the frame holds, and leave the command alone: they are called on a fresh
/// object that was made with the command. The readers of requests fill a record and answer true, or answer
/// indeterminate if the command or the length does not fit, with the record left as it was but where stated; they never
/// answer false, look at the rest of the header or log. The readers of attributes answer false without the attribute.
/// The `testing...` operations play the device's side.
class ZclOtaUpgrade : public ZclMessage {
 public:
  static constexpr short CLUSTER_ID = 0x0019;

  // Commands of the cluster.
  static constexpr unsigned char IMAGE_NOTIFY = 0x00;
  static constexpr unsigned char QUERY_NEXT_IMAGE_REQUEST = 0x01;
  static constexpr unsigned char QUERY_NEXT_IMAGE_RESPONSE = 0x02;
  static constexpr unsigned char IMAGE_BLOCK_REQUEST = 0x03;
  static constexpr unsigned char IMAGE_PAGE_REQUEST = 0x04;
  static constexpr unsigned char IMAGE_BLOCK_RESPONSE = 0x05;
  static constexpr unsigned char UPGRADE_END_REQUEST = 0x06;
  static constexpr unsigned char UPGRADE_END_RESPONSE = 0x07;

  // Attributes of the cluster.
  static constexpr unsigned short CURRENT_FILE_VERSION = 0x0002;
  static constexpr unsigned short IMAGE_UPGRADE_STATUS = 0x0006;
  static constexpr unsigned short MANUFACTURER_ID = 0x0007;
  static constexpr unsigned short IMAGE_TYPE_ID = 0x0008;

  /// A cluster-specific frame without a command yet (0xFF). Takes a sequence number.
  ZclOtaUpgrade() : ZclMessage(0xFF, false, true) {}
  /// A cluster-specific frame from the server, with an empty payload. Takes a sequence number.
  explicit ZclOtaUpgrade(unsigned char commandId) : ZclMessage(commandId, false, true) { setFcf(FROM_SERVER); }
  /// Received frames, see ZclMessage.
  explicit ZclOtaUpgrade(const std::string& hex) : ZclMessage(hex) {}
  explicit ZclOtaUpgrade(const U255Buff<unsigned char>& frame) noexcept : ZclMessage(frame) {}
  /// A general frame from the server's side that reads these attributes. Takes a sequence number.
  explicit ZclOtaUpgrade(const std::vector<unsigned short>& attributeIds);

  short getProfileId() const override;
  short getClusterId() const override;

  // The order of the virtual operations is part of the interface.

  virtual void queryNextImageResponse(const QueryNextImageResponse& response);
  /// `size` bytes of `data` go out, and `size` as their number: the record's `dataSize` is not looked at.
  virtual void imageBlockResponse(const ImageBlockResponse& response, const unsigned char* data, unsigned char size) {
    FrameWriter out = morePayload();
    out.u8(response.status);
    writeImage(out, response);
    out.u32le(response.fileOffset);
    out.u8(size);
    out.bytes(data, size);
    endPayload(out);
  }
  /// A device's command, like `testingImagePageRequest`: a frame made with the command says that it comes from the
  /// server; `setFcf(CLUSTER_SPECIFIC)` makes it the device's.
  virtual void sendUpgradeEndRequest(const UpgradeEndRequest& request);
  virtual void upgradeEndResponse(const UpgradeEndResponse& response);
  virtual void imageNotify(const ImageNotifyCommand& command);
  /// Makes this frame a default response that refuses `commandId` as not supported. Takes a sequence number.
  virtual void sendUnsupportedCommand(unsigned char commandId);
  /// Appends the ids of file version, manufacturer and image type, with the command read attributes. A frame that is
  /// cluster specific stays so.
  virtual void getOtaAttributes();
  /// The same with the id of the image upgrade status.
  virtual void getOtaUpgradeStatus();
  /// A hardware version that is announced and missing answers indeterminate, with the fields before it taken. A frame
  /// that is longer than its fields is accepted.
  virtual boost::logic::tribool queryNextImageRequest(QueryNextImageRequest& request) const;
  /// A frame that is longer than a request with all its fields is refused.
  virtual boost::logic::tribool imageBlockRequest(ImageBlockRequest& request) const;
  /// An address that is announced is read whether the frame is long enough for it or not.
  virtual boost::logic::tribool imagePageRequest(ImagePageRequest& request) const;
  virtual boost::logic::tribool upgradeEndRequest(UpgradeEndRequest& request) const;
  // These look in a read attributes response for the first record with the attribute's id and type, whatever its status
  // (one that failed shows the value of the record before it).
  virtual boost::logic::tribool readAttributesResponseManufacturer(unsigned short& manufacturer);
  virtual boost::logic::tribool readAttributesResponseImageTypeId(unsigned short& imageType);
  virtual boost::logic::tribool readAttributesResponseFwv(unsigned int& firmwareVersion);
  virtual boost::logic::tribool readAttributesResponseImageUpgradeStatus(unsigned char& status);
  /// The fields alone: the data stands behind them in the frame.
  virtual boost::logic::tribool testingImageBlockResponse(ImageBlockResponse& response) const;
  /// Appends the request, with the address only if `fieldControl` announces it.
  virtual void testingImagePageRequest(ImagePageRequest& request);
  virtual boost::logic::tribool testingUpgradeEndResponse(UpgradeEndResponse& response) const;

 private:
  /// Writes manufacturer code, image type and file version, which stand side by side wherever they stand.
  template <typename Record>
  static void writeImage(FrameWriter& out, const Record& record) {
    out.u16le(record.manufacturerCode);
    out.u16le(record.imageType);
    out.u32le(record.fileVersion);
  }
};

}  // namespace qx
