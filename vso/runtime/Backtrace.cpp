#include "vso/runtime/Backtrace.h"

#include <cxxabi.h>
#include <execinfo.h>

#include <boost/thread/lock_guard.hpp>
#include <csignal>
#include <cstdlib>
#include <memory>
#include <ostream>
#include <string>

namespace qx {

namespace {

using Lock = boost::lock_guard<boost::recursive_mutex>;

struct Free {
  void operator()(void* memory) const { std::free(memory); }
};

const char* signalText(int signal) {
  switch (signal) {
    case SIGQUIT:
      return "SIGQUIT";
    case SIGILL:
      return "Illegal instruction";
    case SIGABRT:
      return "Abort";
    case SIGBUS:
      return "Bus error";
    case SIGFPE:
      return "Arithmetic point exception";
    case SIGSEGV:
      return "Memory violation";
    case SIGTERM:
      return "Terminate";
    case SIGXCPU:
      return "CPU resource limit exceeded";
    case SIGXFSZ:
      return "File size resource limit exceeded";
    default:
      return "Unknown signal";
  }
}

}  // namespace

Backtrace::Backtrace() {
  // The first call of the process loads the unwinder, which allocates: not to be left to a signal handler.
  void* frame = nullptr;
  ::backtrace(&frame, 1);
}

unsigned int Backtrace::grab() {
  if (wasGrabbed()) return 1;
  frameCount_ = static_cast<std::uint32_t>(::backtrace(frames_.data(), static_cast<int>(frames_.size())));
  return frameCount_;
}

void Backtrace::dumptrace(std::ostream& out) const {
  if (!wasGrabbed()) out << "No stack trace was grabbed";
  const std::unique_ptr<char*, Free> symbols(::backtrace_symbols(frames_.data(), static_cast<int>(frameCount_)));
  if (!symbols) return;
  for (std::uint32_t i = 0; i < frameCount_; ++i) {
    const char* const line = symbols.get()[i];
    int status = 0;
    const std::unique_ptr<char, Free> demangled(abi::__cxa_demangle(line, nullptr, nullptr, &status));
    const std::string number = std::to_string(i);
    out << "Frame " << (number.size() < 2 ? "0" : "") << number << ": " << (demangled ? demangled.get() : line)
        << std::endl;  // whoever writes this may not come to write much more
  }
}

void Backtrace::setSig(int signal) {
  if (!sigWasSet()) storeSig(signal);
}

int Backtrace::signal() const {
  const Lock lock(mutex_);
  return signal_;
}

bool Backtrace::sigWasSet() const {
  const Lock lock(mutex_);
  return sigWasSet_;
}

bool Backtrace::sigIsFatal() const {
  const Lock lock(mutex_);
  return sigWasSet_ && signal_ != SIGABRT && signal_ != SIGTERM;
}

void Backtrace::dumpSignal(std::ostream& out) const {
  const Lock lock(mutex_);
  if (!sigWasSet_) out << "No signal was set";
  out << signalText(signal_);
}

void Backtrace::reset() {
  storeSig(0);
  {
    const Lock lock(mutex_);
    sigWasSet_ = false;
  }
  frameCount_ = 0;
}

void Backtrace::storeSig(int signal) {
  const Lock lock(mutex_);
  signal_ = signal;
  sigWasSet_ = true;
}

}  // namespace qx
