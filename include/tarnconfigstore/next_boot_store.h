// Configuration that takes effect at the next boot.
#pragma once

#include "tarnconfigstore/config_store_object.h"
#include "tarnconfigstore/filter_spec_object.h"

#include <memory>
#include <vector>

namespace TarnConfigStore {

/// Stages changes of types that need a reboot. Obtained from ConfigStore::GetNextBootStore, whose
/// database connection, and so whose transaction, it shares. The order of the operations is part of
/// the interface.
///
/// There is no virtual destructor, on purpose: the shared handle that GetNextBootStore returns
/// destroys the store. Never delete one through a plain pointer.
///
/// Staging is not available yet: every operation raises ConfigStoreException 2000
/// "NextBootStore::NAME is not available yet".
class TARN_CONFIG_STORE_EXPORT NextBootStore {
 public:
  virtual std::shared_ptr<ConfigStoreObject> Get(const ConfigStoreObjectId& csoId) = 0;
  virtual void Set(std::shared_ptr<ConfigStoreObject> object) = 0;
  virtual void Delete(const ConfigStoreObjectId& csoId) = 0;
  virtual void Reset(const ConfigStoreObjectId& csoId) = 0;
  virtual void SetInstances(std::vector<std::shared_ptr<ConfigStoreObject>> objects) = 0;
  virtual std::vector<std::shared_ptr<ConfigStoreObject>> GetInstances(
      const std::shared_ptr<FilterSpecObject>& filter) = 0;
  virtual void DeleteInstances(const std::shared_ptr<FilterSpecObject>& filter) = 0;

 protected:
  NextBootStore() = default;
  NextBootStore(const NextBootStore&) = default;
  NextBootStore& operator=(const NextBootStore&) = default;
  ~NextBootStore() = default;
};

}  // namespace TarnConfigStore
