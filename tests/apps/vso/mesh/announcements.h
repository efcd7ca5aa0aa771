// Lines of a recording, for tests that need nodes.
#pragma once

#include <string>

#include "apps/vso/mesh/RecordedFrame.h"
#include "vso/identifiers/hexify.h"

namespace qx::test {

/// The announcement of a router, a node of the product "qx:lamp", as a line of a recording.
inline std::string announcementOf(const std::string& euid, unsigned char bootCount, const std::string& time = "now",
                                  const std::string& shortAddress = "0x1a2b") {
  std::string boots;
  hexify(&bootCount, 1, boots, false);
  return time + " " + euid + " " + shortAddress + " 0xc25f 0x0001 " +
         "18 01 0a "     // header: from the server, sequence, report attributes
         "00 00 20 02 "  // device type: router
         "06 00 21 " +   // boot count
         boots +
         " 00 " +                       //
         "07 00 42 07 71783a6c616d70";  // product string
}

inline app::RecordedFrame frameOf(const std::string& line) { return *app::parseRecordedFrame(line); }

}  // namespace qx::test
