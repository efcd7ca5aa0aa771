// What holds for each enumeration of the stream layer.
#pragma once

#include <gtest/gtest.h>

#include <iterator>
#include <sstream>
#include <string>
#include <type_traits>

namespace qx::test {

template <typename Enumeration>
struct EnumeratorRow {
  Enumeration enumerator;
  int value;
  const char* name;
};

template <typename Value>
std::string textOf(Value value) {
  std::ostringstream out;
  out << value;
  return out.str();
}

/// `Table` has a type `Enumeration` and an array of all its rows, `ROWS`, from 0 on.
template <typename Table>
class PlainEnumeration : public testing::Test {};

TYPED_TEST_SUITE_P(PlainEnumeration);

TYPED_TEST_P(PlainEnumeration, EnumeratorsHaveTheirNumbers) {
  for (const auto& row : TypeParam::ROWS) EXPECT_EQ(row.value, row.enumerator) << row.name;
}

TYPED_TEST_P(PlainEnumeration, IsWrittenAsTheEnumeratorsName) {
  for (const auto& row : TypeParam::ROWS) EXPECT_EQ(row.name, textOf(row.enumerator));
}

TYPED_TEST_P(PlainEnumeration, AnyOtherNumberIsWrittenAsUnknown) {
  const int count = static_cast<int>(std::size(TypeParam::ROWS));
  for (const int other : {-2147483647 - 1, -1, count, count + 1, 256, 2147483647}) {
    EXPECT_EQ("UNKNOWN", textOf(static_cast<typename TypeParam::Enumeration>(other))) << other;
  }
}

TYPED_TEST_P(PlainEnumeration, IsOverIntAndTurnsIntoIt) {
  EXPECT_TRUE((std::is_convertible_v<typename TypeParam::Enumeration, int>));
  EXPECT_TRUE((std::is_same_v<std::underlying_type_t<typename TypeParam::Enumeration>, int>));
}

TYPED_TEST_P(PlainEnumeration, IsWrittenAmongOtherThings) {
  std::ostringstream out;
  out << '<' << TypeParam::ROWS[0].enumerator << ", " << TypeParam::ROWS[3].enumerator << '>';
  EXPECT_EQ(std::string("<") + TypeParam::ROWS[0].name + ", " + TypeParam::ROWS[3].name + ">", out.str());
}

REGISTER_TYPED_TEST_SUITE_P(PlainEnumeration, EnumeratorsHaveTheirNumbers, IsWrittenAsTheEnumeratorsName,
                            AnyOtherNumberIsWrittenAsUnknown, IsOverIntAndTurnsIntoIt, IsWrittenAmongOtherThings);

}  // namespace qx::test
