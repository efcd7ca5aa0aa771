// The XML forms that the library reads, on arbitrary bytes. Reachable from outside: the server reads the parameters of
// its mesh from documents that its clients send and that lie in its files.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <sstream>
#include <string>

#include "fuzz/support/trapUnless.h"
#include "qxxml/XmlReader.h"
#include "qxxml/XmlWriter.h"
#include "vso/identifiers/PanId.h"
#include "vso/mesh/MeshParameters.h"
#include "vso/mesh/MeshSecurityKeyData.h"

namespace {

using qx::MeshParameters;
using qx::MeshSecurityKeyData;
using qx::PanId;
using qx::XmlReader;
using qx::XmlWriter;
using qx::fuzz::trapUnless;

constexpr int FAILED = 2;
constexpr unsigned char FILL = 0x5A;

std::string written(const MeshParameters& parameters) {
  std::ostringstream out;
  XmlWriter writer(out);
  parameters.toXml(writer, "mesh");
  return out.str();
}

void checkPanId(const std::string& document) {
  PanId before;
  before = FILL;
  PanId id(before);
  XmlReader reader(document);
  const bool failed = id.fromXml(reader);
  trapUnless(failed || reader.state() != FAILED, "a failed reader is a failure");
  trapUnless(!failed || reader.state() == FAILED || id == before, "an id that was refused stays as it was");
}

void checkKey(const std::string& document) {
  struct {
    MeshSecurityKeyData before{FILL};
    MeshSecurityKeyData key{FILL};
    MeshSecurityKeyData after{FILL};
  } row;
  XmlReader reader(document);
  const bool failed = row.key.fromXml(reader);
  trapUnless(failed == (reader.state() == FAILED), "a key fails with its reader alone");
  trapUnless(row.before == FILL && row.after == FILL, "nothing is written beside a key");
}

/// Parameters that differ from `other` in every field.
MeshParameters differentFrom(const MeshParameters& other) {
  const auto turned = [](const unsigned char* bytes, unsigned char* out, unsigned int count) {
    std::transform(bytes, bytes + count, out, [](unsigned char byte) { return static_cast<unsigned char>(~byte); });
  };
  MeshParameters different;
  different.status(other.status() == qx::MESH_UP ? qx::MESH_DOWN : qx::MESH_UP);
  unsigned char id[8];
  turned(other.xpanId().cArray(), id, sizeof id);
  different.xpanId(PanId(id));
  different.panId(static_cast<unsigned short>(~other.panId()));
  different.channel(static_cast<unsigned char>(~other.channel()));
  MeshSecurityKeyData key(0);
  turned(other.preconfiguredKey().cArray(), key.contents, sizeof key.contents);
  different.preconfiguredKey(key);
  turned(other.networkKey().cArray(), key.contents, sizeof key.contents);
  different.networkKey(key);
  return different;
}

void checkParameters(const std::string& document) {
  MeshParameters parameters;
  XmlReader reader(document);
  const bool failed = parameters.fromXml(reader);
  trapUnless(failed || reader.state() != FAILED, "a failed reader is a failure");
  trapUnless(failed || !reader.read(), "parameters take all that the reader has");

  const std::string form = written(parameters);
  MeshParameters again = differentFrom(parameters);
  trapUnless(again != parameters && !again.isSameMesh(parameters), "other parameters are not equal");
  XmlReader formReader(form);
  trapUnless(!again.fromXml(formReader), "a written form reads without failure");
  trapUnless(again == parameters && again.isSameMesh(parameters), "a written form reads as equal parameters");
  trapUnless(again.status() == parameters.status(), "a written form reads as the same state");
  trapUnless(written(again) == form, "equal parameters have the same form");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string document(data, data + size);
  checkPanId(document);
  checkKey(document);
  checkParameters(document);
  return 0;
}
