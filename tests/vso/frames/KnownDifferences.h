// Where the library reads or builds a recorded frame in another way than the decoders state, on purpose.
#pragma once

#include <cstddef>
#include <string>

namespace qx::test {

/// What of a frame is compared.
enum class Subject {
  RECORDS,   ///< ids, statuses, types and values of the general commands
  READINGS,  ///< typed readers
  REBUILT,   ///< the frame, built from the stated facts
  TIME,      ///< the records of the Time cluster, built by its class
};

/// A fact as any other: the difference must be there, worded so, and no other.
struct KnownDifference {
  /// The frame's id in its file.
  const char* frame;
  Subject subject;
  /// As the comparison words it.
  const char* difference;
  const char* reason;
};

/// Null for a frame that is to agree with what is stated of it.
const KnownDifference* knownDifference(const std::string& frame, Subject subject);

/// How many frames are listed for a subject.
std::ptrdiff_t countKnownDifferences(Subject subject);

}  // namespace qx::test
