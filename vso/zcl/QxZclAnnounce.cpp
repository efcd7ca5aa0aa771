#include "vso/zcl/QxZclAnnounce.h"

#include <log4cplus/logger.h>

#include <algorithm>

#include "vso/identifiers/hexify.h"
#include "vso/logging/Log.h"
#include "vso/mesh/AccessPoint.h"
#include "vso/zcl/AttributeWalk.h"
#include "vso/zcl/QxAttributes.h"
#include "vso/zcl/ZclGeneralCommand.h"
#include "vso/zcl/ZclProfile.h"

namespace qx {

namespace {

using namespace detail::QxAttributes;
using detail::AttributeWalk;
using detail::recordOf;

const log4cplus::Logger logger = log4cplus::Logger::getRoot();

constexpr detail::RecordLayout REPORT = detail::RecordLayout::VALUE;

template <typename T>
T read(const QxZclAnnounce& frame, const detail::Attribute<T>& attribute) {
  return readFirst(frame, REPORT, attribute);
}

template <typename T>
bool has(const QxZclAnnounce& frame, const detail::Attribute<T>& attribute) {
  return frame.hasAttributeId(attribute.id, attribute.type);
}

/// Appends the entries of a table in hexadecimal text. The text may end within an entry, whose missing digits are then
/// what follows, mostly zeros.
void addAccessPoints(const AttributeRecordData::Data& text, std::list<AccessPoint>& list) {
  constexpr unsigned int DIGITS = 4;
  static_assert(AttributeRecordData::DATA_SIZE % DIGITS == 0, "an entry that begins within the data ends within it");
  const auto length = static_cast<unsigned int>(std::find(text.begin(), text.end(), '\0') - text.begin());
  for (unsigned int at = 0; at < length; at += DIGITS) {
    const unsigned char high = detail::byteOfDigits(text[at], text[at + 1]);
    const unsigned char low = detail::byteOfDigits(text[at + 2], text[at + 3]);
    list.emplace_back(static_cast<unsigned short>(high << 8 | low), static_cast<unsigned char>(at / DIGITS));
  }
}

}  // namespace

QxZclAnnounce::QxZclAnnounce(unsigned short announceWindow, unsigned short bootCount, unsigned char reflashVersion,
                             const std::string& firmwareVersion, const std::string& productString)
    : ZclMessage(ZclGeneralCommand::REPORT_ATTRIBUTES, false, false) {
  this->announceWindow(announceWindow);
  this->bootCount(bootCount);
  this->reflashVersion(reflashVersion);
  this->firmwareVersion(firmwareVersion);
  this->productString(productString);
}

short QxZclAnnounce::getProfileId() const { return ZclProfile::QX_ANNOUNCE; }
short QxZclAnnounce::getClusterId() const { return CLUSTER_ID; }

unsigned char QxZclAnnounce::deviceType() const { return read(*this, DEVICE_TYPE); }
unsigned short QxZclAnnounce::announceWindow() const { return read(*this, ANNOUNCE_WINDOW); }
unsigned short QxZclAnnounce::mtorrPeriod() const { return read(*this, MTORR_PERIOD); }
unsigned char QxZclAnnounce::numZaps() const { return read(*this, ZAP_COUNT); }
unsigned char QxZclAnnounce::reflashVersion() const { return read(*this, REFLASH_VERSION); }
unsigned short QxZclAnnounce::bootCount() const { return read(*this, BOOT_COUNT); }
std::string QxZclAnnounce::productString() const { return read(*this, PRODUCT_STRING); }
unsigned short QxZclAnnounce::apPollInterval() const { return read(*this, AP_POLL_INTERVAL); }
unsigned char QxZclAnnounce::channel() const { return read(*this, CHANNEL); }
unsigned short QxZclAnnounce::parentPollInterval() const { return read(*this, PARENT_POLL_INTERVAL); }
signed char QxZclAnnounce::nodeRssi() const { return read(*this, NODE_RSSI); }
unsigned char QxZclAnnounce::nodeLqi() const { return read(*this, NODE_LQI); }
signed char QxZclAnnounce::batteryLevel() const { return read(*this, BATTERY_LEVEL); }
unsigned char QxZclAnnounce::nodeRadioBars() const { return read(*this, NODE_RADIO_BARS); }

std::string QxZclAnnounce::firmwareVersion() const {
  AttributeWalk walk(*this, REPORT);
  if (!walk.find(FIRMWARE_VERSION.id)) return {};
  const AttributeRecordData::Data text = walk.value().readable();
  if (text[0] != 0) return detail::textOf(text);
  VSO_LOG(logger, log4cplus::INFO_LOG_LEVEL,
          "QxZclAnnounce::firmwareVersion: Firmware version pre-pended NULL to string");
  return detail::textOf(text, 1);
}

void QxZclAnnounce::apRouteTable(std::list<AccessPoint>& list) const {
  list.clear();
  AttributeWalk walk(*this, REPORT);
  while (walk.find(AP_ROUTE_TABLE.id)) addAccessPoints(walk.value().readable(), list);
}

void QxZclAnnounce::deviceType(unsigned char value) { addAttribute(REPORT, recordOf(DEVICE_TYPE, value)); }
void QxZclAnnounce::announceWindow(unsigned short value) { addAttribute(REPORT, recordOf(ANNOUNCE_WINDOW, value)); }
void QxZclAnnounce::mtorrPeriod(unsigned short value) { addAttribute(REPORT, recordOf(MTORR_PERIOD, value)); }
void QxZclAnnounce::numZaps(unsigned char value) { addAttribute(REPORT, recordOf(ZAP_COUNT, value)); }
void QxZclAnnounce::firmwareVersion(const std::string& value) {
  addAttribute(REPORT, recordOf(FIRMWARE_VERSION, value));
}
void QxZclAnnounce::reflashVersion(unsigned char value) { addAttribute(REPORT, recordOf(REFLASH_VERSION, value)); }
void QxZclAnnounce::bootCount(unsigned short value) { addAttribute(REPORT, recordOf(BOOT_COUNT, value)); }
void QxZclAnnounce::productString(const std::string& value) { addAttribute(REPORT, recordOf(PRODUCT_STRING, value)); }
void QxZclAnnounce::apPollInterval(unsigned short value) { addAttribute(REPORT, recordOf(AP_POLL_INTERVAL, value)); }
void QxZclAnnounce::channel(unsigned char value) { addAttribute(REPORT, recordOf(CHANNEL, value)); }
void QxZclAnnounce::parentPollInterval(unsigned short value) {
  addAttribute(REPORT, recordOf(PARENT_POLL_INTERVAL, value));
}
void QxZclAnnounce::nodeRssi(signed char value) { addAttribute(REPORT, recordOf(NODE_RSSI, value)); }
void QxZclAnnounce::nodeLqi(unsigned char value) { addAttribute(REPORT, recordOf(NODE_LQI, value)); }
void QxZclAnnounce::batteryLevel(signed char value) { addAttribute(REPORT, recordOf(BATTERY_LEVEL, value)); }
void QxZclAnnounce::nodeRadioBars(unsigned char value) { addAttribute(REPORT, recordOf(NODE_RADIO_BARS, value)); }

bool QxZclAnnounce::hasDeviceType() const { return has(*this, DEVICE_TYPE); }
bool QxZclAnnounce::hasAnnounceWindow() const { return has(*this, ANNOUNCE_WINDOW); }
bool QxZclAnnounce::hasMtorrPeriod() const { return has(*this, MTORR_PERIOD); }
bool QxZclAnnounce::hasNumZaps() const { return has(*this, ZAP_COUNT); }
bool QxZclAnnounce::hasFirmwareVersion() const { return has(*this, FIRMWARE_VERSION); }
bool QxZclAnnounce::hasReflashVersion() const { return has(*this, REFLASH_VERSION); }
bool QxZclAnnounce::hasBootCount() const { return has(*this, BOOT_COUNT); }
bool QxZclAnnounce::hasProductString() const { return has(*this, PRODUCT_STRING); }
bool QxZclAnnounce::hasApPollInterval() const { return has(*this, AP_POLL_INTERVAL); }
bool QxZclAnnounce::hasChannel() const { return has(*this, CHANNEL); }
bool QxZclAnnounce::hasParentPollInterval() const { return has(*this, PARENT_POLL_INTERVAL); }
bool QxZclAnnounce::hasApTable() const { return has(*this, AP_ROUTE_TABLE); }
bool QxZclAnnounce::hasNodeRssi() const { return has(*this, NODE_RSSI); }
bool QxZclAnnounce::hasNodeLqi() const { return has(*this, NODE_LQI); }
bool QxZclAnnounce::hasBatteryLevel() const { return has(*this, BATTERY_LEVEL); }
bool QxZclAnnounce::hasNodeRadioBars() const { return has(*this, NODE_RADIO_BARS); }

bool QxZclAnnounce::hasAttributeId(unsigned short id, unsigned char type) const {
  AttributeWalk walk(*this, REPORT);
  while (walk.find(id)) {
    if (walk.value().type() == type) return true;
  }
  return false;
}

}  // namespace qx
