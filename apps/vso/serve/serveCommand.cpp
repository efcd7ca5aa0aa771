#include "apps/vso/serve/serveCommand.h"

#include <log4cplus/loglevel.h>

#include <CLI/CLI.hpp>
#include <boost/asio/ip/address.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/signal_set.hpp>
#include <boost/asio/steady_timer.hpp>
#include <boost/smart_ptr/shared_ptr.hpp>
#include <chrono>
#include <csignal>
#include <cstddef>
#include <ctime>
#include <exception>
#include <functional>
#include <iostream>
#include <memory>
#include <sstream>
#include <string>
#include <utility>

#include "apps/vso/ExitStatus.h"
#include "apps/vso/mesh/MeshServer.h"
#include "apps/vso/mesh/MeshState.h"
#include "apps/vso/mesh/nodeWords.h"
#include "apps/vso/printText.h"
#include "apps/vso/serve/Clients.h"
#include "apps/vso/serve/LineCommands.h"
#include "apps/vso/textValues.h"
#include "qxlogger/Logger.h"
#include "vso/connectors/QxMetricsClient.h"
#include "vso/connectors/QxnetServer.h"

namespace qx::app {

namespace {

constexpr const char* HELP = R"(Protocol:
  Lines that end with CR LF, each answered in turn by "ok", "ok TEXT", "error
  TEXT", or "block N" and N lines more. Lines without a byte are passed over. A
  line above 64 KiB ends its connection, also if answers are on their way. Who
  reads slowly is waited for. There are at most 200 clients, or half as many as
  the process may have descriptors.

)";

constexpr const char* EXAMPLES = R"(
  A line of a recording is fed by putting "frame" in front of it.

State:
  The folder holds the mesh (mesh.state), the id of the process that uses it
  (vso.pid) and that process's lock. The mesh is saved on "save", now and then,
  and at the end, by SIGTERM, and by SIGINT or SIGHUP unless they were ignored
  when it was started (nohup).

Examples:
  vso serve --state home
  vso serve --state home --listen '[::1]:0' --save-every 60

  exec 3<>/dev/tcp/127.0.0.1/7410    # speak to it from bash
  printf 'health all\r\n' >&3 && head -n 1 <&3

Exit status:
  0  ended by a signal, and the mesh is saved
  1  it could not listen, or the state could not be used or saved
  2  wrong usage)";

struct Options {
  std::string listen = "127.0.0.1:7410";
  std::string state;
  unsigned int saveEvery = 300;
  bool metrics = false;
};

using Place = boost::asio::ip::tcp::endpoint;

/// "127.0.0.1:7410" or "[::1]:7410". Throws BadArgument.
Place placeOf(const std::string& text) {
  const std::size_t colon = text.rfind(':');
  if (colon == std::string::npos) throw BadArgument(inQuotes(text) + " is no address and port");
  std::string address = text.substr(0, colon);
  if (address.size() > 2 && address.front() == '[' && address.back() == ']')
    address = address.substr(1, address.size() - 2);
  boost::system::error_code error;
  const boost::asio::ip::address parsed = boost::asio::ip::make_address(address, error);
  if (error) throw BadArgument(inQuotes(address) + " is no address");
  constexpr long long LAST_PORT = 65535;
  return {parsed, static_cast<unsigned short>(parseNumber(text.substr(colon + 1), 0, LAST_PORT))};
}

/// Whether who started us wants a signal to do nothing, as nohup does.
bool isIgnored(int signal) {
  struct sigaction action {};
  return ::sigaction(signal, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

class Serving {
 public:
  explicit Serving(const Options& options)
      : options_(options),
        mesh_(std::time(nullptr)),
        state_(options.state, mesh_),
        commands_(mesh_, [this] { state_.save(); }),
        clients_(mesh_.context(), commands_),
        place_(placeOf(options.listen)),
        server_(newServer()),
        end_(mesh_.context(), SIGTERM),
        nextSave_(mesh_.context()),
        nextStart_(mesh_.context()) {
    for (const int signal : {SIGINT, SIGHUP}) {
      if (!isIgnored(signal)) end_.add(signal);
    }
  }

  int run() {
    if (options_.metrics) {
      Logger::setLevel(log4cplus::WARN_LOG_LEVEL);  // the gateway may not be found
      // The mesh's own, which lives longer than anything is sent.
      QxMetricsClient::instance().initializeDataLakeConnection(
          boost::shared_ptr<boost::asio::io_context>(&mesh_.context(), [](auto* /*context*/) {}));
    }
    // Of what clients send, and of a place that is taken, the library says what is said here.
    Logger::setLevel(log4cplus::FATAL_LOG_LEVEL);
    if (const BErrorCode error = server_->start()) {
      std::cerr << "vso: cannot listen at " << options_.listen << ": " << error.message() << "\n";
      return ExitStatus::TROUBLE;
    }
    place_ = server_->endpoint();
    const bool isAlone = place_.address().is_loopback();
    if (!isAlone) std::cerr << "vso: whoever reaches " << place_ << " can change the mesh\n";
    std::ostringstream line;
    line << "listening at " << place_ << (isAlone ? " (this machine alone)" : "") << ", state in " << state_.file()
         << ", " << counted(mesh_.nodes().size(), "node") << "\n";
    if (const int trouble = printText(line.str())) return trouble;
    end_.async_wait([this](const BErrorCode& /*error*/, int /*signal*/) {
      isEnding_ = true;
      server_->stop();
      nextSave_.cancel();
      nextStart_.cancel();
    });
    saveLater();
    bool isWell = true;
    try {
      mesh_.context().run();
    } catch (const std::exception& error) {  // such as no memory for an answer
      std::cerr << "vso: " << error.what() << "\n";
      isWell = false;
    }
    QxMetricsClient::instance().stop();
    return save(&MeshState::save) && isWell ? ExitStatus::DONE : ExitStatus::TROUBLE;
  }

 private:
  boost::shared_ptr<QxnetServer> newServer() {
    return clients_.serverAt(place_, [this](const BErrorCode& error) {
      std::cerr << "vso: cannot accept: " << error.message() << "; listening anew\n";
      startLater();
    });
  }

  /// Whatever an accept lacked may be there again in a moment. The clients have to come again too.
  void startLater() {
    waitFor(nextStart_, std::chrono::seconds(1), [this] {
      server_->stop();
      server_ = newServer();
      const BErrorCode error = server_->start();
      if (error && error != said_) std::cerr << "vso: cannot listen at " << place_ << ": " << error.message() << "\n";
      said_ = error;
      if (error) startLater();
    });
  }

  void saveLater() {
    waitFor(nextSave_, std::chrono::seconds(options_.saveEvery), [this] {
      save(&MeshState::saveChanges);
      saveLater();
    });
  }

  /// Does something later, unless the server ends before: a time that has come already cannot be cancelled.
  template <typename Work>
  void waitFor(boost::asio::steady_timer& timer, std::chrono::seconds time, Work work) {
    if (isEnding_) return;
    timer.expires_after(time);
    timer.async_wait([this, work](const BErrorCode& error) {
      if (!error && !isEnding_) work();
    });
  }

  /// True if it went well.
  bool save(void (MeshState::*how)()) try {
    (state_.*how)();
    return true;
  } catch (const std::exception& error) {
    std::cerr << "vso: " << error.what() << "; the mesh is not saved\n";
    return false;
  }

  const Options& options_;
  MeshServer mesh_;
  MeshState state_;
  LineCommands commands_;
  Clients clients_;
  Place place_;
  boost::shared_ptr<QxnetServer> server_;
  boost::asio::signal_set end_;
  boost::asio::steady_timer nextSave_;
  boost::asio::steady_timer nextStart_;
  /// Why it could not listen again, as it was told.
  BErrorCode said_;
  bool isEnding_ = false;
};

int serve(const Options& options) {
  Logger::setLevel(log4cplus::ERROR_LOG_LEVEL);
  return Serving(options).run();
}

/// Empty if the text names a place to listen at, otherwise why it does not.
std::string faultOfPlace(const std::string& text) {
  try {
    static_cast<void>(placeOf(text));
    return {};
  } catch (const BadArgument& error) {
    return error.what();
  }
}

std::string indented(const std::string& lines) {
  std::string text = "  ";
  for (const char c : lines) {
    text += c;
    if (c == '\n') text += "  ";
  }
  return text.substr(0, text.size() - 2);
}

}  // namespace

void addServeCommand(CLI::App& program, std::function<int()>& chosen) {
  const auto options = std::make_shared<Options>();
  CLI::App* const command = program.add_subcommand("serve", "Run a small mesh server that is spoken to line by line.");
  command->add_option("--state", options->state, "Folder in which the mesh is kept")
      ->option_text("DIR REQUIRED")
      ->required()
      ->check(faultOfStatePath, "");
  command->add_option("--listen", options->listen, "127.0.0.1:7410 unless given; port 0 for any that is free")
      ->option_text("ADDRESS:PORT")
      ->check(faultOfPlace, "");
  constexpr unsigned int A_DAY = 86'400;
  command->add_option("--save-every", options->saveEvery, "Seconds between two savings, 300 unless given")
      ->option_text("SECONDS")
      ->check(CLI::Range(1U, A_DAY));
  command->add_flag("--metrics", options->metrics, "Send the metrics of reports on, as vso decode does");
  command->footer(HELP + indented(LineCommands::usage()) + EXAMPLES);
  command->callback([options, &chosen] { chosen = [options] { return serve(*options); }; });
}

}  // namespace qx::app
