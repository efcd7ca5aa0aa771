// From what a user wrote to its value.
#pragma once

#include <stdexcept>
#include <string>
#include <vector>

#include "vso/identifiers/Euid.h"

namespace qx::app {

/// Something in a command line or in a line that does not do. Its text is one line, safe for a terminal.
class BadArgument : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// A piece of what the user gave, for a message: short, and without bytes that a terminal would obey.
std::string inQuotes(const std::string& text);

/// Throws a BadArgument that quotes the text.
[[noreturn]] void refuse(const std::string& text, const std::string& reason);

/// "0..0xffffffff".
std::string rangeOf(long long least, long long most);

// Each of these throws BadArgument if the text does not do. The message does not name the argument.

/// In C notation.
long long parseNumber(const std::string& text, long long least, long long most);
/// 16 hexadecimal digits, most significant first.
Euid parseAddress(const std::string& text);
/// Hexadecimal digits, two a byte; at most `longest` bytes.
std::vector<unsigned char> parseOctets(const std::string& text, long long longest);

}  // namespace qx::app
