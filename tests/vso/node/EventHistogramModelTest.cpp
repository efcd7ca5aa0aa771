// The ring of buckets against a list of all events with their times.
#include <gtest/gtest.h>

#include <algorithm>
#include <ostream>
#include <random>
#include <string>
#include <vector>

#include "vso/node/Histograms.h"
#include "vso/node/MessageFailHistogram.h"
#include "vso/node/RebootHistogram.h"

namespace qx {
namespace {

using boost::posix_time::microseconds;
using test::emptyHistogram;
using test::start;

constexpr long long HOUR = 3600000000;
constexpr long long DAY = 24 * HOUR;

/// What a histogram should be, worked out anew at each question from all that has happened. Times are microseconds
/// since the start, and not before it; all arithmetic is in whole numbers.
class EventList {
 public:
  EventList(unsigned int window, long long bucket, long long tolerated, long long toleratedOf)
      : window_(window), bucket_(bucket), tolerated_(tolerated), toleratedOf_(toleratedOf) {}

  void update(long long now) { moments_.push_back({now, lastEvent_, false}); }

  void addEvent(long long now) {
    moments_.push_back({now, lastEvent_, true});
    lastEvent_ = now;
  }

  long long lastEvent() const { return lastEvent_; }

  /// An event is in the ring unless the time has passed over its place since.
  std::vector<int> ring() const {
    std::vector<int> counts(window_);
    for (std::size_t i = 0; i < moments_.size(); ++i) {
      if (!moments_[i].isEvent) continue;
      const long long place = moments_[i].now / bucket_ % window_;
      const bool isGone = std::any_of(moments_.begin() + static_cast<std::ptrdiff_t>(i) + 1, moments_.end(),
                                      [&](const Moment& later) { return passes(later, place); });
      if (!isGone) ++counts[static_cast<std::size_t>(place)];
    }
    return counts;
  }

  /// The same while the clock only goes forward: the events of the last buckets of a window.
  std::vector<int> window() const {
    std::vector<int> counts(window_);
    const long long newest = moments_.empty() ? 0 : moments_.back().now / bucket_;
    for (const Moment& moment : moments_) {
      const long long bucket = moment.now / bucket_;
      if (moment.isEvent && bucket > newest - window_) ++counts[static_cast<std::size_t>(bucket % window_)];
    }
    return counts;
  }

  int total() const {
    int sum = 0;
    for (const int count : ring()) sum += count;
    return sum;
  }

  double rate(long long now) const { return static_cast<double>(total()) / static_cast<double>(begun(now)); }

  /// The nearest whole number, halves up: there are no negative counts here.
  int quality(long long now) const {
    const long long n = begun(now);
    return static_cast<int>((2 * total() + n) / (2 * n));
  }

 private:
  struct Moment {
    long long now;
    long long lastEvent;
    bool isEvent;
  };

  /// A number in single precision: `mantissa` / 2^`scale`, the mantissa having 24 bits.
  struct Single {
    long long mantissa;
    int scale;
    long long whole() const { return mantissa >> scale; }
    long long fraction() const { return mantissa - (whole() << scale); }
  };

  /// True if what happens at `moment` clears a place: if a number that is at this place lies behind that of the last
  /// event and not behind that of now, or if the last event is a window ago.
  bool passes(const Moment& moment, long long place) const {
    if (moment.now - moment.lastEvent >= bucket_ * window_) return true;
    const auto comings = [&](long long time) { return (time / bucket_ - place + window_) / window_; };
    return comings(moment.now) > comings(moment.lastEvent);
  }

  /// `dividend` / `divisor`, of at least 1 and less than 2^20, to the nearest single, ties to even.
  static Single nearest(long long dividend, long long divisor) {
    const long long whole = dividend / divisor;
    int scale = 23;
    while (whole >> (24 - scale) != 0) --scale;
    const long long scaled = (dividend % divisor) << scale;
    long long mantissa = (whole << scale) + scaled / divisor;
    const long long twiceTheRest = 2 * (scaled % divisor);
    if (twiceTheRest > divisor || (twiceTheRest == divisor && mantissa % 2 != 0)) ++mantissa;
    return {mantissa, scale};
  }

  long long begun(long long now) const {
    if (now <= bucket_) return std::min(1LL, window_);
    const Single buckets = nearest(now, bucket_);
    const bool isTolerated = buckets.fraction() * toleratedOf_ < (tolerated_ << buckets.scale);
    if (isTolerated) return std::min(buckets.whole(), window_);
    const Single more = nearest(buckets.mantissa + (1LL << buckets.scale), 1LL << buckets.scale);
    return std::min(more.whole(), window_);
  }

  long long window_;
  long long bucket_;
  long long tolerated_;
  long long toleratedOf_;
  std::vector<Moment> moments_;
  long long lastEvent_ = 0;
};

struct Model {
  unsigned int seed;
  bool isForwardOnly;
};

std::ostream& operator<<(std::ostream& out, const Model& model) {
  return out << "seed " << model.seed << (model.isForwardOnly ? ", forward only" : "");
}

class EventHistogramModel : public testing::TestWithParam<Model> {
 protected:
  static constexpr int HISTORIES = 5000;

  /// The next time: the same, a little or some buckets on, next to the border of a bucket, beyond the window, or back.
  long long step(long long now, long long bucket, long long window) {
    const long long beside = pick(-3, 3) * (pick(0, 1) == 0 ? 1 : bucket / 100000);
    long long next = now;
    switch (pick(0, GetParam().isForwardOnly ? 6 : 9)) {
      case 0:
        break;
      case 1:
        next += pick(1, bucket);
        break;
      case 2:
        next += pick(1, 3 * bucket);
        break;
      case 3:
        next = (now / bucket + pick(1, 3)) * bucket + beside;
        break;
      case 4:
        next += bucket * window + beside;
        break;
      case 5:
        next += bucket * pick(0, window + 1);
        break;
      case 6:
        next += pick(1, 3 * bucket * window);
        break;
      case 7:
        next -= pick(1, 2 * bucket);
        break;
      case 8:
        next -= pick(1, bucket * window);
        break;
      default:
        next = pick(0, 1) == 0 ? 0 : now / bucket * bucket + beside;
    }
    return std::max(next, GetParam().isForwardOnly ? now : 0);
  }

  long long pick(long long least, long long greatest) {
    return std::uniform_int_distribution<long long>(least, greatest)(random_);
  }

  template <typename Histogram>
  void compare(long long bucket, long long tolerated, long long toleratedOf) {
    for (int history = 0; history < HISTORIES && !HasFailure(); ++history) {
      const long long window = pick(0, 3) == 0 ? Histogram::WINDOW_SIZE : pick(1, 30);
      auto histogram = emptyHistogram<Histogram>(static_cast<unsigned int>(window));
      EventList list(static_cast<unsigned int>(window), bucket, tolerated, toleratedOf);
      std::string told = "history " + std::to_string(history) + ", window " + std::to_string(window) + ":";
      long long now = 0;
      for (int i = 0; i < 14 && !HasFailure(); ++i) {
        now = step(now, bucket, window);
        const BPosixTime time = start() + microseconds(now);
        const long long kind = pick(0, 5);
        told += (kind == 0   ? " update "
                 : kind == 1 ? " rate "
                 : kind == 2 ? " quality "
                             : " event ") +
                std::to_string(now);
        if (kind <= 2) {
          list.update(now);
        } else {
          list.addEvent(now);
        }
        if (kind == 0) {
          histogram.update(time);
        } else if (kind == 1) {
          EXPECT_EQ(histogram.rate(time), list.rate(now)) << told;
        } else if (kind == 2) {
          EXPECT_EQ(histogram.quality(time), list.quality(now)) << told;
        } else {
          histogram.addEvent(time);
        }
        EXPECT_EQ(histogram.histogram(), list.ring()) << told;
        if (GetParam().isForwardOnly) {
          EXPECT_EQ(histogram.histogram(), list.window()) << told;
        }
        EXPECT_EQ(histogram.lastEvent(), start() + microseconds(list.lastEvent())) << told;
        EXPECT_EQ(histogram.startTime(), start()) << told;
        EXPECT_EQ(histogram.totalEvents(), list.total()) << told;
      }
    }
  }

 private:
  std::mt19937_64 random_{GetParam().seed};
};

TEST_P(EventHistogramModel, DaysAgreeWithTheListOfEvents) { compare<RebootHistogram>(DAY, 1, 1000000); }

TEST_P(EventHistogramModel, HoursAgreeWithTheListOfEvents) { compare<MessageFailHistogram>(HOUR, 2, 10000); }

INSTANTIATE_TEST_SUITE_P(Histories, EventHistogramModel,
                         testing::Values(Model{1, false}, Model{2, false}, Model{3, false}, Model{4, false},
                                         Model{5, false}, Model{6, false}, Model{7, true}, Model{8, true},
                                         Model{9, true}, Model{10, true}));

}  // namespace
}  // namespace qx
