#include "vso/runtime/DeposableBool.h"

#include <ostream>

#include "vso/runtime/MemberLock.h"

namespace qx {

using detail::MemberLock;

DeposableBool::operator bool() const {
  const MemberLock elections(electionsMutex_, "electionsMutex_");
  const MemberLock value(valMutex_, "valMutex_");
  return reads();
}

void DeposableBool::elect(const std::string& name) {
  const MemberLock elections(electionsMutex_, "electionsMutex_");
  elections_.insert(name);
}

void DeposableBool::depose(const std::string& name) {
  const MemberLock elections(electionsMutex_, "electionsMutex_");
  elections_.erase(name);
}

std::ostream& operator<<(std::ostream& out, const DeposableBool& flag) {
  const auto text = [](bool value) { return value ? "true" : "false"; };
  {
    const MemberLock elections(flag.electionsMutex_, "electionsMutex_");
    const MemberLock value(flag.valMutex_, "valMutex_");
    out << "VAL: " << text(flag.val_) << " BOOL: " << text(flag.reads()) << ' ';
  }
  const MemberLock elections(flag.electionsMutex_, "electionsMutex_");
  for (const std::string& name : flag.elections_) out << name << ' ';
  return out;
}

}  // namespace qx
