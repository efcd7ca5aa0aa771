#include "apps/vso/mesh/nodeTable.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <vector>

#include "apps/vso/cleanText.h"
#include "apps/vso/mesh/nodeWords.h"

namespace qx::app {

namespace {

constexpr const char* PLAIN = "\x1b[0m";

const char* colourOf(const std::string& light) {
  if (light == "green") return "\x1b[32m";
  if (light == "yellow") return "\x1b[33m";
  return light == "red" ? "\x1b[31m" : "";
}

/// What stands in a place of the table, and the light that it has, if any.
struct Cell {
  std::string text;
  std::string light = {};
};
using Row = std::vector<Cell>;

std::string barsOf(const ZigbeeNode& node) {
  constexpr int MOST = 4;
  const int bars = node.signalStrength();
  if (bars < 0) return "?";
  const auto shown = static_cast<std::size_t>(std::min(bars, MOST));
  return std::string(shown, '|') + std::string(MOST - shown, '.');
}

Row rowOf(ZigbeeNode& node) {
  constexpr std::size_t LONGEST_NAME = 32;
  Row row;
  row.push_back({clipped(nameOf(node), LONGEST_NAME)});
  row.push_back({typeOf(node)});
  row.push_back({shortAddressOf(node)});
  row.push_back({barsOf(node)});
  row.push_back({presenceOf(node)});
  node.updateNetworkHealth();
  for (const Story& story : storiesOf(node)) row.push_back({story.rate + " " + story.light, story.light});
  return row;
}

}  // namespace

std::string nodeTable(MeshServer& mesh, bool isColoured) {
  std::vector<Row> rows{{{"NAME"}, {"TYPE"}, {"ADDRESS"}, {"SIGNAL"}, {"STATE"}}};
  for (const char* const heading : STORY_HEADINGS) rows.front().push_back({heading});
  for (const auto& [euid, node] : mesh.nodes()) rows.push_back(rowOf(*mesh.node(euid)));

  std::vector<std::size_t> widths(rows.front().size());
  for (const Row& row : rows) {
    for (std::size_t i = 0; i < row.size(); ++i) widths[i] = std::max(widths[i], charactersOf(row[i].text));
  }
  std::string table;
  for (const Row& row : rows) {
    for (std::size_t i = 0; i < row.size(); ++i) {
      const char* const colour = isColoured ? colourOf(row[i].light) : "";
      table += *colour != '\0' ? colour + row[i].text + PLAIN : row[i].text;
      if (i + 1 < row.size()) table += std::string(widths[i] - charactersOf(row[i].text) + 2, ' ');
    }
    table += '\n';
  }
  return table;
}

}  // namespace qx::app
