// The arguments of a command with their values.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "apps/vso/encode/Argument.h"
#include "apps/vso/encode/argumentValues.h"

namespace qx::app {

/// What a command was called with. Every value does for its argument, so that reading one fails only where a command
/// asks for an argument that it does not have, or in another kind (std::logic_error).
class Arguments {
 public:
  /// By the name of the argument. A flag that is set has one value, whatever it is.
  using Values = std::map<std::string, std::vector<std::string>>;

  /// Throws BadArgument, which names the argument, if a value does not do, if a required argument is missing, and for
  /// a name that is not among the arguments.
  Arguments(const std::vector<Argument>& arguments, const Values& values);

  /// True if it was given or has a fallback.
  bool has(const std::string& name) const;
  /// True if it was given.
  bool isGiven(const std::string& name) const;

  // Of an argument that is absent: zero, or nothing.
  unsigned char u8(const std::string& name) const { return static_cast<unsigned char>(number(name)); }
  signed char i8(const std::string& name) const { return static_cast<signed char>(number(name)); }
  unsigned short u16(const std::string& name) const { return static_cast<unsigned short>(number(name)); }
  unsigned int u32(const std::string& name) const { return static_cast<unsigned int>(number(name)); }
  unsigned char status(const std::string& name) const;
  Euid address(const std::string& name) const;
  std::string text(const std::string& name) const;
  std::vector<unsigned char> octets(const std::string& name) const;
  std::vector<unsigned short> u16List(const std::string& name) const;
  /// Each value of a repeated argument, as the command line has it.
  std::vector<std::string> texts(const std::string& name) const;

  /// Throws BadArgument if one of `names` is missing where they go out, or given where they do not. `when` says when
  /// they go out: "status 0".
  void goOutIf(bool doGoOut, const std::string& when, const std::vector<const char*>& names) const;

 private:
  struct Entry {
    Argument argument;
    bool isGiven;
    std::vector<std::string> values;
  };

  const Entry& find(const std::string& name) const;
  const Entry& find(const std::string& name, ArgumentKind kind) const;
  long long number(const std::string& name) const;

  std::map<std::string, Entry> entries_;
};

}  // namespace qx::app
