#include "apps/vso/encode/argumentValues.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cstdio>
#include <string_view>
#include <system_error>

#include "apps/vso/encode/attributeRecords.h"
#include "qxshared/cleanString.h"
#include "vso/identifiers/hexify.h"
#include "vso/zcl/ZclMessage.h"
#include "vso/zcl/ZclStatus.h"

namespace qx::app {

namespace {

constexpr std::size_t ADDRESS_DIGITS = 16;

std::string bound(long long number) {
  constexpr long long LAST_IN_DECIMAL = 0xFFFF;
  if (number <= LAST_IN_DECIMAL) return std::to_string(number);
  char text[20];
  std::snprintf(text, sizeof text, "0x%llx", static_cast<unsigned long long>(number));
  return text;
}

std::string range(long long least, long long most) { return bound(least) + ".." + bound(most); }

[[noreturn]] void refuse(const std::string& text, const std::string& reason) {
  throw BadArgument(quoted(text) + " " + reason);
}

void checkDigits(const std::string& text) {
  const bool areDigits =
      std::all_of(text.begin(), text.end(), [](char c) { return std::isxdigit(static_cast<unsigned char>(c)) != 0; });
  if (!areDigits) refuse(text, "is not made of hexadecimal digits");
}

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
      return range(least, most);
    case ArgumentKind::STATUS:
      return "STATUS";
    case ArgumentKind::ADDRESS:
      return "ADDRESS";
    case ArgumentKind::TEXT:
      return "TEXT";
    case ArgumentKind::OCTETS:
      return "HEX";
    case ArgumentKind::NUMBERS:
      return range(least, most) + ",...";
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

std::string quoted(const std::string& text) {
  constexpr std::size_t LONGEST = 40;
  return '"' + cleanString(text.substr(0, LONGEST)) + (text.size() > LONGEST ? "...\"" : "\"");
}

long long parseNumber(const std::string& text, long long least, long long most) {
  std::string_view digits = text;
  const bool isNegative = !digits.empty() && digits[0] == '-';
  if (isNegative) digits.remove_prefix(1);
  int base = 10;
  if (digits.size() > 1 && digits[0] == '0') {
    const bool isHexadecimal = digits[1] == 'x' || digits[1] == 'X';
    base = isHexadecimal ? 16 : 8;
    digits.remove_prefix(isHexadecimal ? 2 : 1);
  }
  // A second sign, which from_chars would take, is none of C's.
  const bool isDigit = !digits.empty() && digits[0] != '-';
  long long number = 0;
  const char* const end = digits.data() + digits.size();
  const std::from_chars_result result = std::from_chars(digits.data(), end, number, base);
  if (!isDigit || result.ptr != end || result.ec == std::errc::invalid_argument) {
    refuse(text, base == 8 ? "is no number: a leading 0 stands for octal" : "is no number");
  }
  if (isNegative) number = -number;
  if (result.ec == std::errc::result_out_of_range || number < least || number > most) {
    refuse(text, "is out of range, " + range(least, most));
  }
  return number;
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

Euid parseAddress(const std::string& text) {
  checkDigits(text);
  if (text.size() != ADDRESS_DIGITS) refuse(text, "has " + std::to_string(text.size()) + " digits, an address has 16");
  Euid address;
  address = text;
  return address;
}

std::vector<unsigned char> parseOctets(const std::string& text, long long longest) {
  checkDigits(text);
  if (text.size() % 2 != 0) refuse(text, "has an odd number of digits, " + std::to_string(text.size()));
  std::vector<unsigned char> octets;
  for (std::size_t at = 0; at < text.size(); at += 2) {
    octets.push_back(
        detail::byteOfDigits(static_cast<unsigned char>(text[at]), static_cast<unsigned char>(text[at + 1])));
  }
  if (static_cast<long long>(octets.size()) > longest) {
    refuse(text, "has " + std::to_string(octets.size()) + " bytes, and there is room for " + std::to_string(longest));
  }
  return octets;
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
