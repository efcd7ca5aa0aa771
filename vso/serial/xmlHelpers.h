// What the XML forms of all classes share. They have the look of a serialization archive: an object is an element with
// the attributes "class_id", "tracking_level" and "version", and a collection is a count, an item version and items.
#pragma once

#include <boost/date_time/posix_time/posix_time_types.hpp>
#include <boost/logic/tribool.hpp>
#include <exception>
#include <list>
#include <string>
#include <vector>

#include "qxxml/XmlWriter.h"
#include "vso/identifiers/U255Buff.h"

namespace qx {

class XmlReader;

namespace detail {

/// The version of every class of the model, one number for all.
constexpr int XML_VERSION = 182;
/// The item version of a collection of objects. A number of its own: those of other collections differ.
constexpr unsigned int XML_COLLECTION_ITEM_VERSION = 183;

/// The node type of an element, and the state in which reading failed, as the reader numbers them.
constexpr int XML_ELEMENT = 1;
constexpr int XML_ERROR = 2;

/// An element that closes at the end of its scope, as the nesting of the code shows it. Plain: without attributes. An
/// exception of the writer passes through, and leaves the elements round it open.
class XmlScope {
 public:
  XmlScope(XmlWriter& writer, const std::string& name) : writer_(writer) { writer_.startElement(name); }
  ~XmlScope() noexcept(false) {
    if (std::uncaught_exceptions() == exceptionsAtStart_) writer_.endElement();
  }
  XmlScope(const XmlScope&) = delete;
  XmlScope& operator=(const XmlScope&) = delete;

 private:
  XmlWriter& writer_;
  int exceptionsAtStart_ = std::uncaught_exceptions();
};

}  // namespace detail

/// Adds "class_id", "tracking_level" and "version", in this order, to the open element.
void addBoostAttributes(XmlWriter& writer, int classId, int trackingLevel, int version);

/// Seconds since 1970 as one element.
void timeTToXml(long seconds, XmlWriter& writer, const std::string& name);

/// Date and time of day, in microseconds. The special times carry the parts that their tick counts would have.
void posixTimeToXml(boost::posix_time::ptime time, XmlWriter& writer, const std::string& name);

void triboolToXml(const boost::logic::tribool& value, XmlWriter& writer, const std::string& name);

void stringVecToXml(const std::vector<std::string>& strings, XmlWriter& writer, const std::string& name);

void byteListToXml(const std::list<signed char>& bytes, XmlWriter& writer, const std::string& name);

/// The bytes in use, as hexadecimal digits or as they are. Bytes that XML cannot carry are replaced by the writer.
void u255BuffToXml(const U255Buff<unsigned char>& buffer, XmlWriter& writer, const std::string& name, bool asHex);

/// The elements in use, as four hexadecimal digits each.
void u255U16BuffToXml(const U255Buff<unsigned short>& buffer, XmlWriter& writer, const std::string& name);

/// Steps from an element's start onto its text, which `value` takes.
void readValue(XmlReader& reader, std::string& value);

namespace detail {

/// An element of an object: open with its archive attributes while in scope.
class XmlObject : public XmlScope {
 public:
  XmlObject(XmlWriter& writer, const std::string& name, int version = XML_VERSION) : XmlScope(writer, name) {
    addBoostAttributes(writer, 0, 0, version);
  }
};

/// An element of a collection: open with its archive attributes, count and item version while in scope.
class XmlCollection : public XmlObject {
 public:
  XmlCollection(XmlWriter& writer, const std::string& name, std::size_t count, unsigned int itemVersion)
      : XmlObject(writer, name) {
    writer.writeElement("count", static_cast<unsigned long long>(count));
    writer.writeElement("item_version", itemVersion);
  }
};

/// Reads the text of the current element as a decimal int into `number`; a text that is none leaves it alone. True if
/// it was one.
bool readNumber(XmlReader& reader, int& number);

}  // namespace detail

/// A collection of objects that have a `toXml`.
template <typename Container>
void collectionToXml(const Container& container, XmlWriter& writer, const std::string& name) {
  const detail::XmlCollection element(writer, name, container.size(), detail::XML_COLLECTION_ITEM_VERSION);
  for (const auto& item : container) item.toXml(writer, "item");
}

}  // namespace qx
