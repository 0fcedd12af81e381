// The families of operations that are measured.
#pragma once

#include "roads.h"

#include <string>

namespace Benchmarks {

/// Registers all of them.
void RegisterAll(Roads& roads, const std::string& root);

// Each registers its comparisons; the roads have to live until they have run.
void RegisterGets(Roads& roads);
void RegisterSets(Roads& roads, const std::string& root);
void RegisterInstances(Roads& roads);
void RegisterBulkWrites(Roads& roads, const std::string& root);
void RegisterNotifications(Roads& roads);
void RegisterStagedChanges(Roads& roads, const std::string& root);
void RegisterDocuments(Roads& roads, const std::string& root);
void RegisterFreshProcess(const std::string& root);
void RegisterHeldMemory(const std::string& root);

// Need no store.
void RegisterLargeObjects();
void RegisterLargeNeighbours(Roads& roads);
void RegisterValidation();

}  // namespace Benchmarks
