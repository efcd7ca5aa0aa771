#include "vso/node/NetworkHealth.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <log4cplus/loglevel.h>

#include <memory>
#include <sstream>
#include <string>
#include <type_traits>
#include <vector>

#include "qxresponse/JsonResponse.h"
#include "support/LogCapture.h"
#include "vso/node/RecordingResponse.h"
#include "vso/proto/NetworkHealthPBuf.pb.h"
#include "vso/serial/Forms.h"

namespace qx {
namespace {

using test::responseCalls;
using test::serialized;
using test::written;
using testing::ElementsAre;
using testing::IsEmpty;

/// Addresses with numbers 1 and 256: as text the second would be first.
Euid first() {
  Euid euid;
  euid = std::string("0100000000000000");
  return euid;
}
Euid second() {
  Euid euid;
  euid = std::string("0001000000000000");
  return euid;
}

NetworkHealthItem item(const std::string& name, const std::string& value) {
  return {name, NetworkHealthItem::string, "l", "h", value, "u"};
}

/// Two nodes, added in the reverse of their order.
NetworkHealth twoNodes() {
  NetworkHealth health;
  health.nodeHealth(second(), {item("c", "3")});
  health.nodeHealth(first(), {item("a", "1"), item("b", "2")});
  return health;
}

NetworkHealth withVersion(unsigned int version) {
  pb::NetworkHealthPBuf message;
  message.set_version(version);
  NetworkHealth health = twoNodes();
  EXPECT_FALSE(health.fromProtobuf(message));
  return health;
}

std::string printed(const NetworkHealth& health) {
  std::ostringstream out;
  EXPECT_EQ(&health.print(out), &out);
  return out.str();
}

TEST(NetworkHealth, IsEmptyAtFirst) {
  const NetworkHealth health;
  EXPECT_EQ(NetworkHealth::VERSION, 1U);
  EXPECT_EQ(health.version(), 1U);
  EXPECT_THAT(health.nodeHealth(), IsEmpty());
  EXPECT_FALSE(std::is_polymorphic_v<NetworkHealth>);
}

TEST(NetworkHealth, KeepsNodesByTheirNumbersAndItemsAsAdded) {
  const NetworkHealth health = twoNodes();
  ASSERT_EQ(health.nodeHealth().size(), 2U);
  EXPECT_EQ(health.nodeHealth().begin()->first, first());
  EXPECT_THAT(health.nodeHealth().at(first()), ElementsAre(item("a", "1"), item("b", "2")));
  EXPECT_THAT(health.nodeHealth().at(second()), ElementsAre(item("c", "3")));
}

TEST(NetworkHealth, ReplacesTheItemsOfANode) {
  NetworkHealth health = twoNodes();
  health.nodeHealth(first(), {item("z", "9")});
  EXPECT_EQ(health.nodeHealth().size(), 2U);
  EXPECT_THAT(health.nodeHealth().at(first()), ElementsAre(item("z", "9")));
}

TEST(NetworkHealth, EqualityComparesEveryField) {
  const NetworkHealth health = twoNodes();
  EXPECT_TRUE(health == twoNodes());
  EXPECT_FALSE(health != twoNodes());

  std::vector<NetworkHealth> others(6, health);
  others[0] = withVersion(2);
  others[1].nodeHealth(Euid::INVALID, {});
  others[2].nodeHealth(first(), {item("b", "2"), item("a", "1")});
  others[3].nodeHealth(first(), {item("a", "1")});
  others[4].nodeHealth(first(), {item("a", "1"), item("b", "other")});
  others[5] = NetworkHealth();
  others[5].nodeHealth(first(), {item("a", "1"), item("b", "2")});
  others[5].nodeHealth(Euid::INVALID, {item("c", "3")});
  for (const NetworkHealth& other : others) {
    EXPECT_FALSE(health == other) << printed(other);
    EXPECT_FALSE(other == health) << printed(other);
    EXPECT_TRUE(health != other) << printed(other);
  }
}

TEST(NetworkHealth, IsCopiedWholeAndDeep) {
  const NetworkHealth health = withVersion(9);
  const NetworkHealth copy(health);
  NetworkHealth assigned;
  assigned = health;
  const NetworkHealth& same = assigned;
  assigned = same;
  EXPECT_TRUE(copy == health);
  EXPECT_TRUE(assigned == health);
  assigned.nodeHealth(first(), {});
  EXPECT_TRUE(copy == health);
  EXPECT_EQ(health.nodeHealth().at(first()).size(), 2U);
}

TEST(NetworkHealth, IsCloned) {
  const NetworkHealth health = withVersion(9);
  const std::unique_ptr<NetworkHealth> clone(health.clone());
  EXPECT_NE(clone.get(), &health);
  EXPECT_TRUE(*clone == health);
}

TEST(NetworkHealth, IsPrintedWithAllNodesAndItems) {
  EXPECT_EQ(printed(NetworkHealth()), "{version_ = 1, nodeHealth_ = []}");
  EXPECT_EQ(printed(twoNodes()),
            "{version_ = 1, nodeHealth_ = [{0100000000000000, [{1, a, 1, l, h, 1, u}, {1, b, 1, l, h, 2, u}]}, "
            "{0001000000000000, [{1, c, 1, l, h, 3, u}]}]}");
}

TEST(NetworkHealth, IsPrintedWithANodeWithoutItems) {
  NetworkHealth health = withVersion(12);
  health.nodeHealth(first(), {});
  EXPECT_EQ(printed(health),
            "{version_ = 12, nodeHealth_ = [{0100000000000000, []}, {0001000000000000, [{1, c, 1, l, h, 3, u}]}]}");
}

const std::string ATTRIBUTES = " class_id=\"0\" tracking_level=\"0\" version=\"182\"";

std::string itemXml(const std::string& name, const std::string& value) {
  return "<item" + ATTRIBUTES + "><version_>1</version_><name_>" + name +
         "</name_><type_>1</type_><min_>l</min_><max_>h</max_><value_>" + value + "</value_><units_>u</units_></item>";
}

TEST(NetworkHealth, IsWrittenAsXml) {
  EXPECT_EQ(written([](XmlWriter& writer) { twoNodes().toXml(writer, "health"); }),
            "<health" + ATTRIBUTES + "><version_>1</version_>" + "<nodeHealth_" + ATTRIBUTES +
                "><count>2</count><item_version>0</item_version>" + "<item" + ATTRIBUTES + ">" + "<first" + ATTRIBUTES +
                "><id_>1</id_></first>" + "<second" + ATTRIBUTES + "><count>2</count><item_version>183</item_version>" +
                itemXml("a", "1") + itemXml("b", "2") + "</second></item>" + "<item" + ATTRIBUTES + ">" + "<first" +
                ATTRIBUTES + "><id_>256</id_></first>" + "<second" + ATTRIBUTES +
                "><count>1</count><item_version>183</item_version>" + itemXml("c", "3") + "</second></item>" +
                "</nodeHealth_></health>");
}

TEST(NetworkHealth, IsWrittenAsXmlWithoutNodesAndWithoutItems) {
  EXPECT_EQ(written([](XmlWriter& writer) { NetworkHealth().toXml(writer, "x"); }),
            "<x" + ATTRIBUTES + "><version_>1</version_><nodeHealth_" + ATTRIBUTES +
                "><count>0</count><item_version>0</item_version></nodeHealth_></x>");
  NetworkHealth health;
  health.nodeHealth(Euid::INVALID, {});
  EXPECT_EQ(written([&](XmlWriter& writer) { health.toXml(writer, "x"); }),
            "<x" + ATTRIBUTES + "><version_>1</version_><nodeHealth_" + ATTRIBUTES +
                "><count>1</count><item_version>0</item_version><item" + ATTRIBUTES + "><first" + ATTRIBUTES +
                "><id_>18446744073709551615</id_></first><second" + ATTRIBUTES +
                "><count>0</count><item_version>183</item_version></second></item></nodeHealth_></x>");
}

TEST(NetworkHealth, IsWrittenToAMessage) {
  NetworkHealth health;
  health.nodeHealth(second(), {item("c", "3"), NetworkHealthItem()});
  EXPECT_EQ(serialized(health.toProtobuf()),
            "08 01"           // version 1
            " 12 1e"          // an entry of the map: 30 bytes
            " 08 80 02"       // key 256
            " 12 19"          // value: 25 bytes
            " 0a 13"          // an item: 19 bytes
            " 08 01"          // version 1
            " 12 01 63"       // name
            " 18 01"          // type
            " 22 01 6c"       // min
            " 2a 01 68"       // max
            " 32 01 33"       // value
            " 3a 01 75"       // units
            " 0a 02 08 01");  // an empty item
  const std::unique_ptr<pb::NetworkHealthPBuf> message(health.toProtobuf());
  EXPECT_EQ(message->GetArena(), nullptr);
}

TEST(NetworkHealth, WritesANodeWithoutItemsToAMessage) {
  NetworkHealth health;
  health.nodeHealth(first(), {});
  const std::unique_ptr<pb::NetworkHealthPBuf> message(health.toProtobuf());
  ASSERT_EQ(message->nodehealth().count(1), 1U);
  EXPECT_EQ(message->nodehealth().at(1).items_size(), 0);
}

TEST(NetworkHealth, ReadsBackWhatItWrote) {
  NetworkHealth health = withVersion(4000000000);
  health.nodeHealth(Euid::INVALID, {});
  health.nodeHealth(Euid(), {item("zero", "0")});
  const std::unique_ptr<pb::NetworkHealthPBuf> message(health.toProtobuf());
  EXPECT_EQ(message->nodehealth().size(), 4U);
  NetworkHealth read;
  const test::LogCapture capture;
  EXPECT_FALSE(read.fromProtobuf(*message));
  EXPECT_TRUE(read == health) << printed(read);
  EXPECT_THAT(capture.texts(), IsEmpty());
}

TEST(NetworkHealth, TakesTheVersionOfAnEmptyMessageAndKeepsItsNodes) {
  NetworkHealth health = twoNodes();
  EXPECT_FALSE(health.fromProtobuf(pb::NetworkHealthPBuf()));
  EXPECT_EQ(health.version(), 0U);
  EXPECT_EQ(health.nodeHealth(), twoNodes().nodeHealth());
}

TEST(NetworkHealth, RefusesNodesThatAreThereAndTakesTheOthers) {
  NetworkHealth there;
  there.nodeHealth(first(), {item("old", "1")});
  there.nodeHealth(second(), {});
  NetworkHealth arriving = withVersion(5);
  arriving.nodeHealth(Euid::INVALID, {item("new", "9")});
  const std::unique_ptr<pb::NetworkHealthPBuf> message(arriving.toProtobuf());

  const test::LogCapture capture;
  EXPECT_TRUE(there.fromProtobuf(*message));
  EXPECT_EQ(there.version(), 5U);
  ASSERT_EQ(there.nodeHealth().size(), 3U);
  EXPECT_THAT(there.nodeHealth().at(first()), ElementsAre(item("old", "1")));
  EXPECT_THAT(there.nodeHealth().at(second()), IsEmpty());
  EXPECT_THAT(there.nodeHealth().at(Euid::INVALID), ElementsAre(item("new", "9")));
  const std::string refused = "NetworkHealth::fromProtobuf: failed to insert NetworkHealthItem";
  EXPECT_THAT(capture.texts(), ElementsAre(refused, refused));
  EXPECT_EQ(capture.count(log4cplus::WARN_LOG_LEVEL), 2U);
}

TEST(NetworkHealth, AnswersWithoutADescriptionIfThereAreNoNodes) {
  EXPECT_THAT(responseCalls([](const auto& response) { NetworkHealth().toIResponse(response); }),
              ElementsAre("startObject NetworkHealth 0", "addInteger version_ 1", "startArray nodeHealth_ 0",
                          "addCount count 0", "endArray", "endObject"));
}

TEST(NetworkHealth, AnswersWithTheDescriptionOfTheFirstNodeForAll) {
  EXPECT_THAT(
      responseCalls([](const auto& response) { twoNodes().toIResponse(response); }),
      ElementsAre("startObject NetworkHealth 0", "addInteger version_ 1",                                           //
                  "startArray healthItemData 0", "addCount count 2",                                                //
                  "startObject NetworkHealthItemData 0", "addInteger version_ 1", "addString name_ a",              //
                  "addInteger type_ 1", "addString min_ l", "addString max_ h", "addString units_ u", "endObject",  //
                  "startObject NetworkHealthItemData 0", "addInteger version_ 1", "addString name_ b",              //
                  "addInteger type_ 1", "addString min_ l", "addString max_ h", "addString units_ u", "endObject",  //
                  "endArray",                                                                                       //
                  "startArray nodeHealth_ 0", "addCount count 2",                                                   //
                  "startObject item 0", "addString id 0100000000000000",                                            //
                  "startArray healthItem 0", "addCount count 2",                                                    //
                  "startObject NetworkHealthItem 0", "addString name_ a", "addString value_ 1", "endObject",        //
                  "startObject NetworkHealthItem 0", "addString name_ b", "addString value_ 2", "endObject",        //
                  "endArray", "endObject",                                                                          //
                  "startObject item 0", "addString id 0001000000000000",                                            //
                  "startArray healthItem 0", "addCount count 1",                                                    //
                  "startObject NetworkHealthItem 0", "addString name_ c", "addString value_ 3", "endObject",        //
                  "endArray", "endObject",                                                                          //
                  "endArray", "endObject"));
}

TEST(NetworkHealth, AnswersWithAnEmptyDescriptionIfTheFirstNodeHasNoItems) {
  NetworkHealth health;
  health.nodeHealth(first(), {});
  EXPECT_THAT(responseCalls([&](const auto& response) { health.toIResponse(response); }),
              ElementsAre("startObject NetworkHealth 0", "addInteger version_ 1",                  //
                          "startArray healthItemData 0", "addCount count 0", "endArray",           //
                          "startArray nodeHealth_ 0", "addCount count 1",                          //
                          "startObject item 0", "addString id 0100000000000000",                   //
                          "startArray healthItem 0", "addCount count 0", "endArray", "endObject",  //
                          "endArray", "endObject"));
}

std::string answer(const NetworkHealth& health) {
  const auto response = boost::make_shared<response::JsonResponse>();
  health.toIResponse(response);
  return response->document();
}

TEST(NetworkHealth, IsADocumentAsAnAnswer) {
  EXPECT_EQ(answer(NetworkHealth()), R"({"NetworkHealth":{"version_":1,"nodeHealth_":[]}})");
  EXPECT_EQ(answer(twoNodes()), R"({"NetworkHealth":{"version_":1,"healthItemData":[)"
                                R"({"version_":1,"name_":"a","type_":1,"min_":"l","max_":"h","units_":"u"},)"
                                R"({"version_":1,"name_":"b","type_":1,"min_":"l","max_":"h","units_":"u"}],)"
                                R"("nodeHealth_":[{"id":"0100000000000000","healthItem":[)"
                                R"({"name_":"a","value_":"1"},{"name_":"b","value_":"2"}]},)"
                                R"({"id":"0001000000000000","healthItem":[{"name_":"c","value_":"3"}]}]}})");
}

}  // namespace
}  // namespace qx
