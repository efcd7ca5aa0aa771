// A command of a cluster and what its builder makes of any frame.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <vector>

#include "support/Bytes.h"
#include "support/LogCapture.h"
#include "vso/zcl/TracedMessage.h"

namespace qx::test {

template <typename Class>
struct BuiltCommand {
  const char* name;
  void (*build)(Class&);
  std::string tail;  ///< Command identifier and payload.
  /// Of the virtual operations that write a header or look at a length, in order.
  std::vector<std::string> calls;
};

template <typename Class>
std::ostream& operator<<(std::ostream& out, const BuiltCommand<Class>& row) {
  return out << row.name;
}

/// Behind the sequence number that the constructor took, without another one.
template <typename Class>
void expectBuiltBehindTheSequence(const BuiltCommand<Class>& command) {
  Class frame;
  frame.setTsn(5);
  const unsigned char before = ZclMessage::transactionSequenceNumber_;
  command.build(frame);
  EXPECT_EQ(hex(frame), "01 05 " + command.tail);
  EXPECT_EQ(ZclMessage::transactionSequenceNumber_, before);
}

/// Behind a manufacturer code, and over any payload and control bits.
template <typename Class>
void expectBuiltOverAnyFrame(const BuiltCommand<Class>& command) {
  Class withCode(bytesOf("05 40 10 05 ff"));
  command.build(withCode);
  EXPECT_EQ(hex(withCode), "05 40 10 05 " + command.tail);

  Class full(bytesOf("1a 05 33 01 02 03 04 05 06 07 08"));
  command.build(full);
  EXPECT_EQ(hex(full), "01 05 " + command.tail);
}

/// By these virtual operations in this order, and with no warning.
template <typename Class>
void expectBuiltByItsCalls(const BuiltCommand<Class>& command) {
  TracedMessage<Class> traced;
  command.build(traced);
  EXPECT_THAT(traced.calls, testing::ElementsAreArray(command.calls));

  const LogCapture log;
  Class frame;
  command.build(frame);
  EXPECT_THAT(log.texts(), testing::IsEmpty());
}

}  // namespace qx::test
