// The primitives where the system has no mutex left.
#include <gtest/gtest.h>

#include <functional>
#include <ostream>
#include <stdexcept>

#include "support/ThreadCalls.h"
#include "support/ThreadResources.h"
#include "vso/runtime/DeposableBool.h"
#include "vso/runtime/ElapsedTimer.h"
#include "vso/runtime/ReferencedBool.h"
#include "vso/runtime/StringFlag.h"
#include "vso/runtime/TimedCount.h"
#include "vso/runtime/WaitableBool.h"

namespace qx {
namespace {

using test::ThreadCalls;

struct Primitive {
  const char* name;
  /// The mutexes and condition variables that it has.
  int members;
  std::function<void()> make;
};

std::ostream& operator<<(std::ostream& out, const Primitive& primitive) { return out << primitive.name; }

class ThreadResource : public testing::TestWithParam<Primitive> {};

TEST_P(ThreadResource, IsNeededForEveryLockAndLeftByAFailedConstructor) {
  test::expectToNeed(GetParam().members, GetParam().make);
}

INSTANTIATE_TEST_SUITE_P(All, ThreadResource,
                         testing::Values(Primitive{"DeposableBool", 2, [] { DeposableBool flag; }},
                                         Primitive{"DeposableBool of a value", 2, [] { DeposableBool flag(true); }},
                                         Primitive{"ReferencedBool", 2, [] { ReferencedBool flag; }},
                                         Primitive{"ReferencedBool of a value", 2, [] { ReferencedBool flag(true); }},
                                         Primitive{"WaitableBool", 3, [] { WaitableBool flag; }},
                                         Primitive{"WaitableBool of a value", 3, [] { WaitableBool flag(true); }},
                                         Primitive{"StringFlag", 1, [] { StringFlag flag; }},
                                         Primitive{"ElapsedTimer", 2, [] { ElapsedTimer timer; }},
                                         Primitive{"ElapsedTimer with a duration", 2, [] { ElapsedTimer timer(1); }},
                                         Primitive{"TimedCount", 3, [] { TimedCount count(1, 1); }}));

TEST(ThreadResources, AreLeftByAConstructorThatRefusesItsArguments) {
  const int before = ThreadCalls::alive;
  EXPECT_THROW(ElapsedTimer(0), std::runtime_error);
  EXPECT_EQ(ThreadCalls::alive, before);
  EXPECT_THROW(TimedCount(0, 1), std::runtime_error);
  EXPECT_EQ(ThreadCalls::alive, before);
  EXPECT_THROW(TimedCount(1, 0), std::runtime_error);
  EXPECT_EQ(ThreadCalls::alive, before);
}

}  // namespace
}  // namespace qx
