// The relays between a node and an access point.
#pragma once

#include <ctime>
#include <iosfwd>
#include <set>
#include <string>

#include "vso/identifiers/Euid.h"
#include "vso/identifiers/U255Buff.h"

namespace qx {

class XmlWriter;
namespace pb {
class SourceRoutePBuf;
}

/// The path that was learnt from one node to one access point: relay short addresses from the node's end
/// (`contents[0]`) to the access point's. The addresses of the two ends are not in the list; an empty list is a direct
/// neighbour. Lives wholly in its object. Nothing here drops a route that is worn out: `bad` tells, its owner acts.
class SourceRoute : public U255Buff<unsigned short> {
 public:
  /// No relays, access point all zero, short address 0xFFFF. Both have the same value and compare equal.
  static const SourceRoute INVALID;
  static const SourceRoute NULL_ROUTE;

  // The time stamp of a new route is the clock's.

  /// No relays; every byte of the storage takes the low byte of `fill`.
  SourceRoute(unsigned short fill, const Euid& zap, unsigned short zapSid);
  /// `count` relays. See U255Buff for a count above 255.
  SourceRoute(const unsigned short* relays, unsigned int count, const Euid& zap, unsigned short zapSid);
  /// Relays of four hexadecimal digits each. Digits that make up no whole relay leave all relays zero; more than 255
  /// relays give an empty route.
  SourceRoute(const std::string& hex, const Euid& zap, unsigned short zapSid);

  /// Compare the relays and the access point's long address, nothing else: a path that was learnt anew equals the old.
  bool operator==(const SourceRoute& other) const;
  bool operator!=(const SourceRoute& other) const { return !(*this == other); }

  /// Takes the first relay out and returns it; -1 if there is none.
  int pop();
  /// The relay next to the node; -1 if there is none.
  int head() const;
  /// The relay next to the access point; -1 if there is none.
  int tail() const;
  /// Reverses the relays in place.
  void orderSwap();
  bool contains(unsigned short sid) const;
  bool contains(const std::set<unsigned short>& sids) const;
  /// Radio hops between the node and the access point: one more than there are relays.
  unsigned int hops() const { return length_ + 1; }

  /// Counts failures, modulo 2^32 unless the count stands at its very maximum, where it stays.
  void failed(unsigned char count);
  /// True from the thirtieth failure on.
  bool bad() const;
  unsigned int failures() const { return failures_; }
  void clearFailures() { failures_ = 0; }
  /// Long address of the access point.
  const Euid& zap() const { return zap_; }
  /// When the route was made, seconds since 1970.
  std::time_t timeStamp() const { return time_stamp_; }

  /// The access point's short address and the relays from there outward, "0x0000" each, with `separator` between them.
  std::string printSourceRouteOrder(const std::string& separator) const;

  /// Caller owns the result.
  pb::SourceRoutePBuf* toProtobuf() const;
  /// Takes all fields. True on failure: more than 255 relays, which leave the list as it was.
  bool fromProtobuf(const pb::SourceRoutePBuf& message);
  void toXml(XmlWriter& writer, const std::string& name) const;

 private:
  unsigned int failures_ = 0;
  Euid zap_;
  unsigned short zap_sid_;
  std::time_t time_stamp_;
};

/// The relays from the node on, "0x0000" with one blank between them, which leaves the stream in hexadecimal with a
/// fill of '0'; "neighbor" if there is none.
std::ostream& operator<<(std::ostream& out, const SourceRoute& route);

}  // namespace qx
