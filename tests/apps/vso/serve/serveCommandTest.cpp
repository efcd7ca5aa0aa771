// The server as a process, spoken to over TCP.
#include <arpa/inet.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <nlohmann/json.hpp>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "apps/vso/mesh/savedMesh.h"
#include "mesh/announcements.h"
#include "serve/ServeProcess.h"
#include "support/Loopback.h"
#include "support/ProgramRunner.h"
#include "support/TemporaryDirectory.h"

namespace qx::app {
namespace {

using test::announcementOf;
using test::LineClient;
using test::ServeProcess;
using test::TemporaryDirectory;
using test::waitUntil;
using testing::HasSubstr;
using testing::StartsWith;

const std::string LAMP = "0011223344556677";
const std::string HALL_LAMP = "0017880100a00013";
const std::string GARDEN_SOCKET = "0017880100a0001b";
const std::string DIMMER = "0017880100a00010";
/// Reports that it could not reach the garden socket.
const std::string REPORTER = "0017880100a00014";

/// Of the mesh day, as its lines say.
constexpr long long LAST_FRAME = 1'773'532'798;

std::vector<std::string> wordsOf(const std::string& line) {
  std::istringstream in(line);
  return {std::istream_iterator<std::string>(in), {}};
}

/// The mesh day, moved so that its last frame comes at `end`.
std::vector<std::string> meshDay(std::time_t end) {
  std::vector<std::string> lines;
  std::ifstream file(VSO_EXAMPLES "/mesh-day.txt");
  for (std::string line; std::getline(file, line);) {
    if (line[0] == '#') continue;
    const std::size_t blank = line.find(' ');
    lines.push_back(std::to_string(std::stoll(line.substr(0, blank)) - LAST_FRAME + end) + line.substr(blank));
  }
  return lines;
}

std::string euidOf(const std::string& line) { return wordsOf(line).at(1); }

/// Lines as the server takes them, all at once.
std::string fed(const std::vector<std::string>& lines) {
  std::string text;
  for (const std::string& line : lines) text += "frame " + line + "\r\n";
  return text;
}

/// The bytes with which a server in `folder` ended.
SavedMesh savedIn(const TemporaryDirectory& folder) { return meshOfBytes(test::contentOf(folder.path("mesh.state"))); }

Euid euid(const std::string& text) {
  Euid parsed;
  parsed = text;
  return parsed;
}

/// Without the lines that hold a time of the server's own clock, which is kept in whole seconds.
std::string withoutResetTimes(const std::string& xml) {
  std::istringstream in(xml);
  std::string rest;
  bool isSkipped = false;
  for (std::string line; std::getline(in, line);) {
    if (line.find("reset_time") != std::string::npos) {
      isSkipped = line.find("</") == std::string::npos;
      continue;
    }
    if (!isSkipped) rest += line + "\n";
  }
  return rest;
}

class Serve : public testing::Test {
 protected:
  std::vector<std::string> arguments(const std::vector<std::string>& more = {}) const {
    std::vector<std::string> all{"--listen", "127.0.0.1:0", "--state", folder_.path()};
    all.insert(all.end(), more.begin(), more.end());
    return all;
  }

  const TemporaryDirectory folder_;
};

/// The values of a node's report by their names.
std::map<std::string, std::string> valuesOf(const std::string& answer, const std::string& node) {
  std::map<std::string, std::string> values;
  const auto json = nlohmann::json::parse(answer.substr(3));
  for (const auto& reported : json["NetworkHealth"]["nodeHealth_"]) {
    if (reported["id"] != node) continue;
    for (const auto& item : reported["healthItem"]) values[item["name_"]] = item["value_"];
  }
  for (const char* const name : {"reboot", "inbound_route_failures", "outbound_route_failures"}) {
    EXPECT_NE(values[std::string(name) + ".reset_time"], "") << name;
    values.erase(std::string(name) + ".reset_time");
  }
  return values;
}

/// A report of these, where nothing else than these is not as in a node that is well. Lights: 3 is green, 2 yellow, 1
/// red.
std::map<std::string, std::string> reportWith(const std::map<std::string, std::string>& special) {
  std::map<std::string, std::string> report{{"reboot.cumulative_count", "0"},
                                            {"reboot.cumulative_average", "0"},
                                            {"reboot.cumulative_quality", "3"},
                                            {"reboot.sliding_average", "0"},
                                            {"reboot.sliding_quality", "3"},
                                            {"reboot.quality_thresholds", "10 20"},
                                            {"tx_lqi.value", "-1"},
                                            {"inbound_route_failures.cumulative_count", "0"},
                                            {"inbound_route_failures.cumulative_average", "0"},
                                            {"inbound_route_failures.cumulative_quality", "3"},
                                            {"inbound_route_failures.sliding_average", "0"},
                                            {"inbound_route_failures.sliding_quality", "3"},
                                            {"inbound_route_failures.quality_thresholds", "50 300"},
                                            {"outbound_route_failures.cumulative_count", "0"},
                                            {"outbound_route_failures.cumulative_average", "0"},
                                            {"outbound_route_failures.cumulative_quality", "3"},
                                            {"outbound_route_failures.sliding_average", "0"},
                                            {"outbound_route_failures.sliding_quality", "3"},
                                            {"outbound_route_failures.quality_thresholds", "50 300"}};
  for (const auto& [name, value] : special) report[name] = value;
  return report;
}

/// A node falls asleep when its time has come, whatever is tested meanwhile.
std::string withoutStates(const std::string& nodes) {
  return std::regex_replace(nodes, std::regex(" (online|asleep|silent) "), " ");
}

TEST_F(Serve, AMeshDayFromTwoClientsGivesTheKnownReportsAndOutlivesTheServer) {
  std::vector<std::string> odd;
  std::vector<std::string> even;
  std::set<std::string> known;
  for (const std::string& line : meshDay(std::time(nullptr))) {
    const std::string node = euidOf(line);
    // The frames of a node stay in their order, and who tells of another node's failures comes with that node.
    const bool isOdd = node != REPORTER && (node.back() - '0') % 2 != 0;
    (isOdd || node == GARDEN_SOCKET || node == REPORTER ? odd : even).push_back(line);
    if (wordsOf(line).at(3) == "0xc25f") known.insert(node);
  }
  ASSERT_EQ(odd.size() + even.size(), 2577u);
  ASSERT_GT(even.size(), 100u);
  ASSERT_EQ(known.size(), 12u);

  std::map<std::string, std::string> xmls;
  std::string nodes;
  {
    ServeProcess server(arguments());
    const std::uint16_t port = server.port();
    ASSERT_NE(port, 0) << server.errors();
    LineClient first(port);
    LineClient second(port);
    const auto feed = [](LineClient& client, const std::vector<std::string>& lines) {
      EXPECT_TRUE(client.send(fed(lines)));
      for (const std::string& line : lines) ASSERT_THAT(client.answer(), StartsWith("ok ")) << line;
    };
    std::thread other([&] { feed(second, even); });
    feed(first, odd);
    other.join();

    // 30 reboots within a day that has begun. LQI 0xc3, RSSI 0xc8.
    EXPECT_EQ(valuesOf(first.ask("health " + HALL_LAMP), HALL_LAMP), reportWith({{"reboot.count", "52"},
                                                                                 {"reboot.cumulative_count", "30"},
                                                                                 {"reboot.cumulative_average", "30"},
                                                                                 {"reboot.cumulative_quality", "1"},
                                                                                 {"reboot.sliding_average", "30"},
                                                                                 {"reboot.sliding_quality", "1"},
                                                                                 {"four_bar_signal.value", "2"},
                                                                                 {"rx_lqi.value", "195"},
                                                                                 {"rssi.value", "-56"}}));
    // There for less than four hours: 1600 / 4 and 300 / 4. Since the reset, which was a moment ago, all of them.
    EXPECT_EQ(valuesOf(second.ask("health all"), GARDEN_SOCKET),
              reportWith({{"reboot.count", "30"},
                          {"inbound_route_failures.cumulative_count", "1600"},
                          {"inbound_route_failures.cumulative_average", "1600"},
                          {"inbound_route_failures.cumulative_quality", "1"},
                          {"inbound_route_failures.sliding_average", "400"},
                          {"inbound_route_failures.sliding_quality", "1"},
                          {"outbound_route_failures.cumulative_count", "300"},
                          {"outbound_route_failures.cumulative_average", "300"},
                          {"outbound_route_failures.cumulative_quality", "2"},
                          {"outbound_route_failures.sliding_average", "75"},
                          {"outbound_route_failures.sliding_quality", "2"},
                          {"four_bar_signal.value", "0"},
                          {"rx_lqi.value", "122"},
                          {"rssi.value", "-71"}}));
    EXPECT_EQ(
        valuesOf(first.ask("health " + DIMMER), DIMMER),
        reportWith(
            {{"reboot.count", "19"}, {"four_bar_signal.value", "4"}, {"rx_lqi.value", "243"}, {"rssi.value", "-46"}}));

    const std::map<std::string, std::vector<std::string>> elements{
        {HALL_LAMP,
         {"<product_>qx:lamp</product_>", "<sid_>20287</sid_>", "<reboots_>30</reboots_>",
          "<boot_count_>52</boot_count_>", "<rx_lqi_>195</rx_lqi_>", "<rssi_>-56</rssi_>",
          "<many_to_one_route_failures_>0</many_to_one_route_failures_>"}},
        {GARDEN_SOCKET,
         {"<product_>qx:socket</product_>", "<sid_>51127</sid_>", "<reboots_>0</reboots_>",
          "<boot_count_>30</boot_count_>", "<many_to_one_route_failures_>1600</many_to_one_route_failures_>",
          "<source_route_failures_>300</source_route_failures_>"}},
        {DIMMER,
         {"<product_>qx:dimmer</product_>", "<sid_>7170</sid_>", "<reboots_>0</reboots_>",
          "<boot_count_>19</boot_count_>", "<fw_ver_>4.2.11</fw_ver_>", "<uptime_>72433</uptime_>",
          "<signal_strength_>4</signal_strength_>"}}};
    for (const auto& [node, texts] : elements) {
      xmls[node] = first.ask("node " + node + " xml");
      for (const std::string& text : texts) EXPECT_THAT(xmls[node], HasSubstr(text)) << node;
    }
    nodes = withoutStates(first.ask("nodes"));
    EXPECT_THAT(nodes, StartsWith("block 12\r\n"));
    server.signal(SIGTERM);
    EXPECT_EQ(server.status(), 0);
    EXPECT_EQ(server.errors(), "");
  }

  const SavedMesh saved = savedIn(folder_);
  EXPECT_EQ(saved.nodes.size(), 12u);
  for (const std::string& node : known) EXPECT_EQ(saved.nodes.count(euid(node)), 1u) << node;
  EXPECT_EQ(saved.zaps.size(), 2u);
  const ZigbeeNode& lamp = saved.nodes.at(euid(HALL_LAMP));
  EXPECT_EQ(lamp.sid(), 0x4f3f);
  EXPECT_EQ(lamp.reboots(), 30u);
  EXPECT_EQ(lamp.bootCount(), 52u);
  const ZigbeeNode& socket = saved.nodes.at(euid(GARDEN_SOCKET));
  EXPECT_EQ(socket.manyToOneRouteFailures(), 1600u);
  EXPECT_EQ(socket.sourceRouteFailures(), 300u);
  EXPECT_EQ(socket.product(), "qx:socket");
  const ZigbeeNode& dimmer = saved.nodes.at(euid(DIMMER));
  EXPECT_EQ(dimmer.uptime(), 72'433u);
  EXPECT_EQ(dimmer.reboots(), 0u);

  ServeProcess again(arguments());
  ASSERT_NE(again.port(), 0) << again.errors();
  EXPECT_THAT(again.firstLine(), testing::EndsWith(", 12 nodes\n"));
  LineClient client(again.port());
  EXPECT_EQ(withoutStates(client.ask("nodes")), nodes);
  for (const auto& [node, xml] : xmls) {
    EXPECT_EQ(withoutResetTimes(client.ask("node " + node + " xml")), withoutResetTimes(xml)) << node;
  }
  EXPECT_EQ(valuesOf(client.ask("health " + HALL_LAMP), HALL_LAMP)["reboot.sliding_average"], "30");
}

TEST_F(Serve, SaysWhereItListensAndKeepsItsState) {
  ServeProcess server(arguments());
  const std::string port = std::to_string(server.port());
  EXPECT_EQ(server.firstLine(), "listening at 127.0.0.1:" + port + " (this machine alone), state in " +
                                    folder_.path("mesh.state") + ", 0 nodes\n");
  EXPECT_EQ(test::contentOf(folder_.path("vso.pid")), std::to_string(server.id()) + "\n");
}

class ServeEnd : public Serve, public testing::WithParamInterface<int> {};

TEST_P(ServeEnd, BySignalSavesAndLeavesNobodyWaiting) {
  ServeProcess server(arguments());
  LineClient client(server.port());
  LineClient idle(server.port());
  ASSERT_EQ(idle.ask("nodes"), "block 0\r\n");
  ASSERT_EQ(client.ask("frame " + announcementOf(LAMP, 3)), "ok taken\r\n");
  // One does not read, so that an answer is held for it.
  constexpr int SMALL = 4096;
  const test::LoopbackPeer deaf(server.port(), "127.0.0.1", SMALL);
  std::string questions;
  for (int i = 0; i < 2000; ++i) questions += "health all xml\r\n";
  ASSERT_TRUE(deaf.send(questions));
  ASSERT_THAT(client.ask("nodes"), StartsWith("block 1\r\n"));
  ASSERT_FALSE(std::filesystem::exists(folder_.path("mesh.state")));
  server.signal(GetParam());
  EXPECT_EQ(server.status(), 0);
  EXPECT_EQ(server.errors(), "");
  EXPECT_TRUE(waitUntil([&] { return client.peer().isEnded() && idle.peer().isEnded(); }));
  EXPECT_EQ(savedIn(folder_).nodes.count(euid(LAMP)), 1u);
  EXPECT_FALSE(std::filesystem::exists(folder_.path("vso.pid")));

  ServeProcess again(arguments());
  EXPECT_THAT(again.firstLine(), testing::EndsWith(", 1 node\n"));
  EXPECT_THAT(LineClient(again.port()).ask("nodes"), StartsWith("block 1\r\n" + LAMP));
}

TEST_P(ServeEnd, EndsWithMetricsToo) {
  ServeProcess server(arguments({"--metrics"}));
  ASSERT_EQ(LineClient(server.port()).ask("nodes"), "block 0\r\n") << server.errors();
  server.signal(GetParam());
  EXPECT_EQ(server.status(), 0) << server.errors();
  EXPECT_TRUE(savedIn(folder_).nodes.empty());
}

INSTANTIATE_TEST_SUITE_P(Signals, ServeEnd, testing::Values(SIGTERM, SIGINT, SIGHUP), [](const auto& row) {
  return row.param == SIGTERM ? "Terminate" : row.param == SIGINT ? "Interrupt" : "HangUp";
});

TEST_F(Serve, KilledItHasWhatWasSavedLast) {
  {
    ServeProcess server(arguments());
    LineClient client(server.port());
    ASSERT_EQ(client.ask("frame " + announcementOf(LAMP, 3)), "ok taken\r\n");
    ASSERT_EQ(client.ask("save"), "ok\r\n");
    EXPECT_EQ(savedIn(folder_).nodes.at(euid(LAMP)).bootCount(), 3u);
    ASSERT_EQ(client.ask("frame " + announcementOf(LAMP, 4)), "ok taken\r\n");
    server.signal(SIGKILL);
    EXPECT_EQ(server.status(), 128 + SIGKILL);
  }
  ServeProcess again(arguments());
  const auto json = nlohmann::json::parse(LineClient(again.port()).ask("node " + LAMP).substr(3));
  EXPECT_EQ(json["bootCount"], 3);
}

TEST_F(Serve, SavesNowAndThen) {
  ServeProcess server(arguments({"--save-every", "1"}));
  LineClient client(server.port());
  for (const unsigned char boots : {5, 6}) {
    ASSERT_EQ(client.ask("frame " + announcementOf(LAMP, boots)), "ok taken\r\n");
    EXPECT_TRUE(waitUntil([&] {
      if (!std::filesystem::exists(folder_.path("mesh.state"))) return false;
      const SavedMesh saved = savedIn(folder_);
      const auto lamp = saved.nodes.find(euid(LAMP));
      return lamp != saved.nodes.end() && lamp->second.bootCount() == boots;
    })) << static_cast<int>(boots);
  }
}

TEST_F(Serve, AStateThatCannotBeSavedIsSaidAndTheServerLivesOn) {
  const std::string reason = folder_.path("mesh.state") + ": Is a directory";
  ServeProcess server(arguments({"--save-every", "1"}));
  LineClient client(server.port());
  // The empty mesh may be saved already, and again after its removal.
  ASSERT_TRUE(waitUntil([&] {
    std::filesystem::remove(folder_.path("mesh.state"));
    return ::mkdir(folder_.path("mesh.state").c_str(), 0700) == 0;
  }));
  EXPECT_EQ(client.ask("save"), "error " + reason + "\r\n");
  ASSERT_EQ(client.ask("frame " + announcementOf(LAMP, 1)), "ok taken\r\n");
  EXPECT_TRUE(waitUntil([&] { return server.errors() != ""; }));
  EXPECT_THAT(server.errors(), StartsWith("vso: " + reason + "; the mesh is not saved\n"));
  EXPECT_THAT(client.ask("nodes"), StartsWith("block 1\r\n"));
  server.signal(SIGTERM);
  EXPECT_EQ(server.status(), 1);
}

TEST_F(Serve, ADiskWithoutRoomIsSaidAndTheServerLivesOn) {
  ServeProcess server(arguments());
  LineClient client(server.port());
  ASSERT_EQ(client.ask("save"), "ok\r\n");
  for (int number = 0; number < 50; ++number) {
    ASSERT_EQ(client.ask("frame " + announcementOf("00112233445566" + std::to_string(10 + number), 1)), "ok taken\r\n");
  }
  // As if it were full: a file may grow no more.
  rlimit before{};
  ASSERT_EQ(0, ::prlimit(server.id(), RLIMIT_FSIZE, nullptr, &before));
  const rlimit full{4096, before.rlim_max};
  ASSERT_EQ(0, ::prlimit(server.id(), RLIMIT_FSIZE, &full, nullptr));
  EXPECT_EQ(client.ask("save"), "error " + folder_.path("mesh.state.new") + ": File too large\r\n");
  EXPECT_THAT(savedIn(folder_).nodes, testing::IsEmpty()) << "the old state";
  EXPECT_FALSE(std::filesystem::exists(folder_.path("mesh.state.new")));
  ASSERT_EQ(0, ::prlimit(server.id(), RLIMIT_FSIZE, &before, nullptr));
  EXPECT_EQ(client.ask("save"), "ok\r\n");
  EXPECT_EQ(savedIn(folder_).nodes.size(), 50u);
}

TEST_F(Serve, EndsAlsoIfItIsTimeToSave) {
  ServeProcess server(arguments({"--save-every", "1"}));
  LineClient client(server.port());
  constexpr int NODES = 2000;
  std::string lines;
  for (int number = 0; number < NODES; ++number) {
    char euid[17];
    std::snprintf(euid, sizeof euid, "%016x", 0x10000u + static_cast<unsigned int>(number));
    lines += "frame " + announcementOf(euid, 1) + "\r\n";
  }
  ASSERT_TRUE(client.send(lines));
  for (int number = 0; number < NODES; ++number) ASSERT_EQ(client.answer(), "ok taken\r\n");

  // While it works on a long answer there come another line and the signal, in whatever order it looks at them; and
  // while it works on the other line, the time to save.
  LineClient other(server.port());
  ASSERT_EQ(other.ask("health " + LAMP), "error there is no node " + LAMP + "\r\n");
  const std::string state = folder_.path("mesh.state");
  std::filesystem::remove(state);
  ASSERT_EQ(client.ask("label 0000000000010000 lamp"), "ok\r\n");
  ASSERT_TRUE(waitUntil([&] { return std::filesystem::exists(state); })) << "and the interval begins";
  const auto aMoment = [] { std::this_thread::sleep_for(std::chrono::milliseconds(50)); };
  client.peer().take();  // the answers so far
  ASSERT_TRUE(client.send("health all xml\r\n"));
  aMoment();
  ASSERT_TRUE(other.send("health all xml\r\n"));
  server.signal(SIGTERM);
  EXPECT_TRUE(waitUntil([&] { return client.peer().take() > 0; }));
  aMoment();
  server.signal(SIGSTOP);
  std::this_thread::sleep_for(std::chrono::milliseconds(1100));  // the interval, which cannot be shorter
  server.signal(SIGCONT);
  EXPECT_EQ(server.status(), 0);
}

TEST_F(Serve, IsNotEndedByASignalThatItsStarterIgnores) {
  ServeProcess server(arguments(), {SIGHUP, SIGINT});
  ASSERT_EQ(LineClient(server.port()).ask("save"), "ok\r\n");
  for (const int signal : {SIGHUP, SIGINT}) {
    server.signal(signal);
    EXPECT_EQ(LineClient(server.port()).ask("save"), "ok\r\n") << signal;
  }
  server.signal(SIGTERM);
  EXPECT_EQ(server.status(), 0);
}

TEST_F(Serve, ADamagedStateIsSaidAndKeptAside) {
  folder_.file("mesh.state", "half a me");
  ServeProcess server(arguments());
  EXPECT_THAT(server.firstLine(), testing::EndsWith(", 0 nodes\n"));
  EXPECT_THAT(server.errors(), StartsWith("vso: " + folder_.path("mesh.state") + ": it"));
  EXPECT_THAT(server.errors(), HasSubstr("it is kept as " + folder_.path("mesh.state.damaged-1")));
  server.signal(SIGTERM);
  EXPECT_EQ(server.status(), 0);
  EXPECT_EQ(test::contentOf(folder_.path("mesh.state.damaged-1")), "half a me");
  EXPECT_TRUE(savedIn(folder_).nodes.empty());
}

TEST_F(Serve, AStateThatCannotBeReadEndsItAndStays) {
  std::filesystem::create_directory(folder_.path("mesh.state"));
  const test::Outcome outcome = test::runProgram({{"serve", "--state", folder_.path(), "--listen", "127.0.0.1:0"}});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.out, "");
  EXPECT_EQ(outcome.err, "vso: " + folder_.path("mesh.state") + ": Is a directory\n");
  EXPECT_TRUE(std::filesystem::is_directory(folder_.path("mesh.state")));
}

TEST_F(Serve, AStateBelowAFileIsRefused) {
  folder_.file("file", "");
  const test::Outcome outcome = test::runProgram({{"serve", "--state", folder_.path("file/state")}});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.err, "vso: " + folder_.path("file/state") + ": Not a directory\n");
}

TEST_F(Serve, TwoOnOneStateAreOneTooMany) {
  ServeProcess first(arguments());
  LineClient client(first.port());
  const test::Outcome second = test::runProgram({{"serve", "--state", folder_.path(), "--listen", "127.0.0.1:0"}});
  EXPECT_EQ(second.status, 1);
  EXPECT_EQ(second.out, "");
  EXPECT_EQ(second.err,
            "vso: " + folder_.path() + ": in use by another process, see " + folder_.path("vso.pid") + "\n");
  EXPECT_EQ(test::contentOf(folder_.path("vso.pid")), std::to_string(first.id()) + "\n");
  EXPECT_EQ(client.ask("save"), "ok\r\n");
}

TEST_F(Serve, APortInUseIsRefused) {
  ServeProcess first(arguments());
  const std::string place = "127.0.0.1:" + std::to_string(first.port());
  const TemporaryDirectory other;
  const test::Outcome second = test::runProgram({{"serve", "--state", other.path(), "--listen", place}});
  EXPECT_EQ(second.status, 1);
  EXPECT_EQ(second.out, "");
  EXPECT_EQ(second.err, "vso: cannot listen at " + place + ": Address already in use\n");
  EXPECT_FALSE(std::filesystem::exists(other.path("mesh.state")));
}

struct Place {
  const char* name;
  const char* place;
  const char* fault;
};

class ServeListen : public Serve, public testing::WithParamInterface<Place> {};

TEST_P(ServeListen, IsAnAddressAndAPort) {
  const test::Outcome outcome =
      test::runProgram({{"serve", "--state", folder_.path("state"), "--listen", GetParam().place}});
  EXPECT_EQ(outcome.status, 2);
  EXPECT_EQ(outcome.out, "");
  EXPECT_EQ(outcome.err, std::string("vso: --listen: ") + GetParam().fault + "\nTry 'vso serve --help'.\n");
  EXPECT_FALSE(std::filesystem::exists(folder_.path("state")));
}

INSTANTIATE_TEST_SUITE_P(Faults, ServeListen,
                         testing::Values(Place{"NoPort", "127.0.0.1", "\"127.0.0.1\" is no address and port"},
                                         Place{"PortAlone", "7410", "\"7410\" is no address and port"},
                                         Place{"NoAddress", ":7410", "\"\" is no address"},
                                         Place{"EmptyPort", "127.0.0.1:", "\"\" is no number"},
                                         Place{"WordAsPort", "127.0.0.1:http", "\"http\" is no number"},
                                         Place{"HighPort", "127.0.0.1:65536", "\"65536\" is out of range, 0..65535"},
                                         Place{"NegativePort", "127.0.0.1:-1", "\"-1\" is out of range, 0..65535"},
                                         Place{"Name", "localhost:7410", "\"localhost\" is no address"},
                                         Place{"EmptyBrackets", "[]:7410", "\"[]\" is no address"},
                                         Place{"OpenBracket", "[::1:7410", "\"[::1\" is no address"},
                                         Place{"BracketsWithoutPort", "[::1]", "\"[:\" is no address"}),
                         [](const auto& row) { return row.param.name; });

TEST_F(Serve, ListensOnLoopbackUnlessToldOtherwise) {
  ServeProcess server({"--state", folder_.path()});
  const std::string line = server.firstLine();
  if (line.empty()) {  // somebody else is there
    EXPECT_EQ(server.errors(), "vso: cannot listen at 127.0.0.1:7410: Address already in use\n");
  } else {
    EXPECT_THAT(line, StartsWith("listening at 127.0.0.1:7410 (this machine alone), "));
  }
}

TEST_F(Serve, NeedsAStateAndASensibleInterval) {
  EXPECT_EQ(test::runProgram({{"serve"}}).status, 2);
  const test::Outcome nowhere = test::runProgram({{"serve", "--state", ""}});
  EXPECT_EQ(nowhere.status, 2);
  EXPECT_THAT(nowhere.err, StartsWith("vso: --state: an empty path\n"));
  for (const char* const seconds : {"0", "86401", "-1", "soon"}) {
    const test::Outcome outcome = test::runProgram({{"serve", "--state", folder_.path(), "--save-every", seconds}});
    EXPECT_EQ(outcome.status, 2) << seconds;
    EXPECT_THAT(outcome.err, StartsWith("vso: --save-every: ")) << seconds;
  }
}

TEST_F(Serve, HelpTellsOfEveryCommand) {
  const test::Outcome outcome = test::runProgram({{"serve", "--help"}});
  EXPECT_EQ(outcome.status, 0);
  for (const char* const use :
       {"  help\n", "  frame TIME EUID SHORT PROFILE CLUSTER HEX\n", "  nodes\n", "  node EUID [json|xml|any]\n",
        "  health EUID|all [json|xml|any]\n", "  reset EUID COUNTER...\n", "  label EUID NAME...\n",
        "  build EUID GROUP COMMAND [--ARGUMENT VALUE]...\n", "  save\n", "--listen", "--state", "--save-every"}) {
    EXPECT_THAT(outcome.out, HasSubstr(use));
  }
}

TEST_F(Serve, ListensOnTheOtherFamilysLoopbackToo) {
  ServeProcess server({"--listen", "[::1]:0", "--state", folder_.path()});
  if (server.port() == 0 && server.errors().find("Cannot assign requested address") != std::string::npos) {
    GTEST_SKIP() << "no IPv6 here: " << server.errors();
  }
  ASSERT_NE(server.port(), 0) << server.errors();
  EXPECT_EQ(server.firstLine(), "listening at [::1]:" + std::to_string(server.port()) +
                                    " (this machine alone), state in " + folder_.path("mesh.state") + ", 0 nodes\n");
  LineClient client(server.port(), "::1");
  EXPECT_EQ(client.ask("nodes"), "block 0\r\n");
}

TEST_F(Serve, WarnsWhereOthersCanReachIt) {
  ServeProcess server({"--listen", "0.0.0.0:0", "--state", folder_.path()});
  const std::string place = "0.0.0.0:" + std::to_string(server.port());
  EXPECT_EQ(server.firstLine(), "listening at " + place + ", state in " + folder_.path("mesh.state") + ", 0 nodes\n");
  EXPECT_EQ(server.errors(), "vso: whoever reaches " + place + " can change the mesh\n");
  EXPECT_EQ(LineClient(server.port()).ask("nodes"), "block 0\r\n");
}

TEST_F(Serve, AnswersPipelinedLinesInTheirOrder) {
  ServeProcess server(arguments());
  LineClient client(server.port());
  ASSERT_EQ(client.ask("frame " + announcementOf(LAMP, 1)), "ok taken\r\n");
  std::string lines;
  for (int i = 0; i < 1000; ++i) lines += "label " + LAMP + " " + std::to_string(i) + "\r\nnodes\r\nsing\r\n";
  ASSERT_TRUE(client.send(lines));
  for (int i = 0; i < 1000; ++i) {
    ASSERT_EQ(client.answer(), "ok\r\n");
    ASSERT_EQ(client.answer(), "block 1\r\n" + LAMP + " 0x1a2b online " + std::to_string(i) + "\r\n");
    ASSERT_EQ(client.answer(), "error there is no command \"sing\": say help\r\n");
  }
}

TEST_F(Serve, MalformedFramesLeaveEveryNodeAsItWas) {
  const char* const recordings = std::getenv("VSO_FRAMES_DIR");
  if (recordings == nullptr) GTEST_SKIP() << "VSO_FRAMES_DIR names no folder with recorded frames";
  std::ifstream file(std::string(recordings) + "/malformed.jsonl");
  ASSERT_TRUE(file.is_open());
  std::vector<std::string> frames;
  for (std::string line; std::getline(file, line);) {
    const auto json = nlohmann::json::parse(line);
    const std::string hex = json["hex"];
    if (hex.empty()) continue;
    frames.push_back(" 0x1a2b " + json["profile"].get<std::string>() + " " + json["cluster"].get<std::string>() + " " +
                     hex);
  }
  ASSERT_GT(frames.size(), 100u);

  // One node takes all of them, so that it is known which are broken; another takes those.
  const std::string other = "0011223344556678";
  const std::string bystander = "0011223344556679";
  const std::string now = std::to_string(std::time(nullptr));
  ServeProcess server(arguments());
  LineClient client(server.port());
  ASSERT_EQ(client.ask("frame " + announcementOf(LAMP, 1, now, "0x1a2b")), "ok taken\r\n");
  ASSERT_EQ(client.ask("frame " + announcementOf(other, 1, now, "0x1a2c")), "ok taken\r\n");
  ASSERT_EQ(client.ask("frame " + announcementOf(bystander, 1, now, "0x1a2d")), "ok taken\r\n");
  const std::string otherBefore = client.ask("node " + other + " xml");
  const std::string bystanderBefore = client.ask("node " + bystander + " xml");
  ASSERT_THAT(otherBefore, StartsWith("block "));

  std::vector<std::string> lines;
  for (const std::string& frame : frames) lines.push_back(now + " " + LAMP + frame);
  ASSERT_TRUE(client.send(fed(lines)));
  std::vector<std::string> broken;
  for (const std::string& frame : frames) {
    const std::string answer = client.answer();
    ASSERT_THAT(answer, testing::AnyOf("ok broken\r\n", "ok heard\r\n", "ok taken\r\n")) << frame;
    if (answer == "ok broken\r\n") broken.push_back(frame);
  }
  EXPECT_GT(broken.size(), frames.size() / 2);

  lines.clear();
  for (int round = 0; round < 20; ++round) {
    for (const std::string& frame : broken) lines.push_back(std::to_string(std::time(nullptr)) + " " + other + frame);
  }
  ASSERT_TRUE(client.send(fed(lines)));
  for (const std::string& line : lines) ASSERT_EQ(client.answer(), "ok broken\r\n") << line;
  EXPECT_EQ(client.ask("node " + other + " xml"), otherBefore);
  EXPECT_EQ(client.ask("node " + bystander + " xml"), bystanderBefore);
  EXPECT_THAT(client.ask("health all xml"), StartsWith("block "));
  EXPECT_THAT(client.ask("nodes"), StartsWith("block 3\r\n"));
  server.signal(SIGTERM);
  EXPECT_EQ(server.status(), 0);
  EXPECT_EQ(server.errors(), "");
}

TEST_F(Serve, TruncatedAnnouncementsLeaveEveryNodeAsItWas) {
  const std::vector<std::string> day = meshDay(std::time(nullptr));
  std::map<std::string, std::string> last;  // the last announcement of each node that is whole
  ServeProcess server(arguments());
  LineClient client(server.port());
  ASSERT_TRUE(client.send(fed(day)));
  for (const std::string& line : day) {
    const std::string answer = client.answer();
    if (answer == "ok taken\r\n" && wordsOf(line).at(3) == "0xc25f") last[euidOf(line)] = line;
  }
  ASSERT_EQ(last.size(), 12u);
  // Once more as the last thing that each has said.
  for (const auto& [node, line] : last) {
    std::string late = std::to_string(std::time(nullptr)) + line.substr(line.find(' '));
    ASSERT_EQ(client.ask("frame " + late), "ok taken\r\n");
    last[node] = late;
  }
  std::map<std::string, std::string> before;
  for (const auto& [node, line] : last) before[node] = client.ask("node " + node + " xml");

  std::vector<std::string> lines;
  for (const auto& [node, line] : last) {
    for (std::size_t digits = line.size() - line.rfind(' ') - 1; digits > 2; digits -= 2) {
      lines.push_back(line.substr(0, line.rfind(' ') + digits - 1));
    }
  }
  ASSERT_GT(lines.size(), 500u);
  ASSERT_TRUE(client.send(fed(lines)));
  int broken = 0;
  for (const std::string& line : lines) {
    const std::string answer = client.answer();
    // One that ends between two attributes is whole, and says what the node has said before.
    ASSERT_THAT(answer, testing::AnyOf("ok broken\r\n", "ok taken\r\n")) << line;
    broken += answer == "ok broken\r\n" ? 1 : 0;
  }
  EXPECT_GT(broken, static_cast<int>(lines.size() / 2));
  for (const auto& [node, xml] : before) EXPECT_EQ(client.ask("node " + node + " xml"), xml) << node;
}

TEST_F(Serve, ACrowdBeyondTheDescriptorsIsSentAwayAndLeavesAServer) {
  rlimit before{};
  ASSERT_EQ(0, ::getrlimit(RLIMIT_NOFILE, &before));
  rlimit few = before;
  few.rlim_cur = 40;
  ASSERT_EQ(0, ::setrlimit(RLIMIT_NOFILE, &few));  // which the server takes over
  ServeProcess server(arguments());
  ASSERT_EQ(0, ::setrlimit(RLIMIT_NOFILE, &before));
  LineClient good(server.port());
  ASSERT_EQ(good.ask("save"), "ok\r\n");
  {
    std::vector<std::unique_ptr<test::LoopbackPeer>> crowd;
    for (int i = 0; i < 100; ++i) crowd.push_back(std::make_unique<test::LoopbackPeer>(server.port()));
    EXPECT_TRUE(waitUntil([&] { return crowd.back()->isEnded(); }));
    EXPECT_EQ(good.ask("save"), "ok\r\n");
  }
  // The last of them have gone when there is room again.
  EXPECT_TRUE(waitUntil([&] { return LineClient(server.port()).ask("save") == "ok\r\n"; }));
  EXPECT_EQ(server.errors(), "");
}

/// The descriptors that a process has open, numbered without gaps.
rlim_t descriptorsOf(pid_t process) {
  const std::filesystem::directory_iterator open("/proc/" + std::to_string(process) + "/fd");
  return static_cast<rlim_t>(std::distance(begin(open), end(open)));
}

TEST_F(Serve, ListensAgainAfterAnAcceptThatFailed) {
  ServeProcess server(arguments());
  const std::uint16_t port = server.port();
  LineClient before(port);
  ASSERT_EQ(before.ask("frame " + announcementOf(LAMP, 1)), "ok taken\r\n");

  rlimit enough{};
  ASSERT_EQ(0, ::prlimit(server.id(), RLIMIT_NOFILE, nullptr, &enough));
  const rlimit none{descriptorsOf(server.id()), enough.rlim_max};
  ASSERT_EQ(0, ::prlimit(server.id(), RLIMIT_NOFILE, &none, nullptr));
  const test::LoopbackPeer unlucky(port);
  EXPECT_TRUE(waitUntil([&] { return server.errors() == "vso: cannot accept: Too many open files; listening anew\n"; }))
      << server.errors();
  const rlimit standards{3, enough.rlim_max};
  ASSERT_EQ(0, ::prlimit(server.id(), RLIMIT_NOFILE, &standards, nullptr));
  const std::string again = "cannot listen at 127.0.0.1:" + std::to_string(port) + ": Too many open files\n";
  EXPECT_TRUE(waitUntil([&] { return server.errors().find(again) != std::string::npos; })) << server.errors();
  ASSERT_EQ(0, ::prlimit(server.id(), RLIMIT_NOFILE, &enough, nullptr));

  EXPECT_TRUE(waitUntil([&] { return before.peer().isEnded(); })) << "its clients have to come again";
  EXPECT_TRUE(waitUntil([&] { return LineClient(port).ask("nodes").rfind("block 1\r\n", 0) == 0; }));
  server.signal(SIGTERM);
  EXPECT_EQ(server.status(), 0);
}

int countOf(const std::string& part, const std::string& text) {
  int count = 0;
  for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + part.size())) ++count;
  return count;
}

TEST_F(Serve, AnswersAllThatAClientAsksForAtOnce) {
  ServeProcess server(arguments());
  LineClient client(server.port());
  const std::vector<std::string> day = meshDay(std::time(nullptr));
  ASSERT_TRUE(client.send(fed(day)));
  for (std::size_t i = 0; i < day.size(); ++i) ASSERT_EQ(client.answer().rfind("ok ", 0), 0U);

  // Far more than the library keeps for a client.
  constexpr int QUESTIONS = 60;
  std::string questions;
  for (int i = 0; i < QUESTIONS; ++i) questions += "health all xml\r\nlabel " + LAMP + "\r\n\r\n";
  ASSERT_TRUE(client.send(questions + "nodes\r\n"));
  client.peer().endSending();
  std::size_t size = 0;
  for (int i = 0; i < QUESTIONS; ++i) {
    const std::string report = client.answer();
    ASSERT_THAT(report, testing::EndsWith("\r\n</health>\r\n")) << i;
    ASSERT_EQ(client.answer(), "error usage: label EUID NAME...\r\n") << i;
    size += report.size();
  }
  EXPECT_GT(size, std::size_t{4} << 20);
  EXPECT_THAT(client.answer(), StartsWith("block 12\r\n"));
  EXPECT_TRUE(waitUntil([&] { return client.peer().isEnded(); }));
}

TEST_F(Serve, HostileClientsDisturbNobody) {
  ServeProcess server(arguments());
  const std::uint16_t port = server.port();
  LineClient good(port);
  ASSERT_EQ(good.ask("frame " + announcementOf(LAMP, 1)), "ok taken\r\n");

  // One stays in the middle of a line.
  LineClient half(port);
  ASSERT_TRUE(half.send("label " + LAMP + " ha"));
  EXPECT_EQ(good.ask("save"), "ok\r\n");

  // One never ends its line, and is sent away.
  LineClient endless(port);
  endless.send(std::string(70'000, 'x'));
  EXPECT_TRUE(waitUntil([&] { return endless.peer().isEnded(); }));
  EXPECT_EQ(good.ask("save"), "ok\r\n");

  // One asks and asks, and does not read.
  constexpr int SMALL = 4096;
  constexpr int QUESTIONS = 1000;
  test::LoopbackPeer deaf(port, "127.0.0.1", SMALL);
  std::string questions;
  for (int i = 0; i < QUESTIONS; ++i) questions += "health all xml\r\n";
  ASSERT_TRUE(deaf.send(questions));
  EXPECT_EQ(good.ask("save"), "ok\r\n");

  // One breaks off with its answers under way.
  LineClient fleeing(port);
  ASSERT_TRUE(fleeing.send("node " + LAMP + " xml\r\nhealth all xml\r\nhelp\r\n"));
  fleeing.peer().reset();

  // Who did not read may do so later.
  EXPECT_TRUE(waitUntil([&] { return countOf("\r\n</health>\r\n", deaf.received()) == QUESTIONS; }));

  // Empty lines are passed over.
  ASSERT_TRUE(good.send("\r\n\r\n"));
  EXPECT_EQ(good.ask("save"), "ok\r\n");
  // Who waited in the middle of a line may end it.
  EXPECT_EQ(half.ask("lf a lamp"), "ok\r\n");
  EXPECT_EQ(good.ask("nodes"), "block 1\r\n" + LAMP + " 0x1a2b online half a lamp\r\n");
  EXPECT_TRUE(server.isRunning());
  EXPECT_EQ(server.errors(), "");
}

}  // namespace
}  // namespace qx::app
