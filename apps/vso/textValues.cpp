#include "apps/vso/textValues.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cstdio>
#include <string_view>
#include <system_error>

#include "apps/vso/cleanText.h"
#include "vso/identifiers/hexify.h"

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

void checkDigits(const std::string& text) {
  const bool areDigits =
      std::all_of(text.begin(), text.end(), [](char c) { return std::isxdigit(static_cast<unsigned char>(c)) != 0; });
  if (!areDigits) refuse(text, "is not made of hexadecimal digits");
}

}  // namespace

std::string inQuotes(const std::string& text) {
  constexpr std::size_t LONGEST = 40;
  constexpr std::size_t ENOUGH = 4 * LONGEST;  // bytes of so many characters
  const std::string clean = cleanText(text.substr(0, ENOUGH));
  const bool isLong = text.size() > ENOUGH || charactersOf(clean) > LONGEST;
  return '"' + (isLong ? clipped(clean + "...", LONGEST + 3) : clean) + '"';
}

void refuse(const std::string& text, const std::string& reason) { throw BadArgument(inQuotes(text) + " " + reason); }

std::string rangeOf(long long least, long long most) { return bound(least) + ".." + bound(most); }

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
    refuse(text, "is out of range, " + rangeOf(least, most));
  }
  return number;
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

}  // namespace qx::app
