#include "vso/zcl/QxZclImmediateAnnounce.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <type_traits>
#include <vector>

#include "support/Bytes.h"
#include "support/LogCapture.h"

namespace qx {
namespace {

using test::bytes;
using test::hex;

using Ids = std::vector<unsigned short>;

static_assert(!std::is_constructible_v<QxZclImmediateAnnounce, const std::string&>, "nobody receives one");
static_assert(!std::is_constructible_v<QxZclImmediateAnnounce, const U255Buff<unsigned char>&>, "nobody receives one");

TEST(QxZclImmediateAnnounce, BelongsToThePrivateProfile) {
  const QxZclImmediateAnnounce frame(Ids{});
  EXPECT_EQ(frame.getProfileId() & 0xFFFF, 0xC25D);
  EXPECT_LT(frame.getProfileId(), 0);
  EXPECT_EQ(frame.getClusterId(), 0x0001);
}

TEST(QxZclImmediateAnnounce, CountsItsIdsAndCarriesThem) {
  const unsigned char sequence = ZclMessage::transactionSequenceNumber_;
  const QxZclImmediateAnnounce frame({0x0102, 0xFFFE, 0x0000});
  EXPECT_EQ(hex(frame), hex(bytes({0x01,        // cluster specific
                                   sequence,    //
                                   0x00,        // command
                                   0x03,        // ids
                                   0x02, 0x01,  //
                                   0xFE, 0xFF,  //
                                   0x00, 0x00})));
  EXPECT_EQ(ZclMessage::transactionSequenceNumber_, static_cast<unsigned char>(sequence + 1));
  EXPECT_TRUE(frame.affectsSpecificCluster());
  EXPECT_FALSE(frame.isManufacturerSpecific());
}

TEST(QxZclImmediateAnnounce, CarriesACountOfZeroWithoutIds) {
  const unsigned char sequence = ZclMessage::transactionSequenceNumber_;
  EXPECT_EQ(hex(QxZclImmediateAnnounce(Ids{})), hex(bytes({0x01, sequence, 0x00, 0x00})));
}

TEST(QxZclImmediateAnnounce, HasRoomFor125Ids) {
  const test::LogCapture log;
  for (const unsigned int count : {1U, 2U, 124U, 125U}) {
    Ids ids;
    std::string expected = "01 " + hex(bytes({ZclMessage::transactionSequenceNumber_})) + " 00 " +
                           hex(bytes({static_cast<unsigned char>(count)}));
    for (unsigned int i = 0; i < count; ++i) {
      ids.push_back(static_cast<unsigned short>(0xA500 + i));
      expected += ' ' + hex(bytes({static_cast<unsigned char>(i), 0xA5}));
    }
    const QxZclImmediateAnnounce frame(ids);
    EXPECT_EQ(hex(frame), expected);
    EXPECT_EQ(frame.length_, 4 + 2 * count);
  }
  EXPECT_THAT(log.texts(), testing::IsEmpty());
}

TEST(QxZclImmediateAnnounce, RefusesMoreIds) {
  const test::LogCapture log;
  for (const std::size_t count : {126U, 127U, 256U, 65536U, 100000U}) {
    try {
      const QxZclImmediateAnnounce frame{Ids(count)};
      ADD_FAILURE() << count;
    } catch (const std::runtime_error& error) {
      EXPECT_STREQ(error.what(), "Too many ids to fit in packet") << count;
    }
  }
  EXPECT_THAT(log.texts(), testing::IsEmpty());
}

TEST(QxZclImmediateAnnounce, TakesASequenceNumberAlsoWhenItRefuses) {
  const unsigned char before = ZclMessage::transactionSequenceNumber_;
  EXPECT_THROW(QxZclImmediateAnnounce{Ids(126)}, std::runtime_error);
  EXPECT_EQ(ZclMessage::transactionSequenceNumber_, static_cast<unsigned char>(before + 1));
}

}  // namespace
}  // namespace qx
