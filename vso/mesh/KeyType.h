// The kinds of keys in a radio's key store.
#pragma once

namespace qx {

/// Any other number may come from a message.
enum KeyType : int {
  QX_UNKNOWN_KEY = 0,
  QX_TRUST_CENTER_LINK_KEY = 1,
  QX_TRUST_CENTER_MASTER_KEY = 2,
  QX_CURRENT_NETWORK_KEY = 3,
  QX_NEXT_NETWORK_KEY = 4,
  QX_APPLICATION_LINK_KEY = 5,
  QX_APPLICATION_MASTER_KEY = 6,
};

}  // namespace qx
