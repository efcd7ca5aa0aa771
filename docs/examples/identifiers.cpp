#include <vso/vso.h>

#include <iostream>

int main() {
  // On the air an address begins with its least significant byte; an Euid holds it as people write it.
  const unsigned char received[] = {0x77, 0x66, 0x55, 0x44, 0x33, 0x22, 0x11, 0x00};
  qx::Euid address(received);
  address.byteSwap();
  std::cout << address << (address == "0011223344556677" ? ", the one expected\n" : ", another one\n");

  // A frame is a buffer of at most 255 bytes, written and read front to back.
  qx::U255Buff<unsigned char> frame;
  qx::FrameWriter out(frame, 0);
  out.u8(0x2A);
  out.u16le(0x1234);
  out.bytes(received, sizeof received);
  frame.length_ = out.at();  // the writer leaves that to the frame's owner

  std::string text;
  qx::hexify(frame.contents, frame.length_, text, true);
  std::cout << text << "\n";

  qx::FrameReader in(frame);
  std::cout << static_cast<int>(in.u8()) << ", " << in.u16le() << ", " << in.left() << " bytes left\n";
  in.skip(in.left());
  std::cout << "behind the end: " << static_cast<int>(in.u8()) << ", more: " << in.more() << "\n";
}
