#include "apps/vso/mesh/ShortAddresses.h"

namespace qx::app {

std::optional<Euid> ShortAddresses::give(unsigned short address, const Euid& euid) {
  const auto [owner, isNobodys] = owners_.emplace(address, euid);
  if (!isNobodys && owner->second == euid) return std::nullopt;
  std::optional<Euid> former;
  if (!isNobodys) {
    former = owner->second;
    addresses_.erase(owner->second);
    owner->second = euid;
  }
  const auto [own, isFirst] = addresses_.emplace(euid, address);
  if (!isFirst) {
    owners_.erase(own->second);
    own->second = address;
  }
  return former;
}

const Euid* ShortAddresses::ownerOf(unsigned short address) const {
  const auto found = owners_.find(address);
  return found == owners_.end() ? nullptr : &found->second;
}

void ShortAddresses::clear() {
  owners_.clear();
  addresses_.clear();
}

}  // namespace qx::app
