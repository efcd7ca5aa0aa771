#include "vso/runtime/dumpMemoryUsage.h"

#include <unistd.h>

#include <array>
#include <cstddef>
#include <cstdio>
#include <fstream>
#include <ostream>
#include <string>

namespace qx {

void dumpMemoryUsage(std::ostream& out) {
  constexpr std::size_t PATH_SIZE = 30;
  std::array<char, PATH_SIZE> path;
  std::snprintf(path.data(), path.size(), "/proc/%u/statm", static_cast<unsigned int>(::getpid()));

  // In the order of the file; a seventh number behind them means nothing any more.
  constexpr std::array NAMES{
      "TOTAL PROGRAM SIZE: ", " RESIDENT SET SIZE: ", " SHARED PAGES: ", " TEXT: ", " LIBRARY: ", " DATA: "};
  std::ifstream file(path.data());
  std::string text;
  for (const char* name : NAMES) {
    unsigned long pages = 0;
    if (!(file >> pages)) return;
    text += name + std::to_string(pages);
  }
  out << text;
}

}  // namespace qx
