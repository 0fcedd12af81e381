#include "platform/schema_store.h"

#include "platform/host_paths.h"

#include "schema/file_stamp.h"
#include "schema/installed_types.h"
#include "schema/schema_database.h"
#include "schema/schema_locks.h"

#include <atomic>
#include <exception>
#include <mutex>
#include <optional>

namespace TarnSchemaStore {
namespace {

// The schema store's file as it was seen at one moment, and the types read from it. Never changed
// once made.
struct Observation {
  unsigned rootGeneration = 0;
  std::string path;
  FileStamp stamp;
  bool settled = false;  // an equal stamp means an equal file
  std::optional<std::int64_t> generation;
  std::shared_ptr<InstalledTypes> types;
};

using ObservationHandle = std::shared_ptr<const Observation>;

// Leaked, as the locks are.
ObservationHandle& Current() {
  static ObservationHandle& current = *new ObservationHandle;
  return current;
}

ObservationHandle LastObservation() {
  const std::lock_guard lock(SchemaLocks::Get().current);
  return Current();
}

std::optional<std::int64_t> TryReadGeneration() {
  try {
    return SchemaDatabase(SchemaDatabase::Access::READ).ReadGeneration();
  } catch (const std::exception&) {
    // Whoever asks for a type will be told.
    return std::nullopt;
  }
}

// A file with another stamp is taken for another file. With the same stamp the generation decides,
// as long as the stamp is too fresh to be trusted.
std::shared_ptr<InstalledTypes> Observe() {
  const std::lock_guard reading(SchemaLocks::Get().database);
  const ObservationHandle last = LastObservation();
  auto next = std::make_shared<Observation>();
  next->rootGeneration = HostPaths::RootGeneration();
  const bool sameRoot = last != nullptr && last->rootGeneration == next->rootGeneration;
  next->path = sameRoot ? last->path : HostPaths::Resolve(HostPaths::kSchemaStore);

  const std::int64_t now = Now();
  next->stamp = StampOf(next->path);
  next->settled = !MayHideChanges(next->stamp, now);
  const bool sameStamp = sameRoot && last->stamp == next->stamp;
  if (sameStamp && last->settled) {
    return last->types;
  }
  if (next->stamp.Exists() && (sameStamp || !next->settled)) {
    next->generation = TryReadGeneration();
  }
  const bool same =
      sameStamp && next->generation.has_value() && next->generation == last->generation;
  next->types = same ? last->types : std::make_shared<InstalledTypes>();

  const std::lock_guard lock(SchemaLocks::Get().current);
  Current() = next;
  return next->types;
}

std::shared_ptr<InstalledTypes> CurrentTypes() {
  const ObservationHandle last = LastObservation();
  if (last != nullptr && last->settled && last->rootGeneration == HostPaths::RootGeneration() &&
      last->stamp == StampOf(last->path)) {
    return last->types;
  }
  return Observe();
}

}  // namespace

std::shared_ptr<SchemaStore> SchemaStore::GetStore(bool /*flag*/) {
  return CurrentTypes();
}

std::shared_ptr<SchemaObjectCache> SchemaStore::GetCache() {
  return CurrentTypes();
}

}  // namespace TarnSchemaStore
