// A file that is open for as long as this object lives.
#pragma once

#include <fcntl.h>
#include <unistd.h>

#include <string>

namespace qx::app {

/// Open for reading; `descriptor` is -1, with `errno` set, if that failed.
class OpenFile {
 public:
  explicit OpenFile(const std::string& name) : descriptor_(::open(name.c_str(), O_RDONLY | O_CLOEXEC)) {}
  ~OpenFile() {
    if (descriptor_ >= 0) ::close(descriptor_);
  }
  OpenFile(const OpenFile&) = delete;
  OpenFile& operator=(const OpenFile&) = delete;

  int descriptor() const { return descriptor_; }

 private:
  int descriptor_;
};

}  // namespace qx::app
