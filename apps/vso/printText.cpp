#include "apps/vso/printText.h"

#include <unistd.h>

#include <iostream>
#include <system_error>

#include "apps/vso/ExitStatus.h"
#include "apps/vso/Output.h"

namespace qx::app {

int printText(const std::string& text) {
  Output output(STDOUT_FILENO);
  output.write(text);
  output.flush();
  if (output.error() == 0) return ExitStatus::DONE;
  std::cerr << "vso: standard output: " << std::generic_category().message(output.error()) << "\n";
  return ExitStatus::TROUBLE;
}

}  // namespace qx::app
