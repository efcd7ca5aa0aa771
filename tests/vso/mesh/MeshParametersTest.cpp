#include "vso/mesh/MeshParameters.h"

#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <memory>
#include <sstream>
#include <string>
#include <type_traits>

#include "Records.h"
#include "qxxml/XmlReader.h"
#include "vso/proto/MeshParametersPBuf.pb.h"

namespace qx {
namespace {

using test::ARCHIVE;
using test::messageOf;
using test::sameMessage;
using test::stateOf;
using test::xmlOf;

using Change = std::function<void(MeshParameters&)>;

const std::string XPANID_BYTES("\x00\x11\x22\x33\x44\x55\x66\x77", 8);
const std::string KEY_A = "abcdefghijklmnop";
const std::string KEY_B = "ABCDEFGHIJKLMNOP";

pb::MeshParametersPBuf filledMessage() {
  pb::MeshParametersPBuf message;
  message.set_status(pb::MESH_CLEAN);
  message.mutable_xpanid()->set_addr(XPANID_BYTES);
  message.set_panid(1003);
  message.set_channel(24);
  message.mutable_preconfiguredkey()->set_contents(KEY_A);
  message.mutable_networkkey()->set_contents(KEY_B);
  return message;
}

MeshParameters filled() {
  MeshParameters mesh;
  mesh.status(MESH_CLEAN);
  mesh.xpanId(PanId(std::string("0011223344556677")));
  mesh.panId(1003);
  mesh.channel(24);
  mesh.preconfiguredKey(MeshSecurityKeyData(KEY_A));
  mesh.networkKey(MeshSecurityKeyData(KEY_B));
  return mesh;
}

std::string printed(const MeshParameters& mesh) {
  std::ostringstream out;
  mesh.print(out);
  return out.str();
}

/// `mesh` after reading a document.
MeshParameters readInto(MeshParameters mesh, const std::string& document, bool fails = false) {
  XmlReader reader(document);
  EXPECT_EQ(mesh.fromXml(reader), fails) << document;
  return mesh;
}

/// What a `MeshParameters` holds, as one text.
std::string all(const MeshParameters& mesh) { return xmlOf(mesh, "m"); }

std::string element(const std::string& name, const std::string& content) {
  return "<" + name + ">" + content + "</" + name + ">";
}

const std::string ITEMS_OF_KEY_A =
    "<item>97</item><item>98</item><item>99</item><item>100</item><item>101</item><item>102</item><item>103</item>"
    "<item>104</item><item>105</item><item>106</item><item>107</item><item>108</item><item>109</item><item>110</item>"
    "<item>111</item><item>112</item>";
const std::string ITEMS_OF_KEY_B =
    "<item>65</item><item>66</item><item>67</item><item>68</item><item>69</item><item>70</item><item>71</item>"
    "<item>72</item><item>73</item><item>74</item><item>75</item><item>76</item><item>77</item><item>78</item>"
    "<item>79</item><item>80</item>";
const std::string STATUS_ELEMENT = "<status_>4</status_>";
const std::string XPANID_ELEMENT = "<xpanid_" + ARCHIVE + "><addr>0011223344556677</addr></xpanid_>";
const std::string PANID_ELEMENT = "<panid_>1003</panid_>";
const std::string CHANNEL_ELEMENT = "<channel_>24</channel_>";
const std::string PRECONFIGURED_ELEMENT =
    "<preconfiguredKey_><count>16</count><item_version>0</item_version>" + ITEMS_OF_KEY_A + "</preconfiguredKey_>";
const std::string NETWORK_ELEMENT =
    "<networkKey_><count>16</count><item_version>0</item_version>" + ITEMS_OF_KEY_B + "</networkKey_>";

TEST(MeshParameters, NumbersItsStates) {
  static_assert(sizeof(MeshState) == 4);
  EXPECT_EQ(MESH_DOWN, 0);
  EXPECT_EQ(MESH_UP, 1);
  EXPECT_EQ(MESH_UNKNOWN_STATE, 2);
  EXPECT_EQ(MESH_FORCE_CREATION, 3);
  EXPECT_EQ(MESH_CLEAN, 4);
}

TEST(MeshParameters, NamesThreeOfItsStates) {
  const std::map<int, std::string> expected = {{0, "MESH_DOWN"},    {1, "MESH_UP"},      {2, "MESH_UKNOWN"},
                                               {3, "MESH_UKNOWN"},  {4, "MESH_CLEAN"},   {5, "MESH_UKNOWN"},
                                               {99, "MESH_UKNOWN"}, {-1, "MESH_UKNOWN"}, {256, "MESH_UKNOWN"}};
  for (const auto& [number, text] : expected)
    EXPECT_EQ(MeshParameters::meshStateStr(static_cast<MeshState>(number)), text) << number;
}

TEST(MeshParameters, IsBlankByDefault) {
  static_assert(std::has_virtual_destructor_v<MeshParameters>);
  const MeshParameters mesh;
  EXPECT_EQ(mesh.status(), MESH_DOWN);
  EXPECT_EQ(MeshParameters::meshStateStr(mesh.status()), "MESH_DOWN");
  EXPECT_EQ(mesh.xpanId(), PanId());
  EXPECT_EQ(mesh.panId(), 0);
  EXPECT_EQ(mesh.channel(), 0);
  EXPECT_TRUE(mesh.preconfiguredKey() == 0);
  EXPECT_TRUE(mesh.networkKey() == 0);
  EXPECT_FALSE(mesh.isValid());
  EXPECT_TRUE(mesh == 0);
  EXPECT_FALSE(mesh != 0);
}

TEST(MeshParameters, GivesBackWhatWasSet) {
  const MeshParameters mesh = filled();
  EXPECT_EQ(mesh.status(), MESH_CLEAN);
  EXPECT_EQ(std::string(mesh.xpanId()), "0011223344556677");
  EXPECT_EQ(mesh.panId(), 1003);
  EXPECT_EQ(mesh.channel(), 24);
  EXPECT_EQ(std::string(mesh.preconfiguredKey()), KEY_A);
  EXPECT_EQ(std::string(mesh.networkKey()), KEY_B);
}

TEST(MeshParameters, CopiesAllSixFields) {
  const MeshParameters original = filled();
  const MeshParameters constructed(original);
  MeshParameters assigned;
  EXPECT_EQ(&(assigned = original), &assigned);
  EXPECT_TRUE(sameMessage(*messageOf(constructed), filledMessage()));
  EXPECT_TRUE(sameMessage(*messageOf(assigned), filledMessage()));
  const MeshParameters& itself = assigned;
  assigned = itself;
  EXPECT_TRUE(sameMessage(*messageOf(assigned), filledMessage()));
}

TEST(MeshParameters, ComparesByWhatMakesTheMesh) {
  struct Row {
    const char* field;
    Change change;
    bool equal;
    bool sameMesh;
  };
  const Row rows[] = {
      {"nothing", [](MeshParameters&) {}, true, true},
      {"status", [](MeshParameters& m) { m.status(MESH_UP); }, true, true},
      {"extended PAN id", [](MeshParameters& m) { m.xpanId(PanId(std::string("0011223344556678"))); }, false, false},
      {"PAN id", [](MeshParameters& m) { m.panId(1); }, false, true},
      {"channel", [](MeshParameters& m) { m.channel(11); }, false, false},
      {"preconfigured key", [](MeshParameters& m) { m.preconfiguredKey(MeshSecurityKeyData("abcdefghijklmnoP")); },
       false, false},
      {"network key", [](MeshParameters& m) { m.networkKey(MeshSecurityKeyData("ABCDEFGHIJKLMNOp")); }, false, false},
  };
  for (const Row& row : rows) {
    MeshParameters other = filled();
    row.change(other);
    EXPECT_EQ(filled() == other, row.equal) << row.field;
    EXPECT_EQ(filled() != other, !row.equal) << row.field;
    EXPECT_EQ(filled().isSameMesh(other), row.sameMesh) << row.field;
  }
}

TEST(MeshParameters, IsValidWithBothIdsAlone) {
  MeshParameters mesh;
  mesh.panId(1);
  EXPECT_FALSE(mesh.isValid());
  mesh.xpanId(PanId(std::string("0000000000000001")));
  EXPECT_TRUE(mesh.isValid());
  mesh.panId(0);
  EXPECT_FALSE(mesh.isValid());
  MeshParameters withoutIds = filled();
  withoutIds.xpanId(PanId());
  EXPECT_FALSE(withoutIds.isValid());
}

TEST(MeshParameters, EqualsAValueOfIdsAndKeys) {
  MeshParameters mesh;
  mesh = 7;
  mesh.channel(15);
  mesh.status(MESH_UP);
  EXPECT_TRUE(mesh == 7);
  EXPECT_FALSE(mesh != 7);
  EXPECT_FALSE(mesh == 0);
  EXPECT_TRUE(mesh != 0);
  const std::map<std::string, Change> changes = {
      {"extended PAN id", [](MeshParameters& m) { m.xpanId(PanId(std::string("0707070707070708"))); }},
      {"PAN id", [](MeshParameters& m) { m.panId(0x0707); }},
      {"preconfigured key", [](MeshParameters& m) { m.preconfiguredKey(MeshSecurityKeyData(8)); }},
      {"network key", [](MeshParameters& m) { m.networkKey(MeshSecurityKeyData(8)); }},
  };
  for (const auto& [field, change] : changes) {
    MeshParameters other = mesh;
    change(other);
    EXPECT_FALSE(other == 7) << field;
    EXPECT_TRUE(other != 7) << field;
  }
}

TEST(MeshParameters, TakesAValueForIdsAndKeysAndKeepsTheRest) {
  MeshParameters mesh = filled();
  mesh.channel(15);
  mesh.status(MESH_UP);
  EXPECT_EQ(&(mesh = 7), &mesh);
  EXPECT_EQ(std::string(mesh.xpanId()), "0707070707070707");
  EXPECT_EQ(mesh.panId(), 7);
  EXPECT_TRUE(mesh.preconfiguredKey() == 7);
  EXPECT_TRUE(mesh.networkKey() == 7);
  EXPECT_EQ(mesh.channel(), 15);
  EXPECT_EQ(mesh.status(), MESH_UP);
  EXPECT_TRUE(mesh == 7);
}

TEST(MeshParameters, PrintsOneLineWithItsKeysRaw) {
  EXPECT_EQ(printed(filled()),
            "STATUS: 4, XPANID: 0x0011223344556677, PANID: 0x03eb, CHANNEL: 24, PRECONFIGUREDKEY: abcdefghijklmnop, "
            "NETWORKKEY: ABCDEFGHIJKLMNOP");
  const std::string zeros(16, '\0');
  EXPECT_EQ(printed(MeshParameters()),
            "STATUS: 0, XPANID: 0x0000000000000000, PANID: 0x0000, CHANNEL: 0, PRECONFIGUREDKEY: " + zeros +
                ", NETWORKKEY: " + zeros);
}

TEST(MeshParameters, PrintsItsStatusInTheBaseOfTheStream) {
  MeshParameters mesh = filled();
  mesh.status(static_cast<MeshState>(26));
  std::ostringstream out;
  out << std::hex;
  out.fill('*');
  EXPECT_EQ(&mesh.print(out), &out);
  EXPECT_EQ(out.str(),
            "STATUS: 1a, XPANID: 0x0011223344556677, PANID: 0x03eb, CHANNEL: 24, PRECONFIGUREDKEY: abcdefghijklmnop, "
            "NETWORKKEY: ABCDEFGHIJKLMNOP");
}

TEST(MeshParameters, LeavesTheStreamInDecimalFilledWithZeros) {
  std::ostringstream out;
  out << std::hex;
  filled().print(out);
  EXPECT_EQ(stateOf(out), "0171 1");
}

TEST(MeshParameters, ReadsAndWritesEachFieldOfItsMessage) {
  EXPECT_TRUE(sameMessage(*messageOf(filled()), filledMessage()));
  MeshParameters mesh;
  EXPECT_FALSE(mesh.fromProtobuf(filledMessage()));
  EXPECT_TRUE(mesh == filled());
  EXPECT_EQ(mesh.status(), MESH_CLEAN);
}

TEST(MeshParameters, KeepsTheLowBitsOfWiderNumbers) {
  auto message = filledMessage();
  message.set_panid(0x12345);
  message.set_channel(0x10F);
  MeshParameters mesh;
  EXPECT_FALSE(mesh.fromProtobuf(message));
  EXPECT_EQ(mesh.panId(), 0x2345);
  EXPECT_EQ(mesh.channel(), 0x0F);
}

TEST(MeshParameters, KeepsAStateWithoutAName) {
  auto message = filledMessage();
  message.set_status(static_cast<pb::MeshStatePEnum>(77));
  MeshParameters mesh;
  EXPECT_FALSE(mesh.fromProtobuf(message));
  EXPECT_EQ(static_cast<int>(mesh.status()), 77);
  EXPECT_TRUE(sameMessage(*messageOf(mesh), message));
}

TEST(MeshParameters, FailsOnADefaultMessageAndKeepsIdAndKeys) {
  MeshParameters mesh = filled();
  EXPECT_TRUE(mesh.fromProtobuf(pb::MeshParametersPBuf()));
  auto expected = filledMessage();
  expected.clear_status();
  expected.clear_panid();
  expected.clear_channel();
  EXPECT_TRUE(sameMessage(*messageOf(mesh), expected));
}

TEST(MeshParameters, FailsOnEachShortPartWithAllElseTaken) {
  const std::map<std::string, std::function<std::string*(pb::MeshParametersPBuf&)>> parts = {
      {"xpanId", [](pb::MeshParametersPBuf& m) { return m.mutable_xpanid()->mutable_addr(); }},
      {"preconfiguredKey", [](pb::MeshParametersPBuf& m) { return m.mutable_preconfiguredkey()->mutable_contents(); }},
      {"networkKey", [](pb::MeshParametersPBuf& m) { return m.mutable_networkkey()->mutable_contents(); }},
  };
  for (const auto& [name, part] : parts) {
    auto message = filledMessage();
    part(message)->pop_back();
    MeshParameters mesh;
    EXPECT_TRUE(mesh.fromProtobuf(message)) << name;
    auto expected = filledMessage();
    part(expected)->back() = '\0';
    EXPECT_TRUE(sameMessage(*messageOf(mesh), expected)) << name;

    part(message)->append("xy");
    EXPECT_FALSE(mesh.fromProtobuf(message)) << name;
  }
}

TEST(MeshParameters, WritesXml) {
  EXPECT_EQ(xmlOf(filled(), "mesh"), "<mesh" + ARCHIVE + ">" + STATUS_ELEMENT + XPANID_ELEMENT + PANID_ELEMENT +
                                         CHANNEL_ELEMENT + PRECONFIGURED_ELEMENT + NETWORK_ELEMENT + "</mesh>");
}

TEST(MeshParameters, ReadsItsXml) {
  const MeshParameters mesh = readInto(MeshParameters(), xmlOf(filled(), "mesh"));
  EXPECT_TRUE(mesh == filled());
  EXPECT_EQ(mesh.status(), filled().status());
  EXPECT_EQ(all(mesh), all(filled()));
}

TEST(MeshParameters, ReadsElementsInAnyOrder) {
  EXPECT_EQ(all(readInto(MeshParameters(), element("m", NETWORK_ELEMENT + CHANNEL_ELEMENT + PRECONFIGURED_ELEMENT +
                                                            PANID_ELEMENT + XPANID_ELEMENT + STATUS_ELEMENT))),
            all(filled()));
}

TEST(MeshParameters, ReadsElementsWhereverTheyStand) {
  EXPECT_EQ(
      all(readInto(MeshParameters(), element("a", element("b", STATUS_ELEMENT + XPANID_ELEMENT) + "<c/>" +
                                                      element("other", element("d", PANID_ELEMENT + CHANNEL_ELEMENT)) +
                                                      PRECONFIGURED_ELEMENT + "<!-- -->" + NETWORK_ELEMENT))),
      all(filled()));
}

TEST(MeshParameters, ReadsIndentedXml) {
  std::ostringstream out;
  {
    XmlWriter writer(out, true);
    filled().toXml(writer, "mesh");
  }
  EXPECT_EQ(all(readInto(MeshParameters(), out.str())), all(filled()));
}

TEST(MeshParameters, GoesOnPastItsOwnElement) {
  XmlReader reader("<all>" + xmlOf(filled(), "mesh") + "<x>1</x><panid_>9</panid_></all>");
  MeshParameters mesh;
  EXPECT_FALSE(mesh.fromXml(reader));
  EXPECT_EQ(mesh.panId(), 9);
  EXPECT_FALSE(reader.read()) << "all of the document has been read";
}

TEST(MeshParameters, ReadsOneElementAloneAndResetsNothing) {
  const std::map<std::string, Change> expected = {
      {"<m><status_>1</status_></m>", [](MeshParameters& m) { m.status(MESH_UP); }},
      {"<m><xpanid_><addr>ffeeddccbbaa9988</addr></xpanid_></m>",
       [](MeshParameters& m) { m.xpanId(PanId(std::string("ffeeddccbbaa9988"))); }},
      {"<m><panid_>77</panid_></m>", [](MeshParameters& m) { m.panId(77); }},
      {"<m><channel_>11</channel_></m>", [](MeshParameters& m) { m.channel(11); }},
      {"<channel_>11</channel_>", [](MeshParameters& m) { m.channel(11); }},
      {"<m><preconfiguredKey_><count>1</count><item>65</item></preconfiguredKey_></m>",
       [](MeshParameters& m) { m.preconfiguredKey(MeshSecurityKeyData("Abcdefghijklmnop")); }},
      {"<m><networkKey_><count>1</count><item>97</item></networkKey_></m>",
       [](MeshParameters& m) { m.networkKey(MeshSecurityKeyData("aBCDEFGHIJKLMNOP")); }},
      {"<m><unknown>11</unknown></m>", [](MeshParameters&) {}},
      {"<m/>", [](MeshParameters&) {}},
  };
  for (const auto& [document, change] : expected) {
    MeshParameters changed = filled();
    change(changed);
    EXPECT_EQ(all(readInto(filled(), document)), all(changed)) << document;
  }
}

TEST(MeshParameters, TakesAnyNumberAsAState) {
  for (const int number : {0, 3, 77, -1, 2147483647}) {
    const MeshParameters mesh = readInto(filled(), "<m>" + element("status_", std::to_string(number)) + "</m>");
    EXPECT_EQ(static_cast<int>(mesh.status()), number);
  }
}

TEST(MeshParameters, KeepsTheLowBitsOfNumbersInXml) {
  const std::map<std::string, unsigned int> panIds = {{"70000", 4464}, {"-1", 0xFFFF},         {"65536", 0},
                                                      {"+5", 5},       {"2147483647", 0xFFFF}, {"0012", 12}};
  for (const auto& [text, number] : panIds)
    EXPECT_EQ(readInto(filled(), element("panid_", text)).panId(), number) << text;
  const std::map<std::string, unsigned int> channels = {{"300", 44}, {"-1", 0xFF}, {"256", 0}, {"+15", 15}};
  for (const auto& [text, number] : channels)
    EXPECT_EQ(readInto(filled(), element("channel_", text)).channel(), number) << text;
}

TEST(MeshParameters, KeepsAFieldWhoseTextIsNoNumber) {
  for (const std::string text : {"x", "", " 7", "7 ", "0x7", "7.0", "2147483648", "-2147483649", "--7", "-", "7e1"}) {
    const std::string document =
        element("m", element("status_", text) + element("panid_", text) + "<z>0</z>" + element("channel_", text));
    EXPECT_EQ(all(readInto(filled(), document)), all(filled())) << document;
  }
}

TEST(MeshParameters, RepeatsTheLastNumberOfTheSameElementForATextThatIsNone) {
  const MeshParameters mesh = readInto(filled(), element("m",
                                                         "<status_>1</status_><panid_>x</panid_>"
                                                         "<channel_>11</channel_><panid_>5</panid_>"
                                                         "<status_>x</status_><channel_>x</channel_>"
                                                         "<panid_>70001</panid_><panid_>x</panid_>"));
  EXPECT_EQ(mesh.status(), MESH_UP);
  EXPECT_EQ(mesh.channel(), 11);
  EXPECT_EQ(mesh.panId(), 4465);
}

TEST(MeshParameters, KeepsNoNumberFromOneCallToTheNext) {
  MeshParameters mesh = readInto(filled(), "<m><status_>1</status_><panid_>5</panid_><channel_>11</channel_></m>");
  mesh.status(MESH_CLEAN);
  mesh.panId(1003);
  mesh.channel(24);
  EXPECT_EQ(all(readInto(mesh, "<m><status_>x</status_><panid_>x</panid_><channel_>x</channel_></m>")), all(filled()));
}

TEST(MeshParameters, StopsAtAPanIdOfAnotherLength) {
  for (const std::string text : {"abc", "", "001122334455667", "00112233445566778", "0011223344556677889900"}) {
    XmlReader reader(element("m", "<channel_>11</channel_><xpanid_>" + element("addr", text) +
                                      "</xpanid_><panid_>5</panid_>" + NETWORK_ELEMENT + "<status_>1</status_>"));
    MeshParameters expected = filled();
    expected.channel(11);
    MeshParameters mesh = filled();
    EXPECT_TRUE(mesh.fromXml(reader)) << text;
    EXPECT_EQ(all(mesh), all(expected)) << text;
    std::string next;
    while (next.empty() && reader.read()) {
      if (reader.nodeType() == 1) next = reader.name();
    }
    EXPECT_EQ(next, "panid_") << text;
  }
}

TEST(MeshParameters, FailsOnAPanIdWithoutItsText) {
  EXPECT_EQ(all(readInto(filled(), "<m><xpanid_><x>1</x></xpanid_><panid_>5</panid_></m>", true)), all(filled()));
}

TEST(MeshParameters, TakesThePanIdThatStandsBehindOneWithoutText) {
  MeshParameters expected = filled();
  expected.xpanId(PanId(std::string("ffeeddccbbaa9988")));
  EXPECT_EQ(all(readInto(filled(), "<m><xpanid_></xpanid_><other><addr>ffeeddccbbaa9988</addr></other></m>")),
            all(expected));
}

TEST(MeshParameters, FillsAShortKeyFromWhatFollows) {
  const MeshParameters mesh =
      readInto(MeshParameters(), element("m", "<preconfiguredKey_><count>16</count><item>1</item></preconfiguredKey_>" +
                                                  NETWORK_ELEMENT + PANID_ELEMENT));
  EXPECT_EQ(std::string(mesh.preconfiguredKey()), KEY_B);
  EXPECT_TRUE(mesh.networkKey() == 0);
  EXPECT_EQ(mesh.panId(), 1003);
}

TEST(MeshParameters, GoesOnBehindAKeyOfNoItems) {
  const MeshParameters mesh = readInto(
      MeshParameters(),
      element("m", "<preconfiguredKey_><count>0</count></preconfiguredKey_>" + NETWORK_ELEMENT + PANID_ELEMENT));
  EXPECT_TRUE(mesh.preconfiguredKey() == 0);
  EXPECT_EQ(std::string(mesh.networkKey()), KEY_B);
  EXPECT_EQ(mesh.panId(), 1003);
}

TEST(MeshParameters, IgnoresItemsBehindTheCountOfAKey) {
  EXPECT_EQ(all(readInto(filled(), "<m><networkKey_><count>0</count><item>1</item><item>2</item></networkKey_></m>")),
            all(filled()));
}

TEST(MeshParameters, FailsOnABrokenDocument) {
  for (const std::string document :
       {"", "no document", "<m><panid_>5</m>", "<m><networkKey_><count>16</count><item>1</item>",
        "<m><preconfiguredKey_><count>16</count><item>1</item>", "<m><xpanid_>"}) {
    readInto(filled(), document, true);
  }
}

}  // namespace
}  // namespace qx
