// What lists say of stored objects and staged changes.
#pragma once

#include "tarnconfigstore/listing.h"

#include "json_text.h"

namespace tarnctl {

/// The name under which the store keeps an action.
const char* NameAction(TarnConfigStore::NextBootAction action);

Json Describe(const TarnConfigStore::StoredObject& object);
Json Describe(const TarnConfigStore::StagedChange& change);

/// An array of all changes that are staged under a prefix.
Json DescribeStaged(const TarnConfigStore::ConfigStoreObjectId& prefix);

}  // namespace tarnctl
