// The answer of a typed reader.
#pragma once

namespace qx {

/// What a typed reader found in a frame.
template <typename T>
struct ZclReading {
  static constexpr unsigned int ANSWERED = 1;
  static constexpr unsigned int NOT_ANSWERED = 2;

  /// The value found; 0 if there is none, unless the reader says otherwise.
  T value = T();
  /// ANSWERED or NOT_ANSWERED.
  unsigned int state = NOT_ANSWERED;
};

}  // namespace qx
