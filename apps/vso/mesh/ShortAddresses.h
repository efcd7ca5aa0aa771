// Who is where in a mesh.
#pragma once

#include <map>
#include <optional>
#include <unordered_map>

#include "vso/identifiers/Euid.h"

namespace qx::app {

/// The owners of short addresses: an address has one at most, and an owner has one address at most.
class ShortAddresses {
 public:
  /// Makes `euid` the owner of `address`, in place of the address it had. Returns whose it was, if it was another's.
  std::optional<Euid> give(unsigned short address, const Euid& euid);
  /// Null if there is none.
  const Euid* ownerOf(unsigned short address) const;
  void clear();

 private:
  std::unordered_map<unsigned short, Euid> owners_;
  std::map<Euid, unsigned short> addresses_;
};

}  // namespace qx::app
