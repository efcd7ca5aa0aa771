#include "vso/node/NotCopied.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>

namespace qx::detail {
namespace {

NotCopied<std::string> holding(const std::string& text) {
  NotCopied<std::string> made;
  made.set(text);
  EXPECT_EQ(made.get(), text);
  return made;
}

struct Owner {
  int copied = 0;
  NotCopied<std::string> kept;
};

TEST(NotCopied, HoldsAnEmptyValueAtFirst) {
  EXPECT_EQ(NotCopied<std::string>().get(), "");
  EXPECT_EQ(NotCopied<int>().get(), 0);
  EXPECT_EQ(NotCopied<int*>().get(), nullptr);
  EXPECT_EQ(NotCopied<std::shared_ptr<int>>().get(), nullptr);
}

TEST(NotCopied, HoldsWhatWasSetLast) {
  NotCopied<std::string> value;
  value.set("first");
  value.set("second");
  EXPECT_EQ(value.get(), "second");
}

TEST(NotCopied, TakesAValueThatCanOnlyBeMoved) {
  NotCopied<std::unique_ptr<int>> value;
  value.set(std::make_unique<int>(7));
  ASSERT_NE(value.get(), nullptr);
  EXPECT_EQ(*value.get(), 7);
}

TEST(NotCopied, ACopyStartsEmptyAndLeavesTheOriginal) {
  NotCopied<std::string> original;
  original.set("mine");
  const NotCopied<std::string> copy(original);
  EXPECT_EQ(copy.get(), "");
  EXPECT_EQ(original.get(), "mine");
}

TEST(NotCopied, AMovedToOneStartsEmptyAndLeavesTheOriginal) {
  NotCopied<std::string> original;
  original.set("mine");
  const NotCopied<std::string> moved(std::move(original));
  EXPECT_EQ(moved.get(), "");
  EXPECT_EQ(original.get(), "mine");  // NOLINT(bugprone-use-after-move): there is no move
}

TEST(NotCopied, WhatIsAssignedToKeepsItsOwn) {
  NotCopied<std::string> from;
  from.set("other");
  NotCopied<std::string> to;
  to.set("mine");
  to = from;
  EXPECT_EQ(to.get(), "mine");
  EXPECT_EQ(from.get(), "other");
  to = holding("temporary");
  EXPECT_EQ(to.get(), "mine");
}

TEST(NotCopied, LetsItsOwnerBeCopiedByTheCompiler) {
  Owner first;
  first.copied = 1;
  first.kept.set("first");
  Owner second(first);
  EXPECT_EQ(second.copied, 1);
  EXPECT_EQ(second.kept.get(), "");

  second.kept.set("second");
  first.copied = 2;
  second = first;
  EXPECT_EQ(second.copied, 2);
  EXPECT_EQ(second.kept.get(), "second");
  EXPECT_EQ(first.kept.get(), "first");
}

}  // namespace
}  // namespace qx::detail
