#include "apps/vso/Output.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>
#include <fstream>
#include <iterator>
#include <string>

#include "support/ProgramRunner.h"

namespace qx::app {
namespace {

class Written {
 public:
  explicit Written(const std::string& name) : descriptor_(::open(name.c_str(), O_WRONLY | O_CLOEXEC)) {}
  ~Written() { ::close(descriptor_); }
  Written(const Written&) = delete;
  Written& operator=(const Written&) = delete;

  int descriptor() const { return descriptor_; }

 private:
  int descriptor_;
};

std::string contentOf(const std::string& name) {
  std::ifstream file(name, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

TEST(Output, KeepsSmallTextsUntilTheFlush) {
  const test::TemporaryFile file("");
  const Written written(file.name());
  Output output(written.descriptor());
  output.write("one ");
  output.write("two");
  EXPECT_EQ(contentOf(file.name()), "");
  output.flush();
  EXPECT_EQ(contentOf(file.name()), "one two");
  EXPECT_EQ(output.error(), 0);
}

TEST(Output, WritesMuchTextWithoutBeingAsked) {
  const test::TemporaryFile file("");
  const Written written(file.name());
  Output output(written.descriptor());
  const std::string much(100000, 'x');
  output.write(much);
  EXPECT_EQ(contentOf(file.name()), much);
}

TEST(Output, KeepsTheErrorOfTheFirstFailureAndWritesNoMore) {
  const Written full("/dev/full");
  ASSERT_GE(full.descriptor(), 0);
  Output output(full.descriptor());
  output.write("text");
  EXPECT_EQ(output.error(), 0);
  output.flush();
  EXPECT_EQ(output.error(), ENOSPC);
  output.write("more");
  output.flush();
  EXPECT_EQ(output.error(), ENOSPC);
}

}  // namespace
}  // namespace qx::app
