// What a StateDirectory asks of the system, and what becomes of a file when the system refuses. This program has its
// own definitions of these functions, so it stands alone.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

#include "apps/vso/mesh/StateDirectory.h"
#include "support/NextFunction.h"
#include "support/TemporaryDirectory.h"

namespace qx::test {
namespace {

/// The calls of this program while they are watched.
struct Calls {
  static constexpr int NONE = -1;

  inline static bool watched = false;
  inline static std::vector<std::string> made;
  /// The number of the call that fails, from 0 on, and with what.
  inline static int failing = NONE;
  inline static int error = 0;
  /// At most so many bytes are read or written at once, and every other such call is interrupted.
  inline static bool piecemeal = false;
  inline static int transfers = 0;

  /// Takes a call down. True if it is to fail, with `errno` set.
  static bool refuses(const std::string& call) {
    if (!watched) return false;
    made.push_back(call);
    if (static_cast<int>(made.size()) - 1 != failing) return false;
    errno = error;
    return true;
  }
  static bool isInterrupted() {
    if (!watched || !piecemeal || ++transfers % 2 != 0) return false;
    errno = EINTR;
    return true;
  }
  static std::size_t sizeOf(std::size_t size) {
    constexpr std::size_t PIECE = 3;
    return watched && piecemeal ? std::min(size, PIECE) : size;
  }
};

std::string nameIn(const std::string& path) { return path.substr(path.rfind('/') + 1); }

std::string nameOf(int file) {
  char path[4096];
  const ssize_t size = ::readlink(("/proc/self/fd/" + std::to_string(file)).c_str(), path, sizeof path);
  return size < 0 ? "?" : nameIn(std::string(path, static_cast<std::size_t>(size)));
}

}  // namespace
}  // namespace qx::test

using qx::test::Calls;
using qx::test::nextFunction;

extern "C" {

int open(const char* path, int flags, ...) {
  std::va_list rest;
  va_start(rest, flags);
  const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(rest, mode_t) : 0;
  va_end(rest);
  if (Calls::watched && Calls::refuses("open " + qx::test::nameIn(path))) return -1;
  return nextFunction<int(const char*, int, ...)>("open")(path, flags, mode);
}

ssize_t read(int file, void* bytes, size_t size) {
  if (Calls::isInterrupted()) return -1;
  return nextFunction<ssize_t(int, void*, size_t)>("read")(file, bytes, Calls::sizeOf(size));
}

ssize_t write(int file, const void* bytes, size_t size) {
  if (Calls::watched && Calls::refuses("write " + qx::test::nameOf(file))) return -1;
  if (Calls::isInterrupted()) return -1;
  return nextFunction<ssize_t(int, const void*, size_t)>("write")(file, bytes, Calls::sizeOf(size));
}

int flock(int file, int operation) noexcept {
  if (Calls::watched && Calls::refuses("flock " + qx::test::nameOf(file))) return -1;
  return nextFunction<int(int, int)>("flock")(file, operation);
}

int fsync(int file) {
  if (Calls::watched && Calls::refuses("fsync " + qx::test::nameOf(file))) return -1;
  return nextFunction<int(int)>("fsync")(file);
}

int close(int file) {
  const bool isRefused = Calls::watched && Calls::refuses("close " + qx::test::nameOf(file));
  const int error = errno;
  const int result = nextFunction<int(int)>("close")(file);  // a close that fails closes all the same
  if (!isRefused) return result;
  errno = error;
  return -1;
}

int rename(const char* from, const char* to) noexcept {
  if (Calls::watched && Calls::refuses("rename " + qx::test::nameIn(from) + " " + qx::test::nameIn(to))) return -1;
  return nextFunction<int(const char*, const char*)>("rename")(from, to);
}

int link(const char* from, const char* to) noexcept {
  if (Calls::watched && Calls::refuses("link " + qx::test::nameIn(from) + " " + qx::test::nameIn(to))) return -1;
  return nextFunction<int(const char*, const char*)>("link")(from, to);
}

int unlink(const char* path) noexcept {
  if (Calls::watched && Calls::refuses("unlink " + qx::test::nameIn(path))) return -1;
  return nextFunction<int(const char*)>("unlink")(path);
}

}  // extern "C"

namespace qx::app {
namespace {

using testing::ElementsAre;
using testing::StartsWith;

class StateDirectoryCalls : public testing::Test {
 protected:
  ~StateDirectoryCalls() override { Calls::watched = false; }

  /// What `work` throws, empty if nothing, while its calls are watched and the one of this number fails.
  static std::string watch(const std::function<void()>& work, int failing = Calls::NONE, int error = 0) {
    Calls::made.clear();
    Calls::failing = failing;
    Calls::error = error;
    Calls::transfers = 0;
    std::string failure;
    Calls::watched = true;
    try {
      work();
    } catch (const std::runtime_error& thrown) {
      Calls::watched = false;
      failure = thrown.what();
    }
    Calls::watched = false;
    return failure;
  }
  /// The calls of these kinds.
  static std::vector<std::string> made(const std::vector<std::string>& kinds) {
    std::vector<std::string> chosen;
    for (const std::string& call : Calls::made) {
      const std::string kind = call.substr(0, call.find(' '));
      if (std::find(kinds.begin(), kinds.end(), kind) != kinds.end()) chosen.push_back(call);
    }
    return chosen;
  }
  std::string content() const { return test::contentOf(scratch_.path("state/mesh")); }
  bool isUnfinished() const { return std::filesystem::exists(scratch_.path("state/mesh.new")); }

  const test::TemporaryDirectory scratch_;
};

TEST_F(StateDirectoryCalls, AContentIsOnTheDiskBeforeItsNameAndItsNameBeforeTheEnd) {
  const StateDirectory folder(scratch_.path("state"));
  for (const char* const text : {"old", "new"}) {
    EXPECT_EQ(watch([&] { folder.save("mesh", text); }), "");
    EXPECT_THAT(made({"write", "fsync", "rename"}),
                ElementsAre("write mesh.new", "fsync mesh.new", "rename mesh.new mesh", "fsync state"));
  }
}

TEST_F(StateDirectoryCalls, ANewFolderIsOnTheDiskWithItsName) {
  const std::string above = scratch_.path().substr(scratch_.path().rfind('/') + 1);
  EXPECT_EQ(watch([&] { const StateDirectory folder(scratch_.path("state")); }), "");
  EXPECT_THAT(made({"fsync"}), ElementsAre("fsync " + above));
  EXPECT_EQ(watch([&] { const StateDirectory folder(scratch_.path("state")); }), "");
  EXPECT_THAT(made({"fsync"}), ElementsAre()) << "of a folder that was there";
}

TEST_F(StateDirectoryCalls, ALockThatIsRefusedIsAnothersOnlyIfTheSystemSaysSo) {
  const auto take = [&] { const StateDirectory folder(scratch_.path("state")); };
  take();  // so that the folder is there
  EXPECT_EQ(watch(take), "");
  const auto number =
      static_cast<int>(std::find(Calls::made.begin(), Calls::made.end(), "flock lock") - Calls::made.begin());
  EXPECT_EQ(watch(take, number, ENOLCK), scratch_.path("state/lock") + ": No locks available");
  EXPECT_EQ(watch(take, number, EWOULDBLOCK),
            scratch_.path("state") + ": in use by another process, see " + scratch_.path("state/vso.pid"));
}

TEST_F(StateDirectoryCalls, AProcessIdThatIsNotWrittenIsTold) {
  const auto take = [&] { const StateDirectory folder(scratch_.path("state")); };
  take();
  EXPECT_EQ(watch(take), "");
  const auto number =
      static_cast<int>(std::find(Calls::made.begin(), Calls::made.end(), "write vso.pid") - Calls::made.begin());
  ASSERT_LT(number, static_cast<int>(Calls::made.size()));
  EXPECT_EQ(watch(take, number, ENOSPC), scratch_.path("state/vso.pid") + ": cannot be written");
}

TEST_F(StateDirectoryCalls, AnOldNameGoesWhenTheNewOneIsOnTheDisk) {
  const StateDirectory folder(scratch_.path("state"));
  folder.save("mesh", "damaged");
  EXPECT_EQ(watch([&] { folder.setAside("mesh"); }), "");
  EXPECT_THAT(made({"link", "fsync", "unlink"}), ElementsAre("link mesh mesh.damaged-1", "fsync state", "unlink mesh"));
}

TEST_F(StateDirectoryCalls, AFileSystemWithoutLinksRenames) {
  const StateDirectory folder(scratch_.path("state"));
  for (const int error : {EPERM, EOPNOTSUPP}) {
    folder.save("mesh", "damaged");
    std::filesystem::remove(scratch_.path("state/mesh.damaged-1"));
    std::string aside;
    EXPECT_EQ(watch([&] { aside = folder.setAside("mesh"); }, 0, error), "");
    EXPECT_THAT(made({"link"}), ElementsAre("link mesh mesh.damaged-1"));
    EXPECT_EQ(aside, scratch_.path("state/mesh.damaged-1"));
    EXPECT_EQ(test::contentOf(aside), "damaged");
    EXPECT_FALSE(std::filesystem::exists(scratch_.path("state/mesh")));
  }
  // What was set aside before is not lost.
  folder.save("mesh", "damaged too");
  std::string aside;
  EXPECT_EQ(watch([&] { aside = folder.setAside("mesh"); }, 0, EPERM), "");
  EXPECT_EQ(aside, scratch_.path("state/mesh.damaged-2"));
  EXPECT_EQ(test::contentOf(scratch_.path("state/mesh.damaged-1")), "damaged");
}

TEST_F(StateDirectoryCalls, ASaveThatFailsAnywhereKeepsTheOldContent) {
  const StateDirectory folder(scratch_.path("state"));
  std::vector<std::string> failed;
  for (const int error : {ENOSPC, EIO, EDQUOT, EROFS}) {
    failed.clear();
    for (int call = 0;; ++call) {
      folder.save("mesh", "old");
      const std::string failure = watch([&] { folder.save("mesh", "new"); }, call, error);
      if (call >= static_cast<int>(Calls::made.size())) break;  // there are no more to fail
      const std::string refused = Calls::made[static_cast<std::size_t>(call)];
      EXPECT_FALSE(isUnfinished()) << refused;
      if (refused == "close state") {  // it has done its work
        EXPECT_EQ(failure, "");
        EXPECT_EQ(content(), "new");
        continue;
      }
      failed.push_back(refused);
      EXPECT_THAT(failure, StartsWith(scratch_.path("state"))) << refused;
      EXPECT_THAT(failure, testing::EndsWith(std::generic_category().message(error))) << refused;
      if (refused == "fsync state") {  // the renaming cannot be taken back
        EXPECT_EQ(failure, scratch_.path("state") + ": " + std::generic_category().message(error));
        EXPECT_EQ(content(), "new");
      } else {
        EXPECT_EQ(content(), "old") << refused;
      }
    }
    EXPECT_THAT(failed, testing::UnorderedElementsAre("open state", "open mesh.new", "write mesh.new", "fsync mesh.new",
                                                      "close mesh.new", "rename mesh.new mesh", "fsync state"));
  }
}

TEST_F(StateDirectoryCalls, AFailureNamesTheFileItIsOf) {
  const StateDirectory folder(scratch_.path("state"));
  EXPECT_EQ(watch([&] { folder.save("mesh", "new"); }), "");
  const std::vector<std::string> calls = Calls::made;
  const auto numberOf = [&calls](const std::string& call) {
    return static_cast<int>(std::find(calls.begin(), calls.end(), call) - calls.begin());
  };
  const auto save = [&] { folder.save("mesh", "newer"); };
  EXPECT_EQ(watch(save, numberOf("write mesh.new"), ENOSPC),
            scratch_.path("state/mesh.new") + ": No space left on device");
  EXPECT_EQ(watch(save, numberOf("fsync mesh.new"), EIO), scratch_.path("state/mesh.new") + ": Input/output error");
  EXPECT_EQ(watch(save, numberOf("rename mesh.new mesh"), EDQUOT),
            scratch_.path("state/mesh") + ": Disk quota exceeded");
}

TEST_F(StateDirectoryCalls, ASettingAsideThatFailsAnywhereLosesNothing) {
  const StateDirectory folder(scratch_.path("state"));
  folder.save("mesh", "damaged");
  int failures = 0;
  for (int call = 0;; ++call) {
    folder.save("mesh", "damaged");
    std::filesystem::remove(scratch_.path("state/mesh.damaged-1"));
    std::string aside;
    const std::string failure = watch([&] { aside = folder.setAside("mesh"); }, call, EIO);
    if (call >= static_cast<int>(Calls::made.size())) break;
    const std::string refused = Calls::made[static_cast<std::size_t>(call)];
    if (failure.empty()) {
      EXPECT_EQ(test::contentOf(aside), "damaged") << refused;
    } else {
      ++failures;
      EXPECT_THAT(failure, testing::EndsWith(": Input/output error")) << refused;
      EXPECT_EQ(content(), "damaged") << refused;
    }
  }
  EXPECT_EQ(failures, 4) << "linking, opening and syncing the folder, unlinking";
}

TEST_F(StateDirectoryCalls, InterruptionsAndShortTransfersDoNoHarm) {
  const StateDirectory folder(scratch_.path("state"));
  const std::string text = "a content of some pieces";
  Calls::piecemeal = true;
  std::string loaded;
  EXPECT_EQ(watch([&] {
              folder.save("mesh", text);
              loaded = folder.load("mesh").value();
            }),
            "");
  Calls::piecemeal = false;
  EXPECT_GT(Calls::transfers, 16) << "nothing was cut short";
  EXPECT_EQ(loaded, text);
  EXPECT_EQ(content(), text);
}

}  // namespace
}  // namespace qx::app
