#include "apps/vso/mesh/MeshServer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <ctime>
#include <memory>
#include <numeric>
#include <string>
#include <vector>

#include "qxshared/hexStr.h"
#include "support/LogCapture.h"
#include "tests/apps/vso/mesh/MeshFrames.h"
#include "tests/vso/mesh/Records.h"
#include "tests/vso/zcl/MetricsGateway.h"
#include "vso/proto/ZigbeeNodePBuf.pb.h"
#include "vso/serial/vsoProtobufHelpers.h"
#include "vso/zcl/QxZclAnnounce.h"
#include "vso/zcl/getHostName.h"

namespace qx::app {
namespace {

using namespace test_mesh;
using test::messageOf;
using test::sameMessage;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using Outcome = MeshServer::Outcome;

constexpr std::time_t HOUR = 3600;
constexpr std::time_t DAY = 24 * HOUR;

class MeshServerTest : public testing::Test {
 protected:
  Outcome take(const RecordedFrame& frame) { return mesh_.take(frame); }
  ZigbeeNode& node(const Device& device) {
    ZigbeeNode* const found = mesh_.node(device.id());
    if (found == nullptr) throw std::runtime_error("no node " + device.euid);
    return *found;
  }
  const Zap& zap(const Device& device) const { return mesh_.zaps().at(device.id()); }

  test::LogCapture log_;
  MeshServer mesh_{NOON};
};

TEST_F(MeshServerTest, BeginsEmpty) {
  EXPECT_THAT(mesh_.nodes(), IsEmpty());
  EXPECT_THAT(mesh_.zaps(), IsEmpty());
  EXPECT_EQ(mesh_.counts().total(), 0U);
  EXPECT_EQ(mesh_.node(LAMP.id()), nullptr);
}

TEST_F(MeshServerTest, MakesANodeOfAnAnnouncementWithAllThatItSays) {
  EXPECT_EQ(take(announcement(NOON, LAMP, 12)), Outcome::TAKEN);
  ASSERT_THAT(mesh_.nodes(), SizeIs(1));
  const ZigbeeNode& lamp = node(LAMP);
  EXPECT_EQ(lamp.lid().toString(), LAMP.euid);
  EXPECT_EQ(lamp.sid(), 0x1C02);
  EXPECT_EQ(lamp.deviceType(), 2);
  EXPECT_EQ(lamp.fwVer(), "1.2.3");
  EXPECT_EQ(lamp.reflashProfile(), 7);
  EXPECT_EQ(lamp.bootCount(), 12);
  EXPECT_EQ(lamp.product(), "qx:lamp");
  EXPECT_EQ(lamp.apPollInterval(), 300);
  EXPECT_EQ(lamp.channel(), 20);
  EXPECT_EQ(lamp.parentPollInterval(), 3600);
  ASSERT_EQ(lamp.numOfAps(), 2U);
  EXPECT_EQ(lamp.getAp(0).destination_, 0x7A01);
  EXPECT_EQ(lamp.getAp(1).destination_, 0x0000);
  EXPECT_TRUE(lamp.hasRssi());
  EXPECT_EQ(lamp.rssi(), -60);
  EXPECT_TRUE(lamp.hasRxLqi());
  EXPECT_EQ(lamp.rxLqi(), 240);
  EXPECT_TRUE(lamp.hasBatteryLevel());
  EXPECT_EQ(lamp.batteryLevel(), 80);
  EXPECT_TRUE(lamp.hasRadioBars());
  EXPECT_EQ(lamp.radioBars(), 3);
  EXPECT_EQ(lamp.signalStrength(), 3) << "the device's own word";
  EXPECT_TRUE(lamp.isOnline());
  EXPECT_TRUE(lamp.isAwake());
  EXPECT_EQ(lamp.lastContact(), NOON);
  EXPECT_EQ(lamp.reboots(), 0) << "what came before is not known";
  EXPECT_TRUE(lamp.defaultLabel());
}

TEST_F(MeshServerTest, MakesANodeOfTheLibrarysOwnAnnouncement) {
  QxZclAnnounce announce(1, 2, 3,
                         "\x03"
                         "1.0",
                         "qx:fan");
  RecordedFrame frame = frameOf(NOON, LAMP, ANNOUNCE_PROFILE, 0x0001, "");
  frame.bytes = announce;
  EXPECT_EQ(take(frame), Outcome::TAKEN);
  EXPECT_EQ(node(LAMP).product(), "qx:fan");
  EXPECT_EQ(node(LAMP).fwVer(), "1.0");
  EXPECT_EQ(node(LAMP).bootCount(), 2);
  EXPECT_EQ(node(LAMP).reflashProfile(), 3);
}

TEST_F(MeshServerTest, LeavesWhatAnAnnouncementDoesNotSayAsItWas) {
  take(announcement(NOON, LAMP, 12));
  const auto before = messageOf(node(LAMP));
  EXPECT_EQ(take(frameOf(NOON + 5, LAMP, ANNOUNCE_PROFILE, 0x0001, "18 06 0a 0c 00 20 19")), Outcome::TAKEN);
  before->set_channel(25);
  before->mutable_lastcontact()->set_seconds(NOON + 5);
  EXPECT_TRUE(sameMessage(*messageOf(node(LAMP)), *before));
}

TEST_F(MeshServerTest, FindsTheBarsByQualityAndStrengthOfTheSignal) {
  take(frameOf(NOON, LAMP, ANNOUNCE_PROFILE, 0x0001, "18 05 0a 13 00 28 c4 14 00 20 f0"));
  EXPECT_EQ(node(LAMP).signalStrength(), 4);
  take(frameOf(NOON, LAMP, ANNOUNCE_PROFILE, 0x0001, "18 06 0a 13 00 28 ba"));  // -70 dBm
  EXPECT_EQ(node(LAMP).signalStrength(), 3);
  take(frameOf(NOON, SENSOR, ANNOUNCE_PROFILE, 0x0001, "18 05 0a 0c 00 20 14"));
  EXPECT_EQ(node(SENSOR).signalStrength(), -1) << "nothing is known";
}

TEST_F(MeshServerTest, TakesReportsAloneForAnnouncements) {
  const char* const others[] = {
      "18 05 00 06 00",              // reading of an attribute
      "18 05 01 06 00 00 21 0c 00",  // the answer to it
      "19 05 0a 06 00 21 0c 00",     // the cluster's own command of that number
  };
  for (const char* const hex : others) {
    EXPECT_EQ(take(frameOf(NOON, LAMP, ANNOUNCE_PROFILE, 0x0001, hex)), Outcome::STRANGER) << hex;
  }
  EXPECT_THAT(mesh_.nodes(), IsEmpty());
  take(announcement(NOON, LAMP, 11));
  for (const char* const hex : others) {
    EXPECT_EQ(take(frameOf(NOON + 9, LAMP, ANNOUNCE_PROFILE, 0x0001, hex)), Outcome::HEARD) << hex;
  }
  EXPECT_EQ(node(LAMP).bootCount(), 11);
  EXPECT_EQ(node(LAMP).reboots(), 0);
  EXPECT_EQ(node(LAMP).lastContact(), NOON + 9);
}

TEST_F(MeshServerTest, CountsRebootsByTheDevicesOwnCount) {
  const struct {
    unsigned int before;
    unsigned int now;
    int reboots;
    const char* what;
  } rows[] = {
      {12, 12, 0, "the same"},     {12, 13, 1, "one more"},      {12, 15, 3, "some announcements were missed"},
      {0xFFFE, 1, 3, "it wraps"},  {0xFFFF, 0, 1, "it wraps"},   {12, 28, 16, "as many as may be missed"},
      {12, 29, 1, "a new device"}, {12, 11, 1, "it has fallen"}, {300, 1, 1, "it was reset"},
  };
  for (const auto& row : rows) {
    MeshServer mesh(NOON);
    mesh.take(announcement(NOON, LAMP, row.before));
    mesh.take(announcement(NOON + 60, LAMP, row.now));
    const ZigbeeNode& lamp = *mesh.node(LAMP.id());
    EXPECT_EQ(lamp.reboots(), row.reboots) << row.what;
    EXPECT_EQ(lamp.rebootsHistogram().totalEvents(), row.reboots) << row.what;
    EXPECT_EQ(lamp.bootCount(), row.now) << row.what;
    EXPECT_EQ(lamp.rebootsHistogram().lastEvent(), posixTimeOf(row.reboots == 0 ? NOON : NOON + 60)) << row.what;
  }
}

TEST_F(MeshServerTest, CountsNoRebootsBeforeACountIsTold) {
  take(announcementOfType(NOON, LAMP, 2));
  take(announcement(NOON + 60, LAMP, 7));
  EXPECT_EQ(node(LAMP).reboots(), 0);
  EXPECT_EQ(node(LAMP).bootCount(), 7);
  take(announcementOfType(NOON + 120, LAMP, 2));
  take(announcement(NOON + 180, LAMP, 9));
  EXPECT_EQ(node(LAMP).reboots(), 2);
}

TEST_F(MeshServerTest, PassesOverACountThatIsOvertaken) {
  const struct {
    std::time_t after;
    unsigned int count;
    int reboots;
    unsigned int known;
    const char* what;
  } rows[] = {
      {0, 4, 0, 5, "at once"},
      {59, 4, 0, 5, "just in time"},
      {60, 4, 1, 4, "too late for that: it was reset"},
      {59, 65525, 0, 5, "as far behind as may be"},
      {59, 65524, 1, 65524, "further behind"},
  };
  for (const auto& row : rows) {
    MeshServer mesh(NOON);
    mesh.take(announcement(NOON, LAMP, 5));
    mesh.take(announcement(NOON + row.after, LAMP, row.count));
    const ZigbeeNode& lamp = *mesh.node(LAMP.id());
    EXPECT_EQ(lamp.reboots(), row.reboots) << row.what;
    EXPECT_EQ(lamp.bootCount(), row.known) << row.what;
  }
  take(announcement(NOON, LAMP, 5));
  for (const unsigned int count : {6, 5, 6, 5, 6, 7}) take(announcement(NOON + 1, LAMP, count));
  EXPECT_EQ(node(LAMP).reboots(), 2);
}

TEST_F(MeshServerTest, TurnsNothingBackForALateFrame) {
  constexpr unsigned int FAILURES = 40;
  take(announcement(NOON, LAMP, 1));
  take(announcement(NOON, SENSOR, 1));
  for (unsigned int i = 0; i < FAILURES; ++i) {
    take(networkStatus(NOON + 5 * HOUR, LAMP, 0x0C, 0));
    take(networkStatus(NOON + 5 * HOUR, LAMP, 0x0B, SENSOR.address));
  }
  take(announcement(NOON + 3 * DAY, SENSOR, 2));
  for (const std::time_t late : {NOON + HOUR, NOON - HOUR, std::time_t{0}}) {
    EXPECT_EQ(take(networkStatus(late, LAMP, 0x0C, 0)), Outcome::TAKEN);
    EXPECT_EQ(take(networkStatus(late, LAMP, 0x0B, SENSOR.address)), Outcome::TAKEN);
    EXPECT_EQ(take(announcement(late, SENSOR, 30)), Outcome::TAKEN);
  }
  EXPECT_EQ(node(LAMP).lastContact(), NOON + 5 * HOUR);
  EXPECT_EQ(node(SENSOR).lastContact(), NOON + 3 * DAY);
  const BPosixTime later = posixTimeOf(NOON + 6 * HOUR);
  MessageFailHistogram inbound = node(LAMP).manyToOneRouteFailuresHistogram();
  EXPECT_EQ(inbound.lastEvent(), posixTimeOf(NOON + 5 * HOUR));
  inbound.update(later);
  EXPECT_EQ(inbound.totalEvents(), FAILURES + 3);
  MessageFailHistogram outbound = node(SENSOR).sourceRouteFailuresHistogram();
  EXPECT_EQ(outbound.lastEvent(), posixTimeOf(NOON + 5 * HOUR));
  outbound.update(later);
  EXPECT_EQ(outbound.totalEvents(), FAILURES + 3);
  EXPECT_EQ(node(SENSOR).rebootsHistogram().lastEvent(), posixTimeOf(NOON + 3 * DAY));
  EXPECT_EQ(node(SENSOR).reboots(), 2) << "one, and the device that was replaced";
}

TEST_F(MeshServerTest, TakesNothingFromATruncatedAnnouncement) {
  take(announcement(NOON, LAMP, 12));
  const auto before = messageOf(node(LAMP));
  const std::vector<std::string> pieces = announcementPieces(14);
  std::vector<unsigned int> ends;  // of records; a frame that ends there is whole
  std::string all;
  for (const std::string& piece : pieces) {
    all += piece;
    ends.push_back(test::bytesOf(all).length_);
  }
  const unsigned int length = ends.back();
  RecordedFrame frame = frameOf(NOON + 60, LAMP, ANNOUNCE_PROFILE, 0x0001, all);
  std::size_t broken = 0;
  for (unsigned int cut = 0; cut < length; ++cut) {
    if (std::find(ends.begin(), ends.end(), cut) != ends.end()) continue;
    frame.bytes.length_ = cut;
    EXPECT_EQ(take(frame), Outcome::BROKEN) << cut;
    EXPECT_TRUE(sameMessage(*messageOf(node(LAMP)), *before)) << cut;
    RecordedFrame strangers = frame;
    strangers.source = NOBODY.id();
    EXPECT_EQ(take(strangers), Outcome::BROKEN) << cut;
    broken += 2;
  }
  EXPECT_THAT(mesh_.nodes(), SizeIs(1));
  EXPECT_EQ(mesh_.counts().broken, broken);
  EXPECT_EQ(broken, 2 * (length - (ends.size() - 1)));
}

TEST_F(MeshServerTest, KeepsNeighboursOnceTheTableIsWhole) {
  take(announcement(NOON, LAMP, 1));
  EXPECT_EQ(take(neighbourPage(NOON + 1, LAMP, pageOf(5, 0, {neighbourRow(0x20), neighbourRow(0x21)}))),
            Outcome::TAKEN);
  EXPECT_EQ(neighboursOf(node(LAMP)), "");
  take(neighbourPage(NOON + 2, LAMP, pageOf(5, 2, {neighbourRow(0x22), neighbourRow(0x23)})));
  EXPECT_EQ(neighboursOf(node(LAMP)), "");
  take(neighbourPage(NOON + 3, LAMP, pageOf(5, 4, {neighbourRow(0x24)})));
  EXPECT_EQ(neighboursOf(node(LAMP)), "20:32 21:33 22:34 23:35 24:36");
  EXPECT_EQ(node(LAMP).lastContact(), NOON + 3);
  const Hop& hop = node(LAMP).getHop(static_cast<unsigned short>(0x1A22));
  EXPECT_EQ(hop.neighbor_lid_.toString(), "0017880100a00022");
  EXPECT_EQ(hop.tree_depth_, 1);

  take(neighbourPage(NOON + 4, LAMP, pageOf(2, 0, {neighbourRow(0x30)})));
  EXPECT_EQ(neighboursOf(node(LAMP)), "20:32 21:33 22:34 23:35 24:36") << "until the next table is whole";
  take(neighbourPage(NOON + 5, LAMP, pageOf(2, 1, {neighbourRow(0x31)})));
  EXPECT_EQ(neighboursOf(node(LAMP)), "30:48 31:49");
  take(neighbourPage(NOON + 6, LAMP, pageOf(2, 1, {neighbourRow(0x31)})));
  EXPECT_EQ(neighboursOf(node(LAMP)), "30:48 31:49") << "a page twice";
  take(neighbourPage(NOON + 7, LAMP, pageOf(0, 0, {})));
  EXPECT_EQ(neighboursOf(node(LAMP)), "") << "an empty table";
}

TEST_F(MeshServerTest, KeepsTheTablesOfNodesApart) {
  take(announcement(NOON, LAMP, 1));
  take(announcement(NOON, SENSOR, 1));
  take(neighbourPage(NOON, LAMP, pageOf(2, 0, {neighbourRow(0x20)})));
  take(neighbourPage(NOON, SENSOR, pageOf(2, 0, {neighbourRow(0x30)})));
  take(routePage(NOON, LAMP, pageOf(2, 0, {routeRow(0x40)})));
  take(neighbourPage(NOON, SENSOR, pageOf(2, 1, {neighbourRow(0x31)})));
  take(neighbourPage(NOON, LAMP, pageOf(2, 1, {neighbourRow(0x21)})));
  take(routePage(NOON, LAMP, pageOf(2, 1, {routeRow(0x41)})));
  EXPECT_EQ(neighboursOf(node(LAMP)), "20:32 21:33");
  EXPECT_EQ(neighboursOf(node(SENSOR)), "30:48 31:49");
  EXPECT_EQ(routesOf(node(LAMP)), "6720>6976 6721>6977");
}

TEST_F(MeshServerTest, DropsATableWithAGap) {
  take(announcement(NOON, LAMP, 1));
  take(neighbourPage(NOON, LAMP, pageOf(3, 0, {neighbourRow(0x20)})));
  take(neighbourPage(NOON, LAMP, pageOf(3, 2, {neighbourRow(0x22)})));
  take(neighbourPage(NOON, LAMP, pageOf(3, 1, {neighbourRow(0x21), neighbourRow(0x22)})));
  EXPECT_EQ(neighboursOf(node(LAMP)), "");
}

TEST_F(MeshServerTest, DropsTheBeginningOfATableThatHasChangedOrGrownOld) {
  take(announcement(NOON, LAMP, 1));
  take(neighbourPage(NOON, LAMP, pageOf(2, 0, {neighbourRow(0x20)})));
  take(neighbourPage(NOON, LAMP, pageOf(3, 1, {neighbourRow(0x21), neighbourRow(0x22)})));
  EXPECT_EQ(neighboursOf(node(LAMP)), "");
  take(routePage(NOON, LAMP, pageOf(2, 0, {routeRow(0x40)})));
  take(routePage(NOON + HOUR, LAMP, pageOf(2, 1, {routeRow(0x41)})));
  EXPECT_EQ(routesOf(node(LAMP)), "");
}

TEST_F(MeshServerTest, KeepsNeighboursAndRoutesOfAccessPoints) {
  EXPECT_EQ(take(neighbourPage(NOON, COORDINATOR, pageOf(2, 0, {neighbourRow(0x20)}))), Outcome::TAKEN);
  EXPECT_EQ(neighboursOf(zap(COORDINATOR)), "");
  take(neighbourPage(NOON, COORDINATOR, pageOf(2, 1, {neighbourRow(0x21)})));
  EXPECT_EQ(neighboursOf(zap(COORDINATOR)), "20:32 21:33");
  EXPECT_EQ(take(routePage(NOON, COORDINATOR, pageOf(2, 0, {routeRow(0x40)}))), Outcome::TAKEN);
  EXPECT_EQ(routesOf(zap(COORDINATOR)), "");
  take(routePage(NOON, COORDINATOR, pageOf(2, 1, {routeRow(0x41)})));
  EXPECT_EQ(routesOf(zap(COORDINATOR)), "6720>6976 6721>6977");
  EXPECT_TRUE(zap(COORDINATOR).coordinator());
  EXPECT_EQ(zap(COORDINATOR).id().toString(), COORDINATOR.euid);
  EXPECT_EQ(zap(COORDINATOR).sid(), 0);
  EXPECT_THAT(mesh_.nodes(), IsEmpty());
}

TEST_F(MeshServerTest, KnowsAccessPointsByTheTablesOfNodes) {
  const RecordedFrame page = neighbourPage(NOON, ACCESS_POINT, pageOf(1, 0, {neighbourRow(0x20)}));
  EXPECT_EQ(take(page), Outcome::STRANGER);
  EXPECT_THAT(mesh_.zaps(), IsEmpty());
  take(announcement(NOON, LAMP, 1));
  EXPECT_EQ(take(page), Outcome::TAKEN);
  EXPECT_EQ(neighboursOf(zap(ACCESS_POINT)), "20:32");
  EXPECT_FALSE(zap(ACCESS_POINT).coordinator());
  EXPECT_EQ(zap(ACCESS_POINT).sid(), 0x7A01);

  const Device moved{ACCESS_POINT.euid, 0x7A99};
  EXPECT_EQ(take(neighbourPage(NOON, moved, pageOf(1, 0, {neighbourRow(0x21)}))), Outcome::TAKEN);
  EXPECT_EQ(neighboursOf(zap(ACCESS_POINT)), "21:33");
  EXPECT_EQ(zap(ACCESS_POINT).sid(), 0x7A99);
  EXPECT_THAT(mesh_.zaps(), SizeIs(1));
}

TEST_F(MeshServerTest, TakesWhoAnnouncesItselfAsACoordinatorForAnAccessPoint) {
  const Device second{"0017880100a00003", 0x7B01};
  EXPECT_EQ(take(announcementOfType(NOON, second, 1)), Outcome::TAKEN);
  EXPECT_EQ(take(announcementOfType(NOON, COORDINATOR, 2)), Outcome::TAKEN) << "whatever it says";
  EXPECT_THAT(mesh_.nodes(), IsEmpty());
  EXPECT_EQ(zap(second).sid(), second.address);
  EXPECT_FALSE(zap(second).coordinator()) << "of the network";
  EXPECT_TRUE(zap(COORDINATOR).coordinator());
  take(neighbourPage(NOON, second, pageOf(1, 0, {neighbourRow(0x20)})));
  EXPECT_EQ(neighboursOf(zap(second)), "20:32");
  EXPECT_EQ(take(announcementOfType(NOON, Device{second.euid, 0x7B02}, 2)), Outcome::TAKEN) << "it is known by now";
  EXPECT_EQ(zap(second).sid(), 0x7B02);
  EXPECT_THAT(mesh_.nodes(), IsEmpty());
}

TEST_F(MeshServerTest, LeavesANodeANode) {
  take(announcement(NOON, LAMP, 1));
  take(announcementOfType(NOON, LAMP, 1));
  take(frameOf(NOON, Device{LAMP.euid, 0x0000}, HOME_PROFILE, 0x0006, "18 05 0a 00 00 10 01"));
  take(neighbourPage(NOON, LAMP, pageOf(1, 0, {neighbourRow(0x20)})));
  EXPECT_THAT(mesh_.nodes(), SizeIs(1));
  EXPECT_THAT(mesh_.zaps(), IsEmpty());
  EXPECT_EQ(neighboursOf(node(LAMP)), "20:32");
}

TEST_F(MeshServerTest, KnowsAccessPointsByWhateverTheySend) {
  EXPECT_EQ(take(frameOf(NOON, COORDINATOR, HOME_PROFILE, 0x0006, "18 05 0a 00 00 10 01")), Outcome::HEARD);
  EXPECT_TRUE(zap(COORDINATOR).coordinator());
  take(announcement(NOON, LAMP, 1));
  EXPECT_EQ(take(networkStatus(NOON, ACCESS_POINT, 0x09, 0)), Outcome::HEARD);
  EXPECT_EQ(zap(ACCESS_POINT).sid(), 0x7A01);
  EXPECT_EQ(take(frameOf(NOON, Device{ACCESS_POINT.euid, 0x7A02}, HOME_PROFILE, 0x0006, "18 05 0a 00 00 10 01")),
            Outcome::HEARD);
  EXPECT_EQ(zap(ACCESS_POINT).sid(), 0x7A02);
  EXPECT_EQ(take(networkStatus(NOON, Device{ACCESS_POINT.euid, 0x7A03}, 0x09, 0)), Outcome::HEARD);
  EXPECT_EQ(zap(ACCESS_POINT).sid(), 0x7A03);
  EXPECT_THAT(mesh_.zaps(), SizeIs(2));
}

TEST_F(MeshServerTest, TakesTheAccessPointAtAddressZeroForTheCoordinator) {
  take(neighbourPage(NOON, COORDINATOR, pageOf(1, 0, {neighbourRow(0x20)})));
  take(routePage(NOON, COORDINATOR, pageOf(1, 0, {routeRow(0x40)})));
  const Device moved{COORDINATOR.euid, 0x0050};
  take(neighbourPage(NOON, moved, pageOf(2, 0, {neighbourRow(0x21)})));
  EXPECT_EQ(zap(moved).sid(), 0x0050);
  EXPECT_FALSE(zap(moved).coordinator());
  EXPECT_FALSE(zap(moved).configuredAsCoordinator());
  EXPECT_EQ(neighboursOf(zap(moved)), "20:32");
  EXPECT_EQ(routesOf(zap(moved)), "6720>6976");

  const Device successor{"0017880100a00009", 0x0000};
  take(neighbourPage(NOON, successor, pageOf(1, 0, {neighbourRow(0x30)})));
  EXPECT_TRUE(zap(successor).coordinator());
  EXPECT_THAT(mesh_.zaps(), SizeIs(2)) << "address 0 was free";

  take(neighbourPage(NOON, COORDINATOR, pageOf(2, 1, {neighbourRow(0x22)})));
  EXPECT_TRUE(zap(COORDINATOR).coordinator()) << "back again";
  EXPECT_TRUE(zap(COORDINATOR).configuredAsCoordinator());
  EXPECT_EQ(neighboursOf(zap(COORDINATOR)), "21:33 22:34");
  EXPECT_EQ(routesOf(zap(COORDINATOR)), "6720>6976");
  EXPECT_THAT(mesh_.zaps(), SizeIs(1)) << "and so the successor is gone";
}

TEST_F(MeshServerTest, HasOneAccessPointAnAddress) {
  take(neighbourPage(NOON, COORDINATOR, pageOf(1, 0, {neighbourRow(0x20)})));
  take(neighbourPage(NOON, COORDINATOR, pageOf(2, 0, {neighbourRow(0x21)})));
  const Device successor{"0017880100a00009", 0x0000};
  EXPECT_EQ(take(neighbourPage(NOON, successor, pageOf(1, 0, {neighbourRow(0x30)}))), Outcome::TAKEN);
  EXPECT_THAT(mesh_.zaps(), SizeIs(1));
  EXPECT_EQ(neighboursOf(zap(successor)), "30:48");

  take(neighbourPage(NOON, COORDINATOR, pageOf(2, 1, {neighbourRow(0x22)})));
  EXPECT_THAT(mesh_.zaps(), SizeIs(1));
  EXPECT_EQ(neighboursOf(zap(COORDINATOR)), "") << "the first page went with the record";
}

TEST_F(MeshServerTest, MakesNoAccessPointWithoutAnAddress) {
  for (const unsigned short address : {0xFFF8, 0xFFFE, 0xFFFF}) {
    const Device lost{COORDINATOR.euid, address};
    EXPECT_EQ(take(announcementOfType(NOON, lost, 1)), Outcome::STRANGER);
    EXPECT_EQ(take(neighbourPage(NOON, lost, pageOf(1, 0, {neighbourRow(0x20)}))), Outcome::STRANGER);
  }
  EXPECT_THAT(mesh_.zaps(), IsEmpty());
  take(neighbourPage(NOON, COORDINATOR, pageOf(1, 0, {neighbourRow(0x20)})));
  EXPECT_EQ(take(neighbourPage(NOON, Device{COORDINATOR.euid, 0xFFFE}, pageOf(1, 0, {neighbourRow(0x21)}))),
            Outcome::TAKEN);
  EXPECT_EQ(zap(COORDINATOR).sid(), 0) << "what is known stays";
  EXPECT_EQ(neighboursOf(zap(COORDINATOR)), "21:33");
}

/// An announcement of a table of access points alone.
RecordedFrame announcementOfZaps(const Device& device, const std::string& octets) {
  return frameOf(NOON, device, ANNOUNCE_PROFILE, 0x0001, "18 05 0a 12 00 41" + octets);
}

TEST_F(MeshServerTest, ForgetsAccessPointsThatNobodyNamesAnyMore) {
  const auto frameFrom = [](const char* euid) {
    return frameOf(NOON, Device{euid, ACCESS_POINT.address}, HOME_PROFILE, 0x0006, "18 05 0a 00 00 10 01");
  };
  take(announcementOfZaps(LAMP, "04 7a 01 7a 01"));
  take(announcementOfZaps(SENSOR, "04 00 00 7a 01"));
  EXPECT_EQ(take(frameFrom("0017880100a00051")), Outcome::HEARD);
  take(announcementOfZaps(LAMP, "02 7a 02"));
  EXPECT_EQ(take(frameFrom("0017880100a00052")), Outcome::HEARD) << "the sensor names it";
  take(announcementOfZaps(SENSOR, "00"));
  EXPECT_EQ(take(frameFrom("0017880100a00053")), Outcome::STRANGER);
  EXPECT_EQ(take(frameFrom("0017880100a00052")), Outcome::HEARD) << "who was known stays so";
  take(announcementOfZaps(SENSOR, "04 ff ff ff f8"));
  for (const unsigned short address : {0xFFF8, 0xFFFF}) {
    EXPECT_EQ(take(neighbourPage(NOON, Device{ACCESS_POINT.euid, address}, pageOf(0, 0, {}))), Outcome::STRANGER)
        << "no address of one device";
  }
}

TEST_F(MeshServerTest, KeepsRoutesOnceTheTableIsWhole) {
  take(announcement(NOON, LAMP, 1));
  take(routePage(NOON, LAMP, pageOf(3, 0, {routeRow(0x40), routeRow(0x41)})));
  EXPECT_EQ(routesOf(node(LAMP)), "");
  take(routePage(NOON, LAMP, pageOf(3, 2, {routeRow(0x42)})));
  EXPECT_EQ(routesOf(node(LAMP)), "6720>6976 6721>6977 6722>6978");
  EXPECT_EQ(node(LAMP).getMtoRoute(0), Route(0x1A40, 0x1B40, ROUTE_ACTIVE, false, true, false));
  take(routePage(NOON, LAMP, pageOf(0, 0, {})));
  EXPECT_EQ(routesOf(node(LAMP)), "");
}

TEST_F(MeshServerTest, TakesNothingFromATruncatedPage) {
  take(announcement(NOON, LAMP, 1));
  take(neighbourPage(NOON, LAMP, pageOf(1, 0, {neighbourRow(0x50)})));
  take(routePage(NOON, LAMP, pageOf(1, 0, {routeRow(0x50)})));
  RecordedFrame pages[] = {
      neighbourPage(NOON + 60, LAMP, pageOf(2, 0, {neighbourRow(0x20), neighbourRow(0x21)})),
      routePage(NOON + 60, LAMP, pageOf(2, 0, {routeRow(0x20), routeRow(0x21)})),
  };
  for (RecordedFrame& page : pages) {
    const auto before = messageOf(node(LAMP));
    const unsigned int length = page.bytes.length_;
    for (unsigned int cut = 0; cut < length; ++cut) {
      page.bytes.length_ = cut;
      EXPECT_EQ(take(page), Outcome::BROKEN) << cut;
      EXPECT_TRUE(sameMessage(*messageOf(node(LAMP)), *before)) << cut;
    }
    page.bytes.length_ = length;
    EXPECT_EQ(take(page), Outcome::TAKEN);
  }
  EXPECT_EQ(neighboursOf(node(LAMP)), "20:32 21:33");
  EXPECT_EQ(routesOf(node(LAMP)), "6688>6944 6689>6945");
}

TEST_F(MeshServerTest, TakesNoPageWithAFailedStatus) {
  take(announcement(NOON, LAMP, 1));
  take(neighbourPage(NOON, LAMP, pageOf(1, 0, {neighbourRow(0x20)})));
  take(routePage(NOON, LAMP, pageOf(1, 0, {routeRow(0x20)})));
  for (const unsigned short cluster : {0x8031, 0x8032}) {
    EXPECT_EQ(take(frameOf(NOON + 7, LAMP, 0, cluster, "07 84")), Outcome::HEARD);
    EXPECT_EQ(take(frameOf(NOON + 7, LAMP, 0, cluster, "07 84 00 00 00")), Outcome::HEARD);
  }
  EXPECT_EQ(neighboursOf(node(LAMP)), "20:32");
  EXPECT_EQ(routesOf(node(LAMP)), "6688>6944");
  EXPECT_EQ(node(LAMP).lastContact(), NOON + 7);
}

TEST_F(MeshServerTest, OnlyHearsOtherAnswers) {
  take(announcement(NOON, LAMP, 1));
  EXPECT_EQ(take(frameOf(NOON + 7, LAMP, 0, 0x8036, "07 00")), Outcome::HEARD);
  EXPECT_EQ(node(LAMP).lastContact(), NOON + 7);
  EXPECT_EQ(take(frameOf(NOON, NOBODY, 0, 0x8036, "07 00")), Outcome::STRANGER);
}

TEST_F(MeshServerTest, KnowsNoStrangers) {
  const RecordedFrame frames[] = {
      frameOf(NOON, NOBODY, HOME_PROFILE, 0x0006, "18 05 0a 00 00 10 01"),
      frameOf(NOON, NOBODY, PRIVATE_PROFILE, 0x0002, "18 05 01 03 00 00 23 10 0e 00 00"),
      neighbourPage(NOON, NOBODY, pageOf(1, 0, {neighbourRow(0x20)})),
      networkStatus(NOON, NOBODY, 0x0C, 0),
      networkStatus(NOON, NOBODY, 0x0B, 0x1C02),
      networkStatus(NOON, NOBODY, 0x09, 0),
      frameOf(NOON, NOBODY, NETWORK_LAYER, 0x0001, "00"),
  };
  for (const RecordedFrame& frame : frames) EXPECT_EQ(take(frame), Outcome::STRANGER) << test::hex(frame.bytes);
  EXPECT_THAT(mesh_.nodes(), IsEmpty());
  EXPECT_THAT(mesh_.zaps(), IsEmpty());
  EXPECT_EQ(mesh_.counts().strangers, std::size(frames));
}

TEST_F(MeshServerTest, HearsAnAccessPointThatIsNoNode) {
  EXPECT_EQ(take(frameOf(NOON, COORDINATOR, HOME_PROFILE, 0x0006, "18 05 0a 00 00 10 01")), Outcome::HEARD);
  EXPECT_EQ(take(networkStatus(NOON, COORDINATOR, 0x0C, 0)), Outcome::HEARD);
}

TEST_F(MeshServerTest, HearsANodeWhateverItSays) {
  take(announcement(NOON, LAMP, 1));
  EXPECT_EQ(take(frameOf(NOON + 5, LAMP, HOME_PROFILE, 0x0006, "18 05 0a 00 00 10 01")), Outcome::HEARD);
  EXPECT_EQ(node(LAMP).lastContact(), NOON + 5);
  EXPECT_EQ(take(frameOf(NOON + 6, LAMP, 0x1234, 0x5678, "18 05 0a 00 00 10 01")), Outcome::HEARD);
  EXPECT_EQ(node(LAMP).lastContact(), NOON + 6);
  EXPECT_EQ(take(frameOf(NOON + 7, LAMP, HOME_PROFILE, 0x0006, "18 05 0a 00 00 10")), Outcome::BROKEN);
  EXPECT_EQ(node(LAMP).lastContact(), NOON + 6) << "who knows whose frame that was";
}

const std::string COUNTERS =
    "02 00 00 41 1e"  // counters, success, 30 octets
    "00 01 00 02 00 03 00 04 00 05 00 06 00 07 00 08 00 09 00 0a 00 0b 00 0c 00 0d 00 0e ff 0f";
const std::string UPTIME = "03 00 00 23 10 0e 00 00";  // success, 3600 seconds

TEST_F(MeshServerTest, FillsCountersAndUptime) {
  take(announcement(NOON, LAMP, 1));
  EXPECT_EQ(take(frameOf(NOON + 5, LAMP, PRIVATE_PROFILE, 0x0002, "18 05 01" + COUNTERS + UPTIME)), Outcome::TAKEN);
  EXPECT_EQ(node(LAMP).packetCounters(),
            QxdiagnosticsNodeCounters({1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 0xFF0F}));
  EXPECT_EQ(node(LAMP).uptime(), 3600U);
  EXPECT_EQ(node(LAMP).lastContact(), NOON + 5);
}

TEST_F(MeshServerTest, FillsCountersOrUptimeAlone) {
  take(announcement(NOON, LAMP, 1));
  EXPECT_EQ(take(frameOf(NOON, LAMP, PRIVATE_PROFILE, 0x0002, "18 05 01" + UPTIME)), Outcome::TAKEN);
  EXPECT_EQ(node(LAMP).uptime(), 3600U);
  EXPECT_EQ(node(LAMP).packetCounters(), QxdiagnosticsNodeCounters());
  EXPECT_EQ(take(frameOf(NOON, LAMP, PRIVATE_PROFILE, 0x0002, "18 05 01" + COUNTERS)), Outcome::TAKEN);
  EXPECT_EQ(node(LAMP).packetCounters().mac_rx_unicasts_, 2);
  EXPECT_EQ(node(LAMP).uptime(), 3600U);
}

TEST_F(MeshServerTest, TakesDiagnosticsFromAnswersAlone) {
  take(announcement(NOON, LAMP, 1));
  const std::string frames[] = {
      "18 05 01 03 00 86",              // an attribute that the device does not have
      "18 05 01 02 00 00 41 02 00 01",  // counters of another size
      "19 05 01" + UPTIME,              // the cluster's own command of that number
      "18 05 0a 03 00 23 10 0e 00 00",  // a report
  };
  for (const std::string& hex : frames) {
    EXPECT_EQ(take(frameOf(NOON, LAMP, PRIVATE_PROFILE, 0x0002, hex)), Outcome::HEARD) << hex;
  }
  EXPECT_EQ(node(LAMP).uptime(), 0U);
  EXPECT_EQ(node(LAMP).packetCounters(), QxdiagnosticsNodeCounters());
}

const std::string METRIC = "1e 01 42 04 74 65 6d 70 1f 01 20 15";  // temp, 21

TEST_F(MeshServerTest, SendsMetricsOn) {
  take(announcement(NOON, LAMP, 1));
  const test::MetricsGateway gateway;
  EXPECT_EQ(take(frameOf(NOON + 5, LAMP, HOME_PROFILE, 0x0B05, "18 05 0a" + METRIC + METRIC)), Outcome::TAKEN);
  const std::string sent = "vessori2.v2.vessori2." + getHostName() + ".vso.0017880100a00010.zcl_diag.temp:21|g";
  EXPECT_THAT(gateway.datagrams(), ElementsAre(sent, sent));
  EXPECT_EQ(node(LAMP).lastContact(), NOON + 5);
}

TEST_F(MeshServerTest, SendsNothingOfOtherFrames) {
  take(announcement(NOON, LAMP, 1));
  const test::MetricsGateway gateway;
  for (const char* const head : {"18 05 01", "19 05 0a", "1c 40 10 05 0a"}) {
    EXPECT_NE(take(frameOf(NOON, LAMP, HOME_PROFILE, 0x0B05, head + METRIC)), Outcome::TAKEN) << head;
  }
  EXPECT_EQ(take(frameOf(NOON, LAMP, HOME_PROFILE, 0x0B05, "18 05 0a 1e 01 42 01 74")), Outcome::HEARD) << "no pair";
  EXPECT_EQ(take(frameOf(NOON, LAMP, HOME_PROFILE, 0x0B05, "18 05 0a")), Outcome::HEARD) << "nothing";
  EXPECT_EQ(take(frameOf(NOON, NOBODY, HOME_PROFILE, 0x0B05, "18 05 0a" + METRIC)), Outcome::STRANGER);
  EXPECT_THAT(gateway.datagrams(), IsEmpty());
}

TEST_F(MeshServerTest, CountsAFailedSourceRouteAtItsDestination) {
  take(announcement(NOON, LAMP, 1));
  take(announcement(NOON, SENSOR, 1));
  EXPECT_EQ(take(networkStatus(NOON + 60, LAMP, 0x0B, SENSOR.address)), Outcome::TAKEN);
  EXPECT_EQ(take(networkStatus(NOON + 61, NOBODY, 0x0B, SENSOR.address)), Outcome::TAKEN) << "whoever says so";
  EXPECT_EQ(node(SENSOR).sourceRouteFailures(), 2U);
  EXPECT_EQ(node(SENSOR).sourceRouteFailuresHistogram().totalEvents(), 2);
  EXPECT_EQ(node(SENSOR).sourceRouteFailuresHistogram().lastEvent(), posixTimeOf(NOON + 61));
  EXPECT_EQ(node(SENSOR).manyToOneRouteFailures(), 0U);
  EXPECT_EQ(node(SENSOR).lastContact(), NOON) << "it was not reached";
  EXPECT_EQ(node(LAMP).sourceRouteFailures(), 0U);
  EXPECT_EQ(node(LAMP).lastContact(), NOON + 60);
  EXPECT_EQ(take(networkStatus(NOON + 62, LAMP, 0x0B, NOBODY.address)), Outcome::HEARD) << "no such destination";
}

TEST_F(MeshServerTest, CountsAFailedManyToOneRouteAtItsSource) {
  take(announcement(NOON, LAMP, 1));
  take(announcement(NOON, SENSOR, 1));
  EXPECT_EQ(take(networkStatus(NOON + 60, LAMP, 0x0C, SENSOR.address)), Outcome::TAKEN);
  EXPECT_EQ(node(LAMP).manyToOneRouteFailures(), 1U);
  EXPECT_EQ(node(LAMP).manyToOneRouteFailuresHistogram().totalEvents(), 1);
  EXPECT_EQ(node(LAMP).manyToOneRouteFailuresHistogram().lastEvent(), posixTimeOf(NOON + 60));
  EXPECT_EQ(node(LAMP).sourceRouteFailures(), 0U);
  EXPECT_EQ(node(LAMP).lastContact(), NOON + 60);
  EXPECT_EQ(node(SENSOR).manyToOneRouteFailures(), 0U);
}

TEST_F(MeshServerTest, OnlyHearsOtherWordsOfTheNetworkLayer) {
  take(announcement(NOON, LAMP, 1));
  for (unsigned int status = 0; status < 256; ++status) {
    if (status == 0x0B || status == 0x0C) continue;
    EXPECT_EQ(take(networkStatus(NOON + status, LAMP, status, LAMP.address)), Outcome::HEARD) << status;
  }
  EXPECT_EQ(node(LAMP).lastContact(), NOON + 255);
  for (const unsigned short command : {0x0001, 0x0008, 0xFFFF}) {
    EXPECT_EQ(take(frameOf(NOON + 300, LAMP, NETWORK_LAYER, command, "0b 02 1c")), Outcome::HEARD) << command;
  }
  EXPECT_EQ(node(LAMP).lastContact(), NOON + 300);
  EXPECT_EQ(node(LAMP).sourceRouteFailures() + node(LAMP).manyToOneRouteFailures(), 0U);
}

TEST_F(MeshServerTest, TakesNoNetworkStatusOfAnotherLength) {
  take(announcement(NOON, LAMP, 1));
  const auto before = messageOf(node(LAMP));
  for (const char* const hex : {"", "0b", "0b 02", "0b 02 1c 00", "0c", "0c 02", "0c 02 1c 00 00"}) {
    EXPECT_EQ(take(frameOf(NOON + 9, LAMP, NETWORK_LAYER, 0x0003, hex)), Outcome::BROKEN) << hex;
  }
  EXPECT_TRUE(sameMessage(*messageOf(node(LAMP)), *before));
}

TEST_F(MeshServerTest, FindsANodeByTheAddressThatItSpokeFromLast) {
  take(announcement(NOON, LAMP, 1));
  const Device moved{LAMP.euid, 0x5555};
  EXPECT_EQ(take(frameOf(NOON, moved, HOME_PROFILE, 0x0006, "18 05 0a 00 00 10 01")), Outcome::HEARD);
  EXPECT_EQ(node(LAMP).sid(), 0x5555);
  EXPECT_EQ(take(networkStatus(NOON, NOBODY, 0x0B, 0x5555)), Outcome::TAKEN);
  EXPECT_EQ(take(networkStatus(NOON, NOBODY, 0x0B, LAMP.address)), Outcome::STRANGER);
  EXPECT_EQ(node(LAMP).sourceRouteFailures(), 1U);
}

TEST_F(MeshServerTest, GivesAnAddressToWhoeverSpeaksFromIt) {
  take(announcement(NOON, LAMP, 1));
  take(announcement(NOON, SENSOR, 1));
  const Device heir{SENSOR.euid, LAMP.address};
  take(frameOf(NOON, heir, HOME_PROFILE, 0x0006, "18 05 0a 00 00 10 01"));
  take(networkStatus(NOON, NOBODY, 0x0B, LAMP.address));
  EXPECT_EQ(node(SENSOR).sourceRouteFailures(), 1U);

  // The lamp goes elsewhere, which takes the address from nobody.
  const Device moved{LAMP.euid, 0x5555};
  take(frameOf(NOON, moved, HOME_PROFILE, 0x0006, "18 05 0a 00 00 10 01"));
  EXPECT_EQ(take(networkStatus(NOON, NOBODY, 0x0B, LAMP.address)), Outcome::TAKEN);
  EXPECT_EQ(node(SENSOR).sourceRouteFailures(), 2U);
  EXPECT_EQ(take(networkStatus(NOON, NOBODY, 0x0B, 0x5555)), Outcome::TAKEN);
  EXPECT_EQ(node(LAMP).sourceRouteFailures(), 1U);
}

TEST_F(MeshServerTest, LeavesNobodyAnAddressThatAnotherHas) {
  take(announcement(NOON, LAMP, 1));
  take(announcement(NOON, SENSOR, 1));
  take(announcement(NOON, Device{SENSOR.euid, LAMP.address}, 1));
  EXPECT_EQ(node(LAMP).sid(), MeshServer::UNKNOWN_ADDRESS);
  EXPECT_EQ(node(SENSOR).sid(), LAMP.address);
  EXPECT_EQ(take(networkStatus(NOON, NOBODY, 0x0B, SENSOR.address)), Outcome::STRANGER) << "its former one";
  EXPECT_EQ(take(networkStatus(NOON, NOBODY, 0x0B, MeshServer::UNKNOWN_ADDRESS)), Outcome::STRANGER);
}

TEST_F(MeshServerTest, KeepsTheAddressOfANodeThatSpeaksFromNone) {
  for (const unsigned short address : {0xFFF8, 0xFFFC, 0xFFFE, 0xFFFF}) {
    take(announcement(NOON, LAMP, 1));
    EXPECT_EQ(take(announcement(NOON, Device{LAMP.euid, address}, 1)), Outcome::TAKEN);
    EXPECT_EQ(node(LAMP).sid(), LAMP.address);
    EXPECT_EQ(take(networkStatus(NOON, SENSOR, 0x0B, address)), Outcome::STRANGER);
    EXPECT_EQ(take(announcement(NOON, Device{NOBODY.euid, address}, 1)), Outcome::TAKEN);
    EXPECT_EQ(node(NOBODY).sid(), MeshServer::UNKNOWN_ADDRESS) << "it has none yet";
  }
  const Device highest{SENSOR.euid, 0xFFF7};
  take(announcement(NOON, highest, 1));
  EXPECT_EQ(node(SENSOR).sid(), 0xFFF7);
}

TEST_F(MeshServerTest, RestoresAnAddressToWhoWasHeardLast) {
  // Two that say the same, as states of earlier servers may; the longer address comes last.
  MeshServer first(NOON);
  first.take(announcement(NOON + 1, LAMP, 1));
  MeshServer second(NOON);
  second.take(announcement(NOON, Device{SENSOR.euid, LAMP.address}, 1));
  MeshServer::Nodes both = first.nodes();
  both.insert(second.nodes().begin(), second.nodes().end());
  MeshServer::Nodes reversed = both;
  reversed.at(SENSOR.id()).lastContact(NOON + 2);
  both.emplace(NOBODY.id(), ZigbeeNode()).first->second.lid(NOBODY.id());

  mesh_.restore(both, {});
  EXPECT_EQ(node(LAMP).sid(), LAMP.address);
  EXPECT_EQ(node(SENSOR).sid(), MeshServer::UNKNOWN_ADDRESS);
  take(networkStatus(NOON, NOBODY, 0x0B, LAMP.address));
  EXPECT_EQ(node(LAMP).sourceRouteFailures(), 1U);
  EXPECT_EQ(take(networkStatus(NOON, NOBODY, 0x0B, MeshServer::UNKNOWN_ADDRESS)), Outcome::HEARD) << "nobody has that";

  mesh_.restore(reversed, {});
  EXPECT_EQ(node(LAMP).sid(), MeshServer::UNKNOWN_ADDRESS);
  EXPECT_EQ(node(SENSOR).sid(), LAMP.address);
  take(networkStatus(NOON, NOBODY, 0x0B, LAMP.address));
  EXPECT_EQ(node(SENSOR).sourceRouteFailures(), 1U);
}

TEST_F(MeshServerTest, TakesAsManyNodesAsThereAreAddresses) {
  for (unsigned int i = 0; i < MeshServer::MOST_NODES; ++i) {
    const Device device{"00178801" + hexStr(0x10000000 + i, 4, false), static_cast<unsigned short>(i + 1)};
    ASSERT_EQ(take(announcementOfType(NOON, device, 2)), Outcome::TAKEN);
  }
  EXPECT_EQ(take(announcement(NOON, LAMP, 1)), Outcome::STRANGER);
  EXPECT_EQ(take(announcementOfType(NOON + 1, {"0017880110000000", 1}, 2)), Outcome::TAKEN) << "it is known";
  EXPECT_THAT(mesh_.nodes(), SizeIs(MeshServer::MOST_NODES));
}

TEST_F(MeshServerTest, GivesAnAddressBackToANodeThatSpeaksFromItAgain) {
  take(announcement(NOON, LAMP, 1));
  take(announcement(NOON, Device{SENSOR.euid, LAMP.address}, 1));
  take(frameOf(NOON, LAMP, HOME_PROFILE, 0x0006, "18 05 0a 00 00 10 01"));
  take(networkStatus(NOON, NOBODY, 0x0B, LAMP.address));
  EXPECT_EQ(node(LAMP).sourceRouteFailures(), 1U);
  EXPECT_EQ(node(SENSOR).sourceRouteFailures(), 0U);
}

TEST_F(MeshServerTest, LooksForNodesThatAreSilentOrAsleep) {
  const struct {
    unsigned int type;
    std::time_t silence;
    bool isOnline;
    bool isAwake;
  } rows[] = {
      {2, 0, true, true},         {2, 60, true, true},           {2, 3 * HOUR - 1, true, true},
      {2, 3 * HOUR, false, true}, {3, 3 * HOUR - 1, true, true}, {3, 3 * HOUR, false, true},
      {4, 0, true, true},         {4, 59, true, true},           {4, 60, true, false},
      {4, 3 * HOUR, true, false}, {4, DAY - 1, true, false},     {4, DAY, false, false},
      {5, 59, true, true},        {5, 60, true, false},          {5, DAY, false, false},
      {2, -60, true, true},
  };
  for (const auto& row : rows) {
    MeshServer mesh(NOON);
    mesh.take(announcementOfType(NOON, LAMP, row.type));
    mesh.look(NOON + row.silence);
    EXPECT_EQ(mesh.node(LAMP.id())->isOnline(), row.isOnline) << row.type << ", " << row.silence;
    EXPECT_EQ(mesh.node(LAMP.id())->isAwake(), row.isAwake) << row.type << ", " << row.silence;
  }
}

TEST_F(MeshServerTest, SeesANodeAgainThatWasSilent) {
  take(announcementOfType(NOON, LAMP, 4));
  mesh_.look(NOON + 2 * DAY);
  ASSERT_FALSE(node(LAMP).isOnline());
  ASSERT_FALSE(node(LAMP).isAwake());
  take(frameOf(NOON + 2 * DAY, LAMP, HOME_PROFILE, 0x0006, "18 05 0a 00 00 10 01"));
  EXPECT_TRUE(node(LAMP).isOnline());
  EXPECT_TRUE(node(LAMP).isAwake());
}

/// The value of an item of a report.
std::string valueOf(const NetworkHealth& health, const Device& device, const std::string& name) {
  for (const NetworkHealthItem& item : health.nodeHealth().at(device.id())) {
    if (item.name() == name) return item.value();
  }
  return "no " + name;
}

TEST_F(MeshServerTest, ReportsTheHealthOfOneNode) {
  const std::time_t now = std::time(nullptr);
  take(announcement(now - 60, LAMP, 1));
  take(announcement(now - 60, SENSOR, 1));
  take(announcement(now - 30, LAMP, 4));
  const NetworkHealth health = mesh_.health(LAMP.id());
  ASSERT_THAT(health.nodeHealth(), SizeIs(1));
  EXPECT_THAT(health.nodeHealth().at(LAMP.id()), SizeIs(26));
  EXPECT_EQ(valueOf(health, LAMP, "reboot.count"), "4");
  EXPECT_EQ(valueOf(health, LAMP, "reboot.cumulative_count"), "3");
  EXPECT_EQ(valueOf(health, LAMP, "reboot.sliding_average"), "3");
}

TEST_F(MeshServerTest, ReportsTheHealthOfAll) {
  take(announcement(NOON, LAMP, 1));
  take(announcement(NOON, SENSOR, 7));
  const NetworkHealth health = mesh_.health();
  ASSERT_THAT(health.nodeHealth(), SizeIs(2));
  EXPECT_EQ(valueOf(health, LAMP, "reboot.count"), "1");
  EXPECT_EQ(valueOf(health, SENSOR, "reboot.count"), "7");
}

TEST_F(MeshServerTest, ReportsNothingOfNobody) {
  EXPECT_THAT(mesh_.health(LAMP.id()).nodeHealth(), IsEmpty());
  EXPECT_THAT(mesh_.health().nodeHealth(), IsEmpty());
  EXPECT_THAT(mesh_.nodes(), IsEmpty());
}

TEST_F(MeshServerTest, MakesANewReportAtEachRequest) {
  const std::time_t now = std::time(nullptr);
  take(announcement(now - 60, LAMP, 1));
  EXPECT_EQ(valueOf(mesh_.health(LAMP.id()), LAMP, "reboot.cumulative_count"), "0");
  take(announcement(now - 30, LAMP, 2));
  EXPECT_EQ(valueOf(mesh_.health(LAMP.id()), LAMP, "reboot.cumulative_count"), "1");
}

TEST_F(MeshServerTest, CountsWhatBecameOfFrames) {
  take(announcement(NOON, LAMP, 1));
  take(announcement(NOON, LAMP, 1));
  take(frameOf(NOON, LAMP, HOME_PROFILE, 0x0006, "18 05 0a 00 00 10 01"));
  take(frameOf(NOON, LAMP, HOME_PROFILE, 0x0006, "18 05"));
  take(frameOf(NOON, LAMP, HOME_PROFILE, 0x0006, "18"));
  take(frameOf(NOON, LAMP, HOME_PROFILE, 0x0006, ""));
  take(frameOf(NOON, NOBODY, HOME_PROFILE, 0x0006, "18 05 0a 00 00 10 01"));
  EXPECT_EQ(mesh_.counts().taken, 2U);
  EXPECT_EQ(mesh_.counts().heard, 1U);
  EXPECT_EQ(mesh_.counts().broken, 3U);
  EXPECT_EQ(mesh_.counts().strangers, 1U);
  EXPECT_EQ(mesh_.counts().total(), 7U);
}

TEST(MeshServerOutcome, HasAName) {
  EXPECT_STREQ(nameOf(Outcome::TAKEN), "taken");
  EXPECT_STREQ(nameOf(Outcome::HEARD), "heard");
  EXPECT_STREQ(nameOf(Outcome::BROKEN), "broken");
  EXPECT_STREQ(nameOf(Outcome::STRANGER), "stranger");
}

// Histograms that began when they were made would drop what happened long before.
TEST_F(MeshServerTest, HasSlidingRatesOfARecordingThatIsAYearOld) {
  const std::time_t then = std::time(nullptr) - 365 * DAY;
  take(announcement(then, LAMP, 100));
  for (unsigned int i = 1; i <= 12; ++i) take(announcement(then + i * 60, LAMP, 100 + i));
  for (unsigned int i = 0; i < 90; ++i) take(networkStatus(then + HOUR + i, LAMP, 0x0C, 0));
  for (unsigned int i = 0; i < 30; ++i) take(networkStatus(then + HOUR + i, LAMP, 0x0B, LAMP.address));
  const ZigbeeNode& lamp = node(LAMP);
  EXPECT_EQ(lamp.rebootsHistogram().startTime(), posixTimeOf(then));
  EXPECT_EQ(lamp.rebootsHistogram().windowSize(), 7U);
  EXPECT_EQ(lamp.manyToOneRouteFailuresHistogram().windowSize(), 24U);
  RebootHistogram reboots = lamp.rebootsHistogram();
  EXPECT_EQ(reboots.rate(posixTimeOf(then + 2 * HOUR)), 12);
  MessageFailHistogram inbound = lamp.manyToOneRouteFailuresHistogram();
  EXPECT_EQ(inbound.rate(posixTimeOf(then + 2 * HOUR)), 45) << "over the two hours begun";
  MessageFailHistogram outbound = lamp.sourceRouteFailuresHistogram();
  EXPECT_EQ(outbound.rate(posixTimeOf(then + 2 * HOUR)), 15);
}

TEST_F(MeshServerTest, SlidesOverTheHoursThatHavePassed) {
  const std::time_t now = std::time(nullptr);
  take(announcement(now - 4 * HOUR + 600, LAMP, 1));
  for (unsigned int i = 0; i < 1600; ++i) take(networkStatus(now - 2 * HOUR, LAMP, 0x0C, 0));
  const NetworkHealth health = mesh_.health(LAMP.id());
  EXPECT_EQ(valueOf(health, LAMP, "inbound_route_failures.sliding_average"), "400");
  EXPECT_EQ(valueOf(health, LAMP, "inbound_route_failures.sliding_quality"), "1");
}

TEST_F(MeshServerTest, BeginsResetTimesAtItsOwnStart) {
  take(announcement(NOON + 60, LAMP, 1));
  EXPECT_EQ(messageOf(node(LAMP))->rebootsresettime().seconds(), NOON);
}

TEST_F(MeshServerTest, GoesOnFromWhatItIsGiven) {
  take(announcement(NOON, LAMP, 12));
  take(neighbourPage(NOON, COORDINATOR, pageOf(1, 0, {neighbourRow(0x20)})));
  MeshServer other(NOON);
  other.take(announcement(NOON, SENSOR, 1));
  other.take(neighbourPage(NOON, SENSOR, pageOf(2, 0, {neighbourRow(0x30)})));
  other.restore(mesh_.nodes(), mesh_.zaps());

  EXPECT_THAT(other.nodes(), SizeIs(1));
  EXPECT_THAT(other.zaps(), SizeIs(1));
  EXPECT_EQ(other.take(networkStatus(NOON, NOBODY, 0x0B, SENSOR.address)), Outcome::STRANGER) << "it is forgotten";
  EXPECT_EQ(other.take(networkStatus(NOON, NOBODY, 0x0B, LAMP.address)), Outcome::TAKEN);
  EXPECT_EQ(other.take(announcement(NOON + 60, LAMP, 14)), Outcome::TAKEN);
  EXPECT_EQ(other.node(LAMP.id())->reboots(), 2);
  EXPECT_EQ(other.node(LAMP.id())->sourceRouteFailures(), 1U);
  EXPECT_EQ(other.take(neighbourPage(NOON, ACCESS_POINT, pageOf(1, 0, {neighbourRow(0x21)}))), Outcome::TAKEN)
      << "the lamp has named it";
  EXPECT_THAT(other.zaps(), SizeIs(2));
  other.take(announcement(NOON, SENSOR, 1));
  other.take(neighbourPage(NOON, SENSOR, pageOf(2, 1, {neighbourRow(0x31)})));
  EXPECT_EQ(neighboursOf(*other.node(SENSOR.id())), "") << "the first page was before";
}

TEST_F(MeshServerTest, ForgetsAccessPointsThatOnlyForgottenNodesNamed) {
  take(announcement(NOON, LAMP, 12));
  mesh_.restore({}, {});
  EXPECT_EQ(take(neighbourPage(NOON, ACCESS_POINT, pageOf(1, 0, {neighbourRow(0x21)}))), Outcome::STRANGER);
}

TEST_F(MeshServerTest, KnowsTheRestoredAccessPointsByTheirLongAddress) {
  take(neighbourPage(NOON, COORDINATOR, pageOf(1, 0, {neighbourRow(0x20)})));
  MeshServer other(NOON);
  other.restore({}, mesh_.zaps());
  const Device moved{COORDINATOR.euid, 0x9999};
  EXPECT_EQ(other.take(neighbourPage(NOON, moved, pageOf(1, 0, {neighbourRow(0x21)}))), Outcome::TAKEN);
  EXPECT_EQ(neighboursOf(other.zaps().at(COORDINATOR.id())), "21:33");
}

TEST_F(MeshServerTest, TakesFramesOfAnyTimeOfARecording) {
  for (const std::time_t time : {std::time_t{0}, std::time_t{0x40000000}, std::time_t{0x7FFFFFFF}, std::time_t{0}}) {
    EXPECT_EQ(take(announcement(time, LAMP, 1)), Outcome::TAKEN);
    EXPECT_EQ(take(networkStatus(time, LAMP, 0x0C, 0)), Outcome::TAKEN);
    mesh_.look(time);
    EXPECT_THAT(mesh_.health().nodeHealth(), SizeIs(1));
  }
  EXPECT_EQ(node(LAMP).manyToOneRouteFailures(), 4U);
}

}  // namespace
}  // namespace qx::app
