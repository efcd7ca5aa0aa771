#include "vso/runtime/PidDropper.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstddef>
#include <filesystem>
#include <locale>
#include <string>
#include <type_traits>

#include "support/TemporaryDirectory.h"
#include "tests/vso/runtime/FileChecks.h"

namespace qx {
namespace {

namespace fs = std::filesystem;
using test::contentOf;
using test::openDescriptors;
using test::TemporaryDirectory;

static_assert(!std::is_polymorphic_v<PidDropper>);

std::string pidLine() { return std::to_string(::getpid()) + "\n"; }

TEST(PidDropper, FileHoldsThePidInDecimalAndALineEndWhileItLives) {
  const TemporaryDirectory folder;
  const PidDropper dropper(folder.path("pid"), false);
  EXPECT_EQ(contentOf(folder.path("pid")), pidLine());
}

TEST(PidDropper, KeepsNoDescriptorOpen) {
  const TemporaryDirectory folder;
  const std::ptrdiff_t before = openDescriptors();
  const PidDropper dropper(folder.path("pid"), true);
  EXPECT_EQ(openDescriptors(), before);
}

TEST(PidDropper, TruncatesALongerOlderFile) {
  const TemporaryDirectory folder;
  const std::string path = folder.file("pid", "1234567890123456789012345678901234567890\nmore\n");
  const PidDropper dropper(path, false);
  EXPECT_EQ(contentOf(path), pidLine());
}

TEST(PidDropper, RemovesItsFileAtTheEndIfAsked) {
  const TemporaryDirectory folder;
  {
    const PidDropper dropper(folder.path("pid"), true);
    EXPECT_TRUE(fs::exists(folder.path("pid")));
  }
  EXPECT_FALSE(fs::exists(folder.path("pid")));
}

TEST(PidDropper, LeavesItsFileIfNotAsked) {
  const TemporaryDirectory folder;
  { const PidDropper dropper(folder.path("pid"), false); }
  EXPECT_EQ(contentOf(folder.path("pid")), pidLine());
}

TEST(PidDropper, SecondOneReplacesWhatTheFirstLeft) {
  const TemporaryDirectory folder;
  { const PidDropper dropper(folder.path("pid"), false); }
  const PidDropper dropper(folder.path("pid"), false);
  EXPECT_EQ(contentOf(folder.path("pid")), pidLine());
}

TEST(PidDropper, UnwritablePathIsNotReported) {
  const TemporaryDirectory folder;
  for (const std::string& path : {folder.path("none/pid"), folder.path(), std::string()}) {
    for (const bool remove : {true, false}) {
      EXPECT_NO_THROW({ const PidDropper dropper(path, remove); }) << path;
    }
  }
  EXPECT_FALSE(fs::exists(folder.path("none")));
  EXPECT_TRUE(fs::is_directory(folder.path()));
}

TEST(PidDropper, RemovesWhateverStandsAtThePathAtTheEnd) {
  const TemporaryDirectory folder;
  {
    const PidDropper dropper(folder.path("pid"), true);
    fs::remove(folder.path("pid"));
    folder.file("pid", "another's");
  }
  EXPECT_FALSE(fs::exists(folder.path("pid")));
}

TEST(PidDropper, LeavesAnothersFileAtThePathIfNotAsked) {
  const TemporaryDirectory folder;
  {
    const PidDropper dropper(folder.path("pid"), false);
    folder.file("pid", "another's");
  }
  EXPECT_EQ(contentOf(folder.path("pid")), "another's");
}

TEST(PidDropper, FileGoneBeforehandIsNotReported) {
  const TemporaryDirectory folder;
  EXPECT_NO_THROW({
    const PidDropper dropper(folder.path("pid"), true);
    fs::remove(folder.path("pid"));
  });
  EXPECT_TRUE(fs::is_empty(folder.path()));
}

TEST(PidDropper, KeepsAPathOfItsOwn) {
  const TemporaryDirectory folder;
  std::string path = folder.path("pid");
  {
    const PidDropper dropper(path, true);
    path = folder.file("other", "");
  }
  EXPECT_FALSE(fs::exists(folder.path("pid")));
  EXPECT_TRUE(fs::exists(folder.path("other")));
}

/// Puts a sign behind each digit, so that a number of any length shows it.
class Grouping : public std::numpunct<char> {
  char do_thousands_sep() const override { return '\''; }
  std::string do_grouping() const override { return "\1"; }
};

TEST(PidDropper, GroupsNoDigitsWhateverTheLocale) {
  const TemporaryDirectory folder;
  const std::locale before = std::locale::global(std::locale(std::locale(), new Grouping));
  { const PidDropper dropper(folder.path("pid"), false); }
  std::locale::global(before);
  EXPECT_EQ(contentOf(folder.path("pid")), pidLine());
}

}  // namespace
}  // namespace qx
