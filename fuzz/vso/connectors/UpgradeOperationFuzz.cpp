// The record of the image service out of a message and into one again, and the words of its enumerations. Reachable
// from outside: the records come from another process, with the numbers and texts of whoever runs there.
#include <cstddef>
#include <cstdint>
#include <memory>
#include <sstream>
#include <string>

#include <log4cplus/initializer.h>
#include <log4cplus/logger.h>
#include <log4cplus/nullappender.h>

#include "fuzz/support/trapUnless.h"
#include "vso/connectors/OtaUpgradeOperation.h"
#include "vso/connectors/ZigbeeOtaUpgradeOperation.h"
#include "vso/proto/ZigbeeOtaUpgradeOperationPBuf.pb.h"

namespace {

using qx::OtaUpgradeOperation;
using qx::OtaUpgradeOperationStatus;
using qx::ZigbeeOtaUpgradeOperation;
using qx::fuzz::trapUnless;
using Message = qx::pb::ZigbeeOtaUpgradeOperationPBuf;

template <typename Enum>
std::string printed(Enum value) {
  std::ostringstream out;
  out << value;
  return out.str();
}

bool isNamed(int value, int last) { return value >= 0 && value <= last; }

void checkFields(const ZigbeeOtaUpgradeOperation& record, const Message& message) {
  trapUnless(record.operation() == static_cast<int>(message.operation()), "operation");
  trapUnless(record.status() == static_cast<int>(message.status()), "status");
  const std::unique_ptr<qx::pb::EuidPBuf> euid(record.euid().toProtobuf());
  trapUnless(euid->id() == message.euid().id(), "address");
  trapUnless(record.mfgId() == (message.mfgid() & 0xFFFF), "manufacturer");
  trapUnless(record.imageTypeId() == (message.imagetypeid() & 0xFFFF), "image type");
  trapUnless(record.url() == message.url(), "url");
  trapUnless(record.driverTypeId() == message.drivertypeid(), "driver type");
  trapUnless(record.driverVersion() == message.driverversion(), "driver version");
  trapUnless(record.imageVersion() == message.imageversion(), "image version");
  trapUnless(record.oldImageVersion() == message.oldimageversion(), "old image version");
}

/// A number has a name if it is one of the enumeration, and is read from it.
template <typename Enum>
void checkName(Enum value, Enum last, Enum fallback) {
  const std::string name = printed(value);
  trapUnless((name != "invalid-enum") == isNamed(value, last), "the numbers in the list have a name");
  std::istringstream in(name);
  auto read = static_cast<Enum>(-1);
  in >> read;
  trapUnless(read == (isNamed(value, last) ? value : fallback), "a number is read from its name");
}

/// The record that reads back what `record` writes, through the bytes.
ZigbeeOtaUpgradeOperation restoredFrom(const ZigbeeOtaUpgradeOperation& record) {
  const std::unique_ptr<Message> written(record.toProtobuf());
  trapUnless(written->has_euid(), "a record writes its address, whatever it is");
  Message parsed;
  trapUnless(parsed.ParseFromString(written->SerializeAsString()), "a record writes what parses");
  ZigbeeOtaUpgradeOperation restored;
  trapUnless(!restored.fromProtobuf(parsed), "a record reads what it wrote");
  checkFields(restored, *written);
  return restored;
}

void checkMessage(const std::string& bytes) {
  Message message;
  if (!message.ParseFromString(bytes)) return;
  ZigbeeOtaUpgradeOperation record;
  trapUnless(!record.fromProtobuf(message), "reading never fails");
  checkFields(record, message);
  checkName(record.operation(), OtaUpgradeOperation::seedImageCacheResponse, OtaUpgradeOperation::noOp);
  checkName(record.status(), OtaUpgradeOperationStatus::invalidData, OtaUpgradeOperationStatus::failure);
  trapUnless(restoredFrom(record) == record, "a record survives its message");
  const std::unique_ptr<ZigbeeOtaUpgradeOperation> copy(record.clone());
  trapUnless(*copy == record && !(*copy != record), "a copy is equal");
  trapUnless(record.toLua() == "<" + record.euid().toString() + ">", "the text is the address");
}

/// Any bytes as the texts of a record: they are mended once, and stay as they are from then on.
void checkTexts(const std::string& bytes) {
  ZigbeeOtaUpgradeOperation record;
  record.euid(bytes);
  record.url(bytes);
  record.driverTypeId(bytes);
  const ZigbeeOtaUpgradeOperation mended = restoredFrom(record);
  trapUnless(mended.euid() == record.euid(), "an address needs no mending");
  trapUnless(mended.url() == mended.driverTypeId(), "both texts are mended alike");
  trapUnless(restoredFrom(mended) == mended, "what was mended stays");
}

template <typename Enum>
void checkWords(const std::string& bytes, Enum last, Enum fallback) {
  std::istringstream in(bytes);
  std::istringstream words(bytes);
  while (true) {
    auto value = static_cast<Enum>(-1);
    in >> value;
    std::string word;
    words >> word;
    trapUnless(in.rdstate() == words.rdstate(), "the stream is left as the read of a word leaves it");
    trapUnless(isNamed(value, last), "a read gives an enumerator");
    trapUnless(printed(value) == word || value == fallback, "what is no name gives the fallback");
    if (!in) return;
  }
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/) {
  // Every unknown word is warned of, and nobody reads it here.
  static const log4cplus::Initializer logging;
  log4cplus::Logger::getRoot().addAppender(log4cplus::SharedAppenderPtr(new log4cplus::NullAppender()));
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string bytes(data, data + size);
  checkMessage(bytes);
  checkTexts(bytes);
  checkWords(bytes, OtaUpgradeOperation::seedImageCacheResponse, OtaUpgradeOperation::noOp);
  checkWords(bytes, OtaUpgradeOperationStatus::invalidData, OtaUpgradeOperationStatus::failure);
  return 0;
}
