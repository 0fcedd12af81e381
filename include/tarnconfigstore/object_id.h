// Names of configuration objects and of the objects inside them.
#pragma once

#include "tarnconfigstore/export.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>

namespace TarnConfigStore {

/// The component of the host's own configuration objects, "tarn".
TARN_CONFIG_STORE_EXPORT extern const std::string kDefaultComponent;
/// The only store namespace there is: the empty text.
TARN_CONFIG_STORE_EXPORT extern const std::string sGlobalNamespace;
/// An empty text, for identifier fields that are left empty.
TARN_CONFIG_STORE_EXPORT extern const std::string kEmptyString;
/// The revision of an object that has no stored row.
constexpr std::int32_t kDefaultRevision = -1;

/// Names one configuration object: the type (component, group, key) and, for a type that has
/// several instances, the instance id. A plain value: any field may be empty; whether an identifier
/// fits its type is checked by the operation that is given it. Concurrent reads are safe.
struct TARN_CONFIG_STORE_EXPORT ConfigStoreObjectId {
  std::string key;         ///< name of the configuration type
  std::string component;   ///< owner of the type, usually kDefaultComponent
  std::string group;       ///< group within the component
  std::string instanceId;  ///< empty for a singleton, and where any instance is meant

  /// Mind the order: the key comes first, the component last.
  ConfigStoreObjectId(const std::string& objectKey, const std::string& objectGroup,
                      const std::string& objectComponent);
  ConfigStoreObjectId(const std::string& objectKey, const std::string& objectGroup,
                      const std::string& objectComponent, const std::string& objectInstanceId);
  /// A null pointer raises std::logic_error, as constructing a std::string from it does.
  ConfigStoreObjectId(const char* objectKey, const char* objectGroup, const char* objectComponent);
  ConfigStoreObjectId(const char* objectKey, const char* objectGroup, const char* objectComponent,
                      const char* objectInstanceId);

  /// The form that messages and logs use: "comp C grp G key K", and " id I" where there is an
  /// instance id.
  std::string toString() const;
};

/// Equal when all four fields are equal, byte by byte.
TARN_CONFIG_STORE_EXPORT bool operator==(const ConfigStoreObjectId& a,
                                         const ConfigStoreObjectId& b);
inline bool operator!=(const ConfigStoreObjectId& a, const ConfigStoreObjectId& b) {
  return !(a == b);
}

/// Hash of key + group + component + instance id with nothing between them, so that identifiers
/// that differ only in where one field ends and the next begins hash alike (equality tells them
/// apart).
TARN_CONFIG_STORE_EXPORT std::uint64_t hashCsoId(const ConfigStoreObjectId& id);

/// Names an object inside a configuration object: the member that holds it and, where the member
/// holds instances, the instance id (empty: all instances).
struct TARN_CONFIG_STORE_EXPORT SubObjectId {
  std::string key;
  std::string instanceId;

  explicit SubObjectId(std::string subObjectKey, std::string subObjectInstanceId = std::string());

  /// "key K", and " id I" where there is an instance id.
  std::string toString() const;
};

TARN_CONFIG_STORE_EXPORT bool operator==(const SubObjectId& a, const SubObjectId& b);
inline bool operator!=(const SubObjectId& a, const SubObjectId& b) {
  return !(a == b);
}

/// A fresh instance id: the canonical text of a random (version 4) UUID, RFC 4122. Thread-safe.
TARN_CONFIG_STORE_EXPORT std::string GenerateInstanceId();

}  // namespace TarnConfigStore

template <>
struct std::hash<TarnConfigStore::ConfigStoreObjectId> {
  std::size_t operator()(const TarnConfigStore::ConfigStoreObjectId& id) const {
    return TarnConfigStore::hashCsoId(id);
  }
};
