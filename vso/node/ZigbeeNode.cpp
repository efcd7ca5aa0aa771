#include "vso/node/ZigbeeNode.h"

#include <algorithm>

#include "qxshared/hexStr.h"
#include "vso/proto/ZigbeeNodeDeviceTypePEnum.pb.h"

namespace qx {

namespace {

bool startsWith(const std::string& text, const char* start) { return text.rfind(start, 0) == 0; }

/// What stands for a separator of the product string; null for any other character.
const char* spelledOut(char c) {
  switch (c) {
    case '@':
      return "==";
    case '|':
      return "~~";
    case ':':
      return "##";
    default:
      return nullptr;
  }
}

}  // namespace

BPosixTime ZigbeeNode::vessoriStartTime_;

ZigbeeNode::ZigbeeNode(const Euid& lid, const std::string& product, const unsigned short& sid, const bool& online,
                       const unsigned char& reflashProfile, const std::string& fwVer, const unsigned short& bootCount,
                       const std::string& label)
    : lid_(lid),
      product_(product),
      sid_(sid),
      online_(online),
      reflash_profile_(reflashProfile),
      fw_ver_(fwVer),
      boot_count_(bootCount),
      label_(label) {}

bool ZigbeeNode::operator==(const ZigbeeNode& other) const { return lid_ == other.lid_ && product_ == other.product_; }

bool ZigbeeNode::isQxDevice() const { return startsWith(product_, "qx:velmarin"); }

bool ZigbeeNode::isQueueCheckDevice() const {
  return device_type_ == pb::QX_END_DEVICE && startsWith(product_, "qx:velmarin_sr");
}

bool ZigbeeNode::isEndDevice() const { return device_type_ == pb::QX_END_DEVICE || isEmberSleepy(); }

bool ZigbeeNode::isEmberSleepy() const {
  return device_type_ == pb::QX_SLEEPY_END_DEVICE || device_type_ == pb::QX_MOBILE_END_DEVICE;
}

bool ZigbeeNode::inMiniapp() const { return !fw_ver_.empty() && fw_ver_.back() == 'M'; }

bool ZigbeeNode::defaultLabel() const { return label_ == UNKNOWN_LABEL; }

const char* ZigbeeNode::deviceTypeStr() const {
  switch (device_type_) {
    case pb::QX_COORDINATOR:
      return "Coordinator";
    case pb::QX_ROUTER:
      return "Router";
    case pb::QX_END_DEVICE:
      return "End Device";
    case pb::QX_SLEEPY_END_DEVICE:
      return "Sleepy End Device";
    case pb::QX_MOBILE_END_DEVICE:
      return "Mobile End Device";
    default:
      return "Unknown";
  }
}

std::string ZigbeeNode::printId() const { return "(0x" + lid_.toString() + ")(" + hexStr(sid_, 2, true) + ")"; }

std::string ZigbeeNode::cleanProductString() const {
  if (product_.empty()) return "none";
  std::string clean;
  for (const char c : product_) {
    const char* const text = spelledOut(c);
    if (text != nullptr) {
      clean += text;
    } else {
      clean += c;
    }
  }
  return clean;
}

void ZigbeeNode::vessoriStartTime(long seconds) {
  constexpr long long MICROSECONDS = 1000000;
  constexpr long long FIRST = -17987443200;  // 1 January 1400
  constexpr long long LAST = 253402300799;   // the last second of 9999
  const BPosixTime epoch(boost::gregorian::date(1970, 1, 1));
  vessoriStartTime_ =
      epoch + boost::posix_time::microseconds(std::clamp<long long>(seconds, FIRST, LAST) * MICROSECONDS);
}

}  // namespace qx
