#include "qxcrypto/Base64Encoder.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <string>

namespace qx {
namespace {

std::string encoded(const std::string& bytes) { return Base64Encoder().Base64Encode(bytes); }

std::string decoded(const std::string& text) {
  static const std::string ALPHABET = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string bytes;
  unsigned int bits = 0;
  unsigned int held = 0;
  for (const char c : text) {
    if (c == '=') break;
    bits = bits << 6 | static_cast<unsigned int>(ALPHABET.find(c));
    held += 6;
    if (held < 8) continue;
    held -= 8;
    bytes += static_cast<char>(bits >> held & 0xFF);
  }
  return bytes;
}

std::string counting(std::size_t length) {
  std::string bytes;
  for (std::size_t i = 0; i < length; ++i) bytes += static_cast<char>(i * 7 + i / 251);
  return bytes;
}

TEST(Base64Encoder, GivesTheVectorsOfTheStandard) {
  EXPECT_EQ(encoded(""), "");
  EXPECT_EQ(encoded("f"), "Zg==");
  EXPECT_EQ(encoded("fo"), "Zm8=");
  EXPECT_EQ(encoded("foo"), "Zm9v");
  EXPECT_EQ(encoded("foob"), "Zm9vYg==");
  EXPECT_EQ(encoded("fooba"), "Zm9vYmE=");
  EXPECT_EQ(encoded("foobar"), "Zm9vYmFy");
}

TEST(Base64Encoder, UsesTheStandardAlphabetForTheLastTwo) { EXPECT_EQ(encoded("\xFB\xEF\xFF"), "++//"); }

TEST(Base64Encoder, TakesZeroBytesAsAnyOther) {
  EXPECT_EQ(encoded(std::string(1, '\0')), "AA==");
  EXPECT_EQ(encoded(std::string("a\0b", 3)), "YQBi");
}

TEST(Base64Encoder, BreaksNoLines) {
  EXPECT_EQ(encoded(std::string(3000, 'i')).find_first_not_of("aWlp"), std::string::npos);
}

TEST(Base64Encoder, EncodesEveryLengthInWholeGroupsOfFour) {
  for (std::size_t length = 0; length <= 200; ++length) {
    const std::string bytes = counting(length);
    const std::string text = encoded(bytes);
    EXPECT_EQ(text.size(), (length + 2) / 3 * 4);
    EXPECT_EQ(text.size() - text.find_last_not_of('=') - 1, (3 - length % 3) % 3) << length;
    EXPECT_EQ(decoded(text), bytes) << length;
  }
}

TEST(Base64Encoder, EncodesMegabytesAsOneText) {
  for (const std::size_t length : {3145727U, 3145728U, 3145729U, 7000000U}) {
    const std::string bytes = counting(length);
    const std::string text = encoded(bytes);
    EXPECT_EQ(text.size(), (length + 2) / 3 * 4);
    EXPECT_TRUE(decoded(text) == bytes) << length;
  }
}

TEST(Base64Encoder, IsReusable) {
  const Base64Encoder encoder;
  EXPECT_EQ(encoder.Base64Encode("foo"), "Zm9v");
  EXPECT_EQ(encoder.Base64Encode("f"), "Zg==");
}

}  // namespace
}  // namespace qx
