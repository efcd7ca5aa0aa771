// The identity of a mesh.
#pragma once

#include <iosfwd>
#include <string>

#include "vso/identifiers/PanId.h"
#include "vso/mesh/MeshSecurityKeyData.h"
#include "vso/mesh/MeshState.h"

namespace qx {

class XmlReader;
class XmlWriter;
namespace pb {
class MeshParametersPBuf;
}

/// Ids, channel and keys of one mesh, and whether it is up. A carrier: it forms no mesh, picks no channel and makes no
/// key. Its printed and serial forms hold the keys in the clear: keep them out of logs.
class MeshParameters {
 public:
  /// Down, everything else zero.
  MeshParameters() = default;
  MeshParameters(const MeshParameters&) = default;
  MeshParameters& operator=(const MeshParameters&) = default;
  virtual ~MeshParameters() = default;

  /// Fills both ids and both keys with `value`; channel and status stay.
  MeshParameters& operator=(unsigned char value);

  /// Compare everything but the status.
  bool operator==(const MeshParameters& other) const;
  bool operator!=(const MeshParameters& other) const { return !(*this == other); }
  /// True if the bytes of the extended PAN id and of both keys, and the short PAN id, are `value`. With 0: is it blank?
  bool operator==(unsigned char value) const;
  bool operator!=(unsigned char value) const { return !(*this == value); }
  /// As `==`, without the short PAN id.
  bool isSameMesh(const MeshParameters& other) const;
  /// True if neither of the two ids is zero.
  bool isValid() const;

  MeshState status() const { return status_; }
  void status(MeshState status) { status_ = status; }
  const PanId& xpanId() const { return xpanid_; }
  void xpanId(const PanId& xpanId) { xpanid_ = xpanId; }
  unsigned short panId() const { return panid_; }
  void panId(unsigned short panId) { panid_ = panId; }
  unsigned char channel() const { return channel_; }
  void channel(unsigned char channel) { channel_ = channel; }
  const MeshSecurityKeyData& preconfiguredKey() const { return preconfiguredKey_; }
  void preconfiguredKey(const MeshSecurityKeyData& key) { preconfiguredKey_ = key; }
  const MeshSecurityKeyData& networkKey() const { return networkKey_; }
  void networkKey(const MeshSecurityKeyData& key) { networkKey_ = key; }

  /// "MESH_DOWN", "MESH_UP", "MESH_CLEAN", and "MESH_UKNOWN" for every other state.
  static std::string meshStateStr(MeshState status);

  /// One line without its end, with the raw bytes of the keys. Leaves the stream in decimal with a fill of '0'.
  std::ostream& print(std::ostream& out) const;

  /// Caller owns the result.
  pb::MeshParametersPBuf* toProtobuf() const;
  /// Takes all fields, wider ones cut to their low bits. True on failure: an id or a key was short.
  bool fromProtobuf(const pb::MeshParametersPBuf& message);
  void toXml(XmlWriter& writer, const std::string& name) const;
  /// Takes the elements it knows, wherever they stand, from all that the reader still has; a field without its element,
  /// or whose text was never a number, keeps its value. True on failure: the reader is in its error state, or the
  /// extended PAN id could not be read, which ends the reading.
  bool fromXml(XmlReader& reader);

 private:
  MeshState status_ = MESH_DOWN;
  PanId xpanid_;
  unsigned short panid_ = 0;
  unsigned char channel_ = 0;
  MeshSecurityKeyData preconfiguredKey_{0};
  MeshSecurityKeyData networkKey_{0};
};

}  // namespace qx
