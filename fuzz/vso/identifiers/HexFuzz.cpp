// Hexadecimal text to bytes and back. Reachable from outside: addresses, PAN ids and frames arrive as text from the
// server's clients, from its files and from the command line, and nothing looks at the text before these operations do.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <sstream>
#include <string>
#include <vector>

#include "fuzz/support/trapUnless.h"
#include "vso/identifiers/Euid.h"
#include "vso/identifiers/PanId.h"
#include "vso/identifiers/hexify.h"

namespace {

using qx::Euid;
using qx::PanId;
using qx::fuzz::trapUnless;

bool isLowercaseDigit(char c) { return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f'); }

/// What a character counts for: all characters count.
unsigned int nibbleOf(char c) {
  const auto code = static_cast<unsigned char>(c);
  if (code >= '*' && code <= '?') return code & 0x0FU;
  if ((code >= 'a' && code <= 'f') || (code >= 'A' && code <= 'F')) return (code & 0x0FU) + 9;
  return 0;
}

template <typename T>
void checkDeHexify(const std::string& text) {
  constexpr std::size_t DIGITS = 2 * sizeof(T);
  const std::size_t count = text.size() / DIGITS;
  std::vector<T> elements(count + 1, 0x55);
  T* const result = qx::deHexify(text, elements.data(), static_cast<unsigned int>(elements.size()));
  if (text.size() % DIGITS != 0) {
    trapUnless(result == nullptr, "text of a broken element is refused");
    trapUnless(elements == std::vector<T>(count + 1, 0x55), "refused text writes nothing");
    return;
  }
  trapUnless(result == elements.data(), "text that fits is taken");
  trapUnless(elements[count] == 0x55, "nothing is written behind the text's elements");
  for (std::size_t i = 0; i < count; ++i) {
    unsigned int element = 0;
    for (std::size_t digit = 0; digit < DIGITS; ++digit) element = element << 4 | nibbleOf(text[i * DIGITS + digit]);
    trapUnless(elements[i] == element, "an element is its digits, highest first");
  }

  // The test of the capacity looks at the low bits of the length alone; the storage has room in any case.
  constexpr unsigned int TIGHT = 3;
  trapUnless((qx::deHexify(text, elements.data(), TIGHT) != nullptr) == (static_cast<T>(text.size()) <= TIGHT * DIGITS),
             "text beyond the capacity is refused");

  std::string back = "before";
  trapUnless(qx::hexify(elements.data(), static_cast<unsigned int>(count), back, false) == elements.data(),
             "hexify returns its data");
  trapUnless(back.size() == text.size(), "elements print as many digits as they were read from");
  trapUnless(std::all_of(back.begin(), back.end(), isLowercaseDigit), "elements print in lowercase digits");
  trapUnless(!std::all_of(text.begin(), text.end(), isLowercaseDigit) || back == text, "digits survive both ways");
  std::string separated;
  qx::hexify(elements.data(), static_cast<unsigned int>(count), separated, true);
  separated.erase(std::remove(separated.begin(), separated.end(), ' '), separated.end());
  trapUnless(separated == back, "separators are blanks between the same digits");
}

/// The 8 bytes that an identifier takes from a text.
std::vector<unsigned char> identifierOf(const std::string& text) {
  std::vector<unsigned char> bytes(8);
  if (text.size() > 16 || text.size() % 2 != 0) return bytes;
  for (std::size_t i = 0; i < text.size(); ++i) {
    bytes[i / 2] = static_cast<unsigned char>(bytes[i / 2] << 4 | nibbleOf(text[i]));
  }
  return bytes;
}

template <typename Identifier>
void checkBytes(const Identifier& id, const std::vector<unsigned char>& expected) {
  trapUnless(id.length() == 8, "an identifier has 8 bytes");
  trapUnless(std::equal(expected.begin(), expected.end(), id.cArray()), "an identifier is the bytes of its text");
  unsigned char copy[8];
  id.copy(copy);
  trapUnless(std::equal(expected.begin(), expected.end(), copy), "a copy is the identifier's bytes");
  Identifier swapped(id);
  swapped.byteSwap();
  trapUnless(std::equal(expected.rbegin(), expected.rend(), swapped.cArray()), "a swap turns the bytes round");
  swapped.byteSwap();
  trapUnless(swapped == id, "a swap undoes a swap");
}

void checkEuid(const std::string& text) {
  Euid euid;
  euid = text;
  checkBytes(euid, identifierOf(text));
  trapUnless(euid == text, "an address equals the text it was read from");

  const std::string digits = euid.toString();
  trapUnless(digits.size() == 16 && std::all_of(digits.begin(), digits.end(), isLowercaseDigit),
             "an address prints as 16 digits");
  Euid again;
  again = digits;
  trapUnless(again == euid && !(again != euid), "a printed address reads as the same address");
  trapUnless(again.hash() == euid.hash(), "equal addresses have equal hashes");
  std::ostringstream out;
  out << euid;
  trapUnless(out.str() == digits, "an address prints the same to a stream");

  again++;
  trapUnless(again != euid, "the next address is another one");
  trapUnless((again < euid) != (euid < again), "different addresses are ordered one way");
}

void checkPanId(const std::string& text) {
  const PanId panId(text);
  checkBytes(panId, identifierOf(text));
  PanId assigned(PanId::INVALID);
  assigned = text;
  trapUnless(assigned == panId, "assigning a text is constructing from it");
  trapUnless(panId == text, "a PAN id equals the text it was read from");

  const std::string digits = panId;
  trapUnless(digits.size() == 16 && PanId(digits) == panId, "a printed PAN id reads as the same one");
  const unsigned char first = *panId.cArray();
  trapUnless((panId == static_cast<unsigned int>(first)) ==
                 std::all_of(panId.cArray(), panId.cArray() + 8, [&](unsigned char byte) { return byte == first; }),
             "a PAN id equals a number that each of its bytes equals");
  trapUnless((panId < PanId::INVALID) == (panId != PanId::INVALID), "all ones is the greatest PAN id");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text(data, data + size);
  checkDeHexify<unsigned char>(text);
  checkDeHexify<unsigned short>(text);
  checkEuid(text);
  checkPanId(text);
  return 0;
}
