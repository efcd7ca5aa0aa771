// A process id file.
#pragma once

#include <string>

namespace qx {

/// Writes the process id, in decimal and with a newline, into a file for as long as it lives. A file that cannot be
/// written is not reported: look for the file where it matters.
class PidDropper {
 public:
  /// Replaces what is at `path`. If `remove` is true, the destructor removes the file.
  PidDropper(const std::string& path, bool remove);
  ~PidDropper();

  PidDropper(const PidDropper&) = delete;
  PidDropper& operator=(const PidDropper&) = delete;

 private:
  std::string path_;
  bool remove_;
};

}  // namespace qx
