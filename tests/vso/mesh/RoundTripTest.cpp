// Random records through their serial forms and back. The seeds are fixed: a failure comes again.
#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <random>
#include <string>

#include "Records.h"
#include "qxxml/XmlReader.h"
#include "vso/mesh/AccessPoint.h"
#include "vso/mesh/Hop.h"
#include "vso/mesh/MeshParameters.h"
#include "vso/mesh/MeshSecurityData.h"
#include "vso/mesh/MeshSecurityKeyData.h"
#include "vso/mesh/Route.h"
#include "vso/mesh/SourceRoute.h"
#include "vso/mesh/Zap.h"
#include "vso/mesh/ZapProxy.h"
#include "vso/proto/AccessPointPBuf.pb.h"
#include "vso/proto/MeshParametersPBuf.pb.h"
#include "vso/proto/SourceRoutePBuf.pb.h"
#include "vso/proto/ZapPBuf.pb.h"
#include "vso/proto/ZapProxyPBuf.pb.h"

namespace qx {
namespace {

using test::messageOf;
using test::sameMessage;
using test::xmlOf;

constexpr int ROUNDS = 200;

/// Random values, of which the least and the greatest come often.
class Random {
 public:
  explicit Random(unsigned int seed) : generator_(seed) {}

  /// A number of `bits` bits.
  std::uint64_t number(unsigned int bits) {
    const std::uint64_t most = ~std::uint64_t{0} >> (64 - bits);
    switch (below(8)) {
      case 0:
        return 0;
      case 1:
        return most;
      default:
        return (std::uint64_t{generator_()} << 32 | generator_()) & most;
    }
  }
  std::uint32_t u8() { return static_cast<std::uint32_t>(number(8)); }
  std::uint32_t u16() { return static_cast<std::uint32_t>(number(16)); }
  std::uint32_t u32() { return static_cast<std::uint32_t>(number(32)); }
  bool flag() { return below(2) == 1; }
  std::uint32_t below(std::uint32_t bound) { return generator_() % bound; }
  std::string bytes(std::size_t count) {
    std::string text;
    while (text.size() < count) text += static_cast<char>(u8());
    return text;
  }

 private:
  std::mt19937 generator_;
};

void fill(pb::PanIdPBuf& message, Random& random) { message.set_addr(random.bytes(8)); }

void fill(pb::AccessPointPBuf& message, Random& random) {
  message.set_destination(random.u16());
  message.set_tableindex(random.u8());
}

void fill(pb::HopPBuf& message, Random& random) {
  message.set_neighbor(random.u16());
  message.set_lqi(random.u8());
  message.mutable_neighborlid()->set_id(random.number(64));
  message.set_type(static_cast<pb::ZigbeeNodeDeviceTypePEnum>(random.u8()));
  message.set_rxonwhenidle(static_cast<pb::TriboolPEnum>(random.below(3)));
  message.set_relationship(static_cast<pb::HopRelationshipPEnum>(random.u32()));
  message.set_permitjoining(static_cast<pb::TriboolPEnum>(random.below(3)));
  message.set_treedepth(random.u8());
  message.mutable_neighborpanid()->set_addr(random.bytes(8));
}

void fill(pb::RoutePBuf& message, Random& random) {
  message.set_destination(random.u16());
  message.set_routestatus(static_cast<pb::RouteStatusPEnum>(random.u32()));
  message.set_memconstrained(random.flag());
  message.set_manytoone(random.flag());
  message.set_routerecordrequired(random.flag());
  message.set_nexthop(random.u16());
}

void fill(pb::SourceRoutePBuf& message, Random& random) {
  message.mutable_baseclass();
  for (std::uint32_t relays = random.u8(); relays != 0; --relays)
    message.mutable_baseclass()->add_contents(random.u16());
  message.set_failures(random.u32());
  message.mutable_zap()->set_id(random.number(64));
  message.set_zapsid(random.u16());
  message.mutable_timestamp()->set_seconds(static_cast<std::int32_t>(random.u32()));
}

void fill(pb::MeshSecurityKeyDataPBuf& message, Random& random) { message.set_contents(random.bytes(16)); }

void fill(pb::MeshSecurityDataPBuf& message, Random& random) {
  message.set_keytype(static_cast<pb::KeyTypePEnum>(random.u32()));
  fill(*message.mutable_key(), random);
  message.set_outgoingframecounter(random.u32());
  message.set_incomingframecounter(random.u32());
  message.set_sequencenumber(random.u8());
  message.mutable_partnerlid()->set_id(random.number(64));
}

void fill(pb::MeshParametersPBuf& message, Random& random) {
  message.set_status(static_cast<pb::MeshStatePEnum>(random.u32()));
  message.mutable_xpanid()->set_addr(random.bytes(8));
  message.set_panid(random.u16());
  message.set_channel(random.u8());
  fill(*message.mutable_preconfiguredkey(), random);
  fill(*message.mutable_networkkey(), random);
}

void fill(pb::ZapProxyPBuf& message, Random& random) {
  message.mutable_zapeuid()->set_id(random.number(64));
  message.set_zapnodeid(random.u16());
  message.set_proxycapable(random.flag());
  message.set_proxysid(random.u16());
  message.set_noderefs(random.u16());
}

void fill(pb::ZapPBuf& message, Random& random) {
  message.set_ip(random.u32());
  message.set_port(random.u16());
  message.mutable_id()->set_id(random.number(64));
  message.mutable_xpanid()->set_addr(random.bytes(8));
  message.set_panid(random.u16());
  message.set_channel(random.u8());
  message.set_status(random.u8());
  message.set_iscoordinator(random.flag());
  message.set_radiotxpower(static_cast<std::int8_t>(random.u8()));
  message.mutable_timestarted()->set_seconds(static_cast<std::int32_t>(random.u32()));
  message.set_rollovercount(random.u32());
  message.set_nobuffercount(random.number(64));
  message.set_sid(random.u16());
  message.set_stackversion(random.u16());
  message.set_protocolversion(random.u8());
  message.set_stackid(random.u8());
  message.set_configureascoordinator(random.flag());
  fill(*message.mutable_trustcenterlinkdata(), random);
  fill(*message.mutable_trustcentermasterdata(), random);
  fill(*message.mutable_trustcurrentnetworkdata(), random);
  fill(*message.mutable_trustnextnetworkdata(), random);
  fill(*message.mutable_applicationlinkdata(), random);
  fill(*message.mutable_applicationmasterdata(), random);
  for (std::uint32_t hops = random.below(20); hops != 0; --hops) fill(*message.add_hops(), random);
  message.set_rssi(static_cast<std::int8_t>(random.u8()));
  for (std::uint32_t routes = random.below(20); routes != 0; --routes) fill(*message.add_routes(), random);
  message.set_maxinflightmessages(random.u16());
  message.set_numinflightmessages(random.u16());
  message.set_inflightmessageswatermark(random.u8());
}

/// One object reads random messages one after the other and writes them back, through their bytes both times.
template <typename Message, typename Model>
void expectMessagesSurvive(Model model, unsigned int seed) {
  Random random(seed);
  for (int round = 0; round < ROUNDS; ++round) {
    Message sent;
    fill(sent, random);
    Message received;
    ASSERT_TRUE(received.ParseFromString(sent.SerializeAsString())) << round;
    ASSERT_FALSE(model.fromProtobuf(received)) << round;
    Message back;
    ASSERT_TRUE(back.ParseFromString(messageOf(model)->SerializeAsString())) << round;
    ASSERT_TRUE(sameMessage(back, sent)) << round;
  }
}

TEST(RoundTrip, AccessPointSurvivesItsMessage) { expectMessagesSurvive<pb::AccessPointPBuf>(AccessPoint::INVALID, 1); }

TEST(RoundTrip, HopSurvivesItsMessage) { expectMessagesSurvive<pb::HopPBuf>(Hop::INVALID, 2); }

TEST(RoundTrip, RouteSurvivesItsMessage) { expectMessagesSurvive<pb::RoutePBuf>(Route::INVALID, 3); }

TEST(RoundTrip, SourceRouteSurvivesItsMessage) { expectMessagesSurvive<pb::SourceRoutePBuf>(SourceRoute::INVALID, 4); }

TEST(RoundTrip, MeshSecurityKeyDataSurvivesItsMessage) {
  expectMessagesSurvive<pb::MeshSecurityKeyDataPBuf>(MeshSecurityKeyData(0), 5);
}

TEST(RoundTrip, MeshSecurityDataSurvivesItsMessage) {
  expectMessagesSurvive<pb::MeshSecurityDataPBuf>(MeshSecurityData(0), 6);
}

TEST(RoundTrip, MeshParametersSurvivesItsMessage) {
  expectMessagesSurvive<pb::MeshParametersPBuf>(MeshParameters(), 7);
}

TEST(RoundTrip, ZapSurvivesItsMessage) { expectMessagesSurvive<pb::ZapPBuf>(Zap(), 8); }

TEST(RoundTrip, ZapProxySurvivesItsMessage) { expectMessagesSurvive<pb::ZapProxyPBuf>(ZapProxy(), 9); }

/// Random objects written as XML are read back by `target`, which keeps what it read before.
template <typename Message, typename Model>
void expectXmlSurvives(Model source, Model target, unsigned int seed) {
  Random random(seed);
  for (int round = 0; round < ROUNDS; ++round) {
    Message message;
    fill(message, random);
    ASSERT_FALSE(source.fromProtobuf(message)) << round;
    XmlReader reader(xmlOf(source, "object"));
    ASSERT_FALSE(target.fromXml(reader)) << round;
    ASSERT_TRUE(sameMessage(*messageOf(target), message)) << round;
  }
}

TEST(RoundTrip, PanIdSurvivesItsMessage) { expectMessagesSurvive<pb::PanIdPBuf>(PanId(), 10); }

TEST(RoundTrip, PanIdSurvivesItsXml) { expectXmlSurvives<pb::PanIdPBuf>(PanId(), PanId(), 11); }

TEST(RoundTrip, MeshSecurityKeyDataSurvivesItsXml) {
  expectXmlSurvives<pb::MeshSecurityKeyDataPBuf>(MeshSecurityKeyData(0), MeshSecurityKeyData(0), 12);
}

TEST(RoundTrip, MeshParametersSurvivesItsXml) {
  expectXmlSurvives<pb::MeshParametersPBuf>(MeshParameters(), MeshParameters(), 13);
}

}  // namespace
}  // namespace qx
