#include "vso/zdo/ZdoNetworkUpdateRequest.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <type_traits>

#include "Frames.h"
#include "support/Bytes.h"

namespace qx {
namespace {

using test::addressOf;
using test::bytes;
using test::bytesOf;
using test::hex;
using test::hexBehind;
using test::hexOf;
using test::nextNumber;
using test::zeros;

const Euid NODE = addressOf("0011223344556677");

/// The update id that the next frame gets if it takes one.
unsigned char nextId() { return static_cast<unsigned char>(ZdoNetworkUpdateRequest::updateId_ + 1); }

/// Puts the process's update id back.
class ZdoNetworkUpdateRequestFrom : public testing::Test {
 protected:
  ~ZdoNetworkUpdateRequestFrom() override { ZdoNetworkUpdateRequest::updateId_ = before_; }

 private:
  unsigned char before_ = ZdoNetworkUpdateRequest::updateId_;
};

TEST(ZdoNetworkUpdateRequest, AsksForAScan) {
  const unsigned char number = nextNumber();
  const unsigned char id = ZdoNetworkUpdateRequest::updateId_;
  const ZdoNetworkUpdateRequest request(NODE, 0x00008000, 2, 3, 0x1234);
  EXPECT_EQ(hex(request), hex(bytes({
                              number,                  // sequence number
                              0x00, 0x80, 0x00, 0x00,  // channel mask
                              0x02,                    // duration
                              0x03                     // scan count
                          })));
  EXPECT_EQ(request.length_, 7U);
  EXPECT_EQ(hexBehind(request), zeros(248));
  EXPECT_EQ(request.channel(), 15);
  EXPECT_EQ(request.duration(), 2);
  EXPECT_EQ(request.destination(), NODE);
  EXPECT_EQ(request.commandId(), 0x0038);
  EXPECT_EQ(ZdoNetworkUpdateRequest::updateId_, id);
}

TEST(ZdoNetworkUpdateRequest, ChangesTheChannel) {
  const unsigned char number = nextNumber();
  const unsigned char id = nextId();
  const ZdoNetworkUpdateRequest request(NODE, 0x07FFF800, 0xFE, 3, 0x1234);
  EXPECT_EQ(hex(request), hex(bytes({
                              number,                  // sequence number
                              0x00, 0xF8, 0xFF, 0x07,  // channel mask
                              0xFE,                    // duration
                              id                       // network update id
                          })));
  EXPECT_EQ(request.length_, 7U);
  EXPECT_EQ(request.channel(), -1);
  EXPECT_EQ(ZdoNetworkUpdateRequest::updateId_, id);
}

TEST(ZdoNetworkUpdateRequest, UpdatesTheManager) {
  const unsigned char number = nextNumber();
  const unsigned char id = nextId();
  const ZdoNetworkUpdateRequest request(NODE, 0x04030201, 0xFF, 3, 0x1234);
  EXPECT_EQ(hex(request), hex(bytes({
                              number,                  // sequence number
                              0x01, 0x02, 0x03, 0x04,  // channel mask
                              0xFF,                    // duration
                              id,                      // network update id
                              0x34, 0x12               // network manager
                          })));
  EXPECT_EQ(request.length_, 9U);
  EXPECT_EQ(hexBehind(request), zeros(246));
  EXPECT_EQ(ZdoNetworkUpdateRequest::updateId_, id);
}

TEST(ZdoNetworkUpdateRequest, HasTheFormOfItsDuration) {
  for (int value = 0; value < 256; ++value) {
    const auto duration = static_cast<unsigned char>(value);
    const unsigned char before = ZdoNetworkUpdateRequest::updateId_;
    const std::string head = hexOf(nextNumber()) + " 00 08 00 04 " + hexOf(duration);
    std::string expected = head;
    if (value <= 5) expected = head + " 77";
    if (value == 0xFE) expected = head + " " + hexOf(nextId());
    if (value == 0xFF) expected = head + " " + hexOf(nextId()) + " cd ab";
    const ZdoNetworkUpdateRequest request(NODE, 0x04000800, duration, 0x77, 0xABCD);
    EXPECT_EQ(hex(request), expected);
    EXPECT_EQ(request.length_, value <= 5 ? 7U : value == 0xFE ? 7U : value == 0xFF ? 9U : 6U) << value;
    EXPECT_EQ(hexBehind(request), zeros(255 - request.length_)) << value;
    EXPECT_EQ(request.duration(), value);
    EXPECT_EQ(ZdoNetworkUpdateRequest::updateId_, static_cast<unsigned char>(value >= 0xFE ? before + 1 : before))
        << value;
  }
}

TEST(ZdoNetworkUpdateRequest, NumbersChannelChangesWhoeverTheyGoTo) {
  const ZdoNetworkUpdateRequest first(NODE, 0x8000, 0xFE, 0, 0);
  const ZdoNetworkUpdateRequest scan(NODE, 0x8000, 1, 1, 0);
  const ZdoNetworkUpdateRequest second(Euid::ALL, 0x8000, 0xFE, 0, 0);
  const ZdoNetworkUpdateRequest manager(NODE, 0x8000, 0xFF, 0, 0);
  EXPECT_EQ(second.contents[6], static_cast<unsigned char>(first.contents[6] + 1));
  EXPECT_EQ(manager.contents[6], static_cast<unsigned char>(first.contents[6] + 2));
}

TEST_F(ZdoNetworkUpdateRequestFrom, WrapsTheUpdateIdToZero) {
  ZdoNetworkUpdateRequest::updateId_ = 254;
  std::string frames;
  for (int i = 0; i < 3; ++i) {
    frames += hexOf(ZdoNetworkUpdateRequest(NODE, 0x8000, 0xFE, 0, 0).contents[6]) + ' ';
  }
  EXPECT_EQ(frames, "ff 00 01 ");
}

TEST_F(ZdoNetworkUpdateRequestFrom, RaisesTheUpdateIdByItsOwnOperation) {
  static_assert(std::is_same_v<decltype(ZdoNetworkUpdateRequest::updateId_), unsigned char>);
  ZdoNetworkUpdateRequest::updateId_ = 0;
  for (int i = 1; i <= 600; ++i) {
    EXPECT_EQ(ZdoNetworkUpdateRequest::upId(), i % 256);
    EXPECT_EQ(ZdoNetworkUpdateRequest::updateId_, i % 256);
  }
}

/// Says at the end of the process which update ids its first frames got.
[[noreturn]] void updateFirst() {
  const int atLoad = ZdoNetworkUpdateRequest::updateId_;
  const ZdoNetworkUpdateRequest change(NODE, 0x8000, 0xFE, 0, 0);
  const ZdoNetworkUpdateRequest manager(NODE, 0x8000, 0xFF, 0, 0);
  static_cast<void>(
      std::fprintf(stderr, "at load %d, then %d and %d", atLoad, change.contents[6], manager.contents[6]));
  std::_Exit(0);
}

TEST(ZdoNetworkUpdateRequestDeathTest, CarriesIdOneAsTheFirstOfAProcess) {
  testing::FLAGS_gtest_death_test_style = "threadsafe";
  EXPECT_EXIT(updateFirst(), testing::ExitedWithCode(0), "at load 0, then 1 and 2");
}

TEST(ZdoNetworkUpdateRequest, TakesAFrameThatIsThere) {
  const unsigned char number = nextNumber();
  const unsigned char id = ZdoNetworkUpdateRequest::updateId_;
  const ZdoNetworkUpdateRequest request(bytesOf("9c 00 00 10 00 ff 55 34 12"));
  EXPECT_EQ(hex(request), "9c 00 00 10 00 ff 55 34 12");
  EXPECT_EQ(request.seqNum(), 0x9C);
  EXPECT_EQ(request.channel(), 20);
  EXPECT_EQ(request.duration(), 0xFF);
  EXPECT_EQ(request.destination().toString(), "0000000000000000");
  EXPECT_EQ(request.commandId(), 0x0038);
  EXPECT_EQ(ZdoNetworkUpdateRequest::updateId_, id);
  EXPECT_EQ(ZdoSeqNumPeddler::instance().next(), number);
}

TEST(ZdoNetworkUpdateRequest, KeepsTheUpdateIdInCopies) {
  const ZdoNetworkUpdateRequest request(NODE, 0x8000, 0xFE, 0, 0);
  const unsigned char id = ZdoNetworkUpdateRequest::updateId_;
  const ZdoNetworkUpdateRequest copy(request);
  const ZdoNetworkUpdateRequest rebuilt{static_cast<const U255Buff<unsigned char>&>(request)};
  EXPECT_EQ(hex(copy), hex(request));
  EXPECT_EQ(copy.destination(), NODE);
  EXPECT_EQ(hex(rebuilt), hex(request));
  EXPECT_EQ(rebuilt.destination(), Euid());
  EXPECT_EQ(ZdoNetworkUpdateRequest::updateId_, id);
}

TEST(ZdoNetworkUpdateRequest, ReadsZerosFromAShortFrame) {
  const ZdoNetworkUpdateRequest empty{U255Buff<unsigned char>()};
  EXPECT_EQ(empty.duration(), 0);
  EXPECT_EQ(empty.channel(), 0);
  const ZdoNetworkUpdateRequest cut(bytesOf("9c 00 08"));  // the mask's upper bytes are missing
  EXPECT_EQ(cut.channel(), 11);
  EXPECT_EQ(cut.duration(), 0);
}

TEST(ZdoNetworkUpdateRequest, ReadsWhateverTheLength) {
  ZdoNetworkUpdateRequest request(bytesOf("9c 00 00 10 00 04 55"));
  for (const unsigned int length : {0U, 1U, 4U, 5U, 255U, 256U, 0xFFFFFFFFU}) {
    request.length_ = length;
    EXPECT_EQ(request.channel(), 20) << length;
    EXPECT_EQ(request.duration(), 4) << length;
  }
}

TEST(ZdoNetworkUpdateRequest, IsEmptyIfTheFrameIsTooLong) {
  U255Buff<unsigned char> frame = test::mixedFrame(1);
  frame.length_ = 256;
  const ZdoNetworkUpdateRequest request(frame);
  EXPECT_EQ(request.length_, 0U);
  EXPECT_EQ(hexBehind(request), zeros(255));
}

int channelOf(unsigned int mask) { return ZdoNetworkUpdateRequest(NODE, mask, 0, 0, 0).channel(); }

TEST(ZdoNetworkUpdateRequest, NamesTheOneChannelOfItsMask) {
  for (int bit = 0; bit < 32; ++bit) {
    EXPECT_EQ(channelOf(1U << bit), bit >= 11 && bit <= 26 ? bit : 0) << bit;
  }
  static_assert(std::is_same_v<decltype(ZdoNetworkUpdateRequest(NODE, 0, 0, 0, 0).channel()), int>);
}

TEST(ZdoNetworkUpdateRequest, NamesNoChannelOfTwo) {
  for (int first = 0; first < 32; ++first) {
    for (int second = 0; second < first; ++second) {
      EXPECT_EQ(channelOf(1U << first | 1U << second), 0) << first << ", " << second;
    }
  }
}

TEST(ZdoNetworkUpdateRequest, NamesAllChannelsOnlyIfTheMaskIsExactlyTheBand) {
  EXPECT_EQ(channelOf(0x07FFF800), -1);
  for (int bit = 0; bit < 32; ++bit) EXPECT_EQ(channelOf(0x07FFF800 ^ 1U << bit), 0) << bit;
  EXPECT_EQ(channelOf(0), 0);
  EXPECT_EQ(channelOf(0xFFFFFFFF), 0);
}

TEST(ZdoNetworkUpdateRequest, CarriesAnyMaskLittleEndian) {
  const ZdoNetworkUpdateRequest request(NODE, 0xF1E2D3C4, 6, 0, 0);
  EXPECT_EQ(hex(request), hexOf(request.seqNum()) + " c4 d3 e2 f1 06");
}

}  // namespace
}  // namespace qx
