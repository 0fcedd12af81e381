// A configuration object: its data, and what the store knows about it.
#pragma once

#include "tarnconfigstore/store_object.h"

#include <cstdint>
#include <memory>
#include <string>

namespace TarnConfigStore {

class ConfigStoreObjectImpl;

/// One configuration object of one type. Callers build it from an identifier or get it from a
/// store, change it through the accessors of StoreObject, and hand it back to a store. Passed
/// around as a shared pointer; thread safety is that of StoreObject.
class TARN_CONFIG_STORE_EXPORT ConfigStoreObject : public StoreObject {
 public:
  /// A new object without data, but for the member that carries the instance id in types that have
  /// one. Raises ConfigStoreException 1037, with the identifier's text, when the type is not
  /// installed.
  explicit ConfigStoreObject(const ConfigStoreObjectId& id);

  /// For the library's own readers.
  explicit ConfigStoreObject(std::shared_ptr<ConfigStoreObjectImpl> const& implementation);

  /// Version of the type's schema under which the object was stored; empty for a new object.
  std::string GetVersion() const;
  /// Time of the first write, "YYYY-MM-DD HH:MM:SS" in UTC; empty for a new object.
  std::string GetCreationTime() const;
  /// Time of the last change, in the same form; empty for a new object.
  std::string GetModifiedTime() const;
  /// Number of writes; kDefaultRevision for a new object.
  std::int32_t GetRevision() const;

  /// The data as compact JSON text, without the generated identifiers ("cs_generated_id") that the
  /// store keeps inside.
  std::string GetData() const;

  /// For the library's own use.
  const std::shared_ptr<ConfigStoreObjectImpl>& GetImplementation() const { return object_; }

 private:
  std::shared_ptr<ConfigStoreObjectImpl> object_;
};

}  // namespace TarnConfigStore
