// Which columns of a list are shown.
#pragma once

#include "command_line.h"
#include "table/table.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace tarnctl {

/// The option with which a verb that lists prints a table of chosen columns.
inline constexpr const char* kColumns = "--columns";
/// \param names  what there is to choose from, in words
Argument ColumnsArgument(const std::string& names);

/// The names that were chosen, in their order; none where the option was not given. Raises ToolError
/// USAGE for an empty name, one that is named twice, and beside --json or --yaml.
std::vector<std::string> ChosenColumns(const Given& given, const Output& output);

/// Raises ToolError USAGE: there is no such column, and these are the ones that there are.
/// \param hint  what else is to be said of the name
[[noreturn]] void RaiseNoColumn(const std::string& name, const std::vector<std::string>& known,
                                const std::string& hint = {});

/// A column of a list whose columns are always the same.
struct Column {
  const char* name;
  bool isShown = true;  ///< where nothing is chosen
};
using Columns = std::vector<Column>;
std::string NamesOf(const Columns& columns);

/// A list of which everybody but a terminal gets data, or something else, unless columns are chosen.
class ColumnTable {
 public:
  /// The table to print, or nothing where the output is none. Raises as ChosenColumns, and
  /// RaiseNoColumn for a name that is none of the columns.
  static std::optional<ColumnTable> If(const Given& given, const Output& output,
                                       const Columns& columns);

  /// \param cells  of all columns, in their order
  void Add(const std::vector<std::string>& cells, const char* colour = kNoColour);
  void End() { table_.End(); }
  /// True where the user has chosen columns, or nothing of them has to be cut.
  bool IsWanted() const { return isChosen_ || table_.Fits(); }

 private:
  ColumnTable(const Output& output, std::vector<std::string> names, std::vector<std::size_t> shown,
              bool isChosen)
      : table_(output, std::move(names)), shown_(std::move(shown)), isChosen_(isChosen) {}

  Table table_;
  std::vector<std::size_t> shown_;
  bool isChosen_;
};

/// True where a list is to be a table: columns were chosen, or a terminal gets it.
bool PrintsTable(const std::vector<std::string>& chosen, const Output& output);

}  // namespace tarnctl
