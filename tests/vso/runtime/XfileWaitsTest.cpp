// How long an Xfile waits, and for what.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <unistd.h>

#include <stdexcept>
#include <string>

#include "support/TemporaryDirectory.h"
#include "tests/vso/runtime/ControlledSystem.h"
#include "vso/runtime/Xfile.h"

namespace qx {
namespace {

using test::ControlledSystem;
using test::TemporaryDirectory;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr unsigned int READ = 0x0001;

TEST(XfileWaits, AFailedOpenForFiftyMilliseconds) {
  const TemporaryDirectory folder;
  Xfile file(folder.path("none"), READ);
  ControlledSystem system;
  EXPECT_THROW(file.open(), std::runtime_error);
  EXPECT_THAT(system.sleeps, ElementsAre(50000));
  EXPECT_THROW(file.open(), std::runtime_error);
  EXPECT_THAT(system.sleeps, ElementsAre(50000, 50000));
}

TEST(XfileWaits, NothingElseIsSleptFor) {
  const TemporaryDirectory folder;
  Xfile file(folder.file("record", "content"), READ);
  ControlledSystem system;
  file.open();
  U255Buff<unsigned char> buffer;
  EXPECT_EQ(file.read(buffer), 7);
  file.close();
  EXPECT_THAT(system.sleeps, IsEmpty());
}

class XfileWait : public testing::TestWithParam<int> {};

TEST_P(XfileWait, IsOneForAQuarterOfASecondUntilTheDescriptorIsReadable) {
  const TemporaryDirectory folder;
  Xfile file(folder.file("record", "content"), READ);
  file.open();
  U255Buff<unsigned char> buffer;
  ControlledSystem system;
  system.selected = GetParam();
  // What is there is taken only where the wait says so.
  const int expected = GetParam() > 0 ? 7 : 0;
  EXPECT_EQ(file.read(buffer), expected);
  EXPECT_EQ(::lseek(file.handle(), 0, SEEK_CUR), expected);

  ASSERT_EQ(system.selections.size(), 1U);
  const ControlledSystem::Selection& wait = system.selections[0];
  EXPECT_EQ(wait.count, file.handle() + 1);
  EXPECT_THAT(wait.readable, ElementsAre(file.handle()));
  EXPECT_THAT(wait.writable, IsEmpty());
  EXPECT_THAT(wait.exceptional, IsEmpty());
  ASSERT_TRUE(wait.limit);
  EXPECT_EQ(wait.limit->tv_sec, 0);
  EXPECT_EQ(wait.limit->tv_usec, 250000);
  EXPECT_THAT(system.sleeps, IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Answers, XfileWait, testing::Values(-1, 0, 1));

}  // namespace
}  // namespace qx
