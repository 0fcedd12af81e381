#include "platform/schema_store.h"

#include "platform/host_paths.h"
#include "platform/made_once.h"
#include "platform/process_locks.h"

#include "process/clock.h"
#include "schema/file_stamp.h"
#include "schema/schema_database.h"
#include "schema/used_types.h"

#include <array>
#include <atomic>
#include <exception>
#include <optional>
#include <utility>

namespace TarnSchemaStore {
namespace {

// The schema store's file as it was seen at one moment, and the types read from it. Not changed
// once made, but for the notes of when it was last looked at.
struct Observation {
  unsigned rootGeneration = 0;
  std::string path;
  FileStamp stamp;
  bool settled = false;  // an equal stamp means an equal file
  std::unique_ptr<const FileWatch> watch;
  mutable std::atomic<std::int64_t> stampSeen = 0;  // when the watched file last had this stamp
  mutable std::atomic<std::int64_t> pathSeen = 0;   // when the path last led to the watched file
  std::optional<std::int64_t> generation;
  std::shared_ptr<UsedTypes> types;
  // Of them, some that were asked for, by their names; read and changed under the lock.
  mutable std::array<std::shared_ptr<SchemaObject>, 8> askedFor;
};

using ProcessLocks::Guard;
using ProcessLocks::Rank;
using ObservationHandle = std::shared_ptr<const Observation>;

constinit MadeOnce<ObservationHandle> current;  // what it holds is read and changed under the lock

ObservationHandle LastObservation() {
  const Guard guard(Rank::CURRENT_TYPES);
  return current.Get();
}

void Replace(ObservationHandle& place, ObservationHandle observation) noexcept {
  // What was kept is freed when the lock is given up.
  const Guard guard(Rank::CURRENT_TYPES);
  place.swap(observation);
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
std::shared_ptr<UsedTypes> Observe() {
  const Guard reading(Rank::SCHEMA_READING);
  const ObservationHandle last = LastObservation();
  auto next = std::make_shared<Observation>();
  next->rootGeneration = HostPaths::RootGeneration();
  const bool sameRoot = last != nullptr && last->rootGeneration == next->rootGeneration;
  next->path = sameRoot ? last->path : HostPaths::Resolve(HostPaths::kSchemaStore);

  const std::int64_t now = Now();
  next->pathSeen = Clock::CoarseNow();
  next->watch = std::make_unique<FileWatch>(next->path);
  next->stamp = next->watch->Stamp();
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
  next->types = same ? last->types : std::make_shared<UsedTypes>();

  Replace(current.Get(), next);
  return next->types;
}

// The watched file tells when it is written, removed or replaced. Asking it is a system call, as
// dear as the rest of a look-up taken ten times, so it is asked once in a tick of the clock: what
// this process changes itself it knows (ForgetCurrentTypes). Types that were looked for in vain are
// asked for at every look-up, so that nobody is told that there is no such type when there is. That
// a directory above the file now leads elsewhere is seen by following its path, which costs several
// times as much: now and then will do.
bool WasSeenInTick(const Observation& seen, std::int64_t now) {
  return seen.settled && seen.rootGeneration == HostPaths::RootGeneration() &&
         now == seen.stampSeen.load(std::memory_order_relaxed) && !seen.types->KnowsOfAbsentTypes();
}

bool IsUpToDate(const Observation& seen) {
  constexpr std::int64_t kFollowPathEvery = 100'000'000;
  const std::int64_t now = Clock::CoarseNow();
  if (WasSeenInTick(seen, now)) {
    return true;
  }
  if (!seen.settled || seen.rootGeneration != HostPaths::RootGeneration()) {
    return false;
  }
  if (seen.watch->Stamp() != seen.stamp) {
    return false;
  }
  if (!seen.stamp.Exists() ||
      now - seen.pathSeen.load(std::memory_order_relaxed) >= kFollowPathEvery) {
    if (StampOf(seen.path) != seen.stamp) {
      return false;
    }
    seen.pathSeen.store(now, std::memory_order_relaxed);
  }
  if (seen.stamp.Exists()) {
    seen.stampSeen.store(now, std::memory_order_relaxed);
  }
  return true;
}

std::shared_ptr<UsedTypes> CurrentTypes() {
  const ObservationHandle last = LastObservation();
  return last != nullptr && IsUpToDate(*last) ? last->types : Observe();
}

// Answers from the types at each moment. One that was asked for in the same tick is found in one turn of one
// lock, without a share in all that it belongs to.
class StoreOfNow final : public SchemaStore {
 public:
  std::shared_ptr<SchemaObject> GetSchemaObject(const std::string& component,
                                                const std::string& group,
                                                const std::string& key) override {
    const std::size_t place =
        (key.size() + (key.empty() ? 0U : static_cast<unsigned char>(key.back()))) % kPlaces;
    {
      const Guard guard(Rank::CURRENT_TYPES);
      const ObservationHandle& seen = current.Get();
      if (seen != nullptr && WasSeenInTick(*seen, Clock::CoarseNow())) {
        const std::shared_ptr<SchemaObject>& type = seen->askedFor[place];
        if (type && type->GetKey() == key && type->GetGroup() == group &&
            type->GetComponent() == component) {
          return type;
        }
      }
    }
    const std::shared_ptr<UsedTypes> types = CurrentTypes();
    std::shared_ptr<SchemaObject> type = types->GetSchemaObject(component, group, key);
    Keep(place, types, type);
    return type;
  }

 private:
  static constexpr std::size_t kPlaces = std::tuple_size_v<decltype(Observation::askedFor)>;

  static void Keep(std::size_t place, const std::shared_ptr<UsedTypes>& of,
                   std::shared_ptr<SchemaObject> type) {
    // What was there is freed when the lock is given up.
    const Guard guard(Rank::CURRENT_TYPES);
    const ObservationHandle& seen = current.Get();
    if (seen != nullptr && seen->types == of) {
      seen->askedFor[place].swap(type);
    }
  }
};

}  // namespace

void ForgetCurrentTypes() noexcept {
  if (ObservationHandle* const kept = current.Find()) {
    Replace(*kept, nullptr);
  }
}

std::shared_ptr<SchemaStore> SchemaStore::GetStore(bool /*flag*/) {
  // Leaked: callers may ask while the process exits.
  static StoreOfNow& store = *new StoreOfNow;
  return {std::shared_ptr<void>(), &store};
}

std::shared_ptr<SchemaObjectCache> SchemaStore::GetCache() {
  return CurrentTypes();
}

}  // namespace TarnSchemaStore
