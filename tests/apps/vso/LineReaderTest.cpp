#include "apps/vso/LineReader.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <vector>

#include "support/ProgramRunner.h"

namespace qx::app {
namespace {

/// Descriptor of a file, as `open` gives it.
class Opened {
 public:
  explicit Opened(const char* name) : descriptor_(::open(name, O_RDONLY | O_CLOEXEC)) {}
  ~Opened() { ::close(descriptor_); }
  Opened(const Opened&) = delete;
  Opened& operator=(const Opened&) = delete;

  int descriptor() const { return descriptor_; }

 private:
  int descriptor_;
};

std::vector<std::string> linesOf(const std::string& content) {
  const test::TemporaryFile file(content);
  const Opened opened(file.name().c_str());
  LineReader reader(opened.descriptor());
  std::vector<std::string> lines;
  while (reader.next()) lines.push_back(reader.line());
  EXPECT_EQ(reader.number(), lines.size());
  EXPECT_EQ(reader.error(), 0);
  return lines;
}

using Lines = std::vector<std::string>;

TEST(LineReader, FindsNoLineInAnEmptyFile) { EXPECT_EQ(linesOf(""), Lines()); }

TEST(LineReader, GivesLinesWithoutTheirNewlines) { EXPECT_EQ(linesOf("one\n\ntwo\n"), Lines({"one", "", "two"})); }

TEST(LineReader, GivesALastLineWithoutANewline) { EXPECT_EQ(linesOf("one\ntwo"), Lines({"one", "two"})); }

TEST(LineReader, LeavesAllOtherBytesAlone) {
  const std::string odd("a\0b\r\xff", 5);
  EXPECT_EQ(linesOf(odd + "\nc"), Lines({odd, "c"}));
}

TEST(LineReader, PutsLinesTogetherThatLieAcrossReads) {
  Lines expected;
  std::string content;
  for (int i = 0; i < 3; ++i) {
    expected.emplace_back(50000, static_cast<char>('a' + i));
    content += expected.back() + "\n";
  }
  EXPECT_EQ(linesOf(content), expected);
}

TEST(LineReader, KeepsALineOfTheLimitAndCutsALongerOne) {
  const std::string longest(LineReader::LONGEST_LINE, 'x');
  const test::TemporaryFile file(longest + "\n" + longest + "y\n" + std::string(1000000, 'z') + "\nend\n");
  const Opened opened(file.name().c_str());
  LineReader reader(opened.descriptor());

  ASSERT_TRUE(reader.next());
  EXPECT_FALSE(reader.isTooLong());
  EXPECT_EQ(reader.line(), longest);
  for (int i = 0; i < 2; ++i) {
    ASSERT_TRUE(reader.next());
    EXPECT_TRUE(reader.isTooLong());
    EXPECT_EQ(reader.line().size(), LineReader::LONGEST_LINE);
  }
  ASSERT_TRUE(reader.next());
  EXPECT_FALSE(reader.isTooLong());
  EXPECT_EQ(reader.line(), "end");
  EXPECT_EQ(reader.number(), 4u);
  EXPECT_FALSE(reader.next());
}

TEST(LineReader, TellsWhyAReadFailed) {
  const Opened directory("/");
  LineReader reader(directory.descriptor());
  EXPECT_FALSE(reader.next());
  EXPECT_EQ(reader.error(), EISDIR);
}

TEST(LineReader, CallsBackBeforeEachRead) {
  const test::TemporaryFile file("one\ntwo\n");
  const Opened opened(file.name().c_str());
  int reads = 0;
  LineReader reader(opened.descriptor(), [&reads] { ++reads; });
  EXPECT_EQ(reads, 0);
  ASSERT_TRUE(reader.next());
  ASSERT_TRUE(reader.next());
  EXPECT_EQ(reads, 1);
  EXPECT_FALSE(reader.next());
  EXPECT_EQ(reads, 2);
}

}  // namespace
}  // namespace qx::app
