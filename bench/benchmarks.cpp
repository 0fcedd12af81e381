#include "benchmarks.h"

namespace Benchmarks {

void RegisterAll(Roads& roads, const std::string& root, Extent extent) {
  RegisterGets(roads);
  RegisterSets(roads, root);
  RegisterInstances(roads, extent);
  RegisterBulkWrites(roads, root, extent);
  RegisterNotifications(roads);
  RegisterStagedChanges(roads, root);
  RegisterDocuments(roads, root, extent);
  RegisterFreshProcess(root);
  RegisterWholeProcess(root);
  RegisterHeldMemory(root);
  RegisterMemoryPeaks(root, extent);
  RegisterLargeObjects();
  RegisterLargeNeighbours(roads);
  RegisterValidation();
}

}  // namespace Benchmarks
