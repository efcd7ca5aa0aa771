#include "qxxml/XmlReader.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <cstdio>
#include <fstream>
#include <initializer_list>
#include <memory>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <libxml/xmlerror.h>
#include <sys/inotify.h>
#include <unistd.h>

namespace qx {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

constexpr int FAILED = 2;
constexpr int AT_END = 3;

static_assert(!std::is_copy_constructible_v<XmlReader> && !std::is_copy_assignable_v<XmlReader>);

/// Each node as "type name text".
std::vector<std::string> rest(XmlReader& reader) {
  std::vector<std::string> nodes;
  while (reader.read()) nodes.push_back(std::to_string(reader.nodeType()) + " " + reader.name() + " " + reader.value());
  return nodes;
}

std::vector<std::string> nodes(const std::string& document) {
  XmlReader reader(document);
  return rest(reader);
}

/// The state in which a walk over the whole document ends.
int endState(const std::string& document) {
  XmlReader reader(document);
  rest(reader);
  return reader.state();
}

/// True if the document is refused before its first node.
bool isRefused(const std::string& document) {
  XmlReader reader(document);
  return reader.state() == FAILED && rest(reader).empty() && reader.state() == FAILED;
}

/// The text of a document that holds nothing else, once its end was reached without a failure.
std::string textOf(const std::string& document) {
  XmlReader reader(document);
  reader.read();
  reader.read();
  std::string text = reader.value();
  rest(reader);
  EXPECT_EQ(reader.state(), AT_END);
  return text;
}

std::string repeated(const std::string& text, std::size_t times) {
  std::string all;
  all.reserve(text.size() * times);
  while (times-- > 0) all += text;
  return all;
}

std::string joined(std::initializer_list<std::string_view> parts) {
  std::string all;
  for (const std::string_view part : parts) all += part;
  return all;
}

TEST(XmlReader, WalksThroughTheDocumentInItsOrder) {
  EXPECT_THAT(nodes("<mesh version='1'><status_>1</status_> <hop><lqi_>255</lqi_></hop><none/></mesh>"),
              ElementsAre("1 mesh ",     //
                          "1 status_ ",  //
                          "3 #text 1",   //
                          "15 status_ ",
                          "14 #text  ",   //
                          "1 hop ",       //
                          "1 lqi_ ",      //
                          "3 #text 255",  //
                          "15 lqi_ ",     //
                          "15 hop ",      //
                          "1 none ",      //
                          "15 mesh "));
}

TEST(XmlReader, ComesUponTheEndOfAnEmptyTextButNotOfAnEmptyTag) {
  EXPECT_THAT(nodes("<n><text></text><tag/><next>1</next></n>"),
              ElementsAre("1 n ", "1 text ", "15 text ", "1 tag ", "1 next ", "3 #text 1", "15 next ", "15 n "));
}

TEST(XmlReader, ReadsWhatElseADocumentHas) {
  EXPECT_THAT(nodes("<?xml version='1.0'?><!DOCTYPE n><?p i?><n><!--c--><![CDATA[<&]]></n>"),
              ElementsAre("10 n ", "7 p i", "1 n ", "8 #comment c", "4 #cdata-section <&", "15 n "));
}

TEST(XmlReader, ReadsPredefinedEntitiesAndCharacterReferencesAsText) {
  EXPECT_EQ(textOf("<n>&lt;&gt;&amp;&quot;&apos;&#65;&#x42;&#13;&#xe9;</n>"), "<>&\"'AB\r\xC3\xA9");
}

TEST(XmlReader, NamesAnElementWithItsPrefix) {
  EXPECT_THAT(nodes("<a:n xmlns:a='urn:a'/>"), ElementsAre("1 a:n "));
  EXPECT_THAT(nodes("<a:n/>"), ElementsAre("1 a:n "));
}

TEST(XmlReader, StatesHowFarReadingIs) {
  XmlReader reader("<n>1</n>");
  EXPECT_EQ(reader.state(), 0);
  EXPECT_TRUE(reader.read());
  EXPECT_EQ(reader.state(), 1);
  rest(reader);
  EXPECT_EQ(reader.state(), 3);
  EXPECT_FALSE(reader.read());
  EXPECT_EQ(reader.state(), 3);
}

TEST(XmlReader, HasNoNodeBeforeTheFirstAndBehindTheLast) {
  for (const char* const document : {"<n>1</n>", "<n>1</m>", ""}) {
    XmlReader reader(document);
    for (int i = 0; i < 2; ++i) {
      EXPECT_EQ(reader.nodeType(), 0) << document;
      EXPECT_EQ(reader.name(), "") << document;
      EXPECT_EQ(reader.value(), "") << document;
      std::string text = "before";
      reader.value(text);
      EXPECT_EQ(text, "") << document;
      rest(reader);
    }
  }
}

TEST(XmlReader, KeepsTheDocumentThatItWasGiven) {
  auto document = std::make_unique<std::string>("<n>" + std::string(10'000, 'x') + "</n>");
  XmlReader reader(*document);
  document.reset();
  reader.read();
  reader.read();
  EXPECT_EQ(reader.value(), std::string(10'000, 'x'));
}

TEST(XmlReader, GivesALongTextAsOne) {
  EXPECT_TRUE(textOf("<n>" + repeated("&lt;0123456789>\xC3\xA9.&#65;\n", 10'000) + "</n>") ==
              repeated("<0123456789>\xC3\xA9.A\n", 10'000));
}

TEST(XmlReader, FailsOnADocumentThatIsCutAnywhere) {
  const std::string document =
      "<?xml version=\"1.0\" encoding='UTF-8'?><!DOCTYPE n><!--c--><n a='1' b=\"2\"><m>&lt;\xC3\xA9</m>"
      "<![CDATA[c]]><?p i?>\n<o/></n>";
  ASSERT_EQ(endState(document), AT_END);
  for (std::size_t length = 0; length < document.size(); ++length) {
    EXPECT_EQ(endState(document.substr(0, length)), FAILED) << document.substr(0, length);
  }
}

TEST(XmlReader, GivesTheNodesInFrontOfAnError) {
  XmlReader reader("<n>" + repeated("<m>1</m>", 1000) + "<");
  EXPECT_GT(rest(reader).size(), 1000U);
  EXPECT_EQ(reader.state(), FAILED);
  EXPECT_FALSE(reader.read());
  EXPECT_EQ(reader.state(), FAILED);
}

TEST(XmlReader, FailsOnADocumentThatIsNotWellFormed) {
  for (const char* const document : {"",
                                     " \n",
                                     "text",
                                     "<",
                                     "<n",
                                     "<n></m>",
                                     "<n><m></n></m>",
                                     "<n/><m/>",
                                     "<n/>text",
                                     "text<n/>",
                                     "<n a/>",
                                     "<n a=1/>",
                                     "<n a='1' a='2'/>",
                                     "<n a='<'/>",
                                     "<n>&unknown;</n>",
                                     "<n a='&unknown;'/>",
                                     "<n>&#0;</n>",
                                     "<n>&#xFFFF;</n>",
                                     "<n>&#xD800;</n>",
                                     "<n>\x01</n>",
                                     "<n>]]></n>",
                                     "<9/>",
                                     "<n><!-- -- --></n>",
                                     "<n>&</n>",
                                     " <?xml version='1.0'?><n/>",
                                     "<!DOCTYPE><n/>",
                                     "<n><!DOCTYPE n></n>",
                                     "<![CDATA[1]]>",
                                     "<?p?>",
                                     "[<n/>"}) {
    EXPECT_EQ(endState(document), FAILED) << document;
  }
}

TEST(XmlReader, RefusesAZeroByteWhereverItStands) {
  const std::string document = "<n a='1'>text</n>\n";
  for (std::size_t at = 0; at <= document.size(); ++at) {
    std::string with = document;
    with.insert(at, 1, '\0');
    EXPECT_TRUE(isRefused(with)) << at;
  }
}

TEST(XmlReader, ConvertsTheEncodingsThatHoldAscii) {
  EXPECT_EQ(textOf("<n>\xC3\xA9</n>"), "\xC3\xA9");
  EXPECT_EQ(textOf("\xEF\xBB\xBF<n>\xC3\xA9</n>"), "\xC3\xA9");
  EXPECT_EQ(textOf("\xEF\xBB\xBF<?xml version='1.0' encoding='utf-8'?><n>\xC3\xA9</n>"), "\xC3\xA9");
  EXPECT_EQ(textOf("<?xml version='1.0' encoding='US-ASCII'?><n>a</n>"), "a");
  EXPECT_EQ(textOf("<?xml version='1.0' encoding='ISO-8859-1'?><n>\xE9\x80</n>"), "\xC3\xA9\xC2\x80");
  EXPECT_EQ(textOf("<?xml version = \"1.0\" encoding = \"iso-8859-15\" ?><n>\xA4</n>"), "\xE2\x82\xAC");
  EXPECT_EQ(textOf("<?xml version='1.0' encoding='ISO-8859-5'?><n>\xB0</n>"), "\xD0\x90");
}

TEST(XmlReader, TakesNoEncodingFromAnotherInstruction) {
  EXPECT_THAT(nodes("<?xml-foo encoding=\"ISO-8859-1\"?><n>\xC3\xA9</n>"), testing::Contains("3 #text \xC3\xA9"));
  EXPECT_THAT(nodes("<?xml-foo encoding=\"KOI8-R\"?><n>a</n>"), testing::Contains("3 #text a"));
}

TEST(XmlReader, FailsOnBytesThatTheEncodingDoesNotHave) {
  for (const char* const bytes : {"\xE9", "\xC3(", "\xC0\xAF", "\xED\xA0\x80", "\xF4\x90\x80\x80", "\xEF\xBF\xBE"}) {
    EXPECT_EQ(endState(std::string("<n>") + bytes + "</n>"), FAILED);
    EXPECT_EQ(endState(std::string("<?xml version='1.0' encoding='UTF-8'?><n>") + bytes + "</n>"), FAILED);
  }
  EXPECT_EQ(endState("<?xml version='1.0' encoding='ISO-8859-3'?><n>\xA5</n>"), FAILED);
}

TEST(XmlReader, RefusesOtherEncodings) {
  for (const char* const encoding : {"UTF-16", "UTF-16LE", "UTF-7", "UCS-4", "EBCDIC-US", "Shift_JIS", "ISO-2022-JP",
                                     "HZ", "KLINGON", "ISO-8859-99", "ISO-8859-", "ISO-8859-1//IGNORE", ""}) {
    EXPECT_TRUE(isRefused(std::string("<?xml version='1.0' encoding='") + encoding + "'?><n/>")) << encoding;
  }
  // "<n/>" in UTF-16 of both orders, with and without the mark, in UCS-4 and in EBCDIC, and a mark alone.
  for (const std::string& document :
       {std::string("\xFF\xFE<\0n\0/\0>\0", 10), std::string("\xFE\xFF\0<\0n\0/\0>", 10),
        std::string("<\0n\0/\0>\0", 8), std::string("\0<\0n\0/\0>", 8), std::string("\0\0\0<\0\0\0n\0\0\0/\0\0\0>", 16),
        std::string("\x4C\x6F\xA7\x94\x93"), std::string("\xFF\xFE"), std::string("\xEF\xBB\xBF")}) {
    EXPECT_TRUE(isRefused(document));
  }
}

// Whichever of two names the encoding is taken from.
TEST(XmlReader, ReadsNoMarkupOutOfAnEncodingThatHidesIt) {
  EXPECT_EQ(endState("<?xml version=\"encoding='UTF-8'\" encoding=\"UTF-7\"?>+ADw-n/+AD4-"), FAILED);
  EXPECT_EQ(endState("<?xml version='1.0' encoding=\"UTF-8' ?><n/><!--\"?>+ADw-n/+AD4-"), FAILED);
}

TEST(XmlReader, TakesADocumentTypeThatDeclaresNothing) {
  EXPECT_THAT(nodes("<!DOCTYPE boost_serialization><n>1</n>"),
              ElementsAre("10 boost_serialization ", "1 n ", "3 #text 1", "15 n "));
}

TEST(XmlReader, RefusesDeclarationsInTheDocument) {
  for (const char* const declarations :
       {"", "<!ELEMENT n ANY>", "<!ATTLIST n a CDATA '1'>", "<!ENTITY e 'text'>",
        "<!ENTITY % e '<!ELEMENT n ANY>'> %e;", "<!-- ' -->", "<?p '?>", "<!NOTATION x SYSTEM 'x'>"}) {
    EXPECT_TRUE(isRefused(std::string("<!DOCTYPE n [") + declarations + "]><n>&e;</n>")) << declarations;
    EXPECT_TRUE(isRefused(std::string("<!DOCTYPE n SYSTEM '>' [") + declarations + "]><n/>")) << declarations;
  }
}

TEST(XmlReader, FailsAtAnEntityThatADeclarationElsewhereMayHave) {
  XmlReader reader("<!DOCTYPE n SYSTEM 'elsewhere.dtd'><n>1&e;2</n>");
  EXPECT_THAT(rest(reader), ElementsAre("10 n ", "1 n ", "3 #text 1"));
  EXPECT_EQ(reader.state(), FAILED);
}

std::string bomb(const std::string& kind, const std::string& first, const std::string& reference) {
  std::string declarations = "<!ENTITY " + kind + "e0 '" + first + "'>";
  for (int i = 1; i < 12; ++i) {
    declarations += "<!ENTITY " + kind + "e" + std::to_string(i) + " '" +
                    repeated(reference + "e" + std::to_string(i - 1) + ";", 10) + "'>";
  }
  return declarations;
}

TEST(XmlReader, ExpandsNoBomb) {
  const std::string laughs = "<!DOCTYPE n [" + bomb("", "ha", "&") + "]>";
  EXPECT_TRUE(isRefused(laughs + "<n>&e11;</n>"));
  EXPECT_TRUE(isRefused(laughs + "<n a='&e11;'/>"));
  EXPECT_TRUE(isRefused("<!DOCTYPE n [" + bomb("", "ha", "&") + "<!ATTLIST n a CDATA '&e11;'>]><n/>"));
  EXPECT_TRUE(isRefused("<!DOCTYPE n [" + bomb("% ", "<!ELEMENT m ANY>", "&#37;") + "%e11;]><n/>"));
  EXPECT_TRUE(isRefused("<!DOCTYPE n [<!ENTITY e '" + std::string(100'000, 'x') + "'>]><n>" + repeated("&e;", 100'000) +
                        "</n>"));
}

/// A file that tells whether anybody has opened it since.
class WatchedFile {
 public:
  explicit WatchedFile(const std::string& content) {
    const int file = mkstemp(path_.data());
    if (file >= 0) close(file);
    std::ofstream(path_) << content;
    watch_ = inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
    EXPECT_GE(inotify_add_watch(watch_, path_.c_str(), IN_OPEN), 0);
  }
  ~WatchedFile() {
    close(watch_);
    unlink(path_.c_str());
  }
  WatchedFile(const WatchedFile&) = delete;
  WatchedFile& operator=(const WatchedFile&) = delete;

  const std::string& path() const { return path_; }

  bool wasOpened() const {
    char events[4096];
    return ::read(watch_, events, sizeof events) > 0;
  }

 private:
  std::string path_ = testing::TempDir() + "XmlReaderTest.XXXXXX";
  int watch_ = -1;
};

TEST(XmlReader, OpensNoFile) {
  const WatchedFile file("secret");
  for (const std::string& address : {file.path(), "file://" + file.path()}) {
    const std::string source = "SYSTEM '" + address + "'";
    for (const std::string& document : {
             "<!DOCTYPE n [<!ENTITY e " + source + ">]><n>&e;</n>",
             "<!DOCTYPE n [<!ENTITY e " + source + ">]><n a='&e;'/>",
             "<!DOCTYPE n [<!ENTITY % e " + source + "> %e;]><n/>",
             "<!DOCTYPE n " + source + "><n>1</n>",
             "<!DOCTYPE n PUBLIC '-//qx//n' '" + address + "'><n>&e;</n>",
             "<n xmlns:xi='http://www.w3.org/2001/XInclude'><xi:include parse='text' href='" + address + "'/></n>",
             "<?xml-stylesheet href='" + address + "'?><n/>",
             "<n xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance' xsi:noNamespaceSchemaLocation='" + address +
                 "'/>",
         }) {
      for (const std::string& node : nodes(document)) EXPECT_THAT(node, Not(HasSubstr("secret"))) << document;
      EXPECT_FALSE(file.wasOpened()) << document;
    }
  }
  std::ifstream(file.path()).get();
  EXPECT_TRUE(file.wasOpened()) << "the watch does not see anything";
}

TEST(XmlReader, ReadsSomeDepthAndNoMore) {
  EXPECT_EQ(endState(repeated("<n>", 250) + repeated("</n>", 250)), AT_END);
  EXPECT_EQ(endState(repeated("<n>", 300) + repeated("</n>", 300)), FAILED);
  EXPECT_EQ(endState(repeated("<n>", 1'000'000)), FAILED);
}

TEST(XmlReader, ReadsLongTextsToALimit) {
  const std::string longest = repeated("x", 10'000'000);
  EXPECT_TRUE(textOf("<n>" + longest + "</n>") == longest);
  EXPECT_EQ(endState("<n>" + longest + longest + "</n>"), FAILED);
}

TEST(XmlReader, FailsOnANameOfMoreThan50000Bytes) {
  EXPECT_EQ(endState("<" + std::string(50'001, 'n') + "/>"), FAILED);
}

TEST(XmlReader, ReadsAnyNumberOfElements) {
  constexpr std::size_t ELEMENTS = 300'000;
  XmlReader reader("<n>" + repeated("<m/>", ELEMENTS) + "</n>");
  std::size_t count = 0;
  while (reader.read()) ++count;
  EXPECT_EQ(count, ELEMENTS + 2);
  EXPECT_EQ(reader.state(), AT_END);
}

/// A tag with `count` attributes of different names, without its end.
std::string tagWith(std::size_t count, const std::string& prefix = "") {
  std::string tag = "<n";
  for (std::size_t i = 0; i < count; ++i)
    tag += " " + prefix + "a" + std::to_string(i) + (i % 2 == 0 ? "='x'" : "=\"x\"");
  return tag;
}

// A hundred thousand of them keep the parser busy for more than a minute.
TEST(XmlReader, ReadsAThousandAttributesOfATag) {
  EXPECT_EQ(endState(tagWith(1000) + "/>"), AT_END);
  EXPECT_EQ(endState("<r>" + repeated(tagWith(1000) + ">x='1'</n>", 3) + "</r>"), AT_END);
  EXPECT_TRUE(isRefused(tagWith(1001) + "/>"));
  EXPECT_TRUE(isRefused("<r><n/>" + tagWith(100'000) + "></n></r>"));
  EXPECT_TRUE(isRefused("<r><!-- ' --><![CDATA[ ' ]]><?p ' ?>" + tagWith(100'000) + "></n></r>"));
}

TEST(XmlReader, ReadsAThousandNamespaces) {
  EXPECT_EQ(endState(tagWith(1000, "xmlns:") + "/>"), AT_END);
  EXPECT_EQ(endState(repeated(tagWith(500, "xmlns:") + ">", 2) + "xmlns</n></n>"), AT_END);
  EXPECT_TRUE(isRefused(repeated(tagWith(500, "xmlns:") + ">", 2) + "<n xmlns=''/></n></n>"));
}

// At each of what looks like an end, the parser looks for it anew.
TEST(XmlReader, ReadsMarkupUpTo256Kibibytes) {
  const std::pair<std::string, std::string> kinds[] = {
      {"<n a='", "'/>"}, {"<n a=\"", "\"/>"}, {"<!--", "-->"}, {"<?p ", "?>"}, {"<![CDATA[", "]]>"},
  };
  for (const auto& [begin, end] : kinds) {
    const std::string fill((256 << 10) - begin.size() - end.size(), '>');
    EXPECT_EQ(endState(joined({"<r>", begin, fill, end, "</r>"})), AT_END) << begin;
    EXPECT_EQ(endState(joined({"<r>", begin, fill, end, begin, fill, end, "</r>"})), AT_END) << begin;
    EXPECT_TRUE(isRefused(joined({"<r>", begin, fill, ">", end, "</r>"}))) << begin;
    EXPECT_TRUE(isRefused(joined({"<r>", begin, repeated(">", 10'000'000)}))) << begin;
  }
}

TEST(XmlReader, TellsMarkupFromWhatLooksLikeIt) {
  const std::string hidden = "<n [ ' \" " + repeated("='' ", 2000);
  EXPECT_EQ(endState("<r a='[' b=\"'\" c='\"' d='>'>[' \" > x=''<!--" + hidden + "--><![CDATA[" + hidden + "]]><?p " +
                     hidden + "?></r>"),
            AT_END);
}

TEST(XmlReader, SaysNothingOnStandardError) {
  const std::string documents[] = {
      "",
      "<n",
      "<n></m>",
      "<a:n/>",
      "<n>\xFF</n>",
      "<n>&e;</n>",
      "<?xml version='9.9'?><n/>",
      "<?xml version='1.0' encoding='KLINGON'?><n/>",
      "<?xml version='1.0' encoding='ISO-8859-3'?><n>" + std::string(10'000, ' ') + "\xA5</n>",
      "<!DOCTYPE n SYSTEM 'http://localhost/n.dtd'><n>&e;</n>",
      repeated("<n>", 10'000),
  };
  testing::internal::CaptureStderr();
  for (const std::string& document : documents) endState(document);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

// NOLINTNEXTLINE(cert-dcl50-cpp): libxml2 calls functions of this kind
void ownHandler(void* /*context*/, const char* /*format*/, ...) {}

TEST(XmlReader, LeavesTheThreadsErrorHandlersInPlace) {
  int context = 0;
  const xmlStructuredErrorFunc ownStructuredHandler = [](void* /*context*/, xmlErrorPtr /*error*/) {};
  xmlSetGenericErrorFunc(&context, ownHandler);
  xmlSetStructuredErrorFunc(&context, ownStructuredHandler);
  endState("<n></m>");
  EXPECT_EQ(xmlGenericError, &ownHandler);
  EXPECT_EQ(xmlGenericErrorContext, &context);
  EXPECT_EQ(xmlStructuredError, ownStructuredHandler);
  EXPECT_EQ(xmlStructuredErrorContext, &context);
  xmlSetGenericErrorFunc(nullptr, nullptr);
  xmlSetStructuredErrorFunc(nullptr, nullptr);
}

}  // namespace
}  // namespace qx
