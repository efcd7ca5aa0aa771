// A page of a node's routing table.
#pragma once

#include <list>

#include "vso/zdo/TablePage.h"
#include "vso/zdo/ZdoCommand.h"
#include "vso/zdo/ZdoResponse.h"

namespace qx {

class Route;

/// What a node answers to a ZdoNetworkRtgRequest: the counts, and behind them the entries (see `routes`). Ask
/// `status()` first: a node that reports an error mostly sends no more than that.
class ZdoNetworkRtgResponse : public ZdoResponse {
 public:
  static constexpr unsigned short COMMAND_ID = ZdoCommand::NETWORK_RTG | ZdoCommand::RESPONSE;
  /// Bytes of an entry.
  static constexpr unsigned int ENTRY_SIZE = 5;

  ZdoNetworkRtgResponse() noexcept : ZdoResponse(COMMAND_ID) {}
  explicit ZdoNetworkRtgResponse(const U255Buff<unsigned char>& frame) noexcept : ZdoResponse(COMMAND_ID, frame) {}

  /// Entries of the whole table.
  unsigned char totalRoutingTableEntriesOnDevice() const noexcept { return detail::TablePage::total(*this); }
  /// Index in the table of the first entry here.
  unsigned char startIndex() const noexcept { return detail::TablePage::startIndex(*this); }
  /// Entries that the frame claims to hold. A frame has room for 50.
  unsigned char entries() const noexcept { return detail::TablePage::count(*this); }

  /// Replaces `out` by the entries of this page, as many as `entries()` says, whatever the status and the length:
  /// entries behind the frame's end are made of what the buffer holds there. An entry:
  ///
  ///   offset   size   field
  ///   0        2      destination, a short address, little-endian
  ///   2        1      status in bits 0-2, memory constrained in bit 3, many-to-one in bit 4, route record required in
  ///                   bit 5
  ///   3        2      next hop, a short address, little-endian
  void routes(std::list<Route>& out) const;
};

}  // namespace qx
