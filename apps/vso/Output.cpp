#include "apps/vso/Output.h"

#include <unistd.h>

#include <cerrno>
#include <cstddef>

namespace qx::app {

void Output::write(const std::string& text) {
  constexpr std::size_t ENOUGH = 65536;
  kept_ += text;
  if (kept_.size() >= ENOUGH) flush();
}

void Output::flush() {
  std::size_t written = 0;
  while (error_ == 0 && written < kept_.size()) {
    const ssize_t count = ::write(descriptor_, kept_.data() + written, kept_.size() - written);
    if (count >= 0) {
      written += static_cast<std::size_t>(count);
    } else if (errno != EINTR) {
      error_ = errno;
    }
  }
  kept_.clear();
}

}  // namespace qx::app
