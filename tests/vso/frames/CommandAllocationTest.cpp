// What the commands of the clusters and of ZDO allocate: the lists and texts that the caller asked for, and nothing
// else.
#include <gtest/gtest.h>

#include <list>
#include <new>
#include <ostream>
#include <string>
#include <vector>

#include "support/Bytes.h"
#include "support/LogCapture.h"
#include "tests/vso/frames/AllocationCount.h"
#include "vso/layout/FrameVerdict.h"
#include "vso/mesh/AccessPoint.h"
#include "vso/mesh/Hop.h"
#include "vso/mesh/Route.h"
#include "vso/zcl/QxZclAnnounce.h"
#include "vso/zcl/QxZclImmediateAnnounce.h"
#include "vso/zcl/QxZclSscp.h"
#include "vso/zcl/SscpPacket.h"
#include "vso/zcl/ZclGroups.h"
#include "vso/zcl/ZclOtaUpgrade.h"
#include "vso/zcl/ZclScenes.h"
#include "vso/zcl/ZclSetZap.h"
#include "vso/zdo/ZdoLeaveRequest.h"
#include "vso/zdo/ZdoLeaveResponse.h"
#include "vso/zdo/ZdoNetworkLqiRequest.h"
#include "vso/zdo/ZdoNetworkLqiResponse.h"
#include "vso/zdo/ZdoNetworkRtgRequest.h"
#include "vso/zdo/ZdoNetworkRtgResponse.h"
#include "vso/zdo/ZdoNetworkUpdateRequest.h"
#include "vso/zdo/ZdoNetworkUpdateResponse.h"
#include "vso/zdo/ZdoPermitJoinRequest.h"
#include "vso/zdo/ZdoPermitJoinResponse.h"

namespace qx::test {
namespace {

using Frame = U255Buff<unsigned char>;

const void* volatile used = nullptr;

/// Keeps a result from being left out with the work that makes it.
template <typename T>
void use(const T& value) {
  used = &value;
  static_cast<void>(used);
}

constexpr int NO_LOGGING = 60000;

/// What the operations work on, made before the count begins. Texts and lists are longer than what a string holds
/// inside itself.
struct Prepared {
  Prepared() {
    lid = "0011223344556677";
    scene.SetSceneData(1, 2, 3, name, 6, 1);
    ZclScenes().getSceneCount();  // keeps its list from the first call on
  }

  const std::string name = "sixteen letters.";
  const std::string firmware = "a text of more than fifteen letters";
  const std::vector<unsigned short> ids = std::vector<unsigned short>(100, 7);
  const unsigned char data[64] = {};
  Euid lid;
  SceneTableEntry scene;

  const Frame announce = bytesOf("18 05 0a 00 00 20 02 04 00 42 03 31 2e 30 12 00 41 04 ab cd 12 34 07 00 42 01 61");
  const Frame zap = bytesOf("08 05 01 08 00 00 21 34 12 09 00 86");
  const Frame groups = bytesOf("09 05 02 10 03 01 00 02 00 03 00");
  const Frame view = bytesOf("09 05 01 00 01 00 02 6f 6b");
  const Frame scenes = bytesOf("09 05 06 00 10 01 00 03 01 02 03");
  const Frame viewScene = bytesOf("09 05 01 00 01 00 02 0a 00 00 06 00 01 01");
  const Frame blockRequest =
      bytesOf("01 05 03 03 40 10 01 00 04 03 02 01 00 00 00 00 40 01 02 03 04 05 06 07 08 10 00");
  const Frame otaAnswer = bytesOf("18 05 01 02 00 00 23 04 03 02 01 06 00 00 20 01");
  const Frame lqi = bytesOf(
      "07 00 02 00 02 "
      "88 77 66 55 44 33 22 11 77 66 55 44 33 22 11 00 34 12 05 02 02 ff "
      "88 77 66 55 44 33 22 11 77 66 55 44 33 22 11 00 34 12 05 02 02 ff");
  const Frame routes = bytesOf("07 00 03 00 03 01 00 38 34 12 02 00 07 44 44 03 00 00 01 00");
  const Frame energy = bytesOf("01 00 00 28 00 00 10 00 01 00 02 00 ff");
};

struct Operation {
  const char* name;
  unsigned int allocations;
  void (*run)(const Prepared&);
};

std::ostream& operator<<(std::ostream& out, const Operation& operation) { return out << operation.name; }

class CommandOperation : public ::testing::TestWithParam<Operation> {};

TEST_P(CommandOperation, AllocatesNoMoreThanItsAnswer) {
  const LogCapture log(NO_LOGGING);
  const Prepared prepared;
  EXPECT_EQ(allocationsOf([&] { GetParam().run(prepared); }), GetParam().allocations);
}

const auto nameOf = [](const auto& instance) { return std::string(instance.param.name); };

/// Fills a list from a page while memory ends with the third row.
template <typename Row, typename Read>
void expectTwoRowsAndAnException(Read read) {
  std::list<Row> rows;
  bool isThrown = false;
  refuseAllocation(3);
  try {
    read(rows);
  } catch (const std::bad_alloc&) {
    isThrown = true;
  }
  refuseAllocation(0);
  EXPECT_TRUE(isThrown);
  EXPECT_EQ(rows.size(), 2U);
}

TEST(TableRows, SoFarAreThereWhenMemoryEnds) {
  const Prepared prepared;
  Frame hops = prepared.lqi;
  hops.contents[4] = 4;
  expectTwoRowsAndAnException<Hop>([&](auto& rows) { ZdoNetworkLqiResponse(hops).hops(rows); });
  expectTwoRowsAndAnException<Route>([&](auto& rows) { ZdoNetworkRtgResponse(prepared.routes).routes(rows); });
}

INSTANTIATE_TEST_SUITE_P(
    OfBuilders, CommandOperation,
    ::testing::Values(Operation{"Announce", 0,
                                [](const Prepared& p) { use(QxZclAnnounce(1, 2, 3, p.firmware, p.name)); }},
                      Operation{"AnnounceWriters", 0,
                                [](const Prepared& p) {
                                  QxZclAnnounce frame(p.announce);
                                  frame.nodeRssi(-59);
                                  frame.nodeRssi(-60);
                                  use(frame);
                                }},
                      Operation{"ImmediateAnnounce", 0, [](const Prepared& p) { use(QxZclImmediateAnnounce(p.ids)); }},
                      Operation{"Sscp", 0,
                                [](const Prepared&) {
                                  QxZclSscp frame(true, false);
                                  frame.announceWindow(1);
                                  frame.channel(15);
                                  use(frame);
                                }},
                      Operation{"SscpPacket", 0, [](const Prepared&) { use(SscpPacket(1, 2, 3, 4)); }},
                      Operation{"SetZap", 0,
                                [](const Prepared& p) {
                                  ZclSetZap frame;
                                  frame.sid(1);
                                  frame.lid(p.lid);
                                  frame.cost(2);
                                  use(frame);
                                }},
                      Operation{"Groups", 0,
                                [](const Prepared& p) {
                                  ZclGroups frame;
                                  frame.addGroup(1, p.name);
                                  frame.getGroupMembership(p.ids);
                                  frame.removeAllGroups();
                                  use(frame);
                                }},
                      Operation{"Scenes", 0,
                                [](const Prepared& p) {
                                  ZclScenes frame;
                                  frame.addScene(p.scene);
                                  frame.getSceneCount();
                                  frame.unRecallScene(1, 2);
                                  use(frame);
                                }},
                      Operation{"OtaCommands", 0,
                                [](const Prepared& p) {
                                  ZclOtaUpgrade frame(ZclOtaUpgrade::IMAGE_BLOCK_RESPONSE);
                                  frame.imageBlockResponse({}, p.data, sizeof p.data);
                                  frame.queryNextImageResponse({});
                                  frame.imageNotify({});
                                  frame.upgradeEndResponse({});
                                  frame.getOtaAttributes();
                                  frame.sendUnsupportedCommand(1);
                                  use(frame);
                                }},
                      Operation{"ZdoRequests", 0,
                                [](const Prepared& p) {
                                  use(ZdoLeaveRequest(p.lid, p.lid, 0));
                                  use(ZdoPermitJoinRequest(p.lid, 60, 1));
                                  use(ZdoNetworkLqiRequest(p.lid, 0));
                                  use(ZdoNetworkRtgRequest(p.lid, 0));
                                  use(ZdoNetworkUpdateRequest(p.lid, 0x8000, 0xFF, 1, 2));
                                }}),
    nameOf);

INSTANTIATE_TEST_SUITE_P(
    OfReaders, CommandOperation,
    ::testing::Values(Operation{"AnnounceNumbers", 0,
                                [](const Prepared& p) {
                                  const QxZclAnnounce frame(p.announce);
                                  use(frame.deviceType());
                                  use(frame.bootCount());
                                  use(frame.nodeRssi());
                                  use(frame.hasApTable());
                                }},
                      Operation{"AnnounceShortTexts", 0,
                                [](const Prepared& p) {
                                  const QxZclAnnounce frame(p.announce);
                                  use(frame.firmwareVersion());
                                  use(frame.productString());
                                }},
                      Operation{"AccessPoints", 2,
                                [](const Prepared& p) {
                                  std::list<AccessPoint> list;
                                  QxZclAnnounce(p.announce).apRouteTable(list);
                                  use(list);
                                }},
                      Operation{"Sscp", 0, [](const Prepared& p) { use(QxZclSscp(p.announce).channel()); }},
                      Operation{"SetZap", 0,
                                [](const Prepared&) {
                                  const ZclSetZap frame;
                                  use(frame.lid());
                                  use(frame.hasSid());
                                }},
                      Operation{"GroupIds", 1,
                                [](const Prepared& p) {
                                  GroupIdsBundle bundle;
                                  use(ZclGroups(p.groups).getGroupMembershipResponse(bundle));
                                }},
                      Operation{"ShortGroupName", 0,
                                [](const Prepared& p) {
                                  StatusGroupIdGroupNameBundle bundle;
                                  use(ZclGroups(p.view).viewGroupResponse(bundle));
                                }},
                      Operation{"SceneIds", 1,
                                [](const Prepared& p) {
                                  SceneMembershipBundle bundle;
                                  use(ZclScenes(p.scenes).getSceneMembershipResponse(bundle));
                                }},
                      Operation{"Scene", 0,
                                [](const Prepared& p) {
                                  ViewSceneBundle bundle;
                                  use(ZclScenes(p.viewScene).viewSceneResponse(bundle));
                                }},
                      Operation{"OtaRequests", 0,
                                [](const Prepared& p) {
                                  ImageBlockRequest request;
                                  use(ZclOtaUpgrade(p.blockRequest).imageBlockRequest(request));
                                }},
                      Operation{"OtaAttributes", 0,
                                [](const Prepared& p) {
                                  ZclOtaUpgrade frame(p.otaAnswer);
                                  unsigned int version = 0;
                                  unsigned char status = 0;
                                  use(frame.readAttributesResponseFwv(version));
                                  use(frame.readAttributesResponseImageUpgradeStatus(status));
                                }},
                      Operation{"Hops", 2,
                                [](const Prepared& p) {
                                  std::list<Hop> hops;
                                  ZdoNetworkLqiResponse(p.lqi).hops(hops);
                                  use(hops);
                                }},
                      Operation{"Routes", 3,
                                [](const Prepared& p) {
                                  std::list<Route> routes;
                                  ZdoNetworkRtgResponse(p.routes).routes(routes);
                                  use(routes);
                                }},
                      Operation{"EnergyLevels", 0,
                                [](const Prepared& p) {
                                  signed char levels[ZdoNetworkUpdateResponse::CHANNEL_COUNT];
                                  ZdoNetworkUpdateResponse(p.energy).setEnergyLevels(levels);
                                  use(levels);
                                }},
                      Operation{"Statuses", 0,
                                [](const Prepared& p) {
                                  use(ZdoLeaveResponse(p.energy).status());
                                  use(ZdoPermitJoinResponse(ZdoResponse(0x8036, p.energy)).status());
                                }},
                      Operation{"VerdictOnWholeFrames", 0,
                                [](const Prepared& p) {
                                  use(judgeFrame(0x0000, 0x8031, p.lqi));
                                  use(judgeFrame(0x0000, 0x8032, p.routes));
                                  use(judgeFrame(0x0000, 0x8038, p.energy));
                                  use(judgeFrame(0x0104, 0x0005, p.viewScene));
                                  use(judgeFrame(0x0104, 0x0019, p.blockRequest));
                                  use(judgeFrame(0xC25F, 0x0001, p.announce));
                                }}),
    nameOf);

// None of these adds anything to the frame that it is.
static_assert(sizeof(QxZclAnnounce) == sizeof(ZclMessage));
static_assert(sizeof(QxZclImmediateAnnounce) == sizeof(ZclMessage));
static_assert(sizeof(ZclSetZap) == sizeof(ZclMessage));
static_assert(sizeof(ZclGroups) == sizeof(ZclMessage));
static_assert(sizeof(ZclScenes) == sizeof(ZclMessage));
static_assert(sizeof(ZclOtaUpgrade) == sizeof(ZclMessage));
static_assert(sizeof(SscpPacket) == sizeof(Frame));

}  // namespace
}  // namespace qx::test
