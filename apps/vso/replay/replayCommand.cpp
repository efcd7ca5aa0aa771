#include "apps/vso/replay/replayCommand.h"

#include <fcntl.h>
#include <log4cplus/loglevel.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdint>
#include <ctime>
#include <filesystem>
#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <system_error>
#include <vector>

#include "apps/vso/ExitStatus.h"
#include "apps/vso/LineReader.h"
#include "apps/vso/OpenFile.h"
#include "apps/vso/colour.h"
#include "apps/vso/mesh/MeshServer.h"
#include "apps/vso/mesh/MeshState.h"
#include "apps/vso/mesh/RecordedFrame.h"
#include "apps/vso/mesh/nodeTable.h"
#include "apps/vso/mesh/nodeWords.h"
#include "apps/vso/printText.h"
#include "apps/vso/replay/ProgressBar.h"
#include "apps/vso/textValues.h"
#include "qxlogger/Logger.h"

namespace qx::app {

namespace {

constexpr const char* HELP = R"(Lines:
  A line holds when a frame came (seconds since 1970, or now), the long and the
  short address of its source, and profile, cluster and bytes as vso decode
  reads them. A '#' starts a comment. A recording is read twice, so that it has
  to be a file.

    1700000000 0011223344556677 0x1a2b 0x0104 6 18 05 01 00 00 00 10 01

  Under the profile 0xFFFF stand commands of the network layer, the cluster
  being the command: 3, the network status, tells of routes that failed.

Times:
  Health looks at the last hours and days. Recordings are therefore moved in
  time so that the last frame comes now, unless --as-recorded is given. Name the
  recordings of one mesh at once: of two that are replayed one by one into a
  state, both end now.

Output:
  A table of the nodes: name, type, short address, bars of signal, whether the
  node is there, and three stories with their lights: reboots a day, failures
  an hour of routes to the server and of routes from it.

Examples:
  vso replay monday.txt tuesday.txt
  vso replay --state home today.txt && vso node --map home.svg home/mesh.state
  vso replay --state archive --as-recorded tuesday.txt

Exit status:
  0  every line was replayed
  1  a line or a file could not be read (standard error says which; the others
     are replayed all the same), or state or output could not be written
  2  wrong usage)";

struct Options {
  std::vector<std::string> files;
  std::string state;
  bool asRecorded = false;
  std::string colour = "auto";
};

/// What a first look at the files finds.
struct Extent {
  std::size_t lines = 0;
  std::time_t first = 0;
  std::time_t last = 0;
};

class Replay {
 public:
  explicit Replay(const Options& options) : options_(options) {}

  int run() {
    // One for both passes: who waits does not care which of them it is for.
    ProgressBar progress("replaying", PASSES * bytes());
    const Extent extent = measure(progress);
    const std::time_t shift = options_.asRecorded || extent.lines == 0 ? 0 : std::time(nullptr) - extent.last;
    MeshServer mesh(extent.first + shift);
    std::optional<MeshState> state;
    if (!options_.state.empty()) {
      progress.hide();  // the state may have something to complain of
      state.emplace(options_.state, mesh);
      warnOfOverlap(extent.first + shift, lastContactIn(mesh));
    }
    forEachFrame(
        progress,
        [&](RecordedFrame& frame) {
          // Before 1970 there is no local time.
          frame.time = std::max<std::time_t>(frame.time + shift, 0);
          mesh.take(frame);
        },
        [&](const std::string& complaint) {
          progress.hide();
          complain(complaint);
        });
    progress.hide();
    // Without a frame nothing is known of the time, and nothing has changed.
    const bool hasFrames = extent.lines > 0;
    if (hasFrames) mesh.look(std::max(extent.last + shift, lastContactIn(mesh)));
    const int printed = printText(nodeTable(mesh, isColoured(options_.colour)) + summaryOf(mesh));
    if (state && hasFrames) state->save();
    return printed == ExitStatus::DONE ? status_ : printed;
  }

 private:
  static constexpr unsigned int PASSES = 2;

  /// Of all files whose size can be told.
  unsigned long long bytes() const {
    unsigned long long sum = 0;
    for (const std::string& name : options_.files) sum += sizeOf(name);
    return sum;
  }

  static unsigned long long sizeOf(const std::string& file) {
    std::error_code error;
    const std::uintmax_t size = std::filesystem::file_size(file, error);
    return error ? 0 : size;
  }

  Extent measure(ProgressBar& progress) {
    Extent extent;
    forEachFrame(
        progress,
        [&](const RecordedFrame& frame) {
          extent.first = extent.lines == 0 ? frame.time : std::min(extent.first, frame.time);
          extent.last = std::max(extent.last, frame.time);
          ++extent.lines;
        },
        [](const std::string&) {});
    return extent;
  }

  template <typename Use, typename Complain>
  void forEachFrame(ProgressBar& progress, const Use& use, const Complain& complainOf) {
    for (const std::string& name : options_.files) {
      try {
        // A pipe is not waited for.
        const OpenFile file(name, O_RDONLY | O_NONBLOCK);
        if (::lseek(file.descriptor(), 0, SEEK_CUR) < 0) {
          throw FileError(name, "a pipe or a terminal cannot be read twice, as a recording is");
        }
        LineReader reader(file.descriptor(), name);
        while (reader.next()) {
          forFrameOf(reader, use, complainOf);
          progress.at(done_ + reader.offset());
        }
      } catch (const FileError& error) {
        complainOf("vso: " + std::string(error.what()));
      }
      done_ += sizeOf(name);
    }
  }

  template <typename Use, typename Complain>
  void forFrameOf(const LineReader& reader, const Use& use, const Complain& complainOf) const {
    try {
      if (reader.isTooLong()) throw BadArgument("the line is too long");
      std::optional<RecordedFrame> frame = parseRecordedFrame(reader.line());
      if (!frame) return;
      if (options_.asRecorded && frame->isToCome()) throw BadArgument("time: it is to come");
      use(*frame);
    } catch (const BadArgument& error) {
      complainOf(reader.complaint(error.what()));
    }
  }

  /// When the node that was heard last was.
  static std::time_t lastContactIn(const MeshServer& mesh) {
    std::time_t last = 0;
    for (const auto& [euid, node] : mesh.nodes()) last = std::max(last, node.lastContact());
    return last;
  }

  /// What two recordings tell of is counted where both have been moved to.
  void warnOfOverlap(std::time_t first, std::time_t last) const {
    if (options_.asRecorded || last <= first) return;
    std::cerr << "vso: " << options_.state << ": what it holds is told of times after the first frame, as both were "
              << "moved to end now; name all recordings at once, or leave them --as-recorded\n";
  }

  void complain(const std::string& complaint) {
    std::cerr << complaint << "\n";
    status_ = ExitStatus::TROUBLE;
  }

  static std::string summaryOf(const MeshServer& mesh) {
    const MeshServer::Counts& counts = mesh.counts();
    return "\n" + counted(mesh.nodes().size(), "node") + ", " + counted(mesh.zaps().size(), "access point") + "; " +
           counted(counts.total(), "frame") + ", of which " + std::to_string(counts.broken) + " broken and " +
           std::to_string(counts.strangers) + " from strangers\n";
  }

  const Options& options_;
  /// Bytes of the files that have been read, in both passes.
  unsigned long long done_ = 0;
  int status_ = ExitStatus::DONE;
};

int replay(const Options& options) {
  // The library warns of what frames lack. The summary counts it.
  Logger::setLevel(log4cplus::FATAL_LOG_LEVEL);
  return Replay(options).run();
}

}  // namespace

void addReplayCommand(CLI::App& program, std::function<int()>& chosen) {
  const auto options = std::make_shared<Options>();
  CLI::App* const command = program.add_subcommand("replay", "Run recordings of a mesh through a small server.");
  command->add_option("FILE", options->files, "Recordings, one frame a line, in the order of their days")
      ->option_text("...")
      ->required();
  command->add_option("--state", options->state, "Go on from the mesh kept in this folder, and keep it there")
      ->option_text("DIR")
      ->check(faultOfStatePath, "");
  command->add_flag("--as-recorded", options->asRecorded, "Leave the times as they are");
  addColourOption(*command, options->colour);
  command->footer(HELP);
  command->callback([options, &chosen] { chosen = [options] { return replay(*options); }; });
}

}  // namespace qx::app
