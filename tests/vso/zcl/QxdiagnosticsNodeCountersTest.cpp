#include "vso/zcl/QxdiagnosticsNodeCounters.h"

#include <gmock/gmock.h>
#include <google/protobuf/descriptor.h>
#include <gtest/gtest.h>
#include <log4cplus/loglevel.h>

#include <cerrno>
#include <initializer_list>
#include <iterator>
#include <string>
#include <type_traits>
#include <vector>

#include "support/LogCapture.h"
#include "tests/vso/mesh/Records.h"
#include "tests/vso/zcl/MetricsGateway.h"
#include "vso/identifiers/FrameReader.h"
#include "vso/proto/QxdiagnosticsNodeCountersPBuf.pb.h"
#include "vso/zcl/getHostName.h"

namespace qx {
namespace {

using test::ARCHIVE;
using test::messageOf;
using test::sameMessage;
using test::xmlOf;
using testing::ElementsAre;
using testing::IsEmpty;
using Counters = QxdiagnosticsNodeCounters;
using Message = pb::QxdiagnosticsNodeCountersPBuf;

static_assert(std::is_trivially_copyable_v<Counters> && !std::is_polymorphic_v<Counters>, "a plain record");

struct FieldRow {
  const char* element;
  unsigned short Counters::*field;
  const char* protobuf;
};

/// In their order.
constexpr FieldRow FIELDS[] = {
    {"version_", &Counters::version_, "version"},
    {"mac_rx_unicasts_", &Counters::mac_rx_unicasts_, "macRxUnicasts"},
    {"mac_tx_unicasts_", &Counters::mac_tx_unicasts_, "macTxUnicasts"},
    {"mac_tx_unicast_retries_", &Counters::mac_tx_unicast_retries_, "macTxUnicastRetries"},
    {"mac_tx_unicast_failures_", &Counters::mac_tx_unicast_failures_, "macTxUnicastFailures"},
    {"mac_rx_broadcasts_", &Counters::mac_rx_broadcasts_, "macRxBroadcasts"},
    {"mac_tx_broadcasts_", &Counters::mac_tx_broadcasts_, "macTxBroadcasts"},
    {"aps_rx_unicasts_", &Counters::aps_rx_unicasts_, "apsRxUnicasts"},
    {"aps_tx_unicasts_", &Counters::aps_tx_unicasts_, "apsTxUnicasts"},
    {"aps_tx_unicast_retries_", &Counters::aps_tx_unicast_retries_, "apsTxUnicastRetries"},
    {"aps_tx_unicast_failures_", &Counters::aps_tx_unicast_failures_, "apsTxUnicastFailures"},
    {"aps_rx_broadcasts_", &Counters::aps_rx_broadcasts_, "apsRxBroadcasts"},
    {"aps_tx_broadcasts_", &Counters::aps_tx_broadcasts_, "apsTxBroadcasts"},
    {"nwk_frame_counter_failures_", &Counters::nwk_frame_counter_failures_, "nwkFrameCounterFailures"},
    {"aps_frame_counter_failures_", &Counters::aps_frame_counter_failures_, "apsFrameCounterFailures"},
};
static_assert(std::size(FIELDS) == 15);

std::vector<unsigned int> valuesOf(const Counters& counters) {
  std::vector<unsigned int> values;
  for (const FieldRow& row : FIELDS) values.push_back(counters.*row.field);
  return values;
}

const Counters COUNTERS{0x0102, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 0xFFFF};
const std::vector<unsigned int> VALUES{0x0102, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 0xFFFF};
const std::vector<unsigned int> ZEROS(15, 0);

/// What `COUNTERS` is as a message.
Message filledMessage() {
  Message message;
  for (int number = 1; number <= 15; ++number) {
    const auto* const field = Message::descriptor()->FindFieldByNumber(number);
    message.GetReflection()->SetUInt32(&message, field, VALUES[static_cast<std::size_t>(number - 1)]);
  }
  return message;
}

TEST(QxdiagnosticsNodeCounters, StartAtZero) { EXPECT_EQ(valuesOf(Counters()), ZEROS); }

TEST(QxdiagnosticsNodeCounters, TakeFifteenValuesInTheirOrder) {
  const test::LogCapture capture;
  EXPECT_EQ(valuesOf({0x0102, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 0xFFFF}), VALUES);
  EXPECT_THAT(capture.texts(), IsEmpty());
}

class WrongNumber : public testing::TestWithParam<std::initializer_list<unsigned short>> {};

constexpr std::initializer_list<unsigned short> NONE = {};
constexpr std::initializer_list<unsigned short> ONE = {1};
constexpr std::initializer_list<unsigned short> FOURTEEN = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14};
constexpr std::initializer_list<unsigned short> SIXTEEN = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16};

TEST_P(WrongNumber, OfValuesLeavesZerosAndIsLogged) {
  const test::LogCapture capture;
  const Counters counters(GetParam());
  EXPECT_EQ(valuesOf(counters), ZEROS);
  EXPECT_TRUE(counters == Counters());
  EXPECT_THAT(capture.texts(), ElementsAre("QxMetricsClient::sendImpl: StatsdClient connection not initialized",
                                           "QxdiagnosticsNodeCounters: invalid number of initializers"));
  ASSERT_EQ(capture.lines().size(), 2u);
  EXPECT_EQ(capture.lines()[1].level, log4cplus::ERROR_LOG_LEVEL);
}

TEST_P(WrongNumber, OfValuesIsAMetricOfTheProgram) {
  test::MetricsGateway gateway;
  const test::LogCapture capture;
  EXPECT_EQ(valuesOf(Counters(GetParam())), ZEROS);
  EXPECT_THAT(gateway.datagrams(),
              ElementsAre("vessori2.v2." + std::string(program_invocation_short_name) + "." + getHostName() +
                          ".log.error:QxdiagnosticsNodeCounters_ invalid number of initializers|s"));
  EXPECT_THAT(capture.texts(), ElementsAre("QxdiagnosticsNodeCounters: invalid number of initializers"));
}

INSTANTIATE_TEST_SUITE_P(QxdiagnosticsNodeCounters, WrongNumber, testing::Values(NONE, ONE, FOURTEEN, SIXTEEN),
                         [](const auto& row) { return "Of" + std::to_string(row.param.size()); });

TEST(QxdiagnosticsNodeCounters, AreEqualIfAllFieldsAre) {
  EXPECT_TRUE(Counters() == Counters());
  EXPECT_TRUE(COUNTERS == Counters(COUNTERS));
  EXPECT_FALSE(COUNTERS == Counters());
  for (const FieldRow& row : FIELDS) {
    Counters other = COUNTERS;
    other.*row.field = static_cast<unsigned short>(other.*row.field ^ 0x8000);
    EXPECT_FALSE(COUNTERS == other) << row.element;
    EXPECT_FALSE(other == COUNTERS) << row.element;
  }
}

TEST(QxdiagnosticsNodeCounters, ReadEachFieldWithItsHighByteFirst) {
  unsigned char wire[32];
  for (unsigned char i = 0; i < sizeof wire; ++i) wire[i] = static_cast<unsigned char>(0xE0 + i);
  FrameReader in(wire, sizeof wire, sizeof wire, 1);
  Counters counters;
  counters.read(in);
  EXPECT_THAT(valuesOf(counters), ElementsAre(0xE1E2, 0xE3E4, 0xE5E6, 0xE7E8, 0xE9EA, 0xEBEC, 0xEDEE, 0xEFF0, 0xF1F2,
                                              0xF3F4, 0xF5F6, 0xF7F8, 0xF9FA, 0xFBFC, 0xFDFE));
  EXPECT_EQ(in.at(), 31u);
}

// Messages

TEST(QxdiagnosticsNodeCounters, HaveAMessageWithTheirFieldsNumberedFromOne) {
  const auto* const descriptor = Message::descriptor();
  EXPECT_EQ(descriptor->full_name(), "qx.pb.QxdiagnosticsNodeCountersPBuf");
  EXPECT_EQ(descriptor->field_count(), 15);
  for (int i = 0; i < 15; ++i) {
    const auto* const field = descriptor->FindFieldByNumber(i + 1);
    ASSERT_NE(field, nullptr) << i + 1;
    EXPECT_EQ(field->name(), FIELDS[i].protobuf);
    EXPECT_EQ(field->type(), google::protobuf::FieldDescriptor::TYPE_UINT32) << field->name();
  }
}

TEST(QxdiagnosticsNodeCounters, WriteEachFieldOfTheirMessage) {
  EXPECT_TRUE(sameMessage(*messageOf(COUNTERS), filledMessage()));
  EXPECT_TRUE(sameMessage(*messageOf(Counters()), Message()));
}

TEST(QxdiagnosticsNodeCounters, ReadEachFieldOfTheirMessage) {
  Counters counters;
  EXPECT_FALSE(counters.fromProtobuf(filledMessage()));
  EXPECT_EQ(valuesOf(counters), VALUES);
  EXPECT_FALSE(counters.fromProtobuf(Message()));
  EXPECT_EQ(valuesOf(counters), ZEROS);
}

TEST(QxdiagnosticsNodeCounters, KeepTheLowBitsOfWiderNumbers) {
  Message message;
  for (int number = 1; number <= 15; ++number) {
    message.GetReflection()->SetUInt32(&message, Message::descriptor()->FindFieldByNumber(number),
                                       0xABCD0000U + static_cast<unsigned int>(number));
  }
  Counters counters;
  EXPECT_FALSE(counters.fromProtobuf(message));
  EXPECT_THAT(valuesOf(counters), ElementsAre(1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15));
}

// XML

TEST(QxdiagnosticsNodeCounters, WriteAnElementForEachField) {
  EXPECT_EQ(xmlOf(COUNTERS, "counters"),
            "<counters" + ARCHIVE +
                "><version_>258</version_><mac_rx_unicasts_>2</mac_rx_unicasts_><mac_tx_unicasts_>3</mac_tx_unicasts_>"
                "<mac_tx_unicast_retries_>4</mac_tx_unicast_retries_>"
                "<mac_tx_unicast_failures_>5</mac_tx_unicast_failures_><mac_rx_broadcasts_>6</mac_rx_broadcasts_>"
                "<mac_tx_broadcasts_>7</mac_tx_broadcasts_><aps_rx_unicasts_>8</aps_rx_unicasts_>"
                "<aps_tx_unicasts_>9</aps_tx_unicasts_><aps_tx_unicast_retries_>10</aps_tx_unicast_retries_>"
                "<aps_tx_unicast_failures_>11</aps_tx_unicast_failures_><aps_rx_broadcasts_>12</aps_rx_broadcasts_>"
                "<aps_tx_broadcasts_>13</aps_tx_broadcasts_>"
                "<nwk_frame_counter_failures_>14</nwk_frame_counter_failures_>"
                "<aps_frame_counter_failures_>65535</aps_frame_counter_failures_></counters>");
}

TEST(QxdiagnosticsNodeCounters, WriteZerosWithoutMoreDigits) {
  std::string expected = "<item" + ARCHIVE + ">";
  for (const FieldRow& row : FIELDS) expected += std::string("<") + row.element + ">0</" + row.element + ">";
  EXPECT_EQ(xmlOf(Counters(), "item"), expected + "</item>");
}

}  // namespace
}  // namespace qx
