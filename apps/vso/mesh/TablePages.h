// A table of a device as its pages come in.
#pragma once

#include <list>

namespace qx::app {

/// Collects the rows of a table that a device sends page by page. A page with the first row begins anew; one that does
/// not go on where the last one ended is dropped, with what was collected unless it came twice.
template <typename Row>
class TablePages {
 public:
  /// Takes a page: how many rows the whole table has, the index of the page's first, and its rows. True if the table is
  /// whole now.
  bool take(unsigned int total, unsigned int start, std::list<Row>& page) {
    if (start == 0) {
      rows_.clear();
    } else if (start < rows_.size()) {
      return false;
    } else if (start > rows_.size()) {
      rows_.clear();
      return false;
    }
    rows_.splice(rows_.end(), page);
    return rows_.size() >= total;
  }

  /// What has been collected.
  const std::list<Row>& rows() const { return rows_; }

 private:
  std::list<Row> rows_;
};

}  // namespace qx::app
