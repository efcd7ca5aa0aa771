// Points where the memory is at an end. Linked into a program that can refuse allocations.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <new>
#include <string>

#include "support/LogCapture.h"
#include "tests/vso/frames/AllocationCount.h"
#include "vso/runtime/perfTime.h"

namespace qx {
namespace {

using test::LogCapture;
using test::refuseAllocation;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

/// A point that is started while one allocation is refused. Points live as long as the process, so each is another.
struct Start {
  explicit Start(unsigned int refused) {
    static int count = 0;
    name = "a point whose name is too long to be kept in place " + std::to_string(++count);
    refuseAllocation(refused);
    try {
      startPerfTime(name, 1);
    } catch (const std::bad_alloc&) {
      failed = true;
    }
    refuseAllocation(0);
  }

  std::string name;
  bool failed = false;
};

TEST(perfTimeAllocation, ThatFailsLeavesNoPointBehind) {
  unsigned int refused = 1;
  for (;; ++refused) {
    const LogCapture log;
    const Start start(refused);
    if (!start.failed) break;
    for (int i = 0; i < 3; ++i) endPerfTime(start.name);
    EXPECT_THAT(log.texts(), IsEmpty()) << "allocation " << refused;

    // It has the frequency that it is made with now, and no sample yet.
    startPerfTime(start.name, 0);
    EXPECT_THAT(log.texts(), IsEmpty()) << "allocation " << refused;
    endPerfTime(start.name);
    EXPECT_THAT(log.texts(), ElementsAre(StartsWith("PERF: " + start.name + " AVG: "))) << "allocation " << refused;
  }
  EXPECT_GT(refused, 2U);  // the point, and its place in the list
}

}  // namespace
}  // namespace qx
