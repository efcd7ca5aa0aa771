#include "vso/mesh/SourceRoute.h"

#include <algorithm>
#include <iomanip>
#include <memory>
#include <ostream>

#include "qxshared/hexStr.h"
#include "vso/identifiers/hexify.h"
#include "vso/proto/SourceRoutePBuf.pb.h"
#include "vso/serial/vsoProtobufHelpers.h"
#include "vso/serial/xmlHelpers.h"

namespace qx {

namespace {

constexpr unsigned int BAD_FROM_FAILURES = 30;
constexpr unsigned int MOST_FAILURES = 0xFFFFFFFF;
constexpr unsigned int DIGITS_OF_A_RELAY = 4;

}  // namespace

const SourceRoute SourceRoute::INVALID(0, Euid(), 0xFFFF);
const SourceRoute SourceRoute::NULL_ROUTE(0, Euid(), 0xFFFF);

SourceRoute::SourceRoute(unsigned short fill, const Euid& zap, unsigned short zapSid)
    : U255Buff<unsigned short>(fill), zap_(zap), zap_sid_(zapSid), time_stamp_(std::time(nullptr)) {}

SourceRoute::SourceRoute(const unsigned short* relays, unsigned int count, const Euid& zap, unsigned short zapSid)
    : U255Buff<unsigned short>(relays, count), zap_(zap), zap_sid_(zapSid), time_stamp_(std::time(nullptr)) {}

SourceRoute::SourceRoute(const std::string& hex, const Euid& zap, unsigned short zapSid)
    : zap_(zap), zap_sid_(zapSid), time_stamp_(std::time(nullptr)) {
  const std::size_t relays = hex.size() / DIGITS_OF_A_RELAY;
  if (relays <= CAPACITY) {
    deHexify(hex, contents, CAPACITY);
    length_ = static_cast<unsigned int>(relays);
  }
}

bool SourceRoute::operator==(const SourceRoute& other) const {
  return length_ == other.length_ && std::equal(contents, contents + storedLength(), other.contents) &&
         zap_ == other.zap_;
}

int SourceRoute::pop() {
  if (length_ == 0) return -1;
  const int first = contents[0];
  std::move(contents + 1, contents + storedLength(), contents);
  --length_;
  return first;
}

int SourceRoute::head() const { return length_ == 0 ? -1 : contents[0]; }

int SourceRoute::tail() const {
  if (length_ == 0) return -1;
  // A relay that a careless length claims behind the storage reads as zero.
  return length_ <= CAPACITY ? contents[length_ - 1] : 0;
}

void SourceRoute::orderSwap() { std::reverse(contents, contents + storedLength()); }

bool SourceRoute::contains(unsigned short sid) const {
  return std::find(contents, contents + storedLength(), sid) != contents + storedLength();
}

bool SourceRoute::contains(const std::set<unsigned short>& sids) const {
  return std::any_of(contents, contents + storedLength(),
                     [&sids](unsigned short relay) { return sids.count(relay) != 0; });
}

void SourceRoute::failed(unsigned char count) {
  // A count that steps over the maximum wraps round.
  if (failures_ != MOST_FAILURES) failures_ += count;
}

bool SourceRoute::bad() const { return failures_ >= BAD_FROM_FAILURES; }

std::string SourceRoute::printSourceRouteOrder(const std::string& separator) const {
  SourceRoute outward(*this);
  outward.orderSwap();
  std::string text = hexStr(zap_sid_, 2, true);
  for (unsigned int i = 0; i < outward.storedLength(); ++i) {
    text += separator;
    text += hexStr(outward.contents[i], 2, true);
  }
  return text;
}

pb::SourceRoutePBuf* SourceRoute::toProtobuf() const {
  auto message = std::make_unique<pb::SourceRoutePBuf>();
  message->set_allocated_baseclass(u255U16BuffToProtobuf(*this));
  message->set_failures(failures_);
  message->set_allocated_zap(zap_.toProtobuf());
  message->set_zapsid(zap_sid_);
  message->set_allocated_timestamp(timetToProtobuf(time_stamp_));
  return message.release();
}

bool SourceRoute::fromProtobuf(const pb::SourceRoutePBuf& message) {
  bool failed = u255U16BuffFromProtobuf(*this, message.baseclass());
  failures_ = message.failures();
  failed |= zap_.fromProtobuf(message.zap());
  zap_sid_ = static_cast<unsigned short>(message.zapsid());
  time_stamp_ = timetFromProtobuf(message.timestamp());
  return failed;
}

void SourceRoute::toXml(XmlWriter& writer, const std::string& name) const {
  const detail::XmlObject element(writer, name);
  u255U16BuffToXml(*this, writer, "source_route");
  writer.writeElement("failures_", failures_);
  zap_.toXml(writer, "zap_");
  writer.writeElement("zap_sid_", zap_sid_);
  timeTToXml(time_stamp_, writer, "time_stamp_");
}

std::ostream& operator<<(std::ostream& out, const SourceRoute& route) {
  if (route.length_ == 0) return out << "neighbor";
  out << std::hex << std::setfill('0');
  for (unsigned int i = 0; i < route.storedLength(); ++i) {
    if (i != 0) out << ' ';
    out << hexStr(route.contents[i], 2, true);
  }
  return out;
}

}  // namespace qx
