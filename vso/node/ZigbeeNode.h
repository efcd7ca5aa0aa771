// The server's record of one device of the mesh.
#pragma once

#include <boost/date_time/posix_time/posix_time_types.hpp>
#include <boost/smart_ptr/shared_ptr.hpp>
#include <ctime>
#include <deque>
#include <iosfwd>
#include <list>
#include <string>
#include <vector>

#include "vso/identifiers/Euid.h"
#include "vso/mesh/AccessPoint.h"
#include "vso/mesh/Hop.h"
#include "vso/mesh/Route.h"
#include "vso/mesh/SourceRoute.h"
#include "vso/node/MessageFailHistogram.h"
#include "vso/node/NotCopied.h"
#include "vso/node/RebootHistogram.h"
#include "vso/zcl/QxdiagnosticsNodeCounters.h"

namespace qx {

class NetworkHealth;
class XmlWriter;
namespace pb {
class ZigbeeNodePBuf;
}

/// Who a device is, what it reported last, what its neighbours and routes are, and how healthy it has been. A passive
/// record: the server decides when a field changes. Not for use from several threads at once; even what reads like a
/// query can change it, since the sliding averages age the histograms.
///
/// A copy has all data but the last health report; an assigned node keeps its own report.
class ZigbeeNode {
 public:
  using Deque = std::deque<SourceRoute>;

  /// An unnamed node: label "unknown", no short address, awake.
  ZigbeeNode() = default;
  /// The eight fields, all others as by default: `reboots` starts at 0, whatever `bootCount` says.
  ZigbeeNode(const Euid& lid, const std::string& product, const unsigned short& sid, const bool& online,
             const unsigned char& reflashProfile, const std::string& fwVer, const unsigned short& bootCount,
             const std::string& label);
  ZigbeeNode(const ZigbeeNode&) = default;
  ZigbeeNode& operator=(const ZigbeeNode&) = default;
  virtual ~ZigbeeNode() = default;

  // Identity and order.

  /// Compares long address and product, nothing else.
  bool operator==(const ZigbeeNode& other) const;
  bool operator!=(const ZigbeeNode& other) const { return !(*this == other); }
  /// By the integer view of the long address alone: of two nodes that differ in their product only, neither is less,
  /// and yet they are not equal.
  bool operator<(const ZigbeeNode& other) const { return lid_ < other.lid_; }
  bool operator>(const ZigbeeNode& other) const { return other < *this; }

  // Fields. Each has a reader and a writer of the same name, unless stated.

  /// Long address: the identity of the node.
  const Euid& lid() const { return lid_; }
  void lid(const Euid& value) { lid_ = value; }
  /// Product string from the device, with a maker's prefix such as "qx:velmarin".
  const std::string& product() const { return product_; }
  void product(const std::string& value) { product_ = value; }
  /// Short address; 0xFFFF means none yet.
  const unsigned short& sid() const { return sid_; }
  void sid(const unsigned short& value) { sid_ = value; }
  /// Whether the node is reachable. Read by `isOnline`.
  void online(const bool& value) { online_ = value; }
  bool isOnline() const { return online_; }
  const unsigned char& reflashProfile() const { return reflash_profile_; }
  void reflashProfile(const unsigned char& value) { reflash_profile_ = value; }
  /// Firmware version; a final "M" marks a node in its miniapp.
  const std::string& fwVer() const { return fw_ver_; }
  void fwVer(const std::string& value) { fw_ver_ = value; }
  /// Reboots since `rebootsResetTime`.
  const unsigned short& reboots() const { return reboots_; }
  void reboots(const unsigned short& value) { reboots_ = value; }
  const BPosixTime& rebootsResetTime() const { return reboots_reset_time; }
  void rebootsResetTime(const BPosixTime& value) { reboots_reset_time = value; }
  /// Reboots since manufacture, as the device counts them.
  const unsigned short& bootCount() const { return boot_count_; }
  void bootCount(const unsigned short& value) { boot_count_ = value; }
  /// Reboots of the last days.
  const RebootHistogram& rebootsHistogram() const { return reboots_histogram_; }
  void rebootsHistogram(const RebootHistogram& value) { reboots_histogram_ = value; }
  /// Whether a firmware update is running, how far it is, and whether the last one failed.
  bool updating() const { return updating_; }
  void updating(const bool& value) { updating_ = value; }
  unsigned char updatePercentage() const { return update_percentage_; }
  void updatePercentage(const unsigned char& value) { update_percentage_ = value; }
  bool updateFailed() const { return update_failed_; }
  void updateFailed(const bool& value) { update_failed_ = value; }
  /// A number of ZigbeeNodeDeviceTypePEnum.
  unsigned char deviceType() const { return device_type_; }
  void deviceType(const unsigned char& value) { device_type_ = value; }
  /// Read by `isAwake`.
  void awake(const bool& value) { awake_ = value; }
  bool isAwake() const { return awake_; }
  /// Poll intervals, in the unit of the devices.
  unsigned short apPollInterval() const { return ap_poll_interval_; }
  void apPollInterval(const unsigned short& value) { ap_poll_interval_ = value; }
  unsigned short parentPollInterval() const { return parent_poll_interval_; }
  void parentPollInterval(const unsigned short& value) { parent_poll_interval_ = value; }
  unsigned long long acceptedPacketSuccesses() const { return accepted_packet_successes_; }
  void acceptedPacketSuccesses(const unsigned long long& value) { accepted_packet_successes_ = value; }
  unsigned long long acceptedPacketFailures() const { return accepted_packet_failures_; }
  void acceptedPacketFailures(const unsigned long long& value) { accepted_packet_failures_ = value; }
  unsigned long long packetDeliverySuccesses() const { return packet_delivery_successes_; }
  void packetDeliverySuccesses(const unsigned long long& value) { packet_delivery_successes_ = value; }
  unsigned long long packetDeliveryFailures() const { return packet_delivery_failures_; }
  void packetDeliveryFailures(const unsigned long long& value) { packet_delivery_failures_ = value; }
  unsigned long long inboundUnicastCount() const { return inbound_unicast_count_; }
  void inboundUnicastCount(const unsigned long long& value) { inbound_unicast_count_ = value; }
  unsigned long long inboundMulticastCount() const { return inbound_multicast_count_; }
  void inboundMulticastCount(const unsigned long long& value) { inbound_multicast_count_ = value; }
  unsigned long long outboundPacketCount() const { return outbound_packet_count_; }
  void outboundPacketCount(const unsigned long long& value) { outbound_packet_count_ = value; }
  /// Failures of source routes since their reset time; shown as outbound route failures.
  unsigned long long sourceRouteFailures() const { return source_route_failures_; }
  void sourceRouteFailures(const unsigned long long& value) { source_route_failures_ = value; }
  const MessageFailHistogram& sourceRouteFailuresHistogram() const { return source_route_failures_histogram_; }
  void sourceRouteFailuresHistogram(const MessageFailHistogram& value) { source_route_failures_histogram_ = value; }
  const BPosixTime& sourceRouteFailuresResetTime() const { return source_route_failures_reset_time_; }
  void sourceRouteFailuresResetTime(const BPosixTime& value) { source_route_failures_reset_time_ = value; }
  /// Failures of many-to-one routes since their reset time; shown as inbound route failures.
  unsigned long long manyToOneRouteFailures() const { return many_to_one_route_failures_; }
  void manyToOneRouteFailures(const unsigned long long& value) { many_to_one_route_failures_ = value; }
  const MessageFailHistogram& manyToOneRouteFailuresHistogram() const { return many_to_one_route_failures_histogram_; }
  void manyToOneRouteFailuresHistogram(const MessageFailHistogram& value) {
    many_to_one_route_failures_histogram_ = value;
  }
  const BPosixTime& manyToOneRouteFailuresResetTime() const { return many_to_one_route_failures_reset_time_; }
  void manyToOneRouteFailuresResetTime(const BPosixTime& value) { many_to_one_route_failures_reset_time_ = value; }
  /// Greatest number of hops since `resetCounters`.
  unsigned char maxHops() const { return max_hops_; }
  void maxHops(const unsigned char& value) { max_hops_ = value; }
  /// What people call the node.
  const std::string& label() const { return label_; }
  void label(const std::string& value) { label_ = value; }
  unsigned char channel() const { return channel_; }
  void channel(const unsigned char& value) { channel_ = value; }
  /// When the node was last heard, seconds since 1970.
  std::time_t lastContact() const { return last_contact_; }
  void lastContact(const std::time_t& value) { last_contact_ = value; }
  /// Messages that wait for the node, and that are on their way to it.
  unsigned int pendingQueueSize() const { return pending_queue_size_; }
  void pendingQueueSize(const unsigned int& value) { pending_queue_size_ = value; }
  unsigned int inflightQueueSize() const { return inflight_queue_size_; }
  void inflightQueueSize(const unsigned int& value) { inflight_queue_size_ = value; }
  /// Of the last reflash, seconds since 1970.
  std::time_t reflashTime() const { return reflash_time_; }
  void reflashTime(const std::time_t& value) { reflash_time_ = value; }
  /// Signal strength last received, in dBm; valid if `hasRssi`. Likewise the other pairs.
  signed char rssi() const { return rssi_; }
  void rssi(const signed char& value) { rssi_ = value; }
  bool hasRssi() const { return has_rssi_; }
  void hasRssi(const bool& value) { has_rssi_ = value; }
  /// Link quality of what is received, and of what is sent.
  unsigned char rxLqi() const { return rx_lqi_; }
  void rxLqi(const unsigned char& value) { rx_lqi_ = value; }
  bool hasRxLqi() const { return has_rx_lqi_; }
  void hasRxLqi(const bool& value) { has_rx_lqi_ = value; }
  unsigned char txLqi() const { return tx_lqi_; }
  void txLqi(const unsigned char& value) { tx_lqi_ = value; }
  bool hasTxLqi() const { return has_tx_lqi_; }
  void hasTxLqi(const bool& value) { has_tx_lqi_ = value; }
  /// Bars that the device itself reports.
  unsigned char radioBars() const { return radio_bars_; }
  void radioBars(const unsigned char& value) { radio_bars_ = value; }
  bool hasRadioBars() const { return has_radio_bars_; }
  void hasRadioBars(const bool& value) { has_radio_bars_ = value; }
  bool hasBatteryLevel() const { return has_battery_level_; }
  void hasBatteryLevel(const bool& value) { has_battery_level_ = value; }
  signed char batteryLevel() const { return battery_level_; }
  void batteryLevel(const signed char& value) { battery_level_ = value; }
  /// As the device reports it.
  unsigned int uptime() const { return uptime_; }
  void uptime(const unsigned int& value) { uptime_ = value; }
  /// In bars, 0 to 4, as `updateSignalStrength` found it; -1 is unknown.
  signed char signalStrength() const { return signal_strength_; }
  void signalStrength(const signed char& value) { signal_strength_ = value; }
  /// The device's own counters.
  const QxdiagnosticsNodeCounters& packetCounters() const { return packet_counters_; }
  void packetCounters(const QxdiagnosticsNodeCounters& value) { packet_counters_ = value; }

  bool hasProduct() const { return !product_.empty(); }
  bool hasFwVer() const { return !fw_ver_.empty(); }
  bool hasDeviceType() const { return device_type_ != 0; }
  /// True for the maker's own devices.
  bool isQxDevice() const;
  /// True for a plain end device, never a sleepy or a mobile one, of the maker's product line that has its queue
  /// checked.
  bool isQueueCheckDevice() const;
  /// True for plain, sleepy and mobile end devices.
  bool isEndDevice() const;
  /// True for sleepy and mobile end devices.
  bool isEmberSleepy() const;
  bool inMiniapp() const;
  /// True if nobody has named the node yet.
  bool defaultLabel() const;
  /// "Coordinator" and so on; "Unknown" for a number without a name.
  const char* deviceTypeStr() const;

  /// "(0x0011223344556677)(0x1234)": what every log line of a node begins with.
  std::string printId() const;
  /// The product with "@", "|" and ":" as "==", "~~" and "##"; "none" if it is empty.
  std::string cleanProductString() const;

  /// The clock: local time in microseconds.
  static BPosixTime localtime() { return EventHistogram::localtime(); }
  /// Says when the server started, in seconds since 1970: with it the reset times of new nodes begin, in UTC although
  /// all other times are local. To be called once, before there are nodes; until then they begin with no time at all. A
  /// time before 1400 or after 9999 counts as the first or the last of these years.
  static void vessoriStartTime(long seconds);
  static BPosixTime vessoriStartTime_;

  // Routes and tables. The order of the source routes is the server's: the first for an access point counts.

  unsigned int numSourceRoutes() const;
  /// Throws std::runtime_error, "Invalid index.", if there is none.
  SourceRoute sourceRoutes(unsigned int index) const;
  void sourceRoutes(Deque& out) const { out = routes; }
  void setSourceRoutes(const Deque& value) { routes = value; }
  /// The first route to an access point. Throws std::runtime_error, with a text that is logged too, if there is none.
  SourceRoute getSourceRoute(const Euid& zap) const;
  /// Hops of the first route to an access point, 1 for a direct neighbour; 0 if there is none.
  unsigned int sourceRouteHops(const Euid& zap) const;
  /// "ROUTE: " and the short addresses from the access point to this node; "ROUTE: none" for an invalid route.
  std::string printSourceRoute(const SourceRoute& route) const;
  /// "ROUTES: [0]: ROUTE: ..., [1]: ROUTE: ..."; "ROUTES: none" for no routes.
  std::string printSourceRoutes(const Deque& printed) const;
  std::string printSourceRoutes() const { return printSourceRoutes(routes); }
  /// Logs old and new routes at info level if they differ. Routes of `previous` behind the last of now are no
  /// difference.
  void logRoutingChanges(const Deque& previous) const;

  // The first row for a neighbour; Hop::INVALID if there is none. Valid as long as the row stays.
  const Hop& getHop(const Euid& neighborLid) const;
  const Hop& getHop(unsigned short neighbor) const;
  void getHopList(std::list<Hop>& out) const { out = hops_; }
  void setHopList(const std::list<Hop>& value) { hops_ = value; }

  unsigned int numMtoRoutes() const;
  /// Throws std::runtime_error, "Invalid index.", if there is none, and for an index above 255.
  Route getMtoRoute(unsigned int index) const;
  void getMtoRouteList(std::list<Route>& out) const { out = mto_routes_; }
  void setMtoRouteList(const std::list<Route>& value) { mto_routes_ = value; }

  unsigned int numOfAps() const;
  /// Throws as `getMtoRoute`.
  AccessPoint getAp(unsigned int index) const;
  void getApTable(std::list<AccessPoint>& out) const { out = ap_table_; }
  void setApTable(const std::list<AccessPoint>& value) { ap_table_ = value; }

  void getEnergyLevelsList(std::list<signed char>& out) const { out = energy_levels_; }
  void setEnergyLevelsList(const std::list<signed char>& value) { energy_levels_ = value; }

  // Health: reboots, failures of many-to-one routes (inbound) and of source routes (outbound), each since its reset
  // (cumulative) and within the window of its histogram (sliding). Averages are events a day for reboots and an hour
  // for failures; qualities are QualityLightsPEnum: 3 green, 2 yellow, 1 red.

  /// The greatest rates that are still green and yellow.
  static constexpr int REBOOT_QUALITY_GREEN = 10;
  static constexpr int REBOOT_QUALITY_YELLOW = 20;
  static constexpr int ROUTE_QUALITY_GREEN = 50;
  static constexpr int ROUTE_QUALITY_YELLOW = 300;
  static constexpr int REBOOT_WINDOW_SIZE = RebootHistogram::WINDOW_SIZE;

  // Names of the metrics.
  static const std::string REBOOT_COUNT;
  static const std::string REBOOT_CUMULATIVE_COUNT;
  static const std::string REBOOT_CUMULATIVE_AVERAGE;
  static const std::string REBOOT_CUMULATIVE_QUALITY;
  static const std::string REBOOT_SLIDING_AVERAGE;
  static const std::string REBOOT_SLIDING_QUALITY;
  static const std::string REBOOT_RESET_TIME;
  static const std::string REBOOT_QUALITY_THRESHOLDS;
  static const std::string FOUR_BAR_SIGNAL_VALUE;
  static const std::string RX_LQI_VALUE;
  static const std::string TX_LQI_VALUE;
  static const std::string RSSI_VALUE;
  static const std::string IRF_CUMULATIVE_COUNT;
  static const std::string IRF_CUMULATIVE_AVERAGE;
  static const std::string IRF_CUMULATIVE_QUALITY;
  static const std::string IRF_SLIDING_AVERAGE;
  static const std::string IRF_SLIDING_QUALITY;
  static const std::string IRF_RESET_TIME;
  static const std::string IRF_QUALITY_THRESHOLDS;
  static const std::string ORF_CUMULATIVE_COUNT;
  static const std::string ORF_CUMULATIVE_AVERAGE;
  static const std::string ORF_CUMULATIVE_QUALITY;
  static const std::string ORF_SLIDING_AVERAGE;
  static const std::string ORF_SLIDING_QUALITY;
  static const std::string ORF_RESET_TIME;
  static const std::string ORF_QUALITY_THRESHOLDS;

  // Count an event, in the count and in the histogram.
  void addRebootEvent(const BPosixTime& now);
  void addSourceRouteFailure(const BPosixTime& now);
  void addManyToOneRouteFailure(const BPosixTime& now);
  // Make the window this many days, or hours, and start the histograms anew.
  void rebootsHistogramWindow(unsigned int days);
  void messageFailHistogramWindow(unsigned int hours);

  // The count over the buckets begun since the reset, without an upper bound.
  double rebootCumulativeAverage(const BPosixTime& now) const;
  double sourceRouteFailuresCumulativeAverage(const BPosixTime& now) const;
  double manyToOneRouteFailuresCumulativeAverage(const BPosixTime& now) const;
  // Of the average rounded up.
  int rebootCumulativeQuality(const BPosixTime& now) const;
  int sourceRouteFailuresCumulativeQuality(const BPosixTime& now);
  int manyToOneRouteFailuresCumulativeQuality(const BPosixTime& now);
  // Of the histogram's rate rounded to the nearest. These age the histogram.
  int rebootSlidingQuality(const BPosixTime& now);
  int sourceRouteFailuresSlidingQuality(const BPosixTime& now);
  int manyToOneRouteFailuresSlidingQuality(const BPosixTime& now);
  // The light of a rate; one exactly on a threshold takes the better.
  int rebootQualityImpl(int rate) const;
  int messageFailuresQualityImpl(int rate) const;
  /// "10 20": the greatest green and the greatest yellow rate.
  std::string rebootQualityThresholds() const;
  std::string routeQualityThresholds() const;

  /// Computes `signalStrength` from the bars that the device reports, or else from the link quality of what is
  /// received, one bar less if the signal is weak.
  void updateSignalStrength();
  /// Forgets everything that is known of the radio link.
  void invalidateNodeSignalInfo();

  // Zero the count and its histogram; the reset time becomes now.
  void resetRebootCounter();
  void resetSourceRouteFailures();
  void resetManyToOneRouteFailures();
  /// Resets the counts of these names: the cumulative counts of the three stories. True if any other name was refused,
  /// which is logged.
  bool resetHealthCounters(const std::vector<std::string>& names);
  /// Zeroes the packet counters and `maxHops`, and resets the route failures. A reboot count survives.
  void resetCounters();

  /// Makes a new report of this node.
  void gatherNetworkHealth();
  /// The same. True if there was none before or it differed.
  bool updateNetworkHealth();
  /// The last report, null before the first. Whoever keeps it keeps it alive; the node goes on to another.
  const boost::shared_ptr<NetworkHealth>& networkHealth() const { return networkHealth_.get(); }

  // Serial forms. The health report is in none of them.

  /// Caller owns the result. Times are cut to seconds, and these to 32 bits; special times come back as dates. Bytes
  /// that are not UTF-8 become U+FFFD.
  pb::ZigbeeNodePBuf* toProtobuf() const;
  /// Takes all fields, wider ones cut to their low bits; what is absent takes the default of the message, not that of a
  /// new node. True if any part failed; the others are taken all the same. Throws what `triboolFromProtobuf`
  /// throws: the bad row is then the last of its table, and the fields behind the table are as they were.
  bool fromProtobuf(const pb::ZigbeeNodePBuf& message);
  /// A report, in an order of its own and without the start times of the histograms: there is no way back.
  void toXml(XmlWriter& writer, const std::string& name) const;

 private:
  static constexpr const char* UNKNOWN_LABEL = "unknown";

  Euid lid_;
  std::string product_;
  unsigned short sid_ = 0xFFFF;
  bool online_ = false;
  unsigned char reflash_profile_ = 0;
  std::string fw_ver_;
  unsigned short reboots_ = 0;
  BPosixTime reboots_reset_time = vessoriStartTime_;
  unsigned short boot_count_ = 0;
  RebootHistogram reboots_histogram_{RebootHistogram::WINDOW_SIZE};
  Deque routes;
  bool updating_ = false;
  unsigned char update_percentage_ = 0;
  unsigned char device_type_ = 0;
  bool awake_ = true;
  unsigned short ap_poll_interval_ = 0;
  unsigned short parent_poll_interval_ = 0;
  unsigned long long accepted_packet_successes_ = 0;
  unsigned long long accepted_packet_failures_ = 0;
  unsigned long long packet_delivery_successes_ = 0;
  unsigned long long packet_delivery_failures_ = 0;
  unsigned long long inbound_unicast_count_ = 0;
  unsigned long long inbound_multicast_count_ = 0;
  unsigned long long outbound_packet_count_ = 0;
  unsigned long long source_route_failures_ = 0;
  MessageFailHistogram source_route_failures_histogram_{MessageFailHistogram::WINDOW_SIZE};
  BPosixTime source_route_failures_reset_time_ = vessoriStartTime_;
  unsigned long long many_to_one_route_failures_ = 0;
  MessageFailHistogram many_to_one_route_failures_histogram_{MessageFailHistogram::WINDOW_SIZE};
  BPosixTime many_to_one_route_failures_reset_time_ = vessoriStartTime_;
  detail::NotCopied<boost::shared_ptr<NetworkHealth>> networkHealth_;
  unsigned char max_hops_ = 0;
  bool update_failed_ = false;
  std::string label_ = UNKNOWN_LABEL;
  unsigned char channel_ = 0;
  std::time_t last_contact_ = 0;
  unsigned int pending_queue_size_ = 0;
  unsigned int inflight_queue_size_ = 0;
  std::time_t reflash_time_ = 0;
  signed char rssi_ = 0;
  bool has_rssi_ = false;
  unsigned char rx_lqi_ = 0;
  bool has_rx_lqi_ = false;
  unsigned char tx_lqi_ = 0;
  bool has_tx_lqi_ = false;
  unsigned char radio_bars_ = 0;
  bool has_radio_bars_ = false;
  std::list<Hop> hops_;
  std::list<Route> mto_routes_;
  std::list<AccessPoint> ap_table_;
  std::list<signed char> energy_levels_;
  bool has_battery_level_ = false;
  signed char battery_level_ = 0;
  unsigned int uptime_ = 0;
  signed char signal_strength_ = -1;
  QxdiagnosticsNodeCounters packet_counters_;
};

/// Writes `printSourceRoutes()`.
std::ostream& operator<<(std::ostream& out, const ZigbeeNode& node);

}  // namespace qx
