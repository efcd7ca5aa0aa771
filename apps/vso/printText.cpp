#include "apps/vso/printText.h"

#include <unistd.h>

#include <iostream>

#include "apps/vso/ExitStatus.h"
#include "apps/vso/OpenFile.h"
#include "apps/vso/Output.h"

namespace qx::app {

int printText(const std::string& text) {
  Output output(STDOUT_FILENO);
  output.write(text);
  output.flush();
  if (output.error() == 0) return ExitStatus::DONE;
  std::cerr << "vso: " << FileError("standard output", output.error()).what() << "\n";
  return ExitStatus::TROUBLE;
}

}  // namespace qx::app
