#include "apps/vso/colour.h"

#include <unistd.h>

#include <CLI/CLI.hpp>
#include <cstdlib>

namespace qx::app {

void addColourOption(CLI::App& command, std::string& choice) {
  command.add_option("--color", choice, "auto: on a terminal, unless NO_COLOR is set")
      ->check(CLI::IsMember({"auto", "always", "never"}))
      ->option_text("auto|always|never");
}

bool isColoured(const std::string& choice) {
  const char* const noColour = std::getenv("NO_COLOR");
  const bool isWelcome = ::isatty(STDOUT_FILENO) == 1 && (noColour == nullptr || *noColour == '\0');
  return choice == "always" || (choice == "auto" && isWelcome);
}

}  // namespace qx::app
