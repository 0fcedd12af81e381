// Installing, checking and showing configuration types.
#pragma once

#include "tarnconfigstore/exceptions.h"
#include "tarnconfigstore/export.h"

#include <string>
#include <vector>

namespace TarnConfigStore {

/// What became of one type file.
enum class TypeOutcome {
  INVALID,     ///< the file breaks a rule, or stored objects no longer fit: errors and misfits tell
  VALID,       ///< checked and found good; nothing written
  INSTALLED,   ///< installed for the first time
  UPGRADED,    ///< took the place of an older version, or of an older text of the same version
  DOWNGRADED,  ///< took the place of a newer version, as was forced
  UNCHANGED,   ///< was installed already, word for word
};

/// The result for one type file.
struct TypeReport {
  std::string path;                   ///< the file
  std::string component, group, key;  ///< the type, as far as the file could be read
  std::string version;
  TypeOutcome outcome = TypeOutcome::INVALID;
  std::vector<ErrorInfo> errors;  ///< field: JSON Pointer (RFC 6901) into the file

  /// Stored objects that the type, as the file describes it, no longer allows; looked for when an
  /// installed type changes. field: "COMPONENT/GROUP/KEY[/INSTANCE]#" and the JSON Pointer into the
  /// object.
  std::vector<ErrorInfo> misfits;
};

/// One installed type.
struct InstalledType {
  std::string component, group, key;
  std::string version;
  std::string
      flags;  ///< names of the type's flags, separated by blanks: rebootRequired, shared and so on
  bool hasInstances = false;
};

struct InstallOptions {
  bool checkOnly = false;  ///< check everything, write nothing
  /// Allow a version older than the installed one, and stored objects that no longer fit.
  bool force = false;
};

/// Checks type files and installs them all, or none if one of them is bad: each file is judged
/// against the rules for type files, every default against its schema. The types' shipped objects
/// are written first and their schemas last, so an interrupted call can simply be run again.
/// Running processes see the new types at their next operation.
/// \param paths  files, or directories
/// whose "*.json" files are taken in the order of their names
/// \return a report for each file; when
/// one is INVALID nothing was written.
/// Raises InvalidArgumentException 1081 for a path that cannot
/// be read, and ConfigStoreException 2000 for a failure of the databases, which leaves the types as
/// they were.
TARN_CONFIG_STORE_EXPORT std::vector<TypeReport> InstallTypes(const std::vector<std::string>& paths,
                                                              const InstallOptions& options);

/// Checks type files without a store. Same reports, VALID or INVALID.
TARN_CONFIG_STORE_EXPORT std::vector<TypeReport> CheckTypes(const std::vector<std::string>& paths);

/// All installed types, sorted. Raises ConfigStoreException 2000 when the schema store cannot be
/// read.
TARN_CONFIG_STORE_EXPORT std::vector<InstalledType> ListTypes();

/// The type file of an installed type, as JSON text in the order of its members.
/// Raises ConfigStoreException 1037 when the type is not installed.
TARN_CONFIG_STORE_EXPORT std::string GetTypeFile(const std::string& component,
                                                 const std::string& group, const std::string& key);

/// Removes a type and its shipped objects. With stored objects of the type left, raises
/// ConfigStoreException 2000 that says how many, unless forced; the objects stay stored either way.
/// Raises ConfigStoreException 1037 when the type is not installed.
TARN_CONFIG_STORE_EXPORT void RemoveType(const std::string& component, const std::string& group,
                                         const std::string& key, bool force);

}  // namespace TarnConfigStore
