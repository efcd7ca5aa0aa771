// The command-line program `vso`.
#include <google/protobuf/stubs/logging.h>

#include <CLI/CLI.hpp>
#include <csignal>
#include <exception>
#include <functional>
#include <iostream>
#include <sstream>
#include <string>

#include "apps/vso/ExitStatus.h"
#include "apps/vso/decode/decodeCommand.h"
#include "apps/vso/encode/encodeCommand.h"
#include "apps/vso/node/nodeCommand.h"
#include "apps/vso/printText.h"
#include "apps/vso/replay/replayCommand.h"
#include "apps/vso/serve/serveCommand.h"

namespace {

using namespace qx::app;

/// Prints help or version, which reach us as a parse that ended early.
int answer(const CLI::App& program, const CLI::ParseError& request) {
  std::ostringstream text;
  program.exit(request, text, text);
  return printText(text.str());
}

int refuse(const CLI::App& program, const CLI::ParseError& error) {
  std::string command = "vso";
  const CLI::App* named = &program;
  while (!named->get_subcommands().empty()) {
    named = named->get_subcommands().front();
    command += " " + named->get_name();
  }
  std::cerr << "vso: " << error.what() << "\nTry '" << command << " --help'.\n";
  return ExitStatus::USAGE;
}

int run(int argc, char** argv) {
  CLI::App program("Tools for the frames of a Zigbee mesh.", "vso");
  program.set_version_flag("--version", "vso " VSO_VERSION);
  program.require_subcommand(1);
  program.footer("'vso COMMAND --help' tells more of a command.");
  std::function<int()> chosen;
  addDecodeCommand(program, chosen);
  addEncodeCommand(program, chosen);
  addReplayCommand(program, chosen);
  addServeCommand(program, chosen);
  addNodeCommand(program, chosen);
  try {
    program.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    const bool isRequest = error.get_exit_code() == static_cast<int>(CLI::ExitCodes::Success);
    return isRequest ? answer(program, error) : refuse(program, error);
  }
  return chosen();
}

}  // namespace

int main(int argc, char** argv) {
  // A pipe that nobody reads any more is then a failed write, which is reported.
  static_cast<void>(std::signal(SIGPIPE, SIG_IGN));
  // And so is a file that has become as large as it may.
  static_cast<void>(std::signal(SIGXFSZ, SIG_IGN));
  // Of a message that does not parse it is said whose it is, and where it came from.
  google::protobuf::SetLogHandler(nullptr);
  try {
    return run(argc, argv);
  } catch (const std::exception& error) {
    std::cerr << "vso: " << error.what() << "\n";
    return ExitStatus::TROUBLE;
  }
}
