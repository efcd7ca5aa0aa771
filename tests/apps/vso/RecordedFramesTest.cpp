// Files of recorded frames, where there are any, go through the program.
#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>

#include "support/ProgramRunner.h"

namespace qx::app {
namespace {

class RecordedFrames : public testing::TestWithParam<const char*> {};

TEST_P(RecordedFrames, GiveOneJsonObjectALine) {
  const char* const folder = std::getenv("VSO_FRAMES_DIR");
  if (folder == nullptr) GTEST_SKIP() << "VSO_FRAMES_DIR names no folder with recorded frames";
  const std::string name = std::string(folder) + "/" + GetParam() + ".jsonl";
  std::ifstream recorded(name);
  ASSERT_TRUE(recorded.is_open()) << name;

  const test::Outcome outcome = test::runProgram({{"decode", "--json", name}});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.err, "");

  std::istringstream decoded(outcome.out);
  std::size_t count = 0;
  for (std::string input; std::getline(recorded, input); ++count) {
    std::string output;
    ASSERT_TRUE(std::getline(decoded, output)) << input;
    const nlohmann::json object = nlohmann::json::parse(output, nullptr, false);
    ASSERT_TRUE(object.is_object()) << output;
    EXPECT_EQ(object["hex"], nlohmann::json::parse(input)["hex"]) << output;
    EXPECT_EQ(object.count("error"), 0u) << output;
  }
  EXPECT_GT(count, 0u);
  std::string rest;
  EXPECT_FALSE(std::getline(decoded, rest)) << rest;
}

INSTANTIATE_TEST_SUITE_P(Files, RecordedFrames, testing::Values("open", "malformed"),
                         [](const auto& row) { return std::string(row.param); });

}  // namespace
}  // namespace qx::app
