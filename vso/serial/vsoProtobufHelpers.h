// Conversions between shared value types and their protobuf forms, and the envelope for any message.
//
// Two rules hold for the records of the library: a `toProtobuf` gives a new message that the caller owns, and the
// result of a `fromProtobuf` is true on failure. A failure stops nothing, and what can be taken is taken; only a
// tribool out of range throws. The functions here say for themselves what they do.
#pragma once

#include <boost/date_time/posix_time/posix_time_types.hpp>
#include <boost/logic/tribool.hpp>
#include <boost/unordered_map.hpp>
#include <ctime>
#include <functional>
#include <string>

#include "vso/identifiers/U255Buff.h"

namespace google::protobuf {
class Any;
class Message;
class Timestamp;
}  // namespace google::protobuf

namespace qx {

namespace pb {
enum TriboolPEnum : int;
class U255BuffPBuf;
class U255U16BuffPBuf;
}  // namespace pb

/// The time of the model's records, in microseconds.
using BPosixTime = boost::posix_time::ptime;

/// A parameter object of the server process, which alone knows what it holds.
class VessoriParams;

pb::TriboolPEnum triboolToProtobuf(const boost::logic::tribool& value);
/// Throws std::runtime_error, "triboolFromProtobuf: invalid tribool", for any other number than the three.
boost::logic::tribool triboolFromProtobuf(const pb::TriboolPEnum& value);

/// Seconds since 1970. Caller owns the result.
google::protobuf::Timestamp* timetToProtobuf(long seconds);
/// The low 32 bits of the seconds, as a signed number.
long timetFromProtobuf(const google::protobuf::Timestamp& message);

/// Whole seconds since 1970, cut to 32 bits; the fraction is lost, and so is the time zone: the form of a local time is
/// local. -infinity gives -2077252342 seconds, +infinity and not-a-date-time 2077252342. Caller owns the result.
google::protobuf::Timestamp* posixTimeToProtobuf(const BPosixTime& time);
/// The low 32 bits of the seconds, as a signed number. Never a special time: the forms of the infinities come back as
/// dates in 1904 and 2035.
BPosixTime posixTimeFromProtobuf(const google::protobuf::Timestamp& message);
/// The local time of so many seconds since 1970. Throws std::runtime_error, "could not convert calendar time to local
/// time", if the C library cannot tell.
BPosixTime posixTimeOf(std::time_t seconds);
/// The local time of now, in whole seconds. Throws as `posixTimeOf`.
BPosixTime posixTimeNow();

/// The elements in use. Caller owns the result.
pb::U255BuffPBuf* u255BuffToProtobuf(const U255Buff<unsigned char>& buffer);
/// Takes the bytes; more than 255 are dropped silently and leave the buffer alone. Always false.
bool u255BuffFromProtobuf(U255Buff<unsigned char>& buffer, const pb::U255BuffPBuf& message);

/// One entry for each element in use. Caller owns the result.
pb::U255U16BuffPBuf* u255U16BuffToProtobuf(const U255Buff<unsigned short>& buffer);
/// Takes the low 16 bits of each entry. True on failure: more than 255 entries, which leave the buffer alone.
bool u255U16BuffFromProtobuf(U255Buff<unsigned short>& buffer, const pb::U255U16BuffPBuf& message);

/// The message in a google.protobuf.Any, serialized, as base64. The receiver goes by the type URL, which ends in the
/// message's full name, such as "qx.pb.ZapPBuf".
std::string serializeWithAny(google::protobuf::Message& message);

/// What makes the parameter object of a type URL. Filled by the server process, one entry a type; it must not change
/// while lookups run.
extern boost::unordered_map<std::string, std::function<VessoriParams*()>> vessoriParamsProtobufCreatorMap;

/// A new parameter object for the type URL of `any`, whose payload is not read here. Null, with a warning unless the
/// type URL is empty, if there is no entry for it. Throws std::bad_function_call if the entry is empty.
VessoriParams* vessoriParamsProtobufCreator(const google::protobuf::Any& any);

}  // namespace qx
