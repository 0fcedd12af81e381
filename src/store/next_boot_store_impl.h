// The store of configuration that takes effect at the next boot.
#pragma once

#include "tarnconfigstore/next_boot_store.h"

#include "platform/db_store.h"
#include "platform/schema_store.h"

namespace TarnConfigStore {

/// Contracts as for NextBootStore. Shares the connection of the store that it came from.
class NextBootStoreImpl final : public NextBootStore {
 public:
  explicit NextBootStoreImpl(DBStore::ConnectionHandle connection);

  std::shared_ptr<ConfigStoreObject> Get(const ConfigStoreObjectId& csoId) override;
  void Set(std::shared_ptr<ConfigStoreObject> object) override;
  void Delete(const ConfigStoreObjectId& csoId) override;
  void Reset(const ConfigStoreObjectId& csoId) override;
  void SetInstances(std::vector<std::shared_ptr<ConfigStoreObject>> objects) override;
  std::vector<std::shared_ptr<ConfigStoreObject>> GetInstances(
      const std::shared_ptr<FilterSpecObject>& filter) override;
  void DeleteInstances(const std::shared_ptr<FilterSpecObject>& filter) override;

  /// Runs a persistence function in a transaction of its own on this store's connection; see
  /// RunUnderTransaction. Defined for an object, an identifier, a list of objects and a filter.
  template <class T>
  void ExecuteUnderTransaction(
      const T& argument, const std::shared_ptr<TarnSchemaStore::SchemaObject>& schema,
      void (*operation)(const T&, const std::shared_ptr<TarnSchemaStore::SchemaObject>&,
                        const DBStore::ConnectionHandle&));

 private:
  DBStore::ConnectionHandle connection_;
};

}  // namespace TarnConfigStore
