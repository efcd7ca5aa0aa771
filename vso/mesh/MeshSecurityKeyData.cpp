#include "vso/mesh/MeshSecurityKeyData.h"

#include <algorithm>
#include <memory>
#include <stdexcept>

#include "qxxml/XmlReader.h"
#include "vso/identifiers/hexify.h"
#include "vso/proto/MeshSecurityKeyDataPBuf.pb.h"
#include "vso/serial/xmlHelpers.h"

namespace qx {

MeshSecurityKeyData::MeshSecurityKeyData(unsigned char fill) : contents() { *this = fill; }

MeshSecurityKeyData::MeshSecurityKeyData(const std::string& bytes) : contents() {
  if (bytes.size() != SIZE) throw std::runtime_error("Invalid key length");
  std::copy(bytes.begin(), bytes.end(), contents);
}

MeshSecurityKeyData& MeshSecurityKeyData::operator=(const unsigned char* bytes) {
  std::copy_n(bytes, SIZE, contents);
  return *this;
}

MeshSecurityKeyData& MeshSecurityKeyData::operator=(unsigned char value) {
  std::fill_n(contents, SIZE, value);
  return *this;
}

bool MeshSecurityKeyData::operator==(const MeshSecurityKeyData& other) const {
  return std::equal(contents, contents + SIZE, other.contents);
}

bool MeshSecurityKeyData::operator==(unsigned char value) const {
  return std::all_of(contents, contents + SIZE, [value](unsigned char byte) { return byte == value; });
}

MeshSecurityKeyData::operator std::string() const { return {contents, contents + SIZE}; }

std::string MeshSecurityKeyData::toHexStr() const {
  std::string text;
  hexify(contents, SIZE, text, true);
  return text;
}

std::string MeshSecurityKeyData::toAsciiStr() const {
  std::string text;
  for (const unsigned char byte : contents) {
    text += text.empty() ? " " : "  ";
    text += static_cast<char>(byte);
  }
  return text;
}

pb::MeshSecurityKeyDataPBuf* MeshSecurityKeyData::toProtobuf() const {
  auto message = std::make_unique<pb::MeshSecurityKeyDataPBuf>();
  message->set_contents(contents, SIZE);
  return message.release();
}

bool MeshSecurityKeyData::fromProtobuf(const pb::MeshSecurityKeyDataPBuf& message) {
  const std::string& bytes = message.contents();
  std::copy_n(bytes.begin(), std::min<std::size_t>(bytes.size(), SIZE), contents);
  return bytes.size() < SIZE;
}

void MeshSecurityKeyData::toXml(XmlWriter& writer, const std::string& name) const {
  const detail::XmlScope element(writer, name);
  writer.writeElement("count", "16");
  writer.writeElement("item_version", "0");
  for (const unsigned char byte : contents) writer.writeElement("item", byte);
}

bool MeshSecurityKeyData::fromXml(XmlReader& reader) {
  bool counted = false;
  int count = 0;
  int item = 0;
  long long total = 0;
  long long remaining = -1;
  while (remaining != 0 && reader.read()) {
    if (reader.nodeType() != detail::XML_ELEMENT) continue;
    const std::string name = reader.name();
    if (name == "count") {
      detail::readNumber(reader, count);
      counted = true;
      total = count;
      remaining = count;
    } else if (name == "item_version") {
      int ignored = 0;
      detail::readNumber(reader, ignored);
    } else if (name == "item") {
      detail::readNumber(reader, item);
      const long long index = total - remaining;
      if (counted && index >= 0 && index < SIZE) contents[index] = static_cast<unsigned char>(item);
      --remaining;
    }
  }
  return reader.state() == detail::XML_ERROR;
}

}  // namespace qx
