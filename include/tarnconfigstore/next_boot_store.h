// Configuration that takes effect at the next boot.
#pragma once

#include "tarnconfigstore/config_store_object.h"
#include "tarnconfigstore/filter_spec_object.h"

#include <memory>
#include <vector>

namespace TarnConfigStore {

/// What a staged change does at the next boot.
enum class NextBootAction {
  SET,              ///< gives an instance new content
  DELETE,           ///< deletes the object, all instances of it
  DELETE_INSTANCE,  ///< deletes one instance
};

/// Stages changes of types that need a reboot: they are recorded beside the current configuration,
/// which stays as it is until ApplyNextBootConfig (apply_next_boot.h) makes them current. At most one
/// change is staged for each instance, the last one. Obtained from ConfigStore::GetNextBootStore,
/// whose database connection, and so whose transaction, it shares; it stays of use when that store
/// is gone. The order of the operations is part of the interface.
///
/// What holds for every operation:
/// - An empty object or filter handle is logged and the call returns quietly.
/// - A type that is not installed raises ConfigStoreException 1037 with the identifier's text; one
///   that needs no reboot, ValidationException 2000 "API should only be invoked for configurations
///   tagged @rebootRequiredConfigStore."; an instance id where the type has none, or none where it
///   has one, ValidationException 2000. All before the database is touched.
/// - A write runs in a transaction of its own, nested in the caller's; after a failure the store is
///   as it was before the call. It raises ConfigStoreException 2000 "Tarn host is being remediated
///   by ORC, cannot set next-boot configuration." while the key/value entry "BOOT_MODE" is "1", and
///   the same code for a failure of the database. Setting and deleting write "4" to "BOOT_MODE".
/// - Nobody is notified: nothing has changed yet.
///
/// There is no virtual destructor, on purpose: the shared handle that GetNextBootStore returns
/// destroys the store. Never delete one through a plain pointer.
class TARN_CONFIG_STORE_EXPORT NextBootStore {
 public:
  /// The content that is staged for an object; an empty pointer when there is none, also when a
  /// delete is staged. It has no times, and revision 0.
  virtual std::shared_ptr<ConfigStoreObject> Get(const ConfigStoreObjectId& csoId) = 0;

  /// Stages an object's content: at the next boot it replaces the user, vital and cached values. The
  /// data is cleaned of empty content and checked as ConfigStore::Set does. Raises
  /// ValidationException 1089 with every finding, and 2000 "Empty object cannot be set for
  /// configurations tagged @rebootRequiredConfigStore.".
  virtual void Set(std::shared_ptr<ConfigStoreObject> object) = 0;

  /// Stages the deletion of an object or instance, which need not be there.
  virtual void Delete(const ConfigStoreObjectId& csoId) = 0;

  /// Takes back whatever is staged for a type, all its instances whatever the identifier's instance
  /// id, which is not checked.
  virtual void Reset(const ConfigStoreObjectId& csoId) = 0;

  /// Takes back whatever is staged for a type and stages these instances instead. Raises as the bulk
  /// writes of ConfigStore, and as Set for each object.
  virtual void SetInstances(std::vector<std::shared_ptr<ConfigStoreObject>> objects) = 0;

  /// The staged instances of a type that a filter keeps, each as Get returns it, in the order of
  /// their ids.
  virtual std::vector<std::shared_ptr<ConfigStoreObject>> GetInstances(
      const std::shared_ptr<FilterSpecObject>& filter) = 0;

  /// Stages the deletion of those instances of the current configuration that a filter keeps.
  /// Without conditions: of all, or of the one that the filter's identifier names. Instances that
  /// are only staged so far stay staged.
  virtual void DeleteInstances(const std::shared_ptr<FilterSpecObject>& filter) = 0;

 protected:
  NextBootStore() = default;
  NextBootStore(const NextBootStore&) = default;
  NextBootStore& operator=(const NextBootStore&) = default;
  ~NextBootStore() = default;
};

}  // namespace TarnConfigStore
