#include "apps/vso/mesh/RecordedFrame.h"

#include <algorithm>
#include <string_view>

#include "apps/vso/textValues.h"

namespace qx::app {

namespace {

constexpr std::string_view BLANKS = " \t\r";
constexpr long long LAST_ID = 0xFFFF;
/// In the year 2038: what the records hold when they are saved.
constexpr long long LAST_TIME = 0x7FFFFFFF;

/// Takes the first word off `text`.
std::string takeWord(std::string_view& text) {
  text.remove_prefix(std::min(text.find_first_not_of(BLANKS), text.size()));
  const std::string_view word = text.substr(0, text.find_first_of(BLANKS));
  text.remove_prefix(word.size());
  return std::string(word);
}

/// What `parse` makes of the next word; what is wrong with it is said with its name.
template <typename Parse>
auto take(std::string_view& text, const char* name, const Parse& parse) {
  const std::string word = takeWord(text);
  if (word.empty()) throw BadArgument(std::string(name) + ": missing");
  try {
    return parse(word);
  } catch (const BadArgument& error) {
    throw BadArgument(std::string(name) + ": " + error.what());
  }
}

std::time_t parseTime(const std::string& word) {
  return word == "now" ? std::time(nullptr) : static_cast<std::time_t>(parseNumber(word, 0, LAST_TIME));
}

unsigned short parseId(const std::string& word) { return static_cast<unsigned short>(parseNumber(word, 0, LAST_ID)); }

}  // namespace

bool RecordedFrame::isToCome() const {
  constexpr std::time_t AHEAD = 60;
  return time > std::time(nullptr) + AHEAD;
}

std::optional<RecordedFrame> parseRecordedFrame(const std::string& line) {
  std::string_view text = std::string_view(line).substr(0, line.find('#'));
  if (text.find_first_not_of(BLANKS) == std::string_view::npos) return std::nullopt;
  RecordedFrame frame;
  frame.time = take(text, "time", parseTime);
  frame.source = take(text, "euid", parseAddress);
  frame.shortAddress = take(text, "short address", parseId);
  frame.profile = take(text, "profile", parseId);
  frame.cluster = take(text, "cluster", parseId);
  std::string digits(text);
  digits.erase(std::remove_if(digits.begin(), digits.end(), [](char c) { return BLANKS.find(c) != BLANKS.npos; }),
               digits.end());
  std::string_view rest(digits);
  const auto octets =
      take(rest, "hex", [](const std::string& word) { return parseOctets(word, U255Buff<unsigned char>::CAPACITY); });
  frame.bytes = U255Buff<unsigned char>(octets.data(), static_cast<unsigned int>(octets.size()));
  return frame;
}

}  // namespace qx::app
