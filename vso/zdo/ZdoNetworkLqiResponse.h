// A page of a node's neighbour table.
#pragma once

#include <list>

#include "vso/zdo/TablePage.h"
#include "vso/zdo/ZdoCommand.h"
#include "vso/zdo/ZdoResponse.h"

namespace qx {

class Hop;

/// What a node answers to a ZdoNetworkLqiRequest: the counts, and behind them the entries (see `hops`). Ask `status()`
/// first: a node that reports an error mostly sends no more than that.
class ZdoNetworkLqiResponse : public ZdoResponse {
 public:
  static constexpr unsigned short COMMAND_ID = ZdoCommand::NETWORK_LQI | ZdoCommand::RESPONSE;
  /// Bytes of an entry.
  static constexpr unsigned int ENTRY_SIZE = 22;

  ZdoNetworkLqiResponse() noexcept : ZdoResponse(COMMAND_ID) {}
  explicit ZdoNetworkLqiResponse(const U255Buff<unsigned char>& frame) noexcept : ZdoResponse(COMMAND_ID, frame) {}

  /// Entries of the whole table.
  unsigned char totalNeighborTableEntriesOnDevice() const noexcept { return detail::TablePage::total(*this); }
  /// Index in the table of the first entry here.
  unsigned char startIndex() const noexcept { return detail::TablePage::startIndex(*this); }
  /// Entries that the frame claims to hold. A frame has room for 11.
  unsigned char entries() const noexcept { return detail::TablePage::count(*this); }

  /// Replaces `out` by the entries of this page, as many as `entries()` says, whatever the status and the length:
  /// entries behind the frame's end are made of what the buffer holds there. An entry, numbers least significant byte
  /// first:
  ///
  ///   offset   size   field
  ///   0        8      extended PAN id
  ///   8        8      long address
  ///   16       2      short address
  ///   18       1      device type in bits 0-1, receiver on when idle in bits 2-3, relationship in bits 4-6
  ///   19       1      permit joining in bits 0-1
  ///   20       1      tree depth
  ///   21       1      LQI
  void hops(std::list<Hop>& out) const;
};

}  // namespace qx
