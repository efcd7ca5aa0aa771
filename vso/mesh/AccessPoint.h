// One row of a device's table of access points.
#pragma once

#include <iosfwd>
#include <string>

namespace qx {

class XmlWriter;
namespace pb {
class AccessPointPBuf;
}

/// An access point that a device knows. Has no comparison: users compare the address they look for.
class AccessPoint {
 public:
  /// What a lookup answers that finds nothing: destination 0xFFFF, index 0xFF.
  static const AccessPoint INVALID;

  AccessPoint(unsigned short destination, unsigned char tableIndex);

  /// Caller owns the result.
  pb::AccessPointPBuf* toProtobuf() const;
  /// Takes both fields, cut to their low bits. True on failure, of which there is none.
  bool fromProtobuf(const pb::AccessPointPBuf& message);
  void toXml(XmlWriter& writer, const std::string& name) const;

  /// Short address of the access point.
  unsigned short destination_;
  /// Index of this row in the device's table.
  unsigned char table_index_;
};

/// One line without its end. Leaves the stream in hexadecimal with a fill of '0'.
std::ostream& operator<<(std::ostream& out, const AccessPoint& accessPoint);

}  // namespace qx
