#include "vso/identifiers/U255Buff.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <memory>
#include <numeric>
#include <string>
#include <type_traits>
#include <vector>

namespace qx {
namespace {

using testing::Each;
using testing::ElementsAreArray;

template <typename T>
std::vector<T> storage(const U255Buff<T>& buffer) {
  return {buffer.contents, buffer.contents + 255};
}

/// 1, 2, 3 ..., in 16-bit elements with a high byte.
template <typename T>
std::vector<T> counted(std::size_t count) {
  std::vector<T> elements(count);
  std::iota(elements.begin(), elements.end(), static_cast<T>(sizeof(T) == 1 ? 1 : 0x0301));
  return elements;
}

/// A buffer whose whole storage holds 0x5A bytes, `length` of which count as used.
template <typename T>
U255Buff<T> filled(unsigned int length) {
  U255Buff<T> buffer(0x5A);
  buffer.length_ = length;
  return buffer;
}

/// 0x5A in every byte of one element.
template <typename T>
constexpr T FILL = static_cast<T>(0x5A5A);

template <typename T>
class U255BuffTest : public testing::Test {};

struct ElementName {
  template <typename T>
  static std::string GetName(int /*index*/) {
    return sizeof(T) == 1 ? "OfBytes" : "OfShorts";
  }
};

using Elements = testing::Types<unsigned char, unsigned short>;
TYPED_TEST_SUITE(U255BuffTest, Elements, ElementName);

TYPED_TEST(U255BuffTest, HasRoomFor255ElementsBeforeTheirCount) {
  const U255Buff<TypeParam> buffer;
  EXPECT_EQ(sizeof buffer.contents, 255 * sizeof(TypeParam));
  EXPECT_GE(reinterpret_cast<const unsigned char*>(&buffer.length_),
            reinterpret_cast<const unsigned char*>(buffer.contents) + sizeof buffer.contents);
  static_assert(std::is_same_v<decltype(buffer.length_), unsigned int>);
}

TYPED_TEST(U255BuffTest, IsEmptyAndZeroByDefault) {
  const U255Buff<TypeParam> buffer;
  EXPECT_EQ(buffer.length_, 0U);
  EXPECT_THAT(storage(buffer), Each(0));
}

TYPED_TEST(U255BuffTest, FillsEveryByteAndStaysEmpty) {
  const U255Buff<TypeParam> buffer(0xAB);
  EXPECT_EQ(buffer.length_, 0U);
  EXPECT_THAT(storage(buffer), Each(static_cast<TypeParam>(0xABAB)));
}

TYPED_TEST(U255BuffTest, FillsWithTheLowByteOfTheValue) {
  EXPECT_THAT(storage(U255Buff<TypeParam>(0x1234)), Each(static_cast<TypeParam>(0x3434)));
  EXPECT_THAT(storage(U255Buff<TypeParam>(-1)), Each(static_cast<TypeParam>(0xFFFF)));
}

TYPED_TEST(U255BuffTest, TakesUpTo255Elements) {
  for (const unsigned int count : {0U, 1U, 7U, 254U, 255U}) {
    std::vector<TypeParam> elements = counted<TypeParam>(count);
    const U255Buff<TypeParam> buffer(elements.data(), count);
    elements.resize(255);
    EXPECT_EQ(buffer.length_, count);
    EXPECT_THAT(storage(buffer), ElementsAreArray(elements)) << count;
  }
}

TYPED_TEST(U255BuffTest, TakesTheCountButNoElementsPast255) {
  const std::vector<TypeParam> elements = counted<TypeParam>(600);
  for (const unsigned int count : {256U, 510U, 600U, 0xFFFFFFFFU}) {
    const U255Buff<TypeParam> buffer(elements.data(), count);
    EXPECT_EQ(buffer.length_, count);
    EXPECT_THAT(storage(buffer), Each(0)) << count;
  }
}

TYPED_TEST(U255BuffTest, TakesTheCountButNoElementsFromNull) {
  const TypeParam* const none = nullptr;
  const U255Buff<TypeParam> buffer(none, 5);
  EXPECT_EQ(buffer.length_, 5U);
  EXPECT_THAT(storage(buffer), Each(0));
}

TYPED_TEST(U255BuffTest, CopyConstructionTakesTheElementsInUseAndZeros) {
  for (const unsigned int length : {0U, 1U, 254U, 255U}) {
    const U255Buff<TypeParam> source = filled<TypeParam>(length);
    const U255Buff<TypeParam> copy(source);
    std::vector<TypeParam> expected(length, FILL<TypeParam>);
    expected.resize(255);
    EXPECT_EQ(copy.length_, length);
    EXPECT_THAT(storage(copy), ElementsAreArray(expected)) << length;
  }
}

TYPED_TEST(U255BuffTest, CopyConstructionFromALengthThatDoesNotFitIsEmpty) {
  for (const unsigned int length : {256U, 510U, 0xFFFFFFFFU}) {
    U255Buff<TypeParam> source(0x5A);
    source.length_ = length;
    const U255Buff<TypeParam> copy(source);
    EXPECT_EQ(copy.length_, 0U);
    EXPECT_THAT(storage(copy), Each(0)) << length;
  }
}

TYPED_TEST(U255BuffTest, AssignmentTakesTheElementsInUseAndLeavesTheOthers) {
  for (const unsigned int length : {0U, 3U, 255U}) {
    const std::vector<TypeParam> elements = counted<TypeParam>(length);
    U255Buff<TypeParam> target = filled<TypeParam>(200);
    EXPECT_EQ(&(target = U255Buff<TypeParam>(elements.data(), length)), &target);
    std::vector<TypeParam> expected = elements;
    expected.resize(255, FILL<TypeParam>);
    EXPECT_EQ(target.length_, length);
    EXPECT_THAT(storage(target), ElementsAreArray(expected)) << length;
  }
}

TYPED_TEST(U255BuffTest, AssignmentOfALengthThatDoesNotFitChangesNothing) {
  for (const unsigned int length : {256U, 510U, 0xFFFFFFFFU}) {
    U255Buff<TypeParam> source;
    source.length_ = length;
    U255Buff<TypeParam> target = filled<TypeParam>(255);
    target = source;
    EXPECT_EQ(target.length_, 255U);
    EXPECT_THAT(storage(target), Each(FILL<TypeParam>)) << length;
  }
}

TYPED_TEST(U255BuffTest, AssignmentToItselfChangesNothing) {
  U255Buff<TypeParam> buffer = filled<TypeParam>(255);
  const U255Buff<TypeParam>& self = buffer;
  buffer = self;
  EXPECT_EQ(buffer.length_, 255U);
  EXPECT_THAT(storage(buffer), Each(FILL<TypeParam>));
}

TYPED_TEST(U255BuffTest, HasAStoredLengthOfAtMost255) {
  U255Buff<TypeParam> buffer;
  for (const unsigned int length : {0U, 1U, 254U, 255U}) {
    buffer.length_ = length;
    EXPECT_EQ(buffer.storedLength(), length);
  }
  for (const unsigned int length : {256U, 510U, 0xFFFFFFFFU}) {
    buffer.length_ = length;
    EXPECT_EQ(buffer.storedLength(), 255U) << length;
    EXPECT_EQ(buffer.length_, length);
  }
}

TYPED_TEST(U255BuffTest, IsDeletedThroughTheBase) {
  struct Derived : U255Buff<TypeParam> {
    explicit Derived(bool& flag) : deleted(flag) {}
    ~Derived() override { deleted = true; }
    bool& deleted;
  };
  static_assert(std::has_virtual_destructor_v<U255Buff<TypeParam>>);
  bool deleted = false;
  std::unique_ptr<U255Buff<TypeParam>>(std::make_unique<Derived>(deleted)).reset();
  EXPECT_TRUE(deleted);
}

}  // namespace
}  // namespace qx
