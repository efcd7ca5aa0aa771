// `vso decode --metrics` and `vso serve --metrics` as processes, with a gateway at the port that is built in.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <string>
#include <vector>

#include "serve/ServeProcess.h"
#include "support/ProgramRunner.h"
#include "support/TemporaryDirectory.h"
#include "support/UdpReceiver.h"
#include "vso/zcl/getHostName.h"

namespace qx::app {
namespace {

using test::Outcome;
using test::runProgram;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

/// temp 21, and a name that has no value.
const std::string BYTES = "18050a1e01420474656d701f0120151e0140016e";
const std::string REPORT = "0x0104 0x0b05 " + BYTES + "\n";
const std::string REPORT_OF_A_NODE = R"({"profile": 260, "cluster": "0x0B05", "hex": ")" + BYTES +
                                     R"(", "euid": "00112233445566AA"})"
                                     "\n";
const std::string OTHER = "0x0104 6 180501000000 1001\n";

std::string metric(const std::string& name, const std::string& node) {
  return "vessori2.v2.vessori2." + getHostName() + "." + name + "." + node + ".zcl_diag.temp:21|g";
}

class SentMetrics : public testing::Test {
 protected:
  void SetUp() override { ASSERT_TRUE(gateway_.isOpen()) << "port 8125 is taken"; }

  /// What came while the program ran. A last metric of another program's run tells the end.
  std::vector<std::string> received(const std::vector<std::string>& arguments, const std::string& input) {
    outcome_ = runProgram({arguments, input});
    EXPECT_EQ(runProgram({{"decode", "--metrics", "--metrics-name", "end"}, REPORT}).status, 0);
    return gateway_.upTo(metric("end", "0000000000000000"));
  }

  test::UdpReceiver gateway_{"127.0.0.1", 8125};
  Outcome outcome_;
};

TEST_F(SentMetrics, GoToTheGateway) {
  EXPECT_THAT(received({"decode", "--metrics"}, OTHER + REPORT + REPORT),
              ElementsAre(metric("vso", "0000000000000000"), metric("vso", "0000000000000000")));
  EXPECT_EQ(outcome_.status, 0);
  EXPECT_EQ(outcome_.err, "");
}

TEST_F(SentMetrics, BearNameAndNodeOfTheCommandLine) {
  EXPECT_THAT(received({"decode", "--metrics", "--metrics-name", "site.7", "--node", "00112233445566ff"}, REPORT),
              ElementsAre(metric("site.7", "00112233445566ff")));
}

TEST_F(SentMetrics, BearTheNodeOfTheLineBeforeAnyOther) {
  EXPECT_THAT(received({"decode", "--json", "--metrics", "--node", "00112233445566ff"}, REPORT_OF_A_NODE + REPORT),
              ElementsAre(metric("vso", "00112233445566aa"), metric("vso", "00112233445566ff")));
}

TEST_F(SentMetrics, AreNoneUnlessAskedFor) {
  EXPECT_THAT(received({"decode"}, REPORT), IsEmpty());
  EXPECT_EQ(outcome_.status, 0);
}

TEST_F(SentMetrics, LeaveTheOutputAsItIs) {
  const std::string without = runProgram({{"decode", "--json"}, OTHER + REPORT}).out;
  EXPECT_THAT(received({"decode", "--json", "--metrics"}, OTHER + REPORT),
              ElementsAre(metric("vso", "0000000000000000")));
  EXPECT_EQ(outcome_.out, without);
  EXPECT_THAT(without, HasSubstr(R"("rows":[{"name":"temp","value":"21"}])"));
}

/// What comes while a server takes a report of a node, and then the end.
class ServedMetrics : public SentMetrics {
 protected:
  std::vector<std::string> served(const std::vector<std::string>& more) {
    const test::TemporaryDirectory folder;
    std::vector<std::string> arguments{"--listen", "127.0.0.1:0", "--state", folder.path()};
    arguments.insert(arguments.end(), more.begin(), more.end());
    test::ServeProcess server(arguments);
    test::LineClient client(server.port());
    const std::string node = "frame now 00112233445566aa 0x1c02 ";
    EXPECT_EQ(client.ask(node + "0xc25f 1 18050a00002002"), "ok taken\r\n");
    EXPECT_EQ(client.ask(node + "0x0104 0x0b05 18050a1e01420474656d701f012015"), "ok taken\r\n");
    server.signal(SIGTERM);
    EXPECT_EQ(server.status(), 0);
    EXPECT_EQ(server.errors(), "");
    return received({"decode"}, "");
  }
};

TEST_F(ServedMetrics, GoToTheGateway) {
  EXPECT_THAT(served({"--metrics"}), ElementsAre(metric("vso", "00112233445566aa")));
}

TEST_F(ServedMetrics, AreNoneUnlessAskedFor) { EXPECT_THAT(served({}), IsEmpty()); }

TEST_F(SentMetrics, NeedNobodyAtTheGateway) {
  gateway_.close();
  const Outcome outcome = runProgram({{"decode", "--json", "--metrics"}, REPORT + REPORT + REPORT});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.err, "");
  EXPECT_EQ(outcome.out, runProgram({{"decode", "--json"}, REPORT + REPORT + REPORT}).out);
}

TEST(MetricsOptions, AreExplained) {
  const std::string help = runProgram({{"decode", "--help"}}).out;
  for (const char* const part : {"--metrics ", "--metrics-name NAME", "--node ADDRESS", "Metrics:", "8125 of localhost",
                                 "vessori2.v2.vessori2.HOST.NAME.NODE.zcl_diag.KEY", "\"euid\""}) {
    EXPECT_THAT(help, HasSubstr(part));
  }
}

TEST(MetricsOptions, AreRefusedIfTheyMakeNoSense) {
  const struct {
    std::vector<std::string> arguments;
    const char* reason;
  } wrong[] = {{{"decode", "--metrics", "--node", "0011"}, "vso: --node: \"0011\" has 4 digits, an address has 16\n"},
               {{"decode", "--metrics", "--node", "001122334455667g"}, "vso: --node: "},
               {{"decode", "--node", "0011223344556677"}, "vso: --node requires --metrics\n"},
               {{"decode", "--metrics-name", "x"}, "vso: --metrics-name requires --metrics\n"},
               {{"decode", "--metrics=x"}, "vso: "}};
  for (const auto& usage : wrong) {
    const Outcome outcome = runProgram({usage.arguments, REPORT});
    EXPECT_EQ(outcome.status, 2) << outcome.err;
    EXPECT_EQ(outcome.out, "");
    EXPECT_THAT(outcome.err, HasSubstr(usage.reason));
    EXPECT_THAT(outcome.err, HasSubstr("Try 'vso decode --help'.\n"));
  }
}

}  // namespace
}  // namespace qx::app
