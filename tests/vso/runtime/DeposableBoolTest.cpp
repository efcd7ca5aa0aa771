#include "vso/runtime/DeposableBool.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>
#include <sstream>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "tests/vso/runtime/Threads.h"

namespace qx {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

using Names = std::vector<std::string>;

static_assert(!std::is_polymorphic_v<DeposableBool>);
static_assert(!std::is_copy_constructible_v<DeposableBool>);
static_assert(std::is_same_v<decltype(std::declval<DeposableBool&>().getElections()), std::set<std::string>>);

bool reads(const DeposableBool& flag) { return flag; }

std::string shown(const DeposableBool& flag) {
  std::ostringstream out;
  out << flag;
  return out.str();
}

struct Votes {
  bool value;
  Names elected;
  bool reads;
  std::string text;
};

class DeposableBoolVotes : public testing::TestWithParam<Votes> {};

TEST_P(DeposableBoolVotes, TurnTheValueWhileThereIsOne) {
  DeposableBool flag(GetParam().value);
  for (const std::string& name : GetParam().elected) flag.elect(name);
  EXPECT_EQ(reads(flag), GetParam().reads);
  EXPECT_EQ(shown(flag), GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(All, DeposableBoolVotes,
                         testing::Values(Votes{false, {}, false, "VAL: false BOOL: false "},
                                         Votes{true, {}, true, "VAL: true BOOL: true "},
                                         Votes{false, {"a"}, true, "VAL: false BOOL: true a "},
                                         Votes{true, {"a"}, false, "VAL: true BOOL: false a "},
                                         Votes{false, {"a", "b"}, true, "VAL: false BOOL: true a b "},
                                         Votes{true, {"b", "a"}, false, "VAL: true BOOL: false a b "},
                                         Votes{true, {"b", "a", "b"}, false, "VAL: true BOOL: false a b "},
                                         Votes{true, {"b", "B", "10", "9"}, false, "VAL: true BOOL: false 10 9 B b "},
                                         Votes{true, {""}, false, "VAL: true BOOL: false  "}));

TEST(DeposableBool, IsFalseAndWithoutElectionsByDefault) {
  DeposableBool flag;
  EXPECT_FALSE(reads(flag));
  EXPECT_THAT(flag.getElections(), IsEmpty());
  EXPECT_EQ(shown(flag), "VAL: false BOOL: false ");
}

TEST(DeposableBool, IsMadeOfABool) {
  const DeposableBool flag(true);
  EXPECT_TRUE(reads(flag));
}

TEST(DeposableBool, DoesNotCountElections) {
  DeposableBool flag(true);
  flag.elect("a");
  EXPECT_FALSE(reads(flag));
  flag.elect("a");
  EXPECT_FALSE(reads(flag));
  EXPECT_THAT(flag.getElections(), ElementsAre("a"));
  flag.depose("a");
  EXPECT_TRUE(reads(flag));
  EXPECT_THAT(flag.getElections(), IsEmpty());
}

TEST(DeposableBool, StaysTurnedUntilTheLastNameIsDeposed) {
  DeposableBool flag(false);
  flag.elect("a");
  flag.elect("b");
  EXPECT_TRUE(reads(flag));
  flag.depose("a");
  EXPECT_TRUE(reads(flag));
  EXPECT_THAT(flag.getElections(), ElementsAre("b"));
  flag.depose("b");
  EXPECT_FALSE(reads(flag));
}

TEST(DeposableBool, TakesTheDeposingOfAnUnknownName) {
  for (const bool value : {false, true}) {
    DeposableBool flag(value);
    flag.depose("unknown");
    EXPECT_EQ(reads(flag), value);
    flag.elect("a");
    flag.depose("unknown");
    flag.depose("A");
    EXPECT_EQ(reads(flag), !value);
    EXPECT_THAT(flag.getElections(), ElementsAre("a"));
  }
}

TEST(DeposableBool, CanBeElectedAgain) {
  DeposableBool flag(true);
  for (int round = 0; round < 3; ++round) {
    flag.elect("a");
    EXPECT_FALSE(reads(flag));
    flag.depose("a");
    EXPECT_TRUE(reads(flag));
  }
}

TEST(DeposableBool, GivesACopyOfTheElections) {
  DeposableBool flag;
  flag.elect("b");
  std::set<std::string> copy = flag.getElections();
  flag.elect("a");
  EXPECT_THAT(copy, ElementsAre("b"));
  copy.clear();
  EXPECT_THAT(flag.getElections(), ElementsAre("a", "b"));
}

TEST(DeposableBool, IsWrittenInTheMiddleOfALine) {
  DeposableBool flag(true);
  flag.elect("n");
  std::ostringstream out;
  out << '[' << flag << ']' << flag;
  EXPECT_EQ(out.str(), "[VAL: true BOOL: false n ]VAL: true BOOL: false n ");
}

TEST(DeposableBool, LosesNoElectionOfAnyThread) {
  constexpr int NAMES = 100;
  DeposableBool flag(true);
  test::onEachThread([&](int thread) {
    for (int i = 0; i < NAMES; ++i) flag.elect(std::to_string(thread) + '.' + std::to_string(i));
  });
  std::set<std::string> expected;
  for (int thread = 0; thread < test::THREADS; ++thread) {
    for (int i = 0; i < NAMES; ++i) expected.insert(std::to_string(thread) + '.' + std::to_string(i));
  }
  EXPECT_EQ(flag.getElections(), expected);
  test::onEachThread([&](int thread) {
    for (int i = 0; i < NAMES; ++i) flag.depose(std::to_string(thread) + '.' + std::to_string(i));
  });
  EXPECT_THAT(flag.getElections(), IsEmpty());
  EXPECT_TRUE(reads(flag));
}

TEST(DeposableBool, IsElectedDeposedReadAndWrittenAtOnce) {
  DeposableBool flag(true);
  test::onEachThread([&](int thread) {
    const std::string name = "name" + std::to_string(thread);
    for (int round = 0; round < 300; ++round) {
      flag.elect(name);
      EXPECT_FALSE(reads(flag));  // by this thread's own name at least
      const std::string text = shown(flag);
      EXPECT_THAT(text, StartsWith("VAL: true BOOL: false "));
      EXPECT_NE(text.find(name + ' '), std::string::npos) << text;
      flag.depose(name);
    }
  });
  EXPECT_THAT(flag.getElections(), IsEmpty());
  EXPECT_TRUE(reads(flag));
}

}  // namespace
}  // namespace qx
