// The record that travels between the mesh server and the image service.
#pragma once

#include <boost/smart_ptr/shared_ptr.hpp>
#include <string>

#include "vso/connectors/OtaUpgradeOperation.h"
#include "vso/identifiers/Euid.h"

namespace qx {

namespace pb {
class ZigbeeOtaUpgradeOperationPBuf;
}

/// A request to the image service, its response, or its event about an image: `operation` says which, and what the
/// operation has no use for is empty. Nothing here acts on a record. Made by one thread and handed on; not for use from
/// several threads at once.
class ZigbeeOtaUpgradeOperation {
 public:
  /// What stands for a manufacturer code or an image type that is not given. A 0 that is given cannot be told from it.
  static constexpr unsigned short INVALID_DATA = 0;

  /// A no-op with status success, the all-zero address and nothing else.
  ZigbeeOtaUpgradeOperation() = default;
  ZigbeeOtaUpgradeOperation(OtaUpgradeOperation::Enum operation, OtaUpgradeOperationStatus::Enum status,
                            const Euid& euid, const unsigned short& mfgId, const unsigned short& imageTypeId,
                            const std::string& url, const std::string& driverTypeId, const unsigned int& driverVersion,
                            const unsigned int& imageVersion, const unsigned int& oldImageVersion);

  // One maker for each message. What a maker does not take is empty: status success, address Euid::INVALID,
  // INVALID_DATA for the two codes, empty texts, versions 0.

  /// A no-op is its own response: the two differ in their status at most.
  static boost::shared_ptr<ZigbeeOtaUpgradeOperation> createNoOpRequest();
  static boost::shared_ptr<ZigbeeOtaUpgradeOperation> createNoOpResponse(OtaUpgradeOperationStatus::Enum status);

  static boost::shared_ptr<ZigbeeOtaUpgradeOperation> createServiceStatusRequest(const Euid& euid);
  /// Takes address, codes, texts and driver version of `op`, which must not be null.
  static boost::shared_ptr<ZigbeeOtaUpgradeOperation> createServiceStatusResponse(
      OtaUpgradeOperationStatus::Enum status, const boost::shared_ptr<ZigbeeOtaUpgradeOperation>& op);

  static boost::shared_ptr<ZigbeeOtaUpgradeOperation> createAddImageRequest(
      const Euid& euid, const unsigned short& mfgId, const unsigned short& imageTypeId, const std::string& url,
      const std::string& driverTypeId, const unsigned int& driverVersion);
  static boost::shared_ptr<ZigbeeOtaUpgradeOperation> createAddImageResponse(
      OtaUpgradeOperationStatus::Enum status, const Euid& euid, const unsigned short& mfgId,
      const unsigned short& imageTypeId, const std::string& url, const std::string& driverTypeId,
      const unsigned int& driverVersion);
  /// The same with the arguments from `op`, which must not be null.
  static boost::shared_ptr<ZigbeeOtaUpgradeOperation> createAddImageResponse(
      OtaUpgradeOperationStatus::Enum status, const boost::shared_ptr<ZigbeeOtaUpgradeOperation>& op);

  static boost::shared_ptr<ZigbeeOtaUpgradeOperation> createRemoveImageRequest(const Euid& euid);
  static boost::shared_ptr<ZigbeeOtaUpgradeOperation> createRemoveImageResponse(
      OtaUpgradeOperationStatus::Enum status, const Euid& euid, const unsigned short& mfgId,
      const unsigned short& imageTypeId, const std::string& url, const std::string& driverTypeId,
      const unsigned int& driverVersion, const unsigned int& imageVersion);
  /// The same with the arguments from `op`, which must not be null.
  static boost::shared_ptr<ZigbeeOtaUpgradeOperation> createRemoveImageResponse(
      OtaUpgradeOperationStatus::Enum status, const boost::shared_ptr<ZigbeeOtaUpgradeOperation>& op);

  static boost::shared_ptr<ZigbeeOtaUpgradeOperation> createImageInfoRequest(const Euid& euid);
  static boost::shared_ptr<ZigbeeOtaUpgradeOperation> createImageInfoResponse(
      OtaUpgradeOperationStatus::Enum status, const Euid& euid, const unsigned short& mfgId,
      const unsigned short& imageTypeId, const std::string& url, const std::string& driverTypeId,
      const unsigned int& driverVersion, const unsigned int& imageVersion);
  /// The same with the arguments from `op`, which must not be null.
  static boost::shared_ptr<ZigbeeOtaUpgradeOperation> createImageInfoResponse(
      OtaUpgradeOperationStatus::Enum status, const boost::shared_ptr<ZigbeeOtaUpgradeOperation>& op);
  /// Comes without a request, and alone knows the version that an image replaced.
  static boost::shared_ptr<ZigbeeOtaUpgradeOperation> createImageInfoEvent(
      OtaUpgradeOperationStatus::Enum status, const Euid& euid, const unsigned short& mfgId,
      const unsigned short& imageTypeId, const std::string& url, const std::string& driverTypeId,
      const unsigned int& driverVersion, const unsigned int& imageVersion, const unsigned int& oldImageVersion);

  static boost::shared_ptr<ZigbeeOtaUpgradeOperation> createClearImageCacheRequest();
  static boost::shared_ptr<ZigbeeOtaUpgradeOperation> createClearImageCacheResponse(
      OtaUpgradeOperationStatus::Enum status);

  static boost::shared_ptr<ZigbeeOtaUpgradeOperation> createSeedImageCacheRequest();
  static boost::shared_ptr<ZigbeeOtaUpgradeOperation> createSeedImageCacheResponse(
      OtaUpgradeOperationStatus::Enum status);

  /// Compare all ten fields.
  bool operator==(const ZigbeeOtaUpgradeOperation& other) const;
  bool operator!=(const ZigbeeOtaUpgradeOperation& other) const { return !(*this == other); }

  /// A copy of every field. Caller owns the result.
  ZigbeeOtaUpgradeOperation* clone() const;

  /// Which message the record is.
  OtaUpgradeOperation::Enum operation() const { return operation_; }
  void operation(OtaUpgradeOperation::Enum value) { operation_ = value; }
  /// How it went; success on a request.
  OtaUpgradeOperationStatus::Enum status() const { return status_; }
  void status(OtaUpgradeOperationStatus::Enum value) { status_ = value; }
  /// Long address of the node that the image is for.
  const Euid& euid() const { return euid_; }
  void euid(const Euid& value) { euid_ = value; }
  /// The address of hexadecimal text, as Euid reads it.
  void euid(const std::string& hex) { euid_ = hex; }
  /// Manufacturer code and image type of the image.
  unsigned short mfgId() const { return mfg_id_; }
  void mfgId(const unsigned short& value) { mfg_id_ = value; }
  unsigned short imageTypeId() const { return image_type_id_; }
  void imageTypeId(const unsigned short& value) { image_type_id_ = value; }
  /// Where the image is.
  const std::string& url() const { return url_; }
  void url(const std::string& value) { url_ = value; }
  /// The driver that the image belongs to, and its version.
  const std::string& driverTypeId() const { return driver_type_id_; }
  void driverTypeId(const std::string& value) { driver_type_id_ = value; }
  unsigned int driverVersion() const { return driver_version_; }
  void driverVersion(const unsigned int& value) { driver_version_ = value; }
  unsigned int imageVersion() const { return image_version_; }
  void imageVersion(const unsigned int& value) { image_version_ = value; }
  /// Version that the image replaced.
  unsigned int oldImageVersion() const { return old_image_version_; }
  void oldImageVersion(const unsigned int& value) { old_image_version_ = value; }

  /// "<0011223344556677>", the address alone. All records share the one text, and each call writes it anew: copy it at
  /// once, and call this on one thread only.
  const std::string& toLua() const;

  /// Caller owns the result.
  pb::ZigbeeOtaUpgradeOperationPBuf* toProtobuf() const;
  /// Takes all fields, the two codes cut to their low 16 bits. True on failure, of which there is none.
  bool fromProtobuf(const pb::ZigbeeOtaUpgradeOperationPBuf& message);

 private:
  OtaUpgradeOperation::Enum operation_ = OtaUpgradeOperation::noOp;
  OtaUpgradeOperationStatus::Enum status_ = OtaUpgradeOperationStatus::success;
  Euid euid_;
  unsigned short mfg_id_ = INVALID_DATA;
  unsigned short image_type_id_ = INVALID_DATA;
  std::string url_;
  std::string driver_type_id_;
  unsigned int driver_version_ = 0;
  unsigned int image_version_ = 0;
  unsigned int old_image_version_ = 0;
};

}  // namespace qx
