#include "vso/zdo/ZdoSeqNumPeddler.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <boost/thread/recursive_mutex.hpp>
#include <cstdio>
#include <cstdlib>
#include <future>
#include <ostream>
#include <set>
#include <string>
#include <thread>
#include <type_traits>
#include <vector>

#include "vso/zcl/ZclMessage.h"
#include "vso/zdo/ZdoRequest.h"

namespace qx {
namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;

using Counter = std::atomic<unsigned char>;

TEST(ZdoSeqNumPeddler, IsOneObject) {
  EXPECT_EQ(&ZdoSeqNumPeddler::instance(), &ZdoSeqNumPeddler::instance());
  static_assert(!std::is_copy_constructible_v<ZdoSeqNumPeddler>);
  static_assert(!std::is_copy_assignable_v<ZdoSeqNumPeddler>);
  static_assert(!std::is_default_constructible_v<ZdoSeqNumPeddler>);
}

TEST(ZdoSeqNumPeddler, DealsEachNumberOnceInARound) {
  std::set<unsigned char> dealt;
  unsigned char last = ZdoSeqNumPeddler::instance().next();
  for (int i = 0; i < 256; ++i) {
    const unsigned char number = ZdoSeqNumPeddler::instance().next();
    EXPECT_EQ(number, last == 255 ? 0 : last + 1);
    dealt.insert(number);
    last = number;
  }
  EXPECT_EQ(dealt.size(), 256U);
}

/// Says at the end of the process which numbers its first calls got.
[[noreturn]] void dealFirstNumbers() {
  int numbers[513];
  for (int& number : numbers) number = ZdoSeqNumPeddler::instance().next();
  static_cast<void>(std::fprintf(stderr, "first %d, %d; 255th %d, %d, %d; 511th %d, %d, %d", numbers[0], numbers[1],
                                 numbers[254], numbers[255], numbers[256], numbers[510], numbers[511], numbers[512]));
  std::_Exit(0);
}

TEST(ZdoSeqNumPeddlerDeathTest, BeginsAProcessAtOneAndWrapsToZero) {
  testing::FLAGS_gtest_death_test_style = "threadsafe";
  EXPECT_EXIT(dealFirstNumbers(), testing::ExitedWithCode(0), "first 1, 2; 255th 255, 0, 1; 511th 255, 0, 1");
}

TEST(ZdoSeqNumPeddler, LeavesTheNumbersOfZclFramesAlone) {
  const unsigned char zcl = ZclMessage::transactionSequenceNumber_;
  ZdoSeqNumPeddler::instance().next();
  EXPECT_EQ(ZclMessage::transactionSequenceNumber_, zcl);
}

TEST(ZdoSeqNumPeddler, IsLeftAloneByZclFrames) {
  const unsigned char before = ZdoSeqNumPeddler::instance().next();
  const unsigned char zcl = ZclMessage::transactionSequenceNumber_;
  const ZclMessage frame(0x01, false, true);
  EXPECT_EQ(ZclMessage::transactionSequenceNumber_, static_cast<unsigned char>(zcl + 1));
  EXPECT_EQ(ZdoSeqNumPeddler::instance().next(), static_cast<unsigned char>(before + 1));
}

/// A mutex that writes down what is asked of it and what the counter is then, refuses the attempts that it is told to,
/// and lets another thread's doings come in between.
class RecordingMutex {
 public:
  explicit RecordingMutex(const Counter& counter) : counter_(counter) {}

  bool try_lock() {
    ++attempts_;
    if (beforeAttempt && attempts_ == interferesAt) beforeAttempt();
    const bool refused = refusals.count(attempts_) != 0;
    note(refused ? "refused" : "try_lock");
    return !refused;
  }
  void lock() { note("lock"); }
  void unlock() { note("unlock"); }

  std::set<int> refusals;  ///< Attempts that fail, from 1 on.
  int interferesAt = 0;
  void (*beforeAttempt)() = nullptr;
  std::vector<std::string> calls;

 private:
  void note(const std::string& call) { calls.push_back(call + " at " + std::to_string(counter_.load())); }

  const Counter& counter_;
  int attempts_ = 0;
};

TEST(ZdoSeqNumPeddler, GuardsEachOfThreeStepsOnItsOwn) {
  Counter counter(5);
  RecordingMutex mutex(counter);
  EXPECT_EQ(detail::dealSequenceNumber(mutex, counter), 6);
  EXPECT_EQ(counter.load(), 6);
  EXPECT_THAT(mutex.calls, ElementsAre("try_lock at 5", "unlock at 5", "try_lock at 5", "unlock at 6", "try_lock at 6",
                                       "unlock at 6"));
}

struct Refusal {
  const char* name;
  std::set<int> attempts;
  std::vector<std::string> calls;
};

void PrintTo(const Refusal& row, std::ostream* out) { *out << row.name; }

class ZdoSeqNumPeddlerRefused : public testing::TestWithParam<Refusal> {};

INSTANTIATE_TEST_SUITE_P(
    Steps, ZdoSeqNumPeddlerRefused,
    testing::Values(
        Refusal{"First", {1}, {"refused at 5", "try_lock at 5", "unlock at 6", "try_lock at 6", "unlock at 6"}},
        Refusal{"Second", {2}, {"try_lock at 5", "unlock at 5", "refused at 5", "try_lock at 6", "unlock at 6"}},
        Refusal{"Third", {3}, {"try_lock at 5", "unlock at 5", "try_lock at 5", "unlock at 6", "refused at 6"}},
        Refusal{"FirstAndSecond", {1, 2}, {"refused at 5", "refused at 5", "try_lock at 6", "unlock at 6"}},
        Refusal{"FirstAndThird", {1, 3}, {"refused at 5", "try_lock at 5", "unlock at 6", "refused at 6"}},
        Refusal{"SecondAndThird", {2, 3}, {"try_lock at 5", "unlock at 5", "refused at 5", "refused at 6"}},
        Refusal{"All", {1, 2, 3}, {"refused at 5", "refused at 5", "refused at 6"}}),
    [](const auto& row) { return std::string(row.param.name); });

TEST_P(ZdoSeqNumPeddlerRefused, GoesAheadWithoutTheMutexAndDoesNotUnlockIt) {
  Counter counter(5);
  RecordingMutex mutex(counter);
  mutex.refusals = GetParam().attempts;
  EXPECT_EQ(detail::dealSequenceNumber(mutex, counter), 6);
  EXPECT_EQ(counter.load(), 6);
  EXPECT_THAT(mutex.calls, ElementsAreArray(GetParam().calls));
}

TEST(ZdoSeqNumPeddler, StoresOneMoreThanItsFirstStepReadWhateverCameInBetween) {
  static Counter counter;
  counter = 5;
  RecordingMutex mutex(counter);
  mutex.interferesAt = 2;
  mutex.beforeAttempt = [] { counter = 77; };
  EXPECT_EQ(detail::dealSequenceNumber(mutex, counter), 6);
  EXPECT_EQ(counter.load(), 6);
}

TEST(ZdoSeqNumPeddler, DealsWhatItsThirdStepReads) {
  static Counter counter;
  counter = 5;
  RecordingMutex mutex(counter);
  mutex.interferesAt = 3;
  mutex.beforeAttempt = [] { counter = 77; };
  EXPECT_EQ(detail::dealSequenceNumber(mutex, counter), 77);
  EXPECT_EQ(counter.load(), 77);
}

TEST(ZdoSeqNumPeddler, DealsZeroBehind255) {
  Counter counter(255);
  RecordingMutex mutex(counter);
  EXPECT_EQ(detail::dealSequenceNumber(mutex, counter), 0);
  EXPECT_EQ(counter.load(), 0);
}

TEST(ZdoSeqNumPeddler, DoesNotWaitForAThreadThatHoldsTheMutex) {
  boost::recursive_mutex mutex;
  Counter counter(5);
  std::promise<void> held;
  std::promise<void> dealt;
  std::thread holder([&] {
    const boost::recursive_mutex::scoped_lock lock(mutex);
    held.set_value();
    dealt.get_future().wait();
  });
  held.get_future().wait();
  EXPECT_EQ(detail::dealSequenceNumber(mutex, counter), 6);
  dealt.set_value();
  holder.join();
}

TEST(ZdoSeqNumPeddler, LeavesTheMutexFreeForOthers) {
  boost::recursive_mutex mutex;
  Counter counter(5);
  detail::dealSequenceNumber(mutex, counter);
  bool wasFree = false;
  std::thread([&] {
    wasFree = mutex.try_lock();
    if (wasFree) mutex.unlock();
  }).join();
  EXPECT_TRUE(wasFree);
}

// That they may do so at all is for the thread sanitizer to see. Two of them may get the same number, but the numbers
// go round: a few thousand calls come to all of them.
TEST(ZdoSeqNumPeddler, DealsAllNumbersToSeveralThreadsAtOnce) {
  constexpr int THREADS = 6;
  constexpr int CALLS = 2000;
  std::array<std::atomic<bool>, 256> dealt{};
  std::vector<std::thread> threads;
  for (int i = 0; i < THREADS; ++i) {
    threads.emplace_back([&dealt, i] {
      for (int call = 0; call < CALLS; ++call) {
        if (i % 2 == 0) {
          dealt[ZdoSeqNumPeddler::instance().next()] = true;
        } else {
          dealt[ZdoRequest(Euid(), 0x0031).seqNum()] = true;
        }
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_TRUE(std::all_of(dealt.begin(), dealt.end(), [](bool isDealt) { return isDealt; }));
  const unsigned char last = ZdoSeqNumPeddler::instance().next();
  EXPECT_EQ(ZdoSeqNumPeddler::instance().next(), static_cast<unsigned char>(last + 1));
}

}  // namespace
}  // namespace qx
