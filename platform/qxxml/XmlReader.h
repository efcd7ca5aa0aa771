// Reads an XML document node by node.

#pragma once

#include <memory>
#include <string>

namespace qx {

/// A walk over the nodes of one document, in document order: each element's start, what it holds, and its end, unless
/// it is an empty tag. Attributes are not visited. Node types and states are libxml2's numbers (xmlReaderTypes and
/// xmlTextReaderMode).
///
/// The document may come from anybody. It is read without touching files or the network, and without a word on
/// standard error. Memory is bounded by the document's length, time by a multiple of it. A document that is not
/// well-formed fails where reading comes upon the first error, possibly some nodes ahead; an empty one is not
/// well-formed. A document fails before its first node if it
///
///  - is in another encoding than UTF-8, ASCII or one of ISO 8859 (texts come out in UTF-8 from all of them),
///  - has declarations in its document type (so that no entity can be defined; the type's name alone does no harm),
///  - has a tag, a comment, an instruction or a CDATA section of more than 256 KiB, more than 1000 attributes in a tag,
///    or declares more than 1000 namespaces,
///  - contains a zero byte, or is longer than 2^31 - 1 bytes.
///
/// An entity that is not predefined, more than some 256 levels of elements, and a text of more than 10,000,000 bytes
/// are errors where they stand.
class XmlReader {
 public:
  explicit XmlReader(const std::string& document);
  ~XmlReader();

  XmlReader(const XmlReader&) = delete;
  XmlReader& operator=(const XmlReader&) = delete;

  /// Moves to the next node. False at the end of the document and when reading failed, and from then on; there is no
  /// current node then.
  bool read();

  /// Kind of the current node: 1 an element's start, 3 text, 14 white space, 15 an element's end. 0 without a node.
  int nodeType() const;

  /// Name of the current node, with a prefix if it has one; "#text" for text. "" without a node.
  std::string name() const;

  /// Text of the current node, whole; "" for a node without one, such as an element's start, and without a node.
  std::string value() const;
  void value(std::string& text) const;

  /// 0 before the first read, 1 at a node, 3 behind its end; 2 when reading failed, already before the first
  /// read for a document that is refused unread.
  int state() const { return state_; }

 private:
  struct Parser;

  // The parser points into it.
  const std::string document_;
  // Null when there is nothing more to read.
  std::unique_ptr<Parser> parser_;
  int state_ = 0;
};

}  // namespace qx
