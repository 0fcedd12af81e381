// What differs between the rows of a store and one of the states that they can be compared with.
#pragma once

#include "tarnconfigstore/drift.h"

#include "platform/db_store.h"

#include <vector>

namespace TarnConfigStore {

/// Identifiers in the order in which rows are read.
struct InOrderOfIds {
  bool operator()(const ConfigStoreObjectId& a, const ConfigStoreObjectId& b) const;
};

/// ComputeDriftFrom on a connection that the caller holds; what it reads is of one moment only where
/// the caller sees to that.
std::vector<DriftObject> FindDriftFrom(ReferenceState state, const ConfigStoreObjectId& prefix,
                                       bool reveal, const DBStore::ConnectionHandle& connection);

}  // namespace TarnConfigStore
