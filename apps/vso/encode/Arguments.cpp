#include "apps/vso/encode/Arguments.h"

#include <stdexcept>
#include <utility>

namespace qx::app {

Arguments::Arguments(const std::vector<Argument>& arguments, const Values& values) {
  for (const Argument& argument : arguments) {
    const auto given = values.find(argument.name);
    Entry entry{argument, given != values.end() && !given->second.empty(), {}};
    if (entry.isGiven) {
      entry.values = given->second;
    } else if (argument.fallback != nullptr) {
      entry.values = {argument.fallback};
    } else if (argument.isRequired) {
      throw BadArgument("--" + std::string(argument.name) + " is required");
    }
    try {
      for (const std::string& value : entry.values) checkArgument(argument, value);
    } catch (const BadArgument& error) {
      throw BadArgument("--" + std::string(argument.name) + ": " + error.what());
    }
    entries_.emplace(argument.name, std::move(entry));
  }
  for (const auto& [name, unused] : values) {
    if (entries_.count(name) == 0) throw BadArgument("--" + name + " is not known");
  }
}

bool Arguments::has(const std::string& name) const { return !find(name).values.empty(); }
bool Arguments::isGiven(const std::string& name) const { return find(name).isGiven; }

unsigned char Arguments::status(const std::string& name) const {
  const Entry& entry = find(name, ArgumentKind::STATUS);
  return entry.values.empty() ? 0 : parseStatus(entry.values.front());
}

Euid Arguments::address(const std::string& name) const {
  const Entry& entry = find(name, ArgumentKind::ADDRESS);
  return entry.values.empty() ? Euid() : parseAddress(entry.values.front());
}

std::string Arguments::text(const std::string& name) const {
  const Entry& entry = find(name, ArgumentKind::TEXT);
  return entry.values.empty() ? std::string() : entry.values.front();
}

std::vector<unsigned char> Arguments::octets(const std::string& name) const {
  const Entry& entry = find(name, ArgumentKind::OCTETS);
  if (entry.values.empty()) return {};
  return parseOctets(entry.values.front(), entry.argument.most);
}

std::vector<unsigned short> Arguments::u16List(const std::string& name) const {
  const Entry& entry = find(name, ArgumentKind::NUMBERS);
  std::vector<unsigned short> numbers;
  if (entry.values.empty()) return numbers;
  for (const long long number : parseNumbers(entry.values.front(), entry.argument.least, entry.argument.most)) {
    numbers.push_back(static_cast<unsigned short>(number));
  }
  return numbers;
}

std::vector<std::string> Arguments::texts(const std::string& name) const { return find(name).values; }

void Arguments::goOutIf(bool doGoOut, const std::string& when, const std::vector<const char*>& names) const {
  for (const char* const name : names) {
    if (isGiven(name) != doGoOut) {
      throw BadArgument("--" + std::string(name) + (doGoOut ? " is required with " : " goes out only with ") + when);
    }
  }
}

const Arguments::Entry& Arguments::find(const std::string& name) const {
  const auto entry = entries_.find(name);
  if (entry == entries_.end()) throw std::logic_error("the command has no argument --" + name);
  return entry->second;
}

const Arguments::Entry& Arguments::find(const std::string& name, ArgumentKind kind) const {
  const Entry& entry = find(name);
  if (entry.argument.kind != kind) throw std::logic_error("--" + name + " is of another kind");
  return entry;
}

long long Arguments::number(const std::string& name) const {
  const Entry& entry = find(name, ArgumentKind::NUMBER);
  return entry.values.empty() ? 0 : parseNumber(entry.values.front(), entry.argument.least, entry.argument.most);
}

}  // namespace qx::app
