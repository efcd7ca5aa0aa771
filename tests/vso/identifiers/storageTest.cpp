#include "vso/identifiers/storage.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace qx {
namespace {

using testing::ElementsAre;

TEST(storage, ClearsTheBytesOfItsSizeAlone) {
  unsigned char bytes[] = {1, 2, 3, 4, 5};
  detail::clearBytes(bytes + 1, 3);
  EXPECT_THAT(bytes, ElementsAre(1, 0, 0, 0, 5));
  detail::clearBytes(bytes, 0);
  EXPECT_THAT(bytes, ElementsAre(1, 0, 0, 0, 5));
}

TEST(storage, CopiesTheBytesOfItsSizeAlone) {
  const unsigned char from[] = {1, 2, 3, 4, 5};
  unsigned char to[] = {9, 9, 9, 9, 9};
  detail::copyBytes(to + 1, from + 1, 3);
  EXPECT_THAT(to, ElementsAre(9, 2, 3, 4, 9));
  detail::copyBytes(to, from, 0);
  EXPECT_THAT(to, ElementsAre(9, 2, 3, 4, 9));
}

}  // namespace
}  // namespace qx
