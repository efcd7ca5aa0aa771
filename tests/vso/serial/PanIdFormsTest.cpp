// The serial forms of PanId.
#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "qxxml/XmlReader.h"
#include "vso/identifiers/PanId.h"
#include "vso/proto/PanIdPBuf.pb.h"
#include "vso/serial/Forms.h"

namespace qx {
namespace {

using test::serialized;
using test::written;

constexpr int READING_FAILED = 2;
const std::string BEFORE = "a1a2a3a4a5a6a7a8";

PanId panId(const std::string& digits) { return PanId(digits); }

std::string textOf(const PanId& id) { return id; }

/// An id and the result that reading into it gave.
struct Read {
  explicit Read(const std::string& document) {
    XmlReader reader(document);
    failed = id.fromXml(reader);
    state = reader.state();
  }
  std::string digits() const { return id; }

  PanId id = panId(BEFORE);
  bool failed = false;
  int state = 0;
};

TEST(PanIdSerialForm, HoldsTheBytesInTheirOrderInAMessage) {
  EXPECT_EQ(serialized(panId("0011223344556677").toProtobuf()),
            "0a 08"                       // field 1, 8 bytes
            " 00 11 22 33 44 55 66 77");  // addr
  EXPECT_EQ(serialized(PanId().toProtobuf()),
            "0a 08"                       // field 1, 8 bytes
            " 00 00 00 00 00 00 00 00");  // addr
}

TEST(PanIdSerialForm, IsAMessageOnTheHeap) {
  const std::unique_ptr<pb::PanIdPBuf> message(PanId::INVALID.toProtobuf());
  EXPECT_EQ(message->GetArena(), nullptr);
  EXPECT_EQ(message->addr(), std::string(8, '\xFF'));
}

/// The bytes of a message, and what they make of the id `BEFORE`.
struct Message {
  std::string addr;
  bool failed;
  const char* digits;
};

class PanIdFromProtobuf : public testing::TestWithParam<Message> {};

TEST_P(PanIdFromProtobuf, TakesAtMostEightBytesAndFailsOnFewer) {
  pb::PanIdPBuf message;
  message.set_addr(GetParam().addr);
  PanId id = panId(BEFORE);
  EXPECT_EQ(id.fromProtobuf(message), GetParam().failed);
  EXPECT_EQ(textOf(id), GetParam().digits);
}

INSTANTIATE_TEST_SUITE_P(Lengths, PanIdFromProtobuf,
                         testing::Values(Message{"", true, "a1a2a3a4a5a6a7a8"},
                                         Message{std::string(1, '\x11'), true, "11a2a3a4a5a6a7a8"},
                                         Message{std::string(7, '\0'), true, "00000000000000a8"},
                                         Message{"\x11\x12\x13\x14\x15\x16\x17\x18", false, "1112131415161718"},
                                         Message{"\x11\x12\x13\x14\x15\x16\x17\x18\x19", false, "1112131415161718"},
                                         Message{std::string(300, '\xFE'), false, "fefefefefefefefe"}),
                         [](const auto& test) { return std::to_string(test.param.addr.size()) + "Bytes"; });

TEST(PanIdSerialForm, WritesItsDigitsWithoutSeparators) {
  EXPECT_EQ(written([](XmlWriter& writer) { panId("00112233445566FF").toXml(writer, "xpanid_"); }),
            "<xpanid_ class_id=\"0\" tracking_level=\"0\" version=\"182\"><addr>00112233445566ff</addr></xpanid_>");
}

TEST(PanIdSerialForm, ReadsWhatItWrote) {
  for (const char* const digits : {"00112233445566ff", "0000000000000000", "ffffffffffffffff"}) {
    const Read read(written([&](XmlWriter& writer) { panId(digits).toXml(writer, "xpanid_"); }));
    EXPECT_FALSE(read.failed) << digits;
    EXPECT_EQ(read.digits(), digits);
  }
}

TEST(PanIdSerialForm, FindsItsElementWhereverItStands) {
  const std::string document =
      "<?xml version=\"1.0\"?>\n"
      "<!-- addr -->\n"
      "<mesh addr=\"1111111111111111\">addr\n"
      "  <address>2222222222222222</address>\n"
      "  <Addr>3333333333333333</Addr>\n"
      "  <unknown><deeper version=\"7\">\n"
      "    <addr kind=\"x\">0123456789ABCDEF</addr>\n"
      "  </deeper></unknown>\n"
      "</mesh>\n";
  const Read read(document);
  EXPECT_FALSE(read.failed);
  EXPECT_EQ(read.digits(), "0123456789abcdef");
}

TEST(PanIdSerialForm, LooksAtNoArchiveAttributesAndNoWrapper) {
  for (const char* const document :
       {"<addr>0123456789abcdef</addr>", "<x version=\"183\" class_id=\"9\"><addr>0123456789abcdef</addr></x>"}) {
    const Read read(document);
    EXPECT_FALSE(read.failed) << document;
    EXPECT_EQ(read.digits(), "0123456789abcdef") << document;
  }
}

TEST(PanIdSerialForm, LeavesTheReaderBehindTheTextOfTheFirstElement) {
  XmlReader reader("<x><addr>0000000000000001</addr><between/><addr>0000000000000002</addr></x>");
  PanId first;
  PanId second;
  PanId third = panId(BEFORE);
  EXPECT_FALSE(first.fromXml(reader));
  EXPECT_FALSE(second.fromXml(reader));
  EXPECT_TRUE(third.fromXml(reader));
  EXPECT_EQ(textOf(first), "0000000000000001");
  EXPECT_EQ(textOf(second), "0000000000000002");
  EXPECT_EQ(textOf(third), BEFORE);
  EXPECT_NE(reader.state(), READING_FAILED);
}

TEST(PanIdSerialForm, TakesAnySixteenCharacters) {
  const Read read("<addr>zz1100000000 0f?</addr>");
  EXPECT_FALSE(read.failed);
  EXPECT_EQ(read.digits(), "00110000000000ff");
}

TEST(PanIdSerialForm, FailsWithoutChangeOnATextOfOtherThanSixteenCharacters) {
  for (const std::size_t length : {0, 1, 3, 14, 15, 17, 18, 32, 255, 256, 258, 264, 272, 512, 65552}) {
    const Read read("<x><addr>" + std::string(length, '1') + "</addr></x>");
    EXPECT_TRUE(read.failed) << length;
    EXPECT_EQ(read.digits(), BEFORE) << length;
    EXPECT_NE(read.state, READING_FAILED) << length;
  }
}

TEST(PanIdSerialForm, CountsBlanksOfTheText) {
  const Read read("<addr> 0123456789abcdef </addr>");
  EXPECT_TRUE(read.failed);
  EXPECT_EQ(read.digits(), BEFORE);
}

TEST(PanIdSerialForm, DoesNotLookForALaterElementWhenTheFirstIsWrong) {
  for (const char* const document :
       {"<x><addr>012</addr><addr>0123456789abcdef</addr></x>", "<x><addr/><addr>0123456789abcdef</addr></x>",
        "<x><addr></addr><addr>0123456789abcdef</addr></x>"}) {
    const Read read(document);
    EXPECT_TRUE(read.failed) << document;
    EXPECT_EQ(read.digits(), BEFORE) << document;
  }
}

TEST(PanIdSerialForm, FailsWithoutItsElement) {
  for (const char* const document :
       {"<x/>", "<x addr=\"0123456789abcdef\"/>", "<x>0123456789abcdef</x>", "<addr_>0123456789abcdef</addr_>"}) {
    const Read read(document);
    EXPECT_TRUE(read.failed) << document;
    EXPECT_EQ(read.digits(), BEFORE) << document;
    EXPECT_NE(read.state, READING_FAILED) << document;
  }
}

TEST(PanIdSerialForm, FailsOnWhatIsNoDocument) {
  for (const char* const document : {"", " ", "0123456789abcdef", "<addr", "</addr>", "<x><addr></x>"}) {
    const Read read(document);
    EXPECT_TRUE(read.failed) << document;
    EXPECT_EQ(read.digits(), BEFORE) << document;
  }
}

TEST(PanIdSerialForm, FailsOnADocumentCutInFrontOfTheEndOfItsDigits) {
  const std::string start = "<x><unknown>1</unknown><addr>";
  const std::string document = start + "0123456789abcdef";
  for (std::size_t length = 0; length < document.size(); ++length) {
    const Read read(document.substr(0, length));
    EXPECT_TRUE(read.failed) << document.substr(0, length);
    EXPECT_EQ(read.digits(), BEFORE) << document.substr(0, length);
  }
}

TEST(PanIdSerialForm, FailsWhenTheReaderHasFailed) {
  // A later error may show itself at once or only in further reading: the result goes by the reader's state.
  const std::string document = "<x><addr>0123456789abcdef</addr><y>";
  XmlReader reader(document);
  PanId id = panId(BEFORE);
  const bool failed = id.fromXml(reader);
  EXPECT_EQ(failed, reader.state() == READING_FAILED);
  while (reader.read()) {
  }
  EXPECT_EQ(reader.state(), READING_FAILED);
  EXPECT_TRUE(id.fromXml(reader));
}

}  // namespace
}  // namespace qx
