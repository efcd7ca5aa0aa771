#include "qxxml/XmlWriter.h"

#include <gtest/gtest.h>

#include <sstream>
#include <stdexcept>
#include <streambuf>
#include <string>
#include <type_traits>
#include <utility>

namespace qx {
namespace {

/// What `write` does to a writer, as text.
template <typename Write>
std::string written(Write write, bool indent = false) {
  std::ostringstream out;
  XmlWriter writer(out, indent);
  write(writer);
  return out.str();
}

template <typename T, typename = void>
struct IsWrittenAsNumber : std::false_type {};
template <typename T>
struct IsWrittenAsNumber<T, std::void_t<decltype(std::declval<XmlWriter&>().writeElement<T>("n", T{}))>>
    : std::true_type {};

static_assert(IsWrittenAsNumber<signed char>() && IsWrittenAsNumber<unsigned char>());
static_assert(IsWrittenAsNumber<unsigned short>() && IsWrittenAsNumber<unsigned long long>());
static_assert(IsWrittenAsNumber<int>() && IsWrittenAsNumber<unsigned int>());
static_assert(!IsWrittenAsNumber<bool>() && !IsWrittenAsNumber<char>() && !IsWrittenAsNumber<double>());
static_assert(!IsWrittenAsNumber<char*>() && !IsWrittenAsNumber<const char*>());

template <typename T, typename = void>
struct IsWritable : std::false_type {};
template <typename T>
struct IsWritable<T, std::void_t<decltype(std::declval<XmlWriter&>().writeElement("n", std::declval<T>()))>>
    : std::true_type {};

static_assert(IsWritable<unsigned short>() && IsWritable<char*>() && IsWritable<const std::string&>());
static_assert(!IsWritable<bool>(), "a boolean without its flag must not become a number");
static_assert(!IsWritable<char>() && !IsWritable<long>() && !IsWritable<float>());

static_assert(!std::is_copy_constructible_v<XmlWriter> && !std::is_copy_assignable_v<XmlWriter>);

TEST(XmlWriter, NestsElements) {
  EXPECT_EQ(written([](XmlWriter& writer) {
              writer.startElement("mesh");
              writer.startElement(std::string("hop"));
              writer.writeElement("lqi_", "255");
              writer.endElement();
              writer.writeElement("status_", "1");
              writer.endElement();
            }),
            "<mesh><hop><lqi_>255</lqi_></hop><status_>1</status_></mesh>");
}

TEST(XmlWriter, TakesOneElementAsADocument) {
  EXPECT_EQ(written([](XmlWriter& writer) { writer.writeElement("n", "text"); }), "<n>text</n>");
}

TEST(XmlWriter, HasAllOnTheStreamWhenTheOutermostElementIsClosed) {
  std::ostringstream out;
  XmlWriter writer(out);
  writer.startElement("list");
  std::string expected = "<list>";
  for (int i = 0; i < 10'000; ++i) {
    writer.writeElement("item", std::to_string(i));
    expected += "<item>" + std::to_string(i) + "</item>";
  }
  writer.endElement();
  EXPECT_EQ(out.str(), expected + "</list>");
}

TEST(XmlWriter, TakesTextsOfEveryKind) {
  EXPECT_EQ(written([](XmlWriter& writer) {
              char array[] = "array";
              writer.startElement("n");
              writer.writeElement("a", "literal");
              writer.writeElement("b", array);
              writer.writeElement("c", std::string("string"));
              writer.writeElement(std::string("d"), std::string("string"));
              writer.writeElement(std::string("e"), "literal");
              writer.endElement();
            }),
            "<n><a>literal</a><b>array</b><c>string</c><d>string</d><e>literal</e></n>");
}

TEST(XmlWriter, WritesABooleanAsADigit) {
  EXPECT_EQ(written([](XmlWriter& writer) {
              writer.startElement("n");
              writer.writeElement("a", true, true);
              writer.writeElement("b", false, true);
              writer.writeElement("c", true, false);
              writer.writeElement("d", false, false);
              writer.endElement();
            }),
            "<n><a>1</a><b>0</b><c>1</c><d>0</d></n>");
}

TEST(XmlWriter, KeepsTheOrderOfAttributes) {
  EXPECT_EQ(written([](XmlWriter& writer) {
              writer.startElement("n");
              writer.writeAttribute("version", "182");
              writer.writeAttribute("class_id", "0");
              writer.startElement("m");
              writer.writeAttribute("version", "0");
              writer.endElement();
              writer.endElement();
            }),
            "<n version=\"182\" class_id=\"0\"><m version=\"0\"/></n>");
}

TEST(XmlWriter, GivesAnEmptyTextAStartAndAnEnd) {
  EXPECT_EQ(written([](XmlWriter& writer) {
              writer.startElement("n");
              writer.writeElement("text", "");
              writer.startElement("element");
              writer.endElement();
              writer.endElement();
            }),
            "<n><text></text><element/></n>");
}

TEST(XmlWriter, TakesANullPointerForAnEmptyText) {
  const char* const null = nullptr;
  EXPECT_EQ(written([null](XmlWriter& writer) {
              writer.startElement(null);
              writer.writeAttribute("a", null);
              writer.writeElement(null, null);
              writer.writeElement("b", null);
              writer.endElement();
            }),
            "<_ a=\"\"><_></_><b></b></_>");
}

TEST(XmlWriter, EscapesMarkup) {
  EXPECT_EQ(written([](XmlWriter& writer) {
              writer.startElement("n");
              writer.writeAttribute("a", "<\"&'>");
              writer.writeElement("m", "</m>&lt;\"']]>");
              writer.endElement();
            }),
            "<n a=\"&lt;&quot;&amp;'&gt;\"><m>&lt;/m&gt;&amp;lt;&quot;']]&gt;</m></n>");
}

TEST(XmlWriter, EscapesLineEndsThatAReaderWouldChange) {
  EXPECT_EQ(written([](XmlWriter& writer) {
              writer.startElement("n");
              writer.writeAttribute("a", "\t\r\n");
              writer.writeElement("m", "\t\r\n");
              writer.endElement();
            }),
            "<n a=\"&#9;&#13;&#10;\"><m>\t&#13;\n</m></n>");
}

TEST(XmlWriter, KeepsUtf8) {
  EXPECT_EQ(written([](XmlWriter& writer) { writer.writeElement("n", "\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80"); }),
            "<n>\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80</n>");
}

TEST(XmlWriter, ReplacesWhatADocumentCannotCarry) {
  EXPECT_EQ(written([](XmlWriter& writer) {
              writer.startElement("n");
              writer.writeAttribute("a", "\x01 \xFF");
              writer.writeElement("m", std::string("\0<\xE9", 3));
              writer.endElement();
            }),
            "<n a=\"&#xFFFD; &#xFFFD;\"><m>\xEF\xBF\xBD&lt;\xEF\xBF\xBD</m></n>");
}

TEST(XmlWriter, MakesNamesFit) {
  EXPECT_EQ(written([](XmlWriter& writer) {
              writer.startElement("a b");
              writer.writeAttribute("x:y", "1");
              writer.writeElement("9", "2");
              writer.writeElement(std::string("\0", 1), std::string("3"));
              writer.endElement();
            }),
            "<a_b x_y=\"1\"><_9>2</_9><_>3</_></a_b>");
}

TEST(XmlWriter, DeclaresOnlyWhenAsked) {
  EXPECT_EQ(written([](XmlWriter& writer) {
              writer.startDocument();
              writer.writeElement("n", "text");
            }),
            "<?xml version=\"1.0\"?>\n<n>text</n>");
}

TEST(XmlWriter, IndentsElementsButNotTexts) {
  EXPECT_EQ(written(
                [](XmlWriter& writer) {
                  writer.startDocument();
                  writer.startElement("n");
                  writer.writeAttribute("a", "1");
                  writer.startElement("m");
                  writer.writeElement("number", "1");
                  writer.writeElement("text", " <\n> ");
                  writer.writeElement("empty", "");
                  writer.endElement();
                  writer.startElement("o");
                  writer.endElement();
                  writer.endElement();
                },
                true),
            "<?xml version=\"1.0\"?>\n"
            "<n a=\"1\">\n"
            "  <m>\n"
            "    <number>1</number>\n"
            "    <text> &lt;\n&gt; </text>\n"
            "    <empty></empty>\n"
            "  </m>\n"
            "  <o/>\n"
            "</n>\n");
}

// Each misuse leaves the document as it was.
TEST(XmlWriter, ThrowsOnCallsThatWouldBreakTheDocument) {
  EXPECT_EQ(written([](XmlWriter& writer) {
              EXPECT_THROW(writer.endElement(), std::logic_error);
              EXPECT_THROW(writer.writeAttribute("a", "1"), std::logic_error);
              writer.startDocument();
              EXPECT_THROW(writer.startDocument(), std::logic_error);
              EXPECT_THROW(writer.writeAttribute("a", "1"), std::logic_error);
              writer.startElement("n");
              EXPECT_THROW(writer.startDocument(), std::logic_error);
              writer.writeAttribute("a", "1");
              EXPECT_THROW(writer.writeAttribute("a", "2"), std::logic_error);
              writer.writeAttribute("b c", "3");
              EXPECT_THROW(writer.writeAttribute("b_c", "4"), std::logic_error);
              writer.writeElement("m", "5");
              EXPECT_THROW(writer.writeAttribute("d", "6"), std::logic_error);
              writer.endElement();
              EXPECT_THROW(writer.endElement(), std::logic_error);
              EXPECT_THROW(writer.startElement("o"), std::logic_error);
              EXPECT_THROW(writer.writeElement("o", "7"), std::logic_error);
              EXPECT_THROW(writer.writeElement("o", true, true), std::logic_error);
              EXPECT_THROW(writer.writeAttribute("e", "8"), std::logic_error);
              EXPECT_THROW(writer.startDocument(), std::logic_error);
            }),
            "<?xml version=\"1.0\"?>\n<n a=\"1\" b_c=\"3\"><m>5</m></n>");
}

TEST(XmlWriter, TakesNoAttributeOfMoreThan16Mebibytes) {
  std::ostringstream out;
  XmlWriter writer(out);
  writer.startElement("e");
  EXPECT_THROW(writer.writeAttribute("a", std::string((std::size_t{16} << 20) + 1, 'x').c_str()), std::length_error);
  // The longest there may be, of bytes that grow most when they are escaped.
  writer.writeAttribute("b", std::string(std::size_t{16} << 20, '\x01').c_str());
  writer.endElement();
  EXPECT_TRUE(out.good());
  EXPECT_EQ(out.str().substr(0, 14), "<e b=\"&#xFFFD;");
  EXPECT_EQ(out.str().size(), std::string("<e b=\"\"/>").size() + (std::size_t{16} << 20) * 8);
}

TEST(XmlWriter, TakesNoTextOfMoreThan256Mebibytes) {
  const std::string tooLong((std::size_t{256} << 20) + 1, 'x');
  EXPECT_EQ(written([&tooLong](XmlWriter& writer) {
              writer.startElement("n");
              EXPECT_THROW(writer.writeAttribute("a", tooLong.c_str()), std::length_error);
              EXPECT_THROW(writer.writeElement("m", tooLong), std::length_error);
              writer.endElement();
            }),
            "<n/>");
}

TEST(XmlWriter, LeavesOpenElementsOpen) {
  std::ostringstream out;
  {
    XmlWriter writer(out);
    writer.startElement("n");
    writer.writeElement("m", "text");
  }
  EXPECT_EQ(out.str(), "<n><m>text</m>");
}

/// Takes `room` characters and then fails in its own way.
class Full : public std::streambuf {
 public:
  Full(int room, bool throws) : room_(room), throws_(throws) {}

 private:
  int_type overflow(int_type c) override {
    if (room_ > 0) {
      --room_;
      return traits_type::not_eof(c);
    }
    if (throws_) throw std::runtime_error("disk full");
    return traits_type::eof();
  }

  int room_;
  bool throws_;
};

void writeMuch(XmlWriter& writer) {
  writer.startElement("list");
  for (int i = 0; i < 10'000; ++i) writer.writeElement("item", "text");
  writer.endElement();
}

TEST(XmlWriter, LeavesAFailureToTheStreamsState) {
  for (const bool throws : {false, true}) {
    Full full(100, throws);
    std::ostream out(&full);
    testing::internal::CaptureStderr();
    {
      XmlWriter writer(out);
      EXPECT_NO_THROW(writeMuch(writer));
      EXPECT_TRUE(out.bad());
    }
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
  }
}

TEST(XmlWriter, PassesOnTheExceptionOfAStreamThatThrows) {
  Full full(100, true);
  std::ostream out(&full);
  out.exceptions(std::ios::badbit);
  {
    XmlWriter writer(out);
    try {
      writeMuch(writer);
      ADD_FAILURE() << "nothing was thrown";
    } catch (const std::runtime_error& error) {
      EXPECT_STREQ(error.what(), "disk full");
    }
    writer.writeElement("item", "text");
  }
  EXPECT_TRUE(out.bad());
}

}  // namespace
}  // namespace qx
