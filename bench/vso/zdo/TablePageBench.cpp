// Pages of the neighbour and the routing table into lists, beside a decode of the same bytes by hand into the same
// list.
#include <benchmark/benchmark.h>

#include <cstring>
#include <list>

#include "vso/identifiers/Euid.h"
#include "vso/identifiers/PanId.h"
#include "vso/identifiers/U255Buff.h"
#include "vso/mesh/Hop.h"
#include "vso/mesh/Route.h"
#include "vso/zdo/ZdoNetworkLqiResponse.h"
#include "vso/zdo/ZdoNetworkRtgResponse.h"

namespace {

using Frame = qx::U255Buff<unsigned char>;

constexpr unsigned int HOPS = 11;
constexpr unsigned int ROUTES = 10;

/// A page of `count` entries of `size` bytes; every byte of an entry differs from that of its neighbours.
Frame pageOf(unsigned char count, unsigned int size) {
  unsigned char bytes[Frame::CAPACITY] = {0x07, 0x00, count, 0x00, count};
  for (unsigned int i = 0; i < count * size; ++i) bytes[5 + i] = static_cast<unsigned char>(i * 37 + 11);
  return {bytes, 5 + count * size};
}

boost::logic::tribool triboolOf(unsigned char bits, unsigned char whenTrue) {
  if (bits > 1) return boost::logic::indeterminate;
  return bits == whenTrue;
}

void NeighbourPage_limit(benchmark::State& state) {
  const Frame received = pageOf(HOPS, 22);
  std::list<qx::Hop> hops;
  for (auto _ : state) {
    benchmark::DoNotOptimize(received);
    hops.clear();
    const unsigned char count = received.contents[4];
    for (unsigned int i = 0; i < count; ++i) {
      const unsigned char* entry = received.contents + 5 + 22 * i;
      qx::PanId panId(entry);
      panId.byteSwap();
      qx::Euid lid(entry + 8);
      lid.byteSwap();
      const auto neighbor = static_cast<unsigned short>(entry[16] | entry[17] << 8);
      const unsigned char flags = entry[18];
      const unsigned char type = (flags & 3) == 3 ? 0 : (flags & 3) + 1;
      const int relationship = flags >> 4 & 7;
      hops.emplace_back(neighbor, entry[21], lid, type, triboolOf(flags >> 2 & 3, 0),
                        relationship > 4 ? qx::NONE_OF_THE_ABOVE : static_cast<qx::HopRelationship>(relationship),
                        triboolOf(entry[19] & 3, 1), entry[20], panId);
    }
    benchmark::DoNotOptimize(hops);
  }
}
BENCHMARK(NeighbourPage_limit);

void NeighbourPage(benchmark::State& state) {
  const qx::ZdoNetworkLqiResponse page(pageOf(HOPS, 22));
  std::list<qx::Hop> hops;
  for (auto _ : state) {
    benchmark::DoNotOptimize(page);
    page.hops(hops);
    benchmark::DoNotOptimize(hops);
  }
}
BENCHMARK(NeighbourPage);

void RoutingPage_limit(benchmark::State& state) {
  const Frame received = pageOf(ROUTES, 5);
  std::list<qx::Route> routes;
  for (auto _ : state) {
    benchmark::DoNotOptimize(received);
    routes.clear();
    const unsigned char count = received.contents[4];
    for (unsigned int i = 0; i < count; ++i) {
      const unsigned char* entry = received.contents + 5 + 5 * i;
      const unsigned char flags = entry[2];
      const int status = flags & 7;
      routes.emplace_back(static_cast<unsigned short>(entry[0] | entry[1] << 8),
                          static_cast<unsigned short>(entry[3] | entry[4] << 8),
                          status > 4 ? qx::ROUTE_UNKNOWN : static_cast<qx::RouteStatus>(status), (flags & 8) != 0,
                          (flags & 16) != 0, (flags & 32) != 0);
    }
    benchmark::DoNotOptimize(routes);
  }
}
BENCHMARK(RoutingPage_limit);

void RoutingPage(benchmark::State& state) {
  const qx::ZdoNetworkRtgResponse page(pageOf(ROUTES, 5));
  std::list<qx::Route> routes;
  for (auto _ : state) {
    benchmark::DoNotOptimize(page);
    page.routes(routes);
    benchmark::DoNotOptimize(routes);
  }
}
BENCHMARK(RoutingPage);

}  // namespace
