// XmlReader and XmlWriter on arbitrary bytes. Reachable from outside: the server reads documents that its clients send
// and that lie in its files, and it writes texts that devices have sent.
#include <cstddef>
#include <cstdint>
#include <sstream>
#include <string>
#include <utility>

#include "fuzz/support/trapUnless.h"
#include "qxxml/XmlReader.h"
#include "qxxml/XmlWriter.h"

namespace {

using qx::XmlReader;
using qx::XmlWriter;
using qx::fuzz::trapUnless;

constexpr int ELEMENT = 1;
constexpr int FAILED = 2;

std::string written(const std::string& name, const std::string& value, bool indent) {
  std::ostringstream out;
  XmlWriter writer(out, indent);
  writer.startElement(name);
  writer.writeAttribute(name.c_str(), value.c_str());
  writer.writeElement(name, value);
  writer.endElement();
  return out.str();
}

/// Steps from the start of a document of `written` onto its child, and gives the child's name and text.
std::pair<std::string, std::string> childOf(const std::string& document) {
  XmlReader reader(document);
  trapUnless(reader.read() && reader.nodeType() == ELEMENT, "a written document begins with its element");
  do {
    trapUnless(reader.read(), "a written document has its child");
  } while (reader.nodeType() != ELEMENT);
  std::pair<std::string, std::string> child;
  child.first = reader.name();
  trapUnless(reader.read(), "a written child goes on");
  reader.value(child.second);
  while (reader.read()) {
  }
  trapUnless(reader.state() != FAILED, "a written document is well-formed");
  return child;
}

void checkWritten(const std::string& name, const std::string& value) {
  const auto child = childOf(written(name, value, false));
  trapUnless(childOf(written(name, value, true)) == child, "indentation changes no text");
  trapUnless(childOf(written(child.first, child.second, false)) == child, "what was read is written as it is");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string bytes(data, data + size);

  XmlReader reader(bytes);
  std::size_t nodes = 0;
  std::size_t held = 0;
  while (reader.read()) {
    trapUnless(reader.nodeType() != 0, "a node has a type");
    if (reader.nodeType() == ELEMENT) trapUnless(!reader.name().empty(), "an element has a name");
    held += reader.value().size();
    trapUnless(++nodes <= size, "a node takes a byte at least");
  }
  // An entity would make more of a document than there is in it; a byte of ISO 8859 becomes at most three.
  trapUnless(held <= 3 * size, "texts are not longer than the document");
  trapUnless(reader.nodeType() == 0 && reader.name().empty() && reader.value().empty(), "behind the end is no node");
  trapUnless(nodes != 0 || reader.state() == FAILED, "a document without a node is none");
  const int state = reader.state();
  trapUnless(!reader.read() && reader.state() == state, "the end is final");

  const std::size_t half = size / 2;
  checkWritten(bytes.substr(0, half), bytes.substr(half));
  return 0;
}
