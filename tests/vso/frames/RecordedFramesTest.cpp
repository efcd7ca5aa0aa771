// Frames of other makers' devices and libraries, read and rebuilt, against what independent decoders state of them.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "support/Bytes.h"
#include "support/LogCapture.h"
#include "tests/vso/frames/FrameFacts.h"
#include "tests/vso/frames/FramesFile.h"
#include "tests/vso/frames/KnownDifferences.h"
#include "tests/vso/frames/RebuiltFrame.h"
#include "vso/zcl/ReadAttributeStatusRecord.h"
#include "vso/zcl/ReportAttributeRecord.h"
#include "vso/zcl/WriteAttributeRecord.h"
#include "vso/zcl/WriteAttributeReportRecord.h"
#include "vso/zcl/ZclLevelControl.h"
#include "vso/zcl/ZclOnOff.h"
#include "vso/zcl/ZclTime.h"

namespace qx::test {
namespace {

using nlohmann::json;
using Data = AttributeRecordData::Data;

/// Types of attributes in the file that the library's table does not have: unsigned 56-bit integer, structure, UTC
/// time.
const std::set<unsigned char> TYPES_WITHOUT_VALUE{0x26, 0x4C, 0xE2};

/// Number of things by kind.
using Counts = std::map<std::string, unsigned int>;

// What the file holds, by a search of its text: no more than that has to be right for a count to tell of frames that
// were lost on the way to the comparison.

/// Lines of the file without their blanks.
std::vector<std::string> linesOf(const std::string& path) {
  std::vector<std::string> lines;
  std::ifstream in(path);
  for (std::string line; std::getline(in, line);) {
    line.erase(std::remove(line.begin(), line.end(), ' '), line.end());
    lines.push_back(line);
  }
  return lines;
}

bool has(const std::string& line, const std::string& text) { return line.find(text) != std::string::npos; }

bool isComparedLine(const std::string& line) {
  const char* const clusters[] = {"0003", "0006", "0007", "0008", "000a"};
  return has(line, R"("layer":"zcl")") &&
         (has(line, R"("frameType":0)") || std::any_of(std::begin(clusters), std::end(clusters), [&](const char* id) {
            return has(line, std::string(R"("cluster":"0x)") + id);
          }));
}

std::string kindOfLine(const std::string& line) {
  const std::string key = R"("kind":")";
  const std::size_t at = line.find(key);
  if (at == std::string::npos) return HEADER_ONLY;
  return line.substr(at + key.size(), line.find('"', at + key.size()) - at - key.size());
}

unsigned int occurrences(const std::string& line, const std::string& text) {
  unsigned int count = 0;
  for (std::size_t at = line.find(text); at != std::string::npos; at = line.find(text, at + 1)) ++count;
  return count;
}

// Texts for comparison.

std::string hexNumber(unsigned int number, int digits) {
  char text[16];
  std::snprintf(text, sizeof text, "0x%0*x", digits, number);
  return text;
}

/// The bytes of an attribute's data without the zeros at its end.
std::string shown(const Data& data) {
  std::size_t count = data.size();
  while (count != 0 && data[count - 1] == 0) --count;
  return count == 0 ? "of zeros" : digitsOf(data.data(), count);
}

/// Where two frames part; empty if they are the same.
std::string frameDifference(const U255Buff<unsigned char>& recorded, const U255Buff<unsigned char>& built) {
  if (hex(recorded) == hex(built)) return "";
  unsigned int same = 0;
  while (same < std::min(recorded.length_, built.length_) && recorded.contents[same] == built.contents[same]) ++same;
  return "same up to byte " + std::to_string(same) + ", recorded " + std::to_string(recorded.length_) + ", built " +
         std::to_string(built.length_);
}

void append(std::string& text, const std::string& separator, const std::string& more) {
  if (!text.empty() && !more.empty()) text += separator;
  text += more;
}

long long numberOf(const AttributeRecordData& record, std::size_t bytes) {
  const unsigned long long mask = bytes == 8 ? ~0ULL : (1ULL << 8 * bytes) - 1;
  const unsigned long long bits = record.getUInt64() & mask;
  const bool isNegative = (record.type_ & 0xF8) == 0x28 && (bits >> (8 * bytes - 1)) != 0;
  return static_cast<long long>(isNegative ? bits | ~mask : bits);
}

/// The value as the decoder would state it.
json valueOf(const AttributeRecordData& record, std::size_t bytes) {
  switch (record.type_) {
    case 0x08:
      return std::vector<unsigned char>{record.data_[0]};
    case 0x39: {
      const unsigned int bits = record.getUInt32();
      float number;
      std::memcpy(&number, &bits, sizeof number);
      return number;
    }
    case 0x41:
      return {{"hex", std::string(record.data_.begin(), std::find(record.data_.begin(), record.data_.end(), '\0'))}};
    case 0x42:
      return std::string(record.data_.begin(), std::find(record.data_.begin(), record.data_.end(), '\0'));
    case 0xF0:
      return "0x" + record.getEuid().toString();
    default:
      return numberOf(record, bytes);
  }
}

/// Bytes that are not UTF-8 come out as U+FFFD, in which the decoder states them too.
std::string textOf(const json& value) { return value.dump(-1, ' ', false, json::error_handler_t::replace); }

std::string valueDifference(const json& stated, const AttributeRecordData& read) {
  const std::vector<unsigned char> readable = readableOf(stated);
  if (read.data_ != dataOf(readable)) {
    return "data " + shown(dataOf(readable)) + " stated, " + shown(read.data_) + " read";
  }
  const std::string value = textOf(valueOf(read, readable.size()));
  if (value != textOf(stated.at("value"))) return "value " + textOf(stated.at("value")) + " stated, " + value + " read";

  AttributeRecordData printable = read;
  if (read.type_ == 0x41) printable.data_ = dataOf(rawOf(stated));
  std::string printed;
  if (printable.valueToString(printed)) return "the value does not print";
  if (printed != printedOf(stated)) return "\"" + printedOf(stated) + "\" to be printed, \"" + printed + "\" is";
  return "";
}

/// A record as it was read: with a status, or without one, and where a reader gives it, in wire form too.
struct ReadRecord {
  AttributeRecordData readable;
  int status = 0;
  const AttributeRecordData* wire = nullptr;
};

std::string recordDifference(const json& stated, const ReadRecord& read) {
  const AttributeRecordData& record = read.readable;
  if (!stated.contains("id")) return "no id stated, " + hexNumber(record.id_, 4) + " read";
  if (record.id_ != stated.at("id")) return "another id, " + hexNumber(record.id_, 4);
  if (read.status != stated.value("status", 0)) return "another status, " + hexNumber(read.status, 2);
  if (!stated.contains("type")) {
    if (record.type_ == 0 && record.data_ == Data{}) return "";
    return "no value stated, type " + hexNumber(record.type_, 2) + " and data " + shown(record.data_) + " read";
  }
  if (record.type_ != stated.at("type")) return "another type, " + hexNumber(record.type_, 2);
  if (read.wire != nullptr && TYPES_WITHOUT_VALUE.count(record.type_) == 0 &&
      (read.wire->id_ != record.id_ || read.wire->type_ != record.type_ || read.wire->data_ != dataOf(rawOf(stated)))) {
    return "another value in wire form, " + shown(read.wire->data_);
  }
  return valueDifference(stated, record);
}

/// Counts each stated attribute as compared or, behind a value of unknown length, as not to be compared.
std::string recordsDifference(const json& stated, const std::vector<ReadRecord>& read, Counts& attributes) {
  std::string difference;
  for (std::size_t i = 0; i < stated.size(); ++i) {
    const std::string name = "record " + std::to_string(i) + ": ";
    if (i == read.size()) return "only " + std::to_string(i) + " records";
    ++attributes["compared"];
    const AttributeRecordData& record = read[i].readable;
    if (TYPES_WITHOUT_VALUE.count(record.type_) != 0 && record.type_ == stated[i].value("type", 0) &&
        record.id_ == stated[i].at("id") && read[i].status == stated[i].value("status", 0) && record.data_ == Data{}) {
      const std::size_t rest = stated.size() - i - 1;
      attributes["behind an unknown length"] += static_cast<unsigned int>(rest);
      append(difference, "; ", name + "type " + hexNumber(record.type_, 2) + " has no value");
      const std::vector<unsigned char> raw = rawOf(stated[i]);
      if (raw.size() >= 2 && (i + 1 == read.size() || read[i + 1].readable.id_ != raw[0] + 256 * raw[1])) {
        append(difference, "; ", "the next record does not begin behind the type");
      }
      return difference;
    }
    const std::string own = recordDifference(stated[i], read[i]);
    append(difference, "; ", own.empty() ? "" : name + own);
  }
  if (read.size() != stated.size()) append(difference, "; ", std::to_string(read.size()) + " records read");
  return difference;
}

std::vector<ReadRecord> readRecords(const ZclMessage& frame, const std::string& kind,
                                    std::vector<ReadAttributeStatusRecord>& wire) {
  std::vector<ReadRecord> read;
  if (kind == READ_ATTRIBUTES) {
    std::vector<unsigned short> ids;
    frame.getReadAttributes(ids);
    for (const unsigned short id : ids) read.push_back({AttributeRecordData(id, 0, Data{}), 0, nullptr});
  } else if (kind == READ_RESPONSE) {
    std::vector<ReadAttributeStatusRecord> records;
    frame.getReadAttributesResponse(records);
    frame.getReadAttributesResponse(wire, true);
    for (std::size_t i = 0; i < records.size(); ++i) read.push_back({records[i], records[i].status_, &wire.at(i)});
  } else if (kind == WRITE_RESPONSE) {
    std::vector<WriteAttributeReportRecord> records;
    frame.getWriteAttributeResponses(records);
    for (const WriteAttributeReportRecord& record : records) read.push_back({record, record.status_, nullptr});
  } else if (kind == WRITE_ATTRIBUTES) {
    std::vector<WriteAttributeRecord> records;
    frame.getWriteAttributes(records);
    for (const WriteAttributeRecord& record : records) read.push_back({record, 0, nullptr});
  } else {
    std::vector<ReportAttributeRecord> records;
    frame.getReportAttributes(records);
    for (const ReportAttributeRecord& record : records) read.push_back({record, 0, nullptr});
  }
  return read;
}

// The header.

/// The header as it is stated, in the words in which the library's own is put.
std::string statedHeader(const json& header) {
  return json{{"frameType", header.at("frameType")},
              {"manufacturerSpecific", header.at("manufacturerSpecific")},
              {"serverToClient", header.at("serverToClient")},
              {"disableDefaultResponse", header.at("disableDefaultResponse")},
              {"manufacturerCode", header.at("manufacturerCode").is_null() ? json(0) : header.at("manufacturerCode")},
              {"sequence", header.at("sequence")},
              {"command", header.at("command")},
              {"frameControl", frameControlOf(header)}}
      .dump();
}

std::string readHeader(const ZclMessage& frame) {
  return json{{"frameType", frame.affectsEntireProfile()     ? 0
                            : frame.affectsSpecificCluster() ? 1
                                                             : 2},
              {"manufacturerSpecific", frame.isManufacturerSpecific()},
              {"serverToClient", frame.isCommandFromServer()},
              {"disableDefaultResponse", frame.defaultResponseDisabled()},
              {"manufacturerCode", frame.manufacturerCode()},
              {"sequence", frame.transactionSequenceNumber()},
              {"command", frame.commandIdentifier()},
              {"frameControl", FrameReader(frame).u8()}}
      .dump();
}

// Typed readers.

/// What each typed reader gives, by its name; "none" where the frame does not answer.
using Readings = std::map<std::string, std::string>;

template <typename T>
std::string shown(const ZclReading<T>& reading, T absent = T()) {
  if (reading.state == 1) return std::to_string(reading.value);
  return reading.state == 2 && reading.value == absent ? "none" : "none, but with a value";
}

Readings readingsOf(const U255Buff<unsigned char>& bytes) {
  const ZclOnOff onOff(bytes);
  const ZclLevelControl level(bytes);
  return {
      {"on", shown(onOff.on())},
      {"off", shown(onOff.off(), true)},
      {"onSuccess", shown(onOff.onSuccess())},
      {"offSuccess", shown(onOff.offSuccess())},
      {"toggleSuccess", shown(onOff.toggleSuccess())},
      {"currentLevel", shown(level.currentLevel())},
      {"remainingTime", shown(level.remainingTime())},
      {"transitionTime", shown(level.transitionTime())},
      {"onLevel", shown(level.onLevel())},
      {"currentLevelSuccess", shown(level.currentLevelSuccess())},
      {"remainingTimeSuccess", shown(level.remainingTimeSuccess())},
      {"transitionTimeSuccess", shown(level.transitionTimeSuccess())},
      {"onLevelSuccess", shown(level.onLevelSuccess())},
  };
}

/// The first two bytes of the attribute that a typed reader looks for, as the facts have it; false without one.
bool statedAnswer(const RecordedFrame& frame, int id, unsigned int& byte, unsigned int& word) {
  if (kindOf(frame) != READ_RESPONSE && kindOf(frame) != REPORT) return false;
  for (const json& attribute : frame.facts.at("attributes")) {
    if (attribute.at("id") != id || attribute.value("status", 0) != 0) continue;
    const Data data = dataOf(readableOf(attribute));
    byte = data[0];
    word = data[0] + 256U * data[1];
    return true;
  }
  return false;
}

/// A write response without ids stands for all attributes.
std::string statedSuccess(const RecordedFrame& frame, int id) {
  if (kindOf(frame) != WRITE_RESPONSE) return "none";
  for (const json& attribute : frame.facts.at("attributes")) {
    if (attribute.value("id", id) == id && attribute.at("status") == 0) return "1";
  }
  return "none";
}

Readings statedReadings(const RecordedFrame& frame) {
  unsigned int byte = 0;
  unsigned int word = 0;
  Readings readings;
  const bool hasState = statedAnswer(frame, 0x0000, byte, word);
  readings["on"] = hasState ? std::to_string(byte == 1) : "none";
  readings["off"] = hasState ? std::to_string(byte != 1) : "none";
  readings["currentLevel"] = hasState ? std::to_string(byte) : "none";
  readings["remainingTime"] = statedAnswer(frame, 0x0001, byte, word) ? std::to_string(word) : "none";
  readings["transitionTime"] = statedAnswer(frame, 0x0010, byte, word) ? std::to_string(word) : "none";
  readings["onLevel"] = statedAnswer(frame, 0x0011, byte, word) ? std::to_string(byte) : "none";
  for (const char* reader : {"onSuccess", "offSuccess", "toggleSuccess", "currentLevelSuccess"}) {
    readings[reader] = statedSuccess(frame, 0x0000);
  }
  readings["remainingTimeSuccess"] = statedSuccess(frame, 0x0001);
  readings["transitionTimeSuccess"] = statedSuccess(frame, 0x0010);
  readings["onLevelSuccess"] = statedSuccess(frame, 0x0011);
  return readings;
}

std::string readingsDifference(const Readings& stated, const Readings& read) {
  std::string difference;
  for (const auto& [reader, value] : stated) {
    if (read.at(reader) != value)
      append(difference, "; ", reader + " " + value + " stated, " + read.at(reader) + " read");
  }
  return difference;
}

// The Time cluster.

constexpr long long ZCL_EPOCH = 946684800;

std::string wireOf(const json& attribute) {
  const unsigned int id = attribute.at("id");
  std::vector<unsigned char> bytes{static_cast<unsigned char>(id), static_cast<unsigned char>(id >> 8),
                                   attribute.at("status"), attribute.at("type")};
  for (const unsigned char byte : rawOf(attribute)) bytes.push_back(byte);
  return digitsOf(bytes.data(), bytes.size());
}

std::string timeDifference(const RecordedFrame& frame, Counts& attributes) {
  std::string difference;
  for (const json& attribute : frame.facts.at("attributes")) {
    ZclTime built;
    if (attribute.at("status") != 0) continue;
    if (attribute.at("id") == 0) {
      built.fixedTime(static_cast<int>(attribute.at("value").get<long long>() + ZCL_EPOCH));
      built.populateTime();
    } else if (attribute.at("id") == 1) {
      built.populateStatus();
    } else {
      continue;
    }
    ++attributes[attribute.at("id") == 0 ? "time" : "status"];
    const std::string payload = digitsOf(built.contents + 3, built.length_ - 3);
    if (payload != wireOf(attribute)) append(difference, "; ", wireOf(attribute) + " recorded, " + payload + " built");
  }
  return difference;
}

class RecordedFrames : public ::testing::Test {
 protected:
  void SetUp() override {
    const std::optional<std::string> path = pathOfFrames("open.jsonl");
    if (!path) GTEST_SKIP() << "VSO_FRAMES_DIR names no folder with a file open.jsonl";
    path_ = *path;
    for (RecordedFrame& frame : readFrames(path_)) {
      if (frame.layer == "zcl") frames_.push_back(std::move(frame));
    }
  }

  /// Expects the frame to differ from its facts exactly as it is listed to.
  void expectListed(const RecordedFrame& frame, Subject subject, const std::string& difference) {
    const KnownDifference* known = knownDifference(frame.id, subject);
    EXPECT_EQ(difference, known != nullptr ? known->difference : "")
        << frame.id << " " << frame.hex << ", listed because " << (known != nullptr ? known->reason : "(it is not)");
    if (known != nullptr) ++listedFrames_;
  }

  /// Expects every listed frame of this subject to have been compared.
  void expectAllListedMet(Subject subject) { EXPECT_EQ(listedFrames_, countKnownDifferences(subject)); }

  /// Frames of the file to be compared, by kind.
  Counts framesInFile(const std::set<std::string>& kinds) {
    Counts counts;
    for (const std::string& line : linesOf(path_)) {
      if (isComparedLine(line) && kinds.count(kindOfLine(line)) != 0) ++counts[kindOfLine(line)];
    }
    return counts;
  }

  /// Builders warn of a frame that is full.
  const LogCapture log_;
  std::string path_;
  /// Those of the ZCL layer.
  std::vector<RecordedFrame> frames_;
  std::ptrdiff_t listedFrames_ = 0;
};

const std::set<std::string> LIST_KINDS{READ_ATTRIBUTES, READ_RESPONSE, WRITE_ATTRIBUTES, WRITE_RESPONSE, REPORT};
const std::set<std::string> ALL_KINDS{READ_ATTRIBUTES, READ_RESPONSE,    WRITE_ATTRIBUTES, WRITE_RESPONSE,
                                      REPORT,          DEFAULT_RESPONSE, CLUSTER_COMMAND,  HEADER_ONLY};

TEST_F(RecordedFrames, HeadersReadAsStated) {
  unsigned int compared = 0;
  for (const RecordedFrame& frame : frames_) {
    const std::string stated = statedHeader(frame.facts.at("header"));
    EXPECT_EQ(readHeader(ZclMessage(frame.bytes)), stated) << frame.id << " " << frame.hex;
    EXPECT_EQ(readHeader(ZclMessage(frame.hex)), stated) << frame.id << " " << frame.hex << " as text";
    ++compared;
  }
  const std::vector<std::string> lines = linesOf(path_);
  EXPECT_EQ(compared, std::count_if(lines.begin(), lines.end(),
                                    [](const std::string& line) { return has(line, R"("layer":"zcl")"); }));
  EXPECT_GT(compared, 0U);
}

TEST_F(RecordedFrames, RecordsReadAsStated) {
  Counts frames;
  Counts attributes;
  for (const RecordedFrame& frame : frames_) {
    const std::string kind = kindOf(frame);
    if (!isCompared(frame) || LIST_KINDS.count(kind) == 0) continue;
    ++frames[kind];
    const ZclMessage message(frame.bytes);
    std::vector<ReadAttributeStatusRecord> wire;
    const std::vector<ReadRecord> read = readRecords(message, kind, wire);
    expectListed(frame, Subject::RECORDS, recordsDifference(frame.facts.at("attributes"), read, attributes));
    for (const ReadRecord& record : read) {
      if (kind == READ_ATTRIBUTES) {
        EXPECT_TRUE(message.hasReadAttributeId(record.readable.id_)) << frame.id;
      }
    }
  }
  expectAllListedMet(Subject::RECORDS);

  EXPECT_EQ(frames, framesInFile(LIST_KINDS));
  EXPECT_EQ(frames.size(), LIST_KINDS.size());
  unsigned int stated = 0;
  for (const std::string& line : linesOf(path_)) {
    if (!isComparedLine(line) || LIST_KINDS.count(kindOfLine(line)) == 0) continue;
    // The objects of the list; one without an id has a status alone.
    for (char digit = '0'; digit <= '9'; ++digit) stated += occurrences(line, std::string(R"("id":)") + digit);
    stated += occurrences(line, R"([{"status":0}])");
  }
  EXPECT_EQ(attributes["compared"] + attributes["behind an unknown length"], stated);
}

TEST_F(RecordedFrames, DefaultResponsesCarryCommandAndStatus) {
  Counts frames;
  for (const RecordedFrame& frame : frames_) {
    if (kindOf(frame) != DEFAULT_RESPONSE) continue;
    ++frames[DEFAULT_RESPONSE];
    const ZclMessage message(frame.bytes);
    FrameReader in = message.payload();
    EXPECT_EQ(in.u8(), frame.facts.at("fields").at("commandId")) << frame.id << " " << frame.hex;
    EXPECT_EQ(in.u8(), frame.facts.at("fields").at("status")) << frame.id << " " << frame.hex;
    EXPECT_FALSE(in.more()) << frame.id << " " << frame.hex;
  }
  EXPECT_EQ(frames, framesInFile({DEFAULT_RESPONSE}));
  EXPECT_FALSE(frames.empty());
}

TEST_F(RecordedFrames, FactsRebuildTheFrame) {
  Counts frames;
  for (const RecordedFrame& frame : frames_) {
    if (!isCompared(frame)) continue;
    ++frames[kindOf(frame)];
    const ZclMessage built = rebuilt(frame);
    U255Buff<unsigned char> recorded = frame.bytes;
    if (kindOf(frame) == HEADER_ONLY) recorded.length_ = built.headerLength();
    expectListed(frame, Subject::REBUILT, frameDifference(recorded, built));
  }
  expectAllListedMet(Subject::REBUILT);
  EXPECT_EQ(frames, framesInFile(ALL_KINDS));
  EXPECT_EQ(frames.size(), ALL_KINDS.size());
}

TEST_F(RecordedFrames, TypedReadersGiveTheStatedValues) {
  Counts frames;
  unsigned int answers = 0;
  for (const RecordedFrame& frame : frames_) {
    if (!isCompared(frame)) continue;
    ++frames[kindOf(frame)];
    const Readings stated = statedReadings(frame);
    expectListed(frame, Subject::READINGS, readingsDifference(stated, readingsOf(frame.bytes)));
    for (const auto& [reader, value] : stated) answers += value != "none" ? 1 : 0;
  }
  expectAllListedMet(Subject::READINGS);
  EXPECT_EQ(frames, framesInFile(ALL_KINDS));
  EXPECT_GT(answers, 0U);
}

TEST_F(RecordedFrames, TimeIsAnsweredInTheLibrarysOwnWay) {
  unsigned int compared = 0;
  Counts attributes;
  for (const RecordedFrame& frame : frames_) {
    if (frame.cluster != 0x000A || kindOf(frame) != READ_RESPONSE) continue;
    ++compared;
    expectListed(frame, Subject::TIME, timeDifference(frame, attributes));
  }
  expectAllListedMet(Subject::TIME);
  const std::vector<std::string> lines = linesOf(path_);
  EXPECT_EQ(compared, std::count_if(lines.begin(), lines.end(), [](const std::string& line) {
              return has(line, R"("cluster":"0x000a")") && kindOfLine(line) == READ_RESPONSE;
            }));
  EXPECT_GT(attributes["time"], 0U);
  EXPECT_GT(attributes["status"], 0U);
}

}  // namespace
}  // namespace qx::test
