#include "vso/runtime/resultXToStr.h"

#include <gtest/gtest.h>

#include <limits>
#include <ostream>

namespace qx {
namespace {

struct Row {
  long result;
  const char* text;
};

std::ostream& operator<<(std::ostream& out, const Row& row) { return out << row.result << ' ' << row.text; }

class resultXToStrRow : public testing::TestWithParam<Row> {};

TEST_P(resultXToStrRow, HasItsText) { EXPECT_STREQ(resultXToStr(GetParam().result), GetParam().text); }

INSTANTIATE_TEST_SUITE_P(Known, resultXToStrRow,
                         testing::Values(Row{0, "RX_SUCCESS"}, Row{-1, "RX_FAIL"}, Row{-2, "RX_OUTOFMEMORY"},
                                         Row{-3, "RX_POINTER"}, Row{-4, "RX_NOINTERFACE"}, Row{-5, "RX_NOTIMPL"},
                                         Row{-6, "RX_DISCONNECTED"}, Row{-7, "RX_TIMEOUT"}, Row{-8, "RX_SHUTDOWN"},
                                         Row{-9, "RX_NOBINDING"}));

// The ones beside 32 bits would be known codes if they were cut.
INSTANTIATE_TEST_SUITE_P(Unknown, resultXToStrRow,
                         testing::Values(Row{1, "RX_UNKNOWN"}, Row{-10, "RX_UNKNOWN"}, Row{9, "RX_UNKNOWN"},
                                         Row{255, "RX_UNKNOWN"}, Row{-256, "RX_UNKNOWN"}, Row{-65536, "RX_UNKNOWN"},
                                         Row{0xFFFFFFFF, "RX_UNKNOWN"}, Row{0x100000000, "RX_UNKNOWN"},
                                         Row{-0x100000001, "RX_UNKNOWN"},
                                         Row{std::numeric_limits<long>::min(), "RX_UNKNOWN"},
                                         Row{std::numeric_limits<long>::max(), "RX_UNKNOWN"}));

}  // namespace
}  // namespace qx
