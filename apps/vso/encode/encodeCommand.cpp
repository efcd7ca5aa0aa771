#include "apps/vso/encode/encodeCommand.h"

#include <log4cplus/loglevel.h>

#include <CLI/CLI.hpp>
#include <memory>
#include <sstream>
#include <stdexcept>

#include "apps/vso/encode/attributeRecords.h"
#include "apps/vso/printText.h"
#include "qxlogger/Logger.h"
#include "qxshared/hexStr.h"
#include "vso/identifiers/hexify.h"

namespace qx::app {

namespace {

constexpr const char* HELP = R"(Values:
  Numbers are in C notation (128, 0x80, octal 0200), addresses 16 hexadecimal
  digits, octets two digits a byte. A STATUS is a number or a name: not-found.

  An attribute is ID:TYPE:VALUE, ID:STATUS or ID, and may be given several times:
  0x0000:uint16:5, 0x0004:character-string:Lamp, 0x0001:unsupported-attribute.
  TYPE is a type's code, or one of
)";

constexpr const char* EXAMPLES = R"(Examples:
  vso encode level-control move-to-level --level 128 --transition-time 10
  vso encode general read-attributes --cluster 6 --attribute 0 --attribute 0x4001
  vso encode zdo lqi-request --start-index 9 --line | vso decode

Exit status:
  0  the frame was printed
  1  the output could not be written
  2  wrong usage, or no frame can be made of these values)";

/// The names of the types in lines of the help.
std::string typeLines() {
  constexpr std::size_t WIDTH = 80;
  constexpr const char* INDENT = "   ";
  std::string lines;
  std::string line = INDENT;
  std::istringstream names(typeNames());
  for (std::string name; names >> name;) {
    if (line.size() + 1 + name.size() > WIDTH) {
      lines += line + "\n";
      line = INDENT;
    }
    line += " " + name;
  }
  return lines + line + "\n\n";
}

std::string listOfCommands() {
  std::string list;
  for (const CommandGroup& group : commandGroups()) {
    for (const CommandRow& command : group.commands) list += usageOf(group, command) + "\n";
  }
  return list;
}

std::string hexOf(const BuiltFrame& frame) {
  std::string digits;
  hexify(frame.bytes.contents, frame.bytes.storedLength(), digits, false);
  return digits;
}

/// What the parser leaves behind for one row.
struct Given {
  Arguments::Values values;
  bool line = false;
};

void addArgument(CLI::App& command, const Argument& argument, Given& given) {
  const std::string name = std::string("--") + argument.name;
  std::vector<std::string>& values = given.values[argument.name];
  CLI::Option* option = nullptr;
  if (argument.kind == ArgumentKind::FLAG) {
    option = command.add_flag_callback(name, [&values] { values = {"true"}; });
  } else {
    // One value each time, be it in brackets or not.
    option = command.add_option(name, values)->expected(1)->allow_extra_args(false);
    option->multi_option_policy(argument.isRepeated ? CLI::MultiOptionPolicy::TakeAll : CLI::MultiOptionPolicy::Throw);
    option->option_text(argument.form() + (argument.isRequired ? " REQUIRED" : ""));
  }
  std::string description = argument.description;
  if (argument.fallback != nullptr && *argument.fallback != '\0') {
    description += " (" + std::string(argument.fallback) + ")";
  }
  option->description(description)->required(argument.isRequired);
}

BuiltFrame build(const CommandRow& row, const Arguments::Values& values) {
  // What the library would warn of is refused, and standard error is for the one line that says why.
  Logger::setLevel(log4cplus::OFF_LOG_LEVEL);
  try {
    return row.build(Arguments(row.arguments, values));
  } catch (const std::runtime_error& error) {
    throw CLI::ValidationError(error.what());
  }
}

void addRow(CLI::App& group, const CommandRow& row, std::function<int()>& chosen) {
  const auto given = std::make_shared<Given>();
  CLI::App* const command = group.add_subcommand(row.name, row.description);
  command->allow_extras(false);  // which it takes over from the group
  for (const Argument& argument : row.arguments) addArgument(*command, argument, *given);
  command->add_flag("--line", given->line, "Print profile and cluster too, as vso decode reads them");
  command->callback([&row, given, &chosen] {
    const BuiltFrame frame = build(row, given->values);
    const std::string text = (given->line ? lineOf(frame) : hexOf(frame)) + "\n";
    chosen = [text] { return printText(text); };
  });
}

/// Refuses a command line that goes on with none of the subcommands, and names what it goes on with.
void refuseWithoutSubcommand(const CLI::App& command, const std::string& what) {
  const std::vector<std::string> unknown = command.remaining();
  if (!unknown.empty()) throw CLI::ValidationError("there is no " + what + " " + inQuotes(unknown.front()));
  if (command.get_subcommands().empty()) throw CLI::ValidationError("a " + what + " is missing");
}

void takeSubcommands(CLI::App& command) {
  command.require_subcommand(0, 1);
  // Looked at by refuseWithoutSubcommand.
  command.allow_extras();
}

void addGroup(CLI::App& encode, const CommandGroup& group, std::function<int()>& chosen) {
  CLI::App* const subcommand = encode.add_subcommand(group.name, group.description);
  takeSubcommands(*subcommand);
  for (const CommandRow& row : group.commands) addRow(*subcommand, row, chosen);
  const std::string what = "command of the group " + std::string(group.name);
  subcommand->callback([subcommand, what] { refuseWithoutSubcommand(*subcommand, what); });
}

}  // namespace

std::string lineOf(const BuiltFrame& frame) {
  constexpr unsigned int ID_SIZE = 2;
  return hexStr(frame.profile, ID_SIZE, true) + " " + hexStr(frame.cluster, ID_SIZE, true) + " " + hexOf(frame);
}

void addEncodeCommand(CLI::App& program, std::function<int()>& chosen) {
  CLI::App* const encode = program.add_subcommand("encode", "Build a frame from a command and its values.");
  takeSubcommands(*encode);
  const CLI::Option* const list = encode->add_flag("--list", "Name all commands with their arguments, one a line");
  for (const CommandGroup& group : commandGroups()) addGroup(*encode, group, chosen);
  encode->callback([encode, list, &chosen] {
    if (list->count() == 0 || !encode->get_subcommands().empty() || !encode->remaining().empty()) {
      refuseWithoutSubcommand(*encode, "group of commands");
    } else {
      chosen = [] { return printText(listOfCommands()); };
    }
  });
  encode->footer(HELP + typeLines() + EXAMPLES);
}

}  // namespace qx::app
