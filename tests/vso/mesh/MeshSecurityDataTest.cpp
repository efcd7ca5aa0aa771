#include "vso/mesh/MeshSecurityData.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <type_traits>

#include "Records.h"
#include "vso/proto/MeshSecurityDataPBuf.pb.h"

namespace qx {
namespace {

using test::ARCHIVE;
using test::euidOf;
using test::messageOf;
using test::sameMessage;
using test::xmlOf;

using Change = std::function<void(MeshSecurityData&)>;

constexpr std::uint64_t PARTNER_NUMBER = 0x7766554433221100;
const Euid PARTNER = euidOf("0011223344556677");
const std::string KEY = "abcdefghijklmnop";

pb::MeshSecurityDataPBuf filledMessage() {
  pb::MeshSecurityDataPBuf message;
  message.set_keytype(pb::QX_NEXT_NETWORK_KEY);
  message.mutable_key()->set_contents(KEY);
  message.set_outgoingframecounter(3000000003U);
  message.set_incomingframecounter(4000000004U);
  message.set_sequencenumber(205);
  message.mutable_partnerlid()->set_id(PARTNER_NUMBER);
  return message;
}

/// What `filledMessage` holds, set by hand.
MeshSecurityData filled() {
  MeshSecurityData data(0);
  data.keyType(QX_NEXT_NETWORK_KEY);
  data.key(MeshSecurityKeyData(KEY));
  data.outgoingFrameCounter(3000000003U);
  data.incomingFrameCounter(4000000004U);
  data.sequenceNumber(205);
  data.partnerLid(PARTNER);
  return data;
}

/// The address whose integer view is `number`.
Euid euidOfNumber(unsigned long long number) {
  Euid euid;
  euid.fromProtobuf(number);
  return euid;
}

TEST(MeshSecurityData, NumbersItsKinds) {
  static_assert(sizeof(KeyType) == 4);
  EXPECT_EQ(QX_UNKNOWN_KEY, 0);
  EXPECT_EQ(QX_TRUST_CENTER_LINK_KEY, 1);
  EXPECT_EQ(QX_TRUST_CENTER_MASTER_KEY, 2);
  EXPECT_EQ(QX_CURRENT_NETWORK_KEY, 3);
  EXPECT_EQ(QX_NEXT_NETWORK_KEY, 4);
  EXPECT_EQ(QX_APPLICATION_LINK_KEY, 5);
  EXPECT_EQ(QX_APPLICATION_MASTER_KEY, 6);
}

TEST(MeshSecurityData, NamesItsKindWithoutThePrefix) {
  const std::map<int, std::string> expected = {{0, "UNKNOWN_KEY"},
                                               {1, "TRUST_CENTER_LINK_KEY"},
                                               {2, "TRUST_CENTER_MASTER_KEY"},
                                               {3, "CURRENT_NETWORK_KEY"},
                                               {4, "NEXT_NETWORK_KEY"},
                                               {5, "APPLICATION_LINK_KEY"},
                                               {6, "APPLICATION_MASTER_KEY"},
                                               {7, "UNKNOWN_KEY"},
                                               {9, "UNKNOWN_KEY"},
                                               {-1, "UNKNOWN_KEY"},
                                               {257, "UNKNOWN_KEY"}};
  for (const auto& [number, text] : expected) {
    MeshSecurityData data(0);
    data.keyType(static_cast<KeyType>(number));
    EXPECT_EQ(data.keyTypeStr(), text) << number;
  }
}

TEST(MeshSecurityData, FillsEverythingButKindAndPartner) {
  static_assert(!std::is_polymorphic_v<MeshSecurityData>);
  static_assert(!std::is_default_constructible_v<MeshSecurityData>);
  const MeshSecurityData data(0x41);
  EXPECT_EQ(data.keyType(), QX_UNKNOWN_KEY);
  EXPECT_TRUE(data.key() == 0x41);
  EXPECT_EQ(data.outgoingFrameCounter(), 0x41U);
  EXPECT_EQ(data.incomingFrameCounter(), 0x41U);
  EXPECT_EQ(data.sequenceNumber(), 0x41);
  EXPECT_EQ(data.partnerLid(), Euid());
}

TEST(MeshSecurityData, GivesBackWhatWasSet) {
  const MeshSecurityData data = filled();
  EXPECT_EQ(data.keyType(), QX_NEXT_NETWORK_KEY);
  EXPECT_EQ(std::string(data.key()), KEY);
  EXPECT_EQ(data.outgoingFrameCounter(), 3000000003U);
  EXPECT_EQ(data.incomingFrameCounter(), 4000000004U);
  EXPECT_EQ(data.sequenceNumber(), 205);
  EXPECT_EQ(data.partnerLid(), PARTNER);
}

TEST(MeshSecurityData, CopiesAllSixFields) {
  const MeshSecurityData original = filled();
  const MeshSecurityData constructed(original);
  MeshSecurityData assigned(0);
  EXPECT_EQ(&(assigned = original), &assigned);
  EXPECT_TRUE(sameMessage(*messageOf(constructed), filledMessage()));
  EXPECT_TRUE(sameMessage(*messageOf(assigned), filledMessage()));
  const MeshSecurityData& itself = assigned;
  assigned = itself;
  EXPECT_TRUE(sameMessage(*messageOf(assigned), filledMessage()));
}

TEST(MeshSecurityData, TakesAValueAndForgetsItsKind) {
  MeshSecurityData data = filled();
  EXPECT_EQ(&(data = static_cast<unsigned char>(0x41)), &data);
  EXPECT_EQ(data.keyType(), QX_UNKNOWN_KEY);
  EXPECT_TRUE(data.key() == 0x41);
  EXPECT_EQ(data.outgoingFrameCounter(), 0x41U);
  EXPECT_EQ(data.incomingFrameCounter(), 0x41U);
  EXPECT_EQ(data.sequenceNumber(), 0x41);
  EXPECT_EQ(data.partnerLid(), euidOfNumber(0x41));
  EXPECT_EQ(data.partnerLid().toString(), "4100000000000000");
}

TEST(MeshSecurityData, ComparesKindKeyAndPartner) {
  const std::map<std::string, Change> telling = {
      {"kind", [](MeshSecurityData& d) { d.keyType(QX_CURRENT_NETWORK_KEY); }},
      {"key", [](MeshSecurityData& d) { d.key(MeshSecurityKeyData("abcdefghijklmnoq")); }},
      {"partner", [](MeshSecurityData& d) { d.partnerLid(euidOf("0011223344556678")); }},
  };
  const std::map<std::string, Change> silent = {
      {"nothing", [](MeshSecurityData&) {}},
      {"outgoing counter", [](MeshSecurityData& d) { d.outgoingFrameCounter(1); }},
      {"incoming counter", [](MeshSecurityData& d) { d.incomingFrameCounter(1); }},
      {"sequence number", [](MeshSecurityData& d) { d.sequenceNumber(1); }},
  };
  for (const auto& [what, change] : telling) {
    MeshSecurityData other = filled();
    change(other);
    EXPECT_FALSE(filled() == other) << what;
    EXPECT_TRUE(filled() != other) << what;
  }
  for (const auto& [what, change] : silent) {
    MeshSecurityData other = filled();
    change(other);
    EXPECT_TRUE(filled() == other) << what;
    EXPECT_FALSE(filled() != other) << what;
  }
}

TEST(MeshSecurityData, EqualsAValueOfKindKeyAndPartner) {
  EXPECT_TRUE(MeshSecurityData(0) == 0);
  EXPECT_FALSE(MeshSecurityData(0) != 0);
  EXPECT_FALSE(MeshSecurityData(5) == 5);
  EXPECT_TRUE(MeshSecurityData(5) != 5);

  MeshSecurityData five(9);
  five.keyType(QX_APPLICATION_LINK_KEY);
  five.key(MeshSecurityKeyData(5));
  five.partnerLid(euidOfNumber(5));
  EXPECT_TRUE(five == 5) << "counters and sequence number are 9";
  EXPECT_FALSE(five != 5);

  const std::map<std::string, Change> telling = {
      {"kind", [](MeshSecurityData& d) { d.keyType(QX_UNKNOWN_KEY); }},
      {"kind beyond a byte", [](MeshSecurityData& d) { d.keyType(static_cast<KeyType>(0x105)); }},
      {"key", [](MeshSecurityData& d) { d.key(MeshSecurityKeyData("\5\5\5\5\5\5\5\5\5\5\5\5\5\5\5\6")); }},
      {"partner", [](MeshSecurityData& d) { d.partnerLid(Euid()); }},
      {"partner beyond a byte", [](MeshSecurityData& d) { d.partnerLid(euidOfNumber(0x105)); }},
  };
  for (const auto& [what, change] : telling) {
    MeshSecurityData other = five;
    change(other);
    EXPECT_FALSE(other == 5) << what;
    EXPECT_TRUE(other != 5) << what;
  }
}

TEST(MeshSecurityData, ReadsAndWritesEachFieldOfItsMessage) {
  MeshSecurityData data(0);
  EXPECT_FALSE(data.fromProtobuf(filledMessage()));
  EXPECT_TRUE(data == filled());
  EXPECT_EQ(data.outgoingFrameCounter(), 3000000003U);
  EXPECT_EQ(data.incomingFrameCounter(), 4000000004U);
  EXPECT_EQ(data.sequenceNumber(), 205);
  EXPECT_TRUE(sameMessage(*messageOf(data), filledMessage()));
  EXPECT_TRUE(sameMessage(*messageOf(filled()), filledMessage()));
}

TEST(MeshSecurityData, KeepsTheLowByteOfAWiderSequenceNumber) {
  auto message = filledMessage();
  message.set_sequencenumber(0x1234567);
  MeshSecurityData data(0);
  EXPECT_FALSE(data.fromProtobuf(message));
  EXPECT_EQ(data.sequenceNumber(), 0x67);
}

TEST(MeshSecurityData, KeepsAKindWithoutAName) {
  auto message = filledMessage();
  message.set_keytype(static_cast<pb::KeyTypePEnum>(-77));
  MeshSecurityData data(0);
  EXPECT_FALSE(data.fromProtobuf(message));
  EXPECT_EQ(static_cast<int>(data.keyType()), -77);
  EXPECT_TRUE(sameMessage(*messageOf(data), message));
}

TEST(MeshSecurityData, FailsOnADefaultMessageAndKeepsItsKey) {
  MeshSecurityData data = filled();
  EXPECT_TRUE(data.fromProtobuf(pb::MeshSecurityDataPBuf()));
  EXPECT_EQ(data.keyType(), QX_UNKNOWN_KEY);
  EXPECT_EQ(std::string(data.key()), KEY);
  EXPECT_EQ(data.outgoingFrameCounter(), 0U);
  EXPECT_EQ(data.incomingFrameCounter(), 0U);
  EXPECT_EQ(data.sequenceNumber(), 0);
  EXPECT_EQ(data.partnerLid(), Euid());
}

TEST(MeshSecurityData, FailsOnAShortKeyWithAllElseTaken) {
  auto message = filledMessage();
  message.mutable_key()->set_contents("ABC");
  MeshSecurityData data(0);
  data.key(MeshSecurityKeyData(KEY));
  EXPECT_TRUE(data.fromProtobuf(message));
  auto expected = filledMessage();
  expected.mutable_key()->set_contents("ABCdefghijklmnop");
  EXPECT_TRUE(sameMessage(*messageOf(data), expected));
}

TEST(MeshSecurityData, WritesXmlWithoutArchiveAttributesOfItsOwn) {
  EXPECT_EQ(xmlOf(filled(), "data"),
            "<data><key_type_>4</key_type_><key_><count>16</count><item_version>0</item_version><item>97</item>"
            "<item>98</item><item>99</item><item>100</item><item>101</item><item>102</item><item>103</item>"
            "<item>104</item><item>105</item><item>106</item><item>107</item><item>108</item><item>109</item>"
            "<item>110</item><item>111</item><item>112</item></key_>"
            "<outgoing_frame_counter_>3000000003</outgoing_frame_counter_>"
            "<incoming_frame_counter_>4000000004</incoming_frame_counter_><sequence_number_>205</sequence_number_>"
            "<partner_lid_" +
                ARCHIVE + "><id_>8603657889541918976</id_></partner_lid_></data>");
}

}  // namespace
}  // namespace qx
