// The message of a health report into its record and out again in all forms. Reachable from outside: the server merges
// reports that other processes send.
#include <google/protobuf/util/message_differencer.h>

#include <boost/smart_ptr/make_shared.hpp>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <sstream>
#include <string>

#include <google/protobuf/stubs/logging.h>
#include <log4cplus/initializer.h>
#include <log4cplus/logger.h>
#include <log4cplus/nullappender.h>

#include "fuzz/support/trapUnless.h"
#include "qxresponse/IResponse.h"
#include "qxxml/XmlReader.h"
#include "qxxml/XmlWriter.h"
#include "vso/node/NetworkHealth.h"
#include "vso/proto/NetworkHealthPBuf.pb.h"

namespace {

using google::protobuf::util::MessageDifferencer;
using qx::NetworkHealth;
using qx::fuzz::trapUnless;
using qx::pb::NetworkHealthPBuf;

/// Counts what is opened and written.
class CountingResponse : public qx::response::IResponse {
 public:
  void startObject(const std::string& /*name*/, int /*reserved*/) override { ++depth; }
  void endObject() override { close(); }
  void startArray(const std::string& /*name*/, int /*reserved*/) override { ++depth; }
  void endArray() override { close(); }
  void addString(const std::string& name, const std::string& /*value*/) override {
    if (name == "value_") ++values;
  }
  void addInteger(const std::string& /*name*/, long long /*value*/) override {}
  void addCount(const std::string& /*name*/, unsigned long long /*value*/) override {}

  int depth = 0;
  std::size_t values = 0;

 private:
  void close() {
    trapUnless(depth > 0, "nothing is closed that is not open");
    --depth;
  }
};

std::string printed(const NetworkHealth& health) {
  std::ostringstream out;
  health.print(out);
  return out.str();
}

void checkForms(const NetworkHealth& health) {
  const std::unique_ptr<NetworkHealth> copy(health.clone());
  trapUnless(*copy == health && !(*copy != health), "a copy is equal");
  const std::string text = printed(health);
  trapUnless(text == printed(*copy), "and prints alike");
  trapUnless(text.rfind("{version_ = ", 0) == 0 && text.substr(text.size() - 2) == "]}", "a report prints whole");

  const std::unique_ptr<NetworkHealthPBuf> written(health.toProtobuf());
  NetworkHealthPBuf parsed;
  trapUnless(parsed.ParseFromString(written->SerializeAsString()), "what a report writes parses");
  NetworkHealth restored;
  trapUnless(!restored.fromProtobuf(parsed), "a report reads what it wrote");
  trapUnless(restored == health, "a report survives its message");

  std::ostringstream out;
  {
    qx::XmlWriter writer(out);
    health.toXml(writer, "health");
  }
  qx::XmlReader reader(out.str());
  while (reader.read()) continue;
  trapUnless(reader.state() != 2, "a report writes well-formed XML");

  const auto response = boost::make_shared<CountingResponse>();
  health.toIResponse(response);
  std::size_t items = 0;
  for (const auto& node : health.nodeHealth()) items += node.second.size();
  trapUnless(response->depth == 0 && response->values == items, "a response is closed, and has all values");
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/) {
  // Every node that is there already is warned of, and nobody reads it here.
  static const log4cplus::Initializer logging;
  log4cplus::Logger::getRoot().addAppender(log4cplus::SharedAppenderPtr(new log4cplus::NullAppender()));
  // Nor does anybody read of each text that is not UTF-8, for which the parser refuses an input.
  google::protobuf::SetLogHandler(nullptr);
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  NetworkHealthPBuf message;
  if (!message.ParseFromArray(data, static_cast<int>(size))) return 0;

  NetworkHealth health;
  trapUnless(!health.fromProtobuf(message), "a report that is empty takes every node");
  trapUnless(health.version() == message.version(), "version");
  trapUnless(health.nodeHealth().size() == static_cast<std::size_t>(message.nodehealth_size()), "nodes");
  const std::unique_ptr<NetworkHealthPBuf> written(health.toProtobuf());
  message.DiscardUnknownFields();
  trapUnless(MessageDifferencer::Equals(*written, message), "a message survives its report");
  checkForms(health);

  const NetworkHealth before(health);
  trapUnless(health.fromProtobuf(message) == !message.nodehealth().empty(), "a node that is there is refused");
  trapUnless(health == before, "and keeps its items");
  checkForms(health);
  return 0;
}
