// Serial forms as texts, for tests that compare them whole.
#pragma once

#include <memory>
#include <sstream>
#include <string>

#include "qxxml/XmlWriter.h"
#include "vso/identifiers/hexify.h"

namespace qx::test {

/// The document that `write` makes with a writer.
template <typename Write>
std::string written(Write write) {
  std::ostringstream out;
  XmlWriter writer(out);
  write(writer);
  return out.str();
}

/// Bytes as text, "18 05 01".
inline std::string hexText(const std::string& bytes) {
  std::string text;
  hexify(reinterpret_cast<const unsigned char*>(bytes.data()), static_cast<unsigned int>(bytes.size()), text, true);
  return text;
}

/// The wire form of a new message, as `hexText`.
template <typename Message>
std::string serialized(Message* message) {
  const std::unique_ptr<Message> owned(message);
  return hexText(owned->SerializeAsString());
}

}  // namespace qx::test
