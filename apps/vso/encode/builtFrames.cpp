#include "apps/vso/encode/builtFrames.h"

#include <utility>

namespace qx::app {

namespace {

constexpr const char* SEQUENCE = "sequence";
constexpr const char* DISABLE_DEFAULT_RESPONSE = "disable-default-response";
constexpr const char* DESTINATION = "destination";

constexpr Argument SEQUENCE_NUMBER =
    u8(SEQUENCE, "Sequence number, in place of the one that the library gives").optional();

}  // namespace

std::vector<Argument> zclArguments(std::vector<Argument> own) {
  own.push_back(SEQUENCE_NUMBER);
  own.push_back(flag(DISABLE_DEFAULT_RESPONSE, "Ask the receiver for no default response"));
  return own;
}

std::vector<Argument> zdoArguments(std::vector<Argument> own) {
  own.push_back(address(DESTINATION, "Long address of the node that is asked; no part of the frame").optional());
  own.push_back(SEQUENCE_NUMBER);
  return own;
}

BuiltFrame zclFrame(ZclMessage& frame, const Arguments& in) {
  // The ids are signed in the library.
  return zclFrame(frame, static_cast<unsigned short>(frame.getProfileId()),
                  static_cast<unsigned short>(frame.getClusterId()), in);
}

BuiltFrame zclFrame(ZclMessage& frame, unsigned short profile, unsigned short cluster, const Arguments& in) {
  if (in.has(SEQUENCE)) frame.setTsn(in.u8(SEQUENCE));
  if (in.has(DISABLE_DEFAULT_RESPONSE)) frame.disableDefaultResponse();
  return {profile, cluster, frame};
}

BuiltFrame zdoFrame(const ZdoRequest& frame, const Arguments& in) {
  BuiltFrame built{0, frame.commandId(), frame};
  if (in.has(SEQUENCE)) built.bytes.contents[0] = in.u8(SEQUENCE);
  return built;
}

Euid destination(const Arguments& in) { return in.address(DESTINATION); }

}  // namespace qx::app
