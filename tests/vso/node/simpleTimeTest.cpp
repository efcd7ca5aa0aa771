#include "vso/node/simpleTime.h"

#include <gtest/gtest.h>

#include <boost/date_time/posix_time/posix_time.hpp>
#include <random>

namespace qx::detail {
namespace {

using boost::gregorian::date;
using boost::posix_time::microseconds;
using boost::posix_time::ptime;
using boost::posix_time::time_duration;
using boost::posix_time::to_simple_string;

TEST(SimpleTime, PrintsDateTimeAndFraction) {
  EXPECT_EQ(simpleTime(ptime(date(2026, 11, 21), time_duration(17, 5, 9))), "2026-Nov-21 17:05:09");
  EXPECT_EQ(simpleTime(ptime(date(2026, 1, 2), time_duration(0, 0, 0, 123))), "2026-Jan-02 00:00:00.000123");
  EXPECT_EQ(simpleTime(ptime(date(1999, 12, 31), time_duration(23, 59, 59, 999999))), "1999-Dec-31 23:59:59.999999");
}

TEST(SimpleTime, PrintsTheFirstAndTheLastYear) {
  EXPECT_EQ(simpleTime(ptime(date(1400, 1, 1))), "1400-Jan-01 00:00:00");
  EXPECT_EQ(simpleTime(ptime(date(9999, 12, 31), time_duration(23, 59, 59))), "9999-Dec-31 23:59:59");
}

TEST(SimpleTime, PrintsSpecialTimes) {
  EXPECT_EQ(simpleTime(ptime()), "not-a-date-time");
  EXPECT_EQ(simpleTime(ptime(boost::posix_time::pos_infin)), "+infinity");
  EXPECT_EQ(simpleTime(ptime(boost::posix_time::neg_infin)), "-infinity");
}

TEST(SimpleTime, AgreesWithTheTimeLibrary) {
  std::mt19937_64 random(20261121);
  const ptime first(date(1400, 1, 1));
  constexpr long long LAST = 271389139200000000LL;  // microseconds from there to the end of 9999
  std::uniform_int_distribution<long long> moment(0, LAST - 1);
  for (int i = 0; i < 20000; ++i) {
    long long offset = moment(random);
    if (i % 3 == 0) offset -= offset % 1000000;
    const ptime time = first + microseconds(offset);
    ASSERT_EQ(simpleTime(time), to_simple_string(time));
  }
}

}  // namespace
}  // namespace qx::detail
