#include "apps/vso/encode/attributeRecords.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "apps/vso/encode/argumentValues.h"
#include "vso/zcl/ZclType.h"

namespace qx::app {

namespace {

/// How the value of a type is given.
enum class Notation { UNSIGNED, SIGNED, BOOLEAN, SINGLE, DOUBLE, TEXT, OCTETS, ADDRESS };

struct TypeRow {
  unsigned char code;
  const char* name;
  Notation notation = Notation::UNSIGNED;
};

constexpr TypeRow TYPES[] = {
    {ZclType::DATA8, "data8"},
    {ZclType::DATA16, "data16"},
    {ZclType::DATA24, "data24"},
    {ZclType::DATA32, "data32"},
    {ZclType::BOOLEAN, "boolean", Notation::BOOLEAN},
    {ZclType::BITMAP8, "bitmap8"},
    {ZclType::BITMAP16, "bitmap16"},
    {ZclType::BITMAP24, "bitmap24"},
    {ZclType::BITMAP32, "bitmap32"},
    {ZclType::UINT8, "uint8"},
    {ZclType::UINT16, "uint16"},
    {ZclType::UINT24, "uint24"},
    {ZclType::UINT32, "uint32"},
    {ZclType::INT8, "int8", Notation::SIGNED},
    {ZclType::INT16, "int16", Notation::SIGNED},
    {ZclType::INT24, "int24", Notation::SIGNED},
    {ZclType::INT32, "int32", Notation::SIGNED},
    {ZclType::ENUM8, "enum8"},
    {ZclType::ENUM16, "enum16"},
    {ZclType::SEMI_FLOAT, "semi-float"},
    {ZclType::SINGLE_FLOAT, "single-float", Notation::SINGLE},
    {ZclType::DOUBLE_FLOAT, "double-float", Notation::DOUBLE},
    {ZclType::TEXT, "text", Notation::TEXT},
    {ZclType::OCTET_STRING, "octet-string", Notation::OCTETS},
    {ZclType::CHARACTER_STRING, "character-string", Notation::TEXT},
    {ZclType::TIME_OF_DAY, "time-of-day"},
    {ZclType::DATE, "date"},
    {ZclType::CLUSTER_ID, "cluster-id"},
    {ZclType::ATTRIBUTE_ID, "attribute-id"},
    {ZclType::BACNET_OID, "bacnet-oid"},
    {ZclType::IEEE_ADDRESS, "ieee-address", Notation::ADDRESS},
};

const TypeRow& typeRow(const std::string& text) {
  const bool isCode = !text.empty() && text[0] >= '0' && text[0] <= '9';
  const long long code = isCode ? parseNumber(text, 0, 0xFF) : 0;
  for (const TypeRow& row : TYPES) {
    if (isCode ? row.code == code : row.name == text) return row;
  }
  throw BadArgument(inQuotes(text) + " is no type; there are " + typeNames());
}

/// The bytes of a value, the first on the wire first.
class ValueBytes {
 public:
  explicit ValueBytes(AttributeRecordData::Data& data) : data_(data) { data_.fill(0); }

  void number(unsigned long long value, unsigned int size) {
    for (unsigned int i = 0; i < size; ++i) data_[at_++] = static_cast<unsigned char>(value >> (8 * i));
  }
  void string(const std::string& text, const unsigned char* bytes, std::size_t size) {
    constexpr std::size_t LONGEST = AttributeRecordData::DATA_SIZE - 1;
    if (size > LONGEST) {
      throw BadArgument(inQuotes(text) + " has " + std::to_string(size) + " bytes, and an attribute has room for " +
                        std::to_string(LONGEST));
    }
    number(size, 1);
    std::copy(bytes, bytes + size, data_.begin() + at_);
  }

 private:
  AttributeRecordData::Data& data_;
  unsigned int at_ = 0;
};

template <typename Real>
Real parseReal(const std::string& text, Real (*convert)(const char*, char**)) {
  char* end = nullptr;
  const Real value = convert(text.c_str(), &end);
  if (end == text.c_str() || *end != '\0') throw BadArgument(inQuotes(text) + " is no number");
  return value;
}

/// The bits of `value` as a number.
template <typename Bits, typename Real>
Bits bitsOf(Real value) {
  static_assert(sizeof(Bits) == sizeof(Real));
  Bits bits;
  std::memcpy(&bits, &value, sizeof bits);
  return bits;
}

void writeValue(const TypeRow& row, const std::string& text, ValueBytes out) {
  const unsigned int size = detail::zclType(row.code).size;
  switch (row.notation) {
    case Notation::UNSIGNED:
      out.number(static_cast<unsigned long long>(parseNumber(text, 0, (1LL << (8 * size)) - 1)), size);
      break;
    case Notation::SIGNED: {
      const long long half = 1LL << (8 * size - 1);
      out.number(static_cast<unsigned long long>(parseNumber(text, -half, half - 1)), size);
      break;
    }
    case Notation::BOOLEAN: {
      const bool isWord = text == "true" || text == "false";
      out.number(isWord ? text == "true" : static_cast<unsigned long long>(parseNumber(text, 0, 0xFF)), size);
      break;
    }
    case Notation::SINGLE:
      out.number(bitsOf<unsigned int>(parseReal(text, std::strtof)), size);
      break;
    case Notation::DOUBLE:
      out.number(bitsOf<unsigned long long>(parseReal(text, std::strtod)), size);
      break;
    case Notation::TEXT:
      out.string(text, reinterpret_cast<const unsigned char*>(text.data()), text.size());
      break;
    case Notation::OCTETS: {
      const std::vector<unsigned char> octets = parseOctets(text, AttributeRecordData::DATA_SIZE - 1);
      out.string(text, octets.data(), octets.size());
      break;
    }
    case Notation::ADDRESS: {
      const Euid address = parseAddress(text);
      for (unsigned int i = address.length(); i-- > 0;) out.number(address.cArray()[i], 1);
      break;
    }
  }
}

}  // namespace

unsigned short parseAttributeId(const std::string& text) {
  return static_cast<unsigned short>(parseNumber(text, 0, 0xFFFF));
}

AttributeRecordData parseAttributeValue(const std::string& text) {
  const std::size_t first = text.find(':');
  const std::size_t second = first == std::string::npos ? first : text.find(':', first + 1);
  if (second == std::string::npos) throw BadArgument(inQuotes(text) + " is not of the form ID:TYPE:VALUE");
  const TypeRow& row = typeRow(text.substr(first + 1, second - first - 1));
  AttributeRecordData record;
  record.id_ = parseAttributeId(text.substr(0, first));
  record.type_ = row.code;
  writeValue(row, text.substr(second + 1), ValueBytes(record.data_));
  return record;
}

ReadAttributeStatusRecord parseAttributeAnswer(const std::string& text) {
  const std::size_t colon = text.find(':');
  if (colon != std::string::npos && text.find(':', colon + 1) != std::string::npos) {
    const AttributeRecordData value = parseAttributeValue(text);
    return {value.id_, value.type_, value.data_};
  }
  if (colon == std::string::npos) {
    throw BadArgument(inQuotes(text) + " is neither of the form ID:TYPE:VALUE nor ID:STATUS");
  }
  const WriteAttributeReportRecord refusal = parseAttributeStatus(text);
  if (refusal.status_ == 0) throw BadArgument(inQuotes(text) + " has success for a status, which comes with a value");
  ReadAttributeStatusRecord record;
  record.id_ = refusal.id_;
  record.status_ = refusal.status_;
  return record;
}

WriteAttributeReportRecord parseAttributeStatus(const std::string& text) {
  const std::size_t colon = text.find(':');
  if (colon == std::string::npos) throw BadArgument(inQuotes(text) + " is not of the form ID:STATUS");
  WriteAttributeReportRecord record;
  record.id_ = parseAttributeId(text.substr(0, colon));
  record.status_ = parseStatus(text.substr(colon + 1));
  return record;
}

unsigned int sizeOfValue(const AttributeRecordData& record) {
  const detail::ZclTypeRow& row = detail::zclType(record.type_);
  return row.isString() ? row.size + record.data_[0] : row.size;
}

std::string typeNames() {
  std::string names;
  for (const TypeRow& row : TYPES) names += (names.empty() ? "" : " ") + std::string(row.name);
  return names;
}

}  // namespace qx::app
