// What classes need of the system's threads, in a program that has ThreadCalls.cpp.
#pragma once

#include <gtest/gtest.h>

#include <boost/thread/exceptions.hpp>
#include <functional>

#include "support/ThreadCalls.h"

namespace qx::test {

/// Whether `make`, which makes an object and lets it go, needs at least `members` mutexes and condition variables,
/// throws boost::thread_resource_error without any one of them, and leaves none behind.
inline void expectToNeed(int members, const std::function<void()>& make) {
  const int before = ThreadCalls::alive;
  for (int made = 0; made < members; ++made) {
    ThreadCalls::makesLeft = made;
    EXPECT_THROW(make(), boost::thread_resource_error) << "after " << made;
    ThreadCalls::makesLeft = -1;
    EXPECT_EQ(ThreadCalls::alive, before) << "after " << made;
  }
  EXPECT_NO_THROW(make());
  EXPECT_EQ(ThreadCalls::alive, before);
}

}  // namespace qx::test
