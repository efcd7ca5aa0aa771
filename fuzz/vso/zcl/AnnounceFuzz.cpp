// The announce and SSCP classes on arbitrary bytes. Reachable from outside: any node of the mesh chooses every byte of
// the announcement that the server reads with these classes, and of the frames that it adds attributes to.
#include <log4cplus/logger.h>
#include <log4cplus/nullappender.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "fuzz/support/trapUnless.h"
#include "tests/vso/zcl/ListOperations.h"
#include "tests/vso/zcl/QxRows.h"
#include "vso/identifiers/hexify.h"
#include "vso/zcl/QxZclAnnounce.h"
#include "vso/zcl/QxZclSscp.h"

namespace {

using qx::QxZclAnnounce;
using qx::QxZclSscp;
using qx::ReadAttributeStatusRecord;
using qx::ReportAttributeRecord;
using qx::U255Buff;
using qx::WriteAttributeRecord;
using qx::fuzz::trapUnless;
using qx::test::AttributeRow;
using qx::test::attributeRows;
using qx::test::AttributeSample;

constexpr std::size_t STORAGE = 255;

/// A copy with the storage as it stands, also behind the length; a copy construction would clear that.
template <typename Frame>
Frame copyOf(const Frame& frame) {
  Frame copy(frame);
  qx::test::setStorage(copy, frame);
  return copy;
}

/// Readers that look at the layout of READ, and writers that write that of WRITTEN.
template <typename Read, typename Written, typename Frame>
void requireListProperties(const Frame& frame, const AttributeSample& sample) {
  for (const AttributeRow<Frame>& row : attributeRows<Frame>()) {
    trapUnless(row.read(frame) == qx::test::readThroughList<Read>(frame, row), "a reader agrees with the list");
    if (row.has) {
      const std::vector<Read> list = qx::test::listOf<Read>(frame);
      const bool has = std::any_of(list.begin(), list.end(), [&row](const Read& record) {
        return record.id_ == row.id && record.type_ == row.type;
      });
      trapUnless(row.has(frame) == has, "a test agrees with the list");
    }
    if (!row.write) continue;
    Frame byWriter = copyOf(frame);
    Frame byList = copyOf(frame);
    row.write(byWriter, sample);
    qx::test::addThroughList<Written>(byList, row.id, row.type, row.wire(sample));
    trapUnless(qx::test::sameStorage(byWriter, byList), "a writer makes the frame that the lists make");
    const Frame first = copyOf(byWriter);
    row.write(byWriter, {~sample.number, sample.text + 'x'});
    const std::vector<Written> list = qx::test::listOf<Written>(first);
    if (std::any_of(list.begin(), list.end(), [&row](const Written& record) { return record.id_ == row.id; })) {
      trapUnless(qx::test::sameStorage(byWriter, first), "the first write of an attribute wins");
    }
  }
}

/// A frame whose storage and length are set by hand.
void requireProperties(const U255Buff<unsigned char>& bytes, const U255Buff<unsigned char>& storage,
                       const AttributeSample& sample) {
  QxZclAnnounce announce(bytes);
  qx::test::setStorage(announce, storage);
  requireListProperties<ReportAttributeRecord, ReportAttributeRecord>(announce, sample);

  QxZclSscp received(bytes);
  qx::test::setStorage(received, storage);
  requireListProperties<WriteAttributeRecord, WriteAttributeRecord>(received, sample);

  QxZclSscp answer(true, true);
  qx::test::setStorage(answer, storage);
  requireListProperties<WriteAttributeRecord, ReadAttributeStatusRecord>(answer, sample);
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  log4cplus::Logger::getRoot().addAppender(log4cplus::SharedAppenderPtr(new log4cplus::NullAppender));
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  // Log lines are made and then dropped. They cost more than all else, so that every other length does without.
  log4cplus::Logger::getRoot().setLogLevel(size % 2 != 0 ? log4cplus::TRACE_LOG_LEVEL : log4cplus::OFF_LOG_LEVEL);

  const unsigned char first = size != 0 ? data[0] : 0;
  const unsigned char last = size != 0 ? data[size - 1] : 0;
  const AttributeSample sample{static_cast<unsigned long long>(last) << 8 | first, std::string(data, data + size / 2)};

  // More bytes than the storage has leave the frame empty.
  const U255Buff<unsigned char> bytes(data, static_cast<unsigned int>(size));
  const U255Buff<unsigned char> frame(bytes);
  requireProperties(frame, frame, sample);

  // The same as text, which an SSCP frame keeps as it is.
  std::string digits;
  qx::hexify(frame.contents, frame.length_, digits, false);
  const QxZclSscp fromText(digits);
  trapUnless(qx::test::sameStorage(fromText, frame), "text gives the frame");
  requireListProperties<WriteAttributeRecord, WriteAttributeRecord>(fromText, sample);
  trapUnless(qx::test::sameStorage(QxZclAnnounce(digits), frame), "text gives the frame");

  // A frame that ends before the bytes that lie in its storage, as one does whose payload was cut.
  const U255Buff<unsigned char> whole(data, static_cast<unsigned int>(std::min(size, STORAGE)));
  U255Buff<unsigned char> cut(whole);
  cut.length_ = whole.length_ - std::min<unsigned int>(whole.length_, last % 32U);
  requireProperties(whole, cut, sample);

  // A length beyond the storage, as a careless writer of the field can leave it.
  U255Buff<unsigned char> overlong(whole);
  overlong.length_ = static_cast<unsigned int>(STORAGE + 1 + size);
  requireProperties(whole, overlong, sample);

  // A built announcement takes any texts.
  const QxZclAnnounce built(first, last, last, sample.text, std::string(data + size / 2, data + size));
  trapUnless(built.length_ <= STORAGE, "a built frame fits its storage");
  trapUnless(built.announceWindow() == first && built.bootCount() == last && built.reflashVersion() == last,
             "the numbers of a built frame read back");
  requireListProperties<ReportAttributeRecord, ReportAttributeRecord>(built, sample);
  return 0;
}
