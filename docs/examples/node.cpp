#include <vso/vso.h>

#include <iostream>

namespace {

void print(const char* when, qx::ZigbeeNode& node, const qx::BPosixTime& now) {
  qx::RebootHistogram days = node.rebootsHistogram();  // a copy, for to ask is to age
  std::cout << when << ": cumulative " << node.rebootCumulativeAverage(now) << " a day, light "
            << node.rebootCumulativeQuality(now) << "; sliding " << days.rate(now) << " a day, light "
            << node.rebootSlidingQuality(now) << "\n";
}

}  // namespace

int main() {
  qx::ZigbeeNode node;
  qx::Euid address;
  address = "0011223344556677";
  node.lid(address);
  node.resetRebootCounter();  // counts from now on

  const qx::BPosixTime start = node.rebootsHistogram().startTime();
  node.rebootsResetTime(start);
  const auto hours = [&](int count) { return start + boost::posix_time::hours(count); };

  for (int i = 0; i < 31; ++i) node.addRebootEvent(hours(1));
  print("on the first day", node, hours(2));

  // The report of now, the first day.
  if (node.updateNetworkHealth()) {
    for (const qx::NetworkHealthItem& item : node.networkHealth()->nodeHealth().at(address)) {
      if (item.name() == qx::ZigbeeNode::REBOOT_CUMULATIVE_COUNT ||
          item.name() == qx::ZigbeeNode::REBOOT_SLIDING_AVERAGE ||
          item.name() == qx::ZigbeeNode::REBOOT_SLIDING_QUALITY) {
        std::cout << "  " << item.name() << " = " << item.value() << " " << item.units() << "\n";
      }
    }
  }

  print("on the third", node, hours(60));
  print("on the eleventh", node, hours(250));
}
