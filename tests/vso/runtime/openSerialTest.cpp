#include "vso/runtime/openSerial.h"

#include <fcntl.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <type_traits>

#include "support/TemporaryDirectory.h"

namespace qx {
namespace {

using test::contentOf;
using test::TemporaryDirectory;

static_assert(std::is_same_v<decltype(&::open_serial), int (*)(const char*, int)>);
static_assert(std::is_same_v<decltype(&::close_serial), int (*)(int)>);

TEST(openSerial, NullPathGivesMinusOneAndAsksNothingOfTheSystem) {
  constexpr int UNTOUCHED = 12345;
  errno = UNTOUCHED;
  EXPECT_EQ(open_serial(nullptr, 0), -1);
  EXPECT_EQ(open_serial(nullptr, O_RDWR), -1);
  EXPECT_EQ(errno, UNTOUCHED);
}

TEST(openSerial, MissingFileGivesMinusOneWithTheReason) {
  const TemporaryDirectory folder;
  errno = 0;
  EXPECT_EQ(open_serial(folder.path("none").c_str(), O_RDWR), -1);
  EXPECT_EQ(errno, ENOENT);
  errno = 0;
  EXPECT_EQ(open_serial("", O_RDONLY), -1);
  EXPECT_EQ(errno, ENOENT);
}

TEST(openSerial, OpensWithTheFlagsAsTheyAre) {
  const TemporaryDirectory folder;
  const std::string path = folder.file("record", "content");
  for (const int access : {O_RDONLY, O_WRONLY, O_RDWR, O_RDWR | O_APPEND | O_NONBLOCK}) {
    const int handle = open_serial(path.c_str(), access);
    ASSERT_GE(handle, 0) << access;
    EXPECT_EQ(::fcntl(handle, F_GETFL) & (O_ACCMODE | O_APPEND | O_NONBLOCK), access);
    EXPECT_EQ(close_serial(handle), 0);
    EXPECT_EQ(contentOf(path), "content");
  }
  const int handle = open_serial(path.c_str(), O_WRONLY | O_TRUNC);
  ASSERT_GE(handle, 0);
  EXPECT_EQ(close_serial(handle), 0);
  EXPECT_EQ(contentOf(path), "");
}

TEST(closeSerial, ClosesTheDescriptor) {
  const int handle = open_serial("/dev/null", O_RDONLY);
  ASSERT_GE(handle, 0);
  EXPECT_EQ(close_serial(handle), 0);
  errno = 0;
  EXPECT_EQ(::fcntl(handle, F_GETFD), -1);
  EXPECT_EQ(errno, EBADF);
}

TEST(closeSerial, NoDescriptorGivesMinusOneWithTheReason) {
  errno = 0;
  EXPECT_EQ(close_serial(-1), -1);
  EXPECT_EQ(errno, EBADF);
}

}  // namespace
}  // namespace qx
