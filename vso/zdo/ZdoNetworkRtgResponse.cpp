#include "vso/zdo/ZdoNetworkRtgResponse.h"

#include "vso/mesh/Route.h"

namespace qx {

namespace {

constexpr RouteStatus STATUSES[] = {ROUTE_ACTIVE,
                                    ROUTE_DISCOVERY_UNDERWAY,
                                    ROUTE_DISCOVERY_FAILED,
                                    ROUTE_INACTIVE,
                                    ROUTE_VALIDATION_UNDERWAY,
                                    ROUTE_UNKNOWN,
                                    ROUTE_UNKNOWN,
                                    ROUTE_UNKNOWN};
constexpr unsigned char STATUS_MASK = 0x07;
constexpr unsigned char MEMORY_CONSTRAINED = 0x08;
constexpr unsigned char MANY_TO_ONE = 0x10;
constexpr unsigned char ROUTE_RECORD_REQUIRED = 0x20;

}  // namespace

void ZdoNetworkRtgResponse::routes(std::list<Route>& out) const {
  out.clear();
  detail::TableEntries<ENTRY_SIZE> page(*this);
  for (unsigned int i = 0; i < entries(); ++i) {
    FrameReader in = page.next();
    const unsigned short destination = in.u16le();
    const unsigned char flags = in.u8();
    const unsigned short nextHop = in.u16le();
    out.emplace_back(destination, nextHop, STATUSES[flags & STATUS_MASK], (flags & MEMORY_CONSTRAINED) != 0,
                     (flags & MANY_TO_ONE) != 0, (flags & ROUTE_RECORD_REQUIRED) != 0);
  }
}

}  // namespace qx
