#include "vso/runtime/ReferencedBool.h"

#include "vso/runtime/MemberLock.h"

namespace qx {

using detail::MemberLock;

ReferencedBool::operator bool() const {
  const MemberLock references(referenceCountMutex_, "referenceCountMutex_");
  const MemberLock value(valMutex_, "valMutex_");
  return referenceCount_ > 0 ? val_ : !val_;
}

void ReferencedBool::operator++(int) {
  const MemberLock references(referenceCountMutex_, "referenceCountMutex_");
  ++referenceCount_;
}

void ReferencedBool::operator--(int) {
  const MemberLock references(referenceCountMutex_, "referenceCountMutex_");
  if (referenceCount_ > 0) --referenceCount_;
}

ReferencedBool& ReferencedBool::operator=(bool value) {
  const MemberLock lock(valMutex_, "valMutex_");
  val_ = value;
  return *this;
}

}  // namespace qx
