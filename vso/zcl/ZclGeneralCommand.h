// Command identifiers of the general commands, which are the same for all clusters.
#pragma once

namespace qx::ZclGeneralCommand {

// The general commands whose payload the library builds or reads (ZCL standard, general command frame).
constexpr unsigned char READ_ATTRIBUTES = 0;
constexpr unsigned char READ_ATTRIBUTES_RESPONSE = 1;
constexpr unsigned char WRITE_ATTRIBUTES = 2;
constexpr unsigned char WRITE_ATTRIBUTES_RESPONSE = 4;
constexpr unsigned char WRITE_ATTRIBUTES_NO_RESPONSE = 5;
constexpr unsigned char REPORT_ATTRIBUTES = 10;
constexpr unsigned char DEFAULT_RESPONSE = 11;

}  // namespace qx::ZclGeneralCommand
