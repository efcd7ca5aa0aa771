#include "qxxml/XmlWriter.h"

#include <algorithm>
#include <cstddef>
#include <exception>
#include <new>
#include <ostream>
#include <stdexcept>
#include <string_view>
#include <utility>
#include <vector>

#include <libxml/xmlIO.h>
#include <libxml/xmlwriter.h>

#include "qxxml/xmlText.h"

namespace qx {

namespace {

// libxml2 counts in int, and its escapes are longer than what they stand for: in an attribute, which it escapes as a
// whole, eight bytes for a bad one.
constexpr std::size_t MAX_TEXT = std::size_t{1} << 28;
constexpr std::size_t MAX_ATTRIBUTE = std::size_t{1} << 24;

struct FreeWriter {
  void operator()(xmlTextWriterPtr writer) const noexcept { xmlFreeTextWriter(writer); }
};

const xmlChar* xmlChars(const char* text) { return reinterpret_cast<const xmlChar*>(text); }

// Ends with a zero in any case, as libxml2 needs it.
std::string_view viewOf(const char* text) { return text != nullptr ? text : ""; }

}  // namespace

struct XmlWriter::Document {
  enum class Progress { NOTHING, DECLARED, OPEN, DONE };

  explicit Document(std::ostream& stream) : out(stream) {
    xmlOutputBuffer* const buffer = xmlOutputBufferCreateIO(passOn, nullptr, this, nullptr);
    if (buffer == nullptr) throw std::bad_alloc();
    writer.reset(xmlNewTextWriter(buffer));
    if (writer == nullptr) {
      xmlOutputBufferClose(buffer);
      throw std::bad_alloc();
    }
  }

  /// Takes text from libxml2, through which no exception may pass. To libxml2 every write succeeds: it would report a
  /// failure on standard error, while the stream keeps its own record.
  static int passOn(void* context, const char* bytes, int length) {
    auto* const document = static_cast<Document*>(context);
    try {
      document->out.write(bytes, length);
    } catch (...) {
      document->thrown = std::current_exception();
    }
    return length;
  }

  /// To be called with the result of everything that libxml2 writes.
  void check(int result) {
    if (thrown != nullptr) std::rethrow_exception(std::exchange(thrown, nullptr));
    if (result < 0) throw std::bad_alloc();
  }

  /// `name` if it is fit for one, otherwise its fit form, which lasts until the next call.
  const char* fitName(std::string_view name) {
    if (detail::isXmlName(name)) return name.data();
    fittedName = detail::xmlName(name);
    return fittedName.c_str();
  }

  /// The same for a text.
  const char* fitText(std::string_view text) {
    if (detail::isXmlText(text)) return text.data();
    fittedText = detail::xmlText(text);
    return fittedText.c_str();
  }

  void startElement(std::string_view name) {
    if (progress == Progress::DONE) throw std::logic_error("XmlWriter: a second outermost element");
    const int result = xmlTextWriterStartElement(writer.get(), xmlChars(fitName(name)));
    progress = Progress::OPEN;
    ++depth;
    inStartTag = true;
    attributes.clear();
    check(result);
  }

  void writeAttribute(std::string_view name, std::string_view value) {
    if (!inStartTag) throw std::logic_error("XmlWriter: an attribute outside a start tag");
    checkLength(value, MAX_ATTRIBUTE);
    const char* const fit = fitName(name);
    if (std::find(attributes.begin(), attributes.end(), fit) != attributes.end())
      throw std::logic_error("XmlWriter: an attribute for the second time");
    attributes.emplace_back(fit);
    check(xmlTextWriterWriteAttribute(writer.get(), xmlChars(fit), xmlChars(fitText(value))));
  }

  void writeElement(std::string_view name, std::string_view value) {
    checkLength(value, MAX_TEXT);
    startElement(name);
    // Escaping copies, and most texts are numbers.
    check(detail::isPlainXmlText(value)
              ? xmlTextWriterWriteRawLen(writer.get(), xmlChars(value.data()), static_cast<int>(value.size()))
              : xmlTextWriterWriteString(writer.get(), xmlChars(fitText(value))));
    endElement();
  }

  void endElement() {
    if (depth == 0) throw std::logic_error("XmlWriter: an end without an element");
    const int result = xmlTextWriterEndElement(writer.get());
    --depth;
    inStartTag = false;
    check(result);
    if (depth != 0) return;
    progress = Progress::DONE;
    check(xmlTextWriterFlush(writer.get()));
  }

  static void checkLength(std::string_view value, std::size_t longest) {
    if (value.size() > longest) throw std::length_error("XmlWriter: a text that is too long");
  }

  std::ostream& out;
  std::exception_ptr thrown;
  std::unique_ptr<xmlTextWriter, FreeWriter> writer;
  Progress progress = Progress::NOTHING;
  std::size_t depth = 0;
  bool inStartTag = false;
  // Names in the open start tag.
  std::vector<std::string> attributes;
  std::string fittedName;
  std::string fittedText;
};

XmlWriter::XmlWriter(std::ostream& out, bool indent) : document_(std::make_unique<Document>(out)) {
  if (!indent) return;
  document_->check(xmlTextWriterSetIndent(document_->writer.get(), 1));
  document_->check(xmlTextWriterSetIndentString(document_->writer.get(), xmlChars("  ")));
}

XmlWriter::~XmlWriter() = default;

void XmlWriter::startDocument() {
  if (document_->progress != Document::Progress::NOTHING)
    throw std::logic_error("XmlWriter: a declaration that does not come first");
  document_->progress = Document::Progress::DECLARED;
  document_->check(xmlTextWriterStartDocument(document_->writer.get(), nullptr, nullptr, nullptr));
}

void XmlWriter::startElement(const std::string& name) { document_->startElement(name); }

void XmlWriter::startElement(const char* name) { document_->startElement(viewOf(name)); }

void XmlWriter::writeAttribute(const char* name, const char* value) {
  document_->writeAttribute(viewOf(name), viewOf(value));
}

void XmlWriter::writeElement(const char* name, const char* value) {
  document_->writeElement(viewOf(name), viewOf(value));
}

void XmlWriter::writeElement(const char* name, const std::string& value) {
  document_->writeElement(viewOf(name), value);
}

void XmlWriter::writeElement(const std::string& name, const std::string& value) {
  document_->writeElement(name, value);
}

void XmlWriter::writeElement(const char* name, bool value, bool /*flag*/) {
  document_->writeElement(viewOf(name), value ? "1" : "0");
}

void XmlWriter::endElement() { document_->endElement(); }

}  // namespace qx
