// The serial forms of Euid.
#include <gtest/gtest.h>

#include <climits>
#include <memory>
#include <string>

#include "vso/identifiers/Euid.h"
#include "vso/proto/EuidPBuf.pb.h"
#include "vso/serial/Forms.h"

namespace qx {
namespace {

using test::serialized;
using test::written;

/// One address in all its forms; the number is its bytes with byte 0 weighing least.
struct EuidForms {
  const char* digits;
  unsigned long long number;
  const char* message;
  const char* xml;
};

const EuidForms FORMS[] = {
    {"0011223344556677", 8603657889541918976ULL,
     "08"                            // field 1, varint
     " 80 a2 88 99 c3 a8 95 b3 77",  // 0x7766554433221100
     "<lid_ class_id=\"0\" tracking_level=\"0\" version=\"182\"><id_>8603657889541918976</id_></lid_>"},
    {"0100000000000000", 1,
     "08"    // field 1, varint
     " 01",  // 1
     "<lid_ class_id=\"0\" tracking_level=\"0\" version=\"182\"><id_>1</id_></lid_>"},
    {"0000000000000001", 72057594037927936ULL,
     "08"                            // field 1, varint
     " 80 80 80 80 80 80 80 80 01",  // 2^56
     "<lid_ class_id=\"0\" tracking_level=\"0\" version=\"182\"><id_>72057594037927936</id_></lid_>"},
    {"ffffffffffffffff", ULLONG_MAX,
     "08"                               // field 1, varint
     " ff ff ff ff ff ff ff ff ff 01",  // 2^64 - 1
     "<lid_ class_id=\"0\" tracking_level=\"0\" version=\"182\"><id_>18446744073709551615</id_></lid_>"},
    {"0000000000000000", 0, "", "<lid_ class_id=\"0\" tracking_level=\"0\" version=\"182\"><id_>0</id_></lid_>"},
};

class EuidSerialForms : public testing::TestWithParam<EuidForms> {
 protected:
  static Euid euid() {
    Euid made;
    made = std::string(GetParam().digits);
    return made;
  }
};

TEST_P(EuidSerialForms, WritesTheIntegerViewToAMessage) {
  const std::unique_ptr<pb::EuidPBuf> message(euid().toProtobuf());
  EXPECT_EQ(message->id(), GetParam().number);
  EXPECT_EQ(message->GetArena(), nullptr);
  EXPECT_EQ(serialized(euid().toProtobuf()), GetParam().message);
}

TEST_P(EuidSerialForms, TakesTheIntegerViewFromAMessage) {
  pb::EuidPBuf message;
  message.set_id(GetParam().number);
  unsigned char others[8];
  for (unsigned int i = 0; i < 8; ++i) others[i] = static_cast<unsigned char>(~euid().cArray()[i]);
  Euid read(others);
  EXPECT_FALSE(read.fromProtobuf(message));
  EXPECT_EQ(read.toString(), GetParam().digits);
}

TEST_P(EuidSerialForms, TakesTheIntegerViewAsANumber) {
  unsigned char others[8];
  for (unsigned int i = 0; i < 8; ++i) others[i] = static_cast<unsigned char>(~euid().cArray()[i]);
  Euid read(others);
  EXPECT_FALSE(read.fromProtobuf(GetParam().number));
  EXPECT_EQ(read.toString(), GetParam().digits);
}

TEST_P(EuidSerialForms, WritesTheIntegerViewInDecimal) {
  EXPECT_EQ(written([](XmlWriter& writer) { euid().toXml(writer, "lid_"); }), GetParam().xml);
}

INSTANTIATE_TEST_SUITE_P(Addresses, EuidSerialForms, testing::ValuesIn(FORMS),
                         [](const auto& test) { return std::string(test.param.digits); });

TEST(EuidSerialForm, ReadsAnAbsentNumberAsTheZeroAddress) {
  Euid read = Euid::ALL;
  EXPECT_FALSE(read.fromProtobuf(pb::EuidPBuf()));
  EXPECT_EQ(read.toString(), "0000000000000000");
}

TEST(EuidSerialForm, TakesTheNameOfItsElementFromTheCaller) {
  EXPECT_EQ(written([](XmlWriter& writer) { Euid().toXml(writer, "partner_lid_"); }),
            "<partner_lid_ class_id=\"0\" tracking_level=\"0\" version=\"182\"><id_>0</id_></partner_lid_>");
}

}  // namespace
}  // namespace qx
