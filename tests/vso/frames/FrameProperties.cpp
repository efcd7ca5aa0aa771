#include "tests/vso/frames/FrameProperties.h"

#include <algorithm>
#include <cstring>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "tests/vso/frames/SecondDecoder.h"
#include "vso/identifiers/hexify.h"
#include "vso/zcl/ReadAttributeStatusRecord.h"
#include "vso/zcl/ReportAttributeRecord.h"
#include "vso/zcl/WriteAttributeRecord.h"
#include "vso/zcl/WriteAttributeReportRecord.h"
#include "vso/zcl/ZclIdentify.h"
#include "vso/zcl/ZclLevelControl.h"
#include "vso/zcl/ZclOnOff.h"
#include "vso/zcl/ZclOnOffSwitch.h"
#include "vso/zcl/ZclTime.h"

namespace qx::test {

namespace {

using Bytes = std::vector<unsigned char>;

constexpr std::size_t MOST_IDS = 126;     // of 2 bytes behind a header of 3
constexpr std::size_t MOST_RECORDS = 84;  // of at least 3 bytes

constexpr unsigned char READ_RESPONSE = 1;
constexpr unsigned char REPORT = 10;

void require(bool holds, const char* claim) {
  if (!holds) throw std::logic_error(claim);
}

unsigned char statusOf(const AttributeRecordData&) { return 0; }
unsigned char statusOf(const ReadAttributeStatusRecord& record) { return record.status_; }
unsigned char statusOf(const WriteAttributeReportRecord& record) { return record.status_; }

void setStatus(AttributeRecordData&, unsigned char) {}
void setStatus(ReadAttributeStatusRecord& record, unsigned char status) { record.status_ = status; }
void setStatus(WriteAttributeReportRecord& record, unsigned char status) { record.status_ = status; }

template <typename Print>
void requireOutOfRange(Print print) {
  try {
    print();
  } catch (const std::out_of_range& error) {
    require(std::strcmp(error.what(), "array<>: index out of range") == 0, "the exception is the array's own");
    return;
  }
  require(false, "octets beyond the data are out of range");
}

void requirePrinting(const AttributeRecordData& record) {
  const std::string before = "before";
  std::string printed = before;
  std::ostringstream out;
  if (isOctets(record.type_) && record.data_[0] >= DATA_SIZE) {
    requireOutOfRange([&] { record.valueToString(printed); });
    requireOutOfRange([&] { record.print(out); });
    return;
  }
  const bool failed = record.valueToString(printed);
  require(failed != isKnown(record.type_), "a value prints if its type is known");
  require(!failed || printed == before, "a value that does not print leaves the text alone");
  require(&record.print(out) == &out, "print returns its stream");
  const std::string line = out.str();
  const std::string end = failed ? " (error)>" : ">";
  require(line.rfind("<AttributeRecordData id_: 0x", 0) == 0, "a printed record begins with its name");
  require(line.size() > end.size() && line.substr(line.size() - end.size()) == end, "a printed record is closed");
}

template <typename Record>
void requireList(const ZclMessage& frame, const std::vector<Record>& records, const StatedList& stated, Form form) {
  require(records.size() == stated.records.size(), "a list has the records of the frame");
  require(records.size() <= MOST_RECORDS, "no frame holds more records than fit it");
  for (std::size_t i = 0; i < records.size(); ++i) {
    require(records[i].id_ == stated.records[i].id, "a record has its id");
    require(statusOf(records[i]) == stated.records[i].status, "a record has its status");
    require(records[i].type_ == stated.records[i].type, "a record has its type");
    require(records[i].data_ == dataOf(frame, stated.records[i], form), "a record has its value");
  }
}

/// The frame, with the payload that `set` makes of the stated records.
template <typename Record, typename Set>
void requireRebuilt(const ZclMessage& frame, const StatedList& stated, Set set) {
  if (frame.length_ > STORAGE) return;
  bool fits = stated.whole;
  std::vector<Record> records;
  records.reserve(stated.records.size());
  for (const StatedRecord& record : stated.records) {
    records.emplace_back(record.id, record.type, dataOf(frame, record, Form::WIRE));
    setStatus(records.back(), record.status);
    fits = fits && record.valueSize <= DATA_SIZE;
  }
  ZclMessage rebuilt(frame);
  set(rebuilt, records);
  require(rebuilt.length_ <= STORAGE, "a built frame does not outgrow its storage");
  require(std::equal(frame.contents, frame.contents + std::min(headerOf(frame), frame.length_), rebuilt.contents),
          "a list keeps the header");
  if (!fits) return;
  require(rebuilt.length_ == frame.length_, "a whole list is rebuilt to its length");
  require(std::equal(frame.contents, frame.contents + frame.length_, rebuilt.contents), "a whole list is rebuilt");
}

void requireHeader(const ZclMessage& frame) {
  const unsigned char control = byteAt(frame, 0);
  const unsigned int header = headerOf(frame);
  require(frame.headerLength() == header, "the manufacturer code makes the header longer");
  require(frame.payload().at() == header, "the payload lies behind the header");
  require(frame.isValidLength() == (frame.length_ >= header), "a frame is valid from its header on");
  require(frame.affectsEntireProfile() == ((control & 3) == 0), "frame type 0 is a general command");
  require(frame.affectsSpecificCluster() == ((control & 3) == 1), "frame type 1 is a cluster's command");
  require(frame.isCommandFromServer() == ((control & 8) != 0), "the direction bit tells the server");
  require(frame.isCommandFromClient() != frame.isCommandFromServer(), "a command has one direction");
  require(frame.defaultResponseDisabled() == ((control & 16) != 0), "bit 4 disables the default response");
  require(frame.transactionSequenceNumber() == byteAt(frame, header - 2), "the sequence number is the last but one");
  const unsigned char command = byteAt(frame, header - 1);
  require(frame.commandIdentifier() == command, "the command ends the header");
  require(frame.isReadAttributesResponse() == (command == READ_RESPONSE), "command 1 is a read response");
  require(frame.isWriteAttributesResponse() == (command == 4), "command 4 is a write response");
  require(frame.isReportAttributes() == (command == REPORT), "command 10 is a report");
  require(frame.manufacturerCode() == (header == 5 ? wordAt(frame, 1) : 0), "the code follows the frame control");
}

void requireIds(const ZclMessage& frame) {
  std::vector<unsigned short> ids{0xABCD};
  frame.getReadAttributes(ids);
  require(ids.size() <= MOST_IDS, "no frame holds more ids than fit it");
  const unsigned int header = headerOf(frame);
  const unsigned int payload = endOf(frame) > header ? endOf(frame) - header : 0;
  require(ids.size() == (payload + 1) / 2, "an id for every two bytes begun");
  for (std::size_t i = 0; i < ids.size(); ++i) {
    require(ids[i] == wordAt(frame, header + 2 * static_cast<unsigned int>(i)), "an id is two bytes of the payload");
  }
  if (frame.length_ > STORAGE) return;
  ZclMessage rebuilt(frame);
  rebuilt.setReadAttributes(ids);
  require(rebuilt.length_ == std::min(header + 2 * static_cast<unsigned int>(ids.size()), STORAGE),
          "two bytes for every id");
  require(std::equal(frame.contents + header, frame.contents + rebuilt.length_, rebuilt.contents + header),
          "the ids are rebuilt");
}

void requireMembership(const ZclMessage& frame) {
  std::vector<unsigned short> ids;
  frame.getReadAttributes(ids);
  for (const unsigned short id : ids) {
    require(frame.hasReadAttributeId(id), "a frame has the ids of its list");
    const auto neighbour = static_cast<unsigned short>(id + 1);
    require(frame.hasReadAttributeId(neighbour) == (std::count(ids.begin(), ids.end(), neighbour) != 0),
            "a frame has no other id");
  }
}

void requireGetAttribute(const std::vector<ReportAttributeRecord>& records, int id) {
  const auto found =
      std::find_if(records.begin(), records.end(), [id](const auto& record) { return record.id_ == id; });
  std::string expected;
  if (found == records.end()) {
    expected = "no matching report attribute";
  } else if (found->type_ != 0x42) {
    expected = "cannot retrieve non-string value as string";
  } else {
    expected.assign(found->data_.begin(), std::find(found->data_.begin(), found->data_.end(), '\0'));
    require(ReportAttributeRecord::getAttribute(records, id) == expected, "an attribute's text is that of its record");
    return;
  }
  try {
    ReportAttributeRecord::getAttribute(records, id);
  } catch (const std::runtime_error& error) {
    require(error.what() == expected, "an attribute without a text says why");
    return;
  }
  require(false, "an attribute without a text throws");
}

/// The data of the record that a typed reader looks for, by way of the lists; null without one.
const AttributeRecordData* answerOf(const ZclMessage& frame, const std::vector<ReadAttributeStatusRecord>& response,
                                    const std::vector<ReportAttributeRecord>& report, unsigned short id) {
  if (frame.commandIdentifier() == READ_RESPONSE) {
    for (const ReadAttributeStatusRecord& record : response) {
      if (record.id_ == id && record.status_ == 0) return &record;
    }
  }
  if (frame.commandIdentifier() == REPORT) {
    for (const ReportAttributeRecord& record : report) {
      if (record.id_ == id) return &record;
    }
  }
  return nullptr;
}

template <typename T, typename Value>
void requireReading(const ZclReading<T>& reading, const AttributeRecordData* answer, Value value) {
  require(reading.state == (answer != nullptr ? 1U : 2U), "a reading says if the frame answers");
  require(reading.value == (answer != nullptr ? value(*answer) : T()), "a reading is the first record's value");
}

void requireSuccess(const ZclReading<bool>& reading, const ZclMessage& frame, unsigned short id) {
  std::vector<WriteAttributeReportRecord> records;
  frame.getWriteAttributeResponses(records);
  const bool success = frame.commandIdentifier() == 4 &&
                       std::any_of(records.begin(), records.end(),
                                   [id](const auto& record) { return record.id_ == id && record.status_ == 0; });
  require(reading.value == success, "a write succeeded if a record says so");
  require(reading.state == (success ? 1U : 2U), "a success is an answer");
}

struct ValueLists {
  explicit ValueLists(const ZclMessage& frame) {
    frame.getReadAttributesResponse(response);
    frame.getReportAttributes(report);
  }
  std::vector<ReadAttributeStatusRecord> response;
  std::vector<ReportAttributeRecord> report;
};

void requireReadings(const ZclOnOff& frame) {
  const ValueLists lists(frame);
  const AttributeRecordData* answer = answerOf(frame, lists.response, lists.report, 0x0000);
  requireReading(frame.on(), answer, [](const AttributeRecordData& record) { return record.data_[0] == 1; });
  require(frame.off().value != frame.on().value, "off is the inverse of on");
  require(frame.off().state == frame.on().state, "off answers when on does");
  requireSuccess(frame.onSuccess(), frame, 0x0000);
  requireSuccess(frame.offSuccess(), frame, 0x0000);
  requireSuccess(frame.toggleSuccess(), frame, 0x0000);
}

void requireReadings(const ZclLevelControl& frame) {
  const ValueLists lists(frame);
  const auto answer = [&](unsigned short id) { return answerOf(frame, lists.response, lists.report, id); };
  const auto byte = [](const AttributeRecordData& record) { return record.data_[0]; };
  const auto word = [](const AttributeRecordData& record) { return record.getUInt16(); };
  requireReading(frame.currentLevel(), answer(0x0000), byte);
  requireReading(frame.remainingTime(), answer(0x0001), word);
  requireReading(frame.transitionTime(), answer(0x0010), word);
  requireReading(frame.onLevel(), answer(0x0011), byte);
  requireSuccess(frame.currentLevelSuccess(), frame, 0x0000);
  requireSuccess(frame.remainingTimeSuccess(), frame, 0x0001);
  requireSuccess(frame.transitionTimeSuccess(), frame, 0x0010);
  requireSuccess(frame.onLevelSuccess(), frame, 0x0011);
}

/// What appending does to `frame`: it grows by `bytes`, as far as there is room, and changes nothing else.
template <typename Append>
void requireAppended(const ZclMessage& frame, const Bytes& bytes, Append append) {
  ZclMessage grown(frame);
  append(grown);
  const std::size_t room = STORAGE - frame.length_;
  const std::size_t fitting = std::min(bytes.size(), room);
  require(grown.length_ == frame.length_ + fitting, "a frame grows by what fits");
  require(std::equal(frame.contents, frame.contents + frame.length_, grown.contents), "appending keeps what is there");
  require(
      std::equal(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(fitting), grown.contents + frame.length_),
      "the bytes that fit are appended in order");
}

void requireAppends(const ZclMessage& frame) {
  const std::string text(frame.contents, frame.contents + frame.length_);
  Bytes textBytes{static_cast<unsigned char>(text.size())};
  textBytes.insert(textBytes.end(), text.begin(), text.end());

  ZclMessage full(frame);
  while (full.length_ < STORAGE - 1) full.addByte(0x5A);
  ZclMessage fullToTheLast(full);
  fullToTheLast.addByte(0x5B);
  const ZclMessage* const starts[] = {&frame, &full, &fullToTheLast};
  for (const ZclMessage* start : starts) {
    requireAppended(*start, {0x12}, [](ZclMessage& grown) { grown.addByte(0x12); });
    requireAppended(*start, {0x34, 0x12}, [](ZclMessage& grown) { grown.addUint16(0x1234); });
    requireAppended(*start, {0x78, 0x56, 0x34, 0x12}, [](ZclMessage& grown) { grown.addUint32(0x12345678); });
    requireAppended(*start, textBytes, [&](ZclMessage& grown) { grown.addString(text); });
  }
}

void requireHeaderSetters(const ZclMessage& frame) {
  ZclMessage changed(frame);
  changed.disableDefaultResponse();
  require(changed.defaultResponseDisabled(), "the default response can be disabled");
  require(byteAt(changed, 0) == (byteAt(frame, 0) | 0x10), "disabling it changes one bit");
  changed.setTsn(0xA5);
  changed.setCid(0x5A);
  require(changed.transactionSequenceNumber() == 0xA5, "a sequence number that is set is read");
  require(changed.commandIdentifier() == 0x5A, "a command that is set is read");
  require(changed.length_ == frame.length_, "the setters of the header leave the length");
}

void requireCommand(const ZclLevelControl& frame, const Bytes& payload) {
  const unsigned int header = headerOf(frame);
  require(frame.length_ == header + payload.size(), "a command ends with its payload");
  require(std::equal(payload.begin(), payload.end(), frame.contents + header),
          "a command's payload follows its header");
}

void requireBuilders(const ZclLevelControl& frame) {
  ZclLevelControl built(frame);
  built.moveToLevel(0x80, 0x1234);
  requireCommand(built, {0x80, 0x34, 0x12});
  built.move(0x01, 0x1234);
  requireCommand(built, {0x01, 0x34, 0x12});
  built.step(0x01, 0x10, 0x1234);
  requireCommand(built, {0x01, 0x10, 0x34, 0x12});
  built.stopWOnOff();
  requireCommand(built, {});
  require(built.commandIdentifier() == 7, "stop with on/off is command 7");
}

template <typename Record>
void requirePrinting(const std::vector<Record>& records) {
  for (const Record& record : records) {
    requirePrinting(static_cast<const AttributeRecordData&>(record));
    require(*ZclMessage::zclStatusToStr(static_cast<ZclStatus>(statusOf(record))) != '\0', "every status has a text");
  }
}

/// What the records of the lists say of themselves. Those of the write commands are no different.
void requireRecordProperties(const ZclMessage& frame) {
  std::vector<ReportAttributeRecord> report;
  frame.getReportAttributes(report);
  requirePrinting(report);
  for (const ReportAttributeRecord& record : report) requireGetAttribute(report, record.id_);
  requireGetAttribute(report, 0x10000);
  ReportAttributeRecord::debug(report);

  std::vector<ReadAttributeStatusRecord> statuses;
  frame.getReadAttributesResponse(statuses);
  requirePrinting(statuses);
  frame.getReadAttributesResponse(statuses, true);
  requirePrinting(statuses);
}

/// A frame of a class that has no constructor for received bytes.
template <typename Cluster>
void requireAssigned(const ZclMessage& frame) {
  Cluster cluster;
  static_cast<ZclMessage&>(cluster) = frame;
  requireReaderProperties(cluster);
}

}  // namespace

void requireReaderProperties(const ZclMessage& frame) {
  const Bytes before(frame.contents, frame.contents + STORAGE);
  requireHeader(frame);
  requireIds(frame);

  const StatedList values = statedList(frame, Layout::VALUE);
  std::vector<ReportAttributeRecord> report(2);
  frame.getReportAttributes(report);
  requireList(frame, report, values, Form::READABLE);
  requireRebuilt<ReportAttributeRecord>(
      frame, values, [](ZclMessage& rebuilt, const auto& records) { rebuilt.setReportAttributes(records); });

  std::vector<WriteAttributeRecord> write(2);
  frame.getWriteAttributes(write);
  requireList(frame, write, values, Form::READABLE);
  requireRebuilt<WriteAttributeRecord>(
      frame, values, [](ZclMessage& rebuilt, const auto& records) { rebuilt.setWriteAttributes(records); });

  const StatedList response = statedList(frame, Layout::STATUS_VALUE);
  std::vector<ReadAttributeStatusRecord> statuses(2);
  frame.getReadAttributesResponse(statuses);
  requireList(frame, statuses, response, Form::READABLE);
  frame.getReadAttributesResponse(statuses, false);
  requireList(frame, statuses, response, Form::READABLE);
  frame.getReadAttributesResponse(statuses, true);
  requireList(frame, statuses, response, Form::WIRE);
  requireRebuilt<ReadAttributeStatusRecord>(
      frame, response, [](ZclMessage& rebuilt, const auto& records) { rebuilt.setReadAttributesResponse(records); });

  const StatedList written = statedList(frame, Layout::STATUS_ID);
  std::vector<WriteAttributeReportRecord> successes(2);
  frame.getWriteAttributeResponses(successes);
  requireList(frame, successes, written, Form::READABLE);
  requireRebuilt<WriteAttributeReportRecord>(
      frame, written, [](ZclMessage& rebuilt, const auto& records) { rebuilt.setWriteAttributeResponses(records); });

  require(std::equal(before.begin(), before.end(), frame.contents), "reading changes nothing");
}

void requireFrameProperties(const U255Buff<unsigned char>& bytes) {
  const ZclMessage frame(bytes);
  require(frame.length_ == (bytes.length_ <= STORAGE ? bytes.length_ : 0), "a frame too long for its storage is empty");
  requireReaderProperties(frame);
  requireMembership(frame);
  requireRecordProperties(frame);

  std::string text;
  hexify(frame.contents, frame.length_, text, false);
  const ZclMessage fromText(text);
  require(fromText.length_ == frame.length_, "text gives a frame of half its length");
  require(std::equal(frame.contents, frame.contents + STORAGE, fromText.contents),
          "text gives the frame of its digits");
  require(fromText.isManufacturerSpecific() == frame.isManufacturerSpecific(), "text gives the frame's flags");

  const ZclOnOff onOff(bytes);
  requireReaderProperties(onOff);
  requireReadings(onOff);
  requireReadings(ZclOnOff(text));
  const ZclLevelControl level(bytes);
  requireReaderProperties(level);
  requireReadings(level);
  requireReadings(ZclLevelControl(text));
  requireAssigned<ZclIdentify>(frame);
  requireAssigned<ZclOnOffSwitch>(frame);
  requireAssigned<ZclTime>(frame);

  requireAppends(frame);
  requireHeaderSetters(frame);
  requireBuilders(level);
}

}  // namespace qx::test
