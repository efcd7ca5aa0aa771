#include "apps/vso/cleanText.h"

#include <gtest/gtest.h>

#include <string>

#include "qxshared/cleanString.h"

namespace qx::app {
namespace {

/// The bytes of a character in the form of so many bytes, be it the right one or not.
std::string inForm(char32_t character, unsigned int length) {
  if (length == 1) return std::string(1, static_cast<char>(character));
  std::string bytes;
  for (unsigned int i = 1; i < length; ++i) {
    bytes.insert(bytes.begin(), static_cast<char>(0x80 | (character & 0x3F)));
    character >>= 6;
  }
  return static_cast<char>(0xF00 >> length | character) + bytes;
}

/// In UTF-8.
std::string text(char32_t character) {
  return inForm(character, character < 0x80 ? 1 : character < 0x800 ? 2 : character < 0x10000 ? 3 : 4);
}

TEST(CleanText, ShowsCharactersAsTheyAre) {
  EXPECT_EQ(cleanText(""), "");
  const std::string kitchen =
      "K\xc3\xbc"
      "che";
  EXPECT_EQ(cleanText(kitchen), kitchen);
  // The first and the last of each form, and the neighbours of those that are not shown.
  for (const char32_t character :
       {U' ', U'~', U'\\', U'"', char32_t{0xA0}, char32_t{0x7FF}, char32_t{0x800}, char32_t{0x2029}, char32_t{0x202F},
        char32_t{0x2065}, char32_t{0x206A}, char32_t{0xD7FF}, char32_t{0xE000}, char32_t{0xFFFD}, char32_t{0x10000},
        char32_t{0x10FFFF}}) {
    const std::string shown = "a" + text(character) + "b";
    EXPECT_EQ(cleanText(shown), shown) << static_cast<unsigned int>(character);
  }
}

TEST(CleanText, ShowsTheBytesOfCharactersThatAreObeyed) {
  for (char32_t character = 0; character <= 0x10FFFF; ++character) {
    const bool isControl = character < 0x20 || (character >= 0x7F && character <= 0x9F);
    const bool turns = (character >= 0x202A && character <= 0x202E) || (character >= 0x2066 && character <= 0x2069);
    const bool isForeignToXml = character == 0xFFFE || character == 0xFFFF;
    const bool isSurrogate = character >= 0xD800 && character <= 0xDFFF;
    const std::string bytes = text(character);
    const bool isShown = !isControl && !turns && !isForeignToXml && !isSurrogate;
    ASSERT_EQ(cleanText(bytes), isShown ? bytes : cleanString(bytes)) << static_cast<unsigned int>(character);
  }
  EXPECT_EQ(cleanText("a\x1b[2J\r\n\t\x7f" + text(0x9B) + text(0x202E) + text(0x2066)),
            R"(a\x1b[2J\r\n\t\x7f\xc2\x9b\xe2\x80\xae\xe2\x81\xa6)");
}

TEST(CleanText, ShowsBytesThatAreNoCharacter) {
  const struct {
    std::string bytes;
    std::string shown;
  } rows[] = {
      {"\x80", R"(\x80)"},                                  // goes on with nothing
      {"\xbf\xbf", R"(\xbf\xbf)"},                          //
      {"\xfe\xff", R"(\xfe\xff)"},                          // never part of a character
      {"\xf8\x88\x80\x80\x80", R"(\xf8\x88\x80\x80\x80)"},  // five bytes
      {"\xc3", R"(\xc3)"},                                  // cut short
      {"\xe2\x82", R"(\xe2\x82)"},                          //
      {"\xf0\x9f\x92", R"(\xf0\x9f\x92)"},                  //
      {"\xc3(", R"(\xc3()"},                                // interrupted
      {"\xe2\x82x", R"(\xe2\x82x)"},                        //
      {"\xf0\x9f\x92\xc3\xbc", "\\xf0\\x9f\\x92\xc3\xbc"},  //
      {"\xc0\x80", R"(\xc0\x80)"},                          // longer than it has to be
      {"\xc1\xbf", R"(\xc1\xbf)"},                          //
      {"\xe0\x9f\xbf", R"(\xe0\x9f\xbf)"},                  //
      {"\xf0\x8f\xbf\xbf", R"(\xf0\x8f\xbf\xbf)"},          //
      {"\xed\xa0\x80", R"(\xed\xa0\x80)"},                  // half a character of UTF-16
      {"\xed\xbf\xbf", R"(\xed\xbf\xbf)"},                  //
      {"\xf4\x90\x80\x80", R"(\xf4\x90\x80\x80)"},          // behind the last
      {"\xf7\xbf\xbf\xbf", R"(\xf7\xbf\xbf\xbf)"},          //
  };
  for (const auto& row : rows) {
    EXPECT_EQ(cleanText(row.bytes), row.shown);
    EXPECT_EQ(cleanText("a" + row.bytes + "b"), "a" + row.shown + "b");
  }
}

TEST(CleanText, TakesEachCharacterInItsShortestFormOnly) {
  for (char32_t character = 0; character <= 0xFFFF; ++character) {
    for (unsigned int length = 2; length <= 4; ++length) {
      const std::string bytes = inForm(character, length);
      if (character >= (1U << (5 * length + 1)) || bytes == text(character)) continue;
      ASSERT_EQ(cleanText(bytes), cleanString(bytes)) << static_cast<unsigned int>(character) << " in " << length;
    }
  }
}

TEST(CharactersOf, CountsCharactersAndNotBytes) {
  EXPECT_EQ(charactersOf(""), 0u);
  EXPECT_EQ(charactersOf("lamp"), 4u);
  EXPECT_EQ(charactersOf(text(0xFC) + text(0x20AC) + text(0x1F4A1)), 3u);
}

TEST(Clipped, CutsBetweenCharacters) {
  EXPECT_EQ(clipped("", 3), "");
  EXPECT_EQ(clipped("lamp", 4), "lamp");
  EXPECT_EQ(clipped("lamps", 4), "l...");
  EXPECT_EQ(clipped("lamp", 3), "...");
  for (const char32_t character : {char32_t{0xFC}, char32_t{0x20AC}, char32_t{0x1F4A1}}) {
    const std::string one = text(character);
    EXPECT_EQ(clipped(one + one + one + one + one, 5), one + one + one + one + one);
    EXPECT_EQ(clipped(one + one + one + one + one + one, 5), one + one + "...");
  }
}

}  // namespace
}  // namespace qx::app
