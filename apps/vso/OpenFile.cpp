#include "apps/vso/OpenFile.h"

#include <unistd.h>

#include <array>
#include <cerrno>
#include <system_error>

namespace qx::app {

FileError::FileError(const std::string& path, const std::string& reason) : std::runtime_error(path + ": " + reason) {}

FileError::FileError(const std::string& path, int error) : FileError(path, std::generic_category().message(error)) {}

OpenFile::OpenFile(const std::string& path, int flags, mode_t mode)
    : path_(path), descriptor_(::open(path.c_str(), flags | O_CLOEXEC, mode)) {
  if (descriptor_ < 0) throw FileError(path_, errno);
}

OpenFile::~OpenFile() {
  if (descriptor_ >= 0) ::close(descriptor_);
}

std::string OpenFile::readAll() const {
  std::string content;
  std::array<char, 65'536> piece;
  for (;;) {
    const ssize_t size = ::read(descriptor_, piece.data(), piece.size());
    if (size == 0) return content;
    if (size < 0 && errno != EINTR) throw FileError(path_, errno);
    if (size > 0) content.append(piece.data(), static_cast<std::size_t>(size));
  }
}

void OpenFile::writeAll(const std::string& content) const {
  for (std::size_t done = 0; done < content.size();) {
    const ssize_t size = ::write(descriptor_, content.data() + done, content.size() - done);
    if (size < 0 && errno != EINTR) throw FileError(path_, errno);
    if (size > 0) done += static_cast<std::size_t>(size);
  }
}

void OpenFile::sync() const {
  if (::fsync(descriptor_) != 0) throw FileError(path_, errno);
}

void OpenFile::close() {
  const int descriptor = descriptor_;
  descriptor_ = -1;
  if (::close(descriptor) != 0) throw FileError(path_, errno);
}

}  // namespace qx::app
