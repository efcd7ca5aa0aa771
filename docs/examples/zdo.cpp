#include <vso/vso.h>

#include <iostream>
#include <list>
#include <string>

int main() {
  qx::Euid router;
  router = "0011223344556677";

  // A table comes page by page; the first request asks from its first entry on.
  const qx::ZdoNetworkLqiRequest request(router, 0);
  std::string bytes;
  qx::hexify(request.contents, request.length_, bytes, true);
  std::cout << "to " << request.destination() << ", command 0x" << std::hex << request.commandId() << std::dec << ": "
            << bytes << "\n";

  // What came back: the sequence number of the request, success, 3 entries in all, from 0 on, 1 of them here.
  const std::string received =
      "0100030001"
      "1122334455667788"  // extended PAN id
      "ffeeddccbbaa9988"  // long address
      "34122501ff"        // short address, flags, permit joining, tree depth
      "c8";               // LQI
  qx::U255Buff<unsigned char> frame;
  frame.length_ = static_cast<unsigned int>(received.size() / 2);
  if (qx::deHexify(received, frame.contents, frame.length_) == nullptr) return 1;

  const qx::ZdoNetworkLqiResponse page(frame);
  if (page.seqNum() != request.seqNum() || page.status() != qx::QX_ZDP_SUCCESS) return 1;
  std::list<qx::Hop> hops;
  page.hops(hops);
  for (const qx::Hop& hop : hops) {
    std::cout << hop.neighbor_lid_ << " is a " << qx::Hop::toStr(hop.relationship_) << ", LQI "
              << static_cast<int>(hop.lqi_) << "\n";
  }

  // There is more: the next page begins behind this one.
  const int next = page.startIndex() + page.entries();
  if (next < page.totalNeighborTableEntriesOnDevice()) std::cout << "next page from " << next << "\n";
}
