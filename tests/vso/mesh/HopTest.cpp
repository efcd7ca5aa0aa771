#include "vso/mesh/Hop.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <map>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>
#include <type_traits>

#include "Records.h"
#include "vso/proto/HopPBuf.pb.h"

namespace qx {
namespace {

using boost::logic::indeterminate;
using boost::logic::tribool;
using test::ARCHIVE;
using test::euidOf;
using test::messageOf;
using test::printed;
using test::sameMessage;
using test::stateOf;
using test::xmlOf;

// The integer view of 0011223344556677 reads its bytes backwards.
constexpr std::uint64_t LID_NUMBER = 0x7766554433221100;
const Euid LID = euidOf("0011223344556677");
const PanId PAN_ID(std::string("8899aabbccddeeff"));
const std::string PAN_ID_BYTES = "\x88\x99\xAA\xBB\xCC\xDD\xEE\xFF";

Hop hopOf(unsigned char type, const tribool& rxOnWhenIdle, HopRelationship relationship, const tribool& permitJoining) {
  return {0x1A2B, 200, LID, type, rxOnWhenIdle, relationship, permitJoining, 12, PAN_ID};
}

const Hop HOP = hopOf(2, true, NEIGHBOR_IS_CHILD, indeterminate);

/// What `HOP` is as a message.
pb::HopPBuf filledMessage() {
  pb::HopPBuf message;
  message.set_neighbor(0x1A2B);
  message.set_lqi(200);
  message.mutable_neighborlid()->set_id(LID_NUMBER);
  message.set_type(pb::QX_ROUTER);
  message.set_rxonwhenidle(pb::TB_TRUE);
  message.set_relationship(pb::NEIGHBOR_IS_CHILD);
  message.set_permitjoining(pb::TB_INDETERMINATE);
  message.set_treedepth(12);
  message.mutable_neighborpanid()->set_addr(PAN_ID_BYTES);
  return message;
}

TEST(Hop, NumbersRelationships) {
  EXPECT_EQ(NEIGHBOR_IS_PARENT, 0);
  EXPECT_EQ(NEIGHBOR_IS_CHILD, 1);
  EXPECT_EQ(NEIGHBOR_IS_SIBLING, 2);
  EXPECT_EQ(NONE_OF_THE_ABOVE, 3);
  EXPECT_EQ(PREVIOUS_CHILD, 4);
}

TEST(Hop, NamesRelationships) {
  const std::map<int, std::string> expected = {
      {0, "NEIGHBOR_IS_PARENT"}, {1, "NEIGHBOR_IS_CHILD"},  {2, "NEIGHBOR_IS_SIBLING"},
      {3, "NONE_OF_THE_ABOVE"},  {4, "PREVIOUS_CHILD"},     {5, "NONE_OF_THE_ABOVE"},
      {9, "NONE_OF_THE_ABOVE"},  {-1, "NONE_OF_THE_ABOVE"}, {256, "NONE_OF_THE_ABOVE"}};
  for (const auto& [number, text] : expected)
    EXPECT_EQ(Hop::toStr(static_cast<HopRelationship>(number)), text) << number;
}

TEST(Hop, TakesItsFieldsInTheirOrder) {
  static_assert(!std::is_polymorphic_v<Hop>);
  static_assert(!std::is_default_constructible_v<Hop>);
  static_assert(sizeof(HopRelationship) == 4);
  EXPECT_EQ(HOP.neighbor_, 0x1A2B);
  EXPECT_EQ(HOP.lqi_, 200);
  EXPECT_EQ(HOP.neighbor_lid_, LID);
  EXPECT_EQ(HOP.type_, 2);
  EXPECT_TRUE(bool(HOP.rx_on_when_idle_ == true));
  EXPECT_EQ(HOP.relationship_, NEIGHBOR_IS_CHILD);
  EXPECT_TRUE(indeterminate(HOP.permit_joining_));
  EXPECT_EQ(HOP.tree_depth_, 12);
  EXPECT_EQ(HOP.neighbor_pan_id_, PAN_ID);
}

TEST(Hop, InvalidKnowsNothing) {
  EXPECT_EQ(Hop::INVALID.neighbor_, 0xFFFF);
  EXPECT_EQ(Hop::INVALID.lqi_, 0);
  EXPECT_EQ(Hop::INVALID.neighbor_lid_, Euid::INVALID);
  EXPECT_EQ(Hop::INVALID.type_, 0);
  EXPECT_TRUE(indeterminate(Hop::INVALID.rx_on_when_idle_));
  EXPECT_EQ(Hop::INVALID.relationship_, NONE_OF_THE_ABOVE);
  EXPECT_TRUE(indeterminate(Hop::INVALID.permit_joining_));
  EXPECT_EQ(Hop::INVALID.tree_depth_, 0);
  EXPECT_EQ(Hop::INVALID.neighbor_pan_id_, PanId::INVALID);
}

TEST(Hop, CopiesEachField) {
  const Hop constructed(HOP);
  Hop assigned(Hop::INVALID);
  assigned = HOP;
  EXPECT_TRUE(sameMessage(*messageOf(constructed), filledMessage()));
  EXPECT_TRUE(sameMessage(*messageOf(assigned), filledMessage()));
}

TEST(Hop, PrintsOneLine) {
  EXPECT_EQ(printed(HOP),
            "Neighbor: 0x1a2b LQI: 200 LID: 0x0011223344556677 DT: QX_ROUTER RX on when idle: true "
            "Relationship: NEIGHBOR_IS_CHILD Permit Joining: false Tree depth: 12 XPANID: 0x8899aabbccddeeff");
  EXPECT_EQ(printed(Hop::INVALID),
            "Neighbor: 0xffff LQI: 0 LID: 0xffffffffffffffff DT: QX_UNKNOWN_DEVICE RX on when idle: false "
            "Relationship: NONE_OF_THE_ABOVE Permit Joining: false Tree depth: 0 XPANID: 0xffffffffffffffff");
}

TEST(Hop, PrintsDecimalsAndDigitsOnAnyStream) {
  std::ostringstream out;
  out << std::hex;
  out.fill('*');
  EXPECT_EQ(&(out << Hop(0xAB, 11, LID, 1, false, PREVIOUS_CHILD, true, 10, PAN_ID)), &out);
  EXPECT_EQ(out.str(),
            "Neighbor: 0x00ab LQI: 11 LID: 0x0011223344556677 DT: QX_COORDINATOR RX on when idle: false "
            "Relationship: PREVIOUS_CHILD Permit Joining: true Tree depth: 10 XPANID: 0x8899aabbccddeeff");
}

TEST(Hop, PrintsTheNameOfTheDeviceType) {
  const std::map<unsigned char, std::string> expected = {
      {0, "QX_UNKNOWN_DEVICE"}, {1, "QX_COORDINATOR"},       {2, "QX_ROUTER"},
      {3, "QX_END_DEVICE"},     {4, "QX_SLEEPY_END_DEVICE"}, {5, "QX_MOBILE_END_DEVICE"},
      {6, "QX_UNKNOWN_DEVICE"}, {200, "QX_UNKNOWN_DEVICE"},  {255, "QX_UNKNOWN_DEVICE"}};
  for (const auto& [type, text] : expected) {
    EXPECT_EQ(printed(hopOf(type, false, NEIGHBOR_IS_PARENT, false)),
              "Neighbor: 0x1a2b LQI: 200 LID: 0x0011223344556677 DT: " + text +
                  " RX on when idle: false Relationship: NEIGHBOR_IS_PARENT Permit Joining: false Tree depth: 12 "
                  "XPANID: 0x8899aabbccddeeff");
  }
}

TEST(Hop, PrintsAnUnknownTruthAsFalse) {
  EXPECT_EQ(printed(hopOf(2, indeterminate, NONE_OF_THE_ABOVE, true)),
            "Neighbor: 0x1a2b LQI: 200 LID: 0x0011223344556677 DT: QX_ROUTER RX on when idle: false "
            "Relationship: NONE_OF_THE_ABOVE Permit Joining: true Tree depth: 12 XPANID: 0x8899aabbccddeeff");
}

TEST(Hop, LeavesTheStreamAsItsPanIdDoesAndWithWords) {
  std::ostringstream out;
  out << HOP;
  EXPECT_EQ(stateOf(out), "00ab true");
}

TEST(Hop, WritesEachFieldOfItsMessage) { EXPECT_TRUE(sameMessage(*messageOf(HOP), filledMessage())); }

TEST(Hop, ReadsEachFieldOfItsMessage) {
  Hop hop(Hop::INVALID);
  EXPECT_FALSE(hop.fromProtobuf(filledMessage()));
  EXPECT_EQ(printed(hop), printed(HOP));
  EXPECT_TRUE(sameMessage(*messageOf(hop), filledMessage()));
}

TEST(Hop, KeepsTheThirdTruthInItsMessage) {
  const std::map<pb::TriboolPEnum, tribool> states = {
      {pb::TB_FALSE, false}, {pb::TB_TRUE, true}, {pb::TB_INDETERMINATE, indeterminate}};
  for (const auto& [rxNumber, rx] : states) {
    for (const auto& [joinNumber, join] : states) {
      pb::HopPBuf message = filledMessage();
      message.set_rxonwhenidle(rxNumber);
      message.set_permitjoining(joinNumber);
      EXPECT_TRUE(sameMessage(*messageOf(hopOf(2, rx, NEIGHBOR_IS_CHILD, join)), message));
      Hop hop(Hop::INVALID);
      EXPECT_FALSE(hop.fromProtobuf(message));
      EXPECT_EQ(hop.rx_on_when_idle_.value, rx.value);
      EXPECT_EQ(hop.permit_joining_.value, join.value);
    }
  }
}

TEST(Hop, KeepsTheLowBitsOfWiderNumbers) {
  pb::HopPBuf message = filledMessage();
  message.set_neighbor(0x12345);
  message.set_lqi(0x101);
  message.set_type(static_cast<pb::ZigbeeNodeDeviceTypePEnum>(0x703));
  message.set_treedepth(0xFFFFFF02);
  Hop hop(Hop::INVALID);
  EXPECT_FALSE(hop.fromProtobuf(message));
  EXPECT_EQ(hop.neighbor_, 0x2345);
  EXPECT_EQ(hop.lqi_, 1);
  EXPECT_EQ(hop.type_, 3);
  EXPECT_EQ(hop.tree_depth_, 2);
}

TEST(Hop, KeepsARelationshipWithoutAName) {
  pb::HopPBuf message = filledMessage();
  message.set_relationship(static_cast<pb::HopRelationshipPEnum>(77));
  Hop hop(Hop::INVALID);
  EXPECT_FALSE(hop.fromProtobuf(message));
  EXPECT_EQ(static_cast<int>(hop.relationship_), 77);
  EXPECT_TRUE(sameMessage(*messageOf(hop), message));
}

TEST(Hop, FailsOnADefaultMessageAndKeepsItsPanId) {
  Hop hop(HOP);
  EXPECT_TRUE(hop.fromProtobuf(pb::HopPBuf()));
  EXPECT_EQ(hop.neighbor_, 0);
  EXPECT_EQ(hop.lqi_, 0);
  EXPECT_EQ(hop.neighbor_lid_, Euid());
  EXPECT_EQ(hop.type_, 0);
  EXPECT_TRUE(bool(hop.rx_on_when_idle_ == false));
  EXPECT_EQ(hop.relationship_, NEIGHBOR_IS_PARENT);
  EXPECT_TRUE(bool(hop.permit_joining_ == false));
  EXPECT_EQ(hop.tree_depth_, 0);
  EXPECT_EQ(hop.neighbor_pan_id_, PAN_ID);
}

TEST(Hop, FailsOnAShortPanIdWithAllElseTaken) {
  for (const std::size_t length : {0, 1, 7}) {
    pb::HopPBuf message = filledMessage();
    message.mutable_neighborpanid()->set_addr(PAN_ID_BYTES.substr(0, length));
    Hop hop(0, 0, Euid(), 0, false, NONE_OF_THE_ABOVE, false, 0, PanId());
    EXPECT_TRUE(hop.fromProtobuf(message)) << length;
    EXPECT_EQ(std::string(hop.neighbor_pan_id_),
              std::string("8899aabbccddeeff").substr(0, 2 * length) + std::string(16 - 2 * length, '0'));
    hop.neighbor_pan_id_ = PAN_ID;
    EXPECT_TRUE(sameMessage(*messageOf(hop), filledMessage())) << length;
  }
}

TEST(Hop, TakesEightBytesOfALongPanId) {
  pb::HopPBuf message = filledMessage();
  message.mutable_neighborpanid()->set_addr(PAN_ID_BYTES + "more");
  Hop hop(Hop::INVALID);
  EXPECT_FALSE(hop.fromProtobuf(message));
  EXPECT_EQ(hop.neighbor_pan_id_, PAN_ID);
}

void expectInvalidTribool(Hop& hop, const pb::HopPBuf& message) {
  try {
    hop.fromProtobuf(message);
    FAIL() << "nothing was thrown";
  } catch (const std::runtime_error& error) {
    EXPECT_STREQ(error.what(), "triboolFromProtobuf: invalid tribool");
  }
}

TEST(Hop, ThrowsOnABadReceiverTruthWithTheFieldsBeforeItTaken) {
  pb::HopPBuf message = filledMessage();
  message.set_rxonwhenidle(static_cast<pb::TriboolPEnum>(3));
  Hop hop(Hop::INVALID);
  expectInvalidTribool(hop, message);
  EXPECT_EQ(printed(hop),
            "Neighbor: 0x1a2b LQI: 200 LID: 0x0011223344556677 DT: QX_ROUTER RX on when idle: false "
            "Relationship: NONE_OF_THE_ABOVE Permit Joining: false Tree depth: 0 XPANID: 0xffffffffffffffff");
  EXPECT_TRUE(indeterminate(hop.rx_on_when_idle_));
}

TEST(Hop, ThrowsOnABadJoiningTruthWithTheFieldsBeforeItTaken) {
  pb::HopPBuf message = filledMessage();
  message.set_permitjoining(static_cast<pb::TriboolPEnum>(-1));
  Hop hop(Hop::INVALID);
  expectInvalidTribool(hop, message);
  EXPECT_EQ(printed(hop),
            "Neighbor: 0x1a2b LQI: 200 LID: 0x0011223344556677 DT: QX_ROUTER RX on when idle: true "
            "Relationship: NEIGHBOR_IS_CHILD Permit Joining: false Tree depth: 0 XPANID: 0xffffffffffffffff");
  EXPECT_TRUE(indeterminate(hop.permit_joining_));
}

TEST(Hop, WritesXml) {
  EXPECT_EQ(xmlOf(HOP, "hop"),
            "<hop" + ARCHIVE + "><neighbor_>6699</neighbor_><lqi_>200</lqi_><neighbor_lid_" + ARCHIVE +
                "><id_>8603657889541918976</id_></neighbor_lid_><type_>2</type_><rx_on_when_idle_" + ARCHIVE +
                "><undetermined>0</undetermined><state>1</state></rx_on_when_idle_><relationship_>1</relationship_>"
                "<permit_joining_" +
                ARCHIVE +
                "><undetermined>1</undetermined><state>0</state></permit_joining_><tree_depth_>12</tree_depth_>"
                "<neighbor_pan_id_" +
                ARCHIVE + "><addr>8899aabbccddeeff</addr></neighbor_pan_id_></hop>");
}

TEST(Hop, WritesFalseTruthsAndUnnamedRelationshipsAsNumbersInXml) {
  const Hop hop(0, 0, Euid(), 255, false, static_cast<HopRelationship>(-9), false, 255, PanId());
  EXPECT_EQ(xmlOf(hop, "item"),
            "<item" + ARCHIVE + "><neighbor_>0</neighbor_><lqi_>0</lqi_><neighbor_lid_" + ARCHIVE +
                "><id_>0</id_></neighbor_lid_><type_>255</type_><rx_on_when_idle_" + ARCHIVE +
                "><undetermined>0</undetermined><state>0</state></rx_on_when_idle_><relationship_>-9</relationship_>"
                "<permit_joining_" +
                ARCHIVE +
                "><undetermined>0</undetermined><state>0</state></permit_joining_><tree_depth_>255</tree_depth_>"
                "<neighbor_pan_id_" +
                ARCHIVE + "><addr>0000000000000000</addr></neighbor_pan_id_></item>");
}

}  // namespace
}  // namespace qx
