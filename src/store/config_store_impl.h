// The store of current configuration.
#pragma once

#include "tarnconfigstore/config_store.h"

#include "platform/db_store.h"

#include "objects/handles.h"

namespace TarnConfigStore {

/// Contracts as for ConfigStore. Holds nothing but its connection: every operation goes to the
/// database.
class ConfigStoreImpl final : public ConfigStore {
 public:
  explicit ConfigStoreImpl(DBStore::ConnectionHandle connection);

  std::shared_ptr<NextBootStore> GetNextBootStore() override;
  std::shared_ptr<ConfigStoreObject> Get(const ConfigStoreObjectId& csoId) override;
  std::shared_ptr<ConfigStoreObject> GetDefaultConfig(const ConfigStoreObjectId& csoId) override;
  std::vector<std::shared_ptr<ConfigStoreObject>> GetDefaultConfigInstances(
      const std::shared_ptr<FilterSpecObject>& filter) override;
  std::list<std::string> GetInstanceIds(const ConfigStoreObjectId& csoId) override;
  void Set(std::shared_ptr<ConfigStoreObject> object, const USERDATA_CONTEXT& context) override;
  void SetUserData(std::shared_ptr<ConfigStoreObject> object,
                   const USERDATA_CONTEXT& context) override;
  void SetVitalData(std::shared_ptr<ConfigStoreObject> object) override;
  void SetCachedData(std::shared_ptr<ConfigStoreObject> object) override;
  void Update(std::shared_ptr<ConfigStoreObject> object, const USERDATA_CONTEXT& context) override;
  void Delete(const ConfigStoreObjectId& csoId) override;
  void DeleteInstances(const std::shared_ptr<FilterSpecObject>& filter) override;
  std::vector<std::shared_ptr<ConfigStoreObject>> GetInstances(
      const std::shared_ptr<FilterSpecObject>& filter) override;
  void SetInstances(std::vector<std::shared_ptr<ConfigStoreObject>> objects,
                    const USERDATA_CONTEXT& context) override;
  void SetUserDataInstances(std::vector<std::shared_ptr<ConfigStoreObject>> objects,
                            const USERDATA_CONTEXT& context) override;
  void SetCachedDataInstances(std::vector<std::shared_ptr<ConfigStoreObject>> objects) override;
  void SetVitalDataInstances(std::vector<std::shared_ptr<ConfigStoreObject>> objects) override;
  std::int32_t GetRevision(const ConfigStoreObjectId& csoId) override;
  std::list<std::pair<std::string, std::int32_t>> GetInstancesRevision(
      const ConfigStoreObjectId& csoId) override;
  int BeginTransaction() override;
  int CommitTransaction() override;
  int CancelTransaction() noexcept override;
  std::vector<ErrorInfo> Validate(std::shared_ptr<ConfigStoreObject> object) override;
  ~ConfigStoreImpl() override;

 private:
  using ValidateData = void (*)(const SchemaHandle&, const ObjectHandle&);
  using DeleteValues = void (*)(const ConfigStoreObjectId&, const DBStore::ConnectionHandle&);
  using WriteConfirmable = void (*)(const ObjectList&, const DBStore::ConnectionHandle&, bool,
                                    const SchemaHandle&);
  using WriteValues = void (*)(const ObjectList&, const DBStore::ConnectionHandle&,
                               const SchemaHandle&);

  /// Replaces one value of all instances of the first object's type, which loses it where it is not
  /// listed: checks everything, then deletes and writes in a transaction, then announces it.
  /// \param writeWithFlag, write  one of them is null
  void SetDataInstancesInternal(ObjectList objects, ValidateData validate,
                                DeleteValues deleteExisting, WriteConfirmable writeWithFlag,
                                WriteValues write, const SchemaHandle& schema,
                                const char* operation);

  // The steps of SetVitalData and SetCachedData, and of their bulk siblings.
  void SetPart(const std::shared_ptr<ConfigStoreObject>& object, ValidateData validate,
               WriteValues write, const char* operation);
  void SetPartInstances(ObjectList objects, ValidateData validate, DeleteValues deleteExisting,
                        WriteValues write, const char* operation);

  friend const DBStore::ConnectionHandle& ConnectionOf(ConfigStore& store);

  DBStore::ConnectionHandle connection_;
};

/// The connection of a store, and so its transaction. Raises InvalidArgumentException 2000 for a store
/// that GetStore has not made.
const DBStore::ConnectionHandle& ConnectionOf(ConfigStore& store);

}  // namespace TarnConfigStore
