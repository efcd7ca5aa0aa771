// Random histories of a node against a second account of its health, which keeps every event and counts anew each time.
// The seeds are fixed: a failure comes again.
#include <gtest/gtest.h>

#include <algorithm>
#include <boost/date_time/posix_time/posix_time_types.hpp>
#include <cmath>
#include <cstdint>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "Nodes.h"
#include "vso/node/ZigbeeNode.h"

namespace qx {
namespace {

constexpr std::int64_t SECOND = 1000000;

/// Microseconds since 1970.
std::int64_t microsecondsOf(const BPosixTime& time) { return (time - test::timeOf(0)).total_microseconds(); }

BPosixTime timeFrom(std::int64_t microseconds) {
  return test::timeOf(0) + boost::posix_time::microseconds(microseconds);
}

/// One story in the words of its rules.
class Story {
 public:
  Story(std::int64_t bucketSeconds, double tolerance, int green, int yellow, std::int64_t window)
      : bucketSeconds_(bucketSeconds), tolerance_(tolerance), green_(green), yellow_(yellow), window_(window) {}

  /// The count begins at one time, the window at another.
  void begin(std::int64_t resetTime, std::int64_t start) {
    resetTime_ = resetTime;
    start_ = start;
    passes_.clear();
    lastEvent_ = start;
  }

  std::int64_t window() const { return window_; }
  std::int64_t start() const { return start_; }
  std::int64_t bucketSeconds() const { return bucketSeconds_; }

  /// So many events at one time.
  void events(std::int64_t now, std::int64_t count) {
    passes_.push_back({lastEvent_, now, 1});
    lastEvent_ = now;
    if (count == 1) return;
    // Each of the others comes after an event of its own time. A bucket before the start may still be passed then, and
    // all but the last event with it.
    const Pass others{now, now, count - 1};
    passes_.push_back({now, now, isPassed(number(now), others) ? 1 : count - 1});
  }

  double cumulativeAverage(float count, std::int64_t now) const {
    return static_cast<double>(count) / static_cast<double>(begun(now - resetTime_));
  }
  int cumulativeLight(float count, std::int64_t now) const {
    const float up = std::ceil(static_cast<float>(cumulativeAverage(count, now)));
    return light(static_cast<double>(up));
  }
  double slidingAverage(std::int64_t now) {
    passes_.push_back({lastEvent_, now, 0});
    std::int64_t events = 0;
    for (auto pass = passes_.begin(); pass != passes_.end(); ++pass) {
      const std::uint64_t bucket = number(pass->now);
      const bool isLeft =
          std::none_of(pass + 1, passes_.end(), [&](const Pass& later) { return isPassed(bucket, later); });
      if (isLeft) events += pass->events;
    }
    return static_cast<double>(events) / static_cast<double>(std::min(begun(now - start_), window_));
  }
  int slidingLight(std::int64_t now) {
    return light(static_cast<double>(std::round(static_cast<float>(slidingAverage(now)))));
  }

 private:
  /// A moment at which the story was looked at, with the time of the event before it and the events that it brought.
  struct Pass {
    std::int64_t lastEvent;
    std::int64_t now;
    std::int64_t events;
  };

  /// Number of a bucket as 32 bits have it.
  std::uint64_t number(std::int64_t time) const {
    return static_cast<std::uint32_t>((time - start_) / SECOND / bucketSeconds_);
  }

  /// Whether a look clears the place of a bucket on its way.
  bool isPassed(std::uint64_t bucket, const Pass& pass) const {
    if (pass.now - pass.lastEvent >= window_ * bucketSeconds_ * SECOND) return true;
    const std::uint64_t first = static_cast<std::uint32_t>(number(pass.lastEvent) + 1);
    const std::uint64_t last = number(pass.now);
    const auto window = static_cast<std::uint64_t>(window_);
    const std::uint64_t toPlace = (bucket % window + window - first % window) % window;
    return first <= last && toPlace <= last - first;
  }

  /// Buckets begun within a time.
  std::int64_t begun(std::int64_t elapsed) const {
    if (elapsed <= bucketSeconds_ * SECOND) return 1;
    const auto widths =
        static_cast<float>(static_cast<long double>(elapsed) / 1000000.0L / static_cast<long double>(bucketSeconds_));
    const float whole = std::trunc(widths);
    const bool isWhole = static_cast<double>(widths - whole) < tolerance_;
    return static_cast<std::int64_t>(isWhole ? whole : std::trunc(widths + 1.0F));
  }

  int light(double rate) const { return rate <= green_ ? 3 : rate <= yellow_ ? 2 : 1; }

  std::int64_t bucketSeconds_;
  double tolerance_;
  int green_;
  int yellow_;
  std::int64_t window_;
  std::int64_t resetTime_ = 0;
  std::int64_t start_ = 0;
  std::int64_t lastEvent_ = 0;
  std::vector<Pass> passes_;
};

class Random {
 public:
  explicit Random(unsigned int seed) : generator_(seed) {}
  std::int64_t below(std::int64_t bound) {
    return static_cast<std::int64_t>((std::uint64_t{generator_()} << 32 | generator_()) %
                                     static_cast<std::uint64_t>(bound));
  }
  bool oneIn(int chances) { return below(chances) == 0; }

 private:
  std::mt19937 generator_;
};

/// A time after `now`: a moment, part of a bucket, near a border, past the window, or back.
std::int64_t next(std::int64_t now, const Story& story, Random& random) {
  const std::int64_t bucket = story.bucketSeconds() * SECOND;
  switch (random.below(10)) {
    case 0:
      return now;
    case 1:
      return now + random.below(SECOND);
    case 2:
    case 3:
      return now + random.below(bucket);
    case 4: {
      // Round a border of a bucket: exactly on it, or a little off, up to beyond what is tolerated.
      const std::int64_t border = story.start() + ((now - story.start()) / bucket + 1 + random.below(3)) * bucket;
      return border + random.below(3) - 1;
    }
    case 5: {
      const std::int64_t border = story.start() + ((now - story.start()) / bucket + 1) * bucket;
      return border + random.below(2 * SECOND) - SECOND;
    }
    case 6:
      return now + random.below(story.window() * bucket * 2);
    case 7:
      return now + story.window() * bucket + random.below(3) - 1;
    case 8:
      return random.oneIn(8) ? now + random.below(20 * 365 * 86400 * SECOND) : now + random.below(bucket);
    default:
      return random.oneIn(3) ? now - random.below(bucket * 3) : now + random.below(bucket);
  }
}

/// A node and its three stories.
struct Histories {
  explicit Histories(Random& random)
      : reboots(86400, 0.000001, 10, 20, random.oneIn(2) ? 7 : 1 + random.below(30)),
        outbound(3600, 0.0002, 50, 300, random.oneIn(2) ? 24 : 1 + random.below(30)),
        inbound(3600, 0.0002, 50, 300, outbound.window()) {
    node.rebootsHistogramWindow(static_cast<unsigned int>(reboots.window()));
    node.messageFailHistogramWindow(static_cast<unsigned int>(outbound.window()));
    // Each began to count with the window, or some years before.
    const std::int64_t start = microsecondsOf(node.rebootsHistogram().startTime());
    const auto resetTime = [&] {
      return timeFrom(start - (random.oneIn(2) ? 0 : random.below(3000LL * 86400 * SECOND)));
    };
    node.rebootsResetTime(resetTime());
    node.sourceRouteFailuresResetTime(resetTime());
    node.manyToOneRouteFailuresResetTime(resetTime());
    takeClocks();
    if (random.oneIn(4)) setCounts(random);
  }

  void takeClocks() {
    reboots.begin(microsecondsOf(node.rebootsResetTime()), microsecondsOf(node.rebootsHistogram().startTime()));
    outbound.begin(microsecondsOf(node.sourceRouteFailuresResetTime()),
                   microsecondsOf(node.sourceRouteFailuresHistogram().startTime()));
    inbound.begin(microsecondsOf(node.manyToOneRouteFailuresResetTime()),
                  microsecondsOf(node.manyToOneRouteFailuresHistogram().startTime()));
  }
  /// Counts that soon wrap, or do not fit into single precision.
  void setCounts(Random& random) {
    rebootCount = static_cast<std::uint64_t>(65530 + random.below(6));
    outboundCount = static_cast<std::uint64_t>((1 << 24) - 5 + random.below(10));
    inboundCount = ~std::uint64_t{0} - static_cast<std::uint64_t>(random.below(1LL << random.below(63)));
    node.reboots(static_cast<unsigned short>(rebootCount));
    node.sourceRouteFailures(outboundCount);
    node.manyToOneRouteFailures(inboundCount);
  }

  ZigbeeNode node;
  Story reboots;
  Story outbound;
  Story inbound;
  std::uint64_t rebootCount = 0;
  std::uint64_t outboundCount = 0;
  std::uint64_t inboundCount = 0;
};

/// The averages and lights of a node at a time, on one line for each story.
std::string told(ZigbeeNode& node, const BPosixTime& now) {
  RebootHistogram reboots = node.rebootsHistogram();
  MessageFailHistogram outbound = node.sourceRouteFailuresHistogram();
  MessageFailHistogram inbound = node.manyToOneRouteFailuresHistogram();
  std::ostringstream out;
  out << std::hexfloat;
  out << node.reboots() << ' ' << node.rebootCumulativeAverage(now) << ' ' << node.rebootCumulativeQuality(now) << ' '
      << reboots.rate(now) << ' ' << node.rebootSlidingQuality(now) << '\n';
  out << node.sourceRouteFailures() << ' ' << node.sourceRouteFailuresCumulativeAverage(now) << ' '
      << node.sourceRouteFailuresCumulativeQuality(now) << ' ' << outbound.rate(now) << ' '
      << node.sourceRouteFailuresSlidingQuality(now) << '\n';
  out << node.manyToOneRouteFailures() << ' ' << node.manyToOneRouteFailuresCumulativeAverage(now) << ' '
      << node.manyToOneRouteFailuresCumulativeQuality(now) << ' ' << inbound.rate(now) << ' '
      << node.manyToOneRouteFailuresSlidingQuality(now) << '\n';
  return out.str();
}

void tell(std::ostream& out, std::uint64_t count, Story& story, std::int64_t now) {
  const auto single = static_cast<float>(count);
  out << count << ' ' << story.cumulativeAverage(single, now) << ' ' << story.cumulativeLight(single, now) << ' '
      << story.slidingAverage(now) << ' ' << story.slidingLight(now) << '\n';
}

std::string expected(Histories& histories, std::int64_t now) {
  std::ostringstream out;
  out << std::hexfloat;
  tell(out, histories.rebootCount, histories.reboots, now);
  tell(out, histories.outboundCount, histories.outbound, now);
  tell(out, histories.inboundCount, histories.inbound, now);
  return out.str();
}

/// Plays one history and looks at it now and then.
void play(unsigned int seed) {
  Random random(seed);
  Histories histories(random);
  ZigbeeNode& node = histories.node;
  std::int64_t now = std::max({histories.reboots.start(), histories.outbound.start(), histories.inbound.start()});
  const std::int64_t steps = 1 + random.below(20);
  for (std::int64_t step = 0; step < steps; ++step) {
    now = next(now, random.oneIn(2) ? histories.reboots : histories.outbound, random);
    const BPosixTime time = timeFrom(now);
    std::int64_t events = 0;
    switch (random.below(8)) {
      case 0:
      case 1:
        events = 1 + random.below(30);
        histories.rebootCount = (histories.rebootCount + static_cast<std::uint64_t>(events)) % 65536;
        histories.reboots.events(now, events);
        for (std::int64_t i = 0; i < events; ++i) node.addRebootEvent(time);
        break;
      case 2:
      case 3:
        events = 1 + random.below(80);
        histories.outboundCount += static_cast<std::uint64_t>(events);
        histories.outbound.events(now, events);
        for (std::int64_t i = 0; i < events; ++i) node.addSourceRouteFailure(time);
        break;
      case 4:
      case 5:
        events = 1 + random.below(400);
        histories.inboundCount += static_cast<std::uint64_t>(events);
        histories.inbound.events(now, events);
        for (std::int64_t i = 0; i < events; ++i) node.addManyToOneRouteFailure(time);
        break;
      case 6:
        ASSERT_EQ(told(node, time), expected(histories, now)) << "seed " << seed << ", step " << step;
        break;
      default:
        if (random.oneIn(20)) {
          node.resetRebootCounter();
          node.resetSourceRouteFailures();
          node.resetManyToOneRouteFailures();
          histories.rebootCount = histories.outboundCount = histories.inboundCount = 0;
          histories.takeClocks();
          now = microsecondsOf(node.manyToOneRouteFailuresHistogram().startTime());
        }
    }
  }
  ASSERT_EQ(told(node, timeFrom(now)), expected(histories, now)) << "seed " << seed;
}

class ZigbeeNodeHealthModel : public testing::TestWithParam<unsigned int> {};

TEST_P(ZigbeeNodeHealthModel, AgreesOverAThousandHistories) {
  for (unsigned int i = 0; i < 1000; ++i) {
    play(GetParam() * 1000 + i);
    if (HasFatalFailure()) return;
  }
}

INSTANTIATE_TEST_SUITE_P(Seeds, ZigbeeNodeHealthModel, testing::Range(0U, 20U));

}  // namespace
}  // namespace qx
