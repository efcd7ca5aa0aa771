// What the requests for a page of a table have in common.
#pragma once

#include <gtest/gtest.h>

#include "Frames.h"
#include "support/Bytes.h"
#include "vso/identifiers/Euid.h"

namespace qx::test {

/// The whole frame of a request for the page from entry 9 on, and what stands beside it.
template <typename Request>
void expectPageRequest(unsigned short command) {
  const Euid node = addressOf("0011223344556677");
  const unsigned char number = nextNumber();
  const Request request(node, 9);
  EXPECT_EQ(hex(request), hexOf(number) + " 09");
  EXPECT_EQ(request.length_, 2U);
  EXPECT_EQ(hexBehind(request), zeros(253));
  EXPECT_EQ(request.destination(), node);
  EXPECT_EQ(request.commandId(), command);
}

/// Every start index goes out as it is.
template <typename Request>
void expectAnyStartIndex() {
  for (int i = 0; i < 256; ++i) {
    const auto index = static_cast<unsigned char>(i);
    const Request request(Euid(), index);
    EXPECT_EQ(hex(request), hexOf(request.seqNum()) + " " + hexOf(index));
  }
}

}  // namespace qx::test
