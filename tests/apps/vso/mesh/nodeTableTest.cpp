#include "apps/vso/mesh/nodeTable.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <ctime>
#include <string>

#include "support/LogCapture.h"
#include "tests/apps/vso/mesh/MeshFrames.h"

namespace qx::app {
namespace {

using namespace test_mesh;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

const Device DOOR{"0017880100a00012", 0x0042};

/// A lamp that starts often and loses routes, a door that nothing is known of, and a sensor that is asleep.
class NodeTableTest : public testing::Test {
 protected:
  NodeTableTest() {
    const std::time_t now = std::time(nullptr);
    mesh_.take(announcement(now - 600, LAMP, 1));
    for (unsigned int boot = 2; boot <= 26; ++boot) mesh_.take(announcement(now - 500, LAMP, boot));
    for (int i = 0; i < 60; ++i) mesh_.take(networkStatus(now - 400, LAMP, 0x0C, 0));
    mesh_.take(announcementOfType(now - 300, SENSOR, 4));
    mesh_.take(frameOf(now - 300, DOOR, ANNOUNCE_PROFILE, 0x0001, "18 05 0a 0c 00 20 14"));
    mesh_.look(now);
  }

  test::LogCapture log_;
  MeshServer mesh_{std::time(nullptr) - 600};
};

TEST_F(NodeTableTest, HasALineForEachNode) {
  mesh_.node(LAMP.id())->label("Hall");
  EXPECT_EQ(nodeTable(mesh_, false),
            "NAME              TYPE               ADDRESS  SIGNAL  STATE   REBOOTS      INBOUND FAILURES  "
            "OUTBOUND FAILURES\n"
            "Hall              Router             0x1c02   |||.    online  25/day red   60/h yellow       "
            "0/h green\n"
            "0017880100a00011  Sleepy End Device  0x2d11   ?       asleep  0/day green  0/h green         "
            "0/h green\n"
            "0017880100a00012  Unknown            0x0042   ?       online  0/day green  0/h green         "
            "0/h green\n");
}

TEST_F(NodeTableTest, ShowsTheLightsInColour) {
  const std::string coloured = nodeTable(mesh_, true);
  EXPECT_THAT(coloured, HasSubstr("online  \x1b[31m25/day red\x1b[0m   \x1b[33m60/h yellow\x1b[0m       "
                                  "\x1b[32m0/h green\x1b[0m\n"));
  std::string plain;
  for (std::size_t at = 0; at < coloured.size(); ++at) {
    if (coloured[at] == '\x1b') {
      at = coloured.find('m', at);
    } else {
      plain += coloured[at];
    }
  }
  EXPECT_EQ(plain, nodeTable(mesh_, false));
}

TEST_F(NodeTableTest, ShowsTheBars) {
  const char* const bars[] = {"....", "|...", "||..", "|||.", "||||", "||||"};
  for (int strength = 0; strength < 6; ++strength) {
    mesh_.node(LAMP.id())->signalStrength(static_cast<signed char>(strength));
    EXPECT_THAT(nodeTable(mesh_, false), HasSubstr(std::string("0x1c02   ") + bars[strength] + "    online"));
  }
  mesh_.node(LAMP.id())->signalStrength(-1);
  EXPECT_THAT(nodeTable(mesh_, false), HasSubstr("0x1c02   ?       online"));
}

TEST_F(NodeTableTest, ShowsNamesThatATerminalWouldObeyAsText) {
  mesh_.node(LAMP.id())->label(
      "\x1b[2JK\xc3\xbc"
      "che\n");
  const std::string table = nodeTable(mesh_, false);
  EXPECT_THAT(table, HasSubstr("\n\\x1b[2JK\xc3\xbc"
                               "che\\n    Router "));
  for (const char c : table) EXPECT_TRUE(c == '\n' || c < 0 || (c >= ' ' && c <= '~')) << static_cast<int>(c);
}

TEST_F(NodeTableTest, CutsALongName) {
  const std::string umlaut = "\xc3\xbc";
  std::string name;
  for (int i = 0; i < 32; ++i) name += umlaut;
  const std::string heading = "NAME" + std::string(30, ' ') + "TYPE ";
  mesh_.node(LAMP.id())->label(name);
  EXPECT_THAT(nodeTable(mesh_, false), HasSubstr("\n" + name + "  Router "));
  EXPECT_THAT(nodeTable(mesh_, false), StartsWith(heading));
  mesh_.node(LAMP.id())->label(name + "x");
  EXPECT_THAT(nodeTable(mesh_, false), HasSubstr("\n" + name.substr(0, 29 * umlaut.size()) + "...  Router "));
  EXPECT_THAT(nodeTable(mesh_, false), StartsWith(heading));
}

TEST_F(NodeTableTest, MakesNewReports) {
  EXPECT_THAT(nodeTable(mesh_, false), HasSubstr(" 60/h yellow "));
  mesh_.node(LAMP.id())->resetManyToOneRouteFailures();
  EXPECT_THAT(nodeTable(mesh_, false), Not(HasSubstr(" 60/h yellow ")));
}

TEST(EmptyNodeTable, HasItsHeadingsAlone) {
  MeshServer mesh(NOON);
  EXPECT_EQ(nodeTable(mesh, false),
            "NAME  TYPE  ADDRESS  SIGNAL  STATE  REBOOTS  INBOUND FAILURES  OUTBOUND FAILURES\n");
}

}  // namespace
}  // namespace qx::app
