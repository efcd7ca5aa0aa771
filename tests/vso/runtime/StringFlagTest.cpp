#include "vso/runtime/StringFlag.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <optional>
#include <ostream>
#include <set>
#include <sstream>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "tests/vso/runtime/Threads.h"
#include "tests/vso/runtime/WatchedBuffer.h"

namespace qx {
namespace {

using test::Elsewhere;
using test::WatchedBuffer;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

static_assert(!std::is_polymorphic_v<StringFlag>);
static_assert(!std::is_copy_constructible_v<StringFlag>);
static_assert(std::is_same_v<decltype(std::declval<StringFlag&>().get()), std::set<std::string>>);

bool reads(const StringFlag& flag) { return flag; }

std::string shown(const StringFlag& flag) {
  std::ostringstream out;
  out << flag;
  return out.str();
}

TEST(StringFlag, IsEmptyAndFalseAtFirst) {
  StringFlag flag;
  EXPECT_FALSE(reads(flag));
  EXPECT_THAT(flag.get(), IsEmpty());
  EXPECT_EQ(shown(flag), "");
}

TEST(StringFlag, IsTrueUntilTheLastNameIsCleared) {
  StringFlag flag;
  flag.set("a");
  EXPECT_TRUE(reads(flag));
  flag.set("b");
  flag.clear("a");
  EXPECT_TRUE(reads(flag));
  flag.clear("b");
  EXPECT_FALSE(reads(flag));
  flag.set("b");
  EXPECT_TRUE(reads(flag));
}

TEST(StringFlag, HoldsARepeatedNameOnce) {
  StringFlag flag;
  flag.set("a");
  flag.set("a");
  EXPECT_THAT(flag.get(), ElementsAre("a"));
  EXPECT_EQ(shown(flag), "a ");
  flag.clear("a");
  EXPECT_FALSE(reads(flag));
  EXPECT_EQ(shown(flag), "");
}

TEST(StringFlag, TakesTheClearingOfAnAbsentName) {
  StringFlag flag;
  flag.clear("unknown");
  EXPECT_FALSE(reads(flag));
  flag.set("a");
  flag.clear("unknown");
  flag.clear("A");
  flag.clear("");
  EXPECT_TRUE(reads(flag));
  EXPECT_THAT(flag.get(), ElementsAre("a"));
}

TEST(StringFlag, TakesTheEmptyNameForAName) {
  StringFlag flag;
  flag.set("");
  EXPECT_TRUE(reads(flag));
  EXPECT_EQ(shown(flag), " ");
}

TEST(StringFlag, WritesTheNamesInOrderEachWithABlank) {
  StringFlag flag;
  for (const char* name : {"b", "a", "two words", "B", "10", "9"}) flag.set(name);
  std::ostringstream out;
  out << '[' << flag << ']';
  EXPECT_EQ(out.str(), "[10 9 B a b two words ]");
}

TEST(StringFlag, GivesACopy) {
  StringFlag flag;
  flag.set("b");
  std::set<std::string> copy = flag.get();
  flag.set("a");
  EXPECT_THAT(copy, ElementsAre("b"));
  copy.clear();
  EXPECT_THAT(flag.get(), ElementsAre("a", "b"));
}

TEST(StringFlag, HoldsItsLockWhileItWrites) {
  const std::function<void(StringFlag&)> operations[] = {
      [](StringFlag& flag) { flag.set("c"); },
      [](StringFlag& flag) { flag.clear("b"); },
      [](StringFlag& flag) { reads(flag); },
      [](StringFlag& flag) { shown(flag); },
  };
  for (const auto& operation : operations) {
    const std::string number = std::to_string(&operation - operations);
    StringFlag flag;
    for (const char* name : {"a", "b"}) flag.set(name);
    std::optional<Elsewhere<void>> other;
    WatchedBuffer buffer([&] {
      other.emplace([&] { operation(flag); });
      EXPECT_TRUE(other->blocks()) << number;
    });
    std::ostream out(&buffer);
    out << flag;
    EXPECT_EQ(buffer.str(), "a b ") << number;
    ASSERT_TRUE(other) << number;
    EXPECT_TRUE(other->ends()) << number;
  }
}

TEST(StringFlag, GivesACopyWithoutTheLock) {
  const auto flag = std::make_shared<StringFlag>();
  flag->set("a");
  std::set<std::string> copy;
  WatchedBuffer buffer([&] { copy = Elsewhere([flag] { return flag->get(); }).get(); });
  std::ostream out(&buffer);
  out << *flag;  // under the lock
  EXPECT_THAT(copy, ElementsAre("a"));
}

TEST(StringFlag, LosesNoNameOfAnyThread) {
  constexpr int NAMES = 100;
  StringFlag flag;
  test::onEachThread([&](int thread) {
    for (int i = 0; i < NAMES; ++i) flag.set(std::to_string(thread * NAMES + i));
  });
  std::set<std::string> expected;
  for (int i = 0; i < test::THREADS * NAMES; ++i) expected.insert(std::to_string(i));
  EXPECT_EQ(flag.get(), expected);
  test::onEachThread([&](int thread) {
    for (int i = 0; i < NAMES; ++i) flag.clear(std::to_string(thread * NAMES + i));
  });
  EXPECT_FALSE(reads(flag));
}

TEST(StringFlag, IsSetClearedReadAndWrittenAtOnce) {
  StringFlag flag;
  test::onEachThread([&](int thread) {
    const std::string name = "name" + std::to_string(thread);
    for (int round = 0; round < 300; ++round) {
      flag.set(name);
      EXPECT_TRUE(reads(flag));
      EXPECT_THAT(shown(flag), HasSubstr(name + ' '));
      flag.clear(name);
      EXPECT_THAT(shown(flag), testing::Not(HasSubstr(name)));
    }
  });
  EXPECT_THAT(flag.get(), IsEmpty());
}

}  // namespace
}  // namespace qx
