#include "tarnconfigstore/compare_and_set.h"

#include "platform/logger.h"

#include "objects/schema_lookup.h"
#include "persistence/boot_statements.h"
#include "persistence/read_current.h"
#include "persistence/statements.h"
#include "store/config_store_impl.h"
#include "store/trace.h"
#include "validation/guards.h"

#include <algorithm>
#include <string>
#include <utility>

namespace TarnConfigStore {

/// What the rows of an object said.
class StoredStateImpl {
 public:
  // What is staged is read before the row: were it changed in between, it would only look changed later,
  // and never be taken for what a reader of the row knew.
  StoredStateImpl(const ConfigStoreObjectId& id, const DBStore::ConnectionHandle& connection)
      : id_(id), staged_(ReadStaged(id, connection)), row_(ReadRow(id, connection)) {}

  static const StoredStateImpl& Of(const StoredState& state) { return *state.state_; }
  static StoredState Wrap(std::shared_ptr<const StoredStateImpl> state) {
    return StoredState(std::move(state));
  }

  const ConfigStoreObjectId& Id() const { return id_; }
  const RowMap& Row() const { return row_; }

  bool IsCurrent(const DBStore::ConnectionHandle& connection) const {
    const auto equal = [](const auto& a, const auto& b) { return *a == *b; };
    const RowMapList staged = ReadStaged(id_, connection);
    return row_ == ReadRow(id_, connection) &&
           std::equal(staged_.begin(), staged_.end(), staged.begin(), staged.end(), equal);
  }

 private:
  static RowMap ReadRow(const ConfigStoreObjectId& id,
                        const DBStore::ConnectionHandle& connection) {
    return ReadRowMap(connection, READ_TABLE_CONFIG, id);
  }
  static RowMapList ReadStaged(const ConfigStoreObjectId& id,
                               const DBStore::ConnectionHandle& connection) {
    const std::string failure = "Get failed: " + id.toString();
    return ReadRows(connection,
                    READ_STAGED_OF_OBJECT.PrepareAndBind(connection, id.key, id.group, id.component,
                                                         id.instanceId),
                    failure.c_str());
  }

  const ConfigStoreObjectId id_;
  const RowMapList staged_;
  const RowMap row_;
};

namespace {

std::shared_ptr<const StoredStateImpl> ReadStateOf(const ConfigStoreObjectId& id,
                                                   const SchemaHandle& schema,
                                                   const DBStore::ConnectionHandle& connection) {
  ValidateCsoId(id, schema);
  const DBStore::Turn turn(connection);
  return std::make_shared<const StoredStateImpl>(id, connection);
}

}  // namespace

StoredState::StoredState(std::shared_ptr<const StoredStateImpl> state) : state_(std::move(state)) {}

const ConfigStoreObjectId& StoredState::GetConfigStoreObjectId() const {
  return state_->Id();
}

std::int32_t StoredState::GetRevision() const {
  const auto text = state_->Row().Find("Revision");
  return text ? RevisionFrom(text->data()) : kDefaultRevision;
}

ObjectForChange GetForChange(ConfigStore& store, const ConfigStoreObjectId& csoId) {
  LogStoreCall(CSLogger::kTrace, "GetForChange", csoId, EXTERNAL);
  const SchemaHandle schema = FindSchema(csoId);
  auto state = ReadStateOf(csoId, schema, ConnectionOf(store));
  auto object = MakeCurrent(state->Row(), csoId, schema);
  return {std::move(object), StoredStateImpl::Wrap(std::move(state))};
}

StoredState GetState(ConfigStore& store, const ConfigStoreObjectId& csoId) {
  LogStoreCall(CSLogger::kTrace, "GetState", csoId, EXTERNAL);
  return StoredStateImpl::Wrap(ReadStateOf(csoId, FindSchema(csoId), ConnectionOf(store)));
}

std::vector<ConfigStoreObjectId> FindChanged(ConfigStore& store,
                                             const std::vector<StoredState>& states) {
  const DBStore::ConnectionHandle& connection = ConnectionOf(store);
  const DBStore::Turn turn(connection);
  std::vector<ConfigStoreObjectId> changed;
  for (const StoredState& state : states) {
    if (!StoredStateImpl::Of(state).IsCurrent(connection)) {
      changed.push_back(state.GetConfigStoreObjectId());
    }
  }
  return changed;
}

std::vector<ConfigStoreObjectId> WriteIfUnchanged(ConfigStore& store,
                                                  const std::vector<StoredState>& states,
                                                  const std::function<void()>& write) {
  // The guard wants a shared handle. This one owns nothing: the caller has the store.
  std::shared_ptr<ConfigStore> handle(std::shared_ptr<void>(), &store);
  ConfigStoreTransaction transaction(handle);
  std::vector<ConfigStoreObjectId> changed = FindChanged(store, states);
  if (changed.empty()) {
    write();
    transaction.Commit();
  }
  return changed;
}

}  // namespace TarnConfigStore
