#include "apps/vso/mesh/StateDirectory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <signal.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <stdexcept>
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
  } catch (const std::runtime_error& error) {
    return error.what();
  }
}

/// What `work`, done by a process of its own, returns.
std::string inAProcess(const std::function<std::string()>& work) {
  const TemporaryDirectory scratch;
  const pid_t process = ::fork();
  if (process == 0) {
    std::string text;
    try {
      text = work();
    } catch (const std::exception& error) {
      text = std::string("threw: ") + error.what();
    }
    scratch.file("text", text);
    ::_exit(0);
  }
  int status = -1;
  ::waitpid(process, &status, 0);
  return status == 0 ? test::contentOf(scratch.path("text")) : "ended with " + std::to_string(status);
}

std::set<std::string> entriesOf(const std::string& folder) {
  std::set<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) names.insert(entry.path().filename());
  return names;
}

mode_t modeOf(const std::string& path) {
  struct stat about {};
  EXPECT_EQ(::stat(path.c_str(), &about), 0) << path;
  return about.st_mode & 07777;
}

TEST(StateDirectory, MakesTheFolderForItsOwnerAlone) {
  const TemporaryDirectory scratch;
  const std::string path = scratch.path("state");
  const StateDirectory folder(path);
  EXPECT_EQ(folder.path(), path);
  EXPECT_EQ(folder.fileOf("a"), path + "/a");
  EXPECT_TRUE(std::filesystem::is_directory(path));
  EXPECT_EQ(modeOf(path), 0700u);
}

TEST(StateDirectory, TakesAFolderThatIsThereWithWhatItHolds) {
  const TemporaryDirectory scratch;
  scratch.file("mesh", "earlier");
  const StateDirectory folder(scratch.path());
  EXPECT_EQ(folder.load("mesh"), "earlier");
}

TEST(StateDirectory, NeedsTheFolderAboveAndAFolderAtAll) {
  const TemporaryDirectory scratch;
  scratch.file("file", "");
  EXPECT_EQ(failureOf([&] { const StateDirectory folder(scratch.path("a/b")); }),
            scratch.path("a/b") + ": No such file or directory");
  EXPECT_EQ(failureOf([&] { const StateDirectory folder(scratch.path("file")); }),
            scratch.path("file/lock") + ": Not a directory");
  EXPECT_EQ(failureOf([&] { const StateDirectory folder(scratch.path("file/state")); }),
            scratch.path("file/state") + ": Not a directory");
}

TEST(StateDirectory, HasAPath) {
  EXPECT_EQ(faultOfStatePath(""), "an empty path");
  for (const char* const path : {".", "home", "/", "no/such/folder", " "})
    EXPECT_EQ(faultOfStatePath(path), "") << path;
}

TEST(StateDirectory, HoldsTheIdOfItsProcessAsLongAsItLives) {
  const TemporaryDirectory scratch;
  {
    const StateDirectory folder(scratch.path());
    EXPECT_EQ(test::contentOf(scratch.path("vso.pid")), std::to_string(::getpid()) + "\n");
  }
  EXPECT_FALSE(std::filesystem::exists(scratch.path("vso.pid")));
}

TEST(StateDirectory, RefusesEveryOtherProcessAndLeavesTheFirstOnesIdAlone) {
  const TemporaryDirectory scratch;
  const std::string refusal = scratch.path() + ": in use by another process, see " + scratch.path("vso.pid");
  std::string id;
  {
    const StateDirectory folder(scratch.path());
    id = test::contentOf(scratch.path("vso.pid"));
    for (int i = 0; i < 2; ++i) {
      EXPECT_EQ(inAProcess([&] { return failureOf([&] { const StateDirectory second(scratch.path()); }); }), refusal);
      EXPECT_EQ(test::contentOf(scratch.path("vso.pid")), id);
    }
    EXPECT_EQ(failureOf([&] { const StateDirectory second(scratch.path()); }), refusal) << "in the same process";
    EXPECT_EQ(test::contentOf(scratch.path("vso.pid")), id);
  }
  EXPECT_EQ(inAProcess([&] { return failureOf([&] { const StateDirectory second(scratch.path()); }); }), "");
}

TEST(StateDirectory, IsFreeWhenItsProcessIsKilled) {
  const TemporaryDirectory scratch;
  const std::string ended = inAProcess([&]() -> std::string {
    const StateDirectory folder(scratch.path());
    ::raise(SIGKILL);
    return "still here";
  });
  EXPECT_EQ(ended, "ended with " + std::to_string(SIGKILL));
  ASSERT_TRUE(std::filesystem::exists(scratch.path("vso.pid"))) << "what the killed one left behind";
  const StateDirectory folder(scratch.path());
  EXPECT_EQ(test::contentOf(scratch.path("vso.pid")), std::to_string(::getpid()) + "\n");
}

TEST(StateDirectory, LoadsNothingWhereThereIsNothing) {
  const TemporaryDirectory scratch;
  const StateDirectory folder(scratch.path());
  EXPECT_EQ(folder.load("mesh"), std::nullopt);
}

TEST(StateDirectory, LoadsWhatWasSaved) {
  const TemporaryDirectory scratch;
  const StateDirectory folder(scratch.path());
  std::string large(5'000'000, '\0');
  for (std::size_t i = 0; i < large.size(); ++i) large[i] = static_cast<char>(i * 31 % 251);
  for (const std::string& content : {std::string("one"), std::string(), large, std::string("\0\r\n\xff", 4)}) {
    folder.save("mesh", content);
    EXPECT_EQ(folder.load("mesh"), content);
    EXPECT_EQ(test::contentOf(folder.fileOf("mesh")), content);
    EXPECT_EQ(entriesOf(scratch.path()), (std::set<std::string>{"lock", "mesh", "vso.pid"}));
  }
}

TEST(StateDirectory, SavesForItsOwnerAlone) {
  const TemporaryDirectory scratch;
  const mode_t before = ::umask(0);
  {
    const StateDirectory folder(scratch.path());
    folder.save("mesh", "secret");
  }
  ::umask(before);
  EXPECT_EQ(modeOf(scratch.path("mesh")), 0600u);
  EXPECT_EQ(modeOf(scratch.path("lock")), 0600u);
}

TEST(StateDirectory, SavesOverWhatACrashLeftUnfinished) {
  const TemporaryDirectory scratch;
  const StateDirectory folder(scratch.path());
  scratch.file("mesh", "old");
  scratch.file("mesh.new", "half of something that is longer than what comes now");
  folder.save("mesh", "new");
  EXPECT_EQ(folder.load("mesh"), "new");
  EXPECT_FALSE(std::filesystem::exists(scratch.path("mesh.new")));
}

TEST(StateDirectory, NeverLoadsWhatACrashLeftUnfinished) {
  const TemporaryDirectory scratch;
  const StateDirectory folder(scratch.path());
  scratch.file("mesh.new", "half");
  EXPECT_EQ(folder.load("mesh"), std::nullopt);
}

TEST(StateDirectory, AFileThatCannotBeReadIsNamed) {
  const TemporaryDirectory scratch;
  const StateDirectory folder(scratch.path());
  std::filesystem::create_directory(scratch.path("mesh"));
  EXPECT_EQ(failureOf([&] { folder.load("mesh"); }), scratch.path("mesh") + ": Is a directory");
}

TEST(StateDirectory, AFileThatCannotBeReplacedIsNamedAndStays) {
  const TemporaryDirectory scratch;
  const StateDirectory folder(scratch.path());
  std::filesystem::create_directory(scratch.path("mesh"));
  EXPECT_EQ(failureOf([&] { folder.save("mesh", "new"); }), scratch.path("mesh") + ": Is a directory");
  EXPECT_TRUE(std::filesystem::is_directory(scratch.path("mesh")));
  EXPECT_FALSE(std::filesystem::exists(scratch.path("mesh.new")));
}

TEST(StateDirectory, SetAsideReplacesNothing) {
  const TemporaryDirectory scratch;
  const StateDirectory folder(scratch.path());
  scratch.file("mesh", "third");
  scratch.file("mesh.damaged-1", "first");
  std::filesystem::create_directory(scratch.path("mesh.damaged-2"));
  EXPECT_EQ(folder.setAside("mesh"), scratch.path("mesh.damaged-3"));
  EXPECT_EQ(test::contentOf(scratch.path("mesh.damaged-1")), "first");
  EXPECT_TRUE(std::filesystem::is_directory(scratch.path("mesh.damaged-2")));
  EXPECT_EQ(test::contentOf(scratch.path("mesh.damaged-3")), "third");
  EXPECT_EQ(folder.load("mesh"), std::nullopt);
  scratch.file("mesh", "fourth");
  EXPECT_EQ(folder.setAside("mesh"), scratch.path("mesh.damaged-4"));
  EXPECT_EQ(test::contentOf(scratch.path("mesh.damaged-3")), "third");
}

TEST(StateDirectory, SetAsideOfNothingSaysSo) {
  const TemporaryDirectory scratch;
  const StateDirectory folder(scratch.path());
  EXPECT_EQ(failureOf([&] { folder.setAside("mesh"); }),
            scratch.path("mesh.damaged-1") + ": No such file or directory");
}

TEST(StateDirectory, AFileOfLimitedSizeKeepsItsOldContent) {
  const TemporaryDirectory scratch;
  const std::string told = inAProcess([&] {
    const StateDirectory folder(scratch.path());
    folder.save("mesh", "old");
    ::signal(SIGXFSZ, SIG_IGN);
    const rlimit limit{100'000, 100'000};
    ::setrlimit(RLIMIT_FSIZE, &limit);
    return failureOf([&] { folder.save("mesh", std::string(100'001, 'x')); });
  });
  EXPECT_EQ(told, scratch.path("mesh.new") + ": File too large");
  EXPECT_EQ(test::contentOf(scratch.path("mesh")), "old");
  EXPECT_FALSE(std::filesystem::exists(scratch.path("mesh.new")));
}

const std::string NO_MOUNTS = "this process may not mount file systems";

/// What `work` returns of a file system of 256 kB of its own at `path`, which nobody else sees.
std::string onASmallDisk(const std::string& path, const std::function<std::string()>& work) {
  return inAProcess([&]() -> std::string {
    if (::unshare(CLONE_NEWNS) != 0 || ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
        ::mount("none", path.c_str(), "tmpfs", 0, "size=256k") != 0) {
      return NO_MOUNTS;
    }
    return work();
  });
}

TEST(StateDirectory, AFullDiskKeepsTheOldContent) {
  const TemporaryDirectory scratch;
  const std::string told = onASmallDisk(scratch.path(), [&]() -> std::string {
    const StateDirectory folder(scratch.path());
    folder.save("mesh", "old");
    const std::string failure = failureOf([&] { folder.save("mesh", std::string(300'000, 'x')); });
    if (std::filesystem::exists(scratch.path("mesh.new"))) return "left mesh.new";
    if (folder.load("mesh") != "old") return "lost the old content";
    folder.save("mesh", std::string(100'000, 'y'));
    if (folder.load("mesh") != std::string(100'000, 'y')) return "does not go on";
    return failure;
  });
  if (told == NO_MOUNTS) GTEST_SKIP() << NO_MOUNTS;
  EXPECT_EQ(told, scratch.path("mesh.new") + ": No space left on device");
}

TEST(StateDirectory, AFolderThatBecomesReadOnlyKeepsTheOldContent) {
  const TemporaryDirectory scratch;
  const std::string told = onASmallDisk(scratch.path(), [&]() -> std::string {
    auto folder = std::make_unique<StateDirectory>(scratch.path());
    folder->save("mesh", "old");
    // A view of it for reading, laid over it: what is open stays as it is.
    const char* const path = scratch.path().c_str();
    if (::mount(path, path, nullptr, MS_BIND, nullptr) != 0 ||
        ::mount(nullptr, path, nullptr, MS_REMOUNT | MS_BIND | MS_RDONLY, nullptr) != 0) {
      return NO_MOUNTS;
    }
    const std::string saving = failureOf([&] { folder->save("mesh", "new"); });
    const std::string content = folder->load("mesh").value_or("nothing");
    const std::string settingAside = failureOf([&] { folder->setAside("mesh"); });
    if (folder->load("mesh") != "old") return "set aside what it cannot";
    folder.reset();
    const std::string taking = failureOf([&] { const StateDirectory again(scratch.path()); });
    return saving + "\n" + content + "\n" + settingAside + "\n" + taking;
  });
  if (told == NO_MOUNTS) GTEST_SKIP() << NO_MOUNTS;
  const std::string reason = ": Read-only file system";
  EXPECT_EQ(told, scratch.path("mesh.new") + reason + "\nold\n" + scratch.path("mesh.damaged-1") + reason + "\n" +
                      scratch.path("lock") + reason);
}

}  // namespace
}  // namespace qx::app
