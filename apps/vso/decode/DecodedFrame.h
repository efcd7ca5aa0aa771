// Everything that is known of one frame, as a plain value: made by decodeFrame, shown by the printers.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "vso/layout/FrameVerdict.h"

namespace qx::app {

/// Null stands for what a frame leaves open. Text is any bytes.
using Value = std::variant<std::nullptr_t, bool, long long, std::string, std::vector<unsigned int>>;

/// A field of a command, a cell of a table, or what a typed reader of the library found.
struct NamedValue {
  const char* name;
  Value value;
  /// What the number stands for; null if it speaks for itself.
  const char* meaning = nullptr;
  /// Hexadecimal digits in which people read the number; 0 for decimal.
  unsigned int digits = 0;
};

/// Rows of the same names in the same order.
struct DecodedTable {
  const char* name;
  std::vector<std::vector<NamedValue>> rows;
};

/// The value of an attribute.
struct DecodedAttributeValue {
  unsigned char type = 0;
  /// As `AttributeRecordData::valueToString` gives it. Any bytes. Absent for a type that does not print.
  std::optional<std::string> text;
  /// As `AttributeRecordData::print` gives the whole record. Any bytes.
  std::string record;
};

/// One record of a general command's list. What the record does not carry is absent.
struct DecodedAttribute {
  unsigned short id = 0;
  std::optional<unsigned char> status;
  std::optional<DecodedAttributeValue> value;
};

enum class ZclFrameType { GENERAL, CLUSTER_SPECIFIC, RESERVED };

/// A field that the frame is too short for is absent.
struct ZclHeader {
  std::optional<unsigned char> frameControl;
  // The fields of the frame control byte, without meaning if that is absent.
  ZclFrameType frameType = ZclFrameType::GENERAL;
  bool manufacturerSpecific = false;
  bool fromServer = false;
  bool defaultResponseDisabled = false;
  std::optional<unsigned short> manufacturerCode;
  std::optional<unsigned char> sequence;
  std::optional<unsigned char> command;
  /// Of the command; null for one that the tables do not have.
  const char* name = nullptr;
};

struct ZdoHeader {
  std::optional<unsigned char> sequence;
  bool isResponse = false;
  /// Of a response.
  std::optional<unsigned char> status;
};

struct DecodedFrame {
  unsigned short profile = 0;
  unsigned short cluster = 0;
  /// Of a ZDO frame, that of its command. Null for one that the tables do not have.
  const char* clusterName = nullptr;
  /// The whole frame, two lowercase digits a byte.
  std::string hex;
  /// Bytes.
  unsigned int length = 0;
  std::variant<ZclHeader, ZdoHeader> header;
  /// Of a command that has a list of them.
  std::optional<std::vector<DecodedAttribute>> attributes;
  std::vector<NamedValue> fields;
  std::vector<NamedValue> readings;
  /// Of a command or an attribute that holds one.
  std::optional<DecodedTable> table;
  /// The bytes of the payload behind all that is known of it, as hexadecimal text.
  std::string undecoded;
  FrameVerdict verdict;
};

}  // namespace qx::app
