#include "qxshared/StackTrace.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <sstream>
#include <string>

namespace qx {

// Not in an unnamed namespace: the names are to be in the dynamic symbol table.
[[gnu::noinline]] StackTrace traceOfATestFunction() {
  StackTrace trace;
  return trace;
}

[[gnu::noinline]] std::size_t depthAfter(int calls) {
  const std::size_t depth = calls == 0 ? StackTrace().size() : depthAfter(calls - 1);
  asm volatile("" ::: "memory");  // keeps the call above from becoming a jump
  return depth;
}

namespace {

using testing::HasSubstr;
using testing::MatchesRegex;

std::string text(const StackTrace& trace) {
  std::ostringstream out;
  out << trace;
  return out.str();
}

TEST(StackTrace, HoldsTheCallsThatLedToIt) { EXPECT_GT(StackTrace().size(), 1U); }

TEST(StackTrace, GrowsByAFrameACall) { EXPECT_EQ(depthAfter(7), depthAfter(2) + 5); }

TEST(StackTrace, IsBounded) {
  EXPECT_EQ(depthAfter(1000), 64U);
  EXPECT_EQ(depthAfter(500), depthAfter(1000));
}

TEST(StackTrace, PrintsOneFrameALine) {
  const StackTrace trace;
  const std::string printed = text(trace);
  EXPECT_EQ(static_cast<std::size_t>(std::count(printed.begin(), printed.end(), '\n')), trace.size());

  std::istringstream lines(printed);
  std::size_t number = 0;
  for (std::string line; std::getline(lines, line); ++number) {
    EXPECT_THAT(line, MatchesRegex("#" + std::to_string(number) + " 0x[0-9a-f]+( .*)?"));
  }
}

TEST(StackTrace, BeginsWithTheFunctionThatTakesItAndPrintsItDemangled) {
  const std::string printed = text(traceOfATestFunction());
  EXPECT_THAT(printed.substr(0, printed.find('\n')), HasSubstr(" qx::traceOfATestFunction() + 0x"));
}

TEST(StackTrace, StaysAsItWasWhenCopied) {
  const StackTrace trace = traceOfATestFunction();
  const StackTrace copy = trace;
  EXPECT_EQ(text(copy), text(trace));
}

}  // namespace
}  // namespace qx
