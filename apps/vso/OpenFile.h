// A file that is open for as long as this object lives.
#pragma once

#include <fcntl.h>

#include <stdexcept>
#include <string>

namespace qx::app {

/// What is wrong with a file, in one line: its path and the reason.
class FileError : public std::runtime_error {
 public:
  FileError(const std::string& path, const std::string& reason);
  /// The system's reason, an `errno`.
  FileError(const std::string& path, int error);
};

/// Where the system refuses something, FileError is thrown.
class OpenFile {
 public:
  explicit OpenFile(const std::string& path, int flags = O_RDONLY, mode_t mode = 0666);
  ~OpenFile();
  OpenFile(const OpenFile&) = delete;
  OpenFile& operator=(const OpenFile&) = delete;

  int descriptor() const { return descriptor_; }

  /// From where the file is at to its end.
  std::string readAll() const;
  void writeAll(const std::string& content) const;
  /// Has what was written brought to the disk.
  void sync() const;
  /// Some file systems tell of a failed write only here.
  void close();

 private:
  std::string path_;
  int descriptor_;
};

}  // namespace qx::app
