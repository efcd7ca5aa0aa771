#include "apps/vso/decode/FrameLine.h"

#include <charconv>
#include <nlohmann/json.hpp>
#include <string_view>

#include "apps/vso/textValues.h"
#include "vso/identifiers/hexify.h"

namespace qx::app {

namespace {

constexpr std::string_view BLANKS = " \t\r";
constexpr std::string_view HEX_DIGITS = "0123456789abcdefABCDEF";
constexpr unsigned long long LARGEST_ID = 0xFFFF;

/// Why a part of the line cannot be read, empty if it can.
using Reason = std::string;

std::string_view withoutOuterBlanks(std::string_view text) {
  const std::size_t first = text.find_first_not_of(BLANKS);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(BLANKS) - first + 1);
}

/// Takes the first word off `text`, which is left without blanks in front.
std::string_view takeWord(std::string_view& text) {
  const std::string_view word = text.substr(0, text.find_first_of(BLANKS));
  text = withoutOuterBlanks(text.substr(word.size()));
  return word;
}

Reason outOfRange(const char* name, std::string_view number) {
  return name + (": " + inQuotes(std::string(number))) + " is out of range, 0 to 0xFFFF";
}

Reason idFromText(const char* name, std::string_view text, unsigned short& id) {
  std::string_view digits = text;
  int base = 10;
  if (text.size() > 1 && text[0] == '0') {
    const bool hexadecimal = text[1] == 'x' || text[1] == 'X';
    base = hexadecimal ? 16 : 8;
    digits.remove_prefix(hexadecimal ? 2 : 1);
  }
  unsigned long long value = 0;
  const char* const end = digits.data() + digits.size();
  const std::from_chars_result result = std::from_chars(digits.data(), end, value, base);
  if (result.ptr != end || result.ec == std::errc::invalid_argument) {
    const char* const hint = base == 8 ? ": a leading 0 stands for octal" : "";
    return name + (": " + inQuotes(std::string(text))) + " is no number" + hint;
  }
  if (result.ec == std::errc::result_out_of_range || value > LARGEST_ID) return outOfRange(name, text);
  id = static_cast<unsigned short>(value);
  return {};
}

Reason bytesFromText(std::string_view text, U255Buff<unsigned char>& bytes) {
  std::string digits;
  digits.reserve(text.size());
  for (const char c : text) {
    if (BLANKS.find(c) != std::string_view::npos) continue;
    if (HEX_DIGITS.find(c) == std::string_view::npos)
      return "hex: " + inQuotes(std::string(1, c)) + " is no hexadecimal digit";
    digits += c;
  }
  if (digits.size() % 2 != 0) return "hex: an odd number of digits, " + std::to_string(digits.size());
  const std::size_t count = digits.size() / 2;
  if (count > U255Buff<unsigned char>::CAPACITY) {
    return "hex: " + std::to_string(count) + " bytes, and a frame has at most 255";
  }
  deHexify(digits, bytes.contents, U255Buff<unsigned char>::CAPACITY);
  bytes.length_ = static_cast<unsigned int>(count);
  return {};
}

FrameLine parseWords(std::string_view text) {
  const std::string_view profile = takeWord(text);
  const std::string_view cluster = takeWord(text);
  ReceivedFrame frame;
  Reason reason = idFromText("profile", profile, frame.profile);
  if (reason.empty()) {
    reason = cluster.empty() ? "cluster: missing" : idFromText("cluster", cluster, frame.cluster);
  }
  if (reason.empty()) reason = text.empty() ? "hex: missing" : bytesFromText(text, frame.bytes);
  if (reason.empty()) return frame;
  return UnreadableLine{reason, text.empty() ? std::nullopt : std::optional<std::string>(text)};
}

Reason idFromJson(const char* name, const nlohmann::json& object, unsigned short& id) {
  const auto member = object.find(name);
  if (member == object.end()) return name + std::string(": missing");
  if (member->is_string()) return idFromText(name, member->get_ref<const std::string&>(), id);
  if (!member->is_number()) return name + std::string(": neither a number nor a string");
  if (member->is_number_float()) return name + (": " + member->dump()) + " is no whole number, 0 to 0xFFFF";
  // A negative number is stored as a signed one, all others as unsigned.
  if (!member->is_number_unsigned() || member->get<unsigned long long>() > LARGEST_ID) {
    return outOfRange(name, member->dump());
  }
  id = member->get<unsigned short>();
  return {};
}

Reason nodeFromJson(const nlohmann::json& object, std::optional<Euid>& node) {
  constexpr std::size_t DIGITS = 16;
  const auto member = object.find("euid");
  if (member == object.end()) return {};
  if (!member->is_string()) return "euid: not a string";
  const auto& digits = member->get_ref<const std::string&>();
  if (digits.size() != DIGITS || digits.find_first_not_of(HEX_DIGITS) != std::string::npos) {
    return "euid: " + inQuotes(digits) + " is not 16 hexadecimal digits";
  }
  node.emplace() = digits;
  return {};
}

FrameLine parseJson(std::string_view text) {
  nlohmann::json object;
  try {
    object = nlohmann::json::parse(text);
  } catch (const nlohmann::json::parse_error& error) {
    return UnreadableLine{"not JSON from byte " + std::to_string(error.byte) + " of the object on", std::nullopt};
  } catch (const nlohmann::json::out_of_range&) {
    return UnreadableLine{"not JSON: a number that no double holds", std::nullopt};
  }
  std::optional<std::string> hex;
  const auto member = object.find("hex");
  if (member != object.end() && member->is_string()) hex = member->get<std::string>();

  ReceivedFrame frame;
  Reason reason = idFromJson("profile", object, frame.profile);
  if (reason.empty()) reason = idFromJson("cluster", object, frame.cluster);
  if (reason.empty()) {
    if (hex) {
      reason = bytesFromText(*hex, frame.bytes);
    } else {
      reason = member == object.end() ? "hex: missing" : "hex: not a string";
    }
  }
  if (reason.empty()) reason = nodeFromJson(object, frame.node);
  if (reason.empty()) return frame;
  return UnreadableLine{reason, hex};
}

}  // namespace

FrameLine parseFrameLine(const std::string& line) {
  std::string_view text = withoutOuterBlanks(line);
  if (!text.empty() && text[0] == '{') return parseJson(text);
  text = withoutOuterBlanks(text.substr(0, text.find('#')));
  if (text.empty()) return EmptyLine{};
  return parseWords(text);
}

}  // namespace qx::app
