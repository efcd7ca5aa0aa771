#include "qxshared/StackTrace.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <ostream>
#include <string>

#include <cxxabi.h>
#include <dlfcn.h>
#include <execinfo.h>

#include "qxshared/hexStr.h"

namespace qx {

namespace {

struct Free {
  void operator()(char* text) const noexcept { std::free(text); }
};

std::string hex(std::uintptr_t number) {
  const std::string digits = hexStr(number, sizeof number, false);
  return "0x" + digits.substr(std::min(digits.find_first_not_of('0'), digits.size() - 1));
}

std::uintptr_t distance(const void* from, const void* to) {
  return reinterpret_cast<std::uintptr_t>(to) - reinterpret_cast<std::uintptr_t>(from);
}

std::string demangled(const char* symbol) {
  int status = 0;
  const std::unique_ptr<char, Free> name(abi::__cxa_demangle(symbol, nullptr, nullptr, &status));
  return status == 0 ? name.get() : symbol;
}

const char* withoutFolders(const char* path) {
  const char* const slash = std::strrchr(path, '/');
  return slash != nullptr ? slash + 1 : path;
}

void printFrame(std::ostream& out, const void* address) {
  out << hex(reinterpret_cast<std::uintptr_t>(address));
  // A frame holds the address to return to. Behind a call that never returns, that is another function's first byte;
  // the byte before it is always the caller's.
  const void* const call = static_cast<const char*>(address) - 1;
  Dl_info info;
  if (dladdr(call, &info) == 0) return;
  if (info.dli_sname != nullptr)
    out << ' ' << demangled(info.dli_sname) << " + " << hex(distance(info.dli_saddr, address));
  if (info.dli_fname != nullptr)
    out << " (" << withoutFolders(info.dli_fname) << '+' << hex(distance(info.dli_fbase, call)) << ')';
}

}  // namespace

[[gnu::noinline]] StackTrace::StackTrace() noexcept {
  // Room for this constructor's frame, and for one that a sanitizer puts before it.
  std::array<void*, MAX_FRAMES + 2> stack;
  const int depth = backtrace(stack.data(), static_cast<int>(stack.size()));
  void** const end = stack.data() + depth;
  void** const caller = std::find(stack.data(), end, __builtin_return_address(0));
  void** const begin = caller == end ? stack.data() : caller;
  size_ = std::min(static_cast<std::size_t>(end - begin), MAX_FRAMES);
  std::copy_n(begin, size_, frames_.begin());
}

std::ostream& operator<<(std::ostream& out, const StackTrace& trace) {
  for (std::size_t i = 0; i < trace.size_; ++i) {
    out << '#' << i << ' ';
    printFrame(out, trace.frames_[i]);
    out << '\n';
  }
  return out;
}

}  // namespace qx
