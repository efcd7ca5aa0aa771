// The folder in which a mesh is kept between two runs of a server.
#pragma once

#include <optional>
#include <string>

#include "vso/runtime/PidDropper.h"
#include "vso/runtime/Xfile.h"

namespace qx::app {

/// Belongs to one process at a time, whose id stands in its file "vso.pid". Failures throw FileError.
class StateDirectory {
 public:
  /// Makes the folder if there is none, and takes it. Throws if it cannot be written, or another process has it.
  explicit StateDirectory(const std::string& path);

  StateDirectory(const StateDirectory&) = delete;
  StateDirectory& operator=(const StateDirectory&) = delete;

  const std::string& path() const { return path_; }
  std::string fileOf(const std::string& name) const { return path_ + "/" + name; }

  /// The content of a file; nothing if there is none.
  std::optional<std::string> load(const std::string& name) const;
  /// Replaces a file, or makes it. Whatever happens meanwhile, the file has the old content or the new, whole; once
  /// this has returned, it has the new one, also after a loss of power. If it fails, it has the old one, unless the
  /// text names the folder alone: then it has the new one, which a loss of power may undo.
  void save(const std::string& name, const std::string& content) const;
  /// Gives a file another name, one that nothing has yet, and returns its path.
  std::string setAside(const std::string& name) const;

 private:
  std::string path_;
  Xfile lock_;
  std::optional<PidDropper> pid_;
};

/// Empty if a folder can have this path, otherwise why it cannot: a check of a command line's option.
std::string faultOfStatePath(const std::string& text);

}  // namespace qx::app
