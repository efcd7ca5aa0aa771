// Writes an XML document onto a stream.

#pragma once

#include <iosfwd>
#include <memory>
#include <string>
#include <type_traits>

namespace qx {

namespace detail {

/// void for the types that `XmlWriter` writes as numbers, and no type for all others.
template <class T>
using XmlNumber = std::enable_if_t<std::is_same_v<T, signed char> || std::is_same_v<T, unsigned char> ||
                                   std::is_same_v<T, unsigned short> || std::is_same_v<T, int> ||
                                   std::is_same_v<T, unsigned int> || std::is_same_v<T, unsigned long long>>;

}  // namespace detail

/// Writes one document, in UTF-8, element by element. The stream has all of it when the outermost element is closed;
/// before that, some of it. The stream must outlive the writer.
///
/// What is passed as a text or as an attribute's value may be any bytes: what XML 1.0 cannot carry and what is not
/// UTF-8 becomes U+FFFD, so that the document reads again with the same texts otherwise (within the limits of the
/// reader: `XmlReader` has them). In names, bytes other than ASCII letters, digits, '_', '-' and '.' become '_', and
/// '_' goes in front of a name that begins with none of letter and '_'. A null pointer counts as "".
///
/// Calls that would make the document malformed throw std::logic_error and write nothing: an attribute where no start
/// tag is open or with a name that the tag has already, a second outermost element, an end without an element, a
/// declaration that does not come first. A text of more than 256 MiB, or an attribute's value
/// of more than 16 MiB, throws std::length_error. A stream that fails
/// swallows the rest and shows it in its state; if it throws, so does the call that passed text on. Elements that are
/// open when the writer goes stay so: its reader will not take the document for whole.
class XmlWriter {
 public:
  /// With `indent`, each element has its own line, two blanks further in than its parent, and the last line ends. A
  /// text stays on the line of its element, unchanged.
  explicit XmlWriter(std::ostream& out, bool indent = false);
  /// Passes on what it still holds. Throws nothing, whatever the stream does.
  ~XmlWriter();

  XmlWriter(const XmlWriter&) = delete;
  XmlWriter& operator=(const XmlWriter&) = delete;

  /// The XML declaration and a newline. Without this call the document has none.
  void startDocument();

  /// Opens an element; later attributes and children belong to it.
  void startElement(const std::string& name);
  void startElement(const char* name);

  /// Adds an attribute to the element opened last. To be called before any of its children.
  void writeAttribute(const char* name, const char* value);

  /// A child with a text. An empty text has its own start and end tag, so that a reader comes upon the end in the
  /// text's place.
  void writeElement(const char* name, const char* value);
  void writeElement(const char* name, const std::string& value);
  void writeElement(const std::string& name, const std::string& value);

  /// A child with the digit 1 or 0. `flag` makes no difference.
  void writeElement(const char* name, bool value, bool flag);

  /// A child with the number in decimal; a signed or an unsigned char is a number, too. Not defined in this library,
  /// which knows no number format: the library that writes numbers brings the definition for its types.
  template <class T, class = detail::XmlNumber<T>>
  void writeElement(const char* name, T value);

  /// Closes the element opened last.
  void endElement();

 private:
  struct Document;

  std::unique_ptr<Document> document_;
};

}  // namespace qx
