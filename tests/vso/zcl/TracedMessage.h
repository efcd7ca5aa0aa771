// Which virtual operations of a message are called.
#pragma once

#include <string>
#include <vector>

#include "vso/identifiers/hexify.h"
#include "vso/zcl/ZclMessage.h"

namespace qx::test {

/// A message that notes the calls by which a header is written and a length checked, as "setFcf(04)". Its length counts
/// as bad whatever it is: nobody may look at that.
template <typename Message = ZclMessage>
class TracedMessage : public Message {
 public:
  using Message::Message;

  bool isValidLength() const override {
    calls.push_back("isValidLength()");
    return false;
  }
  void setFcf(unsigned char value) override {
    note("setFcf", value);
    Message::setFcf(value);
  }
  void setMc(unsigned short code) override {
    note("setMc", code);
    Message::setMc(code);
  }
  void setTsn(unsigned char sequence) override {
    note("setTsn", sequence);
    Message::setTsn(sequence);
  }
  void setCid(unsigned char commandId) override {
    note("setCid", commandId);
    Message::setCid(commandId);
  }

  mutable std::vector<std::string> calls;

 private:
  template <typename T>
  void note(const std::string& operation, T value) {
    std::string argument;
    hexify(&value, 1, argument, false);
    calls.push_back(operation + '(' + argument + ')');
  }
};

}  // namespace qx::test
