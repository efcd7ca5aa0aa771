// Stands in for the client of the server: does what a test tells it to, and takes note of what it was asked.
#pragma once

#include <boost/asio/io_context.hpp>
#include <functional>
#include <string>
#include <vector>

namespace qx {

class StatsdClient {
 public:
  inline static std::function<StatsdClient*()> onGetInstance;
  inline static std::function<void()> onSetAsioContext;
  inline static std::function<void()> onSetServer;
  /// The calls of all operations but getInstance, in order.
  inline static std::vector<std::string> calls;
  inline static boost::asio::io_context* context = nullptr;

  /// All goes well.
  static void reset() {
    onGetInstance = [] {
      static StatsdClient client;
      return &client;
    };
    onSetAsioContext = onSetServer = [] {};
    calls.clear();
    context = nullptr;
  }

  static StatsdClient* getInstance() { return onGetInstance(); }

  bool setAsioContext(boost::asio::io_context* given, bool ownThread) {
    calls.push_back(std::string("setAsioContext ") + (ownThread ? "true" : "false"));
    context = given;
    onSetAsioContext();
    return false;
  }

  bool setServer(const std::string& address, unsigned int port) {
    calls.push_back("setServer " + address + " " + std::to_string(port));
    onSetServer();
    return false;
  }

  bool string(const std::string& name, const std::string& key, const std::string& value) {
    calls.push_back("string '" + name + "' '" + key + "' '" + value + "'");
    return false;
  }

  bool jsonObject(const std::string& name, const std::string& key, const std::string& value) {
    calls.push_back("jsonObject '" + name + "' '" + key + "' '" + value + "'");
    return false;
  }
};

}  // namespace qx
