#include "qxnet/ConnectionState.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <type_traits>

namespace qx::net::stream {
namespace {

struct Row {
  ConnectionState enumerator;
  int value;
  const char* name;
};

constexpr Row ROWS[] = {
    {CONNECTION_CLOSED, 0, "CONNECTION_CLOSED"},
    {CONNECTION_OPENING, 1, "CONNECTION_OPENING"},
    {CONNECTION_OPEN, 2, "CONNECTION_OPEN"},
    {CONNECTION_CLOSING, 3, "CONNECTION_CLOSING"},
};

template <typename Value>
std::string textOf(Value value) {
  std::ostringstream out;
  out << value;
  return out.str();
}

TEST(ConnectionState, EnumeratorsHaveTheirNumbers) {
  for (const Row& row : ROWS) EXPECT_EQ(row.value, row.enumerator) << row.name;
}

TEST(ConnectionState, IsWrittenAsTheEnumeratorsName) {
  for (const Row& row : ROWS) EXPECT_EQ(row.name, textOf(row.enumerator));
}

TEST(ConnectionState, AnyOtherNumberIsWrittenAsUnknown) {
  for (const int other : {-2147483647 - 1, -1, 4, 5, 256, 2147483647}) {
    EXPECT_EQ("UNKNOWN", textOf(static_cast<ConnectionState>(other))) << other;
  }
}

TEST(ConnectionState, IsAPlainEnumerationOverInt) {
  EXPECT_TRUE((std::is_convertible_v<ConnectionState, int>));
  EXPECT_TRUE((std::is_same_v<std::underlying_type_t<ConnectionState>, int>));
}

TEST(ConnectionState, IsWrittenAmongOtherThings) {
  std::ostringstream out;
  out << '<' << ROWS[0].enumerator << ", " << ROWS[3].enumerator << '>';
  EXPECT_EQ(std::string("<") + ROWS[0].name + ", " + ROWS[3].name + ">", out.str());
}

}  // namespace
}  // namespace qx::net::stream
