// Objects and their members as tables.
#pragma once

#include "tarnconfigstore/config_store_object.h"

#include "shown/output.h"
#include "shown/shown_data.h"
#include "table/columns.h"

#include <memory>
#include <string>
#include <vector>

namespace tarnctl {

using Objects = std::vector<std::shared_ptr<TarnConfigStore::ConfigStoreObject>>;

/// Prints instances of a type: a table, or an array of them. The columns are dotted paths to members, and
/// what they hold is what is read, defaults included; where none are chosen, they are the id, and each
/// member at the top that some instance has.
class InstancePrinter {
 public:
  /// Raises as ChosenColumns, and RaiseNoColumn for a column that is no member of the type, or does not
  /// lie in objects alone; ConfigStoreException 1037 for a type that is not installed.
  InstancePrinter(const Given& given, const Output& output,
                  const TarnConfigStore::ConfigStoreObjectId& type);
  void Print(const Objects& objects);

 private:
  void PrintTable(const Objects& objects) const;

  const Output& output_;
  const TypeSchema type_;
  ShownData shown_;
  const std::vector<std::string> columns_;
};

/// Raises ToolError USAGE where columns are chosen for what is no list.
void RequireNoColumns(const Given& given);

/// The columns of a table of members, whatever they are of.
inline const Columns kMemberColumns = {{"object"}, {"member"}, {"value"}};

/// Adds a row for each member of each object; those of objects inside by dotted paths.
/// \param table  of kMemberColumns
void AddMembers(const Objects& objects, ShownData shown, ColumnTable& table);

}  // namespace tarnctl
