#include "apps/vso/decode/ZclClusters.h"

#include <algorithm>
#include <cstddef>
#include <iterator>

#include "apps/vso/decode/clusters/readings.h"
#include "vso/zcl/ZclIdentify.h"
#include "vso/zcl/ZclLevelControl.h"
#include "vso/zcl/ZclOnOff.h"
#include "vso/zcl/ZclOnOffSwitch.h"
#include "vso/zcl/ZclProfile.h"
#include "vso/zcl/ZclTime.h"

namespace qx::app {

namespace {

constexpr unsigned short HOME = ZclProfile::HOME_AUTOMATION;

constexpr ZclClusterRow CLUSTERS[] = {
    {HOME, 0x0000, "Basic"},
    {HOME, 0x0001, "Power Configuration"},
    {HOME, ZclIdentify::CLUSTER_ID, "Identify"},
    {HOME, 0x0004, "Groups"},
    {HOME, 0x0005, "Scenes"},
    {HOME, ZclOnOff::CLUSTER_ID, "On/Off", addOnOffReadings},
    {HOME, ZclOnOffSwitch::CLUSTER_ID, "On/Off Switch Configuration"},
    {HOME, ZclLevelControl::CLUSTER_ID, "Level Control", addLevelControlReadings},
    {HOME, ZclTime::CLUSTER_ID, "Time"},
    {HOME, 0x0019, "OTA Upgrade"},
    {HOME, 0x0B05, "Diagnostics"},
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
