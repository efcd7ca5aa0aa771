// Which locks the primitives take, by which names and in which order.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <ostream>
#include <set>
#include <stdexcept>
#include <streambuf>
#include <string>
#include <vector>

#include "tests/vso/runtime/LockRecord.h"
#include "tests/vso/runtime/Threads.h"
#include "vso/runtime/DeposableBool.h"
#include "vso/runtime/ElapsedTimer.h"
#include "vso/runtime/ReferencedBool.h"
#include "vso/runtime/TimedCount.h"

namespace qx {
namespace {

using test::Elsewhere;
using test::LockHook;
using test::LockRecord;
using testing::Each;
using testing::Gt;
using testing::IsEmpty;
using Events = std::vector<std::string>;

Events operator+(Events first, const Events& second) {
  first.insert(first.end(), second.begin(), second.end());
  return first;
}

/// `inner` with the mutex held that the class of `file` calls `name`.
Events held(const std::string& file, const std::string& name, const Events& inner = {}) {
  return Events{"at " + file, "lock " + name + " \"\" 0"} + inner + Events{"unlock " + name};
}

/// What `operation` does. Each of its locks has a place of its own in the source.
Events eventsOf(const std::function<void()>& operation) {
  LockRecord::clear();
  operation();
  EXPECT_THAT(LockRecord::lines, Each(Gt(0)));
  const std::set<int> places(LockRecord::lines.begin(), LockRecord::lines.end());
  EXPECT_EQ(places.size(), LockRecord::lines.size());
  return LockRecord::events;
}

/// Notes what is written when, whatever the pieces that it comes in.
class RecordingBuffer : public std::streambuf {
 protected:
  int_type overflow(int_type character) override {
    const char text = traits_type::to_char_type(character);
    xsputn(&text, 1);
    return character;
  }

  std::streamsize xsputn(const char* text, std::streamsize size) override {
    const std::string written(text, static_cast<std::size_t>(size));
    Events& events = LockRecord::events;
    if (!events.empty() && events.back().rfind("write ", 0) == 0) {
      events.back() += written;
    } else {
      LockRecord::add("write " + written);
    }
    return size;
  }
};

void expectAMutexForEachName(std::size_t names) {
  EXPECT_EQ(LockRecord::mutexes.size(), names);
  std::set<const void*> all;
  for (const auto& [name, mutexes] : LockRecord::mutexes) {
    EXPECT_EQ(mutexes.size(), 1U) << name;
    all.insert(mutexes.begin(), mutexes.end());
  }
  EXPECT_EQ(all.size(), names);
}

class DeposableBoolLocks : public testing::Test {
 protected:
  static Events elections(const Events& inner = {}) { return held("DeposableBool.cpp", "electionsMutex_", inner); }
  static Events value(const Events& inner = {}) { return held("DeposableBool.cpp", "valMutex_", inner); }

  const std::shared_ptr<DeposableBool> flag_ = std::make_shared<DeposableBool>(true);
};

TEST_F(DeposableBoolLocks, ReadingTakesTheElectionsThenTheValue) {
  EXPECT_EQ(eventsOf([&] { static_cast<void>(static_cast<bool>(*flag_)); }), elections(value()));
}

TEST_F(DeposableBoolLocks, VotesTakeTheElections) {
  EXPECT_EQ(eventsOf([&] { flag_->elect("a"); }), elections());
  EXPECT_EQ(eventsOf([&] { flag_->elect("a"); }), elections());
  EXPECT_EQ(eventsOf([&] { flag_->depose("a"); }), elections());
  EXPECT_EQ(eventsOf([&] { flag_->depose("a"); }), elections());
}

TEST_F(DeposableBoolLocks, MakingAndCopyingTheElectionsTakeNone) {
  EXPECT_THAT(eventsOf([] { DeposableBool(true).getElections(); }), IsEmpty());
  EXPECT_THAT(eventsOf([&] { flag_->getElections(); }), IsEmpty());
}

TEST_F(DeposableBoolLocks, WritingReleasesBothBeforeItTakesTheElectionsForTheNames) {
  RecordingBuffer buffer;
  std::ostream out(&buffer);
  EXPECT_EQ(eventsOf([&] { out << *flag_; }), elections(value({"write VAL: true BOOL: true "})) + elections());
  flag_->elect("b");
  flag_->elect("a");
  EXPECT_EQ(eventsOf([&] { out << *flag_; }),
            elections(value({"write VAL: true BOOL: false "})) + elections({"write a b "}));
}

TEST_F(DeposableBoolLocks, TheNamesWrittenCanBeNewerThanTheValue) {
  flag_->elect("old");
  RecordingBuffer buffer;
  std::ostream out(&buffer);
  bool changed = false;
  const LockHook hook([&](const std::string& event) {
    if (event != "unlock electionsMutex_" || changed) return;
    changed = true;
    // From another thread, which could not if a lock was held.
    const Elsewhere votes([flag = flag_] {
      flag->depose("old");
      flag->elect("new");
    });
    EXPECT_TRUE(votes.ends());
  });
  out << *flag_;
  EXPECT_EQ(LockRecord::events, elections(value({"write VAL: true BOOL: false "})) + elections({"write new "}));
}

TEST_F(DeposableBoolLocks, EachNameIsOfOneMutex) {
  RecordingBuffer buffer;
  std::ostream out(&buffer);
  LockRecord::clear();
  flag_->elect("a");
  static_cast<void>(static_cast<bool>(*flag_));
  out << *flag_;
  flag_->depose("a");
  expectAMutexForEachName(2);
}

class ReferencedBoolLocks : public testing::Test {
 protected:
  static Events references(const Events& inner = {}) {
    return held("ReferencedBool.cpp", "referenceCountMutex_", inner);
  }
  static Events value(const Events& inner = {}) { return held("ReferencedBool.cpp", "valMutex_", inner); }

  ReferencedBool flag_{true};
};

TEST_F(ReferencedBoolLocks, ReadingTakesTheCountThenTheValue) {
  const auto read = [&] { static_cast<void>(static_cast<bool>(flag_)); };
  EXPECT_EQ(eventsOf(read), references(value()));
  flag_++;
  EXPECT_EQ(eventsOf(read), references(value()));
}

TEST_F(ReferencedBoolLocks, ReferencesTakeTheCount) {
  EXPECT_EQ(eventsOf([&] { flag_--; }), references());
  EXPECT_EQ(eventsOf([&] { flag_++; }), references());
  EXPECT_EQ(eventsOf([&] { flag_--; }), references());
}

TEST_F(ReferencedBoolLocks, AssignmentTakesTheValue) {
  EXPECT_EQ(eventsOf([&] { flag_ = false; }), value());
}

TEST_F(ReferencedBoolLocks, EachNameIsOfOneMutex) {
  LockRecord::clear();
  flag_++;
  flag_ = false;
  static_cast<void>(static_cast<bool>(flag_));
  flag_--;
  expectAMutexForEachName(2);
}

Events duration(const Events& inner = {}) { return held("ElapsedTimer.cpp", "durationMutex_", inner); }
Events exceedTime(const Events& inner = {}) { return held("ElapsedTimer.cpp", "exceedTimeMutex_", inner); }

class ElapsedTimerLocks : public testing::Test {
 protected:
  ElapsedTimer timer_{ElapsedTimer::MAX_DURATION};
};

TEST_F(ElapsedTimerLocks, StartReleasesTheDeadlineBeforeItTakesBoth) {
  EXPECT_EQ(eventsOf([&] { timer_.start(); }), exceedTime() + duration(exceedTime()));
}

TEST_F(ElapsedTimerLocks, StartOfARunningTimerTakesTheDeadlineOnly) {
  timer_.start();
  EXPECT_EQ(eventsOf([&] { timer_.start(); }), exceedTime());
}

TEST_F(ElapsedTimerLocks, StartWithoutADurationLeavesTheDeadlineAlone) {
  ElapsedTimer timer;
  EXPECT_EQ(eventsOf([&] { EXPECT_THROW(timer.start(), std::runtime_error); }), exceedTime() + duration());
}

TEST_F(ElapsedTimerLocks, ElapsedTakesTheDeadlineTwice) {
  EXPECT_EQ(eventsOf([&] { timer_.elapsed(); }), exceedTime(exceedTime()));
  timer_.start();
  EXPECT_EQ(eventsOf([&] { timer_.elapsed(); }), exceedTime(exceedTime()));
}

TEST_F(ElapsedTimerLocks, StopRunningAndDurationTakeOne) {
  EXPECT_EQ(eventsOf([&] { timer_.stop(); }), exceedTime());
  EXPECT_EQ(eventsOf([&] { timer_.running(); }), exceedTime());
  EXPECT_EQ(eventsOf([&] { timer_.duration(); }), duration());
}

TEST_F(ElapsedTimerLocks, SetTestsTheDeadlineWhileItHoldsTheDuration) {
  EXPECT_EQ(eventsOf([&] { timer_.set(1); }), duration(exceedTime()));
  timer_.start();
  EXPECT_EQ(eventsOf([&] { EXPECT_THROW(timer_.set(1), std::runtime_error); }), duration(exceedTime()));
}

TEST_F(ElapsedTimerLocks, EachNameIsOfOneMutex) {
  LockRecord::clear();
  timer_.set(1);
  timer_.duration();
  timer_.start();
  timer_.running();
  timer_.elapsed();
  timer_.stop();
  expectAMutexForEachName(2);
}

/// Whether another thread can have the count while the timer does something: its locks alone go through the locker.
class TimedCountLocks : public testing::Test {
 protected:
  using Asked = std::function<bool(const Elsewhere<unsigned int>&)>;

  /// Asks for the count at every place that `operation` notes. True if `asked` says so of each.
  bool atEachPlaceOf(const std::function<void()>& operation, const Asked& asked) {
    std::vector<Elsewhere<unsigned int>> counts;
    bool all = true;
    {
      const LockHook hook([&](const std::string& event) {
        if (event != "at ElapsedTimer.cpp" || !all) return;
        counts.emplace_back([count = count_] { return count->count(); });
        all = asked(counts.back());
      });
      operation();
    }
    EXPECT_FALSE(counts.empty());
    for (const Elsewhere<unsigned int>& count : counts) EXPECT_TRUE(count.ends());
    return all;
  }

  bool isFreeIn(const std::function<void()>& operation) {
    return atEachPlaceOf(operation, [](const auto& count) { return count.ends(); });
  }
  bool isHeldIn(const std::function<void()>& operation) {
    return atEachPlaceOf(operation, [](const auto& count) { return count.blocks(); });
  }

  const std::shared_ptr<TimedCount> count_ = std::make_shared<TimedCount>(1, ElapsedTimer::MAX_DURATION);
};

TEST_F(TimedCountLocks, AnEventStartsTheTimerBeforeItTakesTheCount) {
  EXPECT_TRUE(isFreeIn([&] { ++*count_; }));
  EXPECT_TRUE(isFreeIn([&] { ++*count_; }));
  count_->reset();
  EXPECT_TRUE(isFreeIn([&] { --*count_; }));
}

TEST_F(TimedCountLocks, TheTimerIsAskedWithoutTheCount) {
  EXPECT_TRUE(isFreeIn([&] { count_->timeExpired(); }));
  EXPECT_TRUE(isFreeIn([&] { count_->running(); }));
}

TEST_F(TimedCountLocks, ThresholdResetAndStartHoldTheCountWhileTheyUseTheTimer) {
  ++ ++*count_;
  EXPECT_TRUE(isHeldIn([&] { EXPECT_TRUE(count_->exceededThresholds()); }));
  EXPECT_TRUE(isHeldIn([&] { count_->reset(); }));
  EXPECT_TRUE(isHeldIn([&] { count_->start(); }));
}

TEST_F(TimedCountLocks, StartStopsTheTimerAndStartsIt) {
  EXPECT_EQ(eventsOf([&] { count_->reset(); }), exceedTime());
  EXPECT_EQ(eventsOf([&] { count_->start(); }), exceedTime() + exceedTime() + duration(exceedTime()));
}

TEST_F(TimedCountLocks, TheTimerCanBeAskedWhileTheCountIsHeld) {
  ++ ++*count_;
  int asked = 0;
  const LockHook hook([&](const std::string& event) {
    // Before the timer takes its own lock: the count's is the only one held.
    if (event != "at ElapsedTimer.cpp" || asked++ > 0) return;
    EXPECT_TRUE(Elsewhere([count = count_] { return count->running(); }).get());
    EXPECT_FALSE(Elsewhere([count = count_] { return count->timeExpired(); }).get());
  });
  EXPECT_TRUE(count_->exceededThresholds());
  EXPECT_GT(asked, 0);
}

}  // namespace
}  // namespace qx
