#include "apps/vso/decode/TextPrinter.h"

#include <gtest/gtest.h>

#include <string>

#include "apps/vso/decode/Decoded.h"
#include "support/LogCapture.h"

namespace qx::app {
namespace {

using test::BASIC;
using test::decoded;
using test::HOME;
using test::LEVEL_CONTROL;
using test::ON_OFF;

std::string text(unsigned short profile, unsigned short cluster, const std::string& hex,
                 TextPrinter::Colour colour = TextPrinter::Colour::NONE) {
  const test::LogCapture capture;
  return TextPrinter(colour).print(decoded(profile, cluster, hex));
}

TEST(TextPrinter, PrintsAReadResponseWithItsReadings) {
  EXPECT_EQ(text(HOME, ON_OFF, "18 05 01 00 00 00 10 01 01 40 86"),
            R"(ZCL frame of 11 bytes: 18 05 01 00 00 00 10 01 01 40 86
  profile                     0x0104
  cluster                     0x0006 On/Off
  frame control               0x18
  frame type                  general
  manufacturer code           none
  direction                   server to client
  default response disabled   yes
  sequence                    5
  command                     0x01 read attributes response
  attributes
    <AttributeRecordData id_: 0x0000, type_: 0x10, data_: 1>, status 0x00 ZCL_SUCCESS
    0x4001, status 0x86 ZCL_UNSUPPORTED_ATTRIBUTE
  readings
    on                        true
)");
}

TEST(TextPrinter, PrintsTheIdsOfARead) {
  EXPECT_EQ(text(HOME, BASIC, "00 05 00 04 00 05 00"), R"(ZCL frame of 7 bytes: 00 05 00 04 00 05 00
  profile                     0x0104
  cluster                     0x0000 Basic
  frame control               0x00
  frame type                  general
  manufacturer code           none
  direction                   client to server
  default response disabled   no
  sequence                    5
  command                     0x00 read attributes
  attributes
    0x0004
    0x0005
)");
}

TEST(TextPrinter, PrintsTheFieldsOfACommandAndTheBytesBehindThem) {
  EXPECT_EQ(text(HOME, ON_OFF, "18 05 0b 42 c3 ab cd"), R"(ZCL frame of 7 bytes: 18 05 0b 42 c3 ab cd
  profile                     0x0104
  cluster                     0x0006 On/Off
  frame control               0x18
  frame type                  general
  manufacturer code           none
  direction                   server to client
  default response disabled   yes
  sequence                    5
  command                     0x0b default response
  fields
    commandId                 66
    status                    195 ZCL_UKNOWN_STATUS
  not decoded                 ab cd
)");
}

TEST(TextPrinter, PrintsAManufacturersFrame) {
  EXPECT_EQ(text(HOME, ON_OFF, "05 40 10 05 07 01"), R"(ZCL frame of 6 bytes: 05 40 10 05 07 01
  profile                     0x0104
  cluster                     0x0006 On/Off
  frame control               0x05
  frame type                  cluster specific
  manufacturer code           0x1040
  direction                   client to server
  default response disabled   no
  sequence                    5
  command                     0x07
  not decoded                 01
)");
}

TEST(TextPrinter, SaysThatAFrameIsShorterThanItsHeader) {
  EXPECT_EQ(text(HOME, 0xFC00, "06 40"), R"(ZCL frame of 2 bytes: 06 40
  profile                     0x0104
  cluster                     0xfc00
  frame control               0x06
  frame type                  reserved
  direction                   client to server
  default response disabled   no
  too short                   the frame has 2 bytes, its header 5
)");
  EXPECT_EQ(text(HOME, LEVEL_CONTROL, ""), R"(ZCL frame of 0 bytes
  profile                     0x0104
  cluster                     0x0008 Level Control
  too short                   the frame has 0 bytes, its header 3
)");
}

TEST(TextPrinter, PrintsAZdoFrame) {
  EXPECT_EQ(text(0x0000, 0x0031, "07 00"), R"(ZDO frame of 2 bytes: 07 00
  profile                     0x0000
  cluster                     0x0031
  sequence                    7
  not decoded                 00
)");
  EXPECT_EQ(text(0x0000, 0x0031, "07"), R"(ZDO frame of 1 byte: 07
  profile                     0x0000
  cluster                     0x0031
  sequence                    7
)");
}

TEST(TextPrinter, EscapesWhatATerminalWouldObey) {
  const std::string block = text(HOME, BASIC,
                                 "18 05 0a 05 00 42 05 "  // report, attribute 5, character string
                                 "1b 5b 32 4a 9b");       // escape sequence that clears a screen, and its 8-bit form
  EXPECT_NE(block.find("data_: \\x1b[2J\\x9b>\n"), std::string::npos) << block;
  EXPECT_EQ(block.find('\x1b'), std::string::npos);
}

TEST(TextPrinter, PaintsHeadingsAndWhatIsWrongIfAsked) {
  EXPECT_EQ(text(HOME, BASIC, "18 05 04 00 04 00 88 05 00", TextPrinter::Colour::ANSI),
            "\x1b[1mZCL frame of 9 bytes: 18 05 04 00 04 00 88 05 00\x1b[0m\n"
            "  profile                     0x0104\n"
            "  cluster                     0x0000 Basic\n"
            "  frame control               0x18\n"
            "  frame type                  general\n"
            "  manufacturer code           none\n"
            "  direction                   server to client\n"
            "  default response disabled   yes\n"
            "  sequence                    5\n"
            "  command                     0x04 write attributes response\n"
            "  attributes\n"
            "    0x0004, status 0x00 ZCL_SUCCESS\n"
            "    0x0005, status \x1b[31m0x88 ZCL_READ_ONLY\x1b[0m\n");
  EXPECT_NE(text(HOME, BASIC, "18", TextPrinter::Colour::ANSI)
                .find("too short                   \x1b[31mthe frame has 1 byte, its header 3\x1b[0m\n"),
            std::string::npos);
}

TEST(TextPrinter, PrintsNothingForALineThatCannotBeRead) {
  EXPECT_EQ(TextPrinter(TextPrinter::Colour::NONE).print(UnreadableLine{"hex: missing", std::nullopt}), "");
}

}  // namespace
}  // namespace qx::app
