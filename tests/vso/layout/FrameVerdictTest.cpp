#include "vso/layout/FrameVerdict.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <ostream>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "support/Bytes.h"
#include "support/LogCapture.h"
#include "tests/vso/layout/WholeFrames.h"
#include "vso/zcl/AttributeWalk.h"
#include "vso/zcl/ZclMessage.h"

namespace qx {
namespace {

using test::bytesOf;
using test::WholeFrame;
using test::wholeFrames;

constexpr unsigned short HOME = 0x0104;
constexpr unsigned short BASIC = 0x0000;
constexpr unsigned short ZDO = 0x0000;

std::string times(unsigned int count, const std::string& text) {
  std::string all;
  for (unsigned int i = 0; i < count; ++i) all += text;
  return all;
}

std::string verdictOf(unsigned short profile, unsigned short cluster, const std::string& hex) {
  return judgeFrame(profile, cluster, bytesOf(hex)).toString();
}

/// The first `length` bytes of a frame.
U255Buff<unsigned char> beginningOf(const U255Buff<unsigned char>& frame, unsigned int length) {
  return {frame.contents, length};
}

// What a verdict says

TEST(FrameVerdict, IsWholeUntilSaidOtherwise) {
  const FrameVerdict verdict;
  EXPECT_EQ(verdict.state, FrameVerdict::WHOLE);
  EXPECT_EQ(verdict.byte, 0u);
  EXPECT_EQ(verdict.what, "");
  EXPECT_EQ(verdict.toString(), "whole");
}

TEST(FrameVerdict, PrintsAsItsText) {
  std::ostringstream out;
  out << FrameVerdict{FrameVerdict::BROKEN, 7, "status is missing"} << ", " << FrameVerdict{};
  EXPECT_EQ(out.str(), "status is missing at byte 7, whole");
}

TEST(FrameVerdict, IsEqualInAllThree) {
  const FrameVerdict verdict{FrameVerdict::BROKEN, 7, "a"};
  EXPECT_EQ(verdict, (FrameVerdict{FrameVerdict::BROKEN, 7, "a"}));
  EXPECT_FALSE(verdict == (FrameVerdict{FrameVerdict::UNKNOWN, 7, "a"}));
  EXPECT_FALSE(verdict == (FrameVerdict{FrameVerdict::BROKEN, 8, "a"}));
  EXPECT_FALSE(verdict == (FrameVerdict{FrameVerdict::BROKEN, 7, "b"}));
}

TEST(FrameVerdict, TellsTheNeighbourThatRunsPastTheEnd) {
  const std::string page = "07 00 30 00 19" + times(66, "a5");  // 25 entries claimed, three there
  const FrameVerdict verdict = judgeFrame(ZDO, 0x8031, bytesOf(page));
  EXPECT_EQ(verdict, (FrameVerdict{FrameVerdict::BROKEN, 71, "neighbour 4 of 25 runs past the end"}));
  EXPECT_EQ(verdict.toString(), "neighbour 4 of 25 runs past the end at byte 71");
  EXPECT_EQ(judgeFrame(ZDO, 0x8031, bytesOf(page + times(21, "a5"))), verdict);
  EXPECT_EQ(verdictOf(ZDO, 0x8031, page + times(22, "a5")), "neighbour 5 of 25 runs past the end at byte 93");
}

TEST(FrameVerdict, TellsTheStringThatClaimsTooMuch) {
  const FrameVerdict verdict = judgeFrame(HOME, BASIC, bytesOf("18 05 0a  05 00 42 c8" + times(12, "61")));
  EXPECT_EQ(verdict, (FrameVerdict{FrameVerdict::BROKEN, 7, "string of attribute 0x0005 claims 200 bytes, 12 follow"}));
  EXPECT_EQ(verdict.toString(), "string of attribute 0x0005 claims 200 bytes, 12 follow at byte 7");
}

TEST(FrameVerdict, TellsTheTypeThatIsUnknown) {
  const FrameVerdict verdict = judgeFrame(HOME, BASIC,
                                          bytesOf("0c 40 10 05 01 "  // read attributes response of a manufacturer
                                                  "01 ff 00 4c "     // attribute 0xFF01
                                                  "00 00 00 10 01"));
  EXPECT_EQ(verdict,
            (FrameVerdict{FrameVerdict::BROKEN, 9, "type 0x4C of attribute 0xFF01 is unknown, the walk goes on"}));
  EXPECT_EQ(verdict.toString(), "type 0x4C of attribute 0xFF01 is unknown, the walk goes on at byte 9");
}

struct Sentence {
  unsigned short profile;
  unsigned short cluster;
  const char* hex;
  const char* verdict;
};

void PrintTo(const Sentence& sentence, std::ostream* out) { *out << sentence.hex; }

class Sentences : public testing::TestWithParam<Sentence> {};

TEST_P(Sentences, NameWhatIsWrongAndWhere) {
  EXPECT_EQ(verdictOf(GetParam().profile, GetParam().cluster, GetParam().hex), GetParam().verdict);
}

INSTANTIATE_TEST_SUITE_P(Headers, Sentences,
                         testing::Values(Sentence{HOME, 6, "", "frame control is missing at byte 0"},
                                         Sentence{HOME, 6, "18", "sequence number is missing at byte 1"},
                                         Sentence{HOME, 6, "18 05", "command is missing at byte 2"},
                                         Sentence{HOME, 6, "1c", "manufacturer code takes 2 bytes, 0 follow at byte 1"},
                                         Sentence{HOME, 6, "1c 40",
                                                  "manufacturer code takes 2 bytes, 1 follows at byte 1"},
                                         Sentence{HOME, 6, "1c 40 10", "sequence number is missing at byte 3"},
                                         Sentence{HOME, 6, "1c 40 10 05", "command is missing at byte 4"},
                                         Sentence{ZDO, 0x8031, "", "sequence number is missing at byte 0"},
                                         Sentence{ZDO, 0x1234, "", "sequence number is missing at byte 0"}));

INSTANTIATE_TEST_SUITE_P(
    Ids, Sentences,
    testing::Values(Sentence{HOME, 0, "00 05 00  04", "id of an attribute takes 2 bytes, 1 follows at byte 3"},
                    Sentence{HOME, 0, "00 05 00  04 00  05", "id of an attribute takes 2 bytes, 1 follows at byte 5"},
                    Sentence{HOME, 0, "04 40 10 05 00  04", "id of an attribute takes 2 bytes, 1 follows at byte 5"}));

INSTANTIATE_TEST_SUITE_P(
    Values, Sentences,
    testing::Values(
        Sentence{HOME, 0, "18 05 0a  05", "id of an attribute takes 2 bytes, 1 follows at byte 3"},
        Sentence{HOME, 0, "18 05 0a  05 01", "type of attribute 0x0105 is missing at byte 5"},
        Sentence{HOME, 0, "18 05 0a  05 01 20", "value of attribute 0x0105 takes 1 byte, 0 follow at byte 6"},
        Sentence{HOME, 0, "18 05 0a  05 01 f0 01", "value of attribute 0x0105 takes 8 bytes, 1 follows at byte 6"},
        Sentence{HOME, 0, "18 05 0a  05 01 41", "length of the string of attribute 0x0105 is missing at byte 6"},
        Sentence{HOME, 0, "18 05 0a  05 01 40 01", "string of attribute 0x0105 claims 1 byte, 0 follow at byte 7"},
        Sentence{HOME, 0, "18 05 0a  05 01 42 ff", "string of attribute 0x0105 claims 255 bytes, 0 follow at byte 7"},
        Sentence{HOME, 0, "18 05 0a  05 01 0c", "type 0x0C of attribute 0x0105 is unknown, the walk goes on at byte 6"},
        Sentence{HOME, 0, "18 05 0a  05 01 20 2a  06 00 21 01",
                 "value of attribute 0x0006 takes 2 bytes, 1 follows at byte 10"}));

INSTANTIATE_TEST_SUITE_P(
    Answers, Sentences,
    testing::Values(Sentence{HOME, 0, "18 05 01  05", "id of an attribute takes 2 bytes, 1 follows at byte 3"},
                    Sentence{HOME, 0, "18 05 01  05 01", "status of attribute 0x0105 is missing at byte 5"},
                    Sentence{HOME, 0, "18 05 01  05 01 00", "type of attribute 0x0105 is missing at byte 6"},
                    Sentence{HOME, 0, "18 05 01  05 01 00 20",
                             "value of attribute 0x0105 takes 1 byte, 0 follow at byte 7"},
                    Sentence{HOME, 0, "18 05 01  05 01 00 42 02 61",
                             "string of attribute 0x0105 claims 2 bytes, 1 follows at byte 8"}));

INSTANTIATE_TEST_SUITE_P(Statuses, Sentences,
                         testing::Values(Sentence{HOME, 0, "18 05 04  86 05",
                                                  "id of an attribute takes 2 bytes, 1 follows at byte 4"},
                                         Sentence{HOME, 0, "18 05 04  86 05 01  88",
                                                  "id of an attribute takes 2 bytes, 0 follow at byte 7"}));

INSTANTIATE_TEST_SUITE_P(
    Fields, Sentences,
    testing::Values(Sentence{HOME, 3, "01 05 00", "identifyTime is missing at byte 3"},
                    Sentence{HOME, 3, "01 05 00  1e", "identifyTime takes 2 bytes, 1 follows at byte 3"},
                    Sentence{HOME, 8, "01 05 01  01", "rate is missing at byte 4"},
                    Sentence{HOME, 8, "01 05 00  80 0a 00  01", "optionsOverride is missing at byte 7"},
                    Sentence{HOME, 4, "01 05 00  02 01", "groupName is missing at byte 5"},
                    Sentence{HOME, 4, "01 05 00  02 01  c8 61 62", "groupName claims 200 bytes, 2 follow at byte 6"},
                    Sentence{HOME, 4, "01 05 02  03  02 01  04", "group id 2 of 3 runs past the end at byte 6"},
                    Sentence{HOME, 5, "09 05 06  00 10 02 01  03  07", "scene id 2 of 3 runs past the end at byte 9"},
                    Sentence{HOME, 0x19, "01 05 03  01 40 10 34 12 04 03 02 01 00 01 00 00 40  77 66",
                             "requestNodeAddress takes 8 bytes, 2 follow at byte 17"},
                    Sentence{HOME, 0x19, "09 05 05  00 40 10 34 12 04 03 02 01 00 01 00 00 04  aa bb cc",
                             "data claims 4 bytes, 3 follow at byte 17"},
                    Sentence{0xC25D, 1, "01 05 00  02  01 00 02", "id 2 of 2 runs past the end at byte 6"},
                    Sentence{HOME, 5, "01 05 00  02 01 03 0a 00 00  06 00 01 01  08 00",
                             "extension 2 takes 3 bytes, 2 follow at byte 13"},
                    Sentence{HOME, 5, "01 05 00  02 01 03 0a 00 00  06 00 04 01",
                             "extension 1 claims 4 bytes, 1 follows at byte 12"}));

INSTANTIATE_TEST_SUITE_P(
    Management, Sentences,
    testing::Values(
        Sentence{ZDO, 0x8031, "07", "status is missing at byte 1"},
        Sentence{ZDO, 0x8031, "07 00", "totalNeighborTableEntriesOnDevice is missing at byte 2"},
        Sentence{ZDO, 0x8032, "07 00 02 00 02  01 02 38 03 04  11", "route 2 of 2 runs past the end at byte 10"},
        Sentence{ZDO, 0x8038, "07 00  00 28", "scannedChannels takes 4 bytes, 2 follow at byte 2"},
        Sentence{ZDO, 0x8038, "07 00  00 28 00 00  05 00 01 00  02  00",
                 "energy value 2 of 2 runs past the end at byte 12"},
        Sentence{ZDO, 0x0034, "07 77 66 55 44 33 22 11", "device takes 8 bytes, 7 follow at byte 1"},
        Sentence{ZDO, 0x0038, "07 00 80 00 00 ff 01 34", "managerAddress takes 2 bytes, 1 follows at byte 7"}));

INSTANTIATE_TEST_SUITE_P(
    TrailingBytes, Sentences,
    testing::Values(Sentence{HOME, 6, "01 05 02  ab", "1 byte behind the last field at byte 3"},
                    Sentence{HOME, 3, "01 05 00  1e 00  ab cd", "2 bytes behind the last field at byte 5"},
                    Sentence{HOME, 8, "01 05 00  80 0a 00 01 02 03", "1 byte behind the last field at byte 8"},
                    Sentence{HOME, 4, "09 05 00  00 02 01 00", "1 byte behind the last field at byte 6"},
                    Sentence{HOME, 0x19, "09 05 02  98 40 10", "2 bytes behind the last field at byte 4"},
                    Sentence{ZDO, 0x8036, "07 00 00", "1 byte behind the last field at byte 2"},
                    Sentence{ZDO, 0x0038, "07 00 80 00 00 06 03", "1 byte behind the last field at byte 6"}));

TEST(FrameVerdict, IsUnknownForCommandsThatAreNotKnown) {
  const FrameVerdict unknown{FrameVerdict::UNKNOWN, 3, "payload of this command is not known"};
  EXPECT_EQ(judgeFrame(HOME, 0x0006, bytesOf("01 05 03")), unknown);
  EXPECT_EQ(judgeFrame(HOME, 0x0006, bytesOf("09 05 02 01 02 03")), unknown);
  EXPECT_EQ(judgeFrame(HOME, 0xFC00, bytesOf("01 05 00 ff")), unknown);
  EXPECT_EQ(judgeFrame(0xC25D, 0x0006, bytesOf("01 05 02")), unknown);
  EXPECT_EQ(judgeFrame(HOME, 0x0006, bytesOf("00 05 17")), unknown);
  EXPECT_EQ(judgeFrame(HOME, 0x0006, bytesOf("02 05 00")), unknown);
  EXPECT_EQ(verdictOf(HOME, 0x0006, "05 40 10 05 02"), "payload of this command is not known at byte 5");
  EXPECT_EQ(verdictOf(ZDO, 0x8033, "07 84"), "payload of this command is not known at byte 1");
}

TEST(FrameVerdict, IsUnknownForGeneralCommandsOfUnknownPayload) {
  for (const unsigned char command : {0x06, 0x07, 0x08, 0x09, 0x0D, 0x0E, 0x0F, 0x10, 0x12, 0x14, 0x16}) {
    for (const unsigned int length : {3u, 4u, 255u}) {
      U255Buff<unsigned char> frame = bytesOf("18 05" + times(253, "a5"));
      frame.contents[2] = command;
      frame.length_ = length;
      EXPECT_EQ(judgeFrame(HOME, BASIC, frame),
                (FrameVerdict{FrameVerdict::UNKNOWN, 3, "payload of this command is not known"}));
    }
  }
}

TEST(FrameVerdict, BreaksAFrameThatIsLongerThanItsStorage) {
  U255Buff<unsigned char> frame = bytesOf("01 05 02");
  for (const unsigned int length : {256u, 300u, 0xFFFFFFFFu}) {
    frame.length_ = length;
    const FrameVerdict expected{FrameVerdict::BROKEN, 255,
                                "frame of " + std::to_string(length) + " bytes does not fit its storage"};
    EXPECT_EQ(judgeFrame(HOME, 0x0006, frame), expected);
    EXPECT_EQ(judgeFrame(ZDO, 0x8031, frame), expected);
  }
}

TEST(FrameVerdict, TakesAFrameThatFillsItsStorage) {
  EXPECT_EQ(verdictOf(HOME, BASIC, "00 05 00" + times(126, "0400")), "whole");
  EXPECT_EQ(verdictOf(ZDO, 0x8032, "07 00 32 00 32" + times(250, "00")), "whole");
  EXPECT_EQ(verdictOf(ZDO, 0x8032, "07 00 33 00 33" + times(250, "00")),
            "route 51 of 51 runs past the end at byte 255");
}

TEST(FrameVerdict, ReadsEveryTypeOfAnAttributeByItsSize) {
  constexpr struct {
    unsigned int size;
    unsigned char types[9];
  } SIZES[] = {{1, {0x08, 0x10, 0x18, 0x20, 0x28, 0x30}},
               {2, {0x09, 0x19, 0x21, 0x29, 0x31, 0x38, 0xE8, 0xE9}},
               {3, {0x0A, 0x1A, 0x22, 0x2A}},
               {4, {0x0B, 0x1B, 0x23, 0x2B, 0x39, 0xE0, 0xE1, 0xEA}},
               {8, {0x3A, 0xF0}}};
  for (const auto& [size, types] : SIZES) {
    for (const unsigned char type : types) {
      if (type == 0) break;
      U255Buff<unsigned char> frame = bytesOf("18 05 0a  05 00 00" + times(8, "ff"));
      frame.contents[5] = type;
      frame.length_ = 6 + size;
      EXPECT_EQ(judgeFrame(HOME, BASIC, frame), FrameVerdict()) << static_cast<int>(type);
      frame.length_ = 5 + size;
      EXPECT_EQ(judgeFrame(HOME, BASIC, frame).byte, 6u) << static_cast<int>(type);
    }
  }
}

TEST(FrameVerdict, IsSilentAboutEveryFrame) {
  const test::LogCapture capture;
  for (const WholeFrame& whole : wholeFrames()) {
    const U255Buff<unsigned char> frame = whole.frame();
    for (unsigned int length = 0; length <= frame.length_; ++length) {
      judgeFrame(whole.profile, whole.cluster, beginningOf(frame, length));
    }
  }
  EXPECT_TRUE(capture.texts().empty());
}

// Whole frames and their beginnings

class JudgedFrames : public testing::TestWithParam<WholeFrame> {
 protected:
  FrameVerdict judge(const U255Buff<unsigned char>& frame) const {
    return judgeFrame(GetParam().profile, GetParam().cluster, frame);
  }
};

TEST_P(JudgedFrames, AreWhole) { EXPECT_EQ(judge(GetParam().frame()), FrameVerdict()); }

TEST_P(JudgedFrames, AreBrokenWhenCutExceptWhereTheyMayEnd) {
  const U255Buff<unsigned char> frame = GetParam().frame();
  for (unsigned int length = 0; length < frame.length_; ++length) {
    const std::vector<unsigned int>& shorter = GetParam().shorter;
    const bool mayEnd = std::find(shorter.begin(), shorter.end(), length) != shorter.end();
    const FrameVerdict verdict = judge(beginningOf(frame, length));
    EXPECT_EQ(verdict.state, mayEnd ? FrameVerdict::WHOLE : FrameVerdict::BROKEN) << length << ": " << verdict;
    EXPECT_LE(verdict.byte, length) << verdict;
    EXPECT_EQ(verdict.what.empty(), mayEnd);
  }
}

TEST_P(JudgedFrames, AreJudgedByNothingBehindTheirEnd) {
  U255Buff<unsigned char> frame = GetParam().frame();
  const unsigned int whole = frame.length_;
  for (unsigned int length = 0; length <= whole; ++length) {
    const FrameVerdict expected = judge(beginningOf(GetParam().frame(), length));
    for (const int rest : {0x00, 0x01, 0xA5, 0xFF}) {
      std::memset(frame.contents + length, rest, U255Buff<unsigned char>::CAPACITY - length);
      frame.length_ = length;
      EXPECT_EQ(judge(frame), expected) << rest;
    }
    frame = GetParam().frame();
  }
}

INSTANTIATE_TEST_SUITE_P(FrameVerdict, JudgedFrames, testing::ValuesIn(wholeFrames()));

// Frames made by chance

/// Frames of known commands: whole ones, ones with bytes changed, cut ones, and such with any payload.
class RandomFrames {
 public:
  struct Received {
    const WholeFrame& origin;
    U255Buff<unsigned char> frame;
  };

  Received next() {
    const WholeFrame& origin = wholeFrames()[below(static_cast<unsigned int>(wholeFrames().size()))];
    U255Buff<unsigned char>& whole = frames_[&origin - wholeFrames().data()];
    if (whole.length_ == 0) whole = origin.frame();
    U255Buff<unsigned char> frame = whole;
    if (below(3) == 0) {
      const unsigned int header = origin.profile == ZDO ? 1 : (frame.contents[0] & 0x04) != 0 ? 5 : 3;
      frame.length_ = header + below(below(4) == 0 ? 256 - header : 40);
      for (unsigned int i = header; i < frame.length_; ++i) frame.contents[i] = byte();
    }
    for (unsigned int changes = below(4); changes > 0 && frame.length_ != 0; --changes) {
      frame.contents[below(frame.length_)] = byte();
    }
    if (below(3) == 0) frame.length_ = below(frame.length_ + 1);
    return {origin, frame};
  }

  unsigned char byte() { return static_cast<unsigned char>(below(3) == 0 ? below(4) : below(256)); }

 private:
  unsigned int below(unsigned int bound) { return static_cast<unsigned int>(random_() % bound); }

  std::mt19937 random_{20240229};
  std::vector<U255Buff<unsigned char>> frames_ = std::vector<U255Buff<unsigned char>>(wholeFrames().size());
};

/// How many bytes a sentence asks for from its byte on; 0 if it does not tell.
unsigned int bytesAskedFor(const std::string& what) {
  for (const char* const verb : {" takes ", " claims "}) {
    const std::size_t at = what.find(verb);
    if (at != std::string::npos) return static_cast<unsigned int>(std::atoi(what.c_str() + at + std::strlen(verb)));
  }
  constexpr struct {
    const char* row;
    unsigned int size;
  } ROWS[] = {{"neighbour ", 22}, {"route ", 5}, {"energy value ", 1}, {"group id ", 2}, {"scene id ", 1}, {"id ", 2}};
  for (const auto& [row, size] : ROWS) {
    if (what.rfind(row, 0) == 0 && what.find(" runs past the end") != std::string::npos) return size;
  }
  return 0;
}

TEST(FrameVerdict, PointsIntoEveryFrame) {
  constexpr unsigned int FRAMES = 200000;
  constexpr unsigned int STORAGE = U255Buff<unsigned char>::CAPACITY;
  RandomFrames frames;
  unsigned int count[3] = {};
  unsigned int extended = 0;
  for (unsigned int i = 0; i < FRAMES; ++i) {
    const auto [origin, frame] = frames.next();
    const FrameVerdict verdict = judgeFrame(origin.profile, origin.cluster, frame);
    ++count[verdict.state];
    ASSERT_LE(verdict.byte, frame.length_) << test::hex(frame) << ": " << verdict;
    ASSERT_EQ(verdict.state == FrameVerdict::WHOLE, verdict.what.empty()) << test::hex(frame) << ": " << verdict;

    // A field that was cut is there once the bytes that it lacks are.
    const unsigned int end = verdict.byte + bytesAskedFor(verdict.what);
    if (verdict.state != FrameVerdict::BROKEN || end == verdict.byte || end > STORAGE) continue;
    ASSERT_GT(end, frame.length_) << test::hex(frame) << ": " << verdict;
    U255Buff<unsigned char> longer = frame;
    while (longer.length_ < end) longer.contents[longer.length_++] = frames.byte();
    const FrameVerdict next = judgeFrame(origin.profile, origin.cluster, longer);
    ASSERT_TRUE(next.state == FrameVerdict::WHOLE || next.byte > verdict.byte)
        << test::hex(frame) << ": " << verdict << "\n"
        << test::hex(longer) << ": " << next;
    ++extended;
  }
  for (const unsigned int state : {FrameVerdict::WHOLE, FrameVerdict::BROKEN, FrameVerdict::UNKNOWN}) {
    EXPECT_GT(count[state], FRAMES / 100) << state;
  }
  EXPECT_GT(extended, FRAMES / 20);
}

/// The records of a list as one text.
std::string recordsOf(const ZclMessage& frame, detail::RecordLayout layout) {
  std::string text;
  for (detail::AttributeWalk walk(frame, layout); walk.next();) {
    const AttributeRecordData::Data value = walk.value().readable();
    text += std::to_string(walk.begin()) + "-" + std::to_string(walk.end()) + " " + std::to_string(walk.id()) + " " +
            std::to_string(walk.status()) + " " + std::to_string(walk.value().type()) + " ";
    text.append(value.begin(), value.end());
  }
  return text;
}

TEST(FrameVerdict, VouchesForTheRecordsOfAWholeFrame) {
  using detail::RecordLayout;
  constexpr RecordLayout LAYOUTS[] = {RecordLayout::ID,    RecordLayout::STATUS_VALUE, RecordLayout::VALUE,
                                      RecordLayout::VALUE, RecordLayout::STATUS_ID,    RecordLayout::VALUE,
                                      RecordLayout::VALUE};
  constexpr unsigned char COMMANDS[] = {0x00, 0x01, 0x02, 0x03, 0x04, 0x05, 0x0A};
  constexpr unsigned int HEADER = 3;
  RandomFrames frames;
  unsigned int vouched = 0;
  for (unsigned int i = 0; i < 20000; ++i) {
    const unsigned int chosen = i % std::size(COMMANDS);
    ZclMessage frame(test::bytes({0x00, 0x05, COMMANDS[chosen]}));
    const U255Buff<unsigned char> payload = frames.next().frame;
    for (unsigned int at = HEADER; at < payload.length_; ++at) frame.addByte(payload.contents[at]);
    if (judgeFrame(HOME, BASIC, frame).state != FrameVerdict::WHOLE) continue;
    // A single status stands for all attributes, and has no id in the frame.
    if (COMMANDS[chosen] == 0x04 && frame.length_ == HEADER + 1) continue;
    const std::string expected = recordsOf(frame, LAYOUTS[chosen]);
    for (const int rest : {0x01, 0xFF}) {
      std::memset(frame.contents + frame.length_, rest, U255Buff<unsigned char>::CAPACITY - frame.length_);
      ASSERT_EQ(recordsOf(frame, LAYOUTS[chosen]), expected) << test::hex(frame);
    }
    if (frame.length_ > HEADER) ++vouched;
  }
  EXPECT_GT(vouched, 500u);
}

}  // namespace
}  // namespace qx
