// From the text of an argument to its value.
#pragma once

#include <string>
#include <vector>

#include "apps/vso/encode/Argument.h"
#include "apps/vso/textValues.h"
#include "vso/zcl/ZclScenes.h"

namespace qx::app {

// Each of these throws BadArgument if the text does not do. The message does not name the argument.
std::vector<long long> parseNumbers(const std::string& text, long long least, long long most);
/// A number of one byte or the name of a ZclStatus, "ZCL_NOT_FOUND" being "not-found".
unsigned char parseStatus(const std::string& text);
SceneExtension parseSceneExtension(const std::string& text);

/// Parses the text as the argument asks for, and keeps nothing.
void checkArgument(const Argument& argument, const std::string& text);

}  // namespace qx::app
