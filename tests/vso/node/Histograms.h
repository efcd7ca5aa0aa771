// Histograms in a given state, for tests that must not depend on the clock.
#pragma once

#include <boost/date_time/posix_time/posix_time.hpp>
#include <memory>
#include <vector>

#include "vso/node/EventHistogram.h"
#include "vso/proto/EventHistogramPBuf.pb.h"

namespace qx::test {

/// A whole second that histograms of tests start at.
inline BPosixTime start() {
  return BPosixTime(boost::gregorian::date(2024, 1, 31), boost::posix_time::time_duration(13, 5, 9));
}

inline long long secondsSince1970(const BPosixTime& time) {
  return (time - BPosixTime(boost::gregorian::date(1970, 1, 1))).total_seconds();
}

/// What a histogram with this state writes; the times are whole seconds.
inline pb::EventHistogramPBuf histogramMessage(unsigned int windowSize, const std::vector<int>& counts,
                                               const BPosixTime& startTime, const BPosixTime& lastEvent) {
  pb::EventHistogramPBuf message;
  message.set_windowsize(windowSize);
  for (const int count : counts) message.add_histogram(count);
  message.mutable_starttime()->set_seconds(secondsSince1970(startTime));
  message.mutable_lastevent()->set_seconds(secondsSince1970(lastEvent));
  return message;
}

/// One that started at `start()`, with its last event then too.
template <typename Histogram>
Histogram histogramOf(unsigned int windowSize, const std::vector<int>& counts) {
  Histogram histogram(0);
  histogram.fromProtobuf(histogramMessage(windowSize, counts, start(), start()));
  return histogram;
}

/// The same with nothing counted.
template <typename Histogram>
Histogram emptyHistogram(unsigned int windowSize) {
  return histogramOf<Histogram>(windowSize, std::vector<int>(windowSize));
}

}  // namespace qx::test
