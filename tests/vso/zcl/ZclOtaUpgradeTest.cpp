#include "vso/zcl/ZclOtaUpgrade.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <log4cplus/loglevel.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <iterator>
#include <ostream>
#include <string>
#include <vector>

#include "support/Bytes.h"
#include "support/LogCapture.h"
#include "vso/zcl/Answer.h"
#include "vso/zcl/ClusterFrames.h"
#include "vso/zcl/TracedMessage.h"

namespace qx {
namespace {

using test::bytes;
using test::bytesOf;
using test::digits;
using test::fields;
using test::headerLength;
using test::hex;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr unsigned int STORAGE = 255;

/// A request's header up to its command, without and with a manufacturer code.
const std::string HEADERS[] = {"01 07 ", "05 40 10 07 "};

/// A frame with sequence number 5.
ZclOtaUpgrade numbered(unsigned char commandId) {
  ZclOtaUpgrade frame(commandId);
  frame.setTsn(5);
  return frame;
}

TEST(ZclOtaUpgrade, BelongsToItsCluster) {
  EXPECT_EQ(ZclOtaUpgrade().getProfileId(), 0x0104);
  EXPECT_EQ(ZclOtaUpgrade().getClusterId(), 0x0019);
}

TEST(ZclOtaUpgrade, IsAClusterFrameWithoutACommandByDefault) { test::expectAClusterFrameByDefault<ZclOtaUpgrade>(); }

TEST(ZclOtaUpgrade, BeginsACommandOfTheServer) {
  const unsigned char sequence = ZclMessage::transactionSequenceNumber_;
  const ZclOtaUpgrade frame(static_cast<unsigned char>(0x40));
  EXPECT_EQ(hex(frame), hex(bytes({0x09, sequence, 0x40})));
  EXPECT_TRUE(frame.isCommandFromServer());
  EXPECT_EQ(ZclMessage::transactionSequenceNumber_, static_cast<unsigned char>(sequence + 1));
}

TEST(ZclOtaUpgrade, ReadsAListOfAttributes) {
  const unsigned char sequence = ZclMessage::transactionSequenceNumber_;
  const ZclOtaUpgrade frame(std::vector<unsigned short>{0x0002, 0xFEDC});
  EXPECT_EQ(hex(frame), hex(bytes({0x08, sequence, 0x00,  // general, from the server
                                   0x02, 0x00,            // file version
                                   0xDC, 0xFE})));
  EXPECT_TRUE(frame.affectsEntireProfile());
  EXPECT_EQ(ZclMessage::transactionSequenceNumber_, static_cast<unsigned char>(sequence + 1));
}

TEST(ZclOtaUpgrade, ReadsAnEmptyListOfAttributes) {
  const unsigned char sequence = ZclMessage::transactionSequenceNumber_;
  EXPECT_EQ(hex(ZclOtaUpgrade(std::vector<unsigned short>())), hex(bytes({0x08, sequence, 0x00})));
}

TEST(ZclOtaUpgrade, CutsAListOfAttributesThatDoesNotFit) {
  const test::LogCapture log;
  const ZclOtaUpgrade frame(std::vector<unsigned short>(127, 0x0102));
  EXPECT_EQ(frame.length_, STORAGE);
  EXPECT_EQ(hex(frame).substr(hex(frame).size() - 5), "02 01");  // 252 bytes are 126 ids
  EXPECT_EQ(log.count(log4cplus::WARN_LOG_LEVEL), 1U);
}

TEST(ZclOtaUpgrade, ParsesBytesAndText) { test::expectParsesBytesAndText<ZclOtaUpgrade>(); }

// What the builders append.

const unsigned char DATA[] = {0xD0, 0xD1, 0xD2, 0xD3};

void answerQuery(ZclOtaUpgrade& frame, unsigned char status) {
  frame.queryNextImageResponse({status, 0x0102, 0x0304, 0x05060708, 0x090A0B0C});
}

void notify(ZclOtaUpgrade& frame, unsigned char payloadType) {
  frame.imageNotify({payloadType, 0x64, 0x0102, 0x0304, 0x05060708});
}

void askForPage(ZclOtaUpgrade& frame, unsigned char fieldControl) {
  ImagePageRequest request{fieldControl, 0x0102,     0x0304,
                           0x05060708,   0x090A0B0C, 0x0D,
                           0x0E0F,       0x1011,     {{0xA0, 0xA1, 0xA2, 0xA3, 0xA4, 0xA5, 0xA6, 0xA7}}};
  frame.testingImagePageRequest(request);
}

struct Builder {
  const char* name;
  void (*build)(ZclOtaUpgrade&);
  std::string payload;
};

std::ostream& operator<<(std::ostream& out, const Builder& row) { return out << row.name; }

const std::string PAGE = " 02 01 04 03 08 07 06 05 0c 0b 0a 09 0d 0f 0e 11 10";
const std::string ADDRESS = " a0 a1 a2 a3 a4 a5 a6 a7";

const Builder BUILDERS[] = {
    {"queryNextImageResponseOfSuccess", [](ZclOtaUpgrade& frame) { answerQuery(frame, 0); },
     "00 02 01 04 03 08 07 06 05 0c 0b 0a 09"},
    {"queryNextImageResponseOfFailure", [](ZclOtaUpgrade& frame) { answerQuery(frame, 1); }, "01"},
    {"queryNextImageResponseOfNoImage", [](ZclOtaUpgrade& frame) { answerQuery(frame, 0x98); }, "98"},
    {"queryNextImageResponseOfTheHighestStatus", [](ZclOtaUpgrade& frame) { answerQuery(frame, 0xFF); }, "ff"},
    {"imageBlockResponse",
     [](ZclOtaUpgrade& frame) {
       frame.imageBlockResponse({0x00, 0x0102, 0x0304, 0x05060708, 0x090A0B0C, 0x77}, DATA, 3);
     },
     "00 02 01 04 03 08 07 06 05 0c 0b 0a 09 03 d0 d1 d2"},
    {"imageBlockResponseOfFailure",
     [](ZclOtaUpgrade& frame) {
       frame.imageBlockResponse({0x97, 0x0102, 0x0304, 0x05060708, 0x090A0B0C, 0x00}, DATA, 4);
     },
     "97 02 01 04 03 08 07 06 05 0c 0b 0a 09 04 d0 d1 d2 d3"},
    {"imageBlockResponseWithoutData",
     [](ZclOtaUpgrade& frame) {
       frame.imageBlockResponse({0x00, 0x0102, 0x0304, 0x05060708, 0x090A0B0C, 0x77}, nullptr, 0);
     },
     "00 02 01 04 03 08 07 06 05 0c 0b 0a 09 00"},
    {"sendUpgradeEndRequest",
     [](ZclOtaUpgrade& frame) {
       frame.sendUpgradeEndRequest({0x96, 0x0102, 0x0304, 0x05060708});
     },
     "96 02 01 04 03 08 07 06 05"},
    {"upgradeEndResponse",
     [](ZclOtaUpgrade& frame) {
       frame.upgradeEndResponse({0x0102, 0x0304, 0x05060708, 0x090A0B0C, 0x0D0E0F10});
     },
     "02 01 04 03 08 07 06 05 0c 0b 0a 09 10 0f 0e 0d"},
    {"imageNotifyOfType0", [](ZclOtaUpgrade& frame) { notify(frame, 0); }, "00 64"},
    {"imageNotifyOfType1", [](ZclOtaUpgrade& frame) { notify(frame, 1); }, "01 64 02 01"},
    {"imageNotifyOfType2", [](ZclOtaUpgrade& frame) { notify(frame, 2); }, "02 64 02 01 04 03"},
    {"imageNotifyOfType3", [](ZclOtaUpgrade& frame) { notify(frame, 3); }, "03 64 02 01 04 03 08 07 06 05"},
    {"imageNotifyOfType4", [](ZclOtaUpgrade& frame) { notify(frame, 4); }, "04 64 02 01 04 03 08 07 06 05"},
    {"imageNotifyOfType255", [](ZclOtaUpgrade& frame) { notify(frame, 255); }, "ff 64 02 01 04 03 08 07 06 05"},
    {"testingImagePageRequest", [](ZclOtaUpgrade& frame) { askForPage(frame, 0); }, "00" + PAGE},
    {"testingImagePageRequestWithAnAddress", [](ZclOtaUpgrade& frame) { askForPage(frame, 1); }, "01" + PAGE + ADDRESS},
    {"testingImagePageRequestWithOtherBits", [](ZclOtaUpgrade& frame) { askForPage(frame, 0xFE); }, "fe" + PAGE},
    {"testingImagePageRequestWithAllBits", [](ZclOtaUpgrade& frame) { askForPage(frame, 0xFF); },
     "ff" + PAGE + ADDRESS},
};

class ZclOtaUpgradeBuilder : public testing::TestWithParam<Builder> {};

INSTANTIATE_TEST_SUITE_P(Builders, ZclOtaUpgradeBuilder, testing::ValuesIn(BUILDERS),
                         [](const auto& row) { return std::string(row.param.name); });

TEST_P(ZclOtaUpgradeBuilder, AppendsThePayloadToAFreshCommand) {
  const test::LogCapture log;
  ZclOtaUpgrade frame = numbered(0x42);
  const unsigned char before = ZclMessage::transactionSequenceNumber_;
  GetParam().build(frame);
  EXPECT_EQ(hex(frame), "09 05 42 " + GetParam().payload);
  EXPECT_EQ(ZclMessage::transactionSequenceNumber_, before);
  EXPECT_THAT(log.texts(), IsEmpty());
}

TEST_P(ZclOtaUpgradeBuilder, AppendsBehindWhatTheFrameHolds) {
  ZclOtaUpgrade frame(bytesOf("1a 05 33 ee"));
  GetParam().build(frame);
  EXPECT_EQ(hex(frame), "1a 05 33 ee " + GetParam().payload);
  GetParam().build(frame);
  EXPECT_EQ(hex(frame), "1a 05 33 ee " + GetParam().payload + ' ' + GetParam().payload);
}

TEST_P(ZclOtaUpgradeBuilder, AppendsBehindAManufacturerCode) {
  ZclOtaUpgrade frame(bytesOf("0d 40 10 05 42"));
  GetParam().build(frame);
  EXPECT_EQ(hex(frame), "0d 40 10 05 42 " + GetParam().payload);
}

TEST_P(ZclOtaUpgradeBuilder, AppendsFromTheFirstByteOfAnEmptyFrame) {
  ZclOtaUpgrade frame{U255Buff<unsigned char>()};
  GetParam().build(frame);
  EXPECT_EQ(hex(frame), GetParam().payload);
}

TEST_P(ZclOtaUpgradeBuilder, TouchesNoHeader) {
  test::TracedMessage<ZclOtaUpgrade> frame;
  GetParam().build(frame);
  EXPECT_THAT(frame.calls, IsEmpty());
}

TEST_P(ZclOtaUpgradeBuilder, DropsWhatDoesNotFitWithAWarning) {
  const U255Buff<unsigned char> payload = bytesOf(GetParam().payload);
  for (unsigned int room = 0; room <= payload.length_; ++room) {
    ZclOtaUpgrade frame(bytesOf("09 05 42"));
    std::fill(frame.contents + 3, frame.contents + STORAGE, 0xEE);
    frame.length_ = STORAGE - room;
    std::vector<unsigned char> expected(frame.contents, frame.contents + frame.length_);
    expected.insert(expected.end(), payload.contents, payload.contents + room);
    const test::LogCapture log;
    GetParam().build(frame);
    EXPECT_EQ(frame.length_, STORAGE) << room;
    EXPECT_THAT(frame.contents, testing::ElementsAreArray(expected)) << room;
    const unsigned int dropped = payload.length_ - room;
    if (dropped == 0) {
      EXPECT_THAT(log.texts(), IsEmpty());
    } else {
      EXPECT_THAT(log.texts(), ElementsAre(HasSubstr("bytes dropped: " + std::to_string(dropped)))) << room;
      EXPECT_EQ(log.count(log4cplus::WARN_LOG_LEVEL), 1U);
    }
  }
}

TEST_P(ZclOtaUpgradeBuilder, WritesNothingBehindTheStorage) {
  ZclOtaUpgrade frame(bytesOf("09 05 42"));
  frame.length_ = 300;
  const test::LogCapture log;
  GetParam().build(frame);
  EXPECT_EQ(frame.length_, 300U);
  std::vector<unsigned char> expected(STORAGE, 0);
  std::copy_n(bytesOf("09 05 42").contents, 3, expected.begin());
  EXPECT_THAT(frame.contents, testing::ElementsAreArray(expected));
  EXPECT_EQ(log.count(log4cplus::WARN_LOG_LEVEL), 1U);
}

TEST(ZclOtaUpgradeBlock, HasTheLengthOfItsDataWhateverTheRecordSays) {
  ZclOtaUpgrade frame(static_cast<unsigned char>(5));
  ImageBlockResponse record;
  record.dataSize = 200;
  frame.imageBlockResponse(record, DATA, 3);
  EXPECT_EQ(frame.length_, 3U + 14U + 3U);
  EXPECT_EQ(frame.contents[0], 0x09);
  EXPECT_EQ(frame.contents[16], 3);
}

TEST(ZclOtaUpgradeBlock, HoldsUpTo238BytesOfData) {
  const std::vector<unsigned char> data(255, 0x5A);
  for (const unsigned int size : {238U, 239U, 255U}) {
    const test::LogCapture log;
    ZclOtaUpgrade frame = numbered(5);
    frame.imageBlockResponse({}, data.data(), static_cast<unsigned char>(size));
    std::string expected = "09 05 05 00 00 00 00 00 00 00 00 00 00 00 00 00 " + digits(frame.contents[16]);
    for (int i = 0; i < 238; ++i) expected += " 5a";
    EXPECT_EQ(hex(frame), expected);
    EXPECT_EQ(frame.contents[16], size) << "the size that was asked for";
    EXPECT_EQ(log.count(log4cplus::WARN_LOG_LEVEL), size == 238 ? 0U : 1U);
  }
}

TEST(ZclOtaUpgradePage, LeavesTheRecordOfATestedRequestAlone) {
  ImagePageRequest request{1, 2, 3, 4, 5, 6, 7, 8, {{1, 2, 3, 4, 5, 6, 7, 8}}};
  ZclOtaUpgrade().testingImagePageRequest(request);
  EXPECT_EQ(fields(request.fieldControl, request.manufacturerCode, request.imageType, request.fileVersion,
                   request.fileOffset, request.maximumDataSize, request.pageSize, request.responseSpacing),
            "01 0002 0003 00000004 00000005 06 0007 0008");
  EXPECT_THAT(request.requestNodeAddress, ElementsAre(1, 2, 3, 4, 5, 6, 7, 8));
}

TEST(ZclOtaUpgradeUnsupported, IsADefaultResponseWithTheNextSequenceNumber) {
  ZclOtaUpgrade frame(static_cast<unsigned char>(2));
  const unsigned char sequence = ZclMessage::transactionSequenceNumber_;
  frame.sendUnsupportedCommand(0x09);
  EXPECT_EQ(hex(frame), hex(bytes({0x08, sequence, 0x0B,  // default response, from the server
                                   0x09, 0x81})));        // command, not supported
  EXPECT_EQ(ZclMessage::transactionSequenceNumber_, static_cast<unsigned char>(sequence + 1));
}

TEST(ZclOtaUpgradeUnsupported, ReplacesAnyHeaderAndPayload) {
  for (const char* used : {"1d 40 10 07 02 01 02 03", "1b 07 02 01 02 03", "ff", ""}) {
    ZclOtaUpgrade frame(bytesOf(used));
    const unsigned char sequence = ZclMessage::transactionSequenceNumber_;
    frame.sendUnsupportedCommand(0xFF);
    EXPECT_EQ(hex(frame), hex(bytes({0x08, sequence, 0x0B, 0xFF, 0x81}))) << used;
    EXPECT_FALSE(frame.isManufacturerSpecific()) << used;
    EXPECT_EQ(ZclMessage::transactionSequenceNumber_, static_cast<unsigned char>(sequence + 1)) << used;
  }
}

/// Notes calls of operations that others are made of.
class NotedUpgrade : public test::TracedMessage<ZclOtaUpgrade> {
 public:
  void initMessage(unsigned char commandId, bool manufacturerSpecific, bool clusterSpecific) override {
    test::TracedMessage<ZclOtaUpgrade>::initMessage(commandId, manufacturerSpecific, clusterSpecific);
    calls.assign({"initMessage(" + digits(commandId) + (manufacturerSpecific || clusterSpecific ? " flags)" : ")")});
  }
  void addByte(unsigned char value) override {
    calls.push_back("addByte(" + digits(value) + ')');
    test::TracedMessage<ZclOtaUpgrade>::addByte(value);
  }
  void addUint16(unsigned short value) override {
    calls.push_back("addUint16(" + digits(value) + ')');
    test::TracedMessage<ZclOtaUpgrade>::addUint16(value);
  }
};

TEST(ZclOtaUpgradeUnsupported, CallsTheVirtualOperationsInOrder) {
  NotedUpgrade frame;
  frame.sendUnsupportedCommand(9);
  EXPECT_THAT(frame.calls, ElementsAre("initMessage(0b)", "setFcf(08)", "addByte(09)", "addByte(81)"));
}

TEST(ZclOtaUpgradeAttributes, AreAskedForByTheServer) {
  ZclOtaUpgrade frame = numbered(0xFF);
  const unsigned char before = ZclMessage::transactionSequenceNumber_;
  frame.getOtaAttributes();
  EXPECT_EQ(hex(frame), "09 05 00 02 00 07 00 08 00");
  EXPECT_EQ(ZclMessage::transactionSequenceNumber_, before);
}

TEST(ZclOtaUpgradeAttributes, AreAskedForByAStatusAlone) {
  ZclOtaUpgrade frame = numbered(0xFF);
  const unsigned char before = ZclMessage::transactionSequenceNumber_;
  frame.getOtaUpgradeStatus();
  EXPECT_EQ(hex(frame), "09 05 00 06 00");
  EXPECT_EQ(ZclMessage::transactionSequenceNumber_, before);
}

TEST(ZclOtaUpgradeAttributes, AreAskedForBehindWhatTheFrameHolds) {
  ZclOtaUpgrade frame = numbered(0xFF);
  frame.getOtaUpgradeStatus();
  frame.getOtaAttributes();
  frame.getOtaUpgradeStatus();
  EXPECT_EQ(hex(frame), "09 05 00 06 00 02 00 07 00 08 00 06 00");
}

TEST(ZclOtaUpgradeAttributes, KeepTheFlagsOfTheFrameThatAsks) {
  ZclOtaUpgrade general(bytesOf("10 05 33"));
  general.getOtaUpgradeStatus();
  EXPECT_EQ(hex(general), "08 05 00 06 00");
  ZclOtaUpgrade makers(bytesOf("1d 40 10 05 33"));
  makers.getOtaAttributes();
  EXPECT_EQ(hex(makers), "0d 40 10 05 00 02 00 07 00 08 00");
}

TEST(ZclOtaUpgradeAttributes, AreAskedForThroughTheVirtualOperations) {
  NotedUpgrade frame;
  frame.getOtaAttributes();
  EXPECT_THAT(frame.calls,
              ElementsAre("setFcf(08)", "setCid(00)", "addUint16(0002)", "addUint16(0007)", "addUint16(0008)"));
  frame.calls.clear();
  frame.getOtaUpgradeStatus();
  EXPECT_THAT(frame.calls, ElementsAre("setFcf(08)", "setCid(00)", "addUint16(0006)"));
}

TEST(ZclOtaUpgradeAttributes, ThatDoNotFitAreDroppedWithAWarning) {
  ZclOtaUpgrade frame(bytesOf("09 05 00"));
  frame.length_ = 250;
  const test::LogCapture log;
  frame.getOtaAttributes();
  EXPECT_EQ(frame.length_, STORAGE);
  EXPECT_EQ(frame.contents[252], 0x07);
  EXPECT_EQ(frame.contents[254], 0x08);
  EXPECT_THAT(log.texts(), ElementsAre(HasSubstr("bytes dropped: 1")));
}

// A record that a reader has left alone shows its marks.

std::string show(const OtaNodeAddress& address) { return test::list(address); }

const OtaNodeAddress MARKED_ADDRESS = {{0xE0, 0xE1, 0xE2, 0xE3, 0xE4, 0xE5, 0xE6, 0xE7}};

std::string showQuery(const ZclOtaUpgrade& frame) {
  QueryNextImageRequest record{0xAA, 0xBBBB, 0xCCCC, 0xDDDDDDDD, 0xEEEE};
  const auto answer = frame.queryNextImageRequest(record);
  return test::show(answer) + ' ' +
         fields(record.fieldControl, record.manufacturerCode, record.imageType, record.fileVersion,
                record.hardwareVersion);
}

std::string showBlock(const ZclOtaUpgrade& frame) {
  ImageBlockRequest record{0xAA, 0xBBBB, 0xCCCC, 0xDDDDDDDD, 0xEEEEEEEE, 0xFF, MARKED_ADDRESS, 0x9999};
  const auto answer = frame.imageBlockRequest(record);
  return test::show(answer) + ' ' +
         fields(record.fieldControl, record.manufacturerCode, record.imageType, record.fileVersion, record.fileOffset,
                record.maximumDataSize) +
         ' ' + show(record.requestNodeAddress) + ' ' + digits(record.minimumBlockPeriod);
}

std::string showPage(const ZclOtaUpgrade& frame) {
  ImagePageRequest record{0xAA, 0xBBBB, 0xCCCC, 0xDDDDDDDD, 0xEEEEEEEE, 0xFF, 0x8888, 0x9999, MARKED_ADDRESS};
  const auto answer = frame.imagePageRequest(record);
  return test::show(answer) + ' ' +
         fields(record.fieldControl, record.manufacturerCode, record.imageType, record.fileVersion, record.fileOffset,
                record.maximumDataSize, record.pageSize, record.responseSpacing) +
         ' ' + show(record.requestNodeAddress);
}

std::string showEnd(const ZclOtaUpgrade& frame) {
  UpgradeEndRequest record{0xAA, 0xBBBB, 0xCCCC, 0xDDDDDDDD};
  const auto answer = frame.upgradeEndRequest(record);
  return test::show(answer) + ' ' +
         fields(record.status, record.manufacturerCode, record.imageType, record.fileVersion);
}

std::string showBlockResponse(const ZclOtaUpgrade& frame) {
  ImageBlockResponse record{0xAA, 0xBBBB, 0xCCCC, 0xDDDDDDDD, 0xEEEEEEEE, 0xFF};
  const auto answer = frame.testingImageBlockResponse(record);
  return test::show(answer) + ' ' +
         fields(record.status, record.manufacturerCode, record.imageType, record.fileVersion, record.fileOffset,
                record.dataSize);
}

std::string showEndResponse(const ZclOtaUpgrade& frame) {
  UpgradeEndResponse record{0xBBBB, 0xCCCC, 0xDDDDDDDD, 0xEEEEEEEE, 0xFFFFFFFF};
  const auto answer = frame.testingUpgradeEndResponse(record);
  return test::show(answer) + ' ' +
         fields(record.manufacturerCode, record.imageType, record.fileVersion, record.currentTime, record.upgradeTime);
}

/// A reader with the first byte of its payload, the field control of most.
struct Reader {
  std::string name;
  std::string (*read)(const ZclOtaUpgrade&);
  unsigned char command;
  unsigned char first;
  unsigned int least;  ///< Bytes of payload with which a frame is taken.
  unsigned int most;
  std::string taken;
  std::string left;
  /// From so many bytes of payload on, up to `least`, a frame that is not taken has filled some fields.
  unsigned int half = 1000;
  std::string halfTaken = "";
};

std::ostream& operator<<(std::ostream& out, const Reader& row) { return out << row.name; }

constexpr unsigned int ANY = 1000;

// The payload's bytes are their own offsets, but for the first.
const std::string IMAGE = " 0201 0403 08070605 ";
const std::string OFFSET = IMAGE + "0c0b0a09 0d ";
const std::string NO_ADDRESS = "[00 00 00 00 00 00 00 00]";
const std::string FROM_14 = "[0e 0f 10 11 12 13 14 15]";
const std::string FROM_18 = "[12 13 14 15 16 17 18 19]";

const std::string LEFT_QUERY = "indeterminate aa bbbb cccc dddddddd eeee";
const std::string LEFT_BLOCK = "indeterminate aa bbbb cccc dddddddd eeeeeeee ff [e0 e1 e2 e3 e4 e5 e6 e7] 9999";
const std::string LEFT_PAGE = "indeterminate aa bbbb cccc dddddddd eeeeeeee ff 8888 9999 [e0 e1 e2 e3 e4 e5 e6 e7]";
const std::string LEFT_END = "indeterminate aa bbbb cccc dddddddd";
const std::string LEFT_BLOCK_RESPONSE = "indeterminate aa bbbb cccc dddddddd eeeeeeee ff";
const std::string LEFT_END_RESPONSE = "indeterminate bbbb cccc dddddddd eeeeeeee ffffffff";

const Reader READERS[] = {
    {"query0", showQuery, 1, 0x00, 9, ANY, "true 00" + IMAGE + "0000", LEFT_QUERY},
    {"query1", showQuery, 1, 0x01, 11, ANY, "true 01" + IMAGE + "0a09", LEFT_QUERY, 9,
     "indeterminate 01" + IMAGE + "eeee"},
    {"query2", showQuery, 1, 0x02, 9, ANY, "true 02" + IMAGE + "0000", LEFT_QUERY},
    {"query3", showQuery, 1, 0x03, 11, ANY, "true 03" + IMAGE + "0a09", LEFT_QUERY, 9,
     "indeterminate 03" + IMAGE + "eeee"},
    {"queryFE", showQuery, 1, 0xFE, 9, ANY, "true fe" + IMAGE + "0000", LEFT_QUERY},
    {"block0", showBlock, 3, 0x00, 14, 24, "true 00" + OFFSET + NO_ADDRESS + " 0000", LEFT_BLOCK},
    {"block1", showBlock, 3, 0x01, 22, 24, "true 01" + OFFSET + FROM_14 + " 0000", LEFT_BLOCK},
    {"block2", showBlock, 3, 0x02, 16, 24, "true 02" + OFFSET + NO_ADDRESS + " 0f0e", LEFT_BLOCK},
    {"block3", showBlock, 3, 0x03, 24, 24, "true 03" + OFFSET + FROM_14 + " 1716", LEFT_BLOCK},
    {"blockFC", showBlock, 3, 0xFC, 14, 24, "true fc" + OFFSET + NO_ADDRESS + " 0000", LEFT_BLOCK},
    {"page0", showPage, 4, 0x00, 18, 26, "true 00" + OFFSET + "0f0e 1110 " + NO_ADDRESS, LEFT_PAGE},
    {"page1", showPage, 4, 0x01, 18, 26, "true 01" + OFFSET + "0f0e 1110 " + FROM_18, LEFT_PAGE},
    {"page2", showPage, 4, 0x02, 18, 26, "true 02" + OFFSET + "0f0e 1110 " + NO_ADDRESS, LEFT_PAGE},
    {"page3", showPage, 4, 0x03, 18, 26, "true 03" + OFFSET + "0f0e 1110 " + FROM_18, LEFT_PAGE},
    {"pageFE", showPage, 4, 0xFE, 18, 26, "true fe" + OFFSET + "0f0e 1110 " + NO_ADDRESS, LEFT_PAGE},
    {"end0", showEnd, 6, 0x00, 9, 9, "true 00 0201 0403 08070605", LEFT_END},
    {"end96", showEnd, 6, 0x96, 9, 9, "true 96 0201 0403 08070605", LEFT_END},
    {"blockResponse0", showBlockResponse, 5, 0x00, 14, ANY, "true 00 0201 0403 08070605 0c0b0a09 0d",
     LEFT_BLOCK_RESPONSE},
    {"blockResponse97", showBlockResponse, 5, 0x97, 14, ANY, "true 97 0201 0403 08070605 0c0b0a09 0d",
     LEFT_BLOCK_RESPONSE},
    {"endResponse", showEndResponse, 7, 0x00, 16, 16, "true 0100 0302 07060504 0b0a0908 0f0e0d0c", LEFT_END_RESPONSE},
};

class ZclOtaUpgradeReader : public testing::TestWithParam<Reader> {
 protected:
  /// A frame whose payload is what the reader expects, with the whole storage filled.
  static ZclOtaUpgrade filled(const std::string& header) {
    ZclOtaUpgrade frame(bytesOf(header + digits(GetParam().command)));
    const unsigned int payload = headerLength(header);
    for (unsigned int at = payload; at < STORAGE; ++at) frame.contents[at] = static_cast<unsigned char>(at - payload);
    frame.contents[payload] = GetParam().first;
    return frame;
  }

  static std::string expected(unsigned int header, unsigned int length) {
    const Reader& row = GetParam();
    if (length >= header + row.least && length <= header + row.most) return row.taken;
    return length >= header + row.half && length < header + row.least ? row.halfTaken : row.left;
  }
};

INSTANTIATE_TEST_SUITE_P(Readers, ZclOtaUpgradeReader, testing::ValuesIn(READERS),
                         [](const auto& row) { return row.param.name; });

TEST_P(ZclOtaUpgradeReader, TakesAFrameByItsLength) {
  const test::LogCapture log;
  for (const std::string& header : HEADERS) {
    ZclOtaUpgrade frame = filled(header);
    for (unsigned int length = 0; length <= 300; ++length) {
      frame.length_ = length;
      EXPECT_EQ(GetParam().read(frame), expected(headerLength(header), length)) << header << length;
    }
  }
  EXPECT_THAT(log.texts(), IsEmpty());
}

TEST_P(ZclOtaUpgradeReader, TakesAFrameThatHoldsNothingBehindItsLength) {
  for (const std::string& header : HEADERS) {
    const ZclOtaUpgrade whole = filled(header);
    for (unsigned int length = 0; length <= headerLength(header) + 40; ++length) {
      const ZclOtaUpgrade frame{U255Buff<unsigned char>(whole.contents, length)};
      const unsigned int payload = length < headerLength(header) ? 0 : length - headerLength(header);
      std::string text = expected(headerLength(header), length);
      // The address of a page request is read without a look at the length.
      const bool cutAddress = GetParam().command == 4 && payload >= 18 && payload < 26;
      if (cutAddress && text.find(FROM_18) != std::string::npos) {
        OtaNodeAddress address{};
        for (unsigned int i = 18; i < payload; ++i) address[i - 18] = static_cast<unsigned char>(i);
        text.replace(text.find(FROM_18), FROM_18.size(), show(address));
      }
      EXPECT_EQ(GetParam().read(frame), text) << header << length;
    }
  }
}

TEST_P(ZclOtaUpgradeReader, TakesAFrameByItsCommand) {
  const test::LogCapture log;
  for (const std::string& header : HEADERS) {
    ZclOtaUpgrade frame = filled(header);
    frame.length_ = headerLength(header) + GetParam().least;
    for (unsigned int command = 0; command <= 0xFF; ++command) {
      frame.setCid(static_cast<unsigned char>(command));
      EXPECT_EQ(GetParam().read(frame), command == GetParam().command ? GetParam().taken : GetParam().left)
          << header << command;
    }
  }
  EXPECT_THAT(log.texts(), IsEmpty());
}

TEST_P(ZclOtaUpgradeReader, TakesAFrameOfAnyTypeAndDirection) {
  for (const char* control : {"00 ", "01 ", "02 ", "03 ", "18 ", "fb "}) {
    ZclOtaUpgrade frame = filled(std::string(control) + "07 ");
    frame.length_ = 3 + GetParam().least;
    const std::string before = hex(frame);
    EXPECT_EQ(GetParam().read(frame), GetParam().taken) << control;
    EXPECT_EQ(hex(frame), before) << "a reader changes nothing";
  }
}

TEST_P(ZclOtaUpgradeReader, LogsNothingWhereTheHeaderIsCut) {
  const test::LogCapture log;
  for (const char* frame : {"", "0d", "0d 40", "0d 40 10", "0d 40 10 07", "09", "09 07"}) {
    EXPECT_EQ(GetParam().read(ZclOtaUpgrade(bytesOf(frame))), GetParam().left) << frame;
  }
  EXPECT_THAT(log.texts(), IsEmpty());
}

TEST(ZclOtaUpgradeQuery, OfTwelveBytesHasNoHardwareVersion) {
  EXPECT_EQ(showQuery(ZclOtaUpgrade(bytesOf("01 07 01 00 40 10 02 01 04 03 02 01"))),
            "true 00 1040 0102 01020304 0000");
  EXPECT_EQ(showQuery(ZclOtaUpgrade(bytesOf("01 07 01 00 40 10 02 01 04 03 02"))), LEFT_QUERY);
}

TEST(ZclOtaUpgradeBlock, KeepsTheAddressAsItStands) {
  EXPECT_EQ(showBlock(ZclOtaUpgrade(bytesOf("01 07 03 "                 // header
                                            "03 40 10 02 01 "           // field control, manufacturer, image type
                                            "04 03 02 01 40 00 00 00 "  // file version, offset
                                            "30 "                       // largest block
                                            "88 77 66 55 44 33 22 11 "  // address, least significant byte first
                                            "2c 01"))),                 // block period
            "true 03 1040 0102 01020304 00000040 30 [88 77 66 55 44 33 22 11] 012c");
}

TEST(ZclOtaUpgradeBlock, OfOneByteTooManyIsRefused) {
  ZclOtaUpgrade frame(bytesOf("01 07 03 00"));
  frame.length_ = 28;
  EXPECT_EQ(showBlock(frame), LEFT_BLOCK);
}

TEST(ZclOtaUpgradePage, IsReadAsItWasBuilt) {
  for (const std::string& header : HEADERS) {
    ZclOtaUpgrade frame(bytesOf(header + "04"));
    askForPage(frame, 1);
    EXPECT_EQ(showPage(frame), "true 01 0102 0304 05060708 090a0b0c 0d 0e0f 1011 [a0 a1 a2 a3 a4 a5 a6 a7]") << header;
  }
  ZclOtaUpgrade frame(bytesOf("01 07 04"));
  askForPage(frame, 0);
  EXPECT_EQ(showPage(frame), "true 00 0102 0304 05060708 090a0b0c 0d 0e0f 1011 [00 00 00 00 00 00 00 00]");
}

TEST(ZclOtaUpgradeBlock, IsReadAsItWasBuilt) {
  ZclOtaUpgrade frame(static_cast<unsigned char>(5));
  frame.imageBlockResponse({0x00, 0x0102, 0x0304, 0x05060708, 0x090A0B0C, 0x77}, DATA, 3);
  EXPECT_EQ(showBlockResponse(frame), "true 00 0102 0304 05060708 090a0b0c 03");
}

TEST(ZclOtaUpgradeEnd, IsReadAsItWasBuilt) {
  ZclOtaUpgrade request(static_cast<unsigned char>(6));
  request.sendUpgradeEndRequest({0x96, 0x0102, 0x0304, 0x05060708});
  EXPECT_EQ(showEnd(request), "true 96 0102 0304 05060708");
  ZclOtaUpgrade response(static_cast<unsigned char>(7));
  response.upgradeEndResponse({0x0102, 0x0304, 0x05060708, 0x090A0B0C, 0x0D0E0F10});
  EXPECT_EQ(showEndResponse(response), "true 0102 0304 05060708 090a0b0c 0d0e0f10");
}

/// The attribute readers, with marks in their argument.
template <typename T, boost::logic::tribool (ZclOtaUpgrade::*READ)(T&)>
std::string showAttribute(ZclOtaUpgrade& frame) {
  T value = static_cast<T>(0xEEEEEEEE);
  const auto answer = (frame.*READ)(value);
  return test::show(answer) + ' ' + digits(value);
}

struct Attribute {
  const char* name;
  std::string (*read)(ZclOtaUpgrade&);
  std::string id;
  std::string type;
  std::string wire;
  std::string taken;
  std::string left;
  std::vector<std::string> others;  ///< Values of other types, with the type in front.
};

std::ostream& operator<<(std::ostream& out, const Attribute& row) { return out << row.name; }

const Attribute ATTRIBUTES[] = {
    {"Fwv",
     showAttribute<unsigned int, &ZclOtaUpgrade::readAttributesResponseFwv>,
     "02 00",
     "23",
     "04 03 02 81",
     "true 81020304",
     "false eeeeeeee",
     {"21 01 02", "20 01", "2b 01 02 03 04", "1b 01 02 03 04", "22 01 02 03", "42 04 01 02 03 04", "99"}},
    {"ImageUpgradeStatus",
     showAttribute<unsigned char, &ZclOtaUpgrade::readAttributesResponseImageUpgradeStatus>,
     "06 00",
     "20",
     "83",
     "true 83",
     "false ee",
     {"30 01", "18 01", "28 01", "10 01", "21 01 02", "42 01 01", "99"}},
    {"Manufacturer",
     showAttribute<unsigned short, &ZclOtaUpgrade::readAttributesResponseManufacturer>,
     "07 00",
     "21",
     "40 90",
     "true 9040",
     "false eeee",
     {"20 01", "31 01 02", "19 01 02", "29 01 02", "23 01 02 03 04", "42 02 01 02", "99"}},
    {"ImageTypeId",
     showAttribute<unsigned short, &ZclOtaUpgrade::readAttributesResponseImageTypeId>,
     "08 00",
     "21",
     "fe 81",
     "true 81fe",
     "false eeee",
     {"20 01", "31 01 02", "19 01 02", "29 01 02", "23 01 02 03 04", "42 02 01 02", "99"}},
};

class ZclOtaUpgradeAttribute : public testing::TestWithParam<Attribute> {
 protected:
  static std::string read(const std::string& text) {
    ZclOtaUpgrade frame(bytesOf(text));
    const std::string before = hex(frame);
    const std::string shown = GetParam().read(frame);
    EXPECT_EQ(hex(frame), before) << "a reader changes nothing";
    return shown;
  }
  static std::string value() { return GetParam().type + ' ' + GetParam().wire; }
  static std::string record() { return GetParam().id + " 00 " + value(); }
  static std::string taken() { return GetParam().taken; }
  static std::string left() { return GetParam().left; }
};

INSTANTIATE_TEST_SUITE_P(Attributes, ZclOtaUpgradeAttribute, testing::ValuesIn(ATTRIBUTES),
                         [](const auto& row) { return std::string(row.param.name); });

TEST_P(ZclOtaUpgradeAttribute, IsReadLittleEndian) {
  EXPECT_EQ(read("18 05 01 " + record()), taken());
  EXPECT_EQ(read("1c 40 10 05 01 " + record()), taken());
}

TEST_P(ZclOtaUpgradeAttribute, IsReadWhateverTheCommand) {
  for (const char* header : {"18 05 00 ", "18 05 0a ", "01 05 01 ", "09 05 ff "}) {
    EXPECT_EQ(read(header + record()), taken()) << header;
  }
}

TEST_P(ZclOtaUpgradeAttribute, IsFoundAmongOthers) {
  EXPECT_EQ(read("18 05 01 00 00 00 f0 01 02 03 04 05 06 07 08 05 00 86 01 00 00 42 02 41 42 " + record()), taken());
  EXPECT_EQ(read("18 05 01 " + record() + " 05 00 86"), taken());
}

TEST_P(ZclOtaUpgradeAttribute, IsTheFirstRecordWithItsIdAndType) {
  const std::string zeros = "00 00 00 00 ";
  const std::string second = GetParam().id + " 00 " + GetParam().type + ' ' + zeros.substr(0, GetParam().wire.size());
  EXPECT_EQ(read("18 05 01 " + record() + ' ' + second), taken());
  for (const std::string& other : GetParam().others) {
    EXPECT_EQ(read("18 05 01 " + GetParam().id + " 00 " + other + ' ' + record()), taken()) << other;
  }
}

TEST_P(ZclOtaUpgradeAttribute, OfAnotherTypeIsNotRead) {
  for (const std::string& other : GetParam().others) {
    EXPECT_EQ(read("18 05 01 " + GetParam().id + " 00 " + other), left()) << other;
  }
}

TEST_P(ZclOtaUpgradeAttribute, IsNotReadWhereItIsNot) {
  const std::string highByte = GetParam().id.substr(0, 3) + "01 00 " + value();
  for (const std::string& records : {std::string(), "05 00 00 " + value(), highByte, "00 00 00 " + value()}) {
    EXPECT_EQ(read("18 05 01 " + records), left()) << records;
  }
}

TEST_P(ZclOtaUpgradeAttribute, ThatFailedShowsTheValueOfTheRecordBeforeIt) {
  EXPECT_EQ(read("18 05 01 00 01 00 " + value() + ' ' + GetParam().id + " 86"), taken());
  EXPECT_EQ(read("18 05 01 00 01 00 " + value() + " 01 01 86 " + GetParam().id + " 86"), taken());
}

TEST_P(ZclOtaUpgradeAttribute, ThatFailedIsNotReadBehindAnotherTypeOrNothing) {
  EXPECT_EQ(read("18 05 01 " + GetParam().id + " 86"), left());
  EXPECT_EQ(read("18 05 01 00 01 00 08 01 " + GetParam().id + " 86"), left());
  EXPECT_EQ(read("18 05 01 " + GetParam().id + " 86 " + record()), taken());
}

TEST_P(ZclOtaUpgradeAttribute, IsReadPastTheFramesEnd) {
  ZclOtaUpgrade frame(bytesOf("18 05 01 " + record()));
  frame.length_ = 4;
  EXPECT_EQ(GetParam().read(frame), taken());
  frame.length_ = 3;
  EXPECT_EQ(GetParam().read(frame), left());
}

TEST_P(ZclOtaUpgradeAttribute, WarnsOfAFrameThatIsShorterThanItsHeader) {
  const test::LogCapture log;
  EXPECT_EQ(read("18 05"), left());
  EXPECT_THAT(log.texts(), ElementsAre(HasSubstr("Invalid ZCL packet length: 2")));
}

TEST_P(ZclOtaUpgradeAttribute, LogsNothingOtherwise) {
  const test::LogCapture log;
  EXPECT_EQ(read("18 05 01 " + record()), taken());
  EXPECT_EQ(read("18 05 01"), left());
  EXPECT_THAT(log.texts(), IsEmpty());
}

TEST(ZclOtaUpgradeAttributes, AreReadEachWithItsOwnType) {
  ZclOtaUpgrade frame(
      bytesOf("18 05 01 "
              "02 00 00 23 04 03 02 01 "  // file version
              "06 00 00 20 03 "           // upgrade status
              "07 00 00 21 40 10 "        // manufacturer
              "08 00 00 21 0b 0a"));      // image type
  unsigned int version = 0;
  unsigned char status = 0;
  unsigned short manufacturer = 0;
  unsigned short imageType = 0;
  EXPECT_EQ(test::show(frame.readAttributesResponseFwv(version)), "true");
  EXPECT_EQ(test::show(frame.readAttributesResponseImageUpgradeStatus(status)), "true");
  EXPECT_EQ(test::show(frame.readAttributesResponseManufacturer(manufacturer)), "true");
  EXPECT_EQ(test::show(frame.readAttributesResponseImageTypeId(imageType)), "true");
  EXPECT_EQ(fields(version, status, manufacturer, imageType), "01020304 03 1040 0a0b");
}

/// The place of a virtual operation among those of its class, as the pointer to it holds it.
template <typename Operation>
std::ptrdiff_t slotOf(Operation operation) {
  std::ptrdiff_t slot = 0;
  static_assert(sizeof operation >= sizeof slot);
  std::memcpy(&slot, &operation, sizeof slot);
  return slot;
}

TEST(ZclOtaUpgradeVirtualOperations, FollowThoseOfTheBaseInOrder) {
  const std::ptrdiff_t slots[] = {
      slotOf(&ZclMessage::addString),
      slotOf(&ZclOtaUpgrade::queryNextImageResponse),
      slotOf(&ZclOtaUpgrade::imageBlockResponse),
      slotOf(&ZclOtaUpgrade::sendUpgradeEndRequest),
      slotOf(&ZclOtaUpgrade::upgradeEndResponse),
      slotOf(&ZclOtaUpgrade::imageNotify),
      slotOf(&ZclOtaUpgrade::sendUnsupportedCommand),
      slotOf(&ZclOtaUpgrade::getOtaAttributes),
      slotOf(&ZclOtaUpgrade::getOtaUpgradeStatus),
      slotOf(&ZclOtaUpgrade::queryNextImageRequest),
      slotOf(&ZclOtaUpgrade::imageBlockRequest),
      slotOf(&ZclOtaUpgrade::imagePageRequest),
      slotOf(&ZclOtaUpgrade::upgradeEndRequest),
      slotOf(&ZclOtaUpgrade::readAttributesResponseManufacturer),
      slotOf(&ZclOtaUpgrade::readAttributesResponseImageTypeId),
      slotOf(&ZclOtaUpgrade::readAttributesResponseFwv),
      slotOf(&ZclOtaUpgrade::readAttributesResponseImageUpgradeStatus),
      slotOf(&ZclOtaUpgrade::testingImageBlockResponse),
      slotOf(&ZclOtaUpgrade::testingImagePageRequest),
      slotOf(&ZclOtaUpgrade::testingUpgradeEndResponse),
  };
  for (std::size_t i = 1; i < std::size(slots); ++i) {
    EXPECT_EQ(slots[i] - slots[i - 1], static_cast<std::ptrdiff_t>(sizeof(void*))) << i;
  }
}

/// Answers with itself what the server would ask it.
class OverridingUpgrade : public ZclOtaUpgrade {
 public:
  using ZclOtaUpgrade::ZclOtaUpgrade;

  void queryNextImageResponse(const QueryNextImageResponse&) override { ++calls; }
  void imageBlockResponse(const ImageBlockResponse&, const unsigned char*, unsigned char) override { ++calls; }
  void sendUpgradeEndRequest(const UpgradeEndRequest&) override { ++calls; }
  void upgradeEndResponse(const UpgradeEndResponse&) override { ++calls; }
  void imageNotify(const ImageNotifyCommand&) override { ++calls; }
  void sendUnsupportedCommand(unsigned char) override { ++calls; }
  void getOtaAttributes() override { ++calls; }
  void getOtaUpgradeStatus() override { ++calls; }
  boost::logic::tribool queryNextImageRequest(QueryNextImageRequest&) const override { return noted(); }
  boost::logic::tribool imageBlockRequest(ImageBlockRequest&) const override { return noted(); }
  boost::logic::tribool imagePageRequest(ImagePageRequest&) const override { return noted(); }
  boost::logic::tribool upgradeEndRequest(UpgradeEndRequest&) const override { return noted(); }
  boost::logic::tribool readAttributesResponseManufacturer(unsigned short&) override { return noted(); }
  boost::logic::tribool readAttributesResponseImageTypeId(unsigned short&) override { return noted(); }
  boost::logic::tribool readAttributesResponseFwv(unsigned int&) override { return noted(); }
  boost::logic::tribool readAttributesResponseImageUpgradeStatus(unsigned char&) override { return noted(); }
  boost::logic::tribool testingImageBlockResponse(ImageBlockResponse&) const override { return noted(); }
  void testingImagePageRequest(ImagePageRequest&) override { ++calls; }
  boost::logic::tribool testingUpgradeEndResponse(UpgradeEndResponse&) const override { return noted(); }

  mutable int calls = 0;

 private:
  bool noted() const {
    ++calls;
    return false;
  }
};

TEST(ZclOtaUpgradeVirtualOperations, AreReachedThroughTheBase) {
  OverridingUpgrade overriding(bytesOf("01 07 01"));
  ZclOtaUpgrade& base = overriding;
  QueryNextImageRequest query;
  ImageBlockRequest block;
  ImagePageRequest page;
  UpgradeEndRequest end;
  ImageBlockResponse blockResponse;
  UpgradeEndResponse endResponse;
  unsigned char byte = 0;
  unsigned short number = 0;
  unsigned int version = 0;
  base.queryNextImageResponse({});
  base.imageBlockResponse(blockResponse, nullptr, 0);
  base.sendUpgradeEndRequest(end);
  base.upgradeEndResponse(endResponse);
  base.imageNotify({});
  base.sendUnsupportedCommand(0);
  base.getOtaAttributes();
  base.getOtaUpgradeStatus();
  base.testingImagePageRequest(page);
  EXPECT_EQ(overriding.calls, 9);
  EXPECT_EQ(hex(overriding), "01 07 01");
  for (const boost::logic::tribool answer :
       {base.queryNextImageRequest(query), base.imageBlockRequest(block), base.imagePageRequest(page),
        base.upgradeEndRequest(end), base.readAttributesResponseManufacturer(number),
        base.readAttributesResponseImageTypeId(number), base.readAttributesResponseFwv(version),
        base.readAttributesResponseImageUpgradeStatus(byte), base.testingImageBlockResponse(blockResponse),
        base.testingUpgradeEndResponse(endResponse)}) {
    EXPECT_EQ(test::show(answer), "false");
  }
  EXPECT_EQ(overriding.calls, 19);
}

}  // namespace
}  // namespace qx
