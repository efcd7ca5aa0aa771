// A health report: the metrics of one node or several.
#pragma once

#include <boost/smart_ptr/shared_ptr.hpp>
#include <iosfwd>
#include <map>
#include <string>
#include <vector>

#include "vso/identifiers/Euid.h"
#include "vso/node/NetworkHealthItem.h"

namespace qx {

namespace pb {
class NetworkHealthPBuf;
}

/// The metrics of each node, by its long address and in the order in which they were added.
class NetworkHealth {
 public:
  using NodeHealth = std::map<Euid, std::vector<NetworkHealthItem>>;

  /// Of the report's format.
  static constexpr unsigned int VERSION = 1;

  /// Compare everything, the order of a node's metrics included.
  bool operator==(const NetworkHealth& other) const;
  bool operator!=(const NetworkHealth& other) const { return !(*this == other); }

  unsigned int version() const { return version_; }
  const NodeHealth& nodeHealth() const { return nodeHealth_; }
  /// Replaces the metrics of one node.
  void nodeHealth(const Euid& node, std::vector<NetworkHealthItem> items);

  /// Writes "{version_ = 1, nodeHealth_ = [{ADDRESS, [ITEM, ITEM]}, ...]}" and returns the stream.
  std::ostream& print(std::ostream& out) const;
  /// A copy. Caller owns the result.
  NetworkHealth* clone() const;

  /// Caller owns the result.
  pb::NetworkHealthPBuf* toProtobuf() const;
  /// Takes the version and adds the nodes to those that are there. True on failure: a node that is there already keeps
  /// its metrics, which is logged.
  bool fromProtobuf(const pb::NetworkHealthPBuf& message);
  void toXml(XmlWriter& writer, const std::string& name) const;
  /// Writes the description of the metrics once, that of the first node, since all nodes report the same; then each
  /// node's names and values.
  void toIResponse(boost::shared_ptr<response::IResponse> response) const;

 private:
  unsigned int version_ = VERSION;
  NodeHealth nodeHealth_;
};

}  // namespace qx
