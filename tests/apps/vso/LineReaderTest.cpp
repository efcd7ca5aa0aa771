#include "apps/vso/LineReader.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "apps/vso/OpenFile.h"
#include "support/ProgramRunner.h"

namespace qx::app {
namespace {

std::vector<std::string> linesOf(const std::string& content) {
  const test::TemporaryFile file(content);
  const OpenFile opened(file.name());
  LineReader reader(opened.descriptor(), "lines");
  std::vector<std::string> lines;
  while (reader.next()) lines.push_back(reader.line());
  EXPECT_EQ(reader.number(), lines.size());
  EXPECT_EQ(reader.offset(), content.size());
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
  const OpenFile opened(file.name());
  LineReader reader(opened.descriptor(), "lines");

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
  const OpenFile directory("/");
  LineReader reader(directory.descriptor(), "lines");
  std::string trouble;
  try {
    reader.next();
  } catch (const FileError& error) {
    trouble = error.what();
  }
  EXPECT_EQ(trouble, "lines: Is a directory");
  EXPECT_EQ(reader.number(), 0u);
}

TEST(LineReader, TellsWhereALineIs) {
  const test::TemporaryFile file("one\n\ntwo");
  const OpenFile opened(file.name());
  LineReader reader(opened.descriptor(), "lines");
  EXPECT_EQ(reader.offset(), 0u);
  const struct {
    unsigned long long offset;
    const char* complaint;
  } rows[] = {{4, "lines:1: not liked"}, {5, "lines:2: not liked"}, {8, "lines:3: not liked"}};
  for (const auto& row : rows) {
    ASSERT_TRUE(reader.next());
    EXPECT_EQ(reader.offset(), row.offset);
    EXPECT_EQ(reader.complaint("not liked"), row.complaint);
  }
}

TEST(LineReader, CallsBackBeforeEachRead) {
  const test::TemporaryFile file("one\ntwo\n");
  const OpenFile opened(file.name());
  int reads = 0;
  LineReader reader(opened.descriptor(), "lines", [&reads] { ++reads; });
  EXPECT_EQ(reads, 0);
  ASSERT_TRUE(reader.next());
  ASSERT_TRUE(reader.next());
  EXPECT_EQ(reads, 1);
  EXPECT_FALSE(reader.next());
  EXPECT_EQ(reads, 2);
}

}  // namespace
}  // namespace qx::app
