// Text from elsewhere made fit for people to read.
#pragma once

#include <cstddef>
#include <string>

namespace qx::app {

/// `text`, in UTF-8, safe for a terminal and for a picture: bytes that are no character are shown as cleanString does,
/// and so are the bytes of characters that control, that turn the direction of what follows, or that XML does not have.
std::string cleanText(const std::string& text);

/// The characters of a text that is in UTF-8. On a terminal it takes about as many columns.
std::size_t charactersOf(const std::string& text);

/// A text in UTF-8, of at most `most` characters, three or more: a longer one is cut and ends in "...".
std::string clipped(const std::string& text, std::size_t most);

}  // namespace qx::app
