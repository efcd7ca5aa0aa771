// One entry of a radio's key store.
#pragma once

#include <string>

#include "vso/identifiers/Euid.h"
#include "vso/mesh/KeyType.h"
#include "vso/mesh/MeshSecurityKeyData.h"

namespace qx {

class XmlWriter;
namespace pb {
class MeshSecurityDataPBuf;
}

/// A key, its kind, its frame counters and the partner that it is shared with.
class MeshSecurityData {
 public:
  /// A key of an unknown kind without a partner: key bytes, counters and sequence number take `fill`.
  explicit MeshSecurityData(unsigned char fill);

  /// Sets the kind to unknown whatever `value` is; key bytes, counters, sequence number and the partner's integer view
  /// take `value`.
  MeshSecurityData& operator=(unsigned char value);

  /// Compare kind, key and partner; the counters and the sequence number move on with use.
  bool operator==(const MeshSecurityData& other) const;
  bool operator!=(const MeshSecurityData& other) const { return !(*this == other); }
  /// True if the kind's number, all key bytes and the partner's integer view are `value`.
  bool operator==(unsigned char value) const;
  bool operator!=(unsigned char value) const { return !(*this == value); }

  /// The kind without the enumerator's prefix: "CURRENT_NETWORK_KEY"; "UNKNOWN_KEY" for a number without a name.
  std::string keyTypeStr() const;

  const KeyType& keyType() const { return key_type_; }
  void keyType(const KeyType& keyType) { key_type_ = keyType; }
  const MeshSecurityKeyData& key() const { return key_; }
  void key(const MeshSecurityKeyData& key) { key_ = key; }
  /// Counter of the frames sent.
  unsigned int outgoingFrameCounter() const { return outgoing_frame_counter_; }
  void outgoingFrameCounter(unsigned int counter) { outgoing_frame_counter_ = counter; }
  /// Counter of the frames received.
  unsigned int incomingFrameCounter() const { return incoming_frame_counter_; }
  void incomingFrameCounter(unsigned int counter) { incoming_frame_counter_ = counter; }
  /// Sequence number of the key.
  unsigned char sequenceNumber() const { return sequence_number_; }
  void sequenceNumber(unsigned char sequenceNumber) { sequence_number_ = sequenceNumber; }
  /// Long address of the partner of a link key.
  const Euid& partnerLid() const { return partner_lid_; }
  void partnerLid(const Euid& partnerLid) { partner_lid_ = partnerLid; }

  /// Caller owns the result.
  pb::MeshSecurityDataPBuf* toProtobuf() const;
  /// Takes all fields. True on failure: the key held fewer than 16 bytes.
  bool fromProtobuf(const pb::MeshSecurityDataPBuf& message);
  /// An element `name`, without archive attributes.
  void toXml(XmlWriter& writer, const std::string& name) const;

 private:
  KeyType key_type_ = QX_UNKNOWN_KEY;
  MeshSecurityKeyData key_;
  unsigned int outgoing_frame_counter_;
  unsigned int incoming_frame_counter_;
  unsigned char sequence_number_;
  Euid partner_lid_;
};

}  // namespace qx
