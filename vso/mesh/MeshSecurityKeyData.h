// A 128-bit key.
#pragma once

#include <string>
#include <type_traits>

namespace qx {

class XmlReader;
class XmlWriter;
namespace pb {
class MeshSecurityKeyDataPBuf;
}

/// A key of 16 bytes as a value. Its printed and serial forms hold it in the clear: keep them out of logs.
class MeshSecurityKeyData {
 public:
  static constexpr unsigned int SIZE = 16;

  /// All 16 bytes take `fill`.
  explicit MeshSecurityKeyData(unsigned char fill);
  /// The 16 raw bytes. Throws std::runtime_error, "Invalid key length", for any other number of them.
  explicit MeshSecurityKeyData(const std::string& bytes);

  /// Copies 16 bytes, which must be there.
  MeshSecurityKeyData& operator=(const unsigned char* bytes);
  /// All 16 bytes take `value`.
  MeshSecurityKeyData& operator=(unsigned char value);
  /// The same, so that a literal 0 is a value and no null pointer.
  MeshSecurityKeyData& operator=(int value) { return *this = static_cast<unsigned char>(value); }

  bool operator==(const MeshSecurityKeyData& other) const;
  bool operator!=(const MeshSecurityKeyData& other) const { return !(*this == other); }
  /// True if all 16 bytes are `value`.
  bool operator==(unsigned char value) const;
  bool operator!=(unsigned char value) const { return !(*this == value); }

  /// The 16 raw bytes.
  operator std::string() const;
  /// The 16 raw bytes.
  const unsigned char* cArray() const { return contents; }
  /// Two lowercase digits a byte with one blank between bytes, 47 characters.
  std::string toHexStr() const;
  /// A blank and the raw character for each byte with one blank between them, 47 characters. Nothing is filtered.
  std::string toAsciiStr() const;

  /// Caller owns the result.
  pb::MeshSecurityKeyDataPBuf* toProtobuf() const;
  /// Takes the first 16 bytes. True on failure: fewer were there, and the others keep their value.
  bool fromProtobuf(const pb::MeshSecurityKeyDataPBuf& message);
  /// An element `name`, without archive attributes, with a count, an item version and 16 items.
  void toXml(XmlWriter& writer, const std::string& name) const;
  /// Reads "item" elements until as many have come as the last "count" said, wherever they stand in the document. An
  /// item outside the 16 bytes, or before any count, is dropped; one whose text is no number repeats the item before it
  /// (0 if there is none). True on failure: the reader is in its error state.
  bool fromXml(XmlReader& reader);

  unsigned char contents[SIZE];
};

static_assert(sizeof(MeshSecurityKeyData) == MeshSecurityKeyData::SIZE, "a key is exactly its bytes");
static_assert(std::is_standard_layout_v<MeshSecurityKeyData>, "a key can be addressed as its bytes");

}  // namespace qx
