#include "vso/mesh/ZapProxy.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <type_traits>

#include "Records.h"
#include "vso/proto/ZapProxyPBuf.pb.h"

namespace qx {
namespace {

using test::euidOf;
using test::messageOf;
using test::sameMessage;

constexpr std::uint64_t ZAP_NUMBER = 0x7766554433221100;

ZapProxy filled() {
  ZapProxy proxy;
  proxy.zapEuid = euidOf("0011223344556677");
  proxy.zapNodeId = 1002;
  proxy.proxyCapable = true;
  proxy.proxySid = 1004;
  proxy.nodeRefs = 1005;
  return proxy;
}

pb::ZapProxyPBuf filledMessage() {
  pb::ZapProxyPBuf message;
  message.mutable_zapeuid()->set_id(ZAP_NUMBER);
  message.set_zapnodeid(1002);
  message.set_proxycapable(true);
  message.set_proxysid(1004);
  message.set_noderefs(1005);
  return message;
}

TEST(ZapProxy, NamesNobodyByDefault) {
  static_assert(std::has_virtual_destructor_v<ZapProxy>);
  const ZapProxy proxy;
  EXPECT_EQ(proxy.zapEuid, Euid::INVALID);
  EXPECT_EQ(proxy.zapNodeId, 0xFFFF);
  EXPECT_FALSE(proxy.proxyCapable);
  EXPECT_EQ(proxy.proxySid, 0xFFFF);
  EXPECT_EQ(proxy.nodeRefs, 0);
}

TEST(ZapProxy, CopiesAllFields) {
  const ZapProxy original = filled();
  const ZapProxy constructed(original);
  ZapProxy assigned;
  EXPECT_EQ(&(assigned = original), &assigned);
  EXPECT_TRUE(sameMessage(*messageOf(constructed), filledMessage()));
  EXPECT_TRUE(sameMessage(*messageOf(assigned), filledMessage()));
  const ZapProxy& itself = assigned;
  assigned = itself;
  EXPECT_TRUE(sameMessage(*messageOf(assigned), filledMessage()));
}

TEST(ZapProxy, ComparesAllFields) {
  const std::map<std::string, std::function<void(ZapProxy&)>> changes = {
      {"zapEuid", [](ZapProxy& p) { p.zapEuid = euidOf("0011223344556678"); }},
      {"zapNodeId", [](ZapProxy& p) { p.zapNodeId = 1; }},
      {"proxyCapable", [](ZapProxy& p) { p.proxyCapable = false; }},
      {"proxySid", [](ZapProxy& p) { p.proxySid = 1; }},
      {"nodeRefs", [](ZapProxy& p) { p.nodeRefs = 1; }},
  };
  EXPECT_TRUE(filled() == filled());
  EXPECT_FALSE(filled() != filled());
  for (const auto& [field, change] : changes) {
    ZapProxy other = filled();
    change(other);
    EXPECT_FALSE(filled() == other) << field;
    EXPECT_TRUE(filled() != other) << field;
  }
}

TEST(ZapProxy, ReadsAndWritesEachFieldOfItsMessage) {
  EXPECT_TRUE(sameMessage(*messageOf(filled()), filledMessage()));
  ZapProxy proxy;
  EXPECT_FALSE(proxy.fromProtobuf(filledMessage()));
  EXPECT_TRUE(proxy == filled());
}

TEST(ZapProxy, KeepsTheLowBitsOfWiderNumbers) {
  auto message = filledMessage();
  message.set_zapnodeid(0x12345);
  message.set_proxysid(0x6789A);
  message.set_noderefs(0xFFFFBCDE);
  ZapProxy proxy;
  EXPECT_FALSE(proxy.fromProtobuf(message));
  EXPECT_EQ(proxy.zapNodeId, 0x2345);
  EXPECT_EQ(proxy.proxySid, 0x789A);
  EXPECT_EQ(proxy.nodeRefs, 0xBCDE);
}

TEST(ZapProxy, ReadsADefaultMessageAsZeros) {
  ZapProxy proxy = filled();
  EXPECT_FALSE(proxy.fromProtobuf(pb::ZapProxyPBuf()));
  EXPECT_EQ(proxy.zapEuid, Euid());
  EXPECT_EQ(proxy.zapNodeId, 0);
  EXPECT_FALSE(proxy.proxyCapable);
  EXPECT_EQ(proxy.proxySid, 0);
  EXPECT_EQ(proxy.nodeRefs, 0);
}

}  // namespace
}  // namespace qx
