#include "vso/connectors/ZigbeeOtaUpgradeOperation.h"

#include <boost/smart_ptr/make_shared.hpp>
#include <memory>

#include "vso/proto/ZigbeeOtaUpgradeOperationPBuf.pb.h"
#include "vso/serial/utf8.h"

namespace qx {

namespace {

using Operation = OtaUpgradeOperation;
using Status = OtaUpgradeOperationStatus;
using Record = ZigbeeOtaUpgradeOperation;
using RecordPtr = boost::shared_ptr<Record>;

/// What all makers make. What is not given is empty.
RecordPtr make(Operation::Enum operation, Status::Enum status, const Euid& euid = Euid::INVALID,
               unsigned short mfgId = Record::INVALID_DATA, unsigned short imageTypeId = Record::INVALID_DATA,
               const std::string& url = {}, const std::string& driverTypeId = {}, unsigned int driverVersion = 0,
               unsigned int imageVersion = 0, unsigned int oldImageVersion = 0) {
  return boost::make_shared<Record>(operation, status, euid, mfgId, imageTypeId, url, driverTypeId, driverVersion,
                                    imageVersion, oldImageVersion);
}

/// The same with what `source` says of node, image and driver.
RecordPtr make(Operation::Enum operation, Status::Enum status, const Record& source, unsigned int imageVersion = 0) {
  return make(operation, status, source.euid(), source.mfgId(), source.imageTypeId(), source.url(),
              source.driverTypeId(), source.driverVersion(), imageVersion);
}

}  // namespace

ZigbeeOtaUpgradeOperation::ZigbeeOtaUpgradeOperation(OtaUpgradeOperation::Enum operation,
                                                     OtaUpgradeOperationStatus::Enum status, const Euid& euid,
                                                     const unsigned short& mfgId, const unsigned short& imageTypeId,
                                                     const std::string& url, const std::string& driverTypeId,
                                                     const unsigned int& driverVersion,
                                                     const unsigned int& imageVersion,
                                                     const unsigned int& oldImageVersion)
    : operation_(operation),
      status_(status),
      euid_(euid),
      mfg_id_(mfgId),
      image_type_id_(imageTypeId),
      url_(url),
      driver_type_id_(driverTypeId),
      driver_version_(driverVersion),
      image_version_(imageVersion),
      old_image_version_(oldImageVersion) {}

RecordPtr ZigbeeOtaUpgradeOperation::createNoOpRequest() { return make(Operation::noOp, Status::success); }

RecordPtr ZigbeeOtaUpgradeOperation::createNoOpResponse(Status::Enum status) { return make(Operation::noOp, status); }

RecordPtr ZigbeeOtaUpgradeOperation::createServiceStatusRequest(const Euid& euid) {
  return make(Operation::serviceStatusRequest, Status::success, euid);
}

RecordPtr ZigbeeOtaUpgradeOperation::createServiceStatusResponse(Status::Enum status, const RecordPtr& op) {
  return make(Operation::serviceStatusResponse, status, *op);
}

RecordPtr ZigbeeOtaUpgradeOperation::createAddImageRequest(const Euid& euid, const unsigned short& mfgId,
                                                           const unsigned short& imageTypeId, const std::string& url,
                                                           const std::string& driverTypeId,
                                                           const unsigned int& driverVersion) {
  return make(Operation::addImageRequest, Status::success, euid, mfgId, imageTypeId, url, driverTypeId, driverVersion);
}

RecordPtr ZigbeeOtaUpgradeOperation::createAddImageResponse(Status::Enum status, const Euid& euid,
                                                            const unsigned short& mfgId,
                                                            const unsigned short& imageTypeId, const std::string& url,
                                                            const std::string& driverTypeId,
                                                            const unsigned int& driverVersion) {
  return make(Operation::addImageResponse, status, euid, mfgId, imageTypeId, url, driverTypeId, driverVersion);
}

RecordPtr ZigbeeOtaUpgradeOperation::createAddImageResponse(Status::Enum status, const RecordPtr& op) {
  return make(Operation::addImageResponse, status, *op);
}

RecordPtr ZigbeeOtaUpgradeOperation::createRemoveImageRequest(const Euid& euid) {
  return make(Operation::removeImageRequest, Status::success, euid);
}

RecordPtr ZigbeeOtaUpgradeOperation::createRemoveImageResponse(Status::Enum status, const Euid& euid,
                                                               const unsigned short& mfgId,
                                                               const unsigned short& imageTypeId,
                                                               const std::string& url, const std::string& driverTypeId,
                                                               const unsigned int& driverVersion,
                                                               const unsigned int& imageVersion) {
  return make(Operation::removeImageResponse, status, euid, mfgId, imageTypeId, url, driverTypeId, driverVersion,
              imageVersion);
}

RecordPtr ZigbeeOtaUpgradeOperation::createRemoveImageResponse(Status::Enum status, const RecordPtr& op) {
  return make(Operation::removeImageResponse, status, *op, op->imageVersion());
}

RecordPtr ZigbeeOtaUpgradeOperation::createImageInfoRequest(const Euid& euid) {
  return make(Operation::imageInfoRequest, Status::success, euid);
}

RecordPtr ZigbeeOtaUpgradeOperation::createImageInfoResponse(Status::Enum status, const Euid& euid,
                                                             const unsigned short& mfgId,
                                                             const unsigned short& imageTypeId, const std::string& url,
                                                             const std::string& driverTypeId,
                                                             const unsigned int& driverVersion,
                                                             const unsigned int& imageVersion) {
  return make(Operation::imageInfoResponse, status, euid, mfgId, imageTypeId, url, driverTypeId, driverVersion,
              imageVersion);
}

RecordPtr ZigbeeOtaUpgradeOperation::createImageInfoResponse(Status::Enum status, const RecordPtr& op) {
  return make(Operation::imageInfoResponse, status, *op, op->imageVersion());
}

RecordPtr ZigbeeOtaUpgradeOperation::createImageInfoEvent(
    Status::Enum status, const Euid& euid, const unsigned short& mfgId, const unsigned short& imageTypeId,
    const std::string& url, const std::string& driverTypeId, const unsigned int& driverVersion,
    const unsigned int& imageVersion, const unsigned int& oldImageVersion) {
  return make(Operation::imageInfoEvent, status, euid, mfgId, imageTypeId, url, driverTypeId, driverVersion,
              imageVersion, oldImageVersion);
}

RecordPtr ZigbeeOtaUpgradeOperation::createClearImageCacheRequest() {
  return make(Operation::clearImageCacheRequest, Status::success);
}

RecordPtr ZigbeeOtaUpgradeOperation::createClearImageCacheResponse(Status::Enum status) {
  return make(Operation::clearImageCacheResponse, status);
}

RecordPtr ZigbeeOtaUpgradeOperation::createSeedImageCacheRequest() {
  return make(Operation::seedImageCacheRequest, Status::success);
}

RecordPtr ZigbeeOtaUpgradeOperation::createSeedImageCacheResponse(Status::Enum status) {
  return make(Operation::seedImageCacheResponse, status);
}

bool ZigbeeOtaUpgradeOperation::operator==(const ZigbeeOtaUpgradeOperation& other) const {
  return operation_ == other.operation_ && status_ == other.status_ && euid_ == other.euid_ &&
         mfg_id_ == other.mfg_id_ && image_type_id_ == other.image_type_id_ && url_ == other.url_ &&
         driver_type_id_ == other.driver_type_id_ && driver_version_ == other.driver_version_ &&
         image_version_ == other.image_version_ && old_image_version_ == other.old_image_version_;
}

ZigbeeOtaUpgradeOperation* ZigbeeOtaUpgradeOperation::clone() const { return new ZigbeeOtaUpgradeOperation(*this); }

const std::string& ZigbeeOtaUpgradeOperation::toLua() const {
  // One for all records: the reference outlives every one of them.
  static std::string text;
  text = "<" + euid_.toString() + ">";
  return text;
}

pb::ZigbeeOtaUpgradeOperationPBuf* ZigbeeOtaUpgradeOperation::toProtobuf() const {
  auto message = std::make_unique<pb::ZigbeeOtaUpgradeOperationPBuf>();
  message->set_operation(static_cast<pb::OtaUpgradeOperationPEnum>(operation_));
  message->set_status(static_cast<pb::OtaUpgradeOperationStatusPEnum>(status_));
  message->set_allocated_euid(euid_.toProtobuf());
  message->set_mfgid(mfg_id_);
  message->set_imagetypeid(image_type_id_);
  message->set_url(detail::utf8(url_));
  message->set_drivertypeid(detail::utf8(driver_type_id_));
  message->set_driverversion(driver_version_);
  message->set_imageversion(image_version_);
  message->set_oldimageversion(old_image_version_);
  return message.release();
}

bool ZigbeeOtaUpgradeOperation::fromProtobuf(const pb::ZigbeeOtaUpgradeOperationPBuf& message) {
  operation_ = static_cast<OtaUpgradeOperation::Enum>(message.operation());
  status_ = static_cast<OtaUpgradeOperationStatus::Enum>(message.status());
  const bool failed = euid_.fromProtobuf(message.euid());
  mfg_id_ = static_cast<unsigned short>(message.mfgid());
  image_type_id_ = static_cast<unsigned short>(message.imagetypeid());
  url_ = message.url();
  driver_type_id_ = message.drivertypeid();
  driver_version_ = message.driverversion();
  image_version_ = message.imageversion();
  old_image_version_ = message.oldimageversion();
  return failed;
}

}  // namespace qx
