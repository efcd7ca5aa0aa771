#include <vso/vso.h>

#include <iostream>
#include <list>

int main() {
  qx::Euid radio;
  radio = "0011223344556677";

  // The path that was learnt from a node to the access point, from the node's end on.
  const unsigned short relays[] = {0x1111, 0x2222, 0x3333};
  qx::SourceRoute route(relays, 3, radio, 0x0001);
  std::cout << route.hops() << " hops over " << route << std::dec << "\n";
  std::cout << "as a frame lists them: " << route.printSourceRouteOrder(" ") << "\n";
  for (int i = 0; i < 29; ++i) route.failed(1);
  std::cout << "bad after 29 failures: " << route.bad();
  route.failed(1);
  std::cout << ", after 30: " << route.bad() << "\n";

  // An access point with its table of neighbours.
  qx::Zap zap;
  qx::Euid neighbour;
  neighbour = "8899aabbccddeeff";
  zap.setHopInfo(0x1234, neighbour, 200);
  zap.setHopInfo(0x1234, neighbour, 180);  // heard again: the same row
  std::list<qx::Hop> hops;
  zap.getHopList(hops);
  std::cout << hops.size() << " neighbour, LQI " << static_cast<int>(zap.getHop(neighbour).lqi_) << "\n";

  // What is not found is told by a record that stands for nothing.
  const bool isKnown = zap.getHop(0x4321).neighbor_ != qx::Hop::INVALID.neighbor_;
  std::cout << "0x4321 is " << (isKnown ? "known" : "not known") << "\n";
}
