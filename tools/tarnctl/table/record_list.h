// Lists of what there is: types, objects, staged changes.
#pragma once

#include "shown/output.h"
#include "table/columns.h"

#include <optional>

namespace tarnctl {

/// Prints records, one after the other: as a table, or as an array.
class RecordList {
 public:
  /// \param columns  named as the members of the records are; raises as ColumnTable::If
  RecordList(const Given& given, const Output& output, Columns columns);

  /// Raises as Output::Print, as End does.
  void Add(const Json::Value& record);
  void End();

 private:
  Columns columns_;
  std::optional<ColumnTable> table_;
  ListPrinter list_;
};

}  // namespace tarnctl
