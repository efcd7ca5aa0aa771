// The radio counters of a device.
#pragma once

#include <initializer_list>
#include <string>

namespace qx {

class FrameReader;
class XmlWriter;
namespace pb {
class QxdiagnosticsNodeCountersPBuf;
}

/// What a device counted since its counters were reset: frames received and sent, by layer (MAC, application support,
/// network). A plain record; each counter wraps at 16 bits.
class QxdiagnosticsNodeCounters {
 public:
  /// How many fields there are, and bytes of them on the wire.
  static constexpr unsigned int FIELD_COUNT = 15;
  static constexpr unsigned int WIRE_SIZE = 2 * FIELD_COUNT;

  /// All zero.
  QxdiagnosticsNodeCounters() noexcept = default;
  /// The 15 fields in their order. Any other number of values leaves all of them zero, which is logged as an error and
  /// sent as the metric "log.error" of this program; nothing is thrown.
  QxdiagnosticsNodeCounters(std::initializer_list<unsigned short> values);

  bool operator==(const QxdiagnosticsNodeCounters& other) const;

  /// Reads the 15 fields in their order, each most significant byte first: the reverse of the attributes round them.
  void read(FrameReader& in);

  /// Caller owns the result.
  pb::QxdiagnosticsNodeCountersPBuf* toProtobuf() const;
  /// Takes all fields, each cut to its low 16 bits. True on failure, of which there is none.
  bool fromProtobuf(const pb::QxdiagnosticsNodeCountersPBuf& message);
  void toXml(XmlWriter& writer, const std::string& name) const;

  unsigned short version_ = 0;
  unsigned short mac_rx_unicasts_ = 0;
  unsigned short mac_tx_unicasts_ = 0;
  unsigned short mac_tx_unicast_retries_ = 0;
  unsigned short mac_tx_unicast_failures_ = 0;
  unsigned short mac_rx_broadcasts_ = 0;
  unsigned short mac_tx_broadcasts_ = 0;
  unsigned short aps_rx_unicasts_ = 0;
  unsigned short aps_tx_unicasts_ = 0;
  unsigned short aps_tx_unicast_retries_ = 0;
  unsigned short aps_tx_unicast_failures_ = 0;
  unsigned short aps_rx_broadcasts_ = 0;
  unsigned short aps_tx_broadcasts_ = 0;
  unsigned short nwk_frame_counter_failures_ = 0;
  unsigned short aps_frame_counter_failures_ = 0;
};

}  // namespace qx
