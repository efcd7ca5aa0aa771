#include "vso/connectors/OtaUpgradeOperation.h"

#include <log4cplus/logger.h>

#include <istream>
#include <ostream>
#include <string>

#include "vso/logging/Log.h"

namespace qx {

namespace {

const log4cplus::Logger logger = log4cplus::Logger::getRoot();

/// Null for a number without a name.
const char* nameOf(OtaUpgradeOperation::Enum operation) {
  switch (operation) {
    case OtaUpgradeOperation::noOp:
      return "noOp";
    case OtaUpgradeOperation::serviceStatusRequest:
      return "serviceStatusRequest";
    case OtaUpgradeOperation::serviceStatusResponse:
      return "serviceStatusResponse";
    case OtaUpgradeOperation::addImageRequest:
      return "addImageRequest";
    case OtaUpgradeOperation::addImageResponse:
      return "addImageResponse";
    case OtaUpgradeOperation::removeImageRequest:
      return "removeImageRequest";
    case OtaUpgradeOperation::removeImageResponse:
      return "removeImageResponse";
    case OtaUpgradeOperation::imageInfoRequest:
      return "imageInfoRequest";
    case OtaUpgradeOperation::imageInfoResponse:
      return "imageInfoResponse";
    case OtaUpgradeOperation::imageInfoEvent:
      return "imageInfoEvent";
    case OtaUpgradeOperation::clearImageCacheRequest:
      return "clearImageCacheRequest";
    case OtaUpgradeOperation::clearImageCacheResponse:
      return "clearImageCacheResponse";
    case OtaUpgradeOperation::seedImageCacheRequest:
      return "seedImageCacheRequest";
    case OtaUpgradeOperation::seedImageCacheResponse:
      return "seedImageCacheResponse";
  }
  return nullptr;
}

const char* nameOf(OtaUpgradeOperationStatus::Enum status) {
  switch (status) {
    case OtaUpgradeOperationStatus::success:
      return "success";
    case OtaUpgradeOperationStatus::failure:
      return "failure";
    case OtaUpgradeOperationStatus::serviceAvailable:
      return "serviceAvailable";
    case OtaUpgradeOperationStatus::serviceNotAvailable:
      return "serviceNotAvailable";
    case OtaUpgradeOperationStatus::inProgress:
      return "inProgress";
    case OtaUpgradeOperationStatus::imageValidationFailed:
      return "imageValidationFailed";
    case OtaUpgradeOperationStatus::imageAccessFailed:
      return "imageAccessFailed";
    case OtaUpgradeOperationStatus::deviceNotFound:
      return "deviceNotFound";
    case OtaUpgradeOperationStatus::incompatibleDriverVersion:
      return "incompatibleDriverVersion";
    case OtaUpgradeOperationStatus::imageInfoNotFound:
      return "imageInfoNotFound";
    case OtaUpgradeOperationStatus::invalidData:
      return "invalidData";
  }
  return nullptr;
}

template <typename Enum>
std::ostream& print(std::ostream& out, Enum value) {
  const char* name = nameOf(value);
  return out << (name == nullptr ? "invalid-enum" : name);
}

/// Finds the enumerator of a name. The enumerators count up from 0 without a gap, so the first number without a name
/// is behind them all. False if there is none, with `value` as it was.
template <typename Enum>
bool find(const std::string& wanted, Enum& value) {
  for (int number = 0; const char* name = nameOf(static_cast<Enum>(number)); ++number) {
    if (wanted != name) continue;
    value = static_cast<Enum>(number);
    return true;
  }
  return false;
}

}  // namespace

std::ostream& operator<<(std::ostream& out, OtaUpgradeOperation::Enum operation) { return print(out, operation); }

std::ostream& operator<<(std::ostream& out, OtaUpgradeOperationStatus::Enum status) { return print(out, status); }

std::istream& operator>>(std::istream& in, OtaUpgradeOperation::Enum& operation) {
  std::string word;
  in >> word;
  if (!find(word, operation)) {
    VSO_LOG(logger, log4cplus::WARN_LOG_LEVEL, "Invalid OtaUpgradeOperation operation " << word);
    operation = OtaUpgradeOperation::noOp;
  }
  return in;
}

std::istream& operator>>(std::istream& in, OtaUpgradeOperationStatus::Enum& status) {
  std::string word;
  in >> word;
  if (!find(word, status)) {
    // "operation" here as well: whoever searches the logs knows the line so.
    VSO_LOG(logger, log4cplus::WARN_LOG_LEVEL, "Invalid OtaUpgradeOperationStatus operation " << word);
    status = OtaUpgradeOperationStatus::failure;
  }
  return in;
}

}  // namespace qx
