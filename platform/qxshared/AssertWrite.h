// What a failed assertion does.

#pragma once

namespace qx {

class StackTrace;

/// Logs a failed assertion to the root logger at fatal level, with the source, the line in it and the stack trace, and
/// returns: the program goes on. Never throws; a failure to log is swallowed.
void AssertWrite(const char* source, int line, const StackTrace& trace) noexcept;

}  // namespace qx
