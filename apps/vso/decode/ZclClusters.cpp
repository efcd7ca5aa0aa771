#include "apps/vso/decode/ZclClusters.h"

#include <algorithm>
#include <cstddef>
#include <iterator>

#include "apps/vso/decode/clusters/readings.h"
#include "vso/zcl/QxZclAnnounce.h"
#include "vso/zcl/QxZclDiagnostics.h"
#include "vso/zcl/QxZclHaDiagnostics.h"
#include "vso/zcl/QxZclSscp.h"
#include "vso/zcl/ZclGroups.h"
#include "vso/zcl/ZclIdentify.h"
#include "vso/zcl/ZclLevelControl.h"
#include "vso/zcl/ZclOnOff.h"
#include "vso/zcl/ZclOnOffSwitch.h"
#include "vso/zcl/ZclOtaUpgrade.h"
#include "vso/zcl/ZclProfile.h"
#include "vso/zcl/ZclScenes.h"
#include "vso/zcl/ZclTime.h"

namespace qx::app {

namespace {

constexpr unsigned short HOME = ZclProfile::HOME_AUTOMATION;
constexpr auto QX_PRIVATE = static_cast<unsigned short>(ZclProfile::QX_PRIVATE);
constexpr auto QX_ANNOUNCE = static_cast<unsigned short>(ZclProfile::QX_ANNOUNCE);

constexpr ZclClusterRow CLUSTERS[] = {
    {HOME, 0x0000, "Basic"},
    {HOME, 0x0001, "Power Configuration"},
    {HOME, ZclIdentify::CLUSTER_ID, "Identify"},
    {HOME, ZclGroups::CLUSTER_ID, "Groups"},
    {HOME, ZclScenes::CLUSTER_ID, "Scenes"},
    {HOME, ZclOnOff::CLUSTER_ID, "On/Off", addOnOffReadings},
    {HOME, ZclOnOffSwitch::CLUSTER_ID, "On/Off Switch Configuration"},
    {HOME, ZclLevelControl::CLUSTER_ID, "Level Control", addLevelControlReadings},
    {HOME, ZclTime::CLUSTER_ID, "Time"},
    {HOME, ZclOtaUpgrade::CLUSTER_ID, "OTA Upgrade", addOtaUpgradeReadings},
    {HOME, QxZclHaDiagnostics::CLUSTER_ID, "Diagnostics", addHaDiagnosticsReadings},
    {QX_PRIVATE, QxZclSscp::CLUSTER_ID, "mesh parameters", addSscpReadings},
    {QX_PRIVATE, QxZclDiagnostics::CLUSTER_ID, "node diagnostics", addDiagnosticsReadings},
    {QX_ANNOUNCE, QxZclAnnounce::CLUSTER_ID, "announce", addAnnounceReadings},
};

constexpr bool before(const ZclClusterRow& a, const ZclClusterRow& b) {
  return a.profile != b.profile ? a.profile < b.profile : a.cluster < b.cluster;
}

constexpr bool isSorted() {
  for (std::size_t i = 1; i < std::size(CLUSTERS); ++i) {
    if (!before(CLUSTERS[i - 1], CLUSTERS[i])) return false;
  }
  return true;
}
static_assert(isSorted(), "the rows stand in the order of profile and cluster, each once");

}  // namespace

const ZclClusterRow* findCluster(unsigned short profile, unsigned short cluster) {
  const ZclClusterRow key{profile, cluster, nullptr};
  const ZclClusterRow* const row = std::lower_bound(std::begin(CLUSTERS), std::end(CLUSTERS), key, before);
  return row != std::end(CLUSTERS) && !before(key, *row) ? row : nullptr;
}

}  // namespace qx::app
