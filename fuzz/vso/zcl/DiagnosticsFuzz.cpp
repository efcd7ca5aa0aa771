// The diagnostics classes on arbitrary bytes, against a second reading of the same bytes. Reachable from outside: any
// node of the mesh chooses every byte of the answers and of the reports, and with them the names and values of metrics.
#include <log4cplus/logger.h>
#include <log4cplus/nullappender.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "fuzz/support/trapUnless.h"
#include "tests/vso/zcl/ListOperations.h"
#include "tests/vso/zcl/MetricsGateway.h"
#include "vso/proto/QxdiagnosticsNodeCountersPBuf.pb.h"
#include "vso/zcl/QxZclDiagnostics.h"
#include "vso/zcl/QxZclHaDiagnostics.h"

namespace {

using qx::QxdiagnosticsNodeCounters;
using qx::QxZclDiagnostics;
using qx::QxZclHaDiagnostics;
using qx::U255Buff;
using qx::fuzz::trapUnless;

constexpr std::size_t STORAGE = 255;
constexpr std::size_t VALUE_STORAGE = 200;

// The second reading. It shares nothing with the library but the words of the tables.

enum class Form { DECIMAL, TRUTH, HEX, TEXT, OCTETS };

struct Type {
  unsigned char code;
  unsigned int size;
  Form form;
};

constexpr Type TYPES[] = {
    {0x08, 1, Form::DECIMAL}, {0x09, 2, Form::DECIMAL}, {0x0A, 3, Form::HEX},     {0x0B, 4, Form::DECIMAL},
    {0x10, 1, Form::TRUTH},   {0x18, 1, Form::HEX},     {0x19, 2, Form::HEX},     {0x1A, 3, Form::HEX},
    {0x1B, 4, Form::HEX},     {0x20, 1, Form::DECIMAL}, {0x21, 2, Form::DECIMAL}, {0x22, 3, Form::HEX},
    {0x23, 4, Form::DECIMAL}, {0x28, 1, Form::HEX},     {0x29, 2, Form::HEX},     {0x2A, 3, Form::HEX},
    {0x2B, 4, Form::HEX},     {0x30, 1, Form::DECIMAL}, {0x31, 2, Form::DECIMAL}, {0x38, 2, Form::HEX},
    {0x39, 4, Form::HEX},     {0x3A, 8, Form::HEX},     {0x40, 1, Form::TEXT},    {0x41, 1, Form::OCTETS},
    {0x42, 1, Form::TEXT},    {0xE0, 4, Form::HEX},     {0xE1, 4, Form::HEX},     {0xE8, 2, Form::HEX},
    {0xE9, 2, Form::HEX},     {0xEA, 4, Form::HEX},     {0xF0, 8, Form::HEX},
};

const Type* typeOf(unsigned char code) {
  for (const Type& type : TYPES) {
    if (type.code == code) return &type;
  }
  return nullptr;
}

bool isString(const Type& type) { return type.form == Form::TEXT || type.form == Form::OCTETS; }

std::string hexByte(unsigned char byte) {
  const char* const digits = "0123456789abcdef";
  return {digits[byte >> 4], digits[byte & 15]};
}

/// The bytes of a frame, zeros behind them.
struct Bytes {
  std::vector<unsigned char> storage;
  std::size_t length;

  unsigned char at(std::size_t i) const { return i < storage.size() ? storage[i] : 0; }
  unsigned int number(std::size_t i) const { return at(i) + 256U * at(i + 1); }
  std::size_t payload() const { return (at(0) & 4) != 0 ? 5 : 3; }
  std::size_t end() const { return std::min(length, STORAGE); }
  /// How many bytes a value that starts here takes.
  std::size_t sizeOfValue(unsigned char code, std::size_t i) const {
    const Type* const type = typeOf(code);
    if (type == nullptr) return 0;
    return type->size + (isString(*type) ? at(i) : 0);
  }
};

struct Answer {
  unsigned int id;
  unsigned char type;
  /// Where the value starts.
  std::size_t at;
};

std::vector<Answer> answersOf(const Bytes& bytes) {
  std::vector<Answer> answers;
  unsigned char type = 0;
  std::size_t value = STORAGE;
  for (std::size_t i = bytes.payload(); i < bytes.end();) {
    const unsigned int id = bytes.number(i);
    const bool success = bytes.at(i + 2) == 0;
    i += 3;
    if (success) {
      type = bytes.at(i);
      value = ++i;
      i += bytes.sizeOfValue(type, i);
    }
    answers.push_back({id, type, value});
  }
  return answers;
}

const Answer* findAnswer(const std::vector<Answer>& answers, unsigned int id, unsigned char type) {
  const auto found = std::find_if(answers.begin(), answers.end(),
                                  [&](const Answer& answer) { return answer.id == id && answer.type == type; });
  return found != answers.end() ? &*found : nullptr;
}

struct Metric {
  std::string name;
  std::string value;
};

struct Report {
  std::vector<Metric> metrics;
  bool failure = false;
};

/// Prints the value at `i` into `out`; false if it does not print.
bool printValue(const Bytes& bytes, unsigned char code, std::size_t i, std::string& out) {
  const Type* const type = typeOf(code);
  if (type == nullptr) return false;
  if (type->form == Form::OCTETS) {
    // The value as a reader leaves it, in hexadecimal text, is then taken for a length and so many bytes.
    std::string data;
    for (std::size_t k = 0; k < bytes.at(i) && data.size() < VALUE_STORAGE; ++k) data += hexByte(bytes.at(i + 1 + k));
    data.resize(VALUE_STORAGE, '\0');
    for (std::size_t k = 1; k <= static_cast<unsigned char>(data[0]); ++k) {
      out += hexByte(static_cast<unsigned char>(data[k]));
    }
    return true;
  }
  out.clear();
  if (type->form == Form::TEXT) {
    const std::size_t count = std::min<std::size_t>(bytes.at(i), VALUE_STORAGE);
    for (std::size_t k = 1; k <= count && bytes.at(i + k) != 0; ++k) out += static_cast<char>(bytes.at(i + k));
    return true;
  }
  unsigned long long number = 0;
  for (std::size_t k = type->size; k-- != 0;) {
    number = number << 8 | bytes.at(i + k);
    if (type->form == Form::HEX) out += hexByte(bytes.at(i + k));
  }
  if (type->form == Form::TRUTH) out = number != 0 ? "1" : "0";
  if (type->form == Form::DECIMAL) out = std::to_string(number);
  return true;
}

Report reportOf(const Bytes& bytes) {
  Report report;
  Metric metric;
  bool hasName = false;
  bool hasValue = false;
  unsigned int count = 0;
  for (std::size_t i = bytes.payload(); i < bytes.end();) {
    const unsigned int id = bytes.number(i);
    const unsigned char code = bytes.at(i + 2);
    i += 3;
    if (id == 0x011E) {
      printValue(bytes, code, i, metric.name);
      hasName = code == 0x40 || code == 0x42;
    } else if (id == 0x011F && printValue(bytes, code, i, metric.value)) {
      hasValue = true;
    }
    i += bytes.sizeOfValue(code, i);
    if (++count % 2 != 0) continue;
    report.failure = !hasName || !hasValue;
    if (report.failure) return report;
    report.metrics.push_back(metric);
    metric = {};
    hasName = hasValue = false;
  }
  report.failure = count % 2 != 0;
  return report;
}

/// What goes out for a metric; empty for none.
std::string datagramOf(const std::string& prefix, const Metric& metric) {
  if (metric.value.empty()) return {};
  const auto harmless = [](const std::string& text) {
    std::string made;
    for (const char c : text) {
      const auto byte = static_cast<unsigned char>(c);
      made += byte < ' ' || byte == 0x7F || std::string(":|@#").find(c) != std::string::npos ? '_' : c;
    }
    return made;
  };
  const std::string path = harmless(prefix + metric.name);
  const std::string& value = metric.value;
  const std::size_t sign = value[0] == '-' ? 1 : 0;
  const std::size_t point = std::min(value.find('.'), value.size());
  const auto isDigits = [&value](std::size_t from, std::size_t to) {
    return from < to &&
           std::all_of(value.begin() + static_cast<std::ptrdiff_t>(from),
                       value.begin() + static_cast<std::ptrdiff_t>(to), [](char c) { return c >= '0' && c <= '9'; });
  };
  const bool isNumber = isDigits(sign, point) && (point == value.size() || isDigits(point + 1, value.size()));
  if (!isNumber) return path + ":" + harmless(value) + "|s";
  return (sign != 0 ? path + ":0|g\n" : "") + path + ":" + value + "|g";
}

// The properties.

void requireAnswerProperties(const QxZclDiagnostics& frame, const Bytes& bytes) {
  const std::vector<Answer> answers = answersOf(bytes);
  const Answer* const block = findAnswer(answers, 2, 0x41);
  const Answer* const uptime = findAnswer(answers, 3, 0x23);
  trapUnless(frame.hasLogMessage() == (findAnswer(answers, 0, 0x40) != nullptr),
             "a log message is told by id and type");
  trapUnless(frame.hasCounters() == (block != nullptr), "counters are told by id and type");
  trapUnless(frame.hasUptime() == (uptime != nullptr), "an uptime is told by id and type");

  const QxdiagnosticsNodeCounters before{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15};
  QxdiagnosticsNodeCounters counters = before;
  const bool isBlock = block != nullptr && bytes.at(block->at) == 30;
  trapUnless(frame.parseReadAttributesResponse(counters) == isBlock, "counters are a block of 30 bytes");
  if (isBlock) {
    const auto field = [&](std::size_t i) {
      return static_cast<unsigned short>(256 * bytes.at(block->at + 1 + 2 * i) + bytes.at(block->at + 2 + 2 * i));
    };
    trapUnless(counters == QxdiagnosticsNodeCounters{field(0), field(1), field(2), field(3), field(4), field(5),
                                                     field(6), field(7), field(8), field(9), field(10), field(11),
                                                     field(12), field(13), field(14)},
               "each counter is two bytes of the block, the high one first");
    const std::unique_ptr<qx::pb::QxdiagnosticsNodeCountersPBuf> message(counters.toProtobuf());
    QxdiagnosticsNodeCounters again;
    trapUnless(!again.fromProtobuf(*message) && again == counters, "counters come back out of their message");
  } else {
    trapUnless(counters == before, "counters that are not there leave the record alone");
  }

  unsigned int seconds = 0xDEADBEEF;
  trapUnless(frame.parseReadAttributesResponse(seconds) == (uptime != nullptr), "an uptime is read if it is there");
  const unsigned int expected =
      uptime == nullptr ? 0xDEADBEEF : bytes.number(uptime->at) + 65536U * bytes.number(uptime->at + 2);
  trapUnless(seconds == expected, "an uptime is four bytes, the low one first");
}

void requireReportProperties(const QxZclHaDiagnostics& frame, const Bytes& bytes, bool isConnected) {
  static qx::test::MetricsGateway gateway;
  static const std::string host = [] {
    char name[256] = {};
    trapUnless(::gethostname(name, sizeof name - 1) == 0, "the machine has a name");
    return std::string(name);
  }();
  if (isConnected) {
    if (!gateway.isConnected()) gateway.connect();
  } else {
    gateway.disconnect();
  }
  qx::Euid node;
  node = "0011223344556677";
  const Report report = reportOf(bytes);
  trapUnless(frame.sendMetrics("node", node) == report.failure, "a report fails if two records are no pair");
  std::vector<std::string> expected;
  const std::string prefix = "vessori2.v2.vessori2." + host + ".node.0011223344556677.zcl_diag.";
  for (const Metric& metric : report.metrics) {
    const std::string datagram = datagramOf(prefix, metric);
    if (isConnected && !datagram.empty()) expected.push_back(datagram);
  }
  trapUnless(gateway.datagrams() == expected, "each pair in front of what is none is one metric");
}

void requireProperties(const U255Buff<unsigned char>& bytes, std::size_t length, bool isConnected) {
  U255Buff<unsigned char> storage(bytes);
  storage.length_ = static_cast<unsigned int>(length);
  const Bytes second{{storage.contents, storage.contents + STORAGE}, length};

  QxZclDiagnostics answer(bytes);
  qx::test::setStorage(answer, storage);
  requireAnswerProperties(answer, second);

  QxZclHaDiagnostics report(bytes);
  qx::test::setStorage(report, storage);
  requireReportProperties(report, second, isConnected);
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  log4cplus::Logger::getRoot().addAppender(log4cplus::SharedAppenderPtr(new log4cplus::NullAppender));
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  // Log lines are made and then dropped. They cost more than all else, so that every other length does without.
  log4cplus::Logger::getRoot().setLogLevel(size % 2 != 0 ? log4cplus::TRACE_LOG_LEVEL : log4cplus::OFF_LOG_LEVEL);
  // To connect takes a look-up, which is why few lengths do without.
  const bool isConnected = size % 16 != 0;

  // More bytes than the storage has leave the frame empty.
  const U255Buff<unsigned char> bytes(data, static_cast<unsigned int>(size));
  const U255Buff<unsigned char> frame(bytes);
  requireProperties(frame, frame.length_, isConnected);

  // A frame that ends before the bytes that lie in its storage, as one does whose payload was cut, and a length beyond
  // the storage, as a careless writer of the field can leave it.
  const U255Buff<unsigned char> whole(data, static_cast<unsigned int>(std::min(size, STORAGE)));
  const unsigned char last = size != 0 ? data[size - 1] : 0;
  requireProperties(whole, whole.length_ - std::min<std::size_t>(whole.length_, last % 32U), isConnected);
  requireProperties(whole, STORAGE + 1 + size, isConnected);
  return 0;
}
