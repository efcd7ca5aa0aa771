// The ZDO responses on arbitrary bytes. Reachable from outside: any node of the mesh, and any node near enough to send
// on its channel with the network key, chooses every byte of the frames that the server reads with these classes.
#include <boost/logic/tribool.hpp>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <list>
#include <string>

#include "fuzz/support/trapUnless.h"
#include "vso/mesh/Hop.h"
#include "vso/mesh/Route.h"
#include "vso/zdo/ZdoLeaveResponse.h"
#include "vso/zdo/ZdoNetworkLqiResponse.h"
#include "vso/zdo/ZdoNetworkRtgResponse.h"
#include "vso/zdo/ZdoNetworkUpdateResponse.h"
#include "vso/zdo/ZdoPermitJoinResponse.h"

namespace {

using qx::U255Buff;
using qx::ZdoResponse;
using qx::fuzz::trapUnless;

constexpr unsigned int STORAGE = 255;

/// What the readers have to go by, kept apart from the library's way to read it: the storage with a zero behind it as
/// a ring of 256 bytes, and a length.
struct Received {
  explicit Received(const ZdoResponse& response) : length(response.length_) {
    std::memcpy(ring, response.contents, STORAGE);
  }

  unsigned int byte(unsigned int offset) const { return ring[offset % 256]; }
  unsigned int number(unsigned int offset, unsigned int size) const {
    unsigned int value = 0;
    for (unsigned int i = size; i > 0; --i) value = value << 8 | byte(offset + i - 1);
    return value;
  }
  /// Eight bytes as the digits of an id, the last byte first.
  std::string digits(unsigned int offset) const {
    std::string text;
    for (unsigned int i = 8; i > 0; --i) {
      const unsigned int value = byte(offset + i - 1);
      text += "0123456789abcdef"[value / 16];
      text += "0123456789abcdef"[value % 16];
    }
    return text;
  }
  /// A count of a page, which is not looked for in a frame of fewer than `needed` bytes.
  unsigned int count(unsigned int offset, unsigned int needed) const { return length < needed ? 0 : byte(offset); }

  unsigned char ring[256] = {};
  unsigned int length;
};

/// 0 for no, 1 for yes, 2 for unknown.
unsigned int numberOf(const boost::logic::tribool& truth) {
  if (boost::logic::indeterminate(truth)) return 2;
  return truth == true ? 1 : 0;
}

void requireHeader(const ZdoResponse& response) {
  const Received in(response);
  trapUnless(response.seqNum() == in.byte(0), "byte 0 is the sequence number");
  trapUnless(response.status() == (in.length == 0 ? 134U : in.byte(1)), "byte 1 is the status, if there is any byte");
  trapUnless(std::strncmp(ZdoResponse::statusStr(static_cast<qx::ZdoStatus>(response.status())), "QX_", 3) == 0,
             "each status has a text");
}

void requireHop(const qx::Hop& hop, const Received& in, unsigned int at) {
  static constexpr unsigned int TYPES[] = {1, 2, 3, 0};
  static constexpr unsigned int RECEIVER[] = {1, 0, 2, 2};
  static constexpr unsigned int RELATIONSHIPS[] = {0, 1, 2, 3, 4, 3, 3, 3};
  static constexpr unsigned int JOINING[] = {0, 1, 2, 2};
  const unsigned int flags = in.byte(at + 18);
  trapUnless(std::string(hop.neighbor_pan_id_) == in.digits(at), "a hop has the PAN id of its entry");
  trapUnless(hop.neighbor_lid_.toString() == in.digits(at + 8), "a hop has the long address of its entry");
  trapUnless(hop.neighbor_ == in.number(at + 16, 2), "a hop has the short address of its entry");
  trapUnless(hop.type_ == TYPES[flags % 4], "a hop has the device type of its entry");
  trapUnless(numberOf(hop.rx_on_when_idle_) == RECEIVER[flags / 4 % 4], "a hop has the receiver state of its entry");
  trapUnless(hop.relationship_ == static_cast<int>(RELATIONSHIPS[flags / 16 % 8]),
             "a hop has the relationship of its entry");
  trapUnless(numberOf(hop.permit_joining_) == JOINING[in.byte(at + 19) % 4], "a hop lets join as its entry says");
  trapUnless(hop.tree_depth_ == in.byte(at + 20), "a hop has the depth of its entry");
  trapUnless(hop.lqi_ == in.byte(at + 21), "a hop has the LQI of its entry");
}

void requireNeighbors(const qx::ZdoNetworkLqiResponse& response) {
  const Received in(response);
  trapUnless(response.totalNeighborTableEntriesOnDevice() == in.count(2, 2), "the total is at 2");
  trapUnless(response.startIndex() == in.count(3, 3), "the start index is at 3");
  trapUnless(response.entries() == in.count(4, 4), "the count is at 4");

  std::list<qx::Hop> hops(2, qx::Hop::INVALID);
  response.hops(hops);
  trapUnless(hops.size() == in.count(4, 4), "there are as many hops as the page claims");
  unsigned int at = 5;
  for (const qx::Hop& hop : hops) {
    requireHop(hop, in, at);
    at += 22;
  }
}

void requireRoutes(const qx::ZdoNetworkRtgResponse& response) {
  const Received in(response);
  trapUnless(response.totalRoutingTableEntriesOnDevice() == in.count(2, 2), "the total is at 2");
  trapUnless(response.startIndex() == in.count(3, 3), "the start index is at 3");
  trapUnless(response.entries() == in.count(4, 4), "the count is at 4");

  std::list<qx::Route> routes(2, qx::Route::INVALID);
  response.routes(routes);
  trapUnless(routes.size() == in.count(4, 4), "there are as many routes as the page claims");
  unsigned int at = 5;
  for (const qx::Route& route : routes) {
    const unsigned int flags = in.byte(at + 2);
    trapUnless(route.destination_ == in.number(at, 2), "a route has the destination of its entry");
    trapUnless(route.route_status_ == static_cast<int>(flags % 8 < 5 ? flags % 8 : 5),
               "a route has the status of its entry");
    trapUnless(route.mem_constrained_ == (flags / 8 % 2 == 1), "a route is constrained by bit 3");
    trapUnless(route.many_to_one_ == (flags / 16 % 2 == 1), "a route is many-to-one by bit 4");
    trapUnless(route.route_record_required_ == (flags / 32 % 2 == 1), "a route asks for a record by bit 5");
    trapUnless(route.next_hop_ == in.number(at + 3, 2), "a route has the next hop of its entry");
    at += 5;
  }
}

void requireScan(const qx::ZdoNetworkUpdateResponse& response) {
  const Received in(response);
  const unsigned int mask = in.number(2, 4);
  trapUnless(response.scannedChannels() == mask, "the mask is at 2");
  trapUnless(response.transmissions() == in.number(6, 2), "the transmissions are at 6");
  trapUnless(response.failures() == in.number(8, 2), "the failures are at 8");
  trapUnless(response.energyCount() == in.byte(10), "the number of values is at 10");

  // No strength is above -37, and so 1 tells a level that was not set.
  constexpr signed char UNTOUCHED = 1;
  signed char levels[18];
  std::memset(levels, UNTOUCHED, sizeof levels);
  response.setEnergyLevels(levels);
  unsigned int at = 11;
  for (unsigned int channel = 11; channel <= 26; ++channel) {
    const signed char level = levels[channel - 11];
    if ((mask >> channel & 1) == 0) {
      trapUnless(level == UNTOUCHED, "the level of a channel that was not scanned stays");
      continue;
    }
    trapUnless(level == static_cast<int>(in.byte(at) / 4) - 100, "a scanned channel has the level of its value");
    ++at;
  }
  trapUnless(levels[16] == UNTOUCHED && levels[17] == UNTOUCHED, "no more than sixteen levels are set");
}

/// Reads a frame by each of the classes, once as it came and once with a length of its own, as a frame has whose field
/// a careless writer set, or that was assigned to one that held more.
template <typename Response, typename Require>
void requireBoth(const U255Buff<unsigned char>& frame, unsigned int length, unsigned short command, Require require) {
  Response response{ZdoResponse(command, frame)};
  trapUnless(response.commandId() == command, "a response knows its command");
  trapUnless(response.length_ == (frame.length_ <= STORAGE ? frame.length_ : 0), "a frame that is too long is empty");
  for (unsigned int round = 0; round < 2; ++round) {
    requireHeader(response);
    require(response);
    response.length_ = length;
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const U255Buff<unsigned char> frame(data, static_cast<unsigned int>(size));
  // Lengths around the guards, around the end of the storage, and far beyond.
  static constexpr unsigned int LENGTHS[] = {0, 1, 2, 3, 4, 5, 6, 254, 255, 256, 300, 0xFFFFFFFF};
  const unsigned int length = LENGTHS[(size == 0 ? 0 : data[size - 1]) % std::size(LENGTHS)];

  const auto nothingMore = [](const ZdoResponse&) {};
  requireBoth<qx::ZdoLeaveResponse>(frame, length, 0x8034, nothingMore);
  requireBoth<qx::ZdoPermitJoinResponse>(frame, length, 0x8036, nothingMore);
  requireBoth<qx::ZdoNetworkLqiResponse>(frame, length, 0x8031, requireNeighbors);
  requireBoth<qx::ZdoNetworkRtgResponse>(frame, length, 0x8032, requireRoutes);
  requireBoth<qx::ZdoNetworkUpdateResponse>(frame, length, 0x8038, requireScan);
  return 0;
}
