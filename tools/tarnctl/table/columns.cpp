#include "table/columns.h"

#include "failure.h"

#include <algorithm>
#include <unistd.h>
#include <utility>

namespace tarnctl {
namespace {

std::string Listed(const std::vector<std::string>& names) {
  std::string text;
  for (const std::string& name : names) {
    text.append(text.empty() ? "" : ", ").append(name);
  }
  return text;
}

std::vector<std::string> NamesIn(const Columns& columns) {
  std::vector<std::string> names;
  for (const Column& column : columns) {
    names.emplace_back(column.name);
  }
  return names;
}

}  // namespace

Argument ColumnsArgument(const std::string& names) {
  return {.name = kColumns,
          .help = "Print a table of these columns: " + names +
                  "; where no terminal gets it, cells divided by tabs, and no heading",
          .valueName = "NAME,..."};
}

std::vector<std::string> ChosenColumns(const Given& given, const Output& output) {
  std::vector<std::string> names;
  if (!given.Has(kColumns)) {
    return names;
  }
  if (output.AsData()) {
    throw ToolError(ExitCode::USAGE,
                    "--columns prints a table, and neither JSON nor YAML (see --help)");
  }
  const std::string& text = given.Text(kColumns);
  for (std::size_t begin = 0; begin <= text.size();) {
    const std::size_t end = std::min(text.find(',', begin), text.size());
    std::string name = text.substr(begin, end - begin);
    if (name.empty() || std::find(names.begin(), names.end(), name) != names.end()) {
      throw ToolError(ExitCode::USAGE, name.empty() ? "a column of --columns has no name"
                                                    : "--columns names \"" + name + "\" twice");
    }
    names.push_back(std::move(name));
    begin = end + 1;
  }
  return names;
}

void RaiseNoColumn(const std::string& name, const std::vector<std::string>& known,
                   const std::string& hint) {
  throw ToolError(ExitCode::USAGE, "there is no column \"" + name + "\"" +
                                       (hint.empty() ? "" : " (" + hint + ")") +
                                       "; the columns are " + Listed(known));
}

std::string NamesOf(const Columns& columns) {
  return Listed(NamesIn(columns));
}

std::optional<ColumnTable> ColumnTable::If(const Given& given, const Output& output,
                                           const Columns& columns) {
  std::vector<std::string> names = ChosenColumns(given, output);
  if (!PrintsTable(names, output)) {
    return std::nullopt;
  }
  const std::vector<std::string> known = NamesIn(columns);
  const bool isChosen = !names.empty();
  for (const Column& column : columns) {
    if (!isChosen && column.isShown) {
      names.emplace_back(column.name);
    }
  }
  std::vector<std::size_t> shown;
  for (const std::string& name : names) {
    const auto found = std::find(known.begin(), known.end(), name);
    if (found == known.end()) {
      RaiseNoColumn(name, known);
    }
    shown.push_back(static_cast<std::size_t>(found - known.begin()));
  }
  return ColumnTable(output, std::move(names), std::move(shown), isChosen);
}

void ColumnTable::Add(const std::vector<std::string>& cells, const char* colour) {
  std::vector<std::string> shown;
  for (const std::size_t column : shown_) {
    shown.push_back(cells[column]);
  }
  table_.Add(std::move(shown), colour);
}

bool PrintsTable(const std::vector<std::string>& chosen, const Output& output) {
  return !chosen.empty() || (!output.AsData() && ::isatty(STDOUT_FILENO) != 0);
}

}  // namespace tarnctl
