// Rows of cells, for people and for other programs.
#pragma once

#include "shown/output.h"
#include "table/terminal.h"

#include <cstddef>
#include <string>
#include <vector>

namespace tarnctl {

/// A table on standard output. A terminal gets a heading and aligned columns; where they are wider
/// than it is, the widest cells are cut, with an ellipsis, but those of the first column, which says
/// what the row is about. Everything else gets a line for each row, the whole cells divided by tabs.
/// Cells are texts that hold no control characters: see CellOf.
class Table {
 public:
  Table(const Output& output, std::vector<std::string> headings);

  /// Raises as Output::PrintText, as End does: what is no terminal need not wait for the last row.
  /// \param cells  as many as there are headings
  void Add(std::vector<std::string> cells, const char* colour = kNoColour);
  void End();

  /// True where End will cut nothing.
  bool Fits() const;
  const Terminal& GetTerminal() const { return terminal_; }

 private:
  struct Row {
    std::vector<std::string> cells;
    const char* colour;
  };
  std::vector<std::size_t> FittingWidths() const;
  std::string LineOf(const Row& row, const std::vector<std::size_t>& widths) const;

  const Output& output_;
  const Terminal terminal_;
  std::vector<Row> rows_;            // the heading first
  std::vector<std::size_t> widths_;  // of the widest cell of each column
  std::string lines_;
};

/// What is shown of a value in a cell: a text bare, its control characters and backslashes escaped,
/// anything else as one line of JSON.
std::string CellOf(const Json::Value& value);

}  // namespace tarnctl
