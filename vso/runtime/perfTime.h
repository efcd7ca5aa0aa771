// Samples of the time spent between two points of the program.
#pragma once

#include <string>

namespace qx {

/// Starts a sample of the point `name`. Once more than `frequency` samples have been taken they are reported and begun
/// anew; a point keeps the frequency that it was first started with. A frequency of 65535 is never exceeded.
///
/// Points are held for the life of the process and without a lock: they are for one thread, or for several with names
/// of their own that have all been started once before.
void startPerfTime(const std::string& name, unsigned short frequency);

/// Ends the sample of the point `name`; one that was never started does nothing. A report is a line at info level,
/// "PERF: poll AVG: 225 MIN: 100 MAX: 300", in microseconds. The average gives each new sample half the weight, and a
/// sample of 0 does not count as the least. A sample is counted in 32 bits and wraps after some 71 minutes; from the
/// half of that on it shows as a negative number.
void endPerfTime(const std::string& name);

}  // namespace qx
