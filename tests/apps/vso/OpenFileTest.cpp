#include "apps/vso/OpenFile.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <functional>
#include <string>

#include "support/TemporaryDirectory.h"

namespace qx::app {
namespace {

using test::TemporaryDirectory;

/// What `work` throws; empty if nothing.
std::string failureOf(const std::function<void()>& work) {
  try {
    work();
    return {};
  } catch (const FileError& error) {
    return error.what();
  }
}

mode_t modeOf(const std::string& path) {
  struct stat about {};
  EXPECT_EQ(::stat(path.c_str(), &about), 0) << path;
  return about.st_mode & 07777;
}

TEST(FileError, SaysThePathAndTheReason) {
  EXPECT_STREQ(FileError("a/b", "is no recording").what(), "a/b: is no recording");
  EXPECT_STREQ(FileError("a/b", ENOSPC).what(), "a/b: No space left on device");
}

TEST(OpenFile, WritesAndReadsAllOfAFile) {
  const TemporaryDirectory folder;
  std::string large(1'000'000, '\0');
  for (std::size_t i = 0; i < large.size(); ++i) large[i] = static_cast<char>(i * 31 % 251);
  for (const std::string& content : {large, std::string("one"), std::string()}) {
    OpenFile file(folder.path("file"), O_WRONLY | O_CREAT | O_TRUNC);
    file.writeAll(content);
    file.sync();
    file.close();
    EXPECT_EQ(OpenFile(folder.path("file")).readAll(), content);
    EXPECT_EQ(test::contentOf(folder.path("file")), content);
  }
}

TEST(OpenFile, GivesAFileThatItMakesItsMode) {
  const TemporaryDirectory folder;
  const mode_t before = ::umask(022);
  const OpenFile shared(folder.path("shared"), O_WRONLY | O_CREAT);
  const OpenFile secret(folder.path("secret"), O_WRONLY | O_CREAT, 0600);
  ::umask(before);
  EXPECT_EQ(modeOf(folder.path("shared")), 0644u);
  EXPECT_EQ(modeOf(folder.path("secret")), 0600u);
}

TEST(OpenFile, IsClosedInTheEndAndForOtherPrograms) {
  int descriptor = -1;
  {
    const OpenFile file("/dev/null");
    descriptor = file.descriptor();
    EXPECT_EQ(::fcntl(descriptor, F_GETFD), FD_CLOEXEC);
  }
  EXPECT_EQ(::fcntl(descriptor, F_GETFD), -1);
}

TEST(OpenFile, IsClosedOnce) {
  const TemporaryDirectory folder;
  const std::string path = folder.file("file", "");
  int descriptor = -1;
  {
    OpenFile file(path);
    descriptor = file.descriptor();
    file.close();
    ASSERT_EQ(::open(path.c_str(), O_RDONLY | O_CLOEXEC), descriptor) << "somebody else's now";
  }
  EXPECT_NE(::fcntl(descriptor, F_GETFD), -1);
  ::close(descriptor);
}

TEST(OpenFile, NamesItselfWhereTheSystemRefuses) {
  const TemporaryDirectory folder;
  const std::string missing = folder.path("missing");
  EXPECT_EQ(failureOf([&] { const OpenFile file(missing); }), missing + ": No such file or directory");
  const OpenFile directory(folder.path());
  EXPECT_EQ(failureOf([&] { directory.readAll(); }), folder.path() + ": Is a directory");
  EXPECT_EQ(failureOf([&] { directory.writeAll("text"); }), folder.path() + ": Bad file descriptor");
  const OpenFile full("/dev/full", O_WRONLY);
  EXPECT_EQ(failureOf([&] { full.writeAll("text"); }), "/dev/full: No space left on device");
  EXPECT_EQ(failureOf([&] { full.sync(); }), "/dev/full: Invalid argument");
}

}  // namespace
}  // namespace qx::app
