#include "vso/runtime/Xfile.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/select.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "support/Bytes.h"
#include "support/TemporaryDirectory.h"
#include "tests/vso/runtime/FileChecks.h"

namespace qx {
namespace {

namespace fs = std::filesystem;
using std::chrono::milliseconds;
using std::chrono::steady_clock;
using test::bufferOf;
using test::bytesOf;
using test::contentOf;
using test::hex;
using test::openDescriptors;
using test::slotOf;
using test::TemporaryDirectory;
using test::thrownBy;
using Buffer = U255Buff<unsigned char>;

constexpr unsigned int READ = 0x0001;
constexpr unsigned int WRITE = 0x0002;

static_assert(std::has_virtual_destructor_v<Xfile>);
static_assert(!std::is_copy_constructible_v<Xfile>);

/// A buffer of which every byte can be told from what is read into it.
Buffer marked() {
  Buffer buffer(0xA5);
  buffer.length_ = 7;
  return buffer;
}

bool isAsMarked(const Buffer& buffer) {
  const Buffer expected = marked();
  return buffer.length_ == expected.length_ &&
         std::memcmp(buffer.contents, expected.contents, sizeof buffer.contents) == 0;
}

std::string textOf(const Buffer& buffer) {
  return {reinterpret_cast<const char*>(buffer.contents), buffer.storedLength()};
}

/// Text in which no two neighbouring pieces of 255 bytes are alike.
std::string textOfLength(std::size_t length) {
  std::string text;
  while (text.size() < length) text += static_cast<char>('a' + text.size() % 23);
  return text;
}

/// A pipe with a name. An Xfile that opens it for both directions never waits for another end.
std::string fifoIn(const TemporaryDirectory& folder) {
  std::string path = folder.path("fifo");
  if (::mkfifo(path.c_str(), 0600) != 0) throw std::runtime_error("No pipe at " + path);
  return path;
}

/// Lowers or raises the soft limit of a resource for as long as it lives.
class SoftLimit {
 public:
  SoftLimit(decltype(RLIMIT_FSIZE) resource, rlim_t value) : resource_(resource) {
    ::getrlimit(resource_, &before_);
    isSet_ = before_.rlim_max >= value;
    const rlimit limit{value, before_.rlim_max};
    if (isSet_) isSet_ = ::setrlimit(resource_, &limit) == 0;
  }
  ~SoftLimit() { ::setrlimit(resource_, &before_); }
  SoftLimit(const SoftLimit&) = delete;
  SoftLimit& operator=(const SoftLimit&) = delete;

  bool isSet() const { return isSet_; }

 private:
  decltype(RLIMIT_FSIZE) resource_;
  rlimit before_{};
  bool isSet_ = false;
};

TEST(Xfile, ConstructorStoresAndOpensNothing) {
  const TemporaryDirectory folder;
  const std::ptrdiff_t before = openDescriptors();
  const Xfile file(folder.file("record", "content"), READ);
  EXPECT_EQ(openDescriptors(), before);
  EXPECT_EQ(file.name(), folder.path("record"));
  EXPECT_EQ(file.handle(), -1);
  EXPECT_FALSE(file.isOpen());
}

TEST(Xfile, EmptyNameIsRefused) {
  EXPECT_EQ(thrownBy([] { Xfile("", READ); }), "Can't access an Xfile without a name.");
}

TEST(Xfile, OptionBitsBecomeTheFlagsOfOpen) {
  struct Row {
    unsigned int options;
    int flags;
  };
  const Row rows[] = {
      {0x0000, O_RDONLY},
      {0x0001, O_RDONLY},
      {0x0002, O_WRONLY},
      {0x0003, O_RDWR},
      {0x1000, O_RDONLY | O_NOCTTY},
      {0x1001, O_RDONLY | O_NOCTTY},
      {0x1002, O_WRONLY | O_NOCTTY},
      {4099, O_RDWR | O_NOCTTY},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(Xfile::transmorgrifyOpts(row.options), row.flags) << row.options;
    for (unsigned int bit = 1; bit != 0; bit <<= 1) {
      if ((bit & 0x1003) != 0) continue;
      EXPECT_EQ(Xfile::transmorgrifyOpts(row.options | bit), row.flags) << row.options << " with " << bit;
    }
    EXPECT_EQ(Xfile::transmorgrifyOpts(row.options | ~0x1003U), row.flags) << row.options;
  }
}

TEST(Xfile, OpenUsesTheOptions) {
  const TemporaryDirectory folder;
  folder.file("record", "content");
  const std::pair<unsigned int, int> rows[] = {
      {0, O_RDONLY}, {READ, O_RDONLY}, {WRITE, O_WRONLY}, {READ | WRITE, O_RDWR}, {4099, O_RDWR}};
  for (const auto& [options, access] : rows) {
    Xfile file(folder.path("record"), options);
    file.open();
    EXPECT_TRUE(file.isOpen());
    EXPECT_GE(file.handle(), 0);
    EXPECT_EQ(::fcntl(file.handle(), F_GETFL) & O_ACCMODE, access) << options;
  }
}

TEST(Xfile, OpenNeverTruncates) {
  const TemporaryDirectory folder;
  folder.file("record", "content");
  for (const unsigned int options : {WRITE, READ | WRITE, ~0U, WRITE | unsigned{O_TRUNC} | unsigned{O_CREAT}}) {
    Xfile file(folder.path("record"), options);
    file.open();
    file.close();
    EXPECT_EQ(contentOf(folder.path("record")), "content") << options;
  }
}

TEST(Xfile, OpenNeverCreates) {
  const TemporaryDirectory folder;
  for (const unsigned int options : {READ, WRITE, READ | WRITE, ~0U, WRITE | unsigned{O_CREAT}}) {
    Xfile file(folder.path("none"), options);
    EXPECT_THROW(file.open(), std::runtime_error) << options;
  }
  EXPECT_TRUE(fs::is_empty(folder.path()));
}

TEST(Xfile, OpenOfAMissingFileWaitsThenThrows) {
  const TemporaryDirectory folder;
  Xfile file(folder.path("none"), READ);
  const steady_clock::time_point begin = steady_clock::now();
  EXPECT_EQ(thrownBy([&] { file.open(); }), "Unable to open Xfile: " + folder.path("none"));
  EXPECT_GE(steady_clock::now() - begin, milliseconds(50));
  EXPECT_EQ(file.handle(), -1);
  EXPECT_FALSE(file.isOpen());
}

TEST(Xfile, OpenAfterAFailureTakesTheFileThatHasCome) {
  const TemporaryDirectory folder;
  Xfile file(folder.path("record"), READ);
  EXPECT_THROW(file.open(), std::runtime_error);
  folder.file("record", "content");
  file.open();
  EXPECT_TRUE(file.isOpen());
}

TEST(Xfile, OpenOnAnOpenObjectLosesTheOlderDescriptor) {
  const std::ptrdiff_t before = openDescriptors();
  int lost = -1;
  {
    Xfile file("/dev/null", READ);
    file.open();
    lost = file.handle();
    file.open();
    EXPECT_NE(file.handle(), lost);
    EXPECT_EQ(openDescriptors(), before + 2);
  }
  EXPECT_EQ(openDescriptors(), before + 1);
  EXPECT_EQ(::close(lost), 0);
}

TEST(Xfile, FailedOpenOnAnOpenObjectLeavesItClosed) {
  const TemporaryDirectory folder;
  Xfile file(folder.file("record", ""), READ);
  file.open();
  const int lost = file.handle();
  fs::remove(folder.path("record"));
  EXPECT_THROW(file.open(), std::runtime_error);
  EXPECT_EQ(file.handle(), -1);
  EXPECT_EQ(::close(lost), 0);
}

TEST(Xfile, CloseGivesTheDescriptorBack) {
  const std::ptrdiff_t before = openDescriptors();
  Xfile file("/dev/null", READ);
  file.open();
  EXPECT_EQ(openDescriptors(), before + 1);
  file.close();
  EXPECT_EQ(openDescriptors(), before);
  EXPECT_EQ(file.handle(), -1);
  EXPECT_FALSE(file.isOpen());
}

TEST(Xfile, CloseOfAClosedFileDoesNothing) {
  Xfile file("/dev/null", READ);
  EXPECT_NO_THROW(file.close());
  file.open();
  const int handle = file.handle();
  file.close();
  // The number is another's by the second time.
  ASSERT_EQ(::open("/dev/null", O_RDONLY), handle);
  EXPECT_NO_THROW(file.close());
  EXPECT_EQ(::close(handle), 0);
}

TEST(Xfile, OpensAgainAfterClose) {
  const TemporaryDirectory folder;
  Xfile file(folder.file("record", "content"), READ);
  for (int round = 0; round < 2; ++round) {
    file.open();
    Buffer buffer;
    EXPECT_EQ(file.read(buffer), 7);
    EXPECT_EQ(textOf(buffer), "content");
    file.close();
  }
}

TEST(Xfile, CloseThatFailsThrowsAndKeepsTheHandle) {
  Xfile file("/dev/null", READ);
  file.open();
  const int handle = file.handle();
  ASSERT_EQ(::close(handle), 0);
  EXPECT_EQ(thrownBy([&] { file.close(); }), "Could not clean up Xfile: /dev/null");
  EXPECT_EQ(file.handle(), handle);
  EXPECT_TRUE(file.isOpen());
  // So that the destructor finds something to close.
  ASSERT_EQ(::open("/dev/null", O_RDONLY), handle);
  EXPECT_NO_THROW(file.close());
}

TEST(Xfile, DestructorClosesTheDescriptor) {
  const std::ptrdiff_t before = openDescriptors();
  {
    Xfile file("/dev/null", READ);
    file.open();
    EXPECT_EQ(openDescriptors(), before + 1);
  }
  EXPECT_EQ(openDescriptors(), before);
}

TEST(XfileDeathTest, DestructorThatCannotCloseEndsTheProcess) {
  EXPECT_EXIT(
      {
        Xfile file("/dev/null", READ);
        file.open();
        ::close(file.handle());
      },
      ::testing::KilledBySignal(SIGABRT), "");
}

TEST(Xfile, ReadGivesTheBytesThatAreThere) {
  const TemporaryDirectory folder;
  Xfile file(fifoIn(folder), READ | WRITE);
  file.open();
  ASSERT_EQ(::write(file.handle(), "\x00\xFF\x0A", 3), 3);
  Buffer buffer = marked();
  EXPECT_EQ(file.read(buffer), 3);
  EXPECT_EQ(hex(buffer), "00 ff 0a");
  EXPECT_EQ(buffer.contents[3], 0xA5);
}

TEST(Xfile, ReadTakesUpTo255BytesAtOnce) {
  for (const std::size_t size : {1U, 254U, 255U, 256U, 300U, 510U}) {
    const TemporaryDirectory folder;
    Xfile file(fifoIn(folder), READ | WRITE);
    file.open();
    const std::string sent = textOfLength(size);
    ASSERT_EQ(::write(file.handle(), sent.data(), size), static_cast<ssize_t>(size));
    for (std::size_t at = 0; at < size; at += 255) {
      const std::string piece = sent.substr(at, 255);
      Buffer buffer = marked();
      EXPECT_EQ(file.read(buffer), static_cast<int>(piece.size()));
      EXPECT_EQ(buffer.length_, piece.size());
      EXPECT_EQ(textOf(buffer), piece);
    }
  }
}

TEST(Xfile, ReadWithoutDataGivesZeroAfterAQuarterOfASecond) {
  const TemporaryDirectory folder;
  Xfile file(fifoIn(folder), READ | WRITE);
  file.open();
  Buffer buffer = marked();
  const steady_clock::time_point begin = steady_clock::now();
  EXPECT_EQ(file.read(buffer), 0);
  EXPECT_GE(steady_clock::now() - begin, milliseconds(240));
  EXPECT_TRUE(isAsMarked(buffer));
}

TEST(Xfile, ReadAtTheEndGivesZeroAndABufferOfLengthZero) {
  const TemporaryDirectory folder;
  Xfile file(folder.file("record", "ab"), READ);
  file.open();
  Buffer buffer = marked();
  EXPECT_EQ(file.read(buffer), 2);
  EXPECT_EQ(textOf(buffer), "ab");
  EXPECT_EQ(file.read(buffer), 0);
  EXPECT_EQ(buffer.length_, 0U);
}

TEST(Xfile, ReadOfAClosedFileGivesZero) {
  const TemporaryDirectory folder;
  Xfile file(folder.file("record", "content"), READ);
  Buffer buffer = marked();
  EXPECT_EQ(file.read(buffer), 0);
  file.open();
  file.close();
  EXPECT_EQ(file.read(buffer), 0);
  EXPECT_TRUE(isAsMarked(buffer));
}

TEST(Xfile, ReadGivesZeroWhereWaitingFails) {
  Xfile file("/dev/null", READ);
  file.open();
  const int handle = file.handle();
  ASSERT_EQ(::close(handle), 0);
  Buffer buffer = marked();
  EXPECT_EQ(file.read(buffer), 0);
  EXPECT_TRUE(isAsMarked(buffer));
  ASSERT_EQ(::open("/dev/null", O_RDONLY), handle);
}

TEST(Xfile, ReadThatFailsGivesANegativeNumberAndLeavesTheBuffer) {
  const TemporaryDirectory folder;
  struct Row {
    std::string path;
    unsigned int options;
    int reason;
  };
  const Row rows[] = {{folder.path(), READ, EISDIR}, {folder.file("record", "content"), WRITE, EBADF}};
  for (const Row& row : rows) {
    Xfile file(row.path, row.options);
    file.open();
    Buffer buffer = marked();
    errno = 0;
    EXPECT_LT(file.read(buffer), 0) << row.path;
    EXPECT_EQ(errno, row.reason) << row.path;
    EXPECT_TRUE(isAsMarked(buffer)) << row.path;
  }
}

TEST(Xfile, ReadOfADescriptorThatNoSetHoldsGivesZero) {
  const SoftLimit limit(RLIMIT_NOFILE, FD_SETSIZE + 16);
  if (!limit.isSet()) GTEST_SKIP() << "This machine allows no descriptor above " << FD_SETSIZE;
  const TemporaryDirectory folder;
  Xfile last(folder.file("record", "content"), READ);
  Xfile beyond(folder.path("record"), READ);
  std::vector<int> filler;
  for (int handle = 0; handle < FD_SETSIZE - 2; filler.push_back(handle)) {
    handle = ::open("/dev/null", O_RDONLY);
    ASSERT_GE(handle, 0);
  }
  last.open();
  beyond.open();
  for (const int handle : filler) ::close(handle);
  EXPECT_EQ(last.handle(), FD_SETSIZE - 1);
  EXPECT_EQ(beyond.handle(), FD_SETSIZE);

  Buffer buffer = marked();
  EXPECT_EQ(beyond.read(buffer), 0);
  EXPECT_TRUE(isAsMarked(buffer));
  EXPECT_EQ(last.read(buffer), 7);
  EXPECT_EQ(textOf(buffer), "content");
}

TEST(Xfile, WritePutsTheElementsInUse) {
  const TemporaryDirectory folder;
  Xfile file(folder.file("record", ""), WRITE);
  file.open();
  const std::string whole = textOfLength(255);
  EXPECT_EQ(file.write(bufferOf("ab")), 2);
  EXPECT_EQ(file.write(Buffer()), 0);
  EXPECT_EQ(file.write(bufferOf(whole)), 255);
  EXPECT_EQ(contentOf(folder.path("record")), "ab" + whole);
}

TEST(Xfile, WriteOfBinaryBytesChangesNone) {
  const TemporaryDirectory folder;
  Xfile file(folder.file("record", ""), WRITE);
  file.open();
  EXPECT_EQ(file.write(bytesOf("00 0D 0A FF 00")), 5);
  EXPECT_EQ(contentOf(folder.path("record")), std::string("\x00\x0D\x0A\xFF\x00", 5));
}

TEST(Xfile, WriteOfMoreThanIsStoredWritesTheStorageAndThrows) {
  const TemporaryDirectory folder;
  Xfile file(folder.file("record", ""), WRITE);
  file.open();
  Buffer buffer = bufferOf(textOfLength(255));
  buffer.length_ = 300;
  EXPECT_EQ(thrownBy([&] { file.write(buffer); }),
            "Could not write the full buffer to Xfile: " + folder.path("record"));
  EXPECT_EQ(contentOf(folder.path("record")), textOfLength(255));
}

TEST(Xfile, WriteThatTheSystemCutsShortThrows) {
  const TemporaryDirectory folder;
  Xfile file(folder.file("record", ""), WRITE);
  file.open();
  std::string thrown;
  {
    const SoftLimit limit(RLIMIT_FSIZE, 10);
    ASSERT_TRUE(limit.isSet());
    thrown = thrownBy([&] { file.write(bufferOf("0123456789abcdef")); });
  }
  EXPECT_EQ(thrown, "Could not write the full buffer to Xfile: " + folder.path("record"));
  EXPECT_EQ(contentOf(folder.path("record")), "0123456789");
  EXPECT_TRUE(file.isOpen());
}

TEST(Xfile, WriteThatTheSystemRefusesThrows) {
  const TemporaryDirectory folder;
  const std::string fifo = fifoIn(folder);
  Xfile full(fifo, READ | WRITE);
  full.open();
  ASSERT_EQ(::fcntl(full.handle(), F_SETFL, O_RDWR | O_NONBLOCK), 0);
  char byte = 0;
  while (::write(full.handle(), &byte, 1) == 1) ++byte;
  EXPECT_EQ(thrownBy([&] { full.write(bufferOf("a")); }), "Could not write the full buffer to Xfile: " + fifo);

  Xfile device("/dev/full", WRITE);
  device.open();
  EXPECT_EQ(thrownBy([&] { device.write(bufferOf("a")); }), "Could not write the full buffer to Xfile: /dev/full");

  Xfile readOnly(folder.file("record", "content"), READ);
  readOnly.open();
  EXPECT_EQ(thrownBy([&] { readOnly.write(bufferOf("a")); }),
            "Could not write the full buffer to Xfile: " + folder.path("record"));
  EXPECT_EQ(contentOf(folder.path("record")), "content");

  Xfile closed("/dev/null", WRITE);
  EXPECT_EQ(thrownBy([&] { closed.write(bufferOf("a")); }), "Could not write the full buffer to Xfile: /dev/null");
}

/// Another process that holds the lock of a file until it is told to close it. It ends with this object at the latest.
class LockHolder {
 public:
  explicit LockHolder(const std::string& path) {
    int ends[2];
    if (::socketpair(AF_UNIX, SOCK_STREAM, 0, ends) != 0) throw std::runtime_error("No line to another process");
    child_ = ::fork();
    if (child_ == 0) {
      ::close(ends[0]);
      ::_exit(holdsLock(path, ends[1]) ? 0 : 1);
    }
    ::close(ends[1]);
    line_ = ends[0];
    const timeval patience{30, 0};
    ::setsockopt(line_, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
  }
  LockHolder(const LockHolder&) = delete;
  LockHolder& operator=(const LockHolder&) = delete;
  ~LockHolder() {
    ::close(line_);
    if (child_ > 0) ::waitpid(child_, nullptr, 0);
  }

  /// True once the other process has done its next step; false if it does not.
  bool hasReported() const {
    char done = 0;
    return ::recv(line_, &done, 1, 0) == 1;
  }
  /// False if the other process is no more.
  bool goesOn() const { return ::send(line_, "", 1, MSG_NOSIGNAL) == 1; }

 private:
  static bool holdsLock(const std::string& path, int line) {
    try {
      Xfile file(path, READ);
      char order = 0;
      file.open();
      if (file.lock() != 0 || ::send(line, "", 1, MSG_NOSIGNAL) != 1 || ::recv(line, &order, 1, 0) != 1) return false;
      file.close();
      // Stays alive, so that it is the closing that has freed the lock.
      return ::send(line, "", 1, MSG_NOSIGNAL) == 1 && ::recv(line, &order, 1, 0) == 0;
    } catch (...) {
      return false;
    }
  }

  int line_ = -1;
  pid_t child_ = -1;
};

TEST(Xfile, LockOfAnotherProcessIsNotWaitedFor) {
  const TemporaryDirectory folder;
  Xfile file(folder.file("record", ""), READ);
  file.open();
  const LockHolder other(folder.path("record"));
  ASSERT_TRUE(other.hasReported());
  errno = 0;
  EXPECT_EQ(file.lock(), -1);
  EXPECT_EQ(errno, EWOULDBLOCK);
  ASSERT_TRUE(other.goesOn());
  ASSERT_TRUE(other.hasReported());
  EXPECT_EQ(file.lock(), 0);
}

TEST(Xfile, LockIsExclusive) {
  const TemporaryDirectory folder;
  Xfile file(folder.file("record", ""), READ);
  file.open();
  EXPECT_EQ(file.lock(), 0);
  EXPECT_EQ(file.lock(), 0) << "one's own lock is no obstacle";
  const int other = ::open(folder.path("record").c_str(), O_RDONLY);
  ASSERT_GE(other, 0);
  errno = 0;
  EXPECT_EQ(::flock(other, LOCK_SH | LOCK_NB), -1);
  EXPECT_EQ(errno, EWOULDBLOCK);
  file.close();
  EXPECT_EQ(::flock(other, LOCK_SH | LOCK_NB), 0);
  file.open();
  EXPECT_EQ(file.lock(), -1) << "a shared lock is an obstacle too";
  ::close(other);
}

TEST(Xfile, LockAndFsyncOfAClosedFileGiveTheSystemsAnswer) {
  Xfile file("/dev/null", READ);
  errno = 0;
  EXPECT_EQ(file.lock(), -1);
  EXPECT_EQ(errno, EBADF);
  errno = 0;
  EXPECT_EQ(file.fsync(), -1);
  EXPECT_EQ(errno, EBADF);
}

TEST(Xfile, FsyncGivesTheSystemsAnswer) {
  const TemporaryDirectory folder;
  Xfile record(folder.file("record", "content"), WRITE);
  record.open();
  EXPECT_EQ(record.fsync(), 0);
  Xfile fifo(fifoIn(folder), READ | WRITE);
  fifo.open();
  errno = 0;
  EXPECT_EQ(fifo.fsync(), -1);
  EXPECT_EQ(errno, EINVAL);
}

/// Overrides every operation, and tells which one a call through the base reaches.
class Recorder : public Xfile {
 public:
  explicit Recorder(std::string& calls) : Xfile("recorder", READ), calls_(calls) {}
  ~Recorder() override { calls_ += "~ "; }
  void open() override { calls_ += "open "; }
  int lock() override { return called("lock", 1); }
  int fsync() override { return called("fsync", 2); }
  void close() override { calls_ += "close "; }
  int read(Buffer&) const override { return called("read", 3); }
  int write(const Buffer&) override { return called("write", 4); }
  int handle() const override { return called("handle", 5); }
  const std::string& name() const override { return calls_; }
  bool isOpen() const override { return called("isOpen", 1) == 1; }

 private:
  int called(const std::string& operation, int result) const {
    calls_ += operation + " ";
    return result;
  }
  std::string& calls_;
};

TEST(Xfile, EveryOperationCanBeOverridden) {
  std::string calls;
  {
    const std::unique_ptr<Xfile> file = std::make_unique<Recorder>(calls);
    Buffer buffer;
    file->open();
    EXPECT_EQ(file->lock(), 1);
    EXPECT_EQ(file->fsync(), 2);
    file->close();
    EXPECT_EQ(file->read(buffer), 3);
    EXPECT_EQ(file->write(buffer), 4);
    EXPECT_EQ(file->handle(), 5);
    EXPECT_TRUE(file->isOpen());
    EXPECT_EQ(&file->name(), &calls);
  }
  EXPECT_EQ(calls, "open lock fsync close read write handle isOpen ~ ");
}

TEST(Xfile, OperationsKeepTheirSlots) {
  // The destructor takes the first two.
  const std::vector<std::uintptr_t> slots = {slotOf(&Xfile::open),   slotOf(&Xfile::lock), slotOf(&Xfile::fsync),
                                             slotOf(&Xfile::close),  slotOf(&Xfile::read), slotOf(&Xfile::write),
                                             slotOf(&Xfile::handle), slotOf(&Xfile::name), slotOf(&Xfile::isOpen)};
  EXPECT_EQ(slots, (std::vector<std::uintptr_t>{2, 3, 4, 5, 6, 7, 8, 9, 10}));
}

}  // namespace
}  // namespace qx
