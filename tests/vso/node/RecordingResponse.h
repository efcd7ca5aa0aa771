// What is written to a response, call by call.
#pragma once

#include <boost/smart_ptr/make_shared.hpp>
#include <string>
#include <vector>

#include "qxresponse/IResponse.h"

namespace qx::test {

class RecordingResponse : public response::IResponse {
 public:
  void startObject(const std::string& name, int reserved) override { start("startObject", name, reserved); }
  void endObject() override { calls.emplace_back("endObject"); }
  void startArray(const std::string& name, int reserved) override { start("startArray", name, reserved); }
  void endArray() override { calls.emplace_back("endArray"); }
  void addString(const std::string& name, const std::string& value) override {
    calls.push_back("addString " + name + " " + value);
  }
  void addInteger(const std::string& name, long long value) override {
    calls.push_back("addInteger " + name + " " + std::to_string(value));
  }
  void addCount(const std::string& name, unsigned long long value) override {
    calls.push_back("addCount " + name + " " + std::to_string(value));
  }

  std::vector<std::string> calls;

 private:
  void start(const std::string& call, const std::string& name, int reserved) {
    calls.push_back(call + " " + name + " " + std::to_string(reserved));
  }
};

/// The calls that `write` makes.
template <typename Write>
std::vector<std::string> responseCalls(Write write) {
  const auto recording = boost::make_shared<RecordingResponse>();
  write(recording);
  return recording->calls;
}

}  // namespace qx::test
