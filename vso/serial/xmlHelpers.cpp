#include "vso/serial/xmlHelpers.h"

#include <fmt/format.h>

#include <boost/date_time/gregorian/gregorian_types.hpp>
#include <boost/lexical_cast/try_lexical_convert.hpp>

#include "qxxml/XmlReader.h"
#include "vso/identifiers/hexify.h"

namespace qx {

namespace {

constexpr unsigned int PLAIN_ITEM_VERSION = 182;
/// Buffers have a version of their own.
constexpr int BUFFER_VERSION = 0;

/// The parts of a time of day as the archive's form names them.
struct DayParts {
  long long hours;
  int minutes;
  int seconds;
  int fractionalSeconds;
};

DayParts dayParts(const boost::posix_time::ptime& time) {
  // What the arithmetic of a duration yields for the tick counts of the special times.
  if (time.is_neg_infinity()) return {-2562047788, 0, -54, -775808};
  if (time.is_pos_infinity()) return {2562047788, 0, 54, 775807};
  if (time.is_special()) return {2562047788, 0, 54, 775806};
  const long long ticks = time.time_of_day().total_microseconds() % 86400000000;
  return {ticks / 3600000000, static_cast<int>(ticks / 60000000 % 60), static_cast<int>(ticks / 1000000 % 60),
          static_cast<int>(ticks % 1000000)};
}

std::string dateText(const boost::posix_time::ptime& time) {
  if (time.is_neg_infinity()) return "-infinity";
  if (time.is_pos_infinity()) return "+infinity";
  if (time.is_special()) return "not-a-date-time";
  const auto date = time.date().year_month_day();
  return fmt::format("{}{:02}{:02}", static_cast<int>(date.year), static_cast<int>(date.month.as_number()),
                     static_cast<int>(date.day));
}

void writeItem(XmlWriter& writer, const std::string& text) { writer.writeElement("item", text); }
void writeItem(XmlWriter& writer, signed char number) { writer.writeElement("item", number); }

template <typename Container>
void plainCollectionToXml(const Container& container, XmlWriter& writer, const std::string& name) {
  const detail::XmlCollection element(writer, name, container.size(), PLAIN_ITEM_VERSION);
  for (const auto& item : container) writeItem(writer, item);
}

void bufferToXml(const std::string& contents, unsigned int length, XmlWriter& writer, const std::string& name) {
  const detail::XmlObject element(writer, name, BUFFER_VERSION);
  writer.writeElement("contents", contents);
  writer.writeElement("length_", length);
}

template <typename T>
std::string digitsOf(const U255Buff<T>& buffer) {
  std::string digits;
  hexify(buffer.contents, buffer.storedLength(), digits, false);
  return digits;
}

}  // namespace

template <class T, class IsNumber>
void XmlWriter::writeElement(const char* name, T value) {
  // Promoted, so that a character type is a number.
  writeElement(name, fmt::format_int(+value).c_str());
}
template void XmlWriter::writeElement(const char*, signed char);
template void XmlWriter::writeElement(const char*, unsigned char);
template void XmlWriter::writeElement(const char*, unsigned short);
template void XmlWriter::writeElement(const char*, int);
template void XmlWriter::writeElement(const char*, unsigned int);
template void XmlWriter::writeElement(const char*, unsigned long long);

void addBoostAttributes(XmlWriter& writer, int classId, int trackingLevel, int version) {
  writer.writeAttribute("class_id", fmt::format_int(classId).c_str());
  writer.writeAttribute("tracking_level", fmt::format_int(trackingLevel).c_str());
  writer.writeAttribute("version", fmt::format_int(version).c_str());
}

void timeTToXml(long seconds, XmlWriter& writer, const std::string& name) {
  writer.writeElement(name, fmt::format_int(seconds).str());
}

void posixTimeToXml(boost::posix_time::ptime time, XmlWriter& writer, const std::string& name) {
  const detail::XmlObject element(writer, name);
  {
    const detail::XmlObject date(writer, "ptime_date");
    writer.writeElement("date", dateText(time));
  }
  {
    const detail::XmlObject duration(writer, "ptime_time_duration");
    const DayParts parts = dayParts(time);
    writer.writeElement("is_special", time.is_special() ? 1 : 0);
    writer.writeElement("time_duration_hours", fmt::format_int(parts.hours).c_str());
    writer.writeElement("time_duration_minutes", parts.minutes);
    writer.writeElement("time_duration_seconds", parts.seconds);
    writer.writeElement("time_duration_fractional_seconds", parts.fractionalSeconds);
  }
}

void triboolToXml(const boost::logic::tribool& value, XmlWriter& writer, const std::string& name) {
  const detail::XmlObject element(writer, name);
  writer.writeElement("undetermined", boost::logic::indeterminate(value) ? 1 : 0);
  writer.writeElement("state", static_cast<bool>(value), true);
}

void stringVecToXml(const std::vector<std::string>& strings, XmlWriter& writer, const std::string& name) {
  plainCollectionToXml(strings, writer, name);
}

void byteListToXml(const std::list<signed char>& bytes, XmlWriter& writer, const std::string& name) {
  plainCollectionToXml(bytes, writer, name);
}

void u255BuffToXml(const U255Buff<unsigned char>& buffer, XmlWriter& writer, const std::string& name, bool asHex) {
  const std::string contents =
      asHex ? digitsOf(buffer) : std::string(reinterpret_cast<const char*>(buffer.contents), buffer.storedLength());
  bufferToXml(contents, buffer.length_, writer, name);
}

void u255U16BuffToXml(const U255Buff<unsigned short>& buffer, XmlWriter& writer, const std::string& name) {
  bufferToXml(digitsOf(buffer), buffer.length_, writer, name);
}

void readValue(XmlReader& reader, std::string& value) {
  reader.read();
  reader.value(value);
}

bool detail::readNumber(XmlReader& reader, int& number) {
  std::string text;
  readValue(reader, text);
  int converted = 0;
  if (!boost::conversion::try_lexical_convert(text, converted)) return false;
  number = converted;
  return true;
}

}  // namespace qx
