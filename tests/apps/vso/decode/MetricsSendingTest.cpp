#include "apps/vso/decode/MetricsSending.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "support/Bytes.h"
#include "support/LogCapture.h"
#include "tests/vso/zcl/MetricsGateway.h"
#include "vso/zcl/getHostName.h"

namespace qx::app {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr unsigned short HOME = 0x0104;
constexpr unsigned short DIAGNOSTICS = 0x0B05;

const std::string PAIR = "1e 01 42 04 74 65 6d 70  1f 01 20 15 ";  // temp, 21
const std::string REPORT = "18 05 0a " + PAIR;

Euid euidOf(const std::string& digits) {
  Euid euid;
  euid = digits;
  return euid;
}
const Euid NODE = euidOf("0011223344556677");

/// What the gateway gets of a frame.
std::vector<std::string> sent(unsigned short profile, unsigned short cluster, const std::string& hex,
                              const std::optional<Euid>& node = std::nullopt) {
  const test::LogCapture capture;
  const MetricsSending sending("here", NODE);
  const test::MetricsGateway gateway;
  sending.send({profile, cluster, test::bytesOf(hex), node});
  return gateway.datagrams();
}

std::string metric(const std::string& node, const std::string& rest) {
  return "vessori2.v2.vessori2." + getHostName() + ".here." + node + ".zcl_diag." + rest;
}

TEST(MetricsSending, SendsThePairsOfAReport) {
  EXPECT_THAT(sent(HOME, DIAGNOSTICS, REPORT), ElementsAre(metric("0011223344556677", "temp:21|g")));
  EXPECT_THAT(sent(HOME, DIAGNOSTICS, "08 05 0a " + PAIR + PAIR),
              ElementsAre(metric("0011223344556677", "temp:21|g"), metric("0011223344556677", "temp:21|g")));
}

TEST(MetricsSending, SendsWhatStandsInFrontOfAPairThatIsNone) {
  EXPECT_THAT(sent(HOME, DIAGNOSTICS, REPORT + "1f 01 20 05"), ElementsAre(metric("0011223344556677", "temp:21|g")));
}

TEST(MetricsSending, TakesTheNodeOfTheFrameFirst) {
  EXPECT_THAT(sent(HOME, DIAGNOSTICS, REPORT, euidOf("ff0b57fffe123456")),
              ElementsAre(metric("ff0b57fffe123456", "temp:21|g")));
  EXPECT_THAT(sent(HOME, DIAGNOSTICS, REPORT, Euid()), ElementsAre(metric("0000000000000000", "temp:21|g")));
}

TEST(MetricsSending, SendsNothingOfOtherFrames) {
  EXPECT_THAT(sent(0x0105, DIAGNOSTICS, REPORT), IsEmpty()) << "profile";
  EXPECT_THAT(sent(HOME, 0x0B04, REPORT), IsEmpty()) << "cluster";
  EXPECT_THAT(sent(HOME, DIAGNOSTICS, "18 05 01 " + PAIR), IsEmpty()) << "general command";
  EXPECT_THAT(sent(HOME, DIAGNOSTICS, "19 05 0a " + PAIR), IsEmpty()) << "command of the cluster";
  EXPECT_THAT(sent(HOME, DIAGNOSTICS, "1c 40 10 05 0a " + PAIR), IsEmpty()) << "manufacturer";
  EXPECT_THAT(sent(HOME, DIAGNOSTICS, "18 05"), IsEmpty()) << "no whole header";
  EXPECT_THAT(sent(HOME, DIAGNOSTICS, ""), IsEmpty()) << "no bytes";
}

TEST(MetricsSending, EndsTheConnection) {
  const test::LogCapture capture;
  const test::MetricsGateway gateway;
  { const MetricsSending sending("here", NODE); }
  QxMetricsClient::instance().send("here", "key", "1");
  EXPECT_THAT(gateway.datagrams(), IsEmpty());
}

}  // namespace
}  // namespace qx::app
