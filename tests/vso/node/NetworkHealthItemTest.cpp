#include "vso/node/NetworkHealthItem.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <memory>
#include <random>
#include <sstream>
#include <string>
#include <type_traits>
#include <vector>

#include "qxresponse/JsonResponse.h"
#include "vso/node/RecordingResponse.h"
#include "vso/proto/NetworkHealthPBuf.pb.h"
#include "vso/serial/Forms.h"

namespace qx {
namespace {

using test::responseCalls;
using test::serialized;
using test::written;
using testing::ElementsAre;

NetworkHealthItem reboots() {
  return {"reboot.sliding_average", NetworkHealthItem::number, "0", "7", "1.5", "reboots/day"};
}

/// One with a version of its own, which only a message gives.
NetworkHealthItem withVersion(unsigned int version) {
  const std::unique_ptr<pb::NetworkHealthItemPBuf> message(reboots().toProtobuf());
  message->set_version(version);
  NetworkHealthItem item;
  EXPECT_FALSE(item.fromProtobuf(*message));
  return item;
}

std::string printed(const NetworkHealthItem& item) {
  std::ostringstream out;
  EXPECT_EQ(&item.print(out), &out);
  return out.str();
}

TEST(NetworkHealthItem, IsEmptyAtFirst) {
  const NetworkHealthItem item;
  EXPECT_EQ(item.version(), 1U);
  EXPECT_EQ(item.name(), "");
  EXPECT_EQ(item.type(), NetworkHealthItem::dt_unknown);
  EXPECT_EQ(item.min(), "");
  EXPECT_EQ(item.max(), "");
  EXPECT_EQ(item.value(), "");
  EXPECT_EQ(item.units(), "");
}

TEST(NetworkHealthItem, IsMadeOfItsTexts) {
  const NetworkHealthItem item = reboots();
  EXPECT_EQ(item.version(), 1U);
  EXPECT_EQ(item.name(), "reboot.sliding_average");
  EXPECT_EQ(item.type(), NetworkHealthItem::number);
  EXPECT_EQ(item.min(), "0");
  EXPECT_EQ(item.max(), "7");
  EXPECT_EQ(item.value(), "1.5");
  EXPECT_EQ(item.units(), "reboots/day");
}

TEST(NetworkHealthItem, NumbersItsVersionAndTypesAsTheMessagesDo) {
  EXPECT_EQ(NetworkHealthItem::VERSION, 1U);
  EXPECT_EQ(static_cast<int>(NetworkHealthItem::dt_unknown), 0);
  EXPECT_EQ(static_cast<int>(NetworkHealthItem::string), 1);
  EXPECT_EQ(static_cast<int>(NetworkHealthItem::number), 2);
  EXPECT_EQ(static_cast<int>(NetworkHealthItem::timestamp), 3);
  EXPECT_TRUE(std::has_virtual_destructor_v<NetworkHealthItem>);
}

TEST(NetworkHealthItem, EqualityComparesEveryField) {
  const NetworkHealthItem item = reboots();
  EXPECT_TRUE(item == reboots());
  EXPECT_FALSE(item != reboots());
  const NetworkHealthItem others[] = {
      withVersion(2),
      {"reboot.sliding_averagE", NetworkHealthItem::number, "0", "7", "1.5", "reboots/day"},
      {"reboot.sliding_average", NetworkHealthItem::string, "0", "7", "1.5", "reboots/day"},
      {"reboot.sliding_average", NetworkHealthItem::number, "", "7", "1.5", "reboots/day"},
      {"reboot.sliding_average", NetworkHealthItem::number, "0", "8", "1.5", "reboots/day"},
      {"reboot.sliding_average", NetworkHealthItem::number, "0", "7", "1.50", "reboots/day"},
      {"reboot.sliding_average", NetworkHealthItem::number, "0", "7", "1.5", "reboots"},
      {"reboot.sliding_average", NetworkHealthItem::number, "0", "7", std::string("1.5\0", 4), "reboots/day"}};
  for (const NetworkHealthItem& other : others) {
    EXPECT_FALSE(item == other) << printed(other);
    EXPECT_FALSE(other == item) << printed(other);
    EXPECT_TRUE(item != other) << printed(other);
  }
}

TEST(NetworkHealthItem, IsCopiedWhole) {
  const NetworkHealthItem item = withVersion(77);
  const NetworkHealthItem copy(item);
  EXPECT_EQ(printed(copy), "{77, reboot.sliding_average, 2, 0, 7, 1.5, reboots/day}");
  NetworkHealthItem assigned;
  assigned = item;
  EXPECT_TRUE(assigned == item);
  const NetworkHealthItem& same = assigned;
  assigned = same;
  EXPECT_TRUE(assigned == item);
}

TEST(NetworkHealthItem, IsCloned) {
  const NetworkHealthItem item = withVersion(77);
  const std::unique_ptr<NetworkHealthItem> clone(item.clone());
  EXPECT_NE(clone.get(), &item);
  EXPECT_TRUE(*clone == item);
}

TEST(NetworkHealthItem, IsPrintedOnOneLine) {
  EXPECT_EQ(printed(reboots()), "{1, reboot.sliding_average, 2, 0, 7, 1.5, reboots/day}");
  EXPECT_EQ(printed(NetworkHealthItem()), "{1, , 0, , , , }");
}

TEST(NetworkHealthItem, AddAppendsATextAsItStands) {
  std::vector<NetworkHealthItem> items;
  NetworkHealthItem::add(items, "a", NetworkHealthItem::string, "b", "c", std::string("green"), "d");
  NetworkHealthItem::add(items, "e", NetworkHealthItem::timestamp, "", "", "2024-Jan-31", "");
  EXPECT_THAT(items, ElementsAre(NetworkHealthItem("a", NetworkHealthItem::string, "b", "c", "green", "d"),
                                 NetworkHealthItem("e", NetworkHealthItem::timestamp, "", "", "2024-Jan-31", "")));
}

TEST(NetworkHealthItem, AddAppendsAWholeNumberInDecimal) {
  std::vector<NetworkHealthItem> items;
  for (const int value : {0, 7, -1, INT_MAX, INT_MIN}) {
    NetworkHealthItem::add(items, "n", NetworkHealthItem::number, "l", "h", value, "u");
  }
  const auto item = [](const char* value) {
    return NetworkHealthItem("n", NetworkHealthItem::number, "l", "h", value, "u");
  };
  EXPECT_THAT(items, ElementsAre(item("0"), item("7"), item("-1"), item("2147483647"), item("-2147483648")));
}

/// The text that a double is added with.
std::string added(double value) {
  std::vector<NetworkHealthItem> items;
  NetworkHealthItem::add(items, "n", NetworkHealthItem::number, "l", "h", value, "u");
  EXPECT_EQ(items.size(), 1U);
  EXPECT_EQ(items[0], NetworkHealthItem("n", NetworkHealthItem::number, "l", "h", items[0].value(), "u"));
  return items[0].value();
}

/// The one that a stream makes of it.
std::string streamed(double value) {
  std::ostringstream out;
  out << value;
  return out.str();
}

TEST(NetworkHealthItem, AddAppendsADoubleInSixDigits) {
  EXPECT_EQ(added(0), "0");
  EXPECT_EQ(added(0.5), "0.5");
  EXPECT_EQ(added(5.0 / 3), "1.66667");
  EXPECT_EQ(added(0.00001), "1e-05");
  EXPECT_EQ(added(0.0001), "0.0001");
  EXPECT_EQ(added(1234567.0), "1.23457e+06");
  EXPECT_EQ(added(999999.0), "999999");
  EXPECT_EQ(added(999999.5), "1e+06");
  EXPECT_EQ(added(-2.25), "-2.25");
  EXPECT_EQ(added(100), "100");
  EXPECT_EQ(added(1e100), "1e+100");
}

TEST(NetworkHealthItem, AddWritesSpecialDoublesAsAStreamDoes) {
  using Limits = std::numeric_limits<double>;
  for (const double value : {0.0, -0.0, Limits::infinity(), -Limits::infinity(), Limits::quiet_NaN(),
                             std::copysign(Limits::quiet_NaN(), -1.0), Limits::max(), Limits::lowest(), Limits::min(),
                             Limits::denorm_min(), -Limits::denorm_min(), Limits::epsilon()}) {
    EXPECT_EQ(added(value), streamed(value));
  }
}

TEST(NetworkHealthItem, AddWritesAnyDoubleAsAStreamDoes) {
  std::mt19937_64 random(20240131);
  for (int i = 0; i < 100000 && !HasFailure(); ++i) {
    const std::uint64_t bits = random();
    double value = 0;
    std::memcpy(&value, &bits, sizeof value);
    EXPECT_EQ(added(value), streamed(value));
  }
}

// Rates are quotients of small numbers, and ties and shortenings are among them.
TEST(NetworkHealthItem, AddWritesRatesAsAStreamDoes) {
  for (int events = 0; events < 1000 && !HasFailure(); ++events) {
    for (int buckets = 1; buckets <= 100; ++buckets) {
      const double rate = static_cast<double>(events) / buckets;
      EXPECT_EQ(added(rate), streamed(rate));
    }
  }
}

TEST(NetworkHealthItem, IsWrittenAsXml) {
  EXPECT_EQ(written([](XmlWriter& writer) { reboots().toXml(writer, "item"); }),
            "<item class_id=\"0\" tracking_level=\"0\" version=\"182\">"
            "<version_>1</version_>"
            "<name_>reboot.sliding_average</name_>"
            "<type_>2</type_>"
            "<min_>0</min_>"
            "<max_>7</max_>"
            "<value_>1.5</value_>"
            "<units_>reboots/day</units_>"
            "</item>");
}

TEST(NetworkHealthItem, IsWrittenAsXmlWithEmptyTexts) {
  EXPECT_EQ(written([](XmlWriter& writer) { NetworkHealthItem().toXml(writer, "x"); }),
            "<x class_id=\"0\" tracking_level=\"0\" version=\"182\">"
            "<version_>1</version_><name_></name_><type_>0</type_><min_></min_><max_></max_><value_></value_>"
            "<units_></units_></x>");
}

TEST(NetworkHealthItem, IsWrittenAsXmlWithHostileTexts) {
  const NetworkHealthItem item("<&>", static_cast<NetworkHealthItem::DataType>(-7), "\x01", "\xFF", "v", "\xC3\xA9");
  EXPECT_EQ(written([&](XmlWriter& writer) { item.toXml(writer, "x"); }),
            "<x class_id=\"0\" tracking_level=\"0\" version=\"182\">"
            "<version_>1</version_><name_>&lt;&amp;&gt;</name_><type_>-7</type_><min_>\xEF\xBF\xBD</min_>"
            "<max_>\xEF\xBF\xBD</max_><value_>v</value_><units_>\xC3\xA9</units_></x>");
}

TEST(NetworkHealthItem, IsWrittenToAMessage) {
  const NetworkHealthItem item("ab", NetworkHealthItem::timestamp, "c", "d", "e", "fg");
  EXPECT_EQ(serialized(item.toProtobuf()),
            "08 01"           // version 1
            " 12 02 61 62"    // name
            " 18 03"          // type
            " 22 01 63"       // min
            " 2a 01 64"       // max
            " 32 01 65"       // value
            " 3a 02 66 67");  // units
  const std::unique_ptr<pb::NetworkHealthItemPBuf> message(item.toProtobuf());
  EXPECT_EQ(message->GetArena(), nullptr);
}

TEST(NetworkHealthItem, ReadsBackWhatItWrote) {
  const NetworkHealthItem item = withVersion(4000000000);
  const std::unique_ptr<pb::NetworkHealthItemPBuf> message(item.toProtobuf());
  NetworkHealthItem read("other", NetworkHealthItem::string, "other", "other", "other", "other");
  EXPECT_FALSE(read.fromProtobuf(*message));
  EXPECT_TRUE(read == item);
}

TEST(NetworkHealthItem, TakesEveryFieldOfAMessageAlsoTheEmptyOnes) {
  NetworkHealthItem item = reboots();
  EXPECT_FALSE(item.fromProtobuf(pb::NetworkHealthItemPBuf()));
  EXPECT_EQ(printed(item), "{0, , 0, , , , }");
}

TEST(NetworkHealthItem, KeepsATypeThatIsNone) {
  for (const int type : {4, 77, -1, INT_MAX, INT_MIN}) {
    pb::NetworkHealthItemPBuf message;
    message.set_type(static_cast<pb::DataTypePEnum>(type));
    NetworkHealthItem item;
    EXPECT_FALSE(item.fromProtobuf(message));
    EXPECT_EQ(static_cast<int>(item.type()), type);
    const std::unique_ptr<pb::NetworkHealthItemPBuf> again(item.toProtobuf());
    EXPECT_EQ(static_cast<int>(again->type()), type);
  }
}

TEST(NetworkHealthItem, AMessageOfAnyTextsParsesAgain) {
  const NetworkHealthItem item("\x80", NetworkHealthItem::string, "a\xFF", "\xC3", "\xED\xA0\x80", "\xF0\x9F\x98\x80");
  const std::unique_ptr<pb::NetworkHealthItemPBuf> message(item.toProtobuf());
  pb::NetworkHealthItemPBuf parsed;
  ASSERT_TRUE(parsed.ParseFromString(message->SerializeAsString()));
  EXPECT_EQ(parsed.name(), "\xEF\xBF\xBD");
  EXPECT_EQ(parsed.min(), "a\xEF\xBF\xBD");
  EXPECT_EQ(parsed.max(), "\xEF\xBF\xBD");
  EXPECT_EQ(parsed.value(), "\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD");
  EXPECT_EQ(parsed.units(), "\xF0\x9F\x98\x80");
}

TEST(NetworkHealthItem, AnswersWithNameAndValue) {
  EXPECT_THAT(responseCalls([](const auto& response) { reboots().toIResponse(response); }),
              ElementsAre("startObject NetworkHealthItem 0", "addString name_ reboot.sliding_average",
                          "addString value_ 1.5", "endObject"));
}

TEST(NetworkHealthItem, AnswersWithEverythingButTheValueAsItsData) {
  EXPECT_THAT(responseCalls([](const auto& response) { withVersion(4294967295).toIResponseData(response); }),
              ElementsAre("startObject NetworkHealthItemData 0", "addInteger version_ 4294967295",
                          "addString name_ reboot.sliding_average", "addInteger type_ 2", "addString min_ 0",
                          "addString max_ 7", "addString units_ reboots/day", "endObject"));
}

TEST(NetworkHealthItem, IsADocumentAsAnAnswer) {
  const auto response = boost::make_shared<response::JsonResponse>();
  reboots().toIResponse(response);
  reboots().toIResponseData(response);
  EXPECT_EQ(response->document(),
            R"({"NetworkHealthItem":{"name_":"reboot.sliding_average","value_":"1.5"},)"
            R"("NetworkHealthItemData":{"version_":1,"name_":"reboot.sliding_average","type_":2,"min_":"0","max_":"7",)"
            R"("units_":"reboots/day"}})");
}

}  // namespace
}  // namespace qx
