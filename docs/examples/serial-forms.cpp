#include <vso/vso.h>

#include <iostream>
#include <memory>
#include <sstream>

#include "qxxml/XmlReader.h"
#include "qxxml/XmlWriter.h"
#include "vso/proto/MeshParametersPBuf.pb.h"

int main() {
  qx::MeshParameters mesh;
  mesh.xpanId(qx::PanId(std::string("8877665544332211")));
  mesh.panId(0x1A2B);
  mesh.channel(15);
  mesh.status(qx::MESH_UP);

  // As a message, and as a text that says which message it is.
  const std::unique_ptr<qx::pb::MeshParametersPBuf> message(mesh.toProtobuf());
  std::cout << message->ByteSizeLong() << " bytes, in an envelope: " << qx::serializeWithAny(*message) << "\n";

  // As a document, and back.
  std::ostringstream document;
  qx::XmlWriter writer(document);
  mesh.toXml(writer, "mesh");
  qx::XmlReader reader(document.str());
  qx::MeshParameters restored;
  const bool failed = restored.fromXml(reader);
  std::cout << std::boolalpha << "failed: " << failed << ", equal: " << (restored == mesh) << "\n";
}
