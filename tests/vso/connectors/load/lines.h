// The lines that a crowd of connections sends: both ends make them by themselves.
#pragma once

#include <cstdint>
#include <random>
#include <string>

namespace qx::test {

/// Line `index` of connection `connection`, "<connection> <index> " and up to 120 bytes of any value, but for a
/// delimiter, which ends the line. Some texts end with half a delimiter.
inline std::string crowdLine(unsigned int connection, unsigned int index) {
  std::minstd_rand random(connection * 7919U + index * 104'729U + 1);
  std::string line = std::to_string(connection) + ' ' + std::to_string(index) + ' ';
  for (auto left = random() % 121; left > 0; --left) {
    auto byte = static_cast<char>(random() >> 8);
    if (random() % 8 == 0) byte = random() % 2 == 0 ? '\r' : '\n';
    if (byte == '\n' && line.back() == '\r') byte = 'n';
    line += byte;
  }
  return line + "\r\n";
}

}  // namespace qx::test
