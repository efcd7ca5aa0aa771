// Answers of three values and the fields of plain records as text, for tests that compare whole records.
#pragma once

#include <boost/logic/tribool.hpp>
#include <iomanip>
#include <ios>
#include <sstream>
#include <string>

namespace qx::test {

inline std::string show(boost::logic::tribool answer) {
  if (boost::logic::indeterminate(answer)) return "indeterminate";
  return answer ? "true" : "false";
}

/// All digits of a number: "0102".
template <typename T>
std::string digits(T number) {
  std::ostringstream out;
  out << std::hex << std::setfill('0') << std::setw(2 * static_cast<int>(sizeof number)) << +number;
  return out.str();
}

/// The numbers of a record, each with all its digits: "00 0102".
template <typename... T>
std::string fields(T... numbers) {
  std::string text;
  ((text += text.empty() ? digits(numbers) : ' ' + digits(numbers)), ...);
  return text;
}

/// The numbers of a list: "[0102 0304]".
template <typename List>
std::string list(const List& numbers) {
  std::string text;
  for (const auto number : numbers) text += text.empty() ? digits(number) : ' ' + digits(number);
  return '[' + text + ']';
}

}  // namespace qx::test
