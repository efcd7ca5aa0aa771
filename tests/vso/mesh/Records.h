// Short ways to the records of a mesh and to their forms, for tests that compare whole texts and whole messages.
#pragma once

#include <google/protobuf/message.h>
#include <google/protobuf/util/message_differencer.h>
#include <gtest/gtest.h>

#include <ios>
#include <memory>
#include <sstream>
#include <string>
#include <type_traits>

#include "qxxml/XmlWriter.h"
#include "vso/identifiers/Euid.h"
#include "vso/identifiers/PanId.h"

namespace qx::test {

/// The attributes of the element of an object.
inline const std::string ARCHIVE = " class_id=\"0\" tracking_level=\"0\" version=\"182\"";

/// The address of 16 digits.
inline Euid euidOf(const std::string& digits) {
  Euid euid;
  euid = digits;
  return euid;
}

/// What an object prints to a fresh stream.
template <typename T>
std::string printed(const T& object) {
  std::ostringstream out;
  out << object;
  return out.str();
}

/// The document that an object writes under a name.
template <typename T>
std::string xmlOf(const T& object, const std::string& name) {
  std::ostringstream out;
  {
    XmlWriter writer(out);
    object.toXml(writer, name);
  }
  return out.str();
}

/// The message of an object, of its own type: `auto message = messageOf(hop)`.
template <typename T>
auto messageOf(const T& object) {
  return std::unique_ptr<std::remove_pointer_t<decltype(object.toProtobuf())>>(object.toProtobuf());
}

/// Whether two messages have the same content; the differences otherwise. Presence counts.
inline testing::AssertionResult sameMessage(const google::protobuf::Message& actual,
                                            const google::protobuf::Message& expected) {
  google::protobuf::util::MessageDifferencer differencer;
  std::string differences;
  differencer.ReportDifferencesToString(&differences);
  if (differencer.Compare(expected, actual)) return testing::AssertionSuccess();
  return testing::AssertionFailure() << "expected -> actual:\n" << differences;
}

/// How a stream stands after printing, told by what it prints next: a number in a field of four, and a boolean.
inline std::string stateOf(std::ostream& stream) {
  std::ostringstream out;
  out.copyfmt(stream);
  out.width(4);
  out << 0xAB;
  out << ' ' << true;
  return out.str();
}

}  // namespace qx::test
