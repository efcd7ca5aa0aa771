#include "qxshared/HeldLocks.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstddef>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include <boost/thread/barrier.hpp>

namespace qx::detail {
namespace {

// The registry only compares addresses, so any object stands for a mutex.
struct Mutex {
  char byte;
};

std::string holder(const Mutex& mutex) {
  const std::optional<HeldLocks::Location> location = HeldLocks::holderOf(&mutex);
  return location ? location->file + (":" + std::to_string(location->line)) : "nobody";
}

TEST(HeldLocks, NamesThePlaceUntilTheMutexIsReleased) {
  const Mutex mutex{};
  EXPECT_EQ(holder(mutex), "nobody");
  HeldLocks::Entry* const entry = HeldLocks::mine().add(&mutex, "A.cpp", 1);
  EXPECT_EQ(holder(mutex), "A.cpp:1");
  HeldLocks::mine().remove(entry);
  EXPECT_EQ(holder(mutex), "nobody");
}

TEST(HeldLocks, KeepsTheFirstPlaceOfAMutexTakenTwice) {
  const Mutex mutex{};
  HeldLocks::Entry* const outer = HeldLocks::mine().add(&mutex, "A.cpp", 1);
  HeldLocks::Entry* const inner = HeldLocks::mine().add(&mutex, "A.cpp", 2);
  EXPECT_EQ(holder(mutex), "A.cpp:1");
  HeldLocks::mine().remove(outer);
  EXPECT_EQ(holder(mutex), "A.cpp:1");
  HeldLocks::mine().remove(inner);
  EXPECT_EQ(holder(mutex), "nobody");
}

TEST(HeldLocks, TakesReleasesInAnyOrder) {
  const std::vector<Mutex> mutexes(3);
  HeldLocks& mine = HeldLocks::mine();
  HeldLocks::Entry* const first = mine.add(&mutexes.front(), "A.cpp", 0);
  HeldLocks::Entry* const second = mine.add(&mutexes[1], "A.cpp", 1);
  mine.remove(first);
  HeldLocks::Entry* const third = mine.add(&mutexes[2], "A.cpp", 2);
  EXPECT_EQ(holder(mutexes[0]), "nobody");
  EXPECT_EQ(holder(mutexes[1]), "A.cpp:1");
  EXPECT_EQ(holder(mutexes[2]), "A.cpp:2");
  mine.remove(second);
  EXPECT_EQ(holder(mutexes[1]), "nobody");
  EXPECT_EQ(holder(mutexes[2]), "A.cpp:2");
  mine.remove(third);
  EXPECT_EQ(holder(mutexes[2]), "nobody");
}

TEST(HeldLocks, DoesNotFillUpWhenLocksAreHandedOn) {
  const std::vector<Mutex> mutexes(4 * HeldLocks::CAPACITY);
  HeldLocks& mine = HeldLocks::mine();
  HeldLocks::Entry* behind = mine.add(&mutexes.front(), "A.cpp", 0);
  for (std::size_t i = 1; i < mutexes.size(); ++i) {
    HeldLocks::Entry* const ahead = mine.add(&mutexes[i], "A.cpp", static_cast<int>(i));
    ASSERT_NE(ahead, nullptr);
    mine.remove(behind);
    behind = ahead;
  }
  EXPECT_EQ(holder(mutexes.back()), "A.cpp:" + std::to_string(mutexes.size() - 1));
  mine.remove(behind);
}

TEST(HeldLocks, LeavesOutWhatDoesNotFit) {
  const std::vector<Mutex> mutexes(HeldLocks::CAPACITY + 1);
  HeldLocks& mine = HeldLocks::mine();
  std::vector<HeldLocks::Entry*> entries;
  entries.reserve(mutexes.size());
  for (const Mutex& mutex : mutexes) entries.push_back(mine.add(&mutex, "A.cpp", 1));
  EXPECT_EQ(entries.back(), nullptr);
  EXPECT_EQ(holder(mutexes.back()), "nobody");
  for (HeldLocks::Entry* entry : entries) mine.remove(entry);
  for (const Mutex& mutex : mutexes) EXPECT_EQ(holder(mutex), "nobody");

  HeldLocks::Entry* const entry = mine.add(&mutexes.back(), "A.cpp", 2);
  EXPECT_EQ(holder(mutexes.back()), "A.cpp:2");
  mine.remove(entry);
}

TEST(HeldLocks, ForgetsAThreadThatHasEnded) {
  const Mutex mutex{};
  constexpr int THREADS = 4;
  std::vector<std::thread> threads;
  threads.reserve(THREADS);
  for (int i = 0; i < THREADS; ++i) {
    threads.emplace_back([&mutex] { HeldLocks::mine().add(&mutex, "Ended.cpp", 1); });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(holder(mutex), "nobody");
}

TEST(HeldLocks, ForgetsThreadsInWhateverOrderTheyEnd) {
  const std::vector<Mutex> mutexes(4);
  const auto hold = [&mutexes](std::size_t i) { HeldLocks::mine().add(&mutexes[i], "Ended.cpp", static_cast<int>(i)); };

  std::thread([&hold] {
    hold(0);
    std::thread(hold, 1).join();
  }).join();

  boost::barrier turn(2);
  std::thread first([&hold, &turn] {
    hold(2);
    turn.wait();
    turn.wait();
  });
  std::thread([&hold, &turn, &first] {
    turn.wait();
    hold(3);
    turn.wait();
    first.join();
  }).join();

  for (const Mutex& mutex : mutexes) EXPECT_EQ(holder(mutex), "nobody");
}

TEST(HeldLocks, WorksInADestructorThatRunsAtTheThreadsEnd) {
  struct Late {
    const Mutex* mutex = nullptr;
    ~Late() {
      if (mutex == nullptr) return;
      HeldLocks::Entry* const entry = HeldLocks::mine().add(mutex, "Late.cpp", 1);
      EXPECT_NE(entry, nullptr);
      HeldLocks::mine().remove(entry);
    }
  };
  static thread_local Late late;
  const Mutex mutex{};
  std::thread([&mutex] {
    late.mutex = &mutex;  // before the thread's first lock, so destroyed after the thread has left the list
    HeldLocks::mine().remove(HeldLocks::mine().add(&mutex, "A.cpp", 1));
  }).join();
  EXPECT_EQ(holder(mutex), "nobody");
}

TEST(HeldLocks, NeverMixesTwoPlaces) {
  const Mutex mutex{};
  std::atomic<bool> stop{false};
  boost::barrier start(2);
  std::thread writer([&] {
    HeldLocks& mine = HeldLocks::mine();
    start.wait();
    while (!stop) {
      mine.remove(mine.add(&mutex, "1", 1));
      mine.remove(mine.add(&mutex, "2", 2));
    }
  });
  start.wait();
  int mixtures = 0;
  for (int i = 0; i < 200'000; ++i) {
    const std::optional<HeldLocks::Location> location = HeldLocks::holderOf(&mutex);
    if (location && *location->file - '0' != location->line) ++mixtures;
  }
  stop = true;
  writer.join();
  EXPECT_EQ(mixtures, 0);
}

}  // namespace
}  // namespace qx::detail
