// What differs and what waits, as tables.
#pragma once

#include "tarnconfigstore/drift.h"
#include "tarnconfigstore/pending.h"

#include "table/columns.h"

#include <vector>

namespace tarnctl {

inline const Columns kDriftColumns = {{"object"}, {"kind", false}, {"change"}, {"member"},
                                      {"found"},  {"expected"},    {"part"}};
/// Adds a row for each member that differs, or one for an object that differs as a whole.
/// \param table  of kDriftColumns
void AddDrift(const std::vector<TarnConfigStore::DriftObject>& differences, ColumnTable& table);

inline const Columns kPendingColumns = {{"object"}, {"waits"}, {"change"}, {"member"},
                                        {"now"},    {"then"},  {"part"},   {"remark"}};
/// Adds the rows of what waits of an object: what becomes of it, each member that will differ, that was
/// changed meanwhile, or that has a finding.
/// \param table  of kPendingColumns
void AddPending(const TarnConfigStore::PendingChange& change, ColumnTable& table);

}  // namespace tarnctl
