// What becomes of a type's stored rows when they are held against the type.
#pragma once

#include "tarnconfigstore/type_administration.h"

#include "platform/db_store.h"

#include "persistence/row_objects.h"
#include "persistence/type_rows.h"

#include <string>
#include <string_view>
#include <vector>

namespace TarnConfigStore {

/// Rows that are to be written, and what is to be said of them and of others.
struct RowPlan {
  std::vector<StoredRow> changes;
  std::vector<RowReport> reports;
  std::vector<Misfit> misfits;
};

/// For a type that is to be installed: the rows with members that it moves are divided again, fit or
/// not; misfits tell of everything stored and staged. Rows that fit get the type's version, and only
/// when they are divided wholly.
/// \param installed  what it takes the place of; empty for nothing
RowPlan PlanInstallation(const ConfigStoreObjectId& type, const SchemaHandle& installed,
                         const SchemaHandle& coming, const DBStore::ConnectionHandle& connection);

/// For an installed type: rows that are behind are divided and get its version, as far as they fit.
RowPlan PlanUpgrade(const ConfigStoreObjectId& type, const SchemaHandle& installed,
                    const DBStore::ConnectionHandle& connection);

/// Writes the changes of a plan. Raises as RedivideRow; the caller's transaction undoes what was
/// written by then.
void WriteChanges(const ConfigStoreObjectId& type, const RowPlan& plan,
                  const DBStore::ConnectionHandle& connection);

/// A row's version is another than its type's.
bool IsOutdated(std::string_view version, std::string_view installed);

}  // namespace TarnConfigStore
