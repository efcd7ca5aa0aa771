// The health of a node: counts, averages, lights, the radio link and the report of all of them.
#include <log4cplus/logger.h>

#include <boost/smart_ptr/make_shared.hpp>
#include <cmath>
#include <utility>

#include "vso/logging/Log.h"
#include "vso/node/NetworkHealth.h"
#include "vso/node/ZigbeeNode.h"
#include "vso/node/simpleTime.h"
#include "vso/node/wholeNumber.h"
#include "vso/proto/ZigbeeNodePBuf.pb.h"

namespace qx {

namespace {

const log4cplus::Logger logger = log4cplus::Logger::getRoot();

/// The count in single precision over the buckets begun.
template <typename Count>
double cumulativeAverage(Count count, unsigned int buckets) {
  return static_cast<double>(static_cast<float>(count)) / static_cast<double>(buckets);
}

/// The next whole number up from an average, which is taken in single precision.
int roundedUp(double average) { return detail::nearestInt(std::ceil(static_cast<float>(average))); }

int light(int rate, int green, int yellow) {
  if (rate <= green) return pb::green;
  return rate <= yellow ? pb::yellow : pb::red;
}

std::string thresholds(int green, int yellow) { return std::to_string(green) + " " + std::to_string(yellow); }

/// What an int keeps of a count.
int lowBits(unsigned long long count) { return static_cast<int>(static_cast<unsigned int>(count)); }

}  // namespace

const std::string ZigbeeNode::REBOOT_COUNT = "reboot.count";
const std::string ZigbeeNode::REBOOT_CUMULATIVE_COUNT = "reboot.cumulative_count";
const std::string ZigbeeNode::REBOOT_CUMULATIVE_AVERAGE = "reboot.cumulative_average";
const std::string ZigbeeNode::REBOOT_CUMULATIVE_QUALITY = "reboot.cumulative_quality";
const std::string ZigbeeNode::REBOOT_SLIDING_AVERAGE = "reboot.sliding_average";
const std::string ZigbeeNode::REBOOT_SLIDING_QUALITY = "reboot.sliding_quality";
const std::string ZigbeeNode::REBOOT_RESET_TIME = "reboot.reset_time";
const std::string ZigbeeNode::REBOOT_QUALITY_THRESHOLDS = "reboot.quality_thresholds";
const std::string ZigbeeNode::FOUR_BAR_SIGNAL_VALUE = "four_bar_signal.value";
const std::string ZigbeeNode::RX_LQI_VALUE = "rx_lqi.value";
const std::string ZigbeeNode::TX_LQI_VALUE = "tx_lqi.value";
const std::string ZigbeeNode::RSSI_VALUE = "rssi.value";
const std::string ZigbeeNode::IRF_CUMULATIVE_COUNT = "inbound_route_failures.cumulative_count";
const std::string ZigbeeNode::IRF_CUMULATIVE_AVERAGE = "inbound_route_failures.cumulative_average";
const std::string ZigbeeNode::IRF_CUMULATIVE_QUALITY = "inbound_route_failures.cumulative_quality";
const std::string ZigbeeNode::IRF_SLIDING_AVERAGE = "inbound_route_failures.sliding_average";
const std::string ZigbeeNode::IRF_SLIDING_QUALITY = "inbound_route_failures.sliding_quality";
const std::string ZigbeeNode::IRF_RESET_TIME = "inbound_route_failures.reset_time";
const std::string ZigbeeNode::IRF_QUALITY_THRESHOLDS = "inbound_route_failures.quality_thresholds";
const std::string ZigbeeNode::ORF_CUMULATIVE_COUNT = "outbound_route_failures.cumulative_count";
const std::string ZigbeeNode::ORF_CUMULATIVE_AVERAGE = "outbound_route_failures.cumulative_average";
const std::string ZigbeeNode::ORF_CUMULATIVE_QUALITY = "outbound_route_failures.cumulative_quality";
const std::string ZigbeeNode::ORF_SLIDING_AVERAGE = "outbound_route_failures.sliding_average";
const std::string ZigbeeNode::ORF_SLIDING_QUALITY = "outbound_route_failures.sliding_quality";
const std::string ZigbeeNode::ORF_RESET_TIME = "outbound_route_failures.reset_time";
const std::string ZigbeeNode::ORF_QUALITY_THRESHOLDS = "outbound_route_failures.quality_thresholds";

void ZigbeeNode::addRebootEvent(const BPosixTime& now) {
  ++reboots_;
  reboots_histogram_.addEvent(now);
}

void ZigbeeNode::addSourceRouteFailure(const BPosixTime& now) {
  ++source_route_failures_;
  source_route_failures_histogram_.addEvent(now);
}

void ZigbeeNode::addManyToOneRouteFailure(const BPosixTime& now) {
  ++many_to_one_route_failures_;
  many_to_one_route_failures_histogram_.addEvent(now);
}

void ZigbeeNode::rebootsHistogramWindow(unsigned int days) { reboots_histogram_.windowSize(days); }

void ZigbeeNode::messageFailHistogramWindow(unsigned int hours) {
  source_route_failures_histogram_.windowSize(hours);
  many_to_one_route_failures_histogram_.windowSize(hours);
}

double ZigbeeNode::rebootCumulativeAverage(const BPosixTime& now) const {
  return cumulativeAverage(reboots_, RebootHistogram::wholeDays(now - reboots_reset_time));
}

double ZigbeeNode::sourceRouteFailuresCumulativeAverage(const BPosixTime& now) const {
  return cumulativeAverage(source_route_failures_,
                           MessageFailHistogram::wholeHours(now - source_route_failures_reset_time_));
}

double ZigbeeNode::manyToOneRouteFailuresCumulativeAverage(const BPosixTime& now) const {
  return cumulativeAverage(many_to_one_route_failures_,
                           MessageFailHistogram::wholeHours(now - many_to_one_route_failures_reset_time_));
}

int ZigbeeNode::rebootCumulativeQuality(const BPosixTime& now) const {
  return rebootQualityImpl(roundedUp(rebootCumulativeAverage(now)));
}

int ZigbeeNode::sourceRouteFailuresCumulativeQuality(const BPosixTime& now) {
  return messageFailuresQualityImpl(roundedUp(sourceRouteFailuresCumulativeAverage(now)));
}

int ZigbeeNode::manyToOneRouteFailuresCumulativeQuality(const BPosixTime& now) {
  return messageFailuresQualityImpl(roundedUp(manyToOneRouteFailuresCumulativeAverage(now)));
}

int ZigbeeNode::rebootSlidingQuality(const BPosixTime& now) {
  return rebootQualityImpl(reboots_histogram_.quality(now));
}

int ZigbeeNode::sourceRouteFailuresSlidingQuality(const BPosixTime& now) {
  return messageFailuresQualityImpl(source_route_failures_histogram_.quality(now));
}

int ZigbeeNode::manyToOneRouteFailuresSlidingQuality(const BPosixTime& now) {
  return messageFailuresQualityImpl(many_to_one_route_failures_histogram_.quality(now));
}

int ZigbeeNode::rebootQualityImpl(int rate) const { return light(rate, REBOOT_QUALITY_GREEN, REBOOT_QUALITY_YELLOW); }

int ZigbeeNode::messageFailuresQualityImpl(int rate) const {
  return light(rate, ROUTE_QUALITY_GREEN, ROUTE_QUALITY_YELLOW);
}

std::string ZigbeeNode::rebootQualityThresholds() const {
  return thresholds(REBOOT_QUALITY_GREEN, REBOOT_QUALITY_YELLOW);
}

std::string ZigbeeNode::routeQualityThresholds() const { return thresholds(ROUTE_QUALITY_GREEN, ROUTE_QUALITY_YELLOW); }

void ZigbeeNode::updateSignalStrength() {
  if (has_radio_bars_) {
    signal_strength_ = static_cast<signed char>(radio_bars_);
    return;
  }
  if (!has_rx_lqi_) {
    signal_strength_ = pb::SIGNAL_STRENGTH_UNKNOWN;
    return;
  }
  if (rx_lqi_ >= pb::SIGNAL_STRENGTH_4_BAR_LQI) {
    signal_strength_ = pb::SIGNAL_STRENGTH_4_BAR;
  } else if (rx_lqi_ >= pb::SIGNAL_STRENGTH_3_BAR_LQI) {
    signal_strength_ = pb::SIGNAL_STRENGTH_3_BAR;
  } else if (rx_lqi_ >= pb::SIGNAL_STRENGTH_2_BAR_LQI) {
    signal_strength_ = pb::SIGNAL_STRENGTH_2_BAR;
  } else if (rx_lqi_ >= pb::SIGNAL_STRENGTH_1_BAR_LQI) {
    signal_strength_ = pb::SIGNAL_STRENGTH_1_BAR;
  } else {
    signal_strength_ = pb::SIGNAL_STRENGTH_0_BAR;
    return;
  }
  if (has_rssi_ && rssi_ <= pb::SIGNAL_STRENGTH_2_BAR_RSSI) --signal_strength_;
}

void ZigbeeNode::invalidateNodeSignalInfo() {
  rssi_ = 0;
  has_rssi_ = false;
  rx_lqi_ = 0;
  has_rx_lqi_ = false;
  tx_lqi_ = 0;
  has_tx_lqi_ = false;
  radio_bars_ = 0;
  has_radio_bars_ = false;
  signal_strength_ = pb::SIGNAL_STRENGTH_UNKNOWN;
}

void ZigbeeNode::resetRebootCounter() {
  reboots_ = 0;
  reboots_reset_time = localtime();
  reboots_histogram_.reset();
}

void ZigbeeNode::resetSourceRouteFailures() {
  source_route_failures_ = 0;
  source_route_failures_reset_time_ = localtime();
  source_route_failures_histogram_.reset();
}

void ZigbeeNode::resetManyToOneRouteFailures() {
  many_to_one_route_failures_ = 0;
  many_to_one_route_failures_reset_time_ = localtime();
  many_to_one_route_failures_histogram_.reset();
}

bool ZigbeeNode::resetHealthCounters(const std::vector<std::string>& names) {
  bool isRefused = false;
  for (const std::string& name : names) {
    if (name == REBOOT_CUMULATIVE_COUNT) {
      resetRebootCounter();
    } else if (name == ORF_CUMULATIVE_COUNT) {
      resetSourceRouteFailures();
    } else if (name == IRF_CUMULATIVE_COUNT) {
      resetManyToOneRouteFailures();
    } else {
      VSO_LOG(logger, log4cplus::WARN_LOG_LEVEL,
              "ZigbeeNode::resetHealthCounters: " << printId() << ": Cannot reset " << name << " counter");
      isRefused = true;
    }
  }
  return isRefused;
}

void ZigbeeNode::resetCounters() {
  accepted_packet_successes_ = 0;
  accepted_packet_failures_ = 0;
  packet_delivery_successes_ = 0;
  packet_delivery_failures_ = 0;
  inbound_unicast_count_ = 0;
  inbound_multicast_count_ = 0;
  outbound_packet_count_ = 0;
  max_hops_ = 0;
  resetSourceRouteFailures();
  resetManyToOneRouteFailures();
}

namespace {

// Words of the report.
const std::string NONE;
const std::string LEAST = "0";
const std::string GREATEST = "65536";
const std::string LIGHTS = "red/yellow/green";
const std::string LIGHT_THRESHOLDS = "red/yellow/green thresholds";
const std::string LAST_RESET = "time of last reset";
const std::string A_DAY = "reboots/day";
const std::string AN_HOUR = "failures/hr";
const std::string FAILURES = "failures since reset";
const std::string BOOTS = "reboots since manufacture";
const std::string REBOOTS = "reboots since reset";
const std::string BARS = "4 bar signal";
const std::string MOST_BARS = "4";
const std::string BEST_LQI = "255";
const std::string UNITLESS = "unitless";
const std::string LEAST_RSSI = "-100";
const std::string DBM = "dBm";

/// The items of a report as they come together.
class Report {
 public:
  explicit Report(std::size_t count) { items_.reserve(count); }

  /// A number of a story, labelled with the limits that all of them have.
  template <typename Number>
  void number(const std::string& name, Number value, const std::string& units) {
    number(name, LEAST, GREATEST, value, units);
  }
  template <typename Value>
  void number(const std::string& name, const std::string& min, const std::string& max, const Value& value,
              const std::string& units) {
    NetworkHealthItem::add(items_, name, NetworkHealthItem::number, min, max, value, units);
  }
  void resetTime(const std::string& name, const BPosixTime& time) {
    items_.emplace_back(name, NetworkHealthItem::timestamp, NONE, NONE, detail::simpleTime(time), LAST_RESET);
  }
  void thresholds(const std::string& name, std::string value) {
    items_.emplace_back(name, NetworkHealthItem::string, NONE, NONE, std::move(value), LIGHT_THRESHOLDS);
  }

  std::vector<NetworkHealthItem> take() { return std::move(items_); }

 private:
  std::vector<NetworkHealthItem> items_;
};

}  // namespace

void ZigbeeNode::gatherNetworkHealth() {
  constexpr std::size_t ITEM_COUNT = 26;
  Report report(ITEM_COUNT);
  report.number(REBOOT_COUNT, static_cast<int>(boot_count_), BOOTS);
  report.number(REBOOT_CUMULATIVE_COUNT, static_cast<int>(reboots_), REBOOTS);
  report.number(REBOOT_CUMULATIVE_AVERAGE, rebootCumulativeAverage(localtime()), A_DAY);
  report.number(REBOOT_CUMULATIVE_QUALITY, rebootCumulativeQuality(localtime()), LIGHTS);
  report.number(REBOOT_SLIDING_AVERAGE, reboots_histogram_.rate(localtime()), A_DAY);
  report.number(REBOOT_SLIDING_QUALITY, rebootSlidingQuality(localtime()), LIGHTS);
  report.resetTime(REBOOT_RESET_TIME, reboots_reset_time);
  report.thresholds(REBOOT_QUALITY_THRESHOLDS, rebootQualityThresholds());

  if (!has_radio_bars_) updateSignalStrength();
  report.number(FOUR_BAR_SIGNAL_VALUE, LEAST, MOST_BARS,
                has_radio_bars_ ? static_cast<int>(radio_bars_) : static_cast<int>(signal_strength_), BARS);
  if (!has_rx_lqi_) {
    VSO_LOG(logger, log4cplus::TRACE_LOG_LEVEL,
            "ZigbeeNode::gatherNetworkHealth: " << printId() << ": no rx lqi information available");
  }
  report.number(RX_LQI_VALUE, LEAST, BEST_LQI, has_rx_lqi_ ? rx_lqi_ : -1, UNITLESS);
  if (!has_tx_lqi_) {
    VSO_LOG(logger, log4cplus::TRACE_LOG_LEVEL,
            "ZigbeeNode::gatherNetworkHealth: " << printId() << ": no tx lqi information available");
  }
  report.number(TX_LQI_VALUE, LEAST, BEST_LQI, has_tx_lqi_ ? tx_lqi_ : -1, UNITLESS);
  if (!has_rssi_) {
    VSO_LOG(logger, log4cplus::TRACE_LOG_LEVEL,
            "ZigbeeNode::gatherNetworkHealth: " << printId() << ": no rssi information available");
  }
  report.number(RSSI_VALUE, LEAST_RSSI, LEAST, has_rssi_ ? rssi_ : -1000, DBM);

  report.number(IRF_CUMULATIVE_COUNT, lowBits(many_to_one_route_failures_), FAILURES);
  report.number(IRF_CUMULATIVE_AVERAGE, manyToOneRouteFailuresCumulativeAverage(localtime()), AN_HOUR);
  report.number(IRF_CUMULATIVE_QUALITY, manyToOneRouteFailuresCumulativeQuality(localtime()), LIGHTS);
  report.number(IRF_SLIDING_AVERAGE, many_to_one_route_failures_histogram_.rate(localtime()), AN_HOUR);
  report.number(IRF_SLIDING_QUALITY, manyToOneRouteFailuresSlidingQuality(localtime()), LIGHTS);
  report.resetTime(IRF_RESET_TIME, many_to_one_route_failures_reset_time_);
  report.thresholds(IRF_QUALITY_THRESHOLDS, routeQualityThresholds());

  report.number(ORF_CUMULATIVE_COUNT, lowBits(source_route_failures_), FAILURES);
  report.number(ORF_CUMULATIVE_AVERAGE, sourceRouteFailuresCumulativeAverage(localtime()), AN_HOUR);
  report.number(ORF_CUMULATIVE_QUALITY, sourceRouteFailuresCumulativeQuality(localtime()), LIGHTS);
  report.number(ORF_SLIDING_AVERAGE, source_route_failures_histogram_.rate(localtime()), AN_HOUR);
  report.number(ORF_SLIDING_QUALITY, sourceRouteFailuresSlidingQuality(localtime()), LIGHTS);
  report.resetTime(ORF_RESET_TIME, source_route_failures_reset_time_);
  report.thresholds(ORF_QUALITY_THRESHOLDS, routeQualityThresholds());

  auto health = boost::make_shared<NetworkHealth>();
  health->nodeHealth(lid_, report.take());
  networkHealth_.set(std::move(health));
}

bool ZigbeeNode::updateNetworkHealth() {
  const boost::shared_ptr<NetworkHealth> before = networkHealth();
  gatherNetworkHealth();
  return !before || *networkHealth() != *before;
}

}  // namespace qx
