// A table of a device as its pages come in.
#pragma once

#include <cstdlib>
#include <ctime>
#include <list>
#include <optional>
#include <utility>

namespace qx::app {

/// What a page says of itself.
struct TablePage {
  /// Rows of the whole table.
  unsigned int total = 0;
  /// The index of the page's first row.
  unsigned int start = 0;
  /// When it came, seconds since 1970.
  std::time_t time = 0;
};

/// Collects the rows of a table that a device sends page by page. A page with the first row begins anew; one that does
/// not go on where the last one ended is dropped, with what was collected unless it came twice. So is one of another
/// table: the table has grown or shrunk, or the page came long after the others.
template <typename Row>
class TablePages {
 public:
  /// Seconds after the first page in which the others come.
  static constexpr std::time_t LONGEST = 600;

  /// Takes a page and its rows. The whole table, once it is there: the next page begins anew.
  std::optional<std::list<Row>> take(const TablePage& page, std::list<Row> rows) {
    if (page.start == 0) {
      first_ = page;
      rows_.clear();
    } else if (page.start > rows_.size() || !isOfTheSameTable(page)) {
      rows_.clear();
      return std::nullopt;
    } else if (page.start < rows_.size()) {
      return std::nullopt;
    }
    rows_.splice(rows_.end(), rows);
    if (rows_.size() < page.total) return std::nullopt;
    return std::exchange(rows_, {});
  }

  /// What has been collected.
  const std::list<Row>& rows() const { return rows_; }

 private:
  bool isOfTheSameTable(const TablePage& page) const {
    return page.total == first_.total && std::abs(page.time - first_.time) <= LONGEST;
  }

  TablePage first_;
  std::list<Row> rows_;
};

}  // namespace qx::app
