#include "apps/vso/mesh/StateDirectory.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

#include "apps/vso/OpenFile.h"

namespace qx::app {

namespace {

constexpr mode_t PRIVATE = 0600;  // keys may stand in these files

// What is saved in a folder is on the disk only when the folder itself is.
OpenFile folderAt(const std::string& path) { return OpenFile(path, O_RDONLY | O_DIRECTORY); }

/// The path of a file that processes lock, which is made if there is none.
std::string lockFileIn(const std::string& folder) {
  constexpr mode_t PRIVATE_FOLDER = 0700;
  if (::mkdir(folder.c_str(), PRIVATE_FOLDER) == 0) {
    folderAt(folder + "/..").sync();
  } else if (errno != EEXIST) {
    throw FileError(folder, errno);
  }
  std::string path = folder + "/lock";
  const OpenFile made(path, O_RDWR | O_CREAT, PRIVATE);
  return path;
}

}  // namespace

StateDirectory::StateDirectory(const std::string& path)
    : path_(path), lock_(lockFileIn(path), Xfile::READ | Xfile::WRITE) {
  lock_.open();
  if (lock_.lock() != 0) {
    if (errno != EWOULDBLOCK) throw FileError(lock_.name(), errno);
    throw FileError(path, "in use by another process, see " + fileOf("vso.pid"));
  }
  pid_.emplace(fileOf("vso.pid"), true);
  // Of what it could not write it says nothing.
  if (load("vso.pid").value_or("").empty()) throw FileError(fileOf("vso.pid"), "cannot be written");
}

std::optional<std::string> StateDirectory::load(const std::string& name) const {
  if (::access(fileOf(name).c_str(), F_OK) != 0 && errno == ENOENT) return std::nullopt;
  return OpenFile(fileOf(name)).readAll();
}

void StateDirectory::save(const std::string& name, const std::string& content) const {
  const OpenFile folder = folderAt(path_);  // before the renaming, which should be the last to fail
  const std::string unfinished = fileOf(name) + ".new";
  try {
    OpenFile file(unfinished, O_WRONLY | O_CREAT | O_TRUNC, PRIVATE);
    file.writeAll(content);
    file.sync();
    file.close();
    if (::rename(unfinished.c_str(), fileOf(name).c_str()) != 0) throw FileError(fileOf(name), errno);
  } catch (...) {
    ::unlink(unfinished.c_str());
    throw;
  }
  // The new name is on the disk when its folder is.
  folder.sync();
}

std::string StateDirectory::setAside(const std::string& name) const {
  const std::string file = fileOf(name);
  for (int number = 1;; ++number) {
    std::string aside = file + ".damaged-" + std::to_string(number);
    // A link, unlike a renaming, replaces nothing.
    if (::link(file.c_str(), aside.c_str()) == 0) {
      // The old name goes when the new one is on the disk.
      folderAt(path_).sync();
      if (::unlink(file.c_str()) != 0) throw FileError(file, errno);
      return aside;
    }
    const bool hasNoLinks = errno == EPERM || errno == EOPNOTSUPP;
    if (hasNoLinks && ::renameat2(AT_FDCWD, file.c_str(), AT_FDCWD, aside.c_str(), RENAME_NOREPLACE) == 0) return aside;
    if (errno != EEXIST) throw FileError(aside, errno);
  }
}

std::string faultOfStatePath(const std::string& text) { return text.empty() ? "an empty path" : std::string(); }

}  // namespace qx::app
