// Configuration that takes effect at the next boot.
#pragma once

#include "tarnconfigstore/config_store_object.h"
#include "tarnconfigstore/filter_spec_object.h"

#include <memory>
#include <vector>

namespace TarnConfigStore {

/// What a staged change does at the next boot.
enum class NextBootAction {
  SET,              ///< replaces the content of an instance
  DELETE,           ///< deletes the object, with all its instances
  DELETE_INSTANCE,  ///< deletes one instance
};

/// Stages changes of types that need a reboot. They are stored beside the current configuration,
/// which stays as it is until ApplyNextBootConfig (apply_next_boot.h) applies them. An instance has
/// at most one staged change, the last one.
///
/// ConfigStore::GetNextBootStore returns one. It shares the store's connection, and so its
/// transaction, and stays usable when that store is gone.
///
/// What holds for every operation:
/// - An empty object or filter handle is logged (code 1041). The call returns an empty result and
///   writes nothing.
/// - A type that is not installed throws ConfigStoreException 1037 with the identifier's text.
///   ValidationException 2000 is thrown for a type that needs no reboot ("API should only be
///   invoked for configurations tagged @rebootRequiredConfigStore."), for an instance id where the
///   type has no instances, for none where it has some, and by operations on several instances for
///   a type without instances. All of this comes before the database is read.
/// - A failure of the database throws ConfigStoreException 2000.
/// - A write runs in a transaction of its own, nested in the caller's: a write that throws has
///   written nothing. While the key/value entry "BOOT_MODE" is "1" it throws ConfigStoreException
///   2000 "Tarn host is being remediated by ORC, cannot set next-boot configuration.". Setting and
///   deleting set "BOOT_MODE" to "4".
/// - Nothing is announced to the management daemon: no configuration has changed yet.
///
/// Thread safety is that of ConfigStore.
///
/// The order of the virtual operations is part of the interface. There is no virtual destructor:
/// the shared pointer that GetNextBootStore returns destroys the store. Never delete one through a
/// plain pointer.
class TARN_CONFIG_STORE_EXPORT NextBootStore {
 public:
  /// Reads what is staged for an object.
  /// \return the staged content, without times and with revision 0; an empty pointer when there is
  ///         none, or a deletion is staged
  virtual std::shared_ptr<ConfigStoreObject> Get(const ConfigStoreObjectId& csoId) = 0;

  /// Stages the content of an object. At the next boot it replaces the user, the vital and the
  /// cached value. The data is cleaned and checked as ConfigStore::Set does. UpdateNextBoot
  /// (next_boot_update.h) stages a change of some members instead.
  /// \throws ValidationException 1089 with every finding, when the data does not fit the type
  /// \throws ValidationException 2000 "Empty object cannot be set for configurations tagged
  ///         @rebootRequiredConfigStore."
  virtual void Set(std::shared_ptr<ConfigStoreObject> object) = 0;

  /// Stages the deletion of an object or of an instance. It need not be stored.
  virtual void Delete(const ConfigStoreObjectId& csoId) = 0;

  /// Removes every staged change of a type.
  /// \param csoId  names the type; its instance id is ignored
  virtual void Reset(const ConfigStoreObjectId& csoId) = 0;

  /// Removes every staged change of a type, and stages the content of these instances. Throws as
  /// the writes of several instances of ConfigStore, and as Set for each object.
  virtual void SetInstances(std::vector<std::shared_ptr<ConfigStoreObject>> objects) = 0;

  /// Reads the staged content of instances.
  /// \return those that the filter keeps, each as Get returns it, in the order of their ids
  virtual std::vector<std::shared_ptr<ConfigStoreObject>> GetInstances(
      const std::shared_ptr<FilterSpecObject>& filter) = 0;

  /// Stages the deletion of the instances of the current configuration that the filter keeps. A
  /// filter without conditions means all of them, or the one that its identifier names. Instances
  /// that are staged, and not stored yet, stay staged.
  virtual void DeleteInstances(const std::shared_ptr<FilterSpecObject>& filter) = 0;

 protected:
  NextBootStore() = default;
  NextBootStore(const NextBootStore&) = default;
  NextBootStore& operator=(const NextBootStore&) = default;
  ~NextBootStore() = default;
};

}  // namespace TarnConfigStore
