#include "qxresponse/JsonResponse.h"

#include <gtest/gtest.h>

#include <climits>
#include <stdexcept>
#include <string>

namespace qx::response {
namespace {

const std::string BAD = "\xEF\xBF\xBD";

TEST(JsonResponse, IsAnEmptyObjectAtFirst) { EXPECT_EQ(JsonResponse().document(), "{}"); }

TEST(JsonResponse, KeepsTheOrderInWhichMembersAreAdded) {
  JsonResponse response;
  response.addString("z", "last letter");
  response.addInteger("a", -7);
  response.addCount("m", 3);
  EXPECT_EQ(response.document(), R"({"z":"last letter","a":-7,"m":3})");
}

TEST(JsonResponse, WritesNumbersOfAnySize) {
  JsonResponse response;
  response.addInteger("least", LLONG_MIN);
  response.addInteger("greatest", LLONG_MAX);
  response.addCount("count", ULLONG_MAX);
  response.addInteger("zero", 0);
  EXPECT_EQ(response.document(),
            R"({"least":-9223372036854775808,"greatest":9223372036854775807,"count":18446744073709551615,"zero":0})");
}

TEST(JsonResponse, NestsObjectsByName) {
  JsonResponse response;
  response.startObject("outer", 0);
  response.addInteger("before", 1);
  response.startObject("inner", 0);
  response.addString("text", "t");
  response.endObject();
  response.addInteger("after", 2);
  response.startObject("empty", 0);
  response.endObject();
  response.endObject();
  response.addInteger("last", 3);
  EXPECT_EQ(response.document(), R"({"outer":{"before":1,"inner":{"text":"t"},"after":2,"empty":{}},"last":3})");
}

TEST(JsonResponse, DropsTheNamesAndTheCountOfEntriesOfAList) {
  JsonResponse response;
  response.startArray("list", 0);
  response.addCount("count", 2);
  response.startObject("item", 0);
  response.addCount("count", 5);
  response.endObject();
  response.startObject("item", 0);
  response.endObject();
  response.endArray();
  EXPECT_EQ(response.document(), R"({"list":[{"count":5},{}]})");
}

TEST(JsonResponse, NestsLists) {
  JsonResponse response;
  response.startArray("outer", 0);
  response.startArray("inner", 0);
  response.startObject("o", 0);
  response.startArray("innermost", 0);
  response.endArray();
  response.endObject();
  response.endArray();
  response.startArray("inner", 0);
  response.endArray();
  response.endArray();
  EXPECT_EQ(response.document(), R"({"outer":[[{"innermost":[]}],[]]})");
}

TEST(JsonResponse, MakesAnObjectOfAValueInAList) {
  JsonResponse response;
  response.startArray("list", 0);
  response.addString("name", "value");
  response.addInteger("name", 4);
  response.addString("count", "not a count");
  response.endArray();
  EXPECT_EQ(response.document(), R"({"list":[{"name":"value"},{"name":4},{"count":"not a count"}]})");
}

TEST(JsonResponse, OfTwoMembersWithOneNameTheLaterStands) {
  JsonResponse response;
  response.addString("a", "first");
  response.addInteger("b", 1);
  response.addInteger("a", 2);
  response.startObject("b", 0);
  response.addString("c", "in b");
  response.endObject();
  response.startArray("d", 0);
  response.endArray();
  response.startObject("d", 0);
  response.endObject();
  EXPECT_EQ(response.document(), R"({"a":2,"b":{"c":"in b"},"d":{}})");
}

TEST(JsonResponse, TakesEmptyNames) {
  JsonResponse response;
  response.addString("", "");
  EXPECT_EQ(response.document(), R"({"":""})");
}

TEST(JsonResponse, EscapesWhatJsonNeeds) {
  JsonResponse response;
  response.addString("a\"b", std::string("\\ \" \n \t \x01 \0 /", 13));
  response.addString("\xC3\xA9", "\xE2\x82\xAC\xF0\x9F\x98\x80");
  EXPECT_EQ(response.document(),
            "{\"a\\\"b\":\"\\\\ \\\" \\n \\t \\u0001 \\u0000 /\",\"\xC3\xA9\":\"\xE2\x82\xAC\xF0\x9F\x98\x80\"}");
}

std::string documentOf(const std::string& name, const std::string& value) {
  JsonResponse response;
  response.addString(name, value);
  return response.document();
}

TEST(JsonResponse, ReplacesABadByte) {
  EXPECT_EQ(documentOf("t", "a\xFF"), "{\"t\":\"a" + BAD + "\"}");
  EXPECT_EQ(documentOf("t", "\x80z"), "{\"t\":\"" + BAD + "z\"}");
  EXPECT_EQ(documentOf("t", "\xC3"), "{\"t\":\"" + BAD + "\"}");
  EXPECT_EQ(documentOf("t", "\xC3("), "{\"t\":\"" + BAD + "(\"}");
  EXPECT_EQ(documentOf("t", "\x80\x80"), "{\"t\":\"" + BAD + BAD + "\"}");
  EXPECT_EQ(documentOf("t", "\xC0\x80"), "{\"t\":\"" + BAD + BAD + "\"}");
  EXPECT_EQ(documentOf("\xFF", "v"), "{\"" + BAD + "\":\"v\"}");
}

TEST(JsonResponse, ReplacesASequenceCutShortAsOne) {
  EXPECT_EQ(documentOf("t", "\xE2\x82"), "{\"t\":\"" + BAD + "\"}");
  EXPECT_EQ(documentOf("t",
                       "\xE2\x82("
                       "a"),
            "{\"t\":\"" + BAD + "(a\"}");
  EXPECT_EQ(documentOf("t", "\xF0\x9F\x98"), "{\"t\":\"" + BAD + "\"}");
}

TEST(JsonResponse, ReplacesEachByteOfASurrogate) {
  EXPECT_EQ(documentOf("t", "\xED\xA0\x80"), "{\"t\":\"" + BAD + BAD + BAD + "\"}");
}

TEST(JsonResponse, ThrowsAtAnEndWithoutAStart) {
  JsonResponse response;
  EXPECT_THROW(response.endObject(), std::logic_error);
  EXPECT_THROW(response.endArray(), std::logic_error);
  response.startObject("o", 0);
  response.endObject();
  EXPECT_THROW(response.endObject(), std::logic_error);
  response.addInteger("n", 1);
  EXPECT_EQ(response.document(), R"({"o":{},"n":1})");
}

TEST(JsonResponse, ThrowsAtTheEndOfWhatIsNotOpenInnermost) {
  JsonResponse response;
  response.startArray("list", 0);
  EXPECT_THROW(response.endObject(), std::logic_error);
  response.startObject("o", 0);
  EXPECT_THROW(response.endArray(), std::logic_error);
  response.addInteger("n", 1);
  response.endObject();
  response.endArray();
  EXPECT_EQ(response.document(), R"({"list":[{"n":1}]})");
}

TEST(JsonResponse, CountsWhatIsOpenAsClosedInItsDocumentAndGoesOn) {
  JsonResponse response;
  response.startObject("o", 0);
  response.startArray("list", 0);
  response.startObject("item", 0);
  response.addInteger("n", 1);
  EXPECT_EQ(response.document(), R"({"o":{"list":[{"n":1}]}})");
  EXPECT_EQ(response.document(), R"({"o":{"list":[{"n":1}]}})");
  response.addInteger("m", 2);
  response.endObject();
  response.endArray();
  response.addInteger("last", 3);
  EXPECT_EQ(response.document(), R"({"o":{"list":[{"n":1,"m":2}],"last":3}})");
}

TEST(JsonResponse, MakesNoDifferenceOfTheReservedArgument) {
  JsonResponse response;
  response.startObject("o", INT_MAX);
  response.startArray("list", -1);
  response.endArray();
  response.endObject();
  EXPECT_EQ(response.document(), R"({"o":{"list":[]}})");
}

TEST(JsonResponse, NestsDeeply) {
  JsonResponse response;
  std::string expected = "{}";
  for (int i = 0; i < 500; ++i) {
    response.startObject("o", 0);
    expected = "{\"o\":" + expected + "}";
  }
  EXPECT_EQ(response.document(), expected);
  for (int i = 0; i < 500; ++i) response.endObject();
  EXPECT_EQ(response.document(), expected);
}

}  // namespace
}  // namespace qx::response
