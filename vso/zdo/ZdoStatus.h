// The status byte of a ZDO response.
#pragma once

namespace qx {

/// The values of a ZDO status byte that have a name: those of the device profile (128 to 137) and of the network layer
/// (197 on). Any other value may arrive.
enum ZdoStatus : int {
  QX_ZDP_SUCCESS = 0,
  QX_ZDP_INVALID_REQUEST_TYPE = 128,
  QX_ZDP_DEVICE_NOT_FOUND = 129,
  QX_ZDP_INVALID_ENDPOINT = 130,
  QX_ZDP_NOT_ACTIVE = 131,
  QX_ZDP_NOT_SUPPORTED = 132,
  QX_ZDP_TIMEOUT = 133,
  QX_ZDP_NO_MATCH = 134,
  QX_ZDP_TABLE_FULL = 135,
  QX_ZDP_NO_ENTRY = 136,
  QX_ZDP_NO_DESCRIPTOR = 137,
  QX_NWK_ALREADY_PRESENT = 197,
  QX_NWK_TABLE_FULL = 199,
  QX_NWK_UNKNOWN_DEVICE = 200,
};

}  // namespace qx
