// Changing what was read, unless somebody else has changed it meanwhile.
//
//     for (bool written = false; !written;) {
//       const ObjectForChange read = GetForChange(*store, id);
//       ... work out from read.object what is to be written ...
//       written = WriteIfUnchanged(*store, {read.state}, [&] { store->Set(object, EXTERNAL); }).empty();
//     }
//
// What is compared is all that the store holds of the object: revision, times, version, whether it is
// confirmed, the text of each of its parts, and what is staged for the next boot. A revision alone says
// less: values that are confirmed, dropped or divided again count none, nor does what is staged, and an
// object that was deleted and made again begins at 1. What was changed and is byte for byte as it was,
// its revision and the second of its last change too, passes for unchanged.
//
// The store has to be one that ConfigStore::GetStore made; else InvalidArgumentException 2000.
// Thread-safe, as far as the store's transactions are (config_store.h).
#pragma once

#include "tarnconfigstore/config_store.h"
#include "tarnconfigstore/export.h"
#include "tarnconfigstore/object_id.h"

#include <functional>
#include <memory>
#include <vector>

namespace TarnConfigStore {

class StoredStateImpl;

/// What the store held of one object at one moment, to be compared later: on any store, and in another
/// thread too. That it held nothing is a state as well. A value that nobody changes; copies share it.
class TARN_CONFIG_STORE_EXPORT StoredState {
 public:
  const ConfigStoreObjectId& GetConfigStoreObjectId() const;
  /// \return the number of writes; kDefaultRevision where the object had no row
  std::int32_t GetRevision() const;

 private:
  friend class StoredStateImpl;
  explicit StoredState(std::shared_ptr<const StoredStateImpl> state);

  std::shared_ptr<const StoredStateImpl> state_;
};

/// An object, and the state that it was read from.
struct ObjectForChange {
  std::shared_ptr<ConfigStoreObject> object;  ///< as ConfigStore::Get; may be empty
  StoredState state;
};

/// Reads an object as ConfigStore::Get does, and its state. Throws as that.
TARN_CONFIG_STORE_EXPORT ObjectForChange GetForChange(ConfigStore& store,
                                                      const ConfigStoreObjectId& csoId);

/// Reads the state alone. What is read of the object afterwards, in whatever way, is as in the state or
/// newer: comparing finds each change that came after. Throws as ConfigStore::Get.
TARN_CONFIG_STORE_EXPORT StoredState GetState(ConfigStore& store, const ConfigStoreObjectId& csoId);

/// Tells which objects the store does not hold any more as they were. The answer stays true as long as
/// a transaction is open on the store that was begun before: nobody else writes then.
/// \return their identifiers, in the order given; empty where all are unchanged
/// \throws ConfigStoreException 2000 for a failure of the database
[[nodiscard]] TARN_CONFIG_STORE_EXPORT std::vector<ConfigStoreObjectId> FindChanged(
    ConfigStore& store, const std::vector<StoredState>& states);

/// Compares and writes in one transaction, nested in the caller's.
/// \param states  of all objects that the writes were worked out from
/// \param write   writes through the store; not called where an object has changed. What it throws
///                undoes all that it wrote, and passes through
/// \return what FindChanged does; empty: `write` was called, and what it wrote is committed
/// \throws ConfigStoreException 2000 "Failed to start a transaction." or "Commit transaction failed.",
///         and for any other failure of the database; nothing is written then
[[nodiscard]] TARN_CONFIG_STORE_EXPORT std::vector<ConfigStoreObjectId> WriteIfUnchanged(
    ConfigStore& store, const std::vector<StoredState>& states, const std::function<void()>& write);

}  // namespace TarnConfigStore
