#include "vso/zdo/ZdoSeqNumPeddler.h"

namespace qx {

ZdoSeqNumPeddler& ZdoSeqNumPeddler::instance() {
  static ZdoSeqNumPeddler peddler;
  return peddler;
}

unsigned char ZdoSeqNumPeddler::next() { return detail::dealSequenceNumber(mutex_, last_); }

}  // namespace qx
