#include "benchmarks.h"

namespace Benchmarks {

void RegisterAll(Roads& roads, const std::string& root) {
  RegisterGets(roads);
  RegisterSets(roads, root);
  RegisterInstances(roads);
  RegisterBulkWrites(roads, root);
  RegisterNotifications(roads);
  RegisterStagedChanges(roads, root);
  RegisterDocuments(roads, root);
  RegisterFreshProcess(root);
  RegisterHeldMemory(root);
  RegisterLargeObjects();
  RegisterLargeNeighbours(roads);
  RegisterValidation();
}

}  // namespace Benchmarks
