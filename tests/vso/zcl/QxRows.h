// The attributes of the maker's clusters, each with its reader, writer and test, and with what these must give.
#pragma once

#include <functional>
#include <list>
#include <ostream>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "vso/identifiers/Euid.h"
#include "vso/identifiers/hexify.h"
#include "vso/mesh/AccessPoint.h"
#include "vso/zcl/AttributeRecordData.h"
#include "vso/zcl/QxZclAnnounce.h"
#include "vso/zcl/QxZclSscp.h"
#include "vso/zcl/ZclSetZap.h"

namespace qx::test {

/// A value for a writer of any type: numbers and addresses take the low bits of `number`.
struct AttributeSample {
  unsigned long long number;
  std::string text;
};

inline std::string shown(unsigned char value) { return std::to_string(value); }
inline std::string shown(signed char value) { return std::to_string(value); }
inline std::string shown(unsigned short value) { return std::to_string(value); }
inline std::string shown(const Euid& value) { return value.toString(); }
inline std::string shown(const std::string& value) { return value; }
/// "abcd:0 1234:1": destinations and indexes.
inline std::string shown(const std::list<AccessPoint>& list) {
  std::string text;
  for (const AccessPoint& entry : list) {
    std::string destination;
    hexify(&entry.destination_, 1, destination, false);
    if (!text.empty()) text += ' ';
    text += destination + ':' + std::to_string(entry.table_index_);
  }
  return text;
}

inline std::string textFrom(const AttributeRecordData::Data& data, unsigned int from) {
  std::string text;
  for (unsigned int i = from; i < data.size() && data[i] != 0; ++i) text += static_cast<char>(data[i]);
  return text;
}

/// How a value of type T is made from a sample, lies in a record in wire form, and is read from one in readable form.
template <typename T>
struct AttributeForm {
  static T value(const AttributeSample& sample) { return static_cast<T>(sample.number); }
  static AttributeRecordData::Data wire(T value) {
    AttributeRecordData::Data data{};
    for (unsigned int i = 0; i < sizeof(T); ++i) data[i] = static_cast<unsigned char>(value >> 8 * i);
    return data;
  }
  static T read(const AttributeRecordData::Data& data) {
    unsigned int number = 0;
    for (unsigned int i = 0; i < sizeof(T); ++i) number |= static_cast<unsigned int>(data[i]) << 8 * i;
    return static_cast<T>(number);
  }
};

template <>
struct AttributeForm<std::string> {
  static std::string value(const AttributeSample& sample) { return sample.text; }
  static AttributeRecordData::Data wire(const std::string& value) {
    AttributeRecordData::Data data{};
    const std::string cut = value.substr(0, 199);
    data[0] = static_cast<unsigned char>(cut.size());
    for (unsigned int i = 0; i < cut.size(); ++i) data[i + 1] = static_cast<unsigned char>(cut[i]);
    return data;
  }
  static std::string read(const AttributeRecordData::Data& data) { return textFrom(data, 0); }
};

template <>
struct AttributeForm<Euid> {
  static Euid value(const AttributeSample& sample) {
    unsigned char bytes[8];
    for (unsigned int i = 0; i < 8; ++i) bytes[7 - i] = static_cast<unsigned char>(sample.number >> 8 * i);
    return Euid(bytes);
  }
  static AttributeRecordData::Data wire(const Euid& value) {
    AttributeRecordData::Data data{};
    for (unsigned int i = 0; i < 8; ++i) data[i] = value.cArray()[7 - i];
    return data;
  }
  static Euid read(const AttributeRecordData::Data& data) {
    unsigned char bytes[8];
    for (unsigned int i = 0; i < 8; ++i) bytes[7 - i] = data[i];
    return Euid(bytes);
  }
};

/// One attribute of a class; an operation that the class lacks is empty.
template <typename Frame>
struct AttributeRow {
  std::string name;
  unsigned short id;
  unsigned char type;
  std::function<std::string(const Frame&)> read;
  std::function<void(Frame&, const AttributeSample&)> write;
  std::function<bool(const Frame&)> has;
  /// What the reader must give for a record with this data, which is in readable form.
  std::function<std::string(const AttributeRecordData::Data&)> reading;
  /// What a written sample must be in a record, in wire form.
  std::function<AttributeRecordData::Data(const AttributeSample&)> wire;
  /// What the reader must give without a record.
  std::string missing;
  /// The reader takes all records with the id, otherwise the first.
  bool takesAll = false;
};

template <typename Frame>
std::ostream& operator<<(std::ostream& out, const AttributeRow<Frame>& row) {
  return out << row.name;
}

template <typename T>
using ReadBy = T;
template <typename T>
using WrittenBy = std::conditional_t<std::is_arithmetic_v<T>, T, const T&>;

template <typename T, typename Frame>
AttributeRow<Frame> attributeRow(const char* name, unsigned short id, unsigned char type,
                                 ReadBy<T> (Frame::*read)() const, void (Frame::*write)(WrittenBy<T>),
                                 bool (Frame::*has)() const) {
  using Form = AttributeForm<T>;
  AttributeRow<Frame> row;
  row.name = name;
  row.id = id;
  row.type = type;
  if (read != nullptr) row.read = [read](const Frame& frame) { return shown((frame.*read)()); };
  if (write != nullptr) {
    row.write = [write](Frame& frame, const AttributeSample& sample) { (frame.*write)(Form::value(sample)); };
  }
  if (has != nullptr) row.has = [has](const Frame& frame) { return (frame.*has)(); };
  row.reading = [](const AttributeRecordData::Data& data) { return shown(Form::read(data)); };
  row.wire = [](const AttributeSample& sample) { return Form::wire(Form::value(sample)); };
  row.missing = shown(T());
  return row;
}

/// A text that begins with a zero byte is read from its second byte on.
inline std::string firmwareReading(const AttributeRecordData::Data& data) {
  return textFrom(data, data[0] == 0 ? 1 : 0);
}

/// Four digits of the text for each entry.
inline std::string routeTableReading(const AttributeRecordData::Data& data) {
  const auto byteAt = [&data](unsigned int at) {
    unsigned char byte = 0;
    deHexify(std::string{static_cast<char>(data[at]), static_cast<char>(data[at + 1])}, &byte, 1);
    return byte;
  };
  std::list<AccessPoint> list;
  const std::size_t length = textFrom(data, 0).size();
  for (unsigned int i = 0; 4 * i < length; ++i) {
    list.emplace_back(static_cast<unsigned short>(byteAt(4 * i) * 256 + byteAt(4 * i + 2)),
                      static_cast<unsigned char>(i));
  }
  return shown(list);
}

inline std::string routeTable(const QxZclAnnounce& frame) {
  std::list<AccessPoint> list{AccessPoint(0xDEAD, 9)};
  frame.apRouteTable(list);
  return shown(list);
}

inline std::vector<AttributeRow<QxZclAnnounce>> makeAnnounceRows() {
  using A = QxZclAnnounce;
  using Byte = unsigned char;
  using Short = unsigned short;
  std::vector<AttributeRow<A>> rows{
      attributeRow<Byte, A>("deviceType", 0x0000, 0x20, &A::deviceType, &A::deviceType, &A::hasDeviceType),
      attributeRow<Short, A>("announceWindow", 0x0001, 0x21, &A::announceWindow, &A::announceWindow,
                             &A::hasAnnounceWindow),
      attributeRow<Short, A>("mtorrPeriod", 0x0002, 0x21, &A::mtorrPeriod, &A::mtorrPeriod, &A::hasMtorrPeriod),
      attributeRow<Byte, A>("numZaps", 0x0003, 0x20, &A::numZaps, &A::numZaps, &A::hasNumZaps),
      attributeRow<std::string, A>("firmwareVersion", 0x0004, 0x42, &A::firmwareVersion, &A::firmwareVersion,
                                   &A::hasFirmwareVersion),
      attributeRow<Byte, A>("reflashVersion", 0x0005, 0x20, &A::reflashVersion, &A::reflashVersion,
                            &A::hasReflashVersion),
      attributeRow<Short, A>("bootCount", 0x0006, 0x21, &A::bootCount, &A::bootCount, &A::hasBootCount),
      attributeRow<std::string, A>("productString", 0x0007, 0x42, &A::productString, &A::productString,
                                   &A::hasProductString),
      attributeRow<Short, A>("apPollInterval", 0x000B, 0x21, &A::apPollInterval, &A::apPollInterval,
                             &A::hasApPollInterval),
      attributeRow<Byte, A>("channel", 0x000C, 0x20, &A::channel, &A::channel, &A::hasChannel),
      attributeRow<Short, A>("parentPollInterval", 0x000F, 0x21, &A::parentPollInterval, &A::parentPollInterval,
                             &A::hasParentPollInterval),
      attributeRow<std::string, A>("apRouteTable", 0x0012, 0x41, nullptr, nullptr, &A::hasApTable),
      attributeRow<signed char, A>("nodeRssi", 0x0013, 0x28, &A::nodeRssi, &A::nodeRssi, &A::hasNodeRssi),
      attributeRow<Byte, A>("nodeLqi", 0x0014, 0x20, &A::nodeLqi, &A::nodeLqi, &A::hasNodeLqi),
      attributeRow<signed char, A>("batteryLevel", 0x0015, 0x28, &A::batteryLevel, &A::batteryLevel,
                                   &A::hasBatteryLevel),
      attributeRow<Byte, A>("nodeRadioBars", 0x0016, 0x20, &A::nodeRadioBars, &A::nodeRadioBars, &A::hasNodeRadioBars),
  };
  for (AttributeRow<A>& row : rows) {
    if (row.name == "firmwareVersion") row.reading = firmwareReading;
    if (row.name == "apRouteTable") {
      row.read = routeTable;
      row.reading = routeTableReading;
      row.takesAll = true;
    }
  }
  return rows;
}

inline std::vector<AttributeRow<QxZclSscp>> makeSscpRows() {
  using S = QxZclSscp;
  return {
      attributeRow<unsigned short, S>("announceWindow", 0x0001, 0x21, &S::announceWindow, &S::announceWindow, nullptr),
      attributeRow<unsigned short, S>("mtorrPeriod", 0x0002, 0x21, &S::mtorrPeriod, &S::mtorrPeriod, nullptr),
      attributeRow<unsigned char, S>("apCount", 0x0003, 0x20, &S::apCount, &S::apCount, nullptr),
      attributeRow<unsigned char, S>("channel", 0x000C, 0x20, &S::channel, &S::channel, nullptr),
  };
}

inline std::vector<AttributeRow<ZclSetZap>> makeSetZapRows() {
  using Z = ZclSetZap;
  return {
      attributeRow<unsigned short, Z>("sid", 0x0008, 0x21, &Z::sid, &Z::sid, &Z::hasSid),
      attributeRow<Euid, Z>("lid", 0x0009, 0xF0, &Z::lid, &Z::lid, &Z::hasLid),
      attributeRow<unsigned char, Z>("cost", 0x000A, 0x20, &Z::cost, &Z::cost, &Z::hasCost),
      attributeRow<unsigned short, Z>("endNodeApPeriod", 0x000B, 0x21, nullptr, &Z::endNodeApPeriod, nullptr),
      attributeRow<unsigned short, Z>("endNodeParentPeriod", 0x000F, 0x21, nullptr, &Z::endNodeParentPeriod, nullptr),
  };
}

/// The rows of a class, made once.
template <typename Frame>
const std::vector<AttributeRow<Frame>>& attributeRows() {
  static const std::vector<AttributeRow<Frame>> rows = [] {
    if constexpr (std::is_same_v<Frame, QxZclAnnounce>) {
      return makeAnnounceRows();
    } else if constexpr (std::is_same_v<Frame, QxZclSscp>) {
      return makeSscpRows();
    } else {
      return makeSetZapRows();
    }
  }();
  return rows;
}

/// Those with a certain operation.
template <typename Frame, typename Operation>
std::vector<AttributeRow<Frame>> rowsWith(Operation AttributeRow<Frame>::*operation) {
  std::vector<AttributeRow<Frame>> rows;
  for (const AttributeRow<Frame>& row : attributeRows<Frame>()) {
    if (row.*operation) rows.push_back(row);
  }
  return rows;
}

}  // namespace qx::test
