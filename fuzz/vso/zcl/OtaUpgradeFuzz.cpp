// The requests of the OTA Upgrade cluster on arbitrary bytes. Reachable from outside: any node of the mesh chooses
// every byte of the frames that the server parses with this class, up to the length that the radio link delivers. What
// is built of the same bytes comes from the image files and from the server's clients.
#include <log4cplus/logger.h>
#include <log4cplus/nullappender.h>

#include <algorithm>
#include <boost/logic/tribool.hpp>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <vector>

#include "fuzz/support/trapUnless.h"
#include "vso/zcl/ReadAttributeStatusRecord.h"
#include "vso/zcl/ZclOtaUpgrade.h"

namespace {

using boost::logic::indeterminate;
using boost::logic::tribool;
using qx::U255Buff;
using qx::ZclOtaUpgrade;
using qx::fuzz::trapUnless;

constexpr unsigned int STORAGE = 255;
constexpr unsigned int ANY = 0xFFFFFFFF;

/// A byte of the frame's storage, 0 behind it.
unsigned int byteAt(const U255Buff<unsigned char>& frame, unsigned int at) {
  return at < STORAGE ? frame.contents[at] : 0;
}

unsigned int wordAt(const U255Buff<unsigned char>& frame, unsigned int at) {
  return byteAt(frame, at) | byteAt(frame, at + 1) << 8;
}

unsigned int longAt(const U255Buff<unsigned char>& frame, unsigned int at) {
  return wordAt(frame, at) | wordAt(frame, at + 2) << 16;
}

qx::OtaNodeAddress addressAt(const U255Buff<unsigned char>& frame, unsigned int at) {
  qx::OtaNodeAddress address;
  for (unsigned char& byte : address) byte = static_cast<unsigned char>(byteAt(frame, at++));
  return address;
}

/// What a frame's own bytes say of it.
struct Facts {
  explicit Facts(const U255Buff<unsigned char>& frame)
      : header((frame.contents[0] & 4) != 0 ? 5 : 3), command(byteAt(frame, header - 1)), length(frame.length_) {}

  bool has(unsigned int least, unsigned int most) const {
    return length >= header + least && length <= static_cast<unsigned long long>(header) + most;
  }

  unsigned int header;
  unsigned int command;
  unsigned int length;
};

void requireTaken(tribool answer, bool takes) {
  trapUnless(static_cast<bool>(answer) == takes && indeterminate(answer) != takes,
             "a reader answers true or indeterminate, by command and length alone");
}

/// Image fields of the frame from `at` on.
template <typename Record>
void requireImage(const Record& record, const U255Buff<unsigned char>& frame, unsigned int at) {
  trapUnless(record.manufacturerCode == wordAt(frame, at), "manufacturer code");
  trapUnless(record.imageType == wordAt(frame, at + 2), "image type");
  trapUnless(record.fileVersion == longAt(frame, at + 4), "file version");
}

/// Image fields that a reader has left alone.
template <typename Record>
void requireImageLeft(const Record& record) {
  trapUnless(record.manufacturerCode == 0xABCD && record.imageType == 0xBCDE && record.fileVersion == 0xCDEF0123,
             "a frame that is not taken leaves the record alone");
}

template <typename Record>
Record marked() {
  Record record;
  record.manufacturerCode = 0xABCD;
  record.imageType = 0xBCDE;
  record.fileVersion = 0xCDEF0123;
  return record;
}

void requireQuery(const ZclOtaUpgrade& frame) {
  const Facts facts(frame);
  const unsigned int control = byteAt(frame, facts.header);
  const bool fills = facts.command == 1 && facts.has(9, ANY);
  const bool takes = fills && ((control & 1) == 0 || facts.has(11, ANY));
  auto record = marked<qx::QueryNextImageRequest>();
  record.fieldControl = 0x77;
  record.hardwareVersion = 0x7788;
  requireTaken(frame.queryNextImageRequest(record), takes);
  if (fills) {
    requireImage(record, frame, facts.header + 1);
  } else {
    requireImageLeft(record);
  }
  trapUnless(record.fieldControl == (fills ? control : 0x77), "field control of a query");
  const unsigned int version = (control & 1) != 0 ? wordAt(frame, facts.header + 9) : 0;
  trapUnless(record.hardwareVersion == (takes ? version : 0x7788), "hardware version");
}

void requireBlock(const ZclOtaUpgrade& frame) {
  const Facts facts(frame);
  const unsigned int control = byteAt(frame, facts.header);
  const unsigned int least = (control & 1) != 0 ? ((control & 2) != 0 ? 24 : 22) : ((control & 2) != 0 ? 16 : 14);
  const bool takes = facts.command == 3 && facts.has(least, 24);
  auto record = marked<qx::ImageBlockRequest>();
  record.fieldControl = 0x77;
  record.fileOffset = 0x778899AA;
  record.maximumDataSize = 0x78;
  record.requestNodeAddress.fill(0x79);
  record.minimumBlockPeriod = 0x7A7B;
  requireTaken(frame.imageBlockRequest(record), takes);
  qx::OtaNodeAddress address{};
  if (!takes) {
    requireImageLeft(record);
    address.fill(0x79);
    trapUnless(record.fieldControl == 0x77 && record.fileOffset == 0x778899AA && record.maximumDataSize == 0x78 &&
                   record.minimumBlockPeriod == 0x7A7B && record.requestNodeAddress == address,
               "a block request that is not taken leaves the record alone");
    return;
  }
  requireImage(record, frame, facts.header + 1);
  trapUnless(record.fieldControl == control, "field control of a block request");
  trapUnless(record.fileOffset == longAt(frame, facts.header + 9), "file offset");
  trapUnless(record.maximumDataSize == byteAt(frame, facts.header + 13), "largest block");
  if ((control & 1) != 0) address = addressAt(frame, facts.header + 14);
  trapUnless(record.requestNodeAddress == address, "address of a block request");
  const unsigned int at = facts.header + ((control & 1) != 0 ? 22 : 14);
  trapUnless(record.minimumBlockPeriod == ((control & 2) != 0 ? wordAt(frame, at) : 0), "block period");
}

void requirePage(const ZclOtaUpgrade& frame) {
  const Facts facts(frame);
  const bool takes = facts.command == 4 && facts.has(18, 26);
  auto record = marked<qx::ImagePageRequest>();
  record.fieldControl = 0x77;
  record.requestNodeAddress.fill(0x79);
  requireTaken(frame.imagePageRequest(record), takes);
  qx::OtaNodeAddress address{};
  if (!takes) {
    requireImageLeft(record);
    address.fill(0x79);
    trapUnless(record.fieldControl == 0x77 && record.fileOffset == 0 && record.maximumDataSize == 0 &&
                   record.pageSize == 0 && record.responseSpacing == 0 && record.requestNodeAddress == address,
               "a page request that is not taken leaves the record alone");
    return;
  }
  const unsigned int control = byteAt(frame, facts.header);
  if ((control & 1) != 0) address = addressAt(frame, facts.header + 18);
  requireImage(record, frame, facts.header + 1);
  trapUnless(record.fieldControl == control, "field control of a page request");
  trapUnless(record.fileOffset == longAt(frame, facts.header + 9), "page offset");
  trapUnless(record.maximumDataSize == byteAt(frame, facts.header + 13), "largest block of a page");
  trapUnless(record.pageSize == wordAt(frame, facts.header + 14), "page size");
  trapUnless(record.responseSpacing == wordAt(frame, facts.header + 16), "response spacing");
  trapUnless(record.requestNodeAddress == address, "address of a page request");

  // Built anew, the frame is what it was, but for an address that was cut or that nobody announced.
  ZclOtaUpgrade rebuilt(frame);
  rebuilt.length_ = facts.header;
  rebuilt.testingImagePageRequest(record);
  trapUnless(rebuilt.length_ == facts.header + ((control & 1) != 0 ? 26 : 18), "a page request has its length");
  const unsigned int same = std::min(frame.length_, rebuilt.length_);
  trapUnless(std::memcmp(rebuilt.contents, frame.contents, same) == 0, "a page request is rebuilt");
  qx::ImagePageRequest again;
  requireTaken(rebuilt.imagePageRequest(again), true);
  trapUnless(again.fieldControl == record.fieldControl && again.fileOffset == record.fileOffset &&
                 again.maximumDataSize == record.maximumDataSize && again.pageSize == record.pageSize &&
                 again.responseSpacing == record.responseSpacing &&
                 again.requestNodeAddress == record.requestNodeAddress,
             "a page request reads back as it was built");
  requireImage(again, frame, facts.header + 1);
}

void requireEnd(const ZclOtaUpgrade& frame) {
  const Facts facts(frame);
  const bool takes = facts.command == 6 && facts.has(9, 9);
  auto record = marked<qx::UpgradeEndRequest>();
  record.status = 0x77;
  requireTaken(frame.upgradeEndRequest(record), takes);
  trapUnless(record.status == (takes ? byteAt(frame, facts.header) : 0x77), "status of an end");
  if (!takes) return requireImageLeft(record);
  requireImage(record, frame, facts.header + 1);
  ZclOtaUpgrade rebuilt(frame);
  rebuilt.length_ = facts.header;
  rebuilt.sendUpgradeEndRequest(record);
  trapUnless(rebuilt.length_ == frame.length_ && std::memcmp(rebuilt.contents, frame.contents, frame.length_) == 0,
             "an end request is rebuilt");
}

void requireBlockResponse(const ZclOtaUpgrade& frame) {
  const Facts facts(frame);
  const bool takes = facts.command == 5 && facts.has(14, ANY);
  auto record = marked<qx::ImageBlockResponse>();
  record.status = 0x77;
  record.fileOffset = 0x778899AA;
  record.dataSize = 0x78;
  requireTaken(frame.testingImageBlockResponse(record), takes);
  trapUnless(record.status == (takes ? byteAt(frame, facts.header) : 0x77), "status of a block");
  trapUnless(record.fileOffset == (takes ? longAt(frame, facts.header + 9) : 0x778899AA), "offset of a block");
  trapUnless(record.dataSize == (takes ? byteAt(frame, facts.header + 13) : 0x78), "size of a block");
  if (!takes) return requireImageLeft(record);
  requireImage(record, frame, facts.header + 1);
}

void requireEndResponse(const ZclOtaUpgrade& frame) {
  const Facts facts(frame);
  const bool takes = facts.command == 7 && facts.has(16, 16);
  auto record = marked<qx::UpgradeEndResponse>();
  requireTaken(frame.testingUpgradeEndResponse(record), takes);
  trapUnless(record.currentTime == (takes ? longAt(frame, facts.header + 8) : 0), "current time");
  trapUnless(record.upgradeTime == (takes ? longAt(frame, facts.header + 12) : 0), "upgrade time");
  if (!takes) return requireImageLeft(record);
  requireImage(record, frame, facts.header);
  ZclOtaUpgrade rebuilt(frame);
  rebuilt.length_ = facts.header;
  rebuilt.upgradeEndResponse(record);
  trapUnless(rebuilt.length_ == frame.length_ && std::memcmp(rebuilt.contents, frame.contents, frame.length_) == 0,
             "an end response is rebuilt");
}

using Records = std::vector<qx::ReadAttributeStatusRecord>;

/// An attribute reader against the list of the response.
template <typename T>
void requireAttribute(ZclOtaUpgrade& frame, const Records& records, tribool (ZclOtaUpgrade::*read)(T&), unsigned int id,
                      unsigned int type) {
  const auto found = std::find_if(records.begin(), records.end(),
                                  [&](const auto& record) { return record.id_ == id && record.type_ == type; });
  T value = static_cast<T>(0xA1A2A3A4);
  const tribool answer = (frame.*read)(value);
  trapUnless(!indeterminate(answer), "an attribute is there or not");
  trapUnless(static_cast<bool>(answer) == (found != records.end()), "an attribute is found by its id and type");
  const auto expected = found != records.end() ? static_cast<T>(found->getUInt32()) : static_cast<T>(0xA1A2A3A4);
  trapUnless(value == expected, "an attribute is the first in the list");
}

void requireReaders(const U255Buff<unsigned char>& bytes, unsigned int length) {
  ZclOtaUpgrade frame(bytes);
  frame.length_ = length;
  requireQuery(frame);
  requireBlock(frame);
  requirePage(frame);
  requireEnd(frame);
  requireBlockResponse(frame);
  requireEndResponse(frame);
  Records records;
  frame.getReadAttributesResponse(records, true);
  requireAttribute(frame, records, &ZclOtaUpgrade::readAttributesResponseFwv, 2, 0x23);
  requireAttribute(frame, records, &ZclOtaUpgrade::readAttributesResponseImageUpgradeStatus, 6, 0x20);
  requireAttribute(frame, records, &ZclOtaUpgrade::readAttributesResponseManufacturer, 7, 0x21);
  requireAttribute(frame, records, &ZclOtaUpgrade::readAttributesResponseImageTypeId, 8, 0x21);
  trapUnless(frame.length_ == length && std::memcmp(frame.contents, bytes.contents, STORAGE) == 0,
             "a reader changes nothing");
}

/// Says that `build` appends `count` bytes behind the frame, as far as they fit, and changes nothing before them.
template <typename Build>
void requireAppended(const U255Buff<unsigned char>& bytes, unsigned int length, unsigned int count, Build build) {
  ZclOtaUpgrade frame(bytes);
  frame.length_ = length;
  build(frame);
  trapUnless(frame.length_ == (length < STORAGE ? std::min(STORAGE, length + count) : length),
             "a builder appends its bytes as far as they fit");
  const unsigned int before = std::min(length, STORAGE);
  trapUnless(std::memcmp(frame.contents, bytes.contents, before) == 0, "a builder leaves what stands before it");
  const unsigned int behind = std::min(frame.length_, STORAGE);
  trapUnless(std::memcmp(frame.contents + behind, bytes.contents + behind, STORAGE - behind) == 0,
             "a builder leaves what stands behind it");
}

void requireBuilders(const U255Buff<unsigned char>& bytes, unsigned int length) {
  const auto status = static_cast<unsigned char>(byteAt(bytes, 3));
  const auto size = static_cast<unsigned char>(byteAt(bytes, 4));
  const std::vector<unsigned char> data(size, status);
  requireAppended(bytes, length, status == 0 ? 13 : 1, [&](ZclOtaUpgrade& frame) {
    frame.queryNextImageResponse({status, 1, 2, 3, 4});
  });
  requireAppended(bytes, length, 14U + size, [&](ZclOtaUpgrade& frame) {
    frame.imageBlockResponse({status, 1, 2, 3, 4, 5}, data.data(), size);
  });
  const unsigned int notice[] = {2, 4, 6, 10};
  requireAppended(bytes, length, notice[std::min<unsigned int>(status, 3)], [&](ZclOtaUpgrade& frame) {
    frame.imageNotify({status, 1, 2, 3, 4});
  });
  requireAppended(bytes, length, 9, [&](ZclOtaUpgrade& frame) { frame.sendUpgradeEndRequest({status, 1, 2, 3}); });
  requireAppended(bytes, length, 16, [&](ZclOtaUpgrade& frame) { frame.upgradeEndResponse({1, 2, 3, 4, size}); });
  requireAppended(bytes, length, (status & 1) != 0 ? 26 : 18, [&](ZclOtaUpgrade& frame) {
    qx::ImagePageRequest request{status, 1, 2, 3, 4, 5, 6, 7, {}};
    frame.testingImagePageRequest(request);
  });

  ZclOtaUpgrade refused(bytes);
  refused.length_ = length;
  refused.sendUnsupportedCommand(status);
  trapUnless(refused.length_ == 5 && refused.contents[0] == 8 && refused.contents[2] == 11 &&
                 refused.contents[3] == status && refused.contents[4] == 0x81,
             "whatever the frame was, it becomes a default response");
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  log4cplus::Logger::getRoot().addAppender(log4cplus::SharedAppenderPtr(new log4cplus::NullAppender));
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  // Log lines are made and then dropped. They cost more than all else, so that every other length does without.
  log4cplus::Logger::getRoot().setLogLevel(size % 2 != 0 ? log4cplus::TRACE_LOG_LEVEL : log4cplus::OFF_LOG_LEVEL);

  const auto length = static_cast<unsigned int>(std::min<std::size_t>(size, STORAGE));
  const U255Buff<unsigned char> bytes(data, length);
  // The frame, one with bytes in the buffer behind it, and lengths beyond the storage.
  for (const unsigned int taken : {length, length / 2, STORAGE, STORAGE + 1 + length, 0xFFFFFFFFU}) {
    requireReaders(bytes, taken);
    requireBuilders(bytes, taken);
  }
  return 0;
}
