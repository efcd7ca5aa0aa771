#include "qxnet/ConnectionOperation.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <type_traits>

namespace qx::net::stream {
namespace {

struct Row {
  ConnectionOperation enumerator;
  int value;
  const char* name;
};

constexpr Row ROWS[] = {
    {OPERATION_START, 0, "OPERATION_START"},
    {OPERATION_READ, 1, "OPERATION_READ"},
    {OPERATION_WRITE, 2, "OPERATION_WRITE"},
    {OPERATION_CLOSE, 3, "OPERATION_CLOSE"},
};

template <typename Value>
std::string textOf(Value value) {
  std::ostringstream out;
  out << value;
  return out.str();
}

TEST(ConnectionOperation, EnumeratorsHaveTheirNumbers) {
  for (const Row& row : ROWS) EXPECT_EQ(row.value, row.enumerator) << row.name;
}

TEST(ConnectionOperation, IsWrittenAsTheEnumeratorsName) {
  for (const Row& row : ROWS) EXPECT_EQ(row.name, textOf(row.enumerator));
}

TEST(ConnectionOperation, AnyOtherNumberIsWrittenAsUnknown) {
  for (const int other : {-2147483647 - 1, -1, 4, 5, 256, 2147483647}) {
    EXPECT_EQ("UNKNOWN", textOf(static_cast<ConnectionOperation>(other))) << other;
  }
}

TEST(ConnectionOperation, IsAPlainEnumerationOverInt) {
  EXPECT_TRUE((std::is_convertible_v<ConnectionOperation, int>));
  EXPECT_TRUE((std::is_same_v<std::underlying_type_t<ConnectionOperation>, int>));
}

TEST(ConnectionOperation, IsWrittenAmongOtherThings) {
  std::ostringstream out;
  out << '<' << ROWS[0].enumerator << ", " << ROWS[3].enumerator << '>';
  EXPECT_EQ(std::string("<") + ROWS[0].name + ", " + ROWS[3].name + ">", out.str());
}

}  // namespace
}  // namespace qx::net::stream
