// What the tests of the clusters' classes share: names, headers, and what all of their constructors do.
#pragma once

#include <gtest/gtest.h>

#include <string>

#include "support/Bytes.h"
#include "vso/zcl/ZclMessage.h"

namespace qx::test {

/// The longest name of a group or a scene, and its bytes.
inline const std::string NAME_OF_16 = "0123456789abcdef";
inline const std::string NAME_OF_16_HEX = "30 31 32 33 34 35 36 37 38 39 61 62 63 64 65 66";

/// A response's header up to its command, without and with a manufacturer code.
inline const std::string RESPONSE_HEADERS[] = {"09 07 ", "0d 40 10 07 "};

/// Bytes of a header whose command follows `header`.
inline unsigned int headerLength(const std::string& header) { return bytesOf(header).length_ + 1; }

/// By default a frame is one of its cluster without a command, and takes a sequence number.
template <typename Class>
void expectAClusterFrameByDefault() {
  const unsigned char sequence = ZclMessage::transactionSequenceNumber_;
  EXPECT_EQ(hex(Class()), hex(bytes({0x01, sequence, 0xFF})));
  EXPECT_EQ(ZclMessage::transactionSequenceNumber_, static_cast<unsigned char>(sequence + 1));
}

/// A received frame is taken as it is, as bytes and as text, and takes no sequence number.
template <typename Class>
void expectParsesBytesAndText() {
  const unsigned char before = ZclMessage::transactionSequenceNumber_;
  const Class fromBytes(bytesOf("05 40 10 07 02"));
  const Class fromText(std::string("0540100702"));
  EXPECT_EQ(hex(fromBytes), "05 40 10 07 02");
  EXPECT_EQ(hex(fromText), "05 40 10 07 02");
  EXPECT_TRUE(fromBytes.isManufacturerSpecific());
  EXPECT_TRUE(fromText.isManufacturerSpecific());
  EXPECT_EQ(ZclMessage::transactionSequenceNumber_, before);
}

}  // namespace qx::test
