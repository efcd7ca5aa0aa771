// A serial line.
#pragma once

#include <string>

#include "vso/runtime/Xfile.h"

namespace qx {

/// Bits a second on the line. Any other number runs as 19200, but `SerialPipe::init` throws for those that the system
/// refuses as an input speed, such as 1000.
enum Xspeed : int {
  XSPEED_110 = 0,
  XSPEED_300 = 1,
  XSPEED_1200 = 2,
  XSPEED_2400 = 3,
  XSPEED_4800 = 4,
  XSPEED_9600 = 5,
  XSPEED_19200 = 6,
  XSPEED_38400 = 7,
  XSPEED_57600 = 8,
  XSPEED_115200 = 9,
};

/// Stop bits behind a character. Any number but 2 counts as 1.
enum XstopBits : int { XSTOP_BITS_1 = 1, XSTOP_BITS_2 = 2 };

/// The parity bit of a character. Any other number counts as none, but for what is said at `SerialPipe::init`.
enum Xparity : int { XPARITY_NONE = 0, XPARITY_ODD = 1, XPARITY_EVEN = 2 };

/// An Xfile whose device is put into raw mode with a speed and a framing when it is opened.
class SerialPipe : public Xfile {
 public:
  /// Opens nothing. `name` is the path of the device; `dataBits` is 5 to 8, of which see `init`. Throws as Xfile does.
  SerialPipe(const std::string& name, Xspeed speed, unsigned char dataBits, XstopBits stopBits, Xparity parity);

  /// Opens the device and calls `init`; throws as these do. If `init` throws, the device is left open.
  void open() override;

  /// Replaces name and settings; they count from the next `open`. Throws as the constructor does, with nothing
  /// replaced.
  virtual void setParams(const std::string& name, Xspeed speed, unsigned char dataBits, XstopBits stopBits,
                         Xparity parity);

  /// Puts the open line into raw mode: no echo, no signs with a meaning, a read returns with the first byte; modem
  /// lines are ignored. Data bits of 5 to 8 all give characters of 8 bits, any other number gives 5. A parity other
  /// than none (0) leaves the input flags of the line as they were. Input that is waiting is dropped.
  ///
  /// Throws std::runtime_error: "Can't set the out speed with a closed serial port.", or one of "Failed to set
  /// attributes on serial connection: ", "Failed to set output baud rate on serial port: ", "Failed to set input baud
  /// rate on serial port: " and "Failed to flush serial port on initial connection: " with the system's reason.
  void init();

  /// The system's number for a speed (`B9600`), for stop bits (`CSTOPB` or 0) and for a parity (of `PARENB` and
  /// `PARODD`).
  static int transmorgrifySpeed(Xspeed speed);
  static int transmorgrifyBits(XstopBits bits);
  static int transmorgrifyParity(Xparity parity);

 private:
  Xspeed speed_;
  unsigned char dataBits_;
  XstopBits stopBits_;
  Xparity parity_;
};

}  // namespace qx
