#include "tests/vso/frames/KnownDifferences.h"

#include <algorithm>
#include <iterator>

namespace qx::test {

namespace {

constexpr char NO_VALUE[] = "a type that the library does not know has no value bytes";
constexpr char STALE_RECORD[] = "the record of a failed attribute keeps type and value of the record before it";
constexpr char ONE_STATUS[] = "a write response of one status byte reads as attribute 0";
constexpr char FRAME_TYPE[] = "the typed readers look at the command identifier alone, not at the frame type";
constexpr char NO_STRING[] = "a length byte of 255 is a length like any other, not the mark of an invalid string";
constexpr char RATE[] = "the rate of move goes out as two bytes";
constexpr char UNSTATED_BYTES[] = "the decoder leaves the options behind the fields out of its facts";
constexpr char BIG_ENDIAN_TIME[] = "the time goes out as an unsigned number, most significant byte first";
constexpr char TIME_AND_STATUS[] = "as any time, and the time status is always that of a master clock";

constexpr KnownDifference KNOWN_DIFFERENCES[] = {
    {"o037", Subject::RECORDS, "record 3: no value stated, type 0x21 and data 01 read", STALE_RECORD},
    {"o065", Subject::RECORDS, "record 0: type 0xe2 has no value", NO_VALUE},
    {"o073", Subject::RECORDS, "record 0: type 0x4c has no value", NO_VALUE},
    {"o078", Subject::RECORDS, "record 0: no id stated, 0x0000 read", ONE_STATUS},
    {"o232", Subject::RECORDS, "record 1: no value stated, type 0x08 and data aa read", STALE_RECORD},
    {"o247", Subject::RECORDS, "record 0: no id stated, 0x0000 read", ONE_STATUS},
    {"o277", Subject::RECORDS, "record 0: type 0xe2 has no value", NO_VALUE},
    {"o278", Subject::RECORDS, "record 0: type 0xe2 has no value", NO_VALUE},
    {"o279", Subject::RECORDS, "record 0: type 0xe2 has no value", NO_VALUE},
    {"o280", Subject::RECORDS, "record 1: type 0xe2 has no value", NO_VALUE},
    {"o361", Subject::RECORDS, "record 0: type 0x26 has no value", NO_VALUE},
    {"o364", Subject::RECORDS, "record 2: no value stated, type 0x28 and data ef read", STALE_RECORD},
    {"o365", Subject::RECORDS, "record 2: no value stated, type 0x28 and data b1 read", STALE_RECORD},

    {"o065", Subject::READINGS, "currentLevel 234 stated, 0 read", NO_VALUE},
    {"o073", Subject::READINGS,
     "currentLevel none stated, 48 read; off none stated, 1 read; on none stated, 0 read; "
     "remainingTime none stated, 0 read",
     NO_VALUE},
    {"o078", Subject::READINGS,
     "onLevelSuccess 1 stated, none read; remainingTimeSuccess 1 stated, none read; "
     "transitionTimeSuccess 1 stated, none read",
     ONE_STATUS},
    {"o247", Subject::READINGS,
     "onLevelSuccess 1 stated, none read; remainingTimeSuccess 1 stated, none read; "
     "transitionTimeSuccess 1 stated, none read",
     ONE_STATUS},
    {"o254", Subject::READINGS, "remainingTimeSuccess none stated, 1 read", FRAME_TYPE},
    {"o277", Subject::READINGS, "currentLevel 170 stated, 0 read; remainingTime 1 stated, none read", NO_VALUE},
    {"o278", Subject::READINGS, "currentLevel 165 stated, 0 read; remainingTime 1 stated, none read", NO_VALUE},
    {"o279", Subject::READINGS, "currentLevel 156 stated, 0 read; remainingTime 13 stated, none read", NO_VALUE},
    {"o280", Subject::READINGS, "currentLevel 145 stated, 0 read", NO_VALUE},
    {"o361", Subject::READINGS, "currentLevel 200 stated, 0 read", NO_VALUE},

    {"o047", Subject::REBUILT, "same up to byte 8, recorded 8, built 255", NO_STRING},
    {"o054", Subject::REBUILT, "same up to byte 8, recorded 8, built 255", NO_STRING},
    {"o061", Subject::REBUILT, "same up to byte 8, recorded 8, built 255", NO_STRING},
    {"o063", Subject::REBUILT, "same up to byte 8, recorded 8, built 255", NO_STRING},
    {"o065", Subject::REBUILT, "same up to byte 7, recorded 11, built 7", NO_VALUE},
    {"o073", Subject::REBUILT, "same up to byte 8, recorded 29, built 8", NO_VALUE},
    {"o078", Subject::REBUILT, "same up to byte 4, recorded 4, built 6", ONE_STATUS},
    {"o247", Subject::REBUILT, "same up to byte 4, recorded 4, built 6", ONE_STATUS},
    {"o254", Subject::REBUILT, "same up to byte 6, recorded 8, built 6", UNSTATED_BYTES},
    {"o257", Subject::REBUILT, "same up to byte 5, recorded 5, built 6", RATE},
    {"o261", Subject::REBUILT, "same up to byte 5, recorded 5, built 6", RATE},
    {"o277", Subject::REBUILT, "same up to byte 7, recorded 16, built 12", NO_VALUE},
    {"o278", Subject::REBUILT, "same up to byte 7, recorded 16, built 12", NO_VALUE},
    {"o279", Subject::REBUILT, "same up to byte 7, recorded 80, built 68", NO_VALUE},
    {"o280", Subject::REBUILT, "same up to byte 10, recorded 14, built 10", NO_VALUE},
    {"o361", Subject::REBUILT, "same up to byte 6, recorded 13, built 6", NO_VALUE},

    {"o277", Subject::TIME, "000000e2aa88b948 recorded, 0000002348b988aa built", BIG_ENDIAN_TIME},
    {"o278", Subject::TIME, "000000e2a5cc115a recorded, 000000235a11cca5 built", BIG_ENDIAN_TIME},
    {"o279", Subject::TIME, "000000e29c8d3831 recorded, 0000002331388d9c built; 010000180d recorded, 0100001801 built",
     TIME_AND_STATUS},
    {"o280", Subject::TIME, "000000e2916f9332 recorded, 0000002332936f91 built", BIG_ENDIAN_TIME},
};

}  // namespace

const KnownDifference* knownDifference(const std::string& frame, Subject subject) {
  const KnownDifference* const known =
      std::find_if(std::begin(KNOWN_DIFFERENCES), std::end(KNOWN_DIFFERENCES),
                   [&](const auto& row) { return row.frame == frame && row.subject == subject; });
  return known == std::end(KNOWN_DIFFERENCES) ? nullptr : known;
}

std::ptrdiff_t countKnownDifferences(Subject subject) {
  return std::count_if(std::begin(KNOWN_DIFFERENCES), std::end(KNOWN_DIFFERENCES),
                       [&](const auto& row) { return row.subject == subject; });
}

}  // namespace qx::test
