#include "vso/zdo/ZdoNetworkLqiResponse.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <boost/logic/tribool.hpp>
#include <list>
#include <sstream>
#include <string>
#include <vector>

#include "Frames.h"
#include "support/Bytes.h"
#include "vso/mesh/Hop.h"

namespace qx {
namespace {

using boost::logic::tribool;
using test::bytes;
using test::bytesOf;
using test::mixedFrame;
using test::ringOf;
using testing::ElementsAre;
using testing::IsEmpty;

using Texts = std::vector<std::string>;

std::string textOf(const tribool& truth) {
  if (boost::logic::indeterminate(truth)) return "unknown";
  return truth == true ? "yes" : "no";
}

/// All fields of a row, in the order of the record.
std::string textOf(const Hop& hop) {
  std::ostringstream out;
  out << std::string(hop.neighbor_pan_id_) << ' ' << hop.neighbor_lid_.toString() << ' ' << hop.neighbor_ << " type "
      << static_cast<int>(hop.type_) << " rx " << textOf(hop.rx_on_when_idle_) << " relationship " << hop.relationship_
      << " joining " << textOf(hop.permit_joining_) << " depth " << static_cast<int>(hop.tree_depth_) << " lqi "
      << static_cast<int>(hop.lqi_);
  return out.str();
}

Texts hopsOf(const ZdoNetworkLqiResponse& response) {
  std::list<Hop> hops;
  response.hops(hops);
  Texts texts;
  for (const Hop& hop : hops) texts.push_back(textOf(hop));
  return texts;
}

Texts hopsOf(const std::string& frame) { return hopsOf(ZdoNetworkLqiResponse(bytesOf(frame))); }

// By the bits of a field.
const int TYPES[] = {1, 2, 3, 0};
const char* const RECEIVER[] = {"yes", "no", "unknown", "unknown"};
const int RELATIONSHIPS[] = {0, 1, 2, 3, 4, 3, 3, 3};
const char* const JOINING[] = {"no", "yes", "unknown", "unknown"};

/// An entry decoded by the tables above, from the ring on which it lies.
std::string decoded(const std::array<unsigned char, 256>& ring, unsigned int entry) {
  const auto at = [&](unsigned int i) { return ring[(5 + 22 * entry + i) % 256]; };
  std::string digits[2];
  for (unsigned int id = 0; id < 2; ++id) {
    for (unsigned int i = 0; i < 8; ++i) digits[id] += test::hexOf(at(8 * id + 7 - i));
  }
  std::ostringstream out;
  out << digits[0] << ' ' << digits[1] << ' ' << at(16) + 256 * at(17) << " type " << TYPES[at(18) % 4] << " rx "
      << RECEIVER[at(18) / 4 % 4] << " relationship " << RELATIONSHIPS[at(18) / 16 % 8] << " joining "
      << JOINING[at(19) % 4] << " depth " << static_cast<int>(at(20)) << " lqi " << static_cast<int>(at(21));
  return out.str();
}

const std::string PAN_ID = " ff ee dd cc bb aa 99 88";
const std::string ADDRESS = " 77 66 55 44 33 22 11 00";
const std::string FIRST_IDS = "8899aabbccddeeff 0011223344556677 ";

/// A page of one entry with these flags and this joining byte.
U255Buff<unsigned char> pageWith(unsigned char flags, unsigned char joining) {
  return bytes({
      0x07,    0x00, 0x02, 0x00, 0x01,                    // sequence number, status, total, start index, count
      0xFF,    0xEE, 0xDD, 0xCC, 0xBB, 0xAA, 0x99, 0x88,  // extended PAN id
      0x77,    0x66, 0x55, 0x44, 0x33, 0x22, 0x11, 0x00,  // long address
      0x2B,    0x1A,                                      // short address
      flags,                                              // device type, receiver, relationship
      joining,                                            // permit joining
      0x0C,                                               // tree depth
      0xC8                                                // LQI
  });
}

TEST(ZdoNetworkLqiResponse, ReadsAPageOfOneHop) {
  const ZdoNetworkLqiResponse response(pageWith(0x12, 0x01));
  EXPECT_EQ(response.seqNum(), 7);
  EXPECT_EQ(response.status(), 0);
  EXPECT_EQ(response.totalNeighborTableEntriesOnDevice(), 2);
  EXPECT_EQ(response.startIndex(), 0);
  EXPECT_EQ(response.entries(), 1);
  EXPECT_THAT(hopsOf(response),
              ElementsAre(FIRST_IDS + "6699 type 3 rx yes relationship 1 joining yes depth 12 lqi 200"));
}

TEST(ZdoNetworkLqiResponse, ReadsAPageOfTwoHopsInOrder) {
  EXPECT_THAT(hopsOf("07 00 30 21 02" + PAN_ID + ADDRESS + " 34 12 00 00 01 02" +  // first
                     " 01 02 03 04 05 06 07 08" + " 11 12 13 14 15 16 17 18" +     // second, its ids
                     " 78 56 45 02 ff fe"),                                        // second, the rest
              ElementsAre(FIRST_IDS + "4660 type 1 rx yes relationship 0 joining no depth 1 lqi 2",
                          "0807060504030201 1817161514131211 22136 type 2 rx no relationship 4 joining unknown "
                          "depth 255 lqi 254"));
}

TEST(ZdoNetworkLqiResponse, SwapsItsAddresses) {
  std::list<Hop> hops;
  ZdoNetworkLqiResponse(pageWith(0, 0)).hops(hops);
  ASSERT_EQ(hops.size(), 1U);
  EXPECT_EQ(hops.front().neighbor_lid_.toString(), "0011223344556677");
  EXPECT_EQ(std::string(hops.front().neighbor_pan_id_), "8899aabbccddeeff");
}

TEST(ZdoNetworkLqiResponse, DecodesNamedFlags) {
  EXPECT_THAT(hopsOf(ZdoNetworkLqiResponse(pageWith(0x05, 0xFE))),
              ElementsAre(FIRST_IDS + "6699 type 2 rx no relationship 0 joining unknown depth 12 lqi 200"));
  EXPECT_THAT(hopsOf(ZdoNetworkLqiResponse(pageWith(0x12, 0xFC))),
              ElementsAre(FIRST_IDS + "6699 type 3 rx yes relationship 1 joining no depth 12 lqi 200"));
  EXPECT_THAT(hopsOf(ZdoNetworkLqiResponse(pageWith(0x7F, 0xFD))),
              ElementsAre(FIRST_IDS + "6699 type 0 rx unknown relationship 3 joining yes depth 12 lqi 200"));
}

TEST(ZdoNetworkLqiResponse, DecodesEachByteOfFlags) {
  for (unsigned int flags = 0; flags < 256; ++flags) {
    std::ostringstream expected;
    expected << FIRST_IDS << "6699 type " << TYPES[flags & 3] << " rx " << RECEIVER[flags >> 2 & 3] << " relationship "
             << RELATIONSHIPS[flags >> 4 & 7] << " joining no depth 12 lqi 200";
    EXPECT_THAT(hopsOf(ZdoNetworkLqiResponse(pageWith(static_cast<unsigned char>(flags), 0))),
                ElementsAre(expected.str()))
        << flags;
  }
}

TEST(ZdoNetworkLqiResponse, DecodesEachByteOfJoining) {
  for (unsigned int joining = 0; joining < 256; ++joining) {
    EXPECT_THAT(hopsOf(ZdoNetworkLqiResponse(pageWith(0, static_cast<unsigned char>(joining)))),
                ElementsAre(FIRST_IDS + "6699 type 1 rx yes relationship 0 joining " + JOINING[joining & 3] +
                            " depth 12 lqi 200"))
        << joining;
  }
}

TEST(ZdoNetworkLqiResponse, EmptiesTheListItIsHanded) {
  std::list<Hop> hops(3, Hop::INVALID);
  ZdoNetworkLqiResponse().hops(hops);
  EXPECT_THAT(hops, IsEmpty());
  ZdoNetworkLqiResponse(bytesOf("07 00 30 21 00" + PAN_ID + ADDRESS)).hops(hops);
  EXPECT_THAT(hops, IsEmpty());
}

TEST(ZdoNetworkLqiResponse, ReplacesTheListItIsHanded) {
  std::list<Hop> hops(3, Hop::INVALID);
  ZdoNetworkLqiResponse(pageWith(0, 0)).hops(hops);
  ASSERT_EQ(hops.size(), 1U);
  EXPECT_EQ(hops.front().neighbor_, 6699);
}

TEST(ZdoNetworkLqiResponse, HasNoHopsInAShortFrame) {
  for (const char* frame : {"", "07", "07 00", "07 00 30", "07 00 30 21"}) {
    EXPECT_THAT(hopsOf(frame), IsEmpty()) << frame;
  }
  ZdoNetworkLqiResponse response(pageWith(0, 0));
  for (const unsigned int length : {0U, 1U, 2U, 3U}) {
    response.length_ = length;
    EXPECT_THAT(hopsOf(response), IsEmpty()) << length;
  }
}

TEST(ZdoNetworkLqiResponse, TrustsItsCountOverTheLength) {
  const Texts whole = hopsOf(ZdoNetworkLqiResponse(pageWith(0x12, 1)));
  ZdoNetworkLqiResponse response(pageWith(0x12, 1));
  for (const unsigned int length : {4U, 5U, 6U, 26U, 27U, 255U, 256U, 0xFFFFFFFFU}) {
    response.length_ = length;
    EXPECT_EQ(hopsOf(response), whole) << length;
  }
}

TEST(ZdoNetworkLqiResponse, ReadsHopsOfZerosBehindAReceivedFrame) {
  EXPECT_THAT(hopsOf("07 00 30 21 02" + PAN_ID),
              ElementsAre("8899aabbccddeeff 0000000000000000 0 type 1 rx yes relationship 0 joining no depth 0 lqi 0",
                          "0000000000000000 0000000000000000 0 type 1 rx yes relationship 0 joining no depth 0 lqi 0"));
}

TEST(ZdoNetworkLqiResponse, TrustsItsCountOverTheStatus) {
  U255Buff<unsigned char> frame = pageWith(0x12, 1);
  const Texts whole = hopsOf(ZdoNetworkLqiResponse(frame));
  for (const int status : {1, 128, 132, 134, 255}) {
    frame.contents[1] = static_cast<unsigned char>(status);
    EXPECT_EQ(hopsOf(ZdoNetworkLqiResponse(frame)), whole) << status;
  }
}

TEST(ZdoNetworkLqiResponse, HoldsElevenWholeHops) {
  U255Buff<unsigned char> frame = mixedFrame(1);
  frame.contents[4] = 11;
  const Texts hops = hopsOf(ZdoNetworkLqiResponse(frame));
  ASSERT_EQ(hops.size(), 11U);
  frame.length_ = 247;  // 5 + 11 * 22
  EXPECT_EQ(hopsOf(ZdoNetworkLqiResponse(frame)), hops);
}

TEST(ZdoNetworkLqiResponse, ReadsTheTwelfthHopAroundTheEndOfTheStorage) {
  U255Buff<unsigned char> frame = bytesOf("a1 c7 b3 d4 0c 11 22 33 44 55 66 77 88 99");
  frame.length_ = 255;
  for (unsigned int i = 0; i < 8; ++i) frame.contents[247 + i] = static_cast<unsigned char>(0xE0 + i);
  const Texts hops = hopsOf(ZdoNetworkLqiResponse(frame));
  ASSERT_EQ(hops.size(), 12U);
  // PAN id from offset 247, the zero of offset 255 first in the address, all else from offset 0 on: the address up to
  // offset 6, the short address at 7, the flags 0x55 at 9.
  EXPECT_EQ(hops.back(),
            "e7e6e5e4e3e2e1e0 22110cd4b3c7a100 17459 type 2 rx no relationship 3 joining unknown depth 119 lqi 136");
}

TEST(ZdoNetworkLqiResponse, ReadsZeroAtOffset255InEachFieldThatLiesThere) {
  unsigned int crossing = 0;
  U255Buff<unsigned char> frame(0xFF);
  frame.length_ = 255;
  const ZdoNetworkLqiResponse response(frame);
  ASSERT_EQ(response.entries(), 255);
  std::list<Hop> hops;
  response.hops(hops);
  ASSERT_EQ(hops.size(), 255U);
  unsigned int entry = 0;
  for (const Hop& hop : hops) {
    const unsigned int zero = (255 - (5 + 22 * entry)) % 256;  // offset in the entry of the one byte that is zero
    unsigned char onAir[22];
    for (unsigned int i = 0; i < 22; ++i) onAir[i] = i == zero ? 0 : 0xFF;
    PanId panId(onAir);
    panId.byteSwap();
    Euid lid(onAir + 8);
    lid.byteSwap();
    EXPECT_EQ(hop.neighbor_pan_id_, panId) << entry;
    EXPECT_EQ(hop.neighbor_lid_, lid) << entry;
    EXPECT_EQ(hop.neighbor_, zero == 16 ? 0xFF00 : zero == 17 ? 0x00FF : 0xFFFF) << entry;
    EXPECT_EQ(hop.type_, zero == 18 ? 1 : 0) << entry;
    EXPECT_EQ(textOf(hop.rx_on_when_idle_), zero == 18 ? "yes" : "unknown") << entry;
    EXPECT_EQ(hop.relationship_, zero == 18 ? NEIGHBOR_IS_PARENT : NONE_OF_THE_ABOVE) << entry;
    EXPECT_EQ(textOf(hop.permit_joining_), zero == 19 ? "no" : "unknown") << entry;
    EXPECT_EQ(hop.tree_depth_, zero == 20 ? 0 : 255) << entry;
    EXPECT_EQ(hop.lqi_, zero == 21 ? 0 : 255) << entry;
    if (zero < 22) ++crossing;
    ++entry;
  }
  EXPECT_EQ(crossing, 21U);
}

TEST(ZdoNetworkLqiResponse, DecodesAsManyHopsAsItClaims) {
  for (unsigned int salt = 0; salt < 8; ++salt) {
    for (const int count : {1, 10, 11, 12, 13, 23, 127, 128, 254, 255}) {
      U255Buff<unsigned char> frame = mixedFrame(salt);
      frame.contents[4] = static_cast<unsigned char>(count);
      const ZdoNetworkLqiResponse response(frame);
      Texts expected;
      for (int entry = 0; entry < count; ++entry) expected.push_back(decoded(ringOf(frame), entry));
      EXPECT_EQ(hopsOf(response), expected) << "salt " << salt << ", count " << count;
    }
  }
}

TEST(ZdoNetworkLqiResponse, TakesOverAnyResponseUnderItsOwnCommand) {
  const ZdoNetworkLqiResponse response(ZdoResponse(0x1234, pageWith(0, 0)));
  EXPECT_EQ(response.commandId(), 0x8031);
  EXPECT_EQ(hopsOf(response).size(), 1U);
}

TEST(ZdoNetworkLqiResponse, StaysAsItWasWhenItIsRead) {
  const ZdoNetworkLqiResponse response(mixedFrame(2));
  EXPECT_EQ(hopsOf(response), hopsOf(response));
  EXPECT_EQ(test::hex(response), test::hex(mixedFrame(2)));
}

}  // namespace
}  // namespace qx
