#include "apps/vso/mesh/StateDirectory.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <stdexcept>
#include <system_error>

namespace qx::app {

namespace {

[[noreturn]] void fail(const std::string& path, int error) {
  throw std::runtime_error(path + ": " + std::generic_category().message(error));
}

/// Closes its descriptor in the end.
class Descriptor {
 public:
  Descriptor(const std::string& path, int flags) : path_(path) {
    constexpr mode_t PRIVATE = 0600;  // keys may stand in these files
    handle_ = ::open(path.c_str(), flags | O_CLOEXEC, PRIVATE);
    if (handle_ < 0) fail(path, errno);
  }
  ~Descriptor() {
    if (handle_ >= 0) ::close(handle_);
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;

  std::string readAll() const {
    std::string content;
    std::array<char, 65'536> piece;
    for (;;) {
      const ssize_t size = ::read(handle_, piece.data(), piece.size());
      if (size == 0) return content;
      if (size < 0 && errno != EINTR) fail(path_, errno);
      if (size > 0) content.append(piece.data(), static_cast<std::size_t>(size));
    }
  }
  void writeAll(const std::string& content) const {
    for (std::size_t done = 0; done < content.size();) {
      const ssize_t size = ::write(handle_, content.data() + done, content.size() - done);
      if (size < 0 && errno != EINTR) fail(path_, errno);
      if (size > 0) done += static_cast<std::size_t>(size);
    }
  }
  void sync() const {
    if (::fsync(handle_) != 0) fail(path_, errno);
  }
  /// Some file systems tell of a failed write only here.
  void close() {
    const int handle = handle_;
    handle_ = -1;
    if (::close(handle) != 0) fail(path_, errno);
  }

 private:
  std::string path_;
  int handle_ = -1;
};

/// The path of a file that processes lock, which is made if there is none.
std::string lockFileIn(const std::string& folder) {
  constexpr mode_t PRIVATE = 0700;
  if (::mkdir(folder.c_str(), PRIVATE) == 0) {
    // What is saved in a folder is on the disk only when the folder itself is.
    Descriptor(folder + "/..", O_RDONLY | O_DIRECTORY).sync();
  } else if (errno != EEXIST) {
    fail(folder, errno);
  }
  std::string path = folder + "/lock";
  const Descriptor made(path, O_RDWR | O_CREAT);
  return path;
}

}  // namespace

StateDirectory::StateDirectory(const std::string& path)
    : path_(path), lock_(lockFileIn(path), Xfile::READ | Xfile::WRITE) {
  lock_.open();
  if (lock_.lock() != 0) throw std::runtime_error(path + ": in use by another process, see " + fileOf("vso.pid"));
  pid_.emplace(fileOf("vso.pid"), true);
}

std::optional<std::string> StateDirectory::load(const std::string& name) const {
  if (::access(fileOf(name).c_str(), F_OK) != 0 && errno == ENOENT) return std::nullopt;
  return contentOf(fileOf(name));
}

void StateDirectory::save(const std::string& name, const std::string& content) const {
  const Descriptor folder(path_, O_RDONLY | O_DIRECTORY);  // before the renaming, which should be the last to fail
  const std::string unfinished = fileOf(name) + ".new";
  try {
    Descriptor file(unfinished, O_WRONLY | O_CREAT | O_TRUNC);
    file.writeAll(content);
    file.sync();
    file.close();
    if (::rename(unfinished.c_str(), fileOf(name).c_str()) != 0) fail(fileOf(name), errno);
  } catch (...) {
    ::unlink(unfinished.c_str());
    throw;
  }
  // The new name is on the disk when its folder is.
  folder.sync();
}

std::string StateDirectory::setAside(const std::string& name) const {
  for (int number = 1;; ++number) {
    std::string aside = fileOf(name) + ".damaged-" + std::to_string(number);
    // A link, unlike a renaming, replaces nothing.
    if (::link(fileOf(name).c_str(), aside.c_str()) == 0) {
      // The old name goes when the new one is on the disk.
      Descriptor(path_, O_RDONLY | O_DIRECTORY).sync();
      if (::unlink(fileOf(name).c_str()) != 0) fail(fileOf(name), errno);
      return aside;
    }
    if (errno != EEXIST) fail(aside, errno);
  }
}

std::string contentOf(const std::string& path) { return Descriptor(path, O_RDONLY).readAll(); }

}  // namespace qx::app
