// Names of configuration objects, and of the objects inside them.
#pragma once

#include "tarnconfigstore/export.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>

namespace TarnConfigStore {

/// The component of the host's own configuration objects, "tarn".
TARN_CONFIG_STORE_EXPORT extern const std::string kDefaultComponent;
/// The only store namespace there is, the empty text. See ConfigStore::GetStore.
TARN_CONFIG_STORE_EXPORT extern const std::string sGlobalNamespace;
/// The empty text, for identifier fields that are left empty.
TARN_CONFIG_STORE_EXPORT extern const std::string kEmptyString;
/// The revision of an object that has no stored row.
constexpr std::int32_t kDefaultRevision = -1;

/// Names one configuration object: its type (component, group, key) and, where the type has
/// instances, one instance.
///
/// A plain value. Any field may be empty: the operation that is given an identifier checks it
/// against the type. Concurrent reads are safe.
struct TARN_CONFIG_STORE_EXPORT ConfigStoreObjectId {
  std::string key;         ///< name of the configuration type
  std::string component;   ///< owner of the type, usually kDefaultComponent
  std::string group;       ///< group within the component
  std::string instanceId;  ///< empty for a type without instances, or to name all instances

  /// Mind the order of the arguments: key, group, component.
  ConfigStoreObjectId(const std::string& objectKey, const std::string& objectGroup,
                      const std::string& objectComponent);
  ConfigStoreObjectId(const std::string& objectKey, const std::string& objectGroup,
                      const std::string& objectComponent, const std::string& objectInstanceId);
  /// The same from NUL-terminated texts.
  /// \throws std::logic_error for a null pointer, as std::string does
  ConfigStoreObjectId(const char* objectKey, const char* objectGroup, const char* objectComponent);
  ConfigStoreObjectId(const char* objectKey, const char* objectGroup, const char* objectComponent,
                      const char* objectInstanceId);

  /// \return the text that messages and logs use: "comp COMPONENT grp GROUP key KEY", and
  ///         " id INSTANCE" where there is an instance id
  std::string toString() const;
};

/// Equal when all four fields are equal, byte by byte.
TARN_CONFIG_STORE_EXPORT bool operator==(const ConfigStoreObjectId& a,
                                         const ConfigStoreObjectId& b);
inline bool operator!=(const ConfigStoreObjectId& a, const ConfigStoreObjectId& b) {
  return !(a == b);
}

/// \return the hash that std::hash<std::string> gives for key + group + component + instance id.
///         Nothing separates the fields, so "ab" + "c" and "a" + "bc" hash alike; equality tells
///         such identifiers apart
TARN_CONFIG_STORE_EXPORT std::uint64_t hashCsoId(const ConfigStoreObjectId& id);

/// Names an object inside a configuration object. A plain value; concurrent reads are safe.
struct TARN_CONFIG_STORE_EXPORT SubObjectId {
  std::string key;         ///< the member that holds the object
  std::string instanceId;  ///< empty where the member holds one object, or to name all instances

  explicit SubObjectId(std::string subObjectKey, std::string subObjectInstanceId = std::string());

  /// \return "key KEY", and " id INSTANCE" where there is an instance id
  std::string toString() const;
};

/// Equal when both fields are equal, byte by byte.
TARN_CONFIG_STORE_EXPORT bool operator==(const SubObjectId& a, const SubObjectId& b);
inline bool operator!=(const SubObjectId& a, const SubObjectId& b) {
  return !(a == b);
}

/// Makes a fresh instance id. Thread-safe.
/// \return the 36-character text of a random (version 4) UUID, RFC 4122
TARN_CONFIG_STORE_EXPORT std::string GenerateInstanceId();

}  // namespace TarnConfigStore

/// Identifiers as keys of unordered containers; see hashCsoId.
template <>
struct std::hash<TarnConfigStore::ConfigStoreObjectId> {
  std::size_t operator()(const TarnConfigStore::ConfigStoreObjectId& id) const {
    return TarnConfigStore::hashCsoId(id);
  }
};
