#include "vso/node/NetworkHealth.h"

#include <log4cplus/logger.h>

#include <memory>
#include <ostream>
#include <utility>

#include "qxresponse/IResponse.h"
#include "vso/logging/Log.h"
#include "vso/proto/EuidPBuf.pb.h"
#include "vso/proto/NetworkHealthPBuf.pb.h"
#include "vso/serial/xmlHelpers.h"

namespace qx {

namespace {

const log4cplus::Logger logger = log4cplus::Logger::getRoot();

unsigned long long keyOf(const Euid& node) {
  const std::unique_ptr<pb::EuidPBuf> message(node.toProtobuf());
  return message->id();
}

}  // namespace

bool NetworkHealth::operator==(const NetworkHealth& other) const {
  return version_ == other.version_ && nodeHealth_ == other.nodeHealth_;
}

void NetworkHealth::nodeHealth(const Euid& node, std::vector<NetworkHealthItem> items) {
  nodeHealth_[node] = std::move(items);
}

std::ostream& NetworkHealth::print(std::ostream& out) const {
  out << "{version_ = " << version_ << ", nodeHealth_ = [";
  const char* betweenNodes = "";
  for (const auto& [node, items] : nodeHealth_) {
    out << betweenNodes << "{" << node << ", [";
    betweenNodes = ", ";
    const char* betweenItems = "";
    for (const NetworkHealthItem& item : items) {
      item.print(out << betweenItems);
      betweenItems = ", ";
    }
    out << "]}";
  }
  return out << "]}";
}

NetworkHealth* NetworkHealth::clone() const { return new NetworkHealth(*this); }

pb::NetworkHealthPBuf* NetworkHealth::toProtobuf() const {
  auto message = std::make_unique<pb::NetworkHealthPBuf>();
  message->set_version(version_);
  for (const auto& [node, items] : nodeHealth_) {
    auto* const field = (*message->mutable_nodehealth())[keyOf(node)].mutable_items();
    field->Reserve(static_cast<int>(items.size()));
    for (const NetworkHealthItem& item : items) field->AddAllocated(item.toProtobuf());
  }
  return message.release();
}

bool NetworkHealth::fromProtobuf(const pb::NetworkHealthPBuf& message) {
  version_ = message.version();
  bool failed = false;
  for (const auto& [key, vector] : message.nodehealth()) {
    std::vector<NetworkHealthItem> items(static_cast<std::size_t>(vector.items_size()));
    auto item = vector.items().begin();
    for (NetworkHealthItem& read : items) failed |= read.fromProtobuf(*item++);
    Euid node;
    failed |= node.fromProtobuf(key);
    if (!nodeHealth_.emplace(node, std::move(items)).second) {
      VSO_LOG(logger, log4cplus::WARN_LOG_LEVEL, "NetworkHealth::fromProtobuf: failed to insert NetworkHealthItem");
      failed = true;
    }
  }
  return failed;
}

void NetworkHealth::toXml(XmlWriter& writer, const std::string& name) const {
  constexpr unsigned int MAP_ITEM_VERSION = 0;
  const detail::XmlObject element(writer, name);
  writer.writeElement("version_", version_);
  const detail::XmlCollection nodes(writer, "nodeHealth_", nodeHealth_.size(), MAP_ITEM_VERSION);
  for (const auto& [node, items] : nodeHealth_) {
    const detail::XmlObject item(writer, "item");
    node.toXml(writer, "first");
    collectionToXml(items, writer, "second");
  }
}

void NetworkHealth::toIResponse(boost::shared_ptr<response::IResponse> response) const {
  response->startObject("NetworkHealth", 0);
  response->addInteger("version_", version_);
  if (!nodeHealth_.empty()) {
    const std::vector<NetworkHealthItem>& described = nodeHealth_.begin()->second;
    response->startArray("healthItemData", 0);
    response->addCount("count", described.size());
    for (const NetworkHealthItem& item : described) item.toIResponseData(response);
    response->endArray();
  }
  response->startArray("nodeHealth_", 0);
  response->addCount("count", nodeHealth_.size());
  for (const auto& [node, items] : nodeHealth_) {
    response->startObject("item", 0);
    response->addString("id", node.toString());
    response->startArray("healthItem", 0);
    response->addCount("count", items.size());
    for (const NetworkHealthItem& item : items) item.toIResponse(response);
    response->endArray();
    response->endObject();
  }
  response->endArray();
  response->endObject();
}

}  // namespace qx
