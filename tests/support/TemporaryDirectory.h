// A folder of its own for a test that needs files.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <system_error>

namespace qx::test {

/// A fresh, empty folder, removed with all that is in it.
class TemporaryDirectory {
 public:
  TemporaryDirectory() : path_((std::filesystem::temp_directory_path() / "vso-test-XXXXXX").string()) {
    if (::mkdtemp(path_.data()) == nullptr) throw std::runtime_error("No temporary folder at " + path_);
  }
  ~TemporaryDirectory() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }

  TemporaryDirectory(const TemporaryDirectory&) = delete;
  TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;

  const std::string& path() const { return path_; }
  /// The path of an entry, whether it exists or not.
  std::string path(const std::string& entry) const { return path_ + "/" + entry; }

  /// Writes a file with this content and gives its path.
  std::string file(const std::string& entry, const std::string& content) const {
    std::ofstream(path(entry), std::ios::binary) << content;
    return path(entry);
  }

 private:
  std::string path_;
};

/// What a file holds; a text that says so if there is none.
inline std::string contentOf(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) return "(no file " + path + ")";
  return {std::istreambuf_iterator<char>(file), {}};
}

}  // namespace qx::test
