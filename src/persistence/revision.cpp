#include "persistence/revision.h"

#include "persistence/held_reads.h"
#include "persistence/row_map.h"
#include "persistence/statements.h"

namespace TarnConfigStore {
namespace {

// Where the statements here have what they read; an absent one is null.
constexpr int kIdentifier = 0;
constexpr int kRevision = 1;
constexpr int kCreationTime = 2;

const char* OrEmpty(const char* text) {
  return text == nullptr ? "" : text;
}

// Runs a statement over all rows of a type; each row goes to a callback that takes no state but the
// list it adds to.
template <class List>
List ReadRows(const TypeStatement& statement, DBStore::RowCallback add,
              const ConfigStoreObjectId& id, const DBStore::ConnectionHandle& connection,
              const char* failure) {
  List list;
  const DBStore::StatementHandle handle =
      statement.PrepareAndBind(connection, id.key, id.group, id.component);
  RunReading(connection, handle, add, &list, [failure] { return failure; });
  return list;
}

int TakeRevision(void* revision, int /*count*/, char** values, char** /*names*/) {
  if (values[kRevision] != nullptr) {
    *static_cast<std::int32_t*>(revision) = RevisionFrom(values[kRevision]);
  }
  return 0;
}

int AddId(void* ids, int /*count*/, char** values, char** /*names*/) {
  static_cast<std::list<std::string>*>(ids)->emplace_back(OrEmpty(values[kIdentifier]));
  return 0;
}

int AddRevision(void* revisions, int /*count*/, char** values, char** /*names*/) {
  static_cast<std::list<std::pair<std::string, std::int32_t>>*>(revisions)->emplace_back(
      OrEmpty(values[kIdentifier]), RevisionFrom(values[kRevision]));
  return 0;
}

int AddExisting(void* instances, int /*count*/, char** values, char** /*names*/) {
  static_cast<ExistingInstances*>(instances)->Add(OrEmpty(values[kIdentifier]),
                                                  RevisionFrom(values[kRevision]),
                                                  OrEmpty(values[kCreationTime]));
  return 0;
}

}  // namespace

std::int32_t GetRevisionInternal(const ConfigStoreObjectId& id,
                                 const DBStore::ConnectionHandle& connection) {
  if (const auto held = FindHeldRevision(id, connection)) {
    return *held;
  }
  const DBStore::Turn turn(connection);
  std::int32_t revision = kDefaultRevision;
  const DBStore::StatementHandle statement =
      READ_REVISION.PrepareAndBind(connection, id.key, id.group, id.component, id.instanceId);
  RunReading(connection, statement, TakeRevision, &revision,
             [] { return "GetRevision command failed"; });
  HoldRevision(id, connection, revision);
  return revision;
}

std::list<std::string> GetInstanceIdsInternal(const ConfigStoreObjectId& id,
                                              const DBStore::ConnectionHandle& connection) {
  return ReadRows<std::list<std::string>>(READ_INSTANCE_IDS, AddId, id, connection,
                                          "GetInstanceIds failed");
}

std::list<std::pair<std::string, std::int32_t>> GetInstancesRevisionInternal(
    const ConfigStoreObjectId& id, const DBStore::ConnectionHandle& connection) {
  // The text is part of the interface, the same as for a single revision.
  return ReadRows<std::list<std::pair<std::string, std::int32_t>>>(
      READ_INSTANCE_REVISIONS, AddRevision, id, connection, "GetRevision command failed");
}

ExistingInstances ReadExistingInstances(const ConfigStoreObjectId& id,
                                        const DBStore::ConnectionHandle& connection) {
  return ReadRows<ExistingInstances>(READ_EXISTING_INSTANCES, AddExisting, id, connection,
                                     "Failed to read revision from configStore.");
}

}  // namespace TarnConfigStore
