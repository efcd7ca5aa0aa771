#include "vso/mesh/MeshSecurityKeyData.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <memory>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <vector>

#include "Records.h"
#include "qxxml/XmlReader.h"
#include "vso/proto/MeshSecurityKeyDataPBuf.pb.h"

namespace qx {
namespace {

using test::messageOf;
using test::xmlOf;

const std::string COUNTED("\x00\x01\x02\x03\x04\x05\x06\x07\x08\x09\x0A\x0B\x0C\x0D\x0E\x0F", 16);

/// A key of the first bytes of `bytes`, the others 0xEE.
MeshSecurityKeyData keyOf(const std::vector<unsigned char>& bytes) {
  MeshSecurityKeyData key(0xEE);
  std::copy(bytes.begin(), bytes.end(), key.contents);
  return key;
}

std::string item(const std::string& text) { return "<item>" + text + "</item>"; }

std::string items(int count, int first) {
  std::string text;
  for (int i = 0; i < count; ++i) text += item(std::to_string(first + i));
  return text;
}

/// Reads a document into a key of bytes 0xEE and shows the key.
std::string readFrom(const std::string& document, bool fails = false) {
  MeshSecurityKeyData key(0xEE);
  XmlReader reader(document);
  EXPECT_EQ(key.fromXml(reader), fails) << document;
  return key.toHexStr();
}

std::string hexOf(const std::vector<unsigned char>& bytes) { return keyOf(bytes).toHexStr(); }

TEST(MeshSecurityKeyData, IsExactlyItsSixteenBytes) {
  static_assert(sizeof(MeshSecurityKeyData) == 16);
  static_assert(!std::is_polymorphic_v<MeshSecurityKeyData>);
  static_assert(!std::is_default_constructible_v<MeshSecurityKeyData>);
  const MeshSecurityKeyData key(0xA5);
  EXPECT_EQ(std::string(key), std::string(16, '\xA5'));
  EXPECT_EQ(key.cArray(), key.contents);
}

TEST(MeshSecurityKeyData, TakesSixteenRawBytes) {
  EXPECT_EQ(std::string(MeshSecurityKeyData(COUNTED)), COUNTED);
  EXPECT_EQ(std::string(MeshSecurityKeyData(std::string(16, 'x'))), std::string(16, 'x'));
}

TEST(MeshSecurityKeyData, RefusesAnyOtherNumberOfBytes) {
  for (const std::size_t size : {0, 1, 15, 17, 32, 256 + 16}) {
    try {
      const MeshSecurityKeyData key(std::string(size, 'x'));
      ADD_FAILURE() << size << " bytes are a key";
    } catch (const std::runtime_error& error) {
      EXPECT_STREQ(error.what(), "Invalid key length");
    }
  }
}

TEST(MeshSecurityKeyData, CopiesItsBytes) {
  const MeshSecurityKeyData original(COUNTED);
  const MeshSecurityKeyData constructed(original);
  MeshSecurityKeyData assigned(0xEE);
  EXPECT_EQ(&(assigned = original), &assigned);
  EXPECT_EQ(std::string(constructed), COUNTED);
  EXPECT_EQ(std::string(assigned), COUNTED);
  const MeshSecurityKeyData& itself = assigned;
  assigned = itself;
  EXPECT_EQ(std::string(assigned), COUNTED);
}

TEST(MeshSecurityKeyData, TakesBytesByAssignment) {
  MeshSecurityKeyData key(0xEE);
  EXPECT_EQ(&(key = reinterpret_cast<const unsigned char*>(COUNTED.data())), &key);
  EXPECT_EQ(std::string(key), COUNTED);
}

TEST(MeshSecurityKeyData, TakesOneValueForAllBytes) {
  MeshSecurityKeyData key(COUNTED);
  EXPECT_EQ(&(key = static_cast<unsigned char>(0x41)), &key);
  EXPECT_EQ(std::string(key), std::string(16, 'A'));
  key = 0;
  EXPECT_EQ(std::string(key), std::string(16, '\0'));
}

TEST(MeshSecurityKeyData, ComparesEachByte) {
  const MeshSecurityKeyData key(COUNTED);
  EXPECT_TRUE(key == MeshSecurityKeyData(COUNTED));
  EXPECT_FALSE(key != MeshSecurityKeyData(COUNTED));
  for (std::size_t i = 0; i < 16; ++i) {
    MeshSecurityKeyData other(key);
    other.contents[i] ^= 0x80U;
    EXPECT_FALSE(key == other) << i;
    EXPECT_TRUE(key != other) << i;
  }
}

TEST(MeshSecurityKeyData, EqualsAValueThatAllBytesHave) {
  EXPECT_TRUE(MeshSecurityKeyData(0) == 0);
  EXPECT_FALSE(MeshSecurityKeyData(0) != 0);
  EXPECT_FALSE(MeshSecurityKeyData(0) == 1);
  EXPECT_TRUE(MeshSecurityKeyData(0) != 1);
  EXPECT_TRUE(MeshSecurityKeyData(0xFF) == 0xFF);
  for (std::size_t i = 0; i < 16; ++i) {
    MeshSecurityKeyData key(7);
    key.contents[i] = 8;
    EXPECT_FALSE(key == 7) << i;
    EXPECT_TRUE(key != 7) << i;
  }
}

TEST(MeshSecurityKeyData, PrintsHexadecimalInFortySevenCharacters) {
  EXPECT_EQ(MeshSecurityKeyData(COUNTED).toHexStr(), "00 01 02 03 04 05 06 07 08 09 0a 0b 0c 0d 0e 0f");
  EXPECT_EQ(MeshSecurityKeyData(0xFE).toHexStr(), "fe fe fe fe fe fe fe fe fe fe fe fe fe fe fe fe");
  EXPECT_EQ(MeshSecurityKeyData(0).toHexStr().size(), 47U);
}

TEST(MeshSecurityKeyData, PrintsRawCharactersInFortySevenCharacters) {
  EXPECT_EQ(MeshSecurityKeyData('A').toAsciiStr(), " A  A  A  A  A  A  A  A  A  A  A  A  A  A  A  A");
  EXPECT_EQ(MeshSecurityKeyData("abcdefghijklmnop").toAsciiStr(), " a  b  c  d  e  f  g  h  i  j  k  l  m  n  o  p");
  EXPECT_EQ(MeshSecurityKeyData(COUNTED).toAsciiStr(),
            std::string(
                " \x00  \x01  \x02  \x03  \x04  \x05  \x06  \x07  \x08  \x09  \x0A  \x0B  \x0C  \x0D  \x0E  \x0F", 47));
}

TEST(MeshSecurityKeyData, WritesItsBytesIntoItsMessage) {
  EXPECT_EQ(messageOf(MeshSecurityKeyData(COUNTED))->contents(), COUNTED);
}

TEST(MeshSecurityKeyData, ReadsAtMostSixteenBytesOfItsMessage) {
  const std::string source = "abcdefghijklmnopqrst";
  for (std::size_t size = 0; size <= source.size(); ++size) {
    pb::MeshSecurityKeyDataPBuf message;
    message.set_contents(source.substr(0, size));
    MeshSecurityKeyData key(COUNTED);
    EXPECT_EQ(key.fromProtobuf(message), size < 16) << size;
    const std::size_t taken = size < 16 ? size : 16;
    EXPECT_EQ(std::string(key), source.substr(0, taken) + COUNTED.substr(taken)) << size;
  }
}

TEST(MeshSecurityKeyData, WritesXmlWithoutArchiveAttributes) {
  EXPECT_EQ(
      xmlOf(MeshSecurityKeyData(std::string("\x00\x01\x09\x0A\x0F\x10\x41\x63\x64\x7F\x80\xC7\xC8\xFA\xFE\xFF", 16)),
            "key"),
      "<key><count>16</count><item_version>0</item_version><item>0</item><item>1</item><item>9</item>"
      "<item>10</item><item>15</item><item>16</item><item>65</item><item>99</item><item>100</item>"
      "<item>127</item><item>128</item><item>199</item><item>200</item><item>250</item><item>254</item>"
      "<item>255</item></key>");
}

TEST(MeshSecurityKeyData, ReadsItsXmlAndStopsBehindTheSixteenthItem) {
  const MeshSecurityKeyData written(COUNTED);
  XmlReader reader("<all>" + xmlOf(written, "key") + "<next>5</next></all>");
  MeshSecurityKeyData key(0xEE);
  EXPECT_FALSE(key.fromXml(reader));
  EXPECT_EQ(std::string(key), COUNTED);
  EXPECT_EQ(reader.value(), "15");
  std::vector<std::string> further;
  while (reader.read()) {
    if (reader.nodeType() == 1) further.push_back(reader.name());
  }
  EXPECT_EQ(further, std::vector<std::string>{"next"});
}

TEST(MeshSecurityKeyData, ReadsAsManyItemsAsTheCountSays) {
  EXPECT_EQ(readFrom("<k><count>3</count>" + items(5, 1) + "</k>"), hexOf({1, 2, 3}));
  EXPECT_EQ(readFrom("<k><count>16</count>" + items(16, 1) + "</k>"),
            "01 02 03 04 05 06 07 08 09 0a 0b 0c 0d 0e 0f 10");
}

TEST(MeshSecurityKeyData, StopsAtOnceOnACountOfZero) {
  XmlReader reader("<k><count>0</count><next>5</next>" + items(3, 1) + "</k>");
  MeshSecurityKeyData key(0xEE);
  EXPECT_FALSE(key.fromXml(reader));
  EXPECT_TRUE(key == 0xEE);
  EXPECT_EQ(reader.value(), "0");
}

TEST(MeshSecurityKeyData, DropsItemsBehindItsStorage) {
  EXPECT_EQ(readFrom("<k><count>20</count>" + items(25, 1) + "</k>"),
            "01 02 03 04 05 06 07 08 09 0a 0b 0c 0d 0e 0f 10");
  XmlReader reader("<k><count>20</count>" + items(25, 1) + "</k>");
  MeshSecurityKeyData key(0xEE);
  EXPECT_FALSE(key.fromXml(reader));
  EXPECT_EQ(reader.value(), "20");
  EXPECT_EQ(readFrom("<k><count>2147483647</count>" + items(18, 1) + "</k>"),
            "01 02 03 04 05 06 07 08 09 0a 0b 0c 0d 0e 0f 10");
}

TEST(MeshSecurityKeyData, NeverComesToTheEndOfANegativeCount) {
  for (const std::string count : {"-1", "-3", "-16", "-2147483648"}) {
    EXPECT_EQ(readFrom("<k><count>" + count + "</count>" + items(40, 1) + "</k>"),
              "01 02 03 04 05 06 07 08 09 0a 0b 0c 0d 0e 0f 10")
        << count;
  }
}

TEST(MeshSecurityKeyData, DropsItemsBeforeAnyCount) {
  EXPECT_EQ(readFrom("<k>" + items(20, 1) + "</k>"), hexOf({}));
  EXPECT_EQ(readFrom("<k>" + items(3, 1) + "<count>2</count>" + items(4, 101) + "</k>"), hexOf({101, 102}));
}

TEST(MeshSecurityKeyData, BeginsAnewAtEachCount) {
  EXPECT_EQ(readFrom("<k><count>4</count>" + items(2, 1) + "<count>3</count>" + items(5, 101) + "</k>"),
            hexOf({101, 102, 103}));
}

TEST(MeshSecurityKeyData, RunsOnWithFewerItemsThanItsCount) {
  EXPECT_EQ(readFrom("<all><k><count>3</count>" + items(2, 1) + "</k><other>" + items(2, 7) + "</other></all>"),
            hexOf({1, 2, 7}));
}

TEST(MeshSecurityKeyData, PassesOverElementsItDoesNotKnow) {
  EXPECT_EQ(readFrom("<k class_id=\"0\"><x>9</x><count>2</count><y><item_version>7</item_version>" + items(1, 1) +
                     "</y><!-- --><z/>" + items(1, 2) + "</k>"),
            hexOf({1, 2}));
}

TEST(MeshSecurityKeyData, StoresTheLowByteOfAnItem) {
  EXPECT_EQ(readFrom("<k><count>6</count>" + item("300") + item("-1") + item("+5") + item("007") + item("2147483647") +
                     item("-2147483648") + "</k>"),
            hexOf({44, 255, 5, 7, 255, 0}));
}

TEST(MeshSecurityKeyData, RepeatsTheLastNumberForATextThatIsNone) {
  for (const std::string text : {"x", "", " 6", "6 ", "0x6", "6.0", "2147483648", "-2147483649", "--6", "+"}) {
    EXPECT_EQ(readFrom("<k><count>3</count>" + item("5") + item(text) + item("9") + "</k>"), hexOf({5, 5, 9}))
        << '"' << text << '"';
  }
}

TEST(MeshSecurityKeyData, TakesZeroForAFirstTextThatIsNoNumber) {
  EXPECT_EQ(readFrom("<k><count>3</count><item_version>8</item_version>" + item("x") + item("y") + item("4") + "</k>"),
            hexOf({0, 0, 4}));
}

TEST(MeshSecurityKeyData, KeepsNoNumberFromOneCallToTheNext) {
  MeshSecurityKeyData key(0xEE);
  XmlReader reader("<k><count>1</count>" + item("5") + "<count>1</count>" + item("x") + "</k>");
  EXPECT_FALSE(key.fromXml(reader));
  EXPECT_FALSE(key.fromXml(reader));
  EXPECT_EQ(key.toHexStr(), hexOf({0}));
}

TEST(MeshSecurityKeyData, TakesItemsDroppedBeforeTheCountAsNumbersInHand) {
  EXPECT_EQ(readFrom("<k>" + item("5") + "<count>1</count>" + item("x") + "</k>"), hexOf({5}));
}

TEST(MeshSecurityKeyData, RepeatsTheLastCountForATextThatIsNone) {
  EXPECT_EQ(readFrom("<k><count>3</count>" + items(2, 1) + "<count>x</count>" + items(5, 101) + "</k>"),
            hexOf({101, 102, 103}));
}

TEST(MeshSecurityKeyData, StopsAtAFirstCountThatIsNoNumber) {
  EXPECT_EQ(readFrom("<k><count>x</count>" + items(5, 1) + "</k>"), hexOf({}));
}

TEST(MeshSecurityKeyData, IsUnchangedWithoutItsElements) { EXPECT_EQ(readFrom("<k><a>1</a></k>"), hexOf({})); }

TEST(MeshSecurityKeyData, FailsOnABrokenDocument) {
  for (const std::string document : {"", "no document", "<k><count>2</count><item>1</k>", "<k><count>16</count>"})
    readFrom(document, true);
}

}  // namespace
}  // namespace qx
