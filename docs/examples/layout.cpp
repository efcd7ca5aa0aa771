#include <vso/vso.h>

#include <iostream>
#include <string>

namespace {

constexpr unsigned short HOME_AUTOMATION = 0x0104;

void judge(unsigned short profile, unsigned short cluster, const std::string& hex) {
  const qx::ZclMessage frame(hex);
  std::cout << hex << ": " << qx::judgeFrame(profile, cluster, frame) << "\n";
}

}  // namespace

int main() {
  judge(HOME_AUTOMATION, qx::ZclOnOff::CLUSTER_ID, "1805010000001001");
  judge(HOME_AUTOMATION, qx::ZclOnOff::CLUSTER_ID, "18050100000010");
  judge(HOME_AUTOMATION, qx::ZclLevelControl::CLUSTER_ID, "010500800a");
  judge(HOME_AUTOMATION, 0x0B05, "010577");
  judge(0, qx::ZdoNetworkLqiResponse::COMMAND_ID, "0100190002");

  // The fields of a payload, one by one.
  const qx::ZclLevelControl frame(std::string("010500800a00"));
  const qx::CommandLayout* command = qx::findZclCommand(HOME_AUTOMATION, qx::ZclLevelControl::CLUSTER_ID, frame);
  if (command == nullptr) return 1;
  std::cout << command->name << ":\n";
  qx::PayloadWalk walk(*command, frame.payload());
  while (walk.next() && walk.isWhole()) {
    std::cout << "  " << walk.field().name << " at byte " << walk.value().at() << ", size " << walk.size() << "\n";
  }
}
