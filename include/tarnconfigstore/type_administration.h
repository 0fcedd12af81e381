// Installing, checking, listing and removing configuration types.
//
// A type is described by a type file: JSON (RFC 8259) with a JSON Schema of draft-07
// (https://json-schema.org/draft-07) and annotations. All functions are thread-safe. Running
// processes use changed types at their next operation.
#pragma once

#include "tarnconfigstore/exceptions.h"
#include "tarnconfigstore/export.h"

#include <string>
#include <vector>

namespace TarnConfigStore {

/// What became of one type file.
enum class TypeOutcome {
  INVALID,     ///< it breaks a rule, or stored objects do not fit: see errors and misfits
  VALID,       ///< it is good; nothing was written
  INSTALLED,   ///< the type is new
  UPGRADED,    ///< it replaced an older version, or another text of the same version
  DOWNGRADED,  ///< it replaced a newer version, which was forced
  UNCHANGED,   ///< the same text was installed already
};

/// The result for one type file.
struct TypeReport {
  std::string path;                   ///< the file
  std::string component, group, key;  ///< the type, as far as the file could be read
  std::string version;
  TypeOutcome outcome = TypeOutcome::INVALID;
  /// What is wrong with the file; the field is a JSON Pointer (RFC 6901) into it.
  std::vector<ErrorInfo> errors;
  /// Stored objects that do not fit the type as the file describes it. They are looked for when an
  /// installed type changes. The field is "COMPONENT/GROUP/KEY#POINTER" or
  /// "COMPONENT/GROUP/KEY/INSTANCE#POINTER", with a JSON Pointer into the object.
  std::vector<ErrorInfo> misfits;
};

/// One installed type.
struct InstalledType {
  std::string component, group, key;
  std::string version;
  /// The flags that are set, separated by blanks: rebootRequired, bootAccessible,
  /// confirmedDuringUpgrade, shared.
  std::string flags;
  bool hasInstances = false;
};

/// How InstallTypes installs.
struct InstallOptions {
  bool checkOnly = false;  ///< checks everything and writes nothing
  bool force = false;      ///< allows an older version, and stored objects that do not fit
};

/// Checks type files, and installs all of them, or none when one is bad. Each file is checked
/// against the rules for type files, and each default against its schema.
///
/// The shipped objects are written first and the types last. A call that is interrupted can be
/// repeated.
/// \param paths  files, or directories whose "*.json" files are taken in the order of their names
/// \return a report for each file. When one of them is INVALID, nothing was written
/// \throws InvalidArgumentException 1081, with the path, when one cannot be read
/// \throws ConfigStoreException 2000 for a failure of a database. The types are then as they were;
///         the shipped objects may be the new ones
TARN_CONFIG_STORE_EXPORT std::vector<TypeReport> InstallTypes(const std::vector<std::string>& paths,
                                                              const InstallOptions& options);

/// Checks type files without a store.
/// \param paths  as for InstallTypes
/// \return a report for each file, VALID or INVALID
/// \throws InvalidArgumentException 1081, with the path, when one cannot be read
TARN_CONFIG_STORE_EXPORT std::vector<TypeReport> CheckTypes(const std::vector<std::string>& paths);

/// \return all installed types, sorted by component, group and key
/// \throws ConfigStoreException 2000 when the schema store cannot be read
TARN_CONFIG_STORE_EXPORT std::vector<InstalledType> ListTypes();

/// \return the type file of an installed type as compact JSON text, members in the order of the
///         file
/// \throws ConfigStoreException 1037 when the type is not installed
/// \throws ConfigStoreException 2000 when the schema store cannot be read
TARN_CONFIG_STORE_EXPORT std::string GetTypeFile(const std::string& component,
                                                 const std::string& group, const std::string& key);

/// Removes a type, the objects that it shipped with, and changes of it that are staged, since nobody
/// could apply them or take them back without it. Stored objects stay stored.
/// \param force  removes the type even where objects of it are stored or changes staged
/// \throws ConfigStoreException 1037 when the type is not installed
/// \throws ConfigStoreException 2000 when objects of the type are stored or changes staged; the
///         message has their numbers
/// \throws ConfigStoreException 2000 "Tarn host is being remediated by ORC, cannot set next-boot
///         configuration." when changes are staged while "BOOT_MODE" is "1"
/// \throws ConfigStoreException 2000 for a failure of a database. The type then stays installed;
///         its shipped objects may be removed
TARN_CONFIG_STORE_EXPORT void RemoveType(const std::string& component, const std::string& group,
                                         const std::string& key, bool force);

}  // namespace TarnConfigStore
