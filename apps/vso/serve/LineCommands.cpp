#include "apps/vso/serve/LineCommands.h"

#include <algorithm>
#include <ctime>
#include <exception>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <utility>

#include "apps/vso/cleanText.h"
#include "apps/vso/encode/CommandRow.h"
#include "apps/vso/encode/encodeCommand.h"
#include "apps/vso/mesh/meshForms.h"
#include "apps/vso/mesh/nodeWords.h"
#include "apps/vso/textValues.h"
#include "qxshared/cleanString.h"

namespace qx::app {

namespace {

constexpr const char* LINE_END = "\r\n";

std::string ok(const std::string& text = {}) { return (text.empty() ? "ok" : "ok " + text) + LINE_END; }

std::string error(const std::string& reason) { return "error " + reason + LINE_END; }

/// `text`, whose lines end with newlines, as a counted block.
std::string block(const std::string& text) {
  std::string lines;
  std::size_t count = 0;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line); ++count) lines += line + LINE_END;
  return "block " + std::to_string(count) + LINE_END + lines;
}

std::vector<std::string> wordsOf(const std::string& line) {
  std::vector<std::string> words;
  std::istringstream in(line);
  for (std::string word; in >> word;) words.push_back(word);
  return words;
}

/// Record in the form that a word names, JSON unless there is one.
template <typename Record>
std::string inForm(const Record& record, const std::string& form) {
  if (form == "json") return ok(jsonOf(record));
  if (form == "xml") return block(xmlOf(record));
  if (form == "any") return ok(anyOf(record));
  throw BadArgument("there is no form " + inQuotes(form) + ": json, xml or any");
}

/// The command of a group by the names of both.
const CommandRow& rowOf(const std::string& groupName, const std::string& name) {
  for (const CommandGroup& group : commandGroups()) {
    if (group.name != groupName) continue;
    for (const CommandRow& row : group.commands) {
      if (row.name == name) return row;
    }
    throw BadArgument("the group " + groupName + " has no command " + inQuotes(name));
  }
  throw BadArgument("there is no group of commands " + inQuotes(groupName));
}

const Argument* argumentOf(const CommandRow& row, const std::string& name) {
  for (const Argument& argument : row.arguments) {
    if (argument.name == name) return &argument;
  }
  return nullptr;
}

/// "--level 128 --transition-time 10" from the word at `at` on.
Arguments::Values valuesOf(const CommandRow& row, const std::vector<std::string>& words, std::size_t at) {
  Arguments::Values values;
  for (; at < words.size(); ++at) {
    if (words[at].rfind("--", 0) != 0) throw BadArgument(inQuotes(words[at]) + " is no argument's name");
    const std::string name = words[at].substr(2);
    const Argument* const argument = argumentOf(row, name);
    if (argument == nullptr) throw BadArgument(inQuotes(words[at]) + " is not known");
    std::vector<std::string>& given = values[name];
    if (!given.empty() && !argument->isRepeated) throw BadArgument("--" + name + " is given twice");
    if (argument->kind == ArgumentKind::FLAG) {
      given.emplace_back("true");
    } else {
      if (++at == words.size()) throw BadArgument("--" + name + " has no value");
      given.push_back(words[at]);
    }
  }
  return values;
}

}  // namespace

struct LineCommands::Command {
  const char* name;
  const char* usage;
  const char* description;
  std::size_t leastWords;
  std::size_t mostWords;
  std::string (LineCommands::*answer)(const Words& words);

  /// What is said for it.
  std::string line() const { return std::string(name) + (*usage != '\0' ? " " : "") + usage; }
};

const std::vector<LineCommands::Command>& LineCommands::commands() {
  constexpr std::size_t ANY = 1'000'000;
  static const std::vector<Command> table{
      {"help", "", "what can be said", 0, 0, &LineCommands::help},
      {"frame", "TIME EUID SHORT PROFILE CLUSTER HEX", "a frame has come; TIME may be now", 6, ANY,
       &LineCommands::frame},
      {"nodes", "", "long address, short address, presence and name of each node", 0, 0, &LineCommands::nodes},
      {"node", "EUID [json|xml|any]", "what is known of a node", 1, 2, &LineCommands::node},
      {"health", "EUID|all [json|xml|any]", "a new health report", 1, 2, &LineCommands::health},
      {"reset", "EUID COUNTER...", "set health counters to zero", 2, ANY, &LineCommands::reset},
      {"label", "EUID NAME...", "give a node a name", 2, ANY, &LineCommands::label},
      {"build", "EUID GROUP COMMAND [--ARGUMENT VALUE]...", "profile, cluster and bytes of a command for a node", 3,
       ANY, &LineCommands::build},
      {"save", "", "write the state to the disk", 0, 0, &LineCommands::save},
  };
  return table;
}

LineCommands::LineCommands(MeshServer& mesh, std::function<void()> save) : mesh_(mesh), save_(std::move(save)) {}

std::string LineCommands::answer(const std::string& line) try {
  Words words = wordsOf(line);
  if (words.empty()) return error("an empty line");
  const std::string name = words.front();
  words.erase(words.begin());
  for (const Command& command : commands()) {
    if (command.name != name) continue;
    if (words.size() < command.leastWords || words.size() > command.mostWords) {
      return error("usage: " + command.line());
    }
    return (this->*command.answer)(words);
  }
  return error("there is no command " + inQuotes(name) + ": say help");
} catch (const std::exception& failure) {
  return error(cleanString(failure.what()));
}

std::string LineCommands::help(const Words& /*words*/) { return block(usage()); }

std::string LineCommands::frame(const Words& words) {
  std::string line;
  for (const std::string& word : words) line += word + ' ';
  const std::optional<RecordedFrame> frame = parseRecordedFrame(line);
  if (!frame) return error("an empty line");
  if (frame->isToCome()) return error("time: " + std::to_string(frame->time) + " is to come");
  return ok(nameOf(mesh_.take(*frame)));
}

std::string LineCommands::nodes(const Words& /*words*/) {
  mesh_.look(std::time(nullptr));
  std::string lines;
  for (const auto& [euid, node] : mesh_.nodes()) {
    lines += euid.toString() + ' ' + shortAddressOf(node) + ' ' + presenceOf(node) + ' ' + nameOf(node) + '\n';
  }
  return block(lines);
}

std::string LineCommands::node(const Words& words) {
  ZigbeeNode& node = nodeOf(words[0]);
  MeshServer::look(node, std::time(nullptr));
  return inForm(node, words.size() > 1 ? words[1] : "json");
}

std::string LineCommands::health(const Words& words) {
  const std::string form = words.size() > 1 ? words[1] : "json";
  if (words[0] == "all") return inForm(mesh_.health(), form);
  return inForm(mesh_.health(nodeOf(words[0]).lid()), form);
}

std::string LineCommands::reset(const Words& words) {
  ZigbeeNode& node = nodeOf(words[0]);
  const Words names(words.begin() + 1, words.end());
  const Words known{ZigbeeNode::REBOOT_CUMULATIVE_COUNT, ZigbeeNode::IRF_CUMULATIVE_COUNT,
                    ZigbeeNode::ORF_CUMULATIVE_COUNT};
  for (const std::string& name : names) {
    if (std::find(known.begin(), known.end(), name) == known.end()) {
      return error("there is no counter " + inQuotes(name) + ": " + known[0] + ", " + known[1] + " or " + known[2]);
    }
  }
  node.resetHealthCounters(names);
  return ok();
}

std::string LineCommands::label(const Words& words) {
  std::string label = words[1];
  for (std::size_t i = 2; i < words.size(); ++i) label += ' ' + words[i];
  ZigbeeNode& node = nodeOf(words[0]);
  constexpr std::size_t LONGEST = 64;
  if (label.size() > LONGEST) {
    return error(inQuotes(label) + " has " + std::to_string(label.size()) + " bytes, and there is room for " +
                 std::to_string(LONGEST));
  }
  if (cleanText(label) != label) return error(inQuotes(label) + " is no text in UTF-8, or controls what shows it");
  node.label(label);
  return ok();
}

std::string LineCommands::build(const Words& words) {
  const ZigbeeNode& node = nodeOf(words[0]);
  const CommandRow& row = rowOf(words[1], words[2]);
  Arguments::Values values = valuesOf(row, words, 3);
  constexpr const char* DESTINATION = "destination";
  if (values.count(DESTINATION) != 0) return error("--destination is the node's address, and not given");
  if (argumentOf(row, DESTINATION) != nullptr) values[DESTINATION] = {node.lid().toString()};
  return ok(lineOf(row.build(Arguments(row.arguments, values))));
}

std::string LineCommands::save(const Words& /*words*/) {
  save_();
  return ok();
}

ZigbeeNode& LineCommands::nodeOf(const std::string& word) {
  const Euid euid = parseAddress(word);
  ZigbeeNode* const found = mesh_.node(euid);
  if (found == nullptr) throw BadArgument("there is no node " + euid.toString());
  return *found;
}

std::string LineCommands::usage() {
  std::string lines;
  for (const Command& command : commands()) {
    lines += command.line() + "\n    " + command.description + "\n";
  }
  return lines;
}

}  // namespace qx::app
