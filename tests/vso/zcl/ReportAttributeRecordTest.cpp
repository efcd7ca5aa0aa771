#include "vso/zcl/ReportAttributeRecord.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "support/LogCapture.h"
#include "vso/zcl/Records.h"

namespace qx {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

using Records = std::vector<ReportAttributeRecord>;

ReportAttributeRecord record(unsigned short id, unsigned char type, const std::string& data) {
  return test::record<ReportAttributeRecord>(id, type, data);
}

/// The words that `getAttribute` refuses with.
std::string refusal(const Records& records, int id) {
  try {
    return "no exception: " + ReportAttributeRecord::getAttribute(records, id);
  } catch (const std::runtime_error& error) {
    return error.what();
  }
}

TEST(ReportAttributeRecord, GivesTheTextOfTheFirstRecordWithTheId) {
  const Records records = {record(1, 0x42, "61"), record(2, 0x42, "62 63 00 64"), record(2, 0x42, "65")};
  EXPECT_EQ(ReportAttributeRecord::getAttribute(records, 1), "a");
  EXPECT_EQ(ReportAttributeRecord::getAttribute(records, 2), "bc");
}

TEST(ReportAttributeRecord, GivesTextUpToTheEndOfTheData) {
  test::Data data;
  data.fill('x');
  EXPECT_EQ(ReportAttributeRecord::getAttribute({ReportAttributeRecord(1, 0x42, data)}, 1), std::string(200, 'x'));
}

TEST(ReportAttributeRecord, GivesAnEmptyText) {
  EXPECT_EQ(ReportAttributeRecord::getAttribute({record(1, 0x42, "")}, 1), "");
}

TEST(ReportAttributeRecord, RefusesEveryOtherType) {
  for (unsigned int type = 0; type < 256; ++type) {
    if (type == 0x42) continue;
    EXPECT_EQ(refusal({record(1, static_cast<unsigned char>(type), "61")}, 1),
              "cannot retrieve non-string value as string")
        << type;
  }
}

TEST(ReportAttributeRecord, LooksNoFurtherThanTheFirstRecordWithTheId) {
  EXPECT_EQ(refusal({record(1, 0x20, "61"), record(1, 0x42, "62")}, 1), "cannot retrieve non-string value as string");
}

TEST(ReportAttributeRecord, RefusesAnIdThatIsMissing) {
  EXPECT_EQ(refusal({}, 0), "no matching report attribute");
  const Records records = {record(1, 0x42, "61"), record(0xFFFF, 0x42, "62")};
  for (const int id : {0, 2, -1, 0x10001, 0x1FFFF})
    EXPECT_EQ(refusal(records, id), "no matching report attribute") << id;
}

TEST(ReportAttributeRecord, LogsEachRecordBetweenTheirNumberAndABrace) {
  const test::LogCapture log;
  ReportAttributeRecord::debug({record(0x0102, 0x21, "04 03"), record(3, 0x42, "61 62")});
  EXPECT_THAT(
      log.texts(),
      ElementsAre("{ReportAttributeRecords length_: 2",
                  "ReportAttributeRecord::debug: <AttributeRecordData id_: 0x0102, type_: 0x21, data_: 772>",
                  "ReportAttributeRecord::debug: <AttributeRecordData id_: 0x0003, type_: 0x42, data_: ab>", "}"));
  EXPECT_EQ(log.count(10000), 4U);
  for (const test::LogLine& line : log.lines()) EXPECT_EQ(line.logger, "root");
}

TEST(ReportAttributeRecord, LogsTheNumberInDecimal) {
  const test::LogCapture log;
  ReportAttributeRecord::debug(Records(12));
  EXPECT_EQ(log.texts().front(), "{ReportAttributeRecords length_: 12");
}

TEST(ReportAttributeRecord, LogsTwoLinesForNoRecords) {
  const test::LogCapture log;
  ReportAttributeRecord::debug({});
  EXPECT_THAT(log.texts(), ElementsAre("{ReportAttributeRecords length_: 0", "}"));
}

TEST(ReportAttributeRecord, LogsARecordThatDoesNotPrint) {
  const test::LogCapture log;
  ReportAttributeRecord::debug({record(1, 0xFF, "01 02 03 04")});
  EXPECT_THAT(log.texts(), testing::Contains("ReportAttributeRecord::debug: <AttributeRecordData id_: 0x0001, type_: "
                                             "0xff, data_: 01020304 (error)>"));
  EXPECT_EQ(log.count(10000), 3U);
  EXPECT_EQ(log.count(40000), 1U);
}

TEST(ReportAttributeRecord, MakesNoLineBelowTheLevel) {
  const test::LogCapture log(20000);
  // Printing this record would log an error.
  ReportAttributeRecord::debug({record(1, 0xFF, "01 02 03 04")});
  EXPECT_THAT(log.texts(), IsEmpty());
}

}  // namespace
}  // namespace qx
