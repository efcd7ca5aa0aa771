// How many stretches of time have begun within a duration.
#pragma once

#include <boost/date_time/posix_time/posix_time_types.hpp>

namespace qx::detail {

/// What a histogram's buckets are.
struct BucketWidth {
  static constexpr long long TICKS_A_SECOND = 1000000;
  static_assert(boost::posix_time::time_duration::rep_type::res_adjust() == TICKS_A_SECOND,
                "times are in microseconds");

  long long seconds;
  /// A rest below this part of a bucket does not count as a new one.
  double tolerance;

  boost::posix_time::time_duration duration() const { return boost::posix_time::seconds(seconds); }
  /// Number of the bucket that begins or goes on `duration` after the start of bucket 0, each division cut towards
  /// zero; a negative number wraps round.
  unsigned int indexOf(const boost::posix_time::time_duration& duration) const {
    return static_cast<unsigned int>(duration.ticks() / TICKS_A_SECOND / seconds);
  }
  /// How many buckets wide `duration` is, divided in extended and rounded to single precision.
  float widthsOf(const boost::posix_time::time_duration& duration) const;
  /// Buckets begun within `duration`, at least 1: also for a negative one, for minus infinity and not-a-date-time.
  unsigned int begunWithin(const boost::posix_time::time_duration& duration) const;
};

}  // namespace qx::detail
