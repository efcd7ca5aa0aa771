#include "apps/vso/decode/decodeCommand.h"

#include <log4cplus/loglevel.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <exception>
#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "apps/vso/ExitStatus.h"
#include "apps/vso/LineReader.h"
#include "apps/vso/OpenFile.h"
#include "apps/vso/Output.h"
#include "apps/vso/colour.h"
#include "apps/vso/decode/FrameLine.h"
#include "apps/vso/decode/JsonPrinter.h"
#include "apps/vso/decode/MetricsSending.h"
#include "apps/vso/decode/TextPrinter.h"
#include "apps/vso/decode/decodeFrame.h"
#include "apps/vso/textValues.h"
#include "qxlogger/Logger.h"
#include "qxshared/cleanString.h"

namespace qx::app {

namespace {

constexpr const char* STANDARD_INPUT = "-";

constexpr const char* HELP = R"(Lines:
  A line holds one frame: profile, cluster, and the bytes from the frame control
  (ZDO: from the sequence number) on. A '#' starts a comment.

    0x0104 0x0006 18 05 01 00 00 00 10 01     # read attributes response
    260 6 180501000000 1001                   # the same

  Or it is a JSON object with these three keys and any others:

    {"profile": 260, "cluster": "0x0006", "hex": "1805010000001001"}

  Numbers are in C notation (0x0104, 260, octal 0404), digits of bytes of either
  case with blanks anywhere. Profile 0 is ZDO, all others are ZCL.

  The object may also have the address of its node, "euid", as 16 digits.

Output:
  A block of text for each frame; with --json an object a line, in which header
  fields that a frame does not have are null, and a line that cannot be read
  gives an object with "hex" and "error". Each ends with the verdict: whether
  the frame is whole, and if not, at which byte it stops making sense. Of a
  command that is not known it says so; "whole" is then null.

Metrics:
  With --metrics, the pairs of name and value in reports of the cluster 0x0B05
  (profile 0x0104) also go to the metrics gateway, as StatsD datagrams to port
  8125 of )" VSO_METRICS_GATEWAY_HOST R"(. Each is called

    vessori2.v2.vessori2.HOST.NAME.NODE.zcl_diag.KEY

  HOST being this machine and KEY the name in the report. A report is sent up to
  the first two records that are no pair. Nobody need listen at the gateway.

Examples:
  vso decode frames.txt
  echo '0x0104 8 01 05 00 80 0a 00' | vso decode
  vso decode --json frames.txt | jq 'select(.readings.on)'

Exit status:
  0  every line was decoded, be the frames whole or cut short
  1  a line or a file could not be read (standard error says which; the others
     are decoded all the same), or the output could not be written
  2  wrong usage)";

struct Options {
  std::vector<std::string> files;
  bool json = false;
  std::string colour = "auto";
  bool metrics = false;
  std::string metricsName = "vso";
  std::string node = Euid().toString();
};

/// Empty if the text is an address, otherwise why it is none.
std::string isAddress(const std::string& text) {
  try {
    static_cast<void>(parseAddress(text));
    return {};
  } catch (const BadArgument& error) {
    return error.what();
  }
}

std::unique_ptr<FramePrinter> printerFor(const Options& options) {
  if (options.json) return std::make_unique<JsonPrinter>();
  return std::make_unique<TextPrinter>(isColoured(options.colour) ? TextPrinter::Colour::ANSI
                                                                  : TextPrinter::Colour::NONE);
}

class Decoding {
 public:
  explicit Decoding(const Options& options) : printer_(printerFor(options)), output_(STDOUT_FILENO) {
    if (!options.metrics) return;
    Euid node;
    node = options.node;
    metrics_.emplace(options.metricsName, node);
  }

  /// Returns the exit status.
  int run(const std::vector<std::string>& files) {
    for (const std::string& file : files) {
      if (output_.error() != 0) break;
      decodeFile(file);
    }
    output_.flush();
    if (output_.error() != 0) complain(FileError("standard output", output_.error()));
    return status_;
  }

 private:
  void decodeFile(const std::string& name) {
    try {
      if (name == STANDARD_INPUT) {
        decodeLines(STDIN_FILENO, "<stdin>");
      } else {
        const OpenFile file(name);
        decodeLines(file.descriptor(), name);
      }
    } catch (const FileError& error) {
      complain(error);
    }
  }

  void decodeLines(int descriptor, const std::string& name) {
    // Whoever feeds a pipe and waits sees what has been said so far.
    LineReader reader(descriptor, name, [this] { output_.flush(); });
    while (output_.error() == 0 && reader.next()) decodeLine(reader);
  }

  void decodeLine(const LineReader& reader) {
    try {
      const FrameLine line = reader.isTooLong() ? tooLong() : parseFrameLine(reader.line());
      if (const auto* const frame = std::get_if<ReceivedFrame>(&line)) {
        output_.write(printer_->print(decodeFrame(*frame)));
        if (metrics_) metrics_->send(*frame);
      } else if (const auto* const unreadable = std::get_if<UnreadableLine>(&line)) {
        refuse(*unreadable, reader);
      }
    } catch (const std::exception& error) {
      refuse({"cannot be decoded: " + cleanString(error.what()), std::nullopt}, reader);
    }
  }

  static FrameLine tooLong() {
    return UnreadableLine{"longer than " + std::to_string(LineReader::LONGEST_LINE) + " bytes", std::nullopt};
  }

  void refuse(const UnreadableLine& line, const LineReader& reader) {
    output_.write(printer_->print(line));
    complain(reader.complaint(line.reason));
  }

  void complain(const FileError& error) { complain("vso: " + std::string(error.what())); }

  void complain(const std::string& complaint) {
    // On a terminal both streams come out in the order of the lines.
    output_.flush();
    std::cerr << complaint << "\n";
    status_ = ExitStatus::TROUBLE;
  }

  std::unique_ptr<FramePrinter> printer_;
  Output output_;
  std::optional<MetricsSending> metrics_;
  int status_ = ExitStatus::DONE;
};

int decode(const Options& options) {
  // The library warns of each short frame and each value that does not print. The output says both.
  Logger::setLevel(log4cplus::FATAL_LOG_LEVEL);
  return Decoding(options).run(options.files.empty() ? std::vector<std::string>{STANDARD_INPUT} : options.files);
}

}  // namespace

void addDecodeCommand(CLI::App& program, std::function<int()>& chosen) {
  const auto options = std::make_shared<Options>();
  CLI::App* const command = program.add_subcommand("decode", "Show what frames say: header, attributes, fields.");
  command->add_option("FILE", options->files, "Files with one frame a line; - or none for standard input")
      ->option_text("...");
  command->add_flag("--json", options->json, "Print one JSON object a line");
  addColourOption(*command, options->colour);
  CLI::Option* const metrics = command->add_flag("--metrics", options->metrics, "Send the metrics of reports on");
  command->add_option("--metrics-name", options->metricsName, "NAME in those, vso unless given")
      ->option_text("NAME")
      ->needs(metrics);
  command->add_option("--node", options->node, "NODE for frames without \"euid\", zeros unless given")
      ->option_text("ADDRESS")
      ->check(isAddress, "")
      ->needs(metrics);
  command->footer(HELP);
  command->callback([options, &chosen] { chosen = [options] { return decode(*options); }; });
}

}  // namespace qx::app
