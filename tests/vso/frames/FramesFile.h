// Files of frames that were recorded from devices or taken from the tests of others.
#pragma once

#include <cstddef>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "vso/identifiers/U255Buff.h"

namespace qx::test {

/// One line of a file, a JSON object.
struct RecordedFrame {
  std::string id;
  /// "zcl" or "zdo".
  std::string layer;
  unsigned short profile = 0;
  unsigned short cluster = 0;
  /// The frame from its first byte on, in hexadecimal digits, and as bytes.
  std::string hex;
  U255Buff<unsigned char> bytes;
  /// What an independent decoder states of the frame; null in a file without facts.
  nlohmann::json facts;
};

/// The path of `file` in the folder that the environment variable VSO_FRAMES_DIR names. None if it is not set or there
/// is no such file, which is what a test is skipped for.
std::optional<std::string> pathOfFrames(const std::string& file);

/// All frames of a file, in its order. Throws on a line that is no frame.
std::vector<RecordedFrame> readFrames(const std::string& path);

/// How many frames a file has, by its lines alone.
std::size_t countFrames(const std::string& path);

}  // namespace qx::test
