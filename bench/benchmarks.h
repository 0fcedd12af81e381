// The families of operations that are measured.
#pragma once

#include "roads.h"

#include <string>

namespace Benchmarks {

/// What takes minutes is measured on request only.
enum class Extent { USUAL, ALL };

/// Registers all families; the roads have to live until they have run.
void RegisterAll(Roads& roads, const std::string& root, Extent extent);

// Each registers its comparisons.
void RegisterGets(Roads& roads);
void RegisterSets(Roads& roads, const std::string& root);
void RegisterInstances(Roads& roads, Extent extent);
void RegisterBulkWrites(Roads& roads, const std::string& root, Extent extent);
void RegisterNotifications(Roads& roads);
void RegisterStagedChanges(Roads& roads, const std::string& root);
void RegisterDocuments(Roads& roads, const std::string& root, Extent extent);
void RegisterFreshProcess(const std::string& root);
void RegisterWholeProcess(const std::string& root);
void RegisterHeldMemory(const std::string& root);
void RegisterMemoryPeaks(const std::string& root, Extent extent);
void RegisterLargeNeighbours(Roads& roads);

// Need no store.
void RegisterLargeObjects();
void RegisterValidation();

}  // namespace Benchmarks
