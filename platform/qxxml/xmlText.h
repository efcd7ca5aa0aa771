// Bytes made fit for an XML 1.0 document.

#pragma once

#include <string>
#include <string_view>

namespace qx::detail {

/// True if an XML document in UTF-8 can carry `text`, whatever must be escaped for it.
bool isXmlText(std::string_view text) noexcept;

/// True if besides `text` is plain ASCII that stands in a document as it is, with nothing to escape.
bool isPlainXmlText(std::string_view text) noexcept;

/// `text` with U+FFFD for what XML 1.0 cannot carry: one for each control character other than tab, newline and
/// carriage return, one for each of U+FFFE and U+FFFF, and one for each longest start of a UTF-8 sequence that does not
/// go on as one (surrogates, overlong forms and numbers above U+10FFFF have no such start but their first byte, so
/// that each of their bytes is replaced).
std::string xmlText(std::string_view text);

/// True if `name` is fit for an element or an attribute: letters, digits, '_', '-' and '.' of ASCII, the first a letter
/// or '_'. No colon: it would ask for a namespace.
bool isXmlName(std::string_view name) noexcept;

/// `name` with '_' for each byte that no name may have, and with '_' in front if it cannot begin with what it begins
/// with. An empty name becomes "_".
std::string xmlName(std::string_view name);

}  // namespace qx::detail
