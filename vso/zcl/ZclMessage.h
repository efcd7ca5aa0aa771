// The base of every ZCL frame: header, append operations and the general commands.
#pragma once

#include <boost/array.hpp>
#include <string>
#include <vector>

#include "vso/identifiers/Euid.h"
#include "vso/identifiers/FrameReader.h"
#include "vso/identifiers/FrameWriter.h"
#include "vso/identifiers/PanId.h"
#include "vso/identifiers/U255Buff.h"
#include "vso/zcl/ZclStatus.h"

namespace qx {

class AttributeRecordData;
class ReadAttributeStatusRecord;
class ReportAttributeRecord;
class WriteAttributeRecord;
class WriteAttributeReportRecord;
namespace detail {
enum class RecordLayout : int;
}

/// One ZCL frame, held in the object exactly as it travels: `contents[0..length_)`.
///
///   offset   with manufacturer code   size   field (numbers little-endian)
///   0        0                        1      frame control
///            1                        2      manufacturer code
///   1        3                        1      transaction sequence number
///   2        4                        1      command identifier
///   3        5                               payload
///
/// To read a frame, construct from its bytes and call readers in any order. To build one, construct, call builders, and
/// send the bytes; a builder replaces the payload and keeps the header. A frame never allocates (the lists
/// that its readers fill do, and a warning that is let through), and nothing here throws of its own. A frame that is
/// too short for its header is only warned of: its readers go on and return what the buffer holds, mostly zeros.
///
/// An object belongs to one thread. The sequence counter is shared by all of them without a lock, so two frames that
/// are built at the same moment may carry the same number.
class ZclMessage : public U255Buff<unsigned char> {
 public:
  using AttributeBytes = boost::array<unsigned char, 200>;

  /// Bits of the frame control byte.
  static constexpr unsigned char FRAME_TYPE_MASK = 0x03;
  static constexpr unsigned char CLUSTER_SPECIFIC = 0x01;
  static constexpr unsigned char MANUFACTURER_SPECIFIC = 0x04;
  static constexpr unsigned char FROM_SERVER = 0x08;
  static constexpr unsigned char DISABLE_DEFAULT_RESPONSE = 0x10;

  /// The maker's own manufacturer code.
  static constexpr unsigned short QX_MANUFACTURER_CODE = 0x1040;

  /// The sequence number that the next frame takes: one counter for all clusters and destinations, zero at load, 255 is
  /// followed by 0. A server that restarts may seed it.
  static unsigned char transactionSequenceNumber_;

  /// An empty frame of length 0, ready only after `initMessage`. Takes no sequence number.
  ZclMessage() noexcept = default;
  /// An empty payload behind a header made by `initMessage`.
  ZclMessage(unsigned char commandId, bool manufacturerSpecific, bool clusterSpecific) {
    ZclMessage::initMessage(commandId, manufacturerSpecific, clusterSpecific);
  }
  /// A received frame. One of more than 255 bytes gives an empty frame.
  explicit ZclMessage(const U255Buff<unsigned char>& frame) noexcept : U255Buff<unsigned char>(frame) {
    takeFlagsFromFrameControl();
  }
  /// A received frame as hexadecimal text, two digits a byte. Text of 512 characters or more gives an empty frame, text
  /// of odd length one of zeros, half as long (rounded down).
  explicit ZclMessage(const std::string& hex);

  ZclMessage(const ZclMessage&) noexcept = default;
  ZclMessage& operator=(const ZclMessage&) noexcept = default;
  ~ZclMessage() override = default;

  // The order of the virtual operations is part of the interface.

  /// Makes the header: flags, frame control, the next sequence number, command identifier. Always takes a number.
  virtual void initMessage(unsigned char commandId, bool manufacturerSpecific, bool clusterSpecific) {
    manufacturerSpecific_ = manufacturerSpecific;
    clusterSpecific_ = clusterSpecific;
    length_ = headerLength();
    // A frame with neither flag keeps the frame control byte it has.
    if (manufacturerSpecific) setFcf(MANUFACTURER_SPECIFIC);
    if (clusterSpecific) setFcf(CLUSTER_SPECIFIC);
    setTsn(transactionSequenceNumber_);
    setCid(commandId);
    ++transactionSequenceNumber_;
  }
  /// Makes the header of a maker's frame (manufacturer code 0x1040) and drops the payload. Leaves the sequence number
  /// alone: see `setTsn`.
  virtual void prepareQxCustomMessage(unsigned char frameControl, unsigned char commandId, bool clusterSpecific);

  /// The ids that frames of this class travel under, as signed numbers: an id above 0x7FFF comes back negative, and its
  /// low 16 bits are the id. A plain ZclMessage belongs to no cluster: 0xFF and -1.
  virtual short getProfileId() const;
  virtual short getClusterId() const;

  // Header fields. Each, but for the manufacturer's two, warns of a frame that is shorter than its header.
  virtual bool affectsEntireProfile() const { return (frameControl() & FRAME_TYPE_MASK) == 0; }
  virtual bool affectsSpecificCluster() const { return (frameControl() & FRAME_TYPE_MASK) == CLUSTER_SPECIFIC; }
  virtual bool isManufacturerSpecific() const { return manufacturerSpecific_; }
  virtual bool isCommandFromClient() const { return !isCommandFromServer(); }
  virtual bool isCommandFromServer() const { return (frameControl() & FROM_SERVER) != 0; }
  virtual bool isReadAttributesResponse() const;
  virtual bool isWriteAttributesResponse() const;
  virtual bool isReportAttributes() const;
  virtual bool defaultResponseDisabled() const { return (frameControl() & DISABLE_DEFAULT_RESPONSE) != 0; }
  /// Sets the bit that asks the receiver for no default response.
  virtual void disableDefaultResponse();
  virtual unsigned char transactionSequenceNumber() const { return headerByte(sequenceOffset()); }
  virtual unsigned char commandIdentifier() const { return headerByte(commandOffset()); }
  /// 0 in a frame without one.
  virtual unsigned short manufacturerCode() const;

  // The general commands' lists. Builders fill the payload behind a header that the caller has made, and touch neither
  // frame control nor command identifier; what does not fit into 255 bytes is dropped with one warning. Values are
  // expected in wire form (see AttributeRecordData). Readers clear the list and append a record for each one in the
  // frame, up to its length. A value that runs past the frame's end is read from what the buffer holds there. A type
  // that is not known has no value bytes, and the walk goes on behind the type. What answers without a list, such as
  // `hasReadAttributeId` and the typed readers of the clusters, walks the frame itself and calls no list reader.

  /// True if the list of a read attributes command holds this id.
  virtual bool hasReadAttributeId(unsigned short id) const;
  virtual void getReadAttributes(std::vector<unsigned short>& ids) const;
  /// A read attributes response that refuses each id as unsupported.
  virtual void setNoReadAttributeResponse(const std::vector<unsigned short>& ids);
  virtual void setReportAttributes(const std::vector<ReportAttributeRecord>& records);
  virtual void getReportAttributes(std::vector<ReportAttributeRecord>& records) const;
  /// A response of a single status byte gives one record, whose id is read from behind the frame's end: 0 in a frame
  /// that came through the constructors.
  virtual void getWriteAttributeResponses(std::vector<WriteAttributeReportRecord>& records) const;
  virtual void setWriteAttributeResponses(const std::vector<WriteAttributeReportRecord>& records);
  virtual void setReadAttributesResponse(const std::vector<ReadAttributeStatusRecord>& records);
  /// Values in readable form. The record of a failed attribute keeps type and value of the record before it (zeros in
  /// the first): only `status_` tells.
  virtual void getReadAttributesResponse(std::vector<ReadAttributeStatusRecord>& records) const;
  /// The same, with values in wire form if asked for.
  virtual void getReadAttributesResponse(std::vector<ReadAttributeStatusRecord>& records, bool wireForm) const;

  /// True if the frame is at least as long as its header; otherwise a warning is logged. Says nothing of the payload.
  virtual bool isValidLength() const {
    if (length_ >= headerLength()) return true;
    warnOfLength();
    return false;
  }

  virtual void setReadAttributes(const std::vector<unsigned short>& ids);
  virtual void setWriteAttributes(const std::vector<WriteAttributeRecord>& records);
  virtual void getWriteAttributes(std::vector<WriteAttributeRecord>& records) const;

  /// Sets the frame control byte to `value` and the bits that the two flags of this frame stand for. Bits that `value`
  /// does not carry are lost, the disabled default response among them.
  virtual void setFcf(unsigned char value) {
    if (manufacturerSpecific_) value |= MANUFACTURER_SPECIFIC;
    if (clusterSpecific_) value |= CLUSTER_SPECIFIC;
    writeByte(FRAME_CONTROL_OFFSET, value);
  }
  /// Writes the manufacturer code. A frame that was not made for one fails an assertion, and is written all the same.
  virtual void setMc(unsigned short code);
  virtual void setTsn(unsigned char sequence) { writeByte(sequenceOffset(), sequence); }
  virtual void setCid(unsigned char commandId) { writeByte(commandOffset(), commandId); }

  // Append behind `length_`. What does not fit into 255 bytes is dropped, with one warning for each call.
  virtual void addByte(unsigned char value);
  /// Little-endian.
  virtual void addUint16(unsigned short value);
  /// Little-endian.
  virtual void addUint32(unsigned int value);
  /// The low 8 bits of the length, then all the characters.
  virtual void addString(const std::string& text);

  /// "ZCL_SUCCESS" and so on; "ZCL_UKNOWN_STATUS" for a value without a name.
  static const char* zclStatusToStr(ZclStatus status);

  // Between values and the bytes of an attribute. Little-endian unless stated.
  static unsigned short toUint16(const AttributeBytes& data) noexcept;
  static unsigned int toUint32(const AttributeBytes& data) noexcept;
  static unsigned long long toUint64(const AttributeBytes& data) noexcept;
  /// The wire carries an address least significant byte first, Euid holds it the other way round.
  static Euid toEuid(const AttributeBytes& data) noexcept;
  /// Writes byte 0 and leaves the others.
  static void toData8(AttributeBytes& data, unsigned char value) noexcept;
  /// Clears the bytes behind the value.
  static void toData16(AttributeBytes& data, unsigned short value) noexcept;
  /// Clears the bytes behind the value, which is written most significant byte first: the order in which ZclTime sends
  /// it. It does not read back through `toUint32`.
  static void toData32(AttributeBytes& data, const unsigned int& value) noexcept;
  /// Clears the bytes behind the address, which is written least significant byte first.
  static void toData(AttributeBytes& data, const Euid& euid) noexcept;
  /// Clears the bytes behind the text, which is written in wire form and cut to 199 characters.
  static void toData(AttributeBytes& data, const std::string& text) noexcept;
  /// Writes the 8 bytes as they are and leaves the others.
  static void toPanid(AttributeBytes& data, const PanId& panId) noexcept;

  /// 3, or 5 with a manufacturer code.
  unsigned int headerLength() const noexcept { return manufacturerSpecific_ ? 5 : 3; }
  /// A reader that stands at the first byte behind the header.
  FrameReader payload() const noexcept { return FrameReader(*this, headerLength()); }

 protected:
  /// Begins one of a cluster's own commands, client to server: a new payload behind a header with this command.
  /// `endCommand` closes what was written to it.
  FrameWriter newCommand(unsigned char commandId) {
    setFcf(CLUSTER_SPECIFIC);
    setCid(commandId);
    return newPayload();
  }
  void endCommand(const FrameWriter& payload) {
    endPayload(payload);
    isValidLength();
  }
  /// Makes one of a cluster's own commands whose payload is a single id.
  void setCommand(unsigned char commandId, unsigned short id) {
    FrameWriter out = newCommand(commandId);
    out.u16le(id);
    endCommand(out);
  }
  /// A writer that stands at the first byte behind the header. `endPayload` closes what it wrote.
  FrameWriter newPayload() noexcept { return {*this, headerLength()}; }
  /// Sets the frame's length to where `writer` stands, and warns if bytes were dropped.
  void endPayload(const FrameWriter& writer) {
    length_ = writer.at();
    if (writer.dropped() != 0) warnOfOverflow(writer.dropped());
  }
  /// A writer that stands behind what the frame holds, and `endPayload` closes it too.
  FrameWriter morePayload() noexcept { return {*this, length_}; }
  /// True for a frame with this command, whatever its length. Warns of nothing, unlike `commandIdentifier`.
  bool isCommand(unsigned char commandId) const noexcept { return readByte(commandOffset()) == commandId; }
  /// True if there are `least` to `most` bytes behind the header.
  bool isPayloadOf(unsigned int least, unsigned int most = ~0U) const noexcept {
    return length_ >= headerLength() && length_ - headerLength() >= least && length_ - headerLength() <= most;
  }
  /// A reader over the first `size` bytes of the payload alone, for fields whose length has been tested: what the
  /// compiler knows to be inside costs no test. `size` is at most 250, so that it lies inside the storage.
  FrameReader payloadOf(unsigned int size) const noexcept { return {contents + headerLength(), size, size}; }
  /// Makes the number of ids (1 byte) and the ids (2 bytes each, little-endian) the payload. Throws std::runtime_error,
  /// "Too many ids to fit in packet", with the payload empty, for more ids than fit: 125 behind a header of 3 bytes.
  void setCountedIds(const std::vector<unsigned short>& ids);
  /// Adds `record`, whose value is in wire form, behind the records of the frame, which are laid out as `layout` says
  /// (VALUE or STATUS_VALUE). An attribute that the frame has already keeps its value, and nothing changes.
  ///
  /// The records before it are written anew from their readable form, as a frame rebuilt from the list of its reader
  /// is: a string among them goes out without its length byte, so that its first character is then taken for the
  /// length.
  void addAttribute(detail::RecordLayout layout, const AttributeRecordData& record);
  /// Appends one record of a read attributes response to `payload`: id, status, and only if that is 0 type and value.
  static void addReadResponse(FrameWriter& payload, const ReadAttributeStatusRecord& record);

  bool manufacturerSpecific_ = false;
  bool clusterSpecific_ = false;

 private:
  static constexpr unsigned int FRAME_CONTROL_OFFSET = 0;
  static constexpr unsigned int MANUFACTURER_CODE_OFFSET = 1;

  unsigned int sequenceOffset() const noexcept { return manufacturerSpecific_ ? 3 : 1; }
  unsigned int commandOffset() const noexcept { return manufacturerSpecific_ ? 4 : 2; }
  unsigned char readByte(unsigned int offset) const noexcept { return FrameReader(*this, offset).u8(); }
  void writeByte(unsigned int offset, unsigned char value) noexcept { FrameWriter(*this, offset).u8(value); }
  /// A bad length is warned of, and the byte read all the same.
  unsigned char headerByte(unsigned int offset) const {
    isValidLength();
    return readByte(offset);
  }
  unsigned char frameControl() const { return headerByte(FRAME_CONTROL_OFFSET); }
  void takeFlagsFromFrameControl() noexcept {
    const unsigned char control = readByte(FRAME_CONTROL_OFFSET);
    manufacturerSpecific_ = (control & MANUFACTURER_SPECIFIC) != 0;
    clusterSpecific_ = (control & CLUSTER_SPECIFIC) != 0;
  }
  void warnOfLength() const;
  void warnOfOverflow(unsigned int dropped) const;
};

}  // namespace qx
