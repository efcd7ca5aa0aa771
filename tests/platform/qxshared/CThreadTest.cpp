#include "qxshared/CThread.h"

#include <gtest/gtest.h>

#include <thread>

namespace qx {
namespace {

TEST(CThread, IsTheSameRecordOnEachCallOfAThread) {
  ASSERT_NE(CThread::myCThread(0), nullptr);
  EXPECT_EQ(CThread::myCThread(0), CThread::myCThread(0));
}

TEST(CThread, BeginsWithoutALocation) {
  std::thread([] {
    EXPECT_STREQ(CThread::myCThread(0)->sourceFile(), "");
    EXPECT_EQ(CThread::myCThread(0)->sourceLine(), 0);
  }).join();
}

TEST(CThread, KeepsTheLocationLastNoted) {
  CThread::myCThread(0)->sourceLocation("First.cpp", 1);
  CThread::myCThread(0)->sourceLocation("Second.cpp", 22);
  EXPECT_STREQ(CThread::myCThread(0)->sourceFile(), "Second.cpp");
  EXPECT_EQ(CThread::myCThread(0)->sourceLine(), 22);
}

TEST(CThread, TakesANullFileAsEmpty) {
  CThread::myCThread(0)->sourceLocation(nullptr, 3);
  EXPECT_STREQ(CThread::myCThread(0)->sourceFile(), "");
}

TEST(CThread, IsEachThreadsOwn) {
  CThread* const mine = CThread::myCThread(0);
  mine->sourceLocation("Mine.cpp", 1);
  std::thread([mine] {
    EXPECT_NE(CThread::myCThread(0), mine);
    CThread::myCThread(0)->sourceLocation("Other.cpp", 2);
  }).join();
  EXPECT_STREQ(mine->sourceFile(), "Mine.cpp");
  EXPECT_EQ(mine->sourceLine(), 1);
}

}  // namespace
}  // namespace qx
