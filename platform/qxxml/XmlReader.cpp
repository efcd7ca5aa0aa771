#include "qxxml/XmlReader.h"

#include <algorithm>
#include <climits>
#include <cstddef>
#include <optional>
#include <string_view>

#include <libxml/parser.h>
#include <libxml/xmlerror.h>
#include <libxml/xmlreader.h>

namespace qx {

namespace {

// The parser compares each attribute of a tag with all others, looks through the namespaces of all open elements at
// each tag, and scans what looks unfinished anew with every 512 bytes. These limits keep its time in proportion to the
// document's length.
constexpr std::size_t MAX_ATTRIBUTES = 1000;
constexpr std::size_t MAX_NAMESPACES = 1000;
constexpr std::size_t MAX_MARKUP = std::size_t{256} << 10;

constexpr std::size_t NOWHERE = std::string_view::npos;

constexpr std::string_view BLANKS = " \t\r\n";
constexpr std::string_view UTF8_MARK = "\xEF\xBB\xBF";

bool startsWith(std::string_view text, std::string_view start) { return text.substr(0, start.size()) == start; }

std::string_view withoutMark(std::string_view document) {
  return startsWith(document, UTF8_MARK) ? document.substr(UTF8_MARK.size()) : document;
}

/// Length of `text` as far as `terminator` goes, searched behind `from`; all of it if there is none.
std::size_t lengthThrough(std::string_view text, std::size_t from, std::string_view terminator) {
  const std::size_t at = text.find(terminator, from);
  return at == NOWHERE ? text.size() : at + terminator.size();
}

/// A walk over a document's markup that tells whether all of it is within the limits. The markup need not be
/// well-formed: the parser goes no further than its first error, and up to there finds what this walk finds.
class MarkupWalk {
 public:
  explicit MarkupWalk(std::string_view document) : document_(document) {}

  bool isWithinLimits() {
    for (std::size_t at = document_.find('<'); at != NOWHERE; at = document_.find('<', at)) {
      const std::optional<std::size_t> length = markupLength(document_.substr(at));
      if (!length || *length > MAX_MARKUP) return false;
      at += *length;
    }
    return true;
  }

 private:
  /// The length of the markup that `text` begins with; none for a tag that is beyond the limits.
  std::optional<std::size_t> markupLength(std::string_view text) {
    if (startsWith(text, "<!--")) return lengthThrough(text, 4, "-->");
    if (startsWith(text, "<![CDATA[")) return lengthThrough(text, 9, "]]>");
    if (startsWith(text, "<?")) return lengthThrough(text, 2, "?>");
    return tagLength(text);
  }

  std::optional<std::size_t> tagLength(std::string_view text) {
    std::size_t attributes = 0;
    std::size_t behindValue = 0;
    std::size_t at = text.find_first_of(TAG_MARKS);
    while (at != NOWHERE) {
      if (text[at] == '>') return at + 1;
      if (text[at] == '[') return std::nullopt;  // the declarations of a document type
      if (text.substr(behindValue, at - behindValue).find("xmlns") != NOWHERE) ++namespaces_;
      if (++attributes > MAX_ATTRIBUTES || namespaces_ > MAX_NAMESPACES) return std::nullopt;
      behindValue = lengthThrough(text, at + 1, text.substr(at, 1));
      at = text.find_first_of(TAG_MARKS, behindValue);
    }
    return text.size();
  }

  static constexpr std::string_view TAG_MARKS = "\"'[>";

  const std::string_view document_;
  std::size_t namespaces_ = 0;
};

/// The encoding that the document's declaration names; "UTF-8" where it names none.
std::string declaredEncoding(std::string_view document) {
  // Other instructions may begin with the same letters.
  constexpr std::string_view START = "<?xml";
  if (!startsWith(document, START) || document.size() == START.size() ||
      BLANKS.find(document[START.size()]) == NOWHERE) {
    return "UTF-8";
  }
  const std::string_view declaration = document.substr(0, lengthThrough(document, 0, "?>"));
  const std::size_t open = declaration.find_first_of("\"'", declaration.find("encoding"));
  if (open == NOWHERE) return "UTF-8";
  const std::size_t close = declaration.find(declaration[open], open + 1);
  std::string name(declaration.substr(open + 1, close - open - 1));
  std::transform(name.begin(), name.end(), name.begin(), [](char c) { return c >= 'a' && c <= 'z' ? c - 32 : c; });
  return name;
}

/// What libxml2 keeps for a thread to say its errors to, silenced. Not all errors go through the reader's own handler.
class Silence {
 public:
  Silence() {
    xmlSetGenericErrorFunc(nullptr, drop);
    xmlSetStructuredErrorFunc(nullptr, [](void* /*context*/, xmlErrorPtr /*error*/) {});
  }
  ~Silence() {
    xmlSetGenericErrorFunc(genericContext_, generic_);
    xmlSetStructuredErrorFunc(structuredContext_, structured_);
  }
  Silence(const Silence&) = delete;
  Silence& operator=(const Silence&) = delete;

 private:
  // NOLINTNEXTLINE(cert-dcl50-cpp): libxml2 calls functions of this kind
  static void drop(void* /*context*/, const char* /*format*/, ...) {}

  const xmlGenericErrorFunc generic_ = xmlGenericError;
  void* const genericContext_ = xmlGenericErrorContext;
  const xmlStructuredErrorFunc structured_ = xmlStructuredError;
  void* const structuredContext_ = xmlStructuredErrorContext;
};

bool isIso8859(std::string_view encoding) {
  constexpr std::string_view FAMILY = "ISO-8859-";
  if (!startsWith(encoding, FAMILY) || encoding.find_first_not_of("0123456789", FAMILY.size()) != NOWHERE) return false;
  xmlCharEncodingHandler* const handler = xmlFindCharEncodingHandler(std::string(encoding).c_str());
  if (handler == nullptr) return false;
  xmlCharEncCloseFunc(handler);
  return true;
}

/// A reader of `document`, which must outlive it; null if the document is to be refused unread.
xmlTextReader* newReader(const std::string& document) {
  const std::string_view text = withoutMark(document);
  // In these encodings, and in no document that begins otherwise, what looks like ASCII is ASCII, so that the bytes can
  // be looked at before the parser does.
  if (text.empty() || (text.front() != '<' && BLANKS.find(text.front()) == NOWHERE)) return nullptr;
  if (text.find('\0') != NOWHERE || !MarkupWalk(text).isWithinLimits()) return nullptr;
  const std::string encoding = declaredEncoding(text);
  const bool isUtf8 = encoding == "UTF-8" || encoding == "US-ASCII" || encoding == "ASCII";
  if (!isUtf8 && !isIso8859(encoding)) return nullptr;
  // The parser is told the encoding, for it might find another in the declaration.
  return xmlReaderForMemory(document.data(), static_cast<int>(document.size()), nullptr,
                            isUtf8 ? nullptr : encoding.c_str(), XML_PARSE_NONET | XML_PARSE_IGNORE_ENC);
}

std::string_view textOf(const xmlChar* text) {
  return text != nullptr ? reinterpret_cast<const char*>(text) : std::string_view();
}

}  // namespace

struct XmlReader::Parser {
  explicit Parser(xmlTextReader* owned) noexcept : reader(owned) {}
  ~Parser() { xmlFreeTextReader(reader); }
  Parser(const Parser&) = delete;
  Parser& operator=(const Parser&) = delete;

  xmlTextReader* const reader;
};

// The parser counts in int. An empty document is refused like one that is too long.
XmlReader::XmlReader(const std::string& document) : document_(document.size() <= INT_MAX ? document : std::string()) {
  static const bool initialized = (xmlInitParser(), true);
  static_cast<void>(initialized);
  const Silence silence;
  xmlTextReader* const reader = newReader(document_);
  if (reader != nullptr) parser_ = std::make_unique<Parser>(reader);
  state_ = reader != nullptr ? XML_TEXTREADER_MODE_INITIAL : XML_TEXTREADER_MODE_ERROR;
}

XmlReader::~XmlReader() = default;

// libxml2's own state is at the end as soon as it has parsed all, nodes ahead of the current one, so this one is kept
// apart.
bool XmlReader::read() {
  if (parser_ == nullptr) return false;
  const Silence silence;
  const int result = xmlTextReaderRead(parser_->reader);
  // Of an entity that is not predefined nothing is known: the text has a gap there.
  if (result == 1 && xmlTextReaderNodeType(parser_->reader) != XML_READER_TYPE_ENTITY_REFERENCE) {
    state_ = XML_TEXTREADER_MODE_INTERACTIVE;
    return true;
  }
  state_ = result == 0 ? XML_TEXTREADER_MODE_EOF : XML_TEXTREADER_MODE_ERROR;
  parser_.reset();
  return false;
}

int XmlReader::nodeType() const { return parser_ != nullptr ? xmlTextReaderNodeType(parser_->reader) : 0; }

std::string XmlReader::name() const {
  return parser_ != nullptr ? std::string(textOf(xmlTextReaderConstName(parser_->reader))) : std::string();
}

std::string XmlReader::value() const {
  std::string text;
  value(text);
  return text;
}

void XmlReader::value(std::string& text) const {
  text = parser_ != nullptr ? textOf(xmlTextReaderConstValue(parser_->reader)) : std::string_view();
}

}  // namespace qx
