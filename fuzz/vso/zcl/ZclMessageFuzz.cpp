// ZclMessage and the cluster classes on arbitrary bytes. Reachable from outside: any node of the mesh, and any node
// near enough to send on its channel with the network key, chooses every byte of the frames that the server parses with
// these classes, up to the length that the radio link delivers; the text form comes from the server's clients.
#include <log4cplus/logger.h>
#include <log4cplus/nullappender.h>

#include <cstddef>
#include <cstdint>
#include <exception>
#include <string>

#include "fuzz/support/trapUnless.h"
#include "tests/vso/frames/FrameProperties.h"
#include "vso/zcl/ZclMessage.h"

namespace {

using qx::U255Buff;
using qx::ZclMessage;
using qx::fuzz::trapUnless;

constexpr std::size_t STORAGE = 255;

/// A claim of the properties that does not hold ends the program, as any other exception does.
template <typename Check>
void trapOnThrow(Check check) {
  try {
    check();
  } catch (const std::exception& error) {
    trapUnless(false, error.what());
  }
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  log4cplus::Logger::getRoot().addAppender(log4cplus::SharedAppenderPtr(new log4cplus::NullAppender));
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  // Log lines are made and then dropped. They cost more than all else, so that every other length does without.
  log4cplus::Logger::getRoot().setLogLevel(size % 2 != 0 ? log4cplus::TRACE_LOG_LEVEL : log4cplus::OFF_LOG_LEVEL);

  // More bytes than the storage has leave the frame empty, whatever the length says.
  const U255Buff<unsigned char> bytes(data, static_cast<unsigned int>(size));
  trapUnless(bytes.length_ == size, "a buffer keeps the length it was given");
  trapOnThrow([&] { qx::test::requireFrameProperties(bytes); });

  // As text the input is no hexadecimal number, may have an odd length, and may give more bytes than fit.
  const std::string text(data, data + size);
  for (const std::string& digits : {text, text + text + text}) {
    const ZclMessage fromText(digits);
    const std::size_t length = digits.size() / 2;
    trapUnless(fromText.length_ == (length <= STORAGE ? length : 0), "text gives half its length, and none too long");
    trapOnThrow([&] { qx::test::requireReaderProperties(fromText); });
  }

  // A length beyond the storage, as a careless writer of the field can leave it.
  ZclMessage overlong(U255Buff<unsigned char>(data, static_cast<unsigned int>(size < STORAGE ? size : STORAGE)));
  overlong.length_ = static_cast<unsigned int>(STORAGE + 1 + size);
  trapOnThrow([&] { qx::test::requireReaderProperties(overlong); });
  return 0;
}
