#include "vso/identifiers/hexify.h"

#include <array>
#include <cstring>

namespace qx {

namespace {

struct DigitPair {
  char high;
  char low;
};

constexpr std::array<DigitPair, 256> makeDigitPairs() {
  constexpr char digits[] = "0123456789abcdef";
  std::array<DigitPair, 256> pairs{};
  for (unsigned int i = 0; i < pairs.size(); ++i) pairs[i] = {digits[i >> 4], digits[i & 0x0F]};
  return pairs;
}

constexpr std::array<unsigned char, 256> makeNibbles() {
  std::array<unsigned char, 256> nibbles{};
  for (unsigned int c = '*'; c <= '?'; ++c) nibbles[c] = c & 0x0F;
  for (unsigned int c = 'a'; c <= 'f'; ++c) nibbles[c] = static_cast<unsigned char>((c & 0x0F) + 9);
  for (unsigned int c = 'A'; c <= 'F'; ++c) nibbles[c] = static_cast<unsigned char>((c & 0x0F) + 9);
  return nibbles;
}

constexpr std::array<DigitPair, 256> DIGIT_PAIRS = makeDigitPairs();
constexpr std::array<unsigned char, 256> NIBBLES = makeNibbles();

char* digitsOf(unsigned char element, char* out) { return detail::hexDigits(element, out); }

char* digitsOf(unsigned short element, char* out) {
  out = detail::hexDigits(static_cast<unsigned char>(element >> 8), out);
  return detail::hexDigits(static_cast<unsigned char>(element), out);
}

template <typename T>
constexpr unsigned int DIGITS = 2 * sizeof(T);

}  // namespace

char* detail::hexDigits(unsigned char byte, char* out) noexcept {
  std::memcpy(out, &DIGIT_PAIRS[byte], 2);
  return out + 2;
}

unsigned char detail::byteOfDigits(unsigned char high, unsigned char low) noexcept {
  return static_cast<unsigned char>(NIBBLES[high] << 4 | NIBBLES[low]);
}

template <typename T>
const T* hexify(const T* data, unsigned int count, std::string& out, bool separators) {
  if (data == nullptr) return nullptr;
  const std::size_t blanks = separators && count != 0 ? count - 1 : 0;
  out.resize(static_cast<std::size_t>(count) * DIGITS<T> + blanks);
  char* to = out.data();
  if (separators) {
    for (unsigned int i = 0; i < count; ++i) {
      if (i != 0) *to++ = ' ';
      to = digitsOf(data[i], to);
    }
  } else {
    for (unsigned int i = 0; i < count; ++i) to = digitsOf(data[i], to);
  }
  return data;
}

template <typename T>
T* deHexify(const std::string& text, T* out, unsigned int capacity) {
  if (out == nullptr || text.size() % DIGITS<T> != 0) return nullptr;
  if (static_cast<unsigned long long>(capacity) * DIGITS<T> < static_cast<T>(text.size())) return nullptr;
  const char* from = text.data();
  for (std::size_t i = 0; i < text.size() / DIGITS<T>; ++i) {
    unsigned int element = 0;
    for (unsigned int digit = 0; digit < DIGITS<T>; ++digit) {
      element = element << 4 | NIBBLES[static_cast<unsigned char>(*from++)];
    }
    out[i] = static_cast<T>(element);
  }
  return out;
}

template const unsigned char* hexify(const unsigned char*, unsigned int, std::string&, bool);
template const unsigned short* hexify(const unsigned short*, unsigned int, std::string&, bool);
template unsigned char* deHexify(const std::string&, unsigned char*, unsigned int);
template unsigned short* deHexify(const std::string&, unsigned short*, unsigned int);

}  // namespace qx
