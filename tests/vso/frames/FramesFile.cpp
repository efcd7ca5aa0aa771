#include "tests/vso/frames/FramesFile.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <stdexcept>

#include "support/Bytes.h"

namespace qx::test {

namespace {

/// An id in hexadecimal digits.
unsigned short idOf(const std::string& text) { return static_cast<unsigned short>(std::stoul(text, nullptr, 16)); }

RecordedFrame frameOf(const nlohmann::json& line) {
  RecordedFrame frame;
  frame.id = line.at("id");
  frame.layer = line.at("layer");
  frame.profile = idOf(line.at("profile"));
  frame.cluster = idOf(line.at("cluster"));
  frame.hex = line.at("hex");
  frame.bytes = bytesOf(frame.hex);
  if (frame.bytes.length_ != line.at("length")) throw std::runtime_error(frame.id + ": the length is not that of hex");
  frame.facts = line.value("decoded", nlohmann::json());
  return frame;
}

}  // namespace

std::optional<std::string> pathOfFrames(const std::string& file) {
  const char* folder = std::getenv("VSO_FRAMES_DIR");
  if (folder == nullptr) return std::nullopt;
  std::string path = std::string(folder) + '/' + file;
  if (!std::ifstream(path)) return std::nullopt;
  return path;
}

std::vector<RecordedFrame> readFrames(const std::string& path) {
  std::vector<RecordedFrame> frames;
  std::ifstream in(path);
  for (std::string line; std::getline(in, line);) frames.push_back(frameOf(nlohmann::json::parse(line)));
  return frames;
}

std::size_t countFrames(const std::string& path) {
  std::ifstream in(path);
  return static_cast<std::size_t>(
      std::count(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>(), '\n'));
}

}  // namespace qx::test
