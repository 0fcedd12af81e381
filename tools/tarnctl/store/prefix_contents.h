// What there is under a prefix, for verbs that must not take what they did not see for nothing.
#pragma once

#include "tarnconfigstore/object_id.h"

#include "failure.h"

#include <string>
#include <vector>

namespace tarnctl {

/// True when something is stored or staged under a prefix.
bool HoldsAnything(const TarnConfigStore::ConfigStoreObjectId& prefix);

/// The stored objects under a prefix whose types are not installed.
std::vector<TarnConfigStore::ConfigStoreObjectId> FindUnknown(
    const TarnConfigStore::ConfigStoreObjectId& prefix);

/// One finding for each object, its name the field.
void AddObjects(const std::vector<TarnConfigStore::ConfigStoreObjectId>& objects,
                const std::string& error, Findings& findings);

inline constexpr const char* kNotInstalled = "its type is not installed";

}  // namespace tarnctl
