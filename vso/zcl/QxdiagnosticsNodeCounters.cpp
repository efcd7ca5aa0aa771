#include "vso/zcl/QxdiagnosticsNodeCounters.h"

#include <log4cplus/logger.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <iterator>
#include <memory>

#include "vso/connectors/QxMetricsClient.h"
#include "vso/identifiers/FrameReader.h"
#include "vso/logging/Log.h"
#include "vso/proto/QxdiagnosticsNodeCountersPBuf.pb.h"
#include "vso/serial/xmlHelpers.h"
#include "vso/zcl/getHostName.h"

namespace qx {

namespace {

const log4cplus::Logger logger = log4cplus::Logger::getRoot();

using Counters = QxdiagnosticsNodeCounters;
using Message = pb::QxdiagnosticsNodeCountersPBuf;

struct Field {
  const char* element;
  unsigned short Counters::*value;
  std::uint32_t (Message::*get)() const;
  void (Message::*set)(std::uint32_t);
};

/// In the order of the wire and of the serial forms.
constexpr Field FIELDS[] = {
    {"version_", &Counters::version_, &Message::version, &Message::set_version},
    {"mac_rx_unicasts_", &Counters::mac_rx_unicasts_, &Message::macrxunicasts, &Message::set_macrxunicasts},
    {"mac_tx_unicasts_", &Counters::mac_tx_unicasts_, &Message::mactxunicasts, &Message::set_mactxunicasts},
    {"mac_tx_unicast_retries_", &Counters::mac_tx_unicast_retries_, &Message::mactxunicastretries,
     &Message::set_mactxunicastretries},
    {"mac_tx_unicast_failures_", &Counters::mac_tx_unicast_failures_, &Message::mactxunicastfailures,
     &Message::set_mactxunicastfailures},
    {"mac_rx_broadcasts_", &Counters::mac_rx_broadcasts_, &Message::macrxbroadcasts, &Message::set_macrxbroadcasts},
    {"mac_tx_broadcasts_", &Counters::mac_tx_broadcasts_, &Message::mactxbroadcasts, &Message::set_mactxbroadcasts},
    {"aps_rx_unicasts_", &Counters::aps_rx_unicasts_, &Message::apsrxunicasts, &Message::set_apsrxunicasts},
    {"aps_tx_unicasts_", &Counters::aps_tx_unicasts_, &Message::apstxunicasts, &Message::set_apstxunicasts},
    {"aps_tx_unicast_retries_", &Counters::aps_tx_unicast_retries_, &Message::apstxunicastretries,
     &Message::set_apstxunicastretries},
    {"aps_tx_unicast_failures_", &Counters::aps_tx_unicast_failures_, &Message::apstxunicastfailures,
     &Message::set_apstxunicastfailures},
    {"aps_rx_broadcasts_", &Counters::aps_rx_broadcasts_, &Message::apsrxbroadcasts, &Message::set_apsrxbroadcasts},
    {"aps_tx_broadcasts_", &Counters::aps_tx_broadcasts_, &Message::apstxbroadcasts, &Message::set_apstxbroadcasts},
    {"nwk_frame_counter_failures_", &Counters::nwk_frame_counter_failures_, &Message::nwkframecounterfailures,
     &Message::set_nwkframecounterfailures},
    {"aps_frame_counter_failures_", &Counters::aps_frame_counter_failures_, &Message::apsframecounterfailures,
     &Message::set_apsframecounterfailures},
};
static_assert(std::size(FIELDS) == Counters::FIELD_COUNT, "every field is in the list");
static_assert(sizeof(Counters) == Counters::WIRE_SIZE, "and there is no other");

}  // namespace

QxdiagnosticsNodeCounters::QxdiagnosticsNodeCounters(std::initializer_list<unsigned short> values) {
  if (values.size() != FIELD_COUNT) {
    constexpr const char* WRONG_NUMBER = "QxdiagnosticsNodeCounters: invalid number of initializers";
    QxMetricsClient::instance().send(std::string(program_invocation_short_name) + "." + getHostName(), "log.error",
                                     WRONG_NUMBER);
    VSO_LOG(logger, log4cplus::ERROR_LOG_LEVEL, WRONG_NUMBER);
    return;
  }
  const unsigned short* value = values.begin();
  for (const Field& field : FIELDS) this->*field.value = *value++;
}

bool QxdiagnosticsNodeCounters::operator==(const QxdiagnosticsNodeCounters& other) const {
  return std::all_of(std::begin(FIELDS), std::end(FIELDS),
                     [&](const Field& field) { return this->*field.value == other.*field.value; });
}

void QxdiagnosticsNodeCounters::read(FrameReader& in) {
  for (const Field& field : FIELDS) this->*field.value = in.u16be();
}

pb::QxdiagnosticsNodeCountersPBuf* QxdiagnosticsNodeCounters::toProtobuf() const {
  auto message = std::make_unique<Message>();
  for (const Field& field : FIELDS) (message.get()->*field.set)(this->*field.value);
  return message.release();
}

bool QxdiagnosticsNodeCounters::fromProtobuf(const pb::QxdiagnosticsNodeCountersPBuf& message) {
  for (const Field& field : FIELDS) this->*field.value = static_cast<unsigned short>((message.*field.get)());
  return false;
}

void QxdiagnosticsNodeCounters::toXml(XmlWriter& writer, const std::string& name) const {
  const detail::XmlObject element(writer, name);
  for (const Field& field : FIELDS) writer.writeElement(field.element, this->*field.value);
}

}  // namespace qx
