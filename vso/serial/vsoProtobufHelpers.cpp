#include "vso/serial/vsoProtobufHelpers.h"

#include <google/protobuf/any.pb.h>
#include <google/protobuf/message.h>
#include <google/protobuf/timestamp.pb.h>
#include <log4cplus/logger.h>

#include <algorithm>
#include <boost/date_time/posix_time/posix_time_types.hpp>
#include <ctime>
#include <memory>
#include <stdexcept>

#include "qxcrypto/Base64Encoder.h"
#include "vso/identifiers/storage.h"
#include "vso/logging/Log.h"
#include "vso/proto/TriboolPEnum.pb.h"
#include "vso/proto/U255BuffPBuf.pb.h"

namespace qx {

namespace {

using google::protobuf::Timestamp;

const log4cplus::Logger logger = log4cplus::Logger::getRoot();

/// The seconds that stand for +infinity and not-a-date-time, and negated for -infinity: the tick counts of these times
/// in seconds, cut to 32 bits.
constexpr long long SPECIAL_SECONDS = 2077252342;

constexpr long long MICROSECONDS = 1000000;

BPosixTime epoch() { return BPosixTime(boost::gregorian::date(1970, 1, 1)); }

/// What a signed number of 32 bits keeps of `seconds`.
long long cut(long long seconds) { return static_cast<int>(static_cast<unsigned int>(seconds)); }

Timestamp* timestamp(long long seconds) {
  auto message = std::make_unique<Timestamp>();
  message->set_seconds(seconds);
  return message.release();
}

}  // namespace

pb::TriboolPEnum triboolToProtobuf(const boost::logic::tribool& value) {
  if (boost::logic::indeterminate(value)) return pb::TB_INDETERMINATE;
  return value ? pb::TB_TRUE : pb::TB_FALSE;
}

boost::logic::tribool triboolFromProtobuf(const pb::TriboolPEnum& value) {
  switch (value) {
    case pb::TB_FALSE:
      return false;
    case pb::TB_TRUE:
      return true;
    case pb::TB_INDETERMINATE:
      return boost::logic::indeterminate;
    default:
      throw std::runtime_error("triboolFromProtobuf: invalid tribool");
  }
}

Timestamp* timetToProtobuf(long seconds) { return timestamp(seconds); }

long timetFromProtobuf(const Timestamp& message) { return static_cast<long>(cut(message.seconds())); }

Timestamp* posixTimeToProtobuf(const BPosixTime& time) {
  if (time.is_neg_infinity()) return timestamp(-SPECIAL_SECONDS);
  if (time.is_special()) return timestamp(SPECIAL_SECONDS);
  return timestamp(cut((time - epoch()).total_microseconds() / MICROSECONDS));
}

BPosixTime posixTimeFromProtobuf(const Timestamp& message) {
  return epoch() + boost::posix_time::microseconds(cut(message.seconds()) * MICROSECONDS);
}

BPosixTime posixTimeOf(std::time_t seconds) {
  std::tm local{};
  // Years that a date cannot hold count as times that the C library cannot tell.
  constexpr int FIRST_YEAR = 1400 - 1900;
  constexpr int LAST_YEAR = 9999 - 1900;
  if (localtime_r(&seconds, &local) == nullptr || local.tm_year < FIRST_YEAR || local.tm_year > LAST_YEAR) {
    throw std::runtime_error("could not convert calendar time to local time");
  }
  return BPosixTime(
      boost::gregorian::date(static_cast<unsigned short>(local.tm_year + 1900),
                             static_cast<unsigned short>(local.tm_mon + 1), static_cast<unsigned short>(local.tm_mday)),
      boost::posix_time::time_duration(local.tm_hour, local.tm_min, local.tm_sec));
}

BPosixTime posixTimeNow() { return posixTimeOf(std::time(nullptr)); }

pb::U255BuffPBuf* u255BuffToProtobuf(const U255Buff<unsigned char>& buffer) {
  auto message = std::make_unique<pb::U255BuffPBuf>();
  message->set_contents(buffer.contents, buffer.storedLength());
  return message.release();
}

bool u255BuffFromProtobuf(U255Buff<unsigned char>& buffer, const pb::U255BuffPBuf& message) {
  const std::string& contents = message.contents();
  if (contents.size() <= U255Buff<unsigned char>::CAPACITY) {
    detail::copyBytes(buffer.contents, contents.data(), contents.size());
    buffer.length_ = static_cast<unsigned int>(contents.size());
  }
  return false;
}

pb::U255U16BuffPBuf* u255U16BuffToProtobuf(const U255Buff<unsigned short>& buffer) {
  auto message = std::make_unique<pb::U255U16BuffPBuf>();
  message->mutable_contents()->Add(buffer.contents, buffer.contents + buffer.storedLength());
  return message.release();
}

bool u255U16BuffFromProtobuf(U255Buff<unsigned short>& buffer, const pb::U255U16BuffPBuf& message) {
  if (message.contents_size() > static_cast<int>(U255Buff<unsigned short>::CAPACITY)) return true;
  detail::clearBytes(buffer.contents, sizeof buffer.contents);
  std::transform(message.contents().begin(), message.contents().end(), buffer.contents,
                 [](unsigned int entry) { return static_cast<unsigned short>(entry); });
  buffer.length_ = static_cast<unsigned int>(message.contents_size());
  return false;
}

std::string serializeWithAny(google::protobuf::Message& message) {
  google::protobuf::Any any;
  any.PackFrom(message);
  return Base64Encoder().Base64Encode(any.SerializeAsString());
}

boost::unordered_map<std::string, std::function<VessoriParams*()>> vessoriParamsProtobufCreatorMap;

VessoriParams* vessoriParamsProtobufCreator(const google::protobuf::Any& any) {
  const auto found = vessoriParamsProtobufCreatorMap.find(any.type_url());
  if (found != vessoriParamsProtobufCreatorMap.end()) return found->second();
  if (!any.type_url().empty()) {
    VSO_LOG(logger, log4cplus::WARN_LOG_LEVEL,
            "vessoriParamsProtobufCreator: cannot find type '" << any.type_url() << "'");
  }
  return nullptr;
}

}  // namespace qx
