#include "qxxml/xmlText.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>

namespace qx::detail {
namespace {

const std::string R = "\xEF\xBF\xBD";  // U+FFFD

std::string utf8(unsigned int code) {
  const auto tail = [code](unsigned int shift) { return static_cast<char>(0x80 | (code >> shift & 0x3F)); };
  if (code < 0x80) return {static_cast<char>(code)};
  if (code < 0x800) return {static_cast<char>(0xC0 | code >> 6), tail(0)};
  if (code < 0x10000) return {static_cast<char>(0xE0 | code >> 12), tail(6), tail(0)};
  return {static_cast<char>(0xF0 | code >> 18), tail(12), tail(6), tail(0)};
}

/// The production Char of XML 1.0.
bool isChar(unsigned int code) {
  return code == 0x9 || code == 0xA || code == 0xD || (code >= 0x20 && code <= 0xD7FF) ||
         (code >= 0xE000 && code <= 0xFFFD) || (code >= 0x10000 && code <= 0x10FFFF);
}

TEST(xmlText, KeepsExactlyTheCharactersOfXml) {
  for (unsigned int code = 0; code < 0x200000; ++code) {
    const std::string character = utf8(code);
    ASSERT_EQ(isXmlText(character), isChar(code)) << std::hex << code;
    ASSERT_EQ(xmlText(character) == character, isChar(code)) << std::hex << code;
  }
}

TEST(xmlText, HoldsAsPlainTheAsciiThatNeedsNoEscape) {
  for (unsigned int code = 0; code < 0x100; ++code) {
    const char c = static_cast<char>(code);
    const bool plain = code >= 0x20 && code < 0x80 && c != '<' && c != '>' && c != '&' && c != '"';
    EXPECT_EQ(isPlainXmlText(std::string("a") + c), plain) << std::hex << code;
  }
  EXPECT_TRUE(isPlainXmlText(""));
}

struct Replacement {
  const char* what;
  std::string bytes;
  std::string text;
};

const Replacement REPLACEMENTS[] = {
    {"a control character",
     "a\x01"
     "b",
     "a" + R + "b"},
    {"a zero byte", std::string("a\0b", 3), "a" + R + "b"},
    {"two control characters", "\x1B\x1F", R + R},
    {"U+FFFE",
     "a\xEF\xBF\xBE"
     "b",
     "a" + R + "b"},
    {"U+FFFF", "\xEF\xBF\xBF", R},
    {"a continuation without a start",
     "a\x80"
     "b",
     "a" + R + "b"},
    {"two continuations", "\xBF\x80", R + R},
    {"a start of two without the second", "\xC3", R},
    {"a start of two before ASCII",
     "\xC3"
     "a",
     R + "a"},
    {"two of three", "\xE2\x82", R},
    {"two of three before ASCII",
     "\xE2\x82"
     "a",
     R + "a"},
    {"two of three before a whole one", "\xE2\x82\xE2\x82\xAC", R + "\xE2\x82\xAC"},
    {"three of four", "\xF0\x9F\x98", R},
    {"a continuation too many", "\xC3\xA9\xA9", "\xC3\xA9" + R},
    {"an overlong form of two", "\xC0\xAF", R + R},
    {"an overlong form of three", "\xE0\x80\xAF", R + R + R},
    {"an overlong form of four", "\xF0\x80\x80\xAF", R + R + R + R},
    {"a surrogate", "\xED\xA0\x80", R + R + R},
    {"a pair of surrogates", "\xED\xA0\xBD\xED\xB8\x80", R + R + R + R + R + R},
    {"above U+10FFFF", "\xF4\x90\x80\x80", R + R + R + R},
    {"bytes of no UTF-8", "\xF5\xFE\xFF", R + R + R},
    {"Latin-1", "caf\xE9", "caf" + R},
};

TEST(xmlText, ReplacesWhatNoDocumentCarries) {
  for (const Replacement& replacement : REPLACEMENTS) {
    EXPECT_EQ(xmlText(replacement.bytes), replacement.text) << replacement.what;
    EXPECT_FALSE(isXmlText(replacement.bytes)) << replacement.what;
    EXPECT_TRUE(isXmlText(replacement.text)) << replacement.what;
  }
}

TEST(xmlName, KeepsLettersDigitsAndTheThreeMarks) {
  for (const char* const name : {"a", "Z", "_", "class_id", "a-b.c", "x9"}) {
    EXPECT_TRUE(isXmlName(name)) << name;
    EXPECT_EQ(xmlName(name), name);
  }
}

TEST(xmlName, ReplacesWhatNoNameHas) {
  const std::pair<std::string, std::string> names[] = {
      {"", "_"},
      {"a b", "a_b"},
      {"a:b", "a_b"},
      {"a<b>&\"'/=", "a_b______"},
      {"caf\xC3\xA9", "caf__"},
      {std::string("a\0b", 3), "a_b"},
      {"9", "_9"},
      {"-", "_-"},
      {".a", "_.a"},
      {" a", "_a"},
  };
  for (const auto& [name, clean] : names) {
    EXPECT_FALSE(isXmlName(name)) << name;
    EXPECT_EQ(xmlName(name), clean);
    EXPECT_TRUE(isXmlName(clean)) << clean;
  }
}

}  // namespace
}  // namespace qx::detail
