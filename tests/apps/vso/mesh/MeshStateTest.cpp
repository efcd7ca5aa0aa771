#include "apps/vso/mesh/MeshState.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <ctime>
#include <filesystem>
#include <random>
#include <stdexcept>
#include <string>
#include <thread>

#include "apps/vso/mesh/MeshServer.h"
#include "apps/vso/mesh/savedMesh.h"
#include "mesh/announcements.h"
#include "support/TemporaryDirectory.h"
#include "support/sanitized.h"

namespace qx::app {
namespace {

using test::announcementOf;
using test::frameOf;
using test::TemporaryDirectory;

const std::string LAMP = "0011223344556677";

std::string euidOf(int number) {
  char text[17];
  std::snprintf(text, sizeof text, "%016x", static_cast<unsigned int>(number));
  return text;
}

/// Fills an empty mesh with so many nodes.
void fill(MeshServer& mesh, int nodes, unsigned char bootCount) {
  for (int number = 1; number <= nodes; ++number) mesh.take(frameOf(announcementOf(euidOf(number), bootCount)));
}

std::string bytesOf(const MeshServer& mesh) { return bytesOfMesh(mesh.nodes(), mesh.zaps()); }

TEST(MeshState, RestoresWhatItSaved) {
  const TemporaryDirectory scratch;
  std::string saved;
  {
    MeshServer mesh(0);
    MeshState state(scratch.path(), mesh);
    EXPECT_EQ(state.file(), scratch.path("mesh.state"));
    EXPECT_TRUE(mesh.nodes().empty());
    fill(mesh, 3, 9);
    mesh.take(frameOf("now " + LAMP + " 0 0x0000 0x8032 01 00 00 00 00"));  // the coordinator has no routes
    ASSERT_EQ(mesh.zaps().size(), 1u);
    state.save();
    saved = bytesOf(mesh);
  }
  EXPECT_EQ(test::contentOf(scratch.path("mesh.state")), saved);
  MeshServer mesh(0);
  testing::internal::CaptureStderr();
  MeshState state(scratch.path(), mesh);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
  ASSERT_EQ(mesh.nodes().size(), 3u);
  EXPECT_EQ(mesh.nodes().begin()->second.bootCount(), 9u);
  EXPECT_EQ(mesh.zaps().size(), 1u);
  EXPECT_EQ(bytesOf(mesh), saved);
}

TEST(MeshState, SavesWhatHasChangedOnce) {
  const TemporaryDirectory scratch;
  const auto isThere = [&] { return std::filesystem::exists(scratch.path("mesh.state")); };
  // Once the file is gone, whatever is saved is seen.
  const auto remove = [&] { std::filesystem::remove(scratch.path("mesh.state")); };
  {
    MeshServer mesh(0);
    MeshState state(scratch.path(), mesh);
    state.saveChanges();
    EXPECT_TRUE(isThere()) << "nothing was saved before";
    remove();
    state.saveChanges();
    EXPECT_FALSE(isThere());
    fill(mesh, 3, 9);
    state.saveChanges();
    EXPECT_TRUE(isThere());
    remove();
    state.saveChanges();
    EXPECT_FALSE(isThere());
    mesh.node(mesh.nodes().begin()->first)->label("lamp");
    state.saveChanges();
    EXPECT_TRUE(isThere());
    remove();
    state.save();
    EXPECT_TRUE(isThere()) << "asked for";
  }
  MeshServer mesh(0);
  MeshState state(scratch.path(), mesh);
  remove();
  state.saveChanges();
  EXPECT_FALSE(isThere()) << "as it was restored";
}

TEST(MeshState, SavesAgainWhatItCouldNotSave) {
  const TemporaryDirectory scratch;
  MeshServer mesh(0);
  MeshState state(scratch.path(), mesh);
  std::filesystem::create_directory(scratch.path("mesh.state"));
  EXPECT_THROW(state.saveChanges(), std::runtime_error);
  std::filesystem::remove(scratch.path("mesh.state"));
  state.saveChanges();
  EXPECT_EQ(test::contentOf(scratch.path("mesh.state")), bytesOf(mesh));
}

TEST(MeshState, AnEmptyMeshIsOneToo) {
  const TemporaryDirectory scratch;
  MeshServer mesh(0);
  { MeshState(scratch.path(), mesh).save(); }
  testing::internal::CaptureStderr();
  MeshState state(scratch.path(), mesh);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
  EXPECT_TRUE(mesh.nodes().empty());
}

struct Damage {
  const char* name;
  std::string (*done)(std::string bytes);
};

class MeshStateDamage : public testing::TestWithParam<Damage> {};

TEST_P(MeshStateDamage, IsKeptAsideAndSaidAndTheMeshBeginsAnew) {
  const TemporaryDirectory scratch;
  MeshServer earlier(0);
  fill(earlier, 3, 9);
  const std::string damaged = GetParam().done(bytesOf(earlier));
  scratch.file("mesh.state", damaged);
  scratch.file("mesh.state.damaged-1", "of another day");
  const std::string aside = scratch.path("mesh.state.damaged-2");

  MeshServer mesh(0);
  testing::internal::CaptureStderr();
  MeshState state(scratch.path(), mesh);
  const std::string said = testing::internal::GetCapturedStderr();
  EXPECT_THAT(said, testing::StartsWith("vso: " + scratch.path("mesh.state") + ": it"));
  EXPECT_THAT(said, testing::EndsWith("; it is kept as " + aside + ", and the mesh begins anew\n"));
  EXPECT_EQ(std::count(said.begin(), said.end(), '\n'), 1);
  EXPECT_TRUE(mesh.nodes().empty());
  EXPECT_FALSE(std::filesystem::exists(scratch.path("mesh.state")));
  EXPECT_EQ(test::contentOf(aside), damaged);

  fill(mesh, 1, 1);
  state.save();
  EXPECT_EQ(test::contentOf(scratch.path("mesh.state")), bytesOf(mesh));
  EXPECT_EQ(test::contentOf(aside), damaged);
  EXPECT_EQ(test::contentOf(scratch.path("mesh.state.damaged-1")), "of another day");
}

INSTANTIATE_TEST_SUITE_P(
    Kinds, MeshStateDamage,
    testing::Values(Damage{"NoByte", [](std::string) { return std::string(); }},
                    Damage{"Half", [](std::string bytes) { return bytes.substr(0, bytes.size() / 2); }},
                    Damage{"WithoutTheLastByte",
                           [](std::string bytes) {
                             bytes.pop_back();
                             return bytes;
                           }},
                    Damage{"OneBitInTheMiddle",
                           [](std::string bytes) {
                             bytes[bytes.size() / 2] ^= 1;
                             return bytes;
                           }},
                    Damage{"Zeros", [](std::string bytes) { return std::string(bytes.size(), '\0'); }},
                    Damage{"Text", [](std::string) { return std::string("hello\n"); }}),
    [](const auto& row) { return row.param.name; });

TEST(MeshState, AMeshInALaterFormIsRefusedAndStays) {
  const TemporaryDirectory scratch;
  MeshServer mesh(0);
  fill(mesh, 2, 9);
  std::string bytes = bytesOf(mesh);
  ASSERT_EQ(bytes.substr(0, 2), "\x08\x01");
  bytes[1] = 2;
  scratch.file("mesh.state", bytes);
  MeshServer later(0);
  try {
    const MeshState state(scratch.path(), later);
    ADD_FAILURE() << "it was taken";
  } catch (const std::runtime_error& error) {
    EXPECT_EQ(error.what(), scratch.path("mesh.state") + ": it has an unknown form, 2");
  }
  EXPECT_EQ(test::contentOf(scratch.path("mesh.state")), bytes);
  EXPECT_FALSE(std::filesystem::exists(scratch.path("mesh.state.damaged-1")));
  EXPECT_TRUE(later.nodes().empty());
}

TEST(MeshState, KeepsTheLastTimeThatAFrameMayHave) {
  MeshServer mesh(0);
  mesh.take(frameOf(announcementOf(LAMP, 1, "2147483647")));
  const SavedMesh saved = meshOfBytes(bytesOf(mesh));
  ASSERT_EQ(saved.nodes.size(), 1u);
  EXPECT_EQ(saved.nodes.begin()->second.lastContact(), 2147483647);
}

TEST(MeshState, EveryBeginningOfAFileIsDamaged) {
  MeshServer mesh(0);
  fill(mesh, 2, 9);
  const std::string bytes = bytesOf(mesh);
  for (std::size_t size = 0; size < bytes.size(); ++size) {
    EXPECT_THROW(meshOfBytes(bytes.substr(0, size)), BadMesh) << size;
  }
  EXPECT_EQ(meshOfBytes(bytes).nodes.size(), 2u);
}

constexpr int KILLS = test::IS_SANITIZED ? 100 : 1000;

/// Saves two meshes in turn, the large one first, for as long as it lives, and writes a byte to `told` when that begins
/// and after each save.
[[noreturn]] void saveForEver(const std::string& folder, const MeshServer& small, const MeshServer& large, int told) {
  MeshServer mesh(0);
  MeshState state(folder, mesh);
  const auto tell = [told] {
    if (::write(told, "", 1) != 1) ::_exit(1);
  };
  tell();
  for (;;) {
    for (const MeshServer* const next : {&large, &small}) {
      mesh.restore(next->nodes(), {});
      state.save();
      tell();
    }
  }
}

/// A process that saves for ever, until it is killed.
class SavingProcess {
 public:
  SavingProcess(const std::string& folder, const MeshServer& small, const MeshServer& large) {
    int ends[2];
    if (::pipe(ends) != 0) throw std::runtime_error("no pipe");
    process_ = ::fork();
    if (process_ == 0) {
      ::close(ends[0]);
      try {
        saveForEver(folder, small, large, ends[1]);
      } catch (...) {
        ::_exit(1);
      }
    }
    ::close(ends[1]);
    heard_ = ends[0];
    if (process_ < 0 || !hear()) kill(), throw std::runtime_error("the process could not begin to save");
  }
  ~SavingProcess() { kill(); }
  SavingProcess(const SavingProcess&) = delete;
  SavingProcess& operator=(const SavingProcess&) = delete;

  /// Waits for so many saves.
  void waitFor(unsigned int saves) {
    for (; saves > 0; --saves) {
      if (!hear()) throw std::runtime_error("the process ended of its own accord");
    }
  }

  /// Kills it in whatever it does; false if it had ended of its own accord.
  bool kill() {
    if (process_ <= 0) return false;
    ::kill(process_, SIGKILL);
    int status = 0;
    ::waitpid(process_, &status, 0);
    ::close(heard_);
    process_ = 0;
    return WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL;
  }

 private:
  bool hear() {
    char byte = 0;
    return ::read(heard_, &byte, 1) == 1;
  }

  pid_t process_ = 0;
  int heard_ = -1;
};

TEST(MeshState, AKilledSaveLeavesOneStateOrTheOtherWhole) {
  const TemporaryDirectory scratch;
  const std::string unfinished = scratch.path("mesh.state.new");
  MeshServer small(0);
  fill(small, 1, 1);
  MeshServer large(0);
  fill(large, 60, 2);
  const std::string smallBytes = bytesOf(small);
  const std::string largeBytes = bytesOf(large);
  ASSERT_GT(largeBytes.size(), 10 * smallBytes.size());

  scratch.file("mesh.state", smallBytes);

  // How long one save takes on this machine, as loaded as it is: the kills come within two of them.
  std::chrono::microseconds oneSave{};
  {
    constexpr unsigned int SAVES = 8;
    SavingProcess process(scratch.path(), small, large);
    const auto start = std::chrono::steady_clock::now();
    process.waitFor(SAVES);
    oneSave = std::chrono::duration_cast<std::chrono::microseconds>(std::chrono::steady_clock::now() - start) / SAVES;
  }
  std::mt19937 chance(20'260'314);
  int interrupted = 0;
  int foundSmall = 0;
  for (int i = 0; i < KILLS; ++i) {
    SavingProcess process(scratch.path(), small, large);
    // After none or one of them the large mesh is likely to be found, after two the small one.
    process.waitFor(chance() % 3);
    std::this_thread::sleep_for(std::chrono::microseconds(chance() % (2 * oneSave.count() + 1)));
    ASSERT_TRUE(process.kill()) << "the process ended of its own accord";

    interrupted += std::filesystem::exists(unfinished) ? 1 : 0;
    const std::string found = test::contentOf(scratch.path("mesh.state"));
    ASSERT_TRUE(found == smallBytes || found == largeBytes) << found.size() << " bytes after " << i << " kills";
    foundSmall += found == smallBytes ? 1 : 0;
    MeshServer mesh(0);
    testing::internal::CaptureStderr();
    {
      MeshState state(scratch.path(), mesh);  // which takes the folder from the dead
    }
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    ASSERT_EQ(bytesOf(mesh), found);
  }
  // The test is worth something only if it caught saves halfway, and both states.
  EXPECT_GT(interrupted, 0);
  EXPECT_GT(foundSmall, 0);
  EXPECT_LT(foundSmall, KILLS);
  RecordProperty("interrupted", interrupted);
}

}  // namespace
}  // namespace qx::app
