#include "tests/vso/frames/FramesFile.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <stdexcept>

#include "support/Bytes.h"

namespace qx::test {

namespace {

RecordedFrame frameOf(const nlohmann::json& line) {
  RecordedFrame frame;
  frame.id = line.at("id");
  frame.layer = line.at("layer");
  frame.cluster = static_cast<unsigned int>(std::stoul(line.at("cluster").get<std::string>(), nullptr, 16));
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
