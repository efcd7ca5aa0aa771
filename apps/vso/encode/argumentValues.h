// From the text of an argument to its value.
#pragma once

#include <stdexcept>
#include <string>
#include <vector>

#include "apps/vso/encode/Argument.h"
#include "vso/identifiers/Euid.h"
#include "vso/zcl/ZclScenes.h"

namespace qx::app {

/// An argument that does not do. Its text is one line, safe for a terminal.
class BadArgument : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// A piece of what the user gave, for a message: short, and without bytes that a terminal would obey.
std::string quoted(const std::string& text);

// Each of these throws BadArgument if the text does not do. The message does not name the argument.
long long parseNumber(const std::string& text, long long least, long long most);
std::vector<long long> parseNumbers(const std::string& text, long long least, long long most);
/// A number of one byte or the name of a ZclStatus, "ZCL_NOT_FOUND" being "not-found".
unsigned char parseStatus(const std::string& text);
Euid parseAddress(const std::string& text);
std::vector<unsigned char> parseOctets(const std::string& text, long long longest);
SceneExtension parseSceneExtension(const std::string& text);

/// Parses the text as the argument asks for, and keeps nothing.
void checkArgument(const Argument& argument, const std::string& text);

}  // namespace qx::app
