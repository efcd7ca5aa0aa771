#include "vso/serial/xmlHelpers.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <boost/date_time/posix_time/posix_time.hpp>
#include <climits>
#include <deque>
#include <list>
#include <ostream>
#include <sstream>
#include <stdexcept>
#include <streambuf>
#include <string>
#include <vector>

#include "qxxml/XmlReader.h"
#include "vso/serial/Forms.h"

namespace qx {
namespace {

using boost::logic::indeterminate;
using boost::posix_time::ptime;
using test::written;

constexpr int ELEMENT = 1;
constexpr int TEXT = 3;
constexpr int READING_FAILED = 2;

/// The start tag of an object's element.
std::string object(const std::string& name) {
  return "<" + name + " class_id=\"0\" tracking_level=\"0\" version=\"182\">";
}

/// An object with an XML form of its own.
class Item {
 public:
  explicit Item(std::string text) : text_(std::move(text)) {}
  void toXml(XmlWriter& writer, const std::string& name) const {
    writer.startElement(name);
    writer.writeElement("text_", text_);
    writer.endElement();
  }

 private:
  std::string text_;
};

/// An object whose form is never written to its end.
class ThrowingItem {
 public:
  void toXml(XmlWriter& writer, const std::string& name) const {
    const detail::XmlObject element(writer, name);
    const detail::XmlScope inner(writer, "inner");
    throw std::domain_error("no form");
  }
};

TEST(AddBoostAttributes, WritesTheThreeInTheirOrderInDecimal) {
  EXPECT_EQ(written([](XmlWriter& writer) {
              writer.startElement("x");
              addBoostAttributes(writer, 0, 0, 182);
              writer.endElement();
            }),
            "<x class_id=\"0\" tracking_level=\"0\" version=\"182\"/>");
  EXPECT_EQ(written([](XmlWriter& writer) {
              writer.startElement("x");
              addBoostAttributes(writer, INT_MAX, -1, INT_MIN);
              writer.endElement();
            }),
            "<x class_id=\"2147483647\" tracking_level=\"-1\" version=\"-2147483648\"/>");
}

template <typename T>
std::string number(T value) {
  return written([value](XmlWriter& writer) { writer.writeElement<T>("n", value); });
}

TEST(WriteElement, WritesEveryNumberInDecimal) {
  EXPECT_EQ(number<signed char>(-128), "<n>-128</n>");
  EXPECT_EQ(number<signed char>(-1), "<n>-1</n>");
  EXPECT_EQ(number<signed char>(0), "<n>0</n>");
  EXPECT_EQ(number<signed char>(65), "<n>65</n>");
  EXPECT_EQ(number<signed char>(127), "<n>127</n>");
  EXPECT_EQ(number<unsigned char>(0), "<n>0</n>");
  EXPECT_EQ(number<unsigned char>(7), "<n>7</n>");
  EXPECT_EQ(number<unsigned char>(65), "<n>65</n>");
  EXPECT_EQ(number<unsigned char>(255), "<n>255</n>");
  EXPECT_EQ(number<unsigned short>(0), "<n>0</n>");
  EXPECT_EQ(number<unsigned short>(65535), "<n>65535</n>");
  EXPECT_EQ(number<int>(0), "<n>0</n>");
  EXPECT_EQ(number<int>(2147483647), "<n>2147483647</n>");
  EXPECT_EQ(number<int>(INT_MIN), "<n>-2147483648</n>");
  EXPECT_EQ(number<unsigned int>(0), "<n>0</n>");
  EXPECT_EQ(number<unsigned int>(4294967295), "<n>4294967295</n>");
  EXPECT_EQ(number<unsigned long long>(0), "<n>0</n>");
  EXPECT_EQ(number<unsigned long long>(ULLONG_MAX), "<n>18446744073709551615</n>");
}

TEST(WriteElement, TakesTheTypeFromTheNumber) {
  EXPECT_EQ(written([](XmlWriter& writer) {
              writer.startElement("x");
              writer.writeElement("a", static_cast<signed char>(-65));
              writer.writeElement("b", static_cast<unsigned char>(65));
              writer.writeElement("c", static_cast<unsigned short>(65535));
              writer.writeElement("d", -1);
              writer.writeElement("e", 4294967295U);
              writer.writeElement("f", 1ULL << 63);
              writer.endElement();
            }),
            "<x><a>-65</a><b>65</b><c>65535</c><d>-1</d><e>4294967295</e><f>9223372036854775808</f></x>");
}

TEST(CollectionToXml, WritesAnEmptyCollectionWithoutItems) {
  EXPECT_EQ(written([](XmlWriter& writer) { collectionToXml(std::list<Item>(), writer, "hops_"); }),
            object("hops_") + "<count>0</count><item_version>183</item_version></hops_>");
}

TEST(CollectionToXml, WritesTheItemsInTheirOrder) {
  const std::string expected = object("items_") +
                               "<count>3</count><item_version>183</item_version>"
                               "<item><text_>b</text_></item><item><text_>a</text_></item><item><text_>c</text_></item>"
                               "</items_>";
  const std::list<Item> list = {Item("b"), Item("a"), Item("c")};
  EXPECT_EQ(written([&](XmlWriter& writer) { collectionToXml(list, writer, "items_"); }), expected);
  const std::deque<Item> deque(list.begin(), list.end());
  EXPECT_EQ(written([&](XmlWriter& writer) { collectionToXml(deque, writer, "items_"); }), expected);
  const std::vector<Item> vector(list.begin(), list.end());
  EXPECT_EQ(written([&](XmlWriter& writer) { collectionToXml(vector, writer, "items_"); }), expected);
}

TEST(CollectionToXml, CountsAllItems) {
  std::string expected = object("x") + "<count>1000</count><item_version>183</item_version>";
  for (int i = 0; i < 1000; ++i) expected += "<item><text_>t</text_></item>";
  const std::vector<Item> items(1000, Item("t"));
  EXPECT_EQ(written([&](XmlWriter& writer) { collectionToXml(items, writer, "x"); }), expected + "</x>");
}

TEST(CollectionToXml, PassesOnWhatAnItemThrows) {
  std::ostringstream out;
  XmlWriter writer(out);
  EXPECT_THROW(collectionToXml(std::list<ThrowingItem>(2), writer, "hops_"), std::domain_error);
  // The elements stay open, so that nobody takes the document for whole.
  for (const char* const name : {"inner", "item", "hops_"}) EXPECT_NO_THROW(writer.endElement()) << name;
  EXPECT_THROW(writer.endElement(), std::logic_error);
  EXPECT_EQ(out.str(), object("hops_") + "<count>2</count><item_version>183</item_version>" + object("item") +
                           "<inner/></item></hops_>");
}

TEST(StringVecToXml, WritesEachStringAsAnItemOfVersion182) {
  EXPECT_EQ(written([](XmlWriter& writer) { stringVecToXml({}, writer, "names_"); }),
            object("names_") + "<count>0</count><item_version>182</item_version></names_>");
  EXPECT_EQ(written([](XmlWriter& writer) {
              stringVecToXml({"b", "", "a <&> b", "b"}, writer, "names_");
            }),
            object("names_") +
                "<count>4</count><item_version>182</item_version>"
                "<item>b</item><item></item><item>a &lt;&amp;&gt; b</item><item>b</item></names_>");
}

TEST(ByteListToXml, WritesEachByteInDecimalWithItsSignAsAnItemOfVersion182) {
  EXPECT_EQ(written([](XmlWriter& writer) { byteListToXml({}, writer, "lqi_"); }),
            object("lqi_") + "<count>0</count><item_version>182</item_version></lqi_>");
  EXPECT_EQ(written([](XmlWriter& writer) {
              byteListToXml({65, -128, 127, -1, 0}, writer, "lqi_");
            }),
            object("lqi_") +
                "<count>5</count><item_version>182</item_version>"
                "<item>65</item><item>-128</item><item>127</item><item>-1</item><item>0</item></lqi_>");
}

TEST(TimeTToXml, WritesOnePlainElement) {
  const std::pair<long, const char*> forms[] = {
      {-1, "<t>-1</t>"},
      {0, "<t>0</t>"},
      {1706706309, "<t>1706706309</t>"},
      {4294967296, "<t>4294967296</t>"},
      {LONG_MAX, "<t>9223372036854775807</t>"},
      {LONG_MIN, "<t>-9223372036854775808</t>"},
  };
  for (const auto& [seconds, xml] : forms) {
    EXPECT_EQ(written([value = seconds](XmlWriter& writer) { timeTToXml(value, writer, "t"); }), xml);
  }
}

TEST(TriboolToXml, WritesTheThreeStates) {
  const auto xml = [](const boost::logic::tribool& value) {
    return written([&](XmlWriter& writer) { triboolToXml(value, writer, "b"); });
  };
  EXPECT_EQ(xml(false), object("b") + "<undetermined>0</undetermined><state>0</state></b>");
  EXPECT_EQ(xml(true), object("b") + "<undetermined>0</undetermined><state>1</state></b>");
  EXPECT_EQ(xml(indeterminate), object("b") + "<undetermined>1</undetermined><state>0</state></b>");
}

/// A time and what its form is made of.
struct TimeForm {
  ptime time;
  std::string date;
  std::string isSpecial;
  std::string hours;
  std::string minutes;
  std::string seconds;
  std::string microseconds;
};

ptime timeOf(const std::string& text) { return boost::posix_time::time_from_string(text); }

class PosixTimeToXml : public testing::TestWithParam<TimeForm> {};

TEST_P(PosixTimeToXml, WritesDateAndTimeOfDay) {
  const TimeForm& form = GetParam();
  EXPECT_EQ(written([&](XmlWriter& writer) { posixTimeToXml(form.time, writer, "last_"); }),
            object("last_") + object("ptime_date") + "<date>" + form.date + "</date></ptime_date>" +
                object("ptime_time_duration") + "<is_special>" + form.isSpecial + "</is_special>" +
                "<time_duration_hours>" + form.hours + "</time_duration_hours>" + "<time_duration_minutes>" +
                form.minutes + "</time_duration_minutes>" + "<time_duration_seconds>" + form.seconds +
                "</time_duration_seconds>" + "<time_duration_fractional_seconds>" + form.microseconds +
                "</time_duration_fractional_seconds>" + "</ptime_time_duration></last_>");
}

INSTANTIATE_TEST_SUITE_P(SpecialTimes, PosixTimeToXml,
                         testing::Values(TimeForm{ptime(boost::date_time::neg_infin), "-infinity", "1", "-2562047788",
                                                  "0", "-54", "-775808"},
                                         TimeForm{ptime(boost::date_time::pos_infin), "+infinity", "1", "2562047788",
                                                  "0", "54", "775807"},
                                         TimeForm{ptime(boost::date_time::not_a_date_time), "not-a-date-time", "1",
                                                  "2562047788", "0", "54", "775806"},
                                         TimeForm{ptime(), "not-a-date-time", "1", "2562047788", "0", "54", "775806"}));

INSTANTIATE_TEST_SUITE_P(
    OrdinaryTimes, PosixTimeToXml,
    testing::Values(TimeForm{timeOf("2024-01-31 13:05:09.123456"), "20240131", "0", "13", "5", "9", "123456"},
                    TimeForm{timeOf("1970-01-01 00:00:00"), "19700101", "0", "0", "0", "0", "0"},
                    TimeForm{timeOf("1969-12-31 23:59:59.999999"), "19691231", "0", "23", "59", "59", "999999"},
                    TimeForm{timeOf("2024-02-29 01:02:03.000004"), "20240229", "0", "1", "2", "3", "4"},
                    TimeForm{timeOf("2040-10-10 10:00:00.100000"), "20401010", "0", "10", "0", "0", "100000"},
                    TimeForm{timeOf("1400-01-01 00:59:00"), "14000101", "0", "0", "59", "0", "0"},
                    TimeForm{timeOf("9999-12-31 23:59:59.999999"), "99991231", "0", "23", "59", "59", "999999"}));

/// The form of a buffer.
std::string bufferXml(const std::string& contents, const std::string& length) {
  return "<b class_id=\"0\" tracking_level=\"0\" version=\"0\"><contents>" + contents + "</contents><length_>" +
         length + "</length_></b>";
}

std::string xmlOf(const U255Buff<unsigned char>& buffer, bool asHex) {
  return written([&](XmlWriter& writer) { u255BuffToXml(buffer, writer, "b", asHex); });
}

std::string xmlOf(const U255Buff<unsigned short>& buffer) {
  return written([&](XmlWriter& writer) { u255U16BuffToXml(buffer, writer, "b"); });
}

U255Buff<unsigned char> byteBuffer(const std::string& bytes) {
  return {reinterpret_cast<const unsigned char*>(bytes.data()), static_cast<unsigned int>(bytes.size())};
}

std::string repeated(const std::string& text, unsigned int count) {
  std::string all;
  for (unsigned int i = 0; i < count; ++i) all += text;
  return all;
}

TEST(U255BuffToXml, WritesDigitsOfTheBytesInUse) {
  EXPECT_EQ(xmlOf(byteBuffer(std::string("\0\x01\xAB\xFF", 4)), true), bufferXml("0001abff", "4"));
  EXPECT_EQ(xmlOf(U255Buff<unsigned char>(0x77), true), bufferXml("", "0"));
  EXPECT_EQ(xmlOf(byteBuffer(std::string(255, '\xA5')), true), bufferXml(repeated("a5", 255), "255"));
}

TEST(U255BuffToXml, WritesTheRawBytesAsText) {
  EXPECT_EQ(xmlOf(byteBuffer("plain"), false), bufferXml("plain", "5"));
  EXPECT_EQ(xmlOf(byteBuffer("a<b>&"), false), bufferXml("a&lt;b&gt;&amp;", "5"));
  EXPECT_EQ(xmlOf(U255Buff<unsigned char>(0x77), false), bufferXml("", "0"));
  EXPECT_EQ(xmlOf(byteBuffer(std::string(255, 'x')), false), bufferXml(std::string(255, 'x'), "255"));
}

TEST(U255BuffToXml, ReplacesRawBytesThatXmlCannotCarry) {
  EXPECT_EQ(xmlOf(byteBuffer(std::string("a\0b\xFF", 4)), false), bufferXml("a\xEF\xBF\xBD"
                                                                            "b\xEF\xBF\xBD",
                                                                            "4"));
}

TEST(U255BuffToXml, WritesTheStorageAndTheLengthAsItStands) {
  for (const unsigned int length : {256U, 510U, UINT_MAX}) {
    U255Buff<unsigned char> buffer('x');
    buffer.length_ = length;
    EXPECT_EQ(xmlOf(buffer, true), bufferXml(repeated("78", 255), std::to_string(length)));
    EXPECT_EQ(xmlOf(buffer, false), bufferXml(std::string(255, 'x'), std::to_string(length)));
  }
}

TEST(U255U16BuffToXml, WritesFourDigitsOfEachElementInUse) {
  const unsigned short elements[] = {0x0001, 0xABCD};
  EXPECT_EQ(xmlOf(U255Buff<unsigned short>(elements, 2)), bufferXml("0001abcd", "2"));
  EXPECT_EQ(xmlOf(U255Buff<unsigned short>(0x77)), bufferXml("", "0"));
  const std::vector<unsigned short> full(255, 0xFF0A);
  EXPECT_EQ(xmlOf(U255Buff<unsigned short>(full.data(), 255)), bufferXml(repeated("ff0a", 255), "255"));
}

TEST(U255U16BuffToXml, WritesTheStorageAndTheLengthAsItStands) {
  for (const unsigned int length : {256U, 510U, UINT_MAX}) {
    U255Buff<unsigned short> buffer(0x12);
    buffer.length_ = length;
    EXPECT_EQ(xmlOf(buffer), bufferXml(repeated("1212", 255), std::to_string(length)));
  }
}

TEST(XmlScope, IsAnElementWithoutAttributes) {
  EXPECT_EQ(written([](XmlWriter& writer) {
              const detail::XmlScope outer(writer, "outer");
              { const detail::XmlScope first(writer, "first"); }
              const detail::XmlScope second(writer, "second");
              writer.writeElement("n", "1");
            }),
            "<outer><first/><second><n>1</n></second></outer>");
}

TEST(XmlScope, WritesWholeElementsWhileAnExceptionPasses) {
  /// Writes at the end of its life, whatever ends it.
  struct WritesAtItsEnd {
    ~WritesAtItsEnd() { collectionToXml(std::list<Item>(1, Item("t")), writer, "last_"); }
    XmlWriter& writer;
  };
  EXPECT_EQ(written([](XmlWriter& writer) {
              writer.startElement("x");
              try {
                const WritesAtItsEnd last{writer};
                throw std::domain_error("passes");
              } catch (const std::domain_error&) {
                writer.writeElement("caught", "1");
              }
              writer.endElement();
            }),
            "<x>" + object("last_") +
                "<count>1</count><item_version>183</item_version><item><text_>t</text_></item></last_>"
                "<caught>1</caught></x>");
}

/// Takes nothing and says so by an exception.
class ThrowingBuffer : public std::streambuf {
 protected:
  int_type overflow(int_type /*c*/) override { throw std::range_error("full"); }
  std::streamsize xsputn(const char* /*text*/, std::streamsize /*count*/) override { throw std::range_error("full"); }
};

TEST(XmlWriterExceptions, PassThroughEveryFunction) {
  using Write = void (*)(XmlWriter&);
  // What each of them writes reaches the stream at the end of its outermost element.
  const Write writes[] = {
      [](XmlWriter& writer) { collectionToXml(std::list<Item>(1, Item("t")), writer, "x"); },
      [](XmlWriter& writer) { timeTToXml(1, writer, "x"); },
      [](XmlWriter& writer) { posixTimeToXml(ptime(), writer, "x"); },
      [](XmlWriter& writer) { triboolToXml(true, writer, "x"); },
      [](XmlWriter& writer) { stringVecToXml({"a"}, writer, "x"); },
      [](XmlWriter& writer) { byteListToXml({1}, writer, "x"); },
      [](XmlWriter& writer) { u255BuffToXml(U255Buff<unsigned char>(), writer, "x", true); },
      [](XmlWriter& writer) { u255U16BuffToXml(U255Buff<unsigned short>(), writer, "x"); },
      [](XmlWriter& writer) { writer.writeElement("x", 1); },
  };
  for (const Write write : writes) {
    ThrowingBuffer buffer;
    std::ostream out(&buffer);
    out.exceptions(std::ios::badbit);
    XmlWriter failing(out);
    EXPECT_THROW(write(failing), std::range_error) << "function " << &write - writes;

    std::ostringstream text;
    XmlWriter done(text);
    done.writeElement("whole", "1");
    EXPECT_THROW(write(done), std::logic_error) << "function " << &write - writes;
    EXPECT_EQ(text.str(), "<whole>1</whole>") << "function " << &write - writes;
  }
}

TEST(XmlWriterExceptions, PassThroughAddBoostAttributes) {
  std::ostringstream out;
  XmlWriter writer(out);
  writer.startElement("x");
  addBoostAttributes(writer, 0, 0, 182);
  EXPECT_THROW(addBoostAttributes(writer, 0, 0, 182), std::logic_error);
}

TEST(ReadValue, StepsOntoTheTextAndTakesIt) {
  XmlReader reader("<n> a&amp;b </n>");
  ASSERT_TRUE(reader.read());
  ASSERT_EQ(reader.nodeType(), ELEMENT);
  std::string value = "before";
  readValue(reader, value);
  EXPECT_EQ(value, " a&b ");
  EXPECT_EQ(reader.nodeType(), TEXT);
}

TEST(ReadValue, TakesTheTextOfWhateverNodeIsNext) {
  const std::pair<const char*, const char*> texts[] = {
      {"<n/>", ""},
      {"<n></n>", ""},
      {"<n><child>1</child></n>", ""},
      {"<n><![CDATA[<raw>]]></n>", "<raw>"},
  };
  for (const auto& [document, text] : texts) {
    XmlReader reader(document);
    ASSERT_TRUE(reader.read()) << document;
    std::string value = "before";
    readValue(reader, value);
    EXPECT_EQ(value, text) << document;
  }
}

TEST(ReadValue, StepsBeyondAnEmptyTagOntoTheNextNode) {
  XmlReader reader("<x><empty/>7</x>");
  ASSERT_TRUE(reader.read());
  ASSERT_TRUE(reader.read());
  ASSERT_EQ(reader.name(), "empty");
  std::string value;
  readValue(reader, value);
  EXPECT_EQ(value, "7");
}

TEST(ReadValue, TakesAnEmptyTextFromAFailedReader) {
  XmlReader reader("<n");
  std::string value = "before";
  readValue(reader, value);
  EXPECT_EQ(value, "");
  EXPECT_EQ(reader.state(), READING_FAILED);
}

/// What reading a number from an element with this text gives, on top of 99.
std::string numberFrom(const std::string& text) {
  XmlReader reader("<n>" + text + "</n>");
  reader.read();
  int number = 99;
  const bool read = detail::readNumber(reader, number);
  return std::to_string(number) + (read ? "" : " kept");
}

TEST(ReadNumber, TakesADecimalIntWithAnOptionalSign) {
  const std::pair<const char*, const char*> numbers[] = {
      {"0", "0"},
      {"7", "7"},
      {"+7", "7"},
      {"-7", "-7"},
      {"007", "7"},
      {"70000", "70000"},
      {"2147483647", "2147483647"},
      {"-2147483648", "-2147483648"},
      {"&#55;", "7"},
  };
  for (const auto& [text, number] : numbers) EXPECT_EQ(numberFrom(text), number) << text;
}

TEST(ReadNumber, SwallowsATextThatIsNoNumber) {
  for (const char* const text : {"", " ", " 7", "7 ", "\n7\n", "seven", "0x10", "7.0", "1e3", "1,000", "--7", "+-7",
                                 "-", "+", "2147483648", "-2147483649", "18446744073709551616", "<child>7</child>"}) {
    EXPECT_EQ(numberFrom(text), "99 kept") << '"' << text << '"';
  }
}

TEST(ReadNumber, KeepsTheNumberWhenReadingFails) {
  XmlReader reader("");
  int number = 99;
  EXPECT_FALSE(detail::readNumber(reader, number));
  EXPECT_EQ(number, 99);
}

}  // namespace
}  // namespace qx
