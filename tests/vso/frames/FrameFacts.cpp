#include "tests/vso/frames/FrameFacts.h"

#include <algorithm>
#include <set>

#include "support/Bytes.h"

namespace qx::test {

using nlohmann::json;

namespace {

const std::set<unsigned int> CLUSTERS{0x0003, 0x0006, 0x0007, 0x0008, 0x000A};

bool isString(unsigned char type) { return type == 0x41 || type == 0x42; }

}  // namespace

std::string kindOf(const RecordedFrame& frame) { return frame.facts.value("kind", HEADER_ONLY); }

bool isCompared(const RecordedFrame& frame) {
  return frame.layer == "zcl" && (frame.facts.at("header").at("frameType") == 0 || CLUSTERS.count(frame.cluster) != 0);
}

unsigned char frameControlOf(const json& header) {
  const unsigned int bits =
      header.at("frameType").get<unsigned int>() | (header.at("manufacturerSpecific") ? 0x04U : 0) |
      (header.at("serverToClient") ? 0x08U : 0) | (header.at("disableDefaultResponse") ? 0x10U : 0);
  return header.value("frameControl", static_cast<unsigned char>(bits));
}

std::vector<unsigned char> rawOf(const json& attribute) {
  std::vector<unsigned char> raw;
  if (attribute.contains("raw")) {
    const U255Buff<unsigned char> bytes = bytesOf(attribute.at("raw"));
    raw.assign(bytes.contents, bytes.contents + bytes.length_);
  } else if (attribute.at("value").is_number_integer()) {
    for (auto rest = attribute.at("value").get<unsigned long long>(); rest != 0; rest >>= 8) {
      raw.push_back(static_cast<unsigned char>(rest));
    }
  }
  return raw;
}

std::vector<unsigned char> readableOf(const json& attribute) {
  std::vector<unsigned char> bytes = rawOf(attribute);
  const unsigned char type = attribute.at("type");
  if (isString(type)) bytes.erase(bytes.begin());
  if (type != 0x41) return bytes;
  const std::string text = digitsOf(bytes.data(), bytes.size());
  return {text.begin(), text.end()};
}

std::string printedOf(const json& attribute) {
  const json& value = attribute.at("value");
  std::vector<unsigned char> raw = rawOf(attribute);
  switch (attribute.at("type").get<unsigned char>()) {
    case 0x08:
      return std::to_string(raw.at(0));
    case 0x10:
      return value == 0 ? "0" : "1";
    case 0x20:
    case 0x21:
    case 0x23:
    case 0x30:
    case 0x31:
      return std::to_string(value.get<long long>());
    case 0x41:
      return value.at("hex");
    case 0x42: {
      const std::vector<unsigned char> text = readableOf(attribute);
      return {text.begin(), std::find(text.begin(), text.end(), '\0')};
    }
    default:
      std::reverse(raw.begin(), raw.end());
      return digitsOf(raw.data(), raw.size());
  }
}

std::string digitsOf(const unsigned char* data, std::size_t count) {
  std::string text;
  hexify(data, static_cast<unsigned int>(count), text, false);
  return text;
}

AttributeRecordData::Data dataOf(const std::vector<unsigned char>& bytes) {
  AttributeRecordData::Data data{};
  std::copy_n(bytes.begin(), std::min(bytes.size(), data.size()), data.begin());
  return data;
}

}  // namespace qx::test
