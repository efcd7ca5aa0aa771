#include "apps/vso/decode/TextPrinter.h"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <string_view>
#include <variant>
#include <vector>

#include "qxshared/cleanString.h"
#include "qxshared/hexStr.h"
#include "vso/zcl/ZclMessage.h"
#include "vso/zdo/ZdoResponse.h"

namespace qx::app {

namespace {

constexpr const char* BOLD = "\x1b[1m";
constexpr const char* RED = "\x1b[31m";
constexpr const char* PLAIN = "\x1b[0m";

std::string hex8(unsigned char value) { return hexStr(value, 1, true); }
std::string hex16(unsigned short value) { return hexStr(value, 2, true); }

/// "0x0006", or "0x0006 On/Off".
std::string withName(std::string number, const char* name) {
  if (name != nullptr) number.append(" ").append(name);
  return number;
}

/// "180501" as "18 05 01".
std::string spaced(std::string_view hex) {
  std::string text;
  for (std::size_t i = 0; i < hex.size(); i += 2) text.append(i == 0 ? "" : " ").append(hex.substr(i, 2));
  return text;
}

std::string bytes(unsigned int count) { return std::to_string(count) + (count == 1 ? " byte" : " bytes"); }

const char* text(ZclFrameType type) {
  switch (type) {
    case ZclFrameType::GENERAL:
      return "general";
    case ZclFrameType::CLUSTER_SPECIFIC:
      return "cluster specific";
    case ZclFrameType::RESERVED:
      break;
  }
  return "reserved";
}

/// A value as people read it, numbers in `digits` hexadecimal digits unless that is 0.
std::string text(std::nullptr_t, unsigned int) { return "-"; }
std::string text(bool value, unsigned int) { return value ? "true" : "false"; }
std::string text(long long value, unsigned int digits) {
  return digits == 0 ? std::to_string(value) : hexStr(static_cast<unsigned long long>(value), digits / 2, true);
}
std::string text(const std::string& value, unsigned int) { return cleanString(value); }
std::string text(const std::vector<unsigned int>& values, unsigned int digits) {
  std::string list;
  for (const unsigned int value : values)
    list += (list.empty() ? "" : " ") + text(static_cast<long long>(value), digits);
  return list;
}

std::string text(const NamedValue& named) {
  return withName(std::visit([&named](const auto& value) { return text(value, named.digits); }, named.value),
                  named.meaning);
}

/// The lines of one frame as they come together.
class Block {
 public:
  explicit Block(TextPrinter::Colour colour) : colour_(colour) {}

  void heading(const std::string& line) { lines_ += painted(BOLD, line) + "\n"; }
  void line(const std::string& label, const std::string& value) { lines_ += aligned("  " + label) + value + "\n"; }
  void list(const char* label) { lines_ += "  " + std::string(label) + "\n"; }
  void item(const std::string& value) { lines_ += "    " + value + "\n"; }
  void item(const std::string& label, const std::string& value) { lines_ += aligned("    " + label) + value + "\n"; }

  /// `line` as something that is wrong.
  std::string warning(const std::string& line) const { return painted(RED, line); }

  const std::string& lines() const { return lines_; }

 private:
  static std::string aligned(std::string label) {
    constexpr std::size_t WIDTH = 30;
    label.resize(label.size() < WIDTH ? WIDTH : label.size() + 1, ' ');
    return label;
  }
  std::string painted(const char* colour, const std::string& line) const {
    return colour_ == TextPrinter::Colour::ANSI ? colour + line + PLAIN : line;
  }

  TextPrinter::Colour colour_;
  std::string lines_;
};

const char* layer(const ZclHeader&) { return "ZCL"; }
const char* layer(const ZdoHeader&) { return "ZDO"; }

void add(Block& block, const ZclHeader& header) {
  if (!header.frameControl) return;
  block.line("frame control", hex8(*header.frameControl));
  block.line("frame type", text(header.frameType));
  if (header.manufacturerCode) {
    block.line("manufacturer code", hex16(*header.manufacturerCode));
  } else if (!header.manufacturerSpecific) {
    block.line("manufacturer code", "none");
  }
  block.line("direction", header.fromServer ? "server to client" : "client to server");
  block.line("default response disabled", header.defaultResponseDisabled ? "yes" : "no");
  if (header.sequence) block.line("sequence", std::to_string(*header.sequence));
  if (header.command) block.line("command", withName(hex8(*header.command), header.name));
}

void add(Block& block, const ZdoHeader& header) {
  if (header.sequence) block.line("sequence", std::to_string(*header.sequence));
  if (header.status) {
    const auto status = static_cast<ZdoStatus>(*header.status);
    const std::string words = withName(hex8(*header.status), ZdoResponse::statusStr(status));
    block.line("status", status == QX_ZDP_SUCCESS ? words : block.warning(words));
  }
}

std::string text(const Block& block, const DecodedAttribute& attribute) {
  std::string line = attribute.value ? cleanString(attribute.value->record) : hex16(attribute.id);
  if (attribute.status) {
    const auto status = static_cast<ZclStatus>(*attribute.status);
    const std::string words = withName(hex8(*attribute.status), ZclMessage::zclStatusToStr(status));
    line += ", status " + (status == ZCL_SUCCESS ? words : block.warning(words));
  }
  return line;
}

void add(Block& block, const char* label, const std::vector<NamedValue>& values) {
  if (values.empty()) return;
  block.list(label);
  for (const NamedValue& named : values) block.item(named.name, text(named));
}

/// Columns as wide as their widest cell, two blanks apart.
void add(Block& block, const DecodedTable& table) {
  block.list(table.name);
  if (table.rows.empty()) return;
  std::vector<std::vector<std::string>> lines(1);
  for (const NamedValue& cell : table.rows.front()) lines.front().emplace_back(cell.name);
  for (const auto& row : table.rows) {
    auto& line = lines.emplace_back();
    for (const NamedValue& cell : row) line.push_back(text(cell));
  }
  std::vector<std::size_t> widths(lines.front().size());
  for (const auto& line : lines) {
    for (std::size_t i = 0; i < line.size(); ++i) widths[i] = std::max(widths[i], line[i].size());
  }
  for (const auto& line : lines) {
    std::string item;
    for (std::size_t i = 0; i < line.size(); ++i) {
      item += line[i];
      if (i + 1 < line.size()) item.append(widths[i] - line[i].size() + 2, ' ');
    }
    block.item(item);
  }
}

std::string text(const Block& block, const FrameVerdict& verdict) {
  const std::string words = verdict.toString();
  return verdict.state == FrameVerdict::BROKEN ? block.warning(words) : words;
}

}  // namespace

std::string TextPrinter::print(const DecodedFrame& frame) const {
  Block block(colour_);
  const char* const layerName = std::visit([](const auto& header) { return layer(header); }, frame.header);
  block.heading(layerName + (" frame of " + bytes(frame.length)) + (frame.length == 0 ? "" : ": ") + spaced(frame.hex));
  block.line("profile", hex16(frame.profile));
  block.line("cluster", withName(hex16(frame.cluster), frame.clusterName));
  std::visit([&](const auto& header) { add(block, header); }, frame.header);
  if (frame.attributes) {
    block.list("attributes");
    for (const DecodedAttribute& attribute : *frame.attributes) block.item(text(block, attribute));
  }
  add(block, "fields", frame.fields);
  add(block, "readings", frame.readings);
  if (frame.table) add(block, *frame.table);
  if (!frame.undecoded.empty()) block.line("not decoded", spaced(frame.undecoded));
  block.line("verdict", text(block, frame.verdict));
  return block.lines();
}

std::string TextPrinter::print(const UnreadableLine&) const { return {}; }

}  // namespace qx::app
