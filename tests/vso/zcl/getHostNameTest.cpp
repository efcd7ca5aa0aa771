#include "vso/zcl/getHostName.h"

#include <gtest/gtest.h>
#include <sys/utsname.h>

namespace qx {
namespace {

TEST(getHostName, IsTheNodeNameOfTheSystem) {
  utsname system{};
  ASSERT_EQ(::uname(&system), 0);
  EXPECT_EQ(getHostName(), system.nodename);
}

}  // namespace
}  // namespace qx
