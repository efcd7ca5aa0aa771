// A file descriptor for devices and small records.
#pragma once

#include <string>

#include "vso/identifiers/U255Buff.h"

namespace qx {

/// A file that is opened by name and read and written in pieces of up to 255 bytes. It never creates or truncates one.
/// Holds no lock: for one thread, or for several that know which of them opens and closes.
class Xfile {
 public:
  /// Bits of the option word; others are ignored.
  static constexpr unsigned int READ = 0x0001;
  static constexpr unsigned int WRITE = 0x0002;
  static constexpr unsigned int NO_CONTROLLING_TERMINAL = 0x1000;

  /// Opens nothing. Throws std::runtime_error, "Can't access an Xfile without a name.", if `name` is empty.
  Xfile(const std::string& name, unsigned int options);
  /// Closes an open file. If that fails the process ends through std::terminate: `close` first where that matters.
  virtual ~Xfile();

  Xfile(const Xfile&) = delete;
  Xfile& operator=(const Xfile&) = delete;

  /// Opens the file. On failure waits for 50 milliseconds, so that who tries again and again does not spin, and throws
  /// std::runtime_error, "Unable to open Xfile: " and the name; `errno` is not kept. An open file is to be closed
  /// first: its descriptor would be lost.
  virtual void open();
  /// Takes the exclusive lock of the file (`flock`), for as long as it is open, and never waits for it: -1, with
  /// `errno` set, if the file is locked through another opening of it, by this process or another. 0 otherwise.
  virtual int lock();
  /// Has what was written brought to the device (`fsync`). 0, or -1 with `errno` set.
  virtual int fsync();
  /// Closes an open file; does nothing to a closed one. Throws std::runtime_error, "Could not clean up Xfile: " and the
  /// name, and keeps the descriptor, if that fails: an object that is destroyed in that state ends the process.
  virtual void close();
  /// Waits for up to 250 milliseconds for something to read, and then reads up to 255 bytes at once into `buffer`. The
  /// number of bytes, which at the end of the file is 0, with a buffer of length 0. Without anything to read, or if
  /// waiting fails (as it does for a closed file), 0, and negative with `errno` set if reading fails: `buffer` is then
  /// left as it was. Never throws.
  virtual int read(U255Buff<unsigned char>& buffer) const;
  /// Writes the elements in use with one system call and returns their number. Throws std::runtime_error, "Could not
  /// write the full buffer to Xfile: " and the name, if fewer were written, which they always are of a `length_` above
  /// 255.
  virtual int write(const U255Buff<unsigned char>& buffer);
  /// The file descriptor; -1 while closed.
  virtual int handle() const;
  virtual const std::string& name() const;
  virtual bool isOpen() const;

  /// The flags that `open` of the system takes, for an option word: reading, writing or both, reading if neither is
  /// asked for.
  static int transmorgrifyOpts(unsigned int options);

 protected:
  /// Replaces name and options for the next `open`. Throws as the constructor does.
  void reassign(const std::string& name, unsigned int options);

 private:
  int handle_ = -1;
  std::string name_;
  unsigned int options_;
};

}  // namespace qx
