// Writes the message of an access point to the file that is its argument, for readZap.py to read.
#include <fstream>
#include <memory>

#include "vso/mesh/Zap.h"
#include "vso/proto/ZapPBuf.pb.h"

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  qx::Euid id;
  id = "0011223344556677";
  const qx::PanId xpanId(std::string("8877665544332211"));
  qx::Zap zap(0xC0A80001, 4321, true, id, xpanId, 0x1A2B, 15, -7, 1, true, 20, 3);
  zap.setHopInfo(0x2233, id, 200);
  zap.setRoutes({qx::Route(0x1111, 0x2222, qx::ROUTE_INACTIVE, false, true, false)});
  const std::unique_ptr<qx::pb::ZapPBuf> message(zap.toProtobuf());
  std::ofstream out(argv[1], std::ios::binary);
  return message->SerializeToOstream(&out) && out.flush() ? 0 : 1;
}
