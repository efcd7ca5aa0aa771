#include "vso/connectors/OtaUpgradeOperation.h"

#include <gmock/gmock.h>
#include <google/protobuf/descriptor.h>
#include <gtest/gtest.h>
#include <log4cplus/loglevel.h>

#include <ios>
#include <iterator>
#include <limits>
#include <sstream>
#include <string>
#include <type_traits>
#include <vector>

#include "support/LogCapture.h"
#include "vso/proto/ZigbeeOtaUpgradeOperationPBuf.pb.h"

namespace qx {
namespace {

using test::LogCapture;
using test::LogLine;
using testing::ElementsAre;
using testing::IsEmpty;
using Operation = OtaUpgradeOperation;
using Status = OtaUpgradeOperationStatus;

template <typename Enum>
struct Row {
  Enum enumerator;
  int value;
  const char* name;
};

constexpr Row<Operation::Enum> OPERATIONS[] = {
    {Operation::noOp, 0, "noOp"},
    {Operation::serviceStatusRequest, 1, "serviceStatusRequest"},
    {Operation::serviceStatusResponse, 2, "serviceStatusResponse"},
    {Operation::addImageRequest, 3, "addImageRequest"},
    {Operation::addImageResponse, 4, "addImageResponse"},
    {Operation::removeImageRequest, 5, "removeImageRequest"},
    {Operation::removeImageResponse, 6, "removeImageResponse"},
    {Operation::imageInfoRequest, 7, "imageInfoRequest"},
    {Operation::imageInfoResponse, 8, "imageInfoResponse"},
    {Operation::imageInfoEvent, 9, "imageInfoEvent"},
    {Operation::clearImageCacheRequest, 10, "clearImageCacheRequest"},
    {Operation::clearImageCacheResponse, 11, "clearImageCacheResponse"},
    {Operation::seedImageCacheRequest, 12, "seedImageCacheRequest"},
    {Operation::seedImageCacheResponse, 13, "seedImageCacheResponse"},
};

constexpr Row<Status::Enum> STATUSES[] = {
    {Status::success, 0, "success"},
    {Status::failure, 1, "failure"},
    {Status::serviceAvailable, 2, "serviceAvailable"},
    {Status::serviceNotAvailable, 3, "serviceNotAvailable"},
    {Status::inProgress, 4, "inProgress"},
    {Status::imageValidationFailed, 5, "imageValidationFailed"},
    {Status::imageAccessFailed, 6, "imageAccessFailed"},
    {Status::deviceNotFound, 7, "deviceNotFound"},
    {Status::incompatibleDriverVersion, 8, "incompatibleDriverVersion"},
    {Status::imageInfoNotFound, 9, "imageInfoNotFound"},
    {Status::invalidData, 10, "invalidData"},
};

template <typename Enum>
std::string printed(Enum value) {
  std::ostringstream out;
  EXPECT_EQ(&(out << value), &out);
  return out.str();
}

/// What reading makes of a target that holds a number without a name.
template <typename Enum>
int readFrom(std::istream& in) {
  auto target = static_cast<Enum>(99);
  EXPECT_EQ(&(in >> target), &in);
  return target;
}

template <typename Enum>
int readFrom(const std::string& text) {
  std::istringstream in(text);
  return readFrom<Enum>(in);
}

template <typename Enum>
void expectPrintsAndReads(const Row<Enum>& row) {
  const LogCapture log;
  EXPECT_EQ(row.enumerator, row.value);
  EXPECT_EQ(printed(row.enumerator), row.name);
  EXPECT_EQ(readFrom<Enum>(std::string(row.name)), row.value) << row.name;
  EXPECT_EQ(readFrom<Enum>(" \t\n" + std::string(row.name) + "\r\nnoOp"), row.value) << row.name;
  EXPECT_THAT(log.texts(), IsEmpty());
}

template <typename Enum>
void expectNumbersOf(const google::protobuf::EnumDescriptor& schema, const Row<Enum>* rows, std::size_t count) {
  ASSERT_EQ(static_cast<std::size_t>(schema.value_count()), count);
  for (std::size_t i = 0; i < count; ++i) {
    EXPECT_EQ(schema.value(static_cast<int>(i))->number(), rows[i].enumerator);
    EXPECT_EQ(schema.value(static_cast<int>(i))->name(), printed(rows[i].enumerator));
  }
}

template <typename Enum>
void expectNoNameFor(const std::vector<int>& numbers) {
  const LogCapture log;
  for (const int number : numbers) EXPECT_EQ(printed(static_cast<Enum>(number)), "invalid-enum") << number;
  EXPECT_THAT(log.texts(), IsEmpty());
}

/// One line of log, at warn level.
void expectWarning(const LogCapture& log, const std::string& text) {
  const std::vector<LogLine> lines = log.lines();
  ASSERT_EQ(lines.size(), 1U) << text;
  EXPECT_EQ(lines[0].level, log4cplus::WARN_LOG_LEVEL);
  EXPECT_EQ(lines[0].text, text);
}

template <typename Enum>
void expectUnknown(const std::string& word, Enum fallback, const std::string& warning) {
  const LogCapture log;
  std::istringstream in(word + " rest");
  EXPECT_EQ(readFrom<Enum>(in), fallback) << word;
  EXPECT_TRUE(in.good()) << "a word was read: " << word;
  expectWarning(log, warning + word);
}

/// A stream without a word, and how it stands after the read.
struct Wordless {
  const char* text;
  std::ios_base::iostate before;
  std::ios_base::iostate after;
};

constexpr Wordless WORDLESS[] = {
    {"", std::ios_base::goodbit, std::ios_base::eofbit | std::ios_base::failbit},
    {" \t\r\n", std::ios_base::goodbit, std::ios_base::eofbit | std::ios_base::failbit},
    {"success noOp", std::ios_base::failbit, std::ios_base::failbit},
    {"success noOp", std::ios_base::badbit, std::ios_base::badbit | std::ios_base::failbit},
};

template <typename Enum>
void expectUnknownWithoutAWord(const Wordless& row, Enum fallback, const std::string& warning) {
  const LogCapture log;
  std::istringstream in(row.text);
  in.setstate(row.before);
  EXPECT_EQ(readFrom<Enum>(in), fallback);
  EXPECT_EQ(in.rdstate(), row.after);
  expectWarning(log, warning);
}

TEST(OtaUpgradeOperation, IsAPlain32BitEnumeration) {
  static_assert(std::is_enum_v<Operation::Enum>);
  static_assert(std::is_same_v<std::underlying_type_t<Operation::Enum>, int>);
  static_assert(std::is_convertible_v<Operation::Enum, int>);
  static_assert(sizeof(Operation::Enum) == 4);
}

TEST(OtaUpgradeOperation, PrintsAndReadsEachName) {
  ASSERT_EQ(std::size(OPERATIONS), 14U);
  for (const auto& row : OPERATIONS) expectPrintsAndReads(row);
}

TEST(OtaUpgradeOperation, HasTheNumbersOfTheSchema) {
  expectNumbersOf(*pb::OtaUpgradeOperationPEnum_descriptor(), OPERATIONS, std::size(OPERATIONS));
}

TEST(OtaUpgradeOperation, NumbersAResponseBehindItsRequest) {
  EXPECT_EQ(Operation::serviceStatusResponse, Operation::serviceStatusRequest + 1);
  EXPECT_EQ(Operation::addImageResponse, Operation::addImageRequest + 1);
  EXPECT_EQ(Operation::removeImageResponse, Operation::removeImageRequest + 1);
  EXPECT_EQ(Operation::imageInfoResponse, Operation::imageInfoRequest + 1);
  EXPECT_EQ(Operation::clearImageCacheResponse, Operation::clearImageCacheRequest + 1);
  EXPECT_EQ(Operation::seedImageCacheResponse, Operation::seedImageCacheRequest + 1);
}

TEST(OtaUpgradeOperation, PrintsInvalidEnumForOtherNumbersWithoutALine) {
  expectNoNameFor<Operation::Enum>(
      {14, 15, 256, -1, -14, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()});
}

TEST(OtaUpgradeOperation, ReadsUnknownWordsAsNoOpWithAWarning) {
  for (const char* word : {"NOOP", "noop", "invalid-enum", "noO", "noOpp", "\"noOp\"", "0", "3", "addImage",
                           "AddImageRequest", "addImageRequest,seedImageCacheResponse", "success", "failure"}) {
    expectUnknown(word, Operation::noOp, "Invalid OtaUpgradeOperation operation ");
  }
}

TEST(OtaUpgradeOperation, TakesAStreamWithoutAWordForAnUnknownOne) {
  for (const Wordless& row : WORDLESS) {
    expectUnknownWithoutAWord(row, Operation::noOp, "Invalid OtaUpgradeOperation operation ");
  }
}

TEST(OtaUpgradeOperationStatus, IsAPlain32BitEnumeration) {
  static_assert(std::is_enum_v<Status::Enum>);
  static_assert(std::is_same_v<std::underlying_type_t<Status::Enum>, int>);
  static_assert(std::is_convertible_v<Status::Enum, int>);
  static_assert(sizeof(Status::Enum) == 4);
}

TEST(OtaUpgradeOperationStatus, PrintsAndReadsEachName) {
  ASSERT_EQ(std::size(STATUSES), 11U);
  for (const auto& row : STATUSES) expectPrintsAndReads(row);
}

TEST(OtaUpgradeOperationStatus, HasTheNumbersOfTheSchema) {
  expectNumbersOf(*pb::OtaUpgradeOperationStatusPEnum_descriptor(), STATUSES, std::size(STATUSES));
}

TEST(OtaUpgradeOperationStatus, PrintsInvalidEnumForOtherNumbersWithoutALine) {
  expectNoNameFor<Status::Enum>(
      {11, 12, 13, 256, -1, -11, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()});
}

TEST(OtaUpgradeOperationStatus, ReadsUnknownWordsAsFailureWithAWarning) {
  for (const char* word : {"invalid-enum", "SUCCESS", "Success", "succes", "successs", "0", "10", "InvalidData",
                           "invalidData.", "noOp", "imageInfoEvent"}) {
    expectUnknown(word, Status::failure, "Invalid OtaUpgradeOperationStatus operation ");
  }
}

TEST(OtaUpgradeOperationStatus, TakesAStreamWithoutAWordForAnUnknownOne) {
  for (const Wordless& row : WORDLESS) {
    expectUnknownWithoutAWord(row, Status::failure, "Invalid OtaUpgradeOperationStatus operation ");
  }
}

TEST(OtaUpgradeOperationStatus, FollowsAnOperationInAStream) {
  const LogCapture log;
  std::istringstream in("imageInfoEvent invalidData deviceNotFound");
  auto operation = Operation::noOp;
  auto status = Status::success;
  in >> operation >> status;
  EXPECT_EQ(operation, Operation::imageInfoEvent);
  EXPECT_EQ(status, Status::invalidData);
  EXPECT_TRUE(in.good());
  in >> status;
  EXPECT_EQ(status, Status::deviceNotFound);
  EXPECT_EQ(in.rdstate(), std::ios_base::eofbit) << "the last word ends the stream and is read all the same";
  EXPECT_THAT(log.texts(), IsEmpty());
}

TEST(OtaUpgradeOperationStatus, ReadsOnBehindAnUnknownWord) {
  const LogCapture log;
  std::istringstream in("bogus success worse failure");
  auto operation = Operation::imageInfoEvent;
  auto status = Status::invalidData;
  auto second = Status::invalidData;
  auto third = Status::invalidData;
  in >> operation >> status >> second >> third;
  EXPECT_EQ(operation, Operation::noOp);
  EXPECT_EQ(status, Status::success);
  EXPECT_EQ(second, Status::failure);
  EXPECT_EQ(third, Status::failure);
  EXPECT_THAT(log.texts(), ElementsAre("Invalid OtaUpgradeOperation operation bogus",
                                       "Invalid OtaUpgradeOperationStatus operation worse"));
}

}  // namespace
}  // namespace qx
