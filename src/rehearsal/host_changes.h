// What differs between two states of a host.
#pragma once

#include "tarnconfigstore/rehearsal.h"

#include "objects/handles.h"
#include "rehearsal/host_state.h"

namespace TarnConfigStore {

/// A row that differs in what it holds.
struct RowChange {
  ConfigStoreObjectId id;
  std::shared_ptr<const StoredRow> before;  ///< empty for one that was made
  std::shared_ptr<const StoredRow> after;   ///< empty for one that was deleted
};

/// In the order of the identifiers. Times, revisions and versions make no difference.
std::vector<RowChange> FindChangedRows(const HostState& before, const HostState& after);

/// What is told of one, secrets masked: what either version of its type calls one. Empty when it
/// differs in nothing but what is pending, which is told as waiting.
/// \param before, after  its type; empty where it is not installed
std::optional<DriftObject> TellOf(const RowChange& change, const SchemaHandle& before,
                                  const SchemaHandle& after);

/// Fills in all but the objects.
void FindOtherChanges(const HostState& before, const HostState& after, HostDifference& difference);

}  // namespace TarnConfigStore
