#include "vso/runtime/Xfile.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/select.h>
#include <unistd.h>

#include <stdexcept>

#include "vso/identifiers/storage.h"

namespace qx {

namespace {

constexpr int CLOSED = -1;

const std::string& checked(const std::string& name) {
  if (name.empty()) throw std::runtime_error("Can't access an Xfile without a name.");
  return name;
}

/// True if `handle` has something to read, or ends, within a quarter of a second.
bool isReadable(int handle) {
  if (handle < 0 || handle >= FD_SETSIZE) return false;  // what no set of descriptors can hold
  fd_set readable;
  FD_ZERO(&readable);
  FD_SET(handle, &readable);
  timeval limit{0, 250'000};
  return ::select(handle + 1, &readable, nullptr, nullptr, &limit) > 0;
}

}  // namespace

Xfile::Xfile(const std::string& name, unsigned int options) : name_(checked(name)), options_(options) {}

Xfile::~Xfile() { Xfile::close(); }

void Xfile::open() {
  handle_ = ::open(name_.c_str(), transmorgrifyOpts(options_));
  if (handle_ >= 0) return;
  ::usleep(50'000);
  throw std::runtime_error("Unable to open Xfile: " + name_);
}

int Xfile::lock() { return ::flock(handle_, LOCK_EX | LOCK_NB); }

int Xfile::fsync() { return ::fsync(handle_); }

void Xfile::close() {
  if (!Xfile::isOpen()) return;
  if (::close(handle_) != 0) throw std::runtime_error("Could not clean up Xfile: " + name_);
  handle_ = CLOSED;
}

int Xfile::read(U255Buff<unsigned char>& buffer) const {
  if (!isReadable(handle_)) return 0;
  U255Buff<unsigned char> received;
  const ssize_t count = ::read(handle_, received.contents, sizeof received.contents);
  if (count < 0) return static_cast<int>(count);
  buffer.length_ = static_cast<unsigned int>(count);
  detail::copyBytes(buffer.contents, received.contents, buffer.length_);
  return static_cast<int>(count);
}

int Xfile::write(const U255Buff<unsigned char>& buffer) {
  const ssize_t count = ::write(handle_, buffer.contents, buffer.storedLength());
  if (count < 0 || static_cast<unsigned int>(count) < buffer.length_) {
    throw std::runtime_error("Could not write the full buffer to Xfile: " + name_);
  }
  return static_cast<int>(count);
}

int Xfile::handle() const { return handle_; }

const std::string& Xfile::name() const { return name_; }

bool Xfile::isOpen() const { return handle_ != CLOSED; }

int Xfile::transmorgrifyOpts(unsigned int options) {
  int flags = O_RDONLY;
  if ((options & WRITE) != 0) flags = (options & READ) != 0 ? O_RDWR : O_WRONLY;
  if ((options & NO_CONTROLLING_TERMINAL) != 0) flags |= O_NOCTTY;
  return flags;
}

void Xfile::reassign(const std::string& name, unsigned int options) {
  name_ = checked(name);
  options_ = options;
}

}  // namespace qx
