#include "vso/runtime/ReferencedBool.h"

#include <gtest/gtest.h>

#include <string>
#include <type_traits>

#include "tests/vso/runtime/Threads.h"

namespace qx {
namespace {

static_assert(!std::is_polymorphic_v<ReferencedBool>);
static_assert(!std::is_copy_constructible_v<ReferencedBool>);

bool reads(const ReferencedBool& flag) { return flag; }

/// The references of `flag`, which holds `value`. They are gone afterwards.
int takeReferences(ReferencedBool& flag, bool value) {
  int references = 0;
  for (; reads(flag) == value; ++references) flag--;
  return references;
}

struct Use {
  bool value;
  /// '+' and '-': references; 't' and 'f': a value that is assigned.
  std::string operations;
  bool reads;
};

class ReferencedBoolUse : public testing::TestWithParam<Use> {};

TEST_P(ReferencedBoolUse, GivesTheValueWithAReferenceOnly) {
  ReferencedBool flag(GetParam().value);
  for (const char operation : GetParam().operations) {
    if (operation == '+') {
      flag++;
    } else if (operation == '-') {
      flag--;
    } else {
      flag = operation == 't';
    }
  }
  EXPECT_EQ(reads(flag), GetParam().reads) << GetParam().operations;
}

INSTANTIATE_TEST_SUITE_P(All, ReferencedBoolUse,
                         testing::Values(Use{false, "", true}, Use{true, "", false},        //
                                         Use{false, "+", false}, Use{true, "+", true},      //
                                         Use{false, "++", false}, Use{true, "++", true},    //
                                         Use{false, "+-", true}, Use{true, "+-", false},    //
                                         Use{false, "++-", false}, Use{true, "++-", true},  //
                                         Use{true, "++--", false},                          //
                                         // no references below none
                                         Use{false, "-", true}, Use{false, "+--", true}, Use{true, "---+", true},
                                         Use{true, "---+-", false},
                                         // another value, the same references
                                         Use{true, "+f", false}, Use{false, "+t", true}, Use{true, "f", true},
                                         Use{false, "t", false}, Use{true, "++f-", false}, Use{true, "++f--", true},
                                         Use{true, "f+", false}, Use{false, "t+", true}, Use{true, "+ft", true}));

TEST(ReferencedBool, ReadsTrueByDefaultAndFalseFromTheFirstReference) {
  ReferencedBool flag;
  EXPECT_TRUE(reads(flag));
  flag++;
  EXPECT_FALSE(reads(flag));
  flag--;
  flag--;
  EXPECT_TRUE(reads(flag));
  flag++;
  EXPECT_FALSE(reads(flag));
}

TEST(ReferencedBool, IsMadeOfABool) {
  const ReferencedBool flag(true);
  EXPECT_FALSE(reads(flag));
}

TEST(ReferencedBool, HoldsManyReferences) {
  constexpr int MANY = 70'000;  // more than 16 bits
  ReferencedBool flag(true);
  for (int i = 0; i < MANY; ++i) flag++;
  EXPECT_EQ(takeReferences(flag, true), MANY);
}

TEST(ReferencedBool, LosesNoReferenceOfAnyThread) {
  constexpr int EACH = 500;
  ReferencedBool flag(true);
  test::onEachThread([&](int) {
    for (int i = 0; i < EACH; ++i) flag++;
  });
  test::onEachThread([&](int) {
    for (int i = 0; i < EACH / 2; ++i) flag--;
  });
  EXPECT_EQ(takeReferences(flag, true), test::THREADS * EACH / 2);
}

TEST(ReferencedBool, IsReferencedReadAndAssignedAtOnce) {
  ReferencedBool flag(true);
  test::onEachThread([&](int) {
    for (int i = 0; i < 500; ++i) {
      flag++;
      flag = true;
      EXPECT_TRUE(reads(flag));  // by this thread's own reference at least
      flag--;
    }
  });
  EXPECT_FALSE(reads(flag));
  flag++;
  EXPECT_EQ(takeReferences(flag, true), 1);
}

}  // namespace
}  // namespace qx
