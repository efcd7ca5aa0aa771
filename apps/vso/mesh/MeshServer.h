// The engine of a small mesh server: frames go in, nodes and their health come out.
#pragma once

#include <boost/asio/io_context.hpp>
#include <cstddef>
#include <ctime>
#include <map>
#include <unordered_map>

#include "apps/vso/mesh/RecordedFrame.h"
#include "apps/vso/mesh/ShortAddresses.h"
#include "apps/vso/mesh/TablePages.h"
#include "vso/identifiers/Euid.h"
#include "vso/mesh/Hop.h"
#include "vso/mesh/Route.h"
#include "vso/mesh/Zap.h"
#include "vso/node/NetworkHealth.h"
#include "vso/node/ZigbeeNode.h"

namespace qx::app {

/// Owns the nodes and the access points of one mesh, and the context that its services run on. What it does with a
/// frame is what a server process would do with it; it sends nothing. For one thread.
///
/// A device is a node from its first announcement on. An access point is known by the nodes: it is the source of a
/// short address that their tables of access points name, or 0, the coordinator's; or it announces itself as a
/// coordinator. A node stays one, whatever others say. An access point is the coordinator while its address is 0.
///
/// A short address has one owner among the nodes, and one among the access points, who spoke from it last. A node that
/// lost its own has UNKNOWN_ADDRESS until it speaks again; an access point that lost its own is gone.
///
/// Frames may come late. What one tells of counts as of its time, but no earlier than what was counted last.
class MeshServer {
 public:
  using Nodes = std::map<Euid, ZigbeeNode>;
  using Zaps = std::map<Euid, Zap>;

  /// What became of a frame.
  enum class Outcome {
    TAKEN,    ///< It changed a record, or was handed on as metrics.
    HEARD,    ///< It says nothing that is kept, but that its source is there.
    BROKEN,   ///< It is not whole; nothing was changed.
    STRANGER  ///< Nothing was changed: nobody knows its source, and it neither tells of a failed route to a node nor
              ///< is the announcement of a new one; or that one says that it is a coordinator, and has no address; or
              ///< there are MOST_NODES.
  };
  struct Counts {
    std::size_t taken = 0;
    std::size_t heard = 0;
    std::size_t broken = 0;
    std::size_t strangers = 0;
    std::size_t total() const { return taken + heard + broken + strangers; }
  };

  /// Seconds of silence after which a node counts as unreachable; one that sleeps, and after which such a one is
  /// asleep.
  static constexpr std::time_t SILENCE = 3 * 3600;
  static constexpr std::time_t SLEEPERS_SILENCE = 24 * 3600;
  static constexpr std::time_t NAP = 60;

  /// Of a node whose short address is not known. This address and those from FIRST_BROADCAST on are nobody's.
  static constexpr unsigned short UNKNOWN_ADDRESS = 0xFFFF;
  static constexpr unsigned short FIRST_BROADCAST = 0xFFF8;
  /// As many as there are short addresses.
  static constexpr std::size_t MOST_NODES = FIRST_BROADCAST;

  /// An empty mesh. `start` is when the server begins to count, seconds since 1970.
  explicit MeshServer(std::time_t start) { ZigbeeNode::vessoriStartTime(start); }
  MeshServer(const MeshServer&) = delete;
  MeshServer& operator=(const MeshServer&) = delete;

  /// What a caller's own services may run on too.
  boost::asio::io_context& context() { return context_; }

  Outcome take(const RecordedFrame& frame);
  const Counts& counts() const { return counts_; }

  const Nodes& nodes() const { return nodes_; }
  const Zaps& zaps() const { return zaps_; }
  /// Null if there is no such node.
  ZigbeeNode* node(const Euid& euid);

  /// Replaces what is known, as after a restart.
  void restore(Nodes nodes, Zaps zaps);

  /// Says of each node whether it is reachable and awake at `now`.
  void look(std::time_t now);
  /// The same of one node.
  static void look(ZigbeeNode& node, std::time_t now);
  /// A new report of one node, or of all nodes. Empty if there is no such node.
  NetworkHealth health(const Euid& euid);
  NetworkHealth health();

 private:
  struct Pages {
    TablePages<Hop> hops;
    TablePages<Route> routes;
  };
  /// Whom a frame comes from: a node, an access point, or neither.
  struct Source {
    ZigbeeNode* node = nullptr;
    Zap* zap = nullptr;
    bool isKnown() const { return node != nullptr || zap != nullptr; }
  };

  Outcome sorted(const RecordedFrame& frame);
  Outcome announced(const RecordedFrame& frame);
  Outcome diagnosed(const RecordedFrame& frame, ZigbeeNode& node);
  Outcome answered(const RecordedFrame& frame);
  Outcome routeFailed(const RecordedFrame& frame);
  bool isZap(const RecordedFrame& frame) const;
  Source heard(const RecordedFrame& frame);
  void heardNode(ZigbeeNode& node, const RecordedFrame& frame);
  Zap& heardZap(const RecordedFrame& frame);
  void settle(ZigbeeNode& node, unsigned short address);
  void settle(Zap& zap, unsigned short address);
  void nameZaps(const ZigbeeNode& node);
  void forgetZaps(const ZigbeeNode& node);

  boost::asio::io_context context_;
  Nodes nodes_;
  Zaps zaps_;
  Counts counts_;
  /// Tables of which some pages are still to come.
  std::map<Euid, Pages> pages_;
  ShortAddresses nodeAddresses_;
  ShortAddresses zapAddresses_;
  /// How many rows of the nodes' tables name a short address that of an access point.
  std::unordered_map<unsigned short, std::size_t> zapNamings_;
};

/// "taken", "heard", "broken", "stranger".
const char* nameOf(MeshServer::Outcome outcome);

}  // namespace qx::app
