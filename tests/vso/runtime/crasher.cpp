// A program that ends by a signal, and writes from the signal's handler what it was and where.
//
// Its argument is "fault" for a real fault of memory, "deep" for one below many calls, or the number of a signal that
// it sends itself.
#include <sys/mman.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <sstream>
#include <string>

#include "vso/runtime/Backtrace.h"

namespace {

constexpr int REPORTED = 42;
constexpr unsigned int DEPTH = 80;

qx::Backtrace crash;

/// Keeps the call before it from becoming a jump, which would leave no frame.
void stayInTheFrame() { asm volatile("" : : : "memory"); }

}  // namespace

// A dump allocates, which the thread sanitizer does not like within a handler. What is interrupted here never
// allocates.
extern "C" const char* __tsan_default_options() { return "report_signal_unsafe=0"; }

// By these names the frames are found. They are in C's manner, so that the names are not mangled.
extern "C" {

void reportSignal(int signal) {
  crash.setSig(signal);
  const unsigned int frames = crash.grab();
  std::ostringstream out;
  out << frames << '\n';
  crash.dumpSignal(out);
  out << '\n';
  crash.dumptrace(out);
  const std::string text = out.str();
  const bool whole = ::write(STDOUT_FILENO, text.data(), text.size()) == static_cast<ssize_t>(text.size());
  ::_exit(whole ? REPORTED : EXIT_FAILURE);
}

[[gnu::noinline]] void writeToForbiddenPage(volatile char* page) {
  *page = 1;
  stayInTheFrame();
}

[[gnu::noinline]] void faultBelow(unsigned int depth, volatile char* page) {
  if (depth == 0) {
    writeToForbiddenPage(page);
  } else {
    faultBelow(depth - 1, page);
  }
  stayInTheFrame();
}

}  // extern "C"

int main(int argc, char** argv) {
  if (argc != 2) return EXIT_FAILURE;
  const std::string cause = argv[1];
  const bool fault = cause == "fault" || cause == "deep";
  const int number = fault ? SIGSEGV : std::stoi(cause);

  struct sigaction action {};
  action.sa_handler = reportSignal;
  if (::sigaction(number, &action, nullptr) != 0) return EXIT_FAILURE;

  if (fault) {
    void* const page = ::mmap(nullptr, 1, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (page == MAP_FAILED) return EXIT_FAILURE;
    faultBelow(cause == "deep" ? DEPTH : 0, static_cast<volatile char*>(page));
  } else {
    std::raise(number);
  }
  return EXIT_FAILURE;
}
