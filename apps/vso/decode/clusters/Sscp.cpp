#include <algorithm>

#include "apps/vso/decode/clusters/readings.h"
#include "vso/zcl/QxAttributes.h"
#include "vso/zcl/QxZclSscp.h"
#include "vso/zcl/ZclGeneralCommand.h"
#include "vso/zcl/ZclMessage.h"

namespace qx::app {

void addSscpReadings(const U255Buff<unsigned char>& bytes, DecodedFrame& decoded) {
  using namespace detail::QxAttributes;
  // The readers know the layout of a write alone.
  if (ZclMessage(bytes).commandIdentifier() != ZclGeneralCommand::WRITE_ATTRIBUTES_NO_RESPONSE) return;
  const QxZclSscp frame(bytes);
  const auto add = [&decoded](unsigned short id, const char* name, unsigned int value) {
    const auto& attributes = *decoded.attributes;
    const bool isThere = std::any_of(attributes.begin(), attributes.end(),
                                     [id](const DecodedAttribute& attribute) { return attribute.id == id; });
    if (isThere) decoded.readings.push_back({name, value});
  };
  add(ANNOUNCE_WINDOW.id, "announceWindow", frame.announceWindow());
  add(MTORR_PERIOD.id, "mtorrPeriod", frame.mtorrPeriod());
  add(ZAP_COUNT.id, "apCount", frame.apCount());
  add(CHANNEL.id, "channel", frame.channel());
}

}  // namespace qx::app
