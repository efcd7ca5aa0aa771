#include "apps/vso/mesh/savedMesh.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <boost/crc.hpp>
#include <fstream>
#include <optional>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "apps/vso/mesh/MeshPBuf.pb.h"
#include "support/LogCapture.h"
#include "tests/apps/vso/mesh/MeshFrames.h"
#include "tests/vso/mesh/Records.h"
#include "tests/vso/node/Nodes.h"
#include "vso/proto/ZapPBuf.pb.h"

namespace qx::app {
namespace {

using namespace test_mesh;
using test::messageOf;
using test::sameMessage;
using testing::IsEmpty;
using testing::StartsWith;

/// A record of an access point with something in every kind of field.
Zap someZap(unsigned int number) {
  qx::pb::ZapPBuf message;
  message.set_ip(0xC0A80000 + number);
  message.set_port(1002);
  message.mutable_id()->set_id(number);
  message.mutable_xpanid()->set_addr("xpanid-8");
  message.set_panid(1005);
  message.set_channel(20);
  message.set_iscoordinator(true);
  message.set_radiotxpower(-9);
  message.mutable_timestarted()->set_seconds(1700000010);
  message.set_rollovercount(4000000011U);
  message.set_nobuffercount(12000000000000000012ULL);
  message.set_sid(0x7A00 + number);
  for (auto* const data : {message.mutable_trustcenterlinkdata(), message.mutable_trustcentermasterdata(),
                           message.mutable_trustcurrentnetworkdata(), message.mutable_trustnextnetworkdata(),
                           message.mutable_applicationlinkdata(), message.mutable_applicationmasterdata()}) {
    data->mutable_key()->set_contents(std::string(16, static_cast<char>(number)));
  }
  test::putHop(message.add_hops(), 0x1A20, 20);
  test::putHop(message.add_hops(), 0x1A21, 21);
  test::putRoute(message.add_routes(), 0x1A30, 0x1B30);
  test::putRoute(message.add_routes(), 0x1A31, 0x1B31);
  Zap zap;
  EXPECT_FALSE(zap.fromProtobuf(message));
  return zap;
}

class SavedMeshTest : public testing::Test {
 protected:
  SavedMeshTest() {
    ZigbeeNode filled = test::filledNode();
    nodes_.emplace(filled.lid(), filled);
    MeshServer mesh(NOON);
    mesh.take(announcement(NOON, LAMP, 12));
    mesh.take(announcement(NOON + 60, LAMP, 14));
    mesh.take(neighbourPage(NOON, LAMP, pageOf(2, 0, {neighbourRow(0x20), neighbourRow(0x21)})));
    mesh.take(routePage(NOON, LAMP, pageOf(1, 0, {routeRow(0x40)})));
    nodes_.emplace(LAMP.id(), *mesh.node(LAMP.id()));
    for (const unsigned int number : {1U, 2U}) {
      const Zap zap = someZap(number);
      std::list<Route> routes = {test::routeTo(0x1A30, 0x1B30), test::routeTo(0x1A31, 0x1B31)};
      zaps_.emplace(zap.id(), zap).first->second.setRoutes(routes);  // a copy has none
    }
  }

  test::LogCapture log_;
  MeshServer::Nodes nodes_;
  MeshServer::Zaps zaps_;
};

void expectSame(const MeshServer::Nodes& nodes, const MeshServer::Zaps& zaps, const SavedMesh& saved) {
  ASSERT_EQ(saved.nodes.size(), nodes.size());
  ASSERT_EQ(saved.zaps.size(), zaps.size());
  for (const auto& [euid, node] : nodes) {
    EXPECT_TRUE(sameMessage(*messageOf(saved.nodes.at(euid)), *messageOf(node)));
  }
  for (const auto& [euid, zap] : zaps) EXPECT_TRUE(sameMessage(*messageOf(saved.zaps.at(euid)), *messageOf(zap)));
}

/// Why the bytes are refused; "taken" if they are not.
std::string refusalOf(const std::string& bytes) {
  try {
    meshOfBytes(bytes);
  } catch (const BadMesh& error) {
    return error.what();
  }
  return "taken";
}

/// A file with this content, and all else as it should be.
std::string fileOf(const std::string& mesh, unsigned int version = 1) {
  boost::crc_32_type crc;
  crc.process_bytes(mesh.data(), mesh.size());
  pb::MeshFilePBuf file;
  file.set_version(version);
  file.set_checksum(crc.checksum());
  file.set_mesh(mesh);
  return file.SerializeAsString();
}

const std::string LOST = "it is no saved mesh, or has lost its end";

TEST_F(SavedMeshTest, ReadsBackWithAllNodesAndAccessPoints) {
  const SavedMesh saved = meshOfBytes(bytesOfMesh(nodes_, zaps_));
  expectSame(nodes_, zaps_, saved);
  EXPECT_EQ(routesOf(saved.zaps.begin()->second), "6704>6960 6705>6961");
  EXPECT_EQ(neighboursOf(saved.nodes.at(LAMP.id())), "20:32 21:33");
  EXPECT_EQ(bytesOfMesh(saved.nodes, saved.zaps), bytesOfMesh(nodes_, zaps_));
}

TEST_F(SavedMeshTest, ReadsBackEmpty) {
  const SavedMesh saved = meshOfBytes(bytesOfMesh({}, {}));
  EXPECT_THAT(saved.nodes, IsEmpty());
  EXPECT_THAT(saved.zaps, IsEmpty());
}

// What a server restores is what it saved, and it goes on from there.
TEST_F(SavedMeshTest, IsWhatAServerGoesOnFrom) {
  MeshServer mesh(NOON);
  SavedMesh saved = meshOfBytes(bytesOfMesh(nodes_, zaps_));
  mesh.restore(std::move(saved.nodes), std::move(saved.zaps));
  EXPECT_EQ(bytesOfMesh(mesh.nodes(), mesh.zaps()), bytesOfMesh(nodes_, zaps_));
  mesh.take(announcement(NOON + 120, LAMP, 15));
  EXPECT_EQ(mesh.node(LAMP.id())->reboots(), 3);
  EXPECT_EQ(mesh.node(LAMP.id())->rebootsHistogram().totalEvents(), 3);
}

TEST_F(SavedMeshTest, IsRefusedWhereverItIsCut) {
  for (const std::string& whole : {bytesOfMesh(nodes_, zaps_), bytesOfMesh({}, {})}) {
    for (std::size_t length = 0; length < whole.size(); ++length) {
      ASSERT_NE(refusalOf(whole.substr(0, length)), "taken") << length << " of " << whole.size();
    }
    EXPECT_EQ(refusalOf(whole), "taken");
  }
  const std::string whole = bytesOfMesh(nodes_, zaps_);
  EXPECT_EQ(refusalOf(whole.substr(0, 2)), LOST) << "the version alone";
  EXPECT_EQ(refusalOf(whole.substr(0, 7)), LOST) << "the checksum too";
  EXPECT_EQ(refusalOf(whole.substr(0, whole.size() - 1)), LOST);
}

TEST_F(SavedMeshTest, IsRefusedIfABitHasFlipped) {
  const std::string whole = bytesOfMesh({{LAMP.id(), nodes_.at(LAMP.id())}}, zaps_);
  for (std::size_t at = 0; at < whole.size(); ++at) {
    for (int bit = 0; bit < 8; ++bit) {
      std::string flipped = whole;
      flipped[at] = static_cast<char>(flipped[at] ^ (1 << bit));
      ASSERT_NE(refusalOf(flipped), "taken") << "bit " << bit << " of byte " << at;
    }
  }
}

TEST_F(SavedMeshTest, IsRefusedIfItIsSomethingElse) {
  EXPECT_EQ(refusalOf(""), LOST);
  EXPECT_EQ(refusalOf("# time euid short-address profile cluster hex\n"), LOST);
  EXPECT_EQ(refusalOf(std::string(1000, '\0')), LOST);
  EXPECT_EQ(refusalOf(std::string(1000, '\xFF')), LOST);
  EXPECT_EQ(refusalOf(bytesOfMesh(nodes_, zaps_) + '\x07'), LOST) << "more than a mesh";
  std::mt19937 chance(5);
  for (int i = 0; i < 2000; ++i) {
    std::string garbage(chance() % 200, ' ');
    for (char& c : garbage) c = static_cast<char>(chance());
    EXPECT_NE(refusalOf(garbage), "taken");
  }
}

TEST_F(SavedMeshTest, IsRefusedInAFormOfTheFuture) {
  EXPECT_EQ(refusalOf(fileOf("", 2)), "it has an unknown form, 2");
  EXPECT_THROW(meshOfBytes(fileOf("", 2)), UnknownForm) << "a later one";
  EXPECT_EQ(refusalOf(fileOf("", 0)), LOST) << "nobody's";
  EXPECT_EQ(refusalOf(fileOf("", 4294967295)), "it has an unknown form, 4294967295");
  EXPECT_EQ(refusalOf(fileOf("", 1)), "taken");
}

TEST_F(SavedMeshTest, IsRefusedIfItsChecksumIsWrong) {
  pb::MeshFilePBuf file;
  ASSERT_TRUE(file.ParseFromString(bytesOfMesh(nodes_, zaps_)));
  file.set_checksum(file.checksum() + 1);
  EXPECT_EQ(refusalOf(file.SerializeAsString()), "its content does not match its checksum");
  file.clear_checksum();
  EXPECT_EQ(refusalOf(file.SerializeAsString()), LOST);
  file.clear_mesh();
  file.set_checksum(0);
  EXPECT_EQ(refusalOf(file.SerializeAsString()), LOST) << "zero is the checksum of no content, and there is none";
  EXPECT_EQ(refusalOf(fileOf("\xFF\xFF")), "its content is no mesh") << "but has its checksum";
}

TEST_F(SavedMeshTest, HasTheChecksumOfEthernet) {
  pb::MeshFilePBuf file;
  file.set_version(1);
  file.set_checksum(0xCBF43926);
  file.set_mesh("123456789");  // what the checksum is always shown with; as a message, a field of the future
  EXPECT_EQ(refusalOf(file.SerializeAsString()), "taken");
  EXPECT_EQ(bytesOfMesh({}, {}), std::string("\x08\x01\x15\0\0\0\0\x1a\0", 9));
}

TEST_F(SavedMeshTest, IsRefusedIfARecordIsNotWhole) {
  pb::MeshPBuf mesh;
  mesh.mutable_zaps()->AddAllocated(messageOf(zaps_.begin()->second).release());
  mesh.mutable_zaps(0)->mutable_trustcenterlinkdata()->mutable_key()->set_contents("short");
  EXPECT_EQ(refusalOf(fileOf(mesh.SerializeAsString())), "an access point in it is not whole");
  mesh.Clear();
  mesh.mutable_nodes()->AddAllocated(messageOf(nodes_.at(LAMP.id())).release());
  mesh.mutable_nodes(0)->mutable_hops(0)->mutable_neighborpanid()->set_addr("short");
  EXPECT_EQ(refusalOf(fileOf(mesh.SerializeAsString())), "a node in it is not whole");
  mesh.mutable_nodes(0)->mutable_hops(0)->mutable_neighborpanid()->set_addr("12345678");
  mesh.mutable_nodes(0)->mutable_hops(0)->set_rxonwhenidle(static_cast<qx::pb::TriboolPEnum>(77));
  EXPECT_THAT(refusalOf(fileOf(mesh.SerializeAsString())), StartsWith("a record in it does not read: "));
}

TEST_F(SavedMeshTest, ReadsBackWhateverDamagedFramesHaveMade) {
  std::vector<RecordedFrame> day;
  std::ifstream recording(std::string(VSO_EXAMPLES) + "/mesh-day.txt");
  for (std::string line; std::getline(recording, line);) {
    if (const std::optional<RecordedFrame> frame = parseRecordedFrame(line)) day.push_back(*frame);
  }
  ASSERT_GT(day.size(), 1000U);
  std::mt19937 chance(7);
  for (int round = 0; round < 5; ++round) {
    MeshServer mesh(NOON);
    for (RecordedFrame frame : day) {
      if (chance() % 4 == 0) frame.shortAddress = static_cast<unsigned short>(chance() % 8);
      if (chance() % 4 == 0) frame.bytes.length_ = static_cast<unsigned int>(chance() % (frame.bytes.length_ + 9));
      for (auto changes = chance() % 4; changes > 0; --changes) {
        frame.bytes.contents[chance() % 64] = static_cast<unsigned char>(chance());
      }
      mesh.take(frame);
    }
    EXPECT_EQ(mesh.counts().total(), day.size());
    EXPECT_GT(mesh.counts().taken, 0U);
    EXPECT_GT(mesh.counts().broken, 0U);
    const std::string saved = bytesOfMesh(mesh.nodes(), mesh.zaps());
    const SavedMesh read = meshOfBytes(saved);
    EXPECT_EQ(bytesOfMesh(read.nodes, read.zaps), saved);
  }
}

// A checksum keeps nobody from writing what he likes.
TEST_F(SavedMeshTest, StandsAnyContentWithARightChecksum) {
  pb::MeshFilePBuf file;
  ASSERT_TRUE(file.ParseFromString(bytesOfMesh(nodes_, zaps_)));
  std::mt19937 chance(6);
  int taken = 0;
  for (int i = 0; i < 3000; ++i) {
    std::string mesh = file.mesh();
    for (int changes = 1 + static_cast<int>(chance() % 3); changes > 0; --changes) {
      mesh[chance() % mesh.size()] = static_cast<char>(chance());
    }
    if (refusalOf(fileOf(mesh)) == "taken") ++taken;
  }
  EXPECT_GT(taken, 0);
  EXPECT_LT(taken, 3000);
}

}  // namespace
}  // namespace qx::app
