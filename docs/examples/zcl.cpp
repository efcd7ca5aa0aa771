#include <vso/vso.h>

#include <iostream>
#include <string>
#include <vector>

namespace {

void print(const std::string& what, const qx::ZclMessage& frame) {
  std::string bytes;
  qx::hexify(frame.contents, frame.length_, bytes, true);
  std::cout << what << ": " << bytes << "\n";
}

}  // namespace

int main() {
  // Building: each frame takes the next sequence number, here 0 and 1.
  qx::ZclOnOff toggle;
  toggle.setToggle();
  print("toggle", toggle);

  qx::ZclMessage read(qx::ZclGeneralCommand::READ_ATTRIBUTES, false, false);
  read.setReadAttributes({qx::ZclOnOff::ON_OFF});
  print("read attribute 0", read);

  // Reading: a typed reader answers with a value and whether the frame had it.
  const qx::ZclOnOff response(std::string("1801010000001001"));
  const qx::ZclReading<bool> on = response.on();
  if (on.state == qx::ZclReading<bool>::ANSWERED) std::cout << "on: " << on.value << "\n";

  // A report of the maker's announce cluster: device type, boot count, signal strength.
  const qx::QxZclAnnounce report(std::string("1c4010070a000020020600212a00130028c4"));
  std::cout << "booted " << report.bootCount() << " times, at " << static_cast<int>(report.nodeRssi()) << " dBm, "
            << (report.hasChannel() ? "channel told" : "channel not told") << "\n";

  // The same frame without knowledge of its cluster.
  std::vector<qx::ReportAttributeRecord> records;
  report.getReportAttributes(records);
  for (const qx::ReportAttributeRecord& record : records) {
    std::string value;
    if (!record.valueToString(value)) std::cout << record.hexId() << " = " << value << "\n";  // true is failure
  }
}
