#include <gtest/gtest.h>

#include <string>

#include "vso/zcl/Records.h"
#include "vso/zcl/ZclMessage.h"

namespace qx {
namespace {

using test::Data;
using test::dataOf;
using test::hex;

/// Something in every byte, so that what a converter clears can be seen.
Data used() {
  Data data;
  data.fill(0x5A);
  return data;
}

/// What `hex` gives for used data that starts with `start` and has been left alone behind it.
std::string untouchedBehind(const std::string& start) {
  Data data = used();
  const U255Buff<unsigned char> bytes = test::bytesOf(start);
  std::copy_n(bytes.contents, bytes.length_, data.begin());
  return hex(data);
}

TEST(ZclMessageValues, ReadNumbersLittleEndian) {
  const Data data = dataOf("01 02 03 04 05 06 07 08 09");
  EXPECT_EQ(ZclMessage::toUint16(data), 0x0201);
  EXPECT_EQ(ZclMessage::toUint32(data), 0x04030201U);
  EXPECT_EQ(ZclMessage::toUint64(data), 0x0807060504030201ULL);
}

TEST(ZclMessageValues, ReadTheHighestBitsOfNumbers) {
  const Data data = dataOf("ff ff ff ff ff ff ff ff");
  EXPECT_EQ(ZclMessage::toUint16(data), 0xFFFF);
  EXPECT_EQ(ZclMessage::toUint32(data), 0xFFFFFFFFU);
  EXPECT_EQ(ZclMessage::toUint64(data), 0xFFFFFFFFFFFFFFFFULL);
}

TEST(ZclMessageValues, ReadAnAddressLeastSignificantByteFirst) {
  EXPECT_EQ(ZclMessage::toEuid(dataOf("77 66 55 44 33 22 11 00 99")).toString(), "0011223344556677");
}

TEST(ZclMessageValues, WriteAByteAndClearNothing) {
  Data data = used();
  ZclMessage::toData8(data, 0x01);
  EXPECT_EQ(hex(data), untouchedBehind("01"));
  ZclMessage::toData8(data, 0xFF);
  EXPECT_EQ(hex(data), untouchedBehind("ff"));
}

TEST(ZclMessageValues, WriteAShortLittleEndianAndClearTheRest) {
  Data data = used();
  ZclMessage::toData16(data, 0x0102);
  EXPECT_EQ(hex(data), "02 01");
  EXPECT_EQ(ZclMessage::toUint16(data), 0x0102);
}

TEST(ZclMessageValues, WriteALongBigEndianAndClearTheRest) {
  Data data = used();
  ZclMessage::toData32(data, 0x01020304);
  EXPECT_EQ(hex(data), "01 02 03 04");
  EXPECT_EQ(ZclMessage::toUint32(data), 0x04030201U);
  ZclMessage::toData32(data, 0xFFFEFDFC);
  EXPECT_EQ(hex(data), "ff fe fd fc");
}

TEST(ZclMessageValues, WriteAnAddressLeastSignificantByteFirstAndClearTheRest) {
  Euid euid;
  euid = std::string("0011223344556677");
  Data data = used();
  ZclMessage::toData(data, euid);
  EXPECT_EQ(hex(data), "77 66 55 44 33 22 11");
  EXPECT_EQ(euid.toString(), "0011223344556677");
  EXPECT_TRUE(ZclMessage::toEuid(data) == euid);
}

TEST(ZclMessageValues, WriteTextInWireFormAndClearTheRest) {
  Data data = used();
  ZclMessage::toData(data, std::string("abc"));
  EXPECT_EQ(hex(data), "03 61 62 63");
  data = used();
  ZclMessage::toData(data, std::string());
  EXPECT_EQ(hex(data), "");
  data = used();
  ZclMessage::toData(data, std::string("a\0b", 3));
  EXPECT_EQ(hex(data), "03 61 00 62");
}

TEST(ZclMessageValues, CutTextTo199Characters) {
  for (const std::size_t length : {198, 199, 200, 255, 256, 300}) {
    Data data = used();
    const std::string text = std::string(length - 1, 'x') + 'y';
    ZclMessage::toData(data, text);
    const std::size_t kept = length < 199 ? length : 199;
    EXPECT_EQ(data[0], kept) << length;
    EXPECT_EQ(std::string(data.begin() + 1, data.end()).c_str(), text.substr(0, kept)) << length;
  }
}

TEST(ZclMessageValues, WriteAPanIdAsItIsAndClearNothing) {
  Data data = used();
  ZclMessage::toPanid(data, PanId(std::string("0011223344556677")));
  EXPECT_EQ(hex(data), untouchedBehind("00 11 22 33 44 55 66 77"));
}

}  // namespace
}  // namespace qx
