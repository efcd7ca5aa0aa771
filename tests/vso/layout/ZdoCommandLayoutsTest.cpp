#include "vso/layout/ZdoCommandLayouts.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <string>
#include <vector>

#include "tests/vso/layout/WholeFrames.h"

namespace qx {
namespace {

TEST(ZdoCommandLayouts, NameTheCommandsOfTheLibraryAndNoOthers) {
  const std::map<unsigned int, std::string> names = {
      {0x0031, "network LQI request"},      {0x8031, "network LQI response"}, {0x0032, "network routing request"},
      {0x8032, "network routing response"}, {0x0034, "leave request"},        {0x8034, "leave response"},
      {0x0036, "permit join request"},      {0x8036, "permit join response"}, {0x0038, "network update request"},
      {0x8038, "network update response"},
  };
  for (unsigned int command = 0; command <= 0xFFFF; ++command) {
    const CommandLayout* const layout = findZdoCommand(static_cast<unsigned short>(command));
    const auto row = names.find(command);
    ASSERT_EQ(layout != nullptr, row != names.end()) << command;
    if (layout == nullptr) continue;
    EXPECT_EQ(layout->name, row->second);
  }
}

/// The tests of walks and verdicts stand on those frames.
TEST(ZdoCommandLayouts, AreEachAmongTheWholeFrames) {
  const std::vector<test::WholeFrame>& frames = test::wholeFrames();
  for (const unsigned short command :
       {0x0031, 0x8031, 0x0032, 0x8032, 0x0034, 0x8034, 0x0036, 0x8036, 0x0038, 0x8038}) {
    EXPECT_TRUE(std::any_of(frames.begin(), frames.end(), [command](const auto& whole) {
      return whole.profile == 0 && whole.cluster == command;
    })) << command;
  }
}

TEST(ZdoCommandLayouts, BeginAResponseWithItsStatus) {
  for (const unsigned short command : {0x8031, 0x8032, 0x8034, 0x8036, 0x8038}) {
    const FieldLayout& first = findZdoCommand(command)->fields[0];
    EXPECT_EQ(first.kind, FieldKind::ZDO_STATUS);
    EXPECT_STREQ(first.name, "status");
    EXPECT_EQ(first.presence, FieldPresence::ALWAYS);
  }
}

}  // namespace
}  // namespace qx
