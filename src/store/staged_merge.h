// A staged change and what was written to its object since it was staged.
#pragma once

#include "tarnconfigstore/apply_next_boot.h"

#include "platform/db_store.h"

#include "objects/handles.h"
#include "objects/three_way_merge.h"

#include <vector>

namespace TarnConfigStore {

struct MergedChange {
  bool hasBase = false;  ///< else nobody knows what there was, and what follows says nothing
  /// What is current stays, so that there is nothing to apply.
  bool drops = false;
  /// Of a change that gives content: what is to be recorded in its place. Empty where that is what is
  /// staged.
  ObjectHandle content = {};
  /// What was or is stored cannot be read, so that there is no merging with it.
  std::vector<ErrorInfo> findings = {};
};

/// Merges a staged change with what was written meanwhile. Reads; writes nothing.
/// \param type         empty when it is not installed, which only deletions can do without: their
///                     values are told as masks then
/// \param content      what is staged; empty for a deletion
/// \param currentWins  what is current counts where there is a conflict
/// \param visit        gets each place that changed meanwhile, while the values live; may be empty
/// Raises as the readers of rows do.
MergedChange MergeStagedChange(const ConfigStoreObjectId& id, NextBootAction action,
                               const SchemaHandle& type, const ObjectHandle& content,
                               bool currentWins, const DBStore::ConnectionHandle& connection,
                               const MeanwhileVisitor& visit);

/// What is told of such a place.
/// \param reveal  secrets are shown as they are
ChangeConflict DescribeMeanwhile(const ChangedMeanwhile& changed, bool reveal);

}  // namespace TarnConfigStore
