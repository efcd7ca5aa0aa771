#include "apps/vso/encode/argumentValues.h"

#include <cctype>
#include <string_view>

#include "apps/vso/encode/attributeRecords.h"
#include "vso/zcl/ZclMessage.h"
#include "vso/zcl/ZclStatus.h"

namespace qx::app {

namespace {

/// "ZCL_NOT_FOUND" as "not-found".
std::string nameOf(ZclStatus status) {
  constexpr std::size_t PREFIX = std::string_view("ZCL_").size();
  std::string name = std::string(ZclMessage::zclStatusToStr(status)).substr(PREFIX);
  for (char& c : name) c = c == '_' ? '-' : static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return name;
}

}  // namespace

std::string Argument::form() const {
  switch (kind) {
    case ArgumentKind::NUMBER:
      return rangeOf(least, most);
    case ArgumentKind::STATUS:
      return "STATUS";
    case ArgumentKind::ADDRESS:
      return "ADDRESS";
    case ArgumentKind::TEXT:
      return "TEXT";
    case ArgumentKind::OCTETS:
      return "HEX";
    case ArgumentKind::NUMBERS:
      return rangeOf(least, most) + ",...";
    case ArgumentKind::ATTRIBUTE_ID:
      return "ID";
    case ArgumentKind::ATTRIBUTE_VALUE:
      return "ID:TYPE:VALUE";
    case ArgumentKind::ATTRIBUTE_ANSWER:
      return "ID:TYPE:VALUE|ID:STATUS";
    case ArgumentKind::ATTRIBUTE_STATUS:
      return "ID:STATUS";
    case ArgumentKind::SCENE_EXTENSION:
      return "CLUSTER:VALUE";
    case ArgumentKind::FLAG:
      return "";
  }
  return "";
}

std::vector<long long> parseNumbers(const std::string& text, long long least, long long most) {
  std::vector<long long> numbers;
  if (text.empty()) return numbers;
  std::size_t begin = 0;
  for (std::size_t end = 0; end != std::string::npos; begin = end + 1) {
    end = text.find(',', begin);
    numbers.push_back(parseNumber(text.substr(begin, end - begin), least, most));
  }
  return numbers;
}

unsigned char parseStatus(const std::string& text) {
  constexpr int CODES = 256;
  if (text.empty() || std::isdigit(static_cast<unsigned char>(text[0])) != 0) {
    return static_cast<unsigned char>(parseNumber(text, 0, CODES - 1));
  }
  const std::string unnamed = nameOf(static_cast<ZclStatus>(CODES - 1));
  for (int code = 0; code < CODES && text != unnamed; ++code) {
    if (nameOf(static_cast<ZclStatus>(code)) == text) return static_cast<unsigned char>(code);
  }
  refuse(text, "is neither a number nor the name of a status");
}

SceneExtension parseSceneExtension(const std::string& text) {
  const std::size_t colon = text.find(':');
  if (colon == std::string::npos) refuse(text, "is not of the form CLUSTER:VALUE");
  SceneExtension extension;
  // The highest number marks a slot that is not in use.
  extension.clusterId = static_cast<unsigned short>(parseNumber(text.substr(0, colon), 0, SceneExtension::EMPTY - 1));
  extension.length = sizeof extension.value;
  extension.value = static_cast<unsigned char>(parseNumber(text.substr(colon + 1), 0, 0xFF));
  return extension;
}

void checkArgument(const Argument& argument, const std::string& text) {
  switch (argument.kind) {
    case ArgumentKind::NUMBER:
      parseNumber(text, argument.least, argument.most);
      break;
    case ArgumentKind::STATUS:
      parseStatus(text);
      break;
    case ArgumentKind::ADDRESS:
      parseAddress(text);
      break;
    case ArgumentKind::TEXT:
      if (static_cast<long long>(text.size()) > argument.most) {
        refuse(text, "has " + std::to_string(text.size()) + " characters, and there is room for " +
                         std::to_string(argument.most));
      }
      break;
    case ArgumentKind::OCTETS:
      parseOctets(text, argument.most);
      break;
    case ArgumentKind::NUMBERS:
      parseNumbers(text, argument.least, argument.most);
      break;
    case ArgumentKind::ATTRIBUTE_ID:
      parseAttributeId(text);
      break;
    case ArgumentKind::ATTRIBUTE_VALUE:
      parseAttributeValue(text);
      break;
    case ArgumentKind::ATTRIBUTE_ANSWER:
      parseAttributeAnswer(text);
      break;
    case ArgumentKind::ATTRIBUTE_STATUS:
      parseAttributeStatus(text);
      break;
    case ArgumentKind::SCENE_EXTENSION:
      parseSceneExtension(text);
      break;
    case ArgumentKind::FLAG:
      break;
  }
}

}  // namespace qx::app
