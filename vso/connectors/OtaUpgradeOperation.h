// What the records of the image service are about and how it went, and the names of both.
#pragma once

#include <iosfwd>

namespace qx {

/// The messages between the mesh server and the image service, by the numbers of OtaUpgradeOperationPEnum. A response
/// is its request plus one; a no-op answers a no-op, and the event answers nothing. Any other number may come from a
/// message.
struct OtaUpgradeOperation {
  enum Enum : int {
    noOp = 0,
    serviceStatusRequest = 1,
    serviceStatusResponse = 2,
    addImageRequest = 3,
    addImageResponse = 4,
    removeImageRequest = 5,
    removeImageResponse = 6,
    imageInfoRequest = 7,
    imageInfoResponse = 8,
    imageInfoEvent = 9,
    clearImageCacheRequest = 10,
    clearImageCacheResponse = 11,
    seedImageCacheRequest = 12,
    seedImageCacheResponse = 13,
  };
};

/// The outcomes of an operation, by the numbers of OtaUpgradeOperationStatusPEnum. Any other number may come from a
/// message.
struct OtaUpgradeOperationStatus {
  enum Enum : int {
    success = 0,
    failure = 1,
    serviceAvailable = 2,
    serviceNotAvailable = 3,
    inProgress = 4,
    imageValidationFailed = 5,
    imageAccessFailed = 6,
    deviceNotFound = 7,
    incompatibleDriverVersion = 8,
    imageInfoNotFound = 9,
    invalidData = 10,
  };
};

/// The enumerator's name; "invalid-enum" for a number without one.
std::ostream& operator<<(std::ostream& out, OtaUpgradeOperation::Enum operation);
std::ostream& operator<<(std::ostream& out, OtaUpgradeOperationStatus::Enum status);

/// Reads a word that is an enumerator's name, in its very letters. Any other word, and none, is warned of and gives
/// noOp. The stream is left as reading a word leaves it.
std::istream& operator>>(std::istream& in, OtaUpgradeOperation::Enum& operation);
/// Likewise, but what is no name gives failure.
std::istream& operator>>(std::istream& in, OtaUpgradeOperationStatus::Enum& status);

}  // namespace qx
