// Installing, checking, listing and removing configuration types.
//
// A type is described by a type file: JSON (RFC 8259) with a JSON Schema of draft-07
// (https://json-schema.org/draft-07) and annotations. All functions are thread-safe. Running
// processes use changed types at their next operation.
#pragma once

#include "tarnconfigstore/exceptions.h"
#include "tarnconfigstore/export.h"
#include "tarnconfigstore/object_id.h"

#include <string>
#include <vector>

namespace TarnConfigStore {

/// Where data of an object stands.
enum class DataPlace {
  CURRENT,      ///< in the current configuration
  PENDING,      ///< in the object's row, for the next boot
  UNCONFIRMED,  ///< in the object's row, written during an upgrade that nobody has confirmed yet
  STAGED,       ///< in the next-boot store
};

/// Something in an object that its type does not allow. As an ErrorInfo it says so in one line:
/// field is "COMPONENT/GROUP/KEY[/INSTANCE]#" and the pointer, error begins with "pending for the
/// next boot: ", "unconfirmed: " or "staged: " where that is where it stands.
struct Misfit : ErrorInfo {
  ConfigStoreObjectId object;
  DataPlace place = DataPlace::CURRENT;
  std::string pointer;  ///< JSON Pointer into the object, "/" for the object as a whole
};

/// What was done with one stored row, so that its members stand in the parts (user, vital, cached)
/// that its type says now. Whoever reads the whole object, now or once what waits in the row is
/// confirmed or dropped, reads the same as before; where both cannot be had, reading the same goes
/// first. Values written by automatic configuration stay where they are: they hide no others.
enum class RowOutcome {
  RENEWED,  ///< every member stood in its part: only the version was written
  DIVIDED,  ///< members moved to their parts, and the version was written
  /// What is current was divided. What waits in the row differs from it, and keeps its members where
  /// they are; the row keeps its version. UpgradeRows does the rest once the boot or the upgrade is
  /// confirmed or dropped.
  PARTLY_DIVIDED,
  /// Left as it was: dividing it would change what is read, as a rule because members that are
  /// current are missing in what waits. Until UpgradeRows can divide it, as above, a value written to
  /// the part of a member that moved may be hidden by the one that could not move.
  LEFT,
  UNFIT,  ///< left as it was: misfits tell why
};

/// One stored row that was behind its type.
struct RowReport {
  ConfigStoreObjectId object;
  RowOutcome outcome = RowOutcome::RENEWED;
  std::string version;          ///< of the type's schema when the row was written before
  std::vector<Misfit> misfits;  ///< of UNFIT
};

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
  /// What in the file is hardly what was meant, though it means what it says: places as in errors. A
  /// type with warnings is good, and is installed.
  std::vector<ErrorInfo> warnings;
  /// What the type, as the file describes it, does not allow in its objects, current, pending,
  /// unconfirmed or staged; looked for when a type is installed or changes.
  std::vector<Misfit> misfits;
  /// The stored rows with members that the type moves to another part: DIVIDED, PARTLY_DIVIDED or
  /// LEFT, as it was done or, where nothing was written, would be. Rows with misfits, installed by
  /// force, keep their version. Empty when the outcome is INVALID.
  std::vector<RowReport> divided;
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
/// against the rules for type files, each default against its schema, and each stored and staged
/// object against the type. Stored rows whose members the type moves to another part are divided
/// again: that is no write of the objects, so revision and creation time stay, and nothing is
/// announced to the management daemon.
///
/// Rows and shipped objects are written first and the types last. A call that is interrupted can be
/// repeated. Running processes see the new types at their next operation.
/// \param paths  files, or directories whose "*.json" files are taken in the order of their names
/// \return a report for each file. When one of them is INVALID, nothing was written
/// \throws InvalidArgumentException 1081, with the path, when one cannot be read
/// \throws ConfigStoreException 2000 for a failure of a database. The types are then as they were;
///         the shipped objects may be the new ones
TARN_CONFIG_STORE_EXPORT std::vector<TypeReport> InstallTypes(const std::vector<std::string>& paths,
                                                              const InstallOptions& options);

/// What becomes of a path that cannot be read.
enum class UnreadFile : int {
  RAISES = 0,      ///< nothing is told of the others
  IS_INVALID = 1,  ///< it has a report, with the reason as its one error
};

/// Checks type files without a store.
/// \param paths  as for InstallTypes
/// \return a report for each file, VALID or INVALID
/// \throws InvalidArgumentException 1081, with the path, when one cannot be read and that RAISES
TARN_CONFIG_STORE_EXPORT std::vector<TypeReport> CheckTypes(const std::vector<std::string>& paths,
                                                            UnreadFile unread = UnreadFile::RAISES);

/// \return all installed types, sorted by component, group and key
/// \throws ConfigStoreException 2000 when the schema store cannot be read
TARN_CONFIG_STORE_EXPORT std::vector<InstalledType> ListTypes();

/// \return the type file of an installed type as compact JSON text, members in the order of the
///         file
/// \throws ConfigStoreException 1037 when the type is not installed
/// \throws ConfigStoreException 2000 when the schema store cannot be read
TARN_CONFIG_STORE_EXPORT std::string GetTypeFile(const std::string& component,
                                                 const std::string& group, const std::string& key);

/// Describes whole documents of configuration as JSON Schema (draft-07, its own keywords alone), with
/// which an editor completes and checks them. A document is
///
///     {"format": 1, "config": {component: {group: {key: object or list of instances}}}}
///
/// and may have the sections "automatic", "vital", "cached", "pending", "staged" and "metadata", of
/// which nothing is said but that they are objects. All types that are installed are described, those
/// with instances as lists of objects that have their id. What the schema refuses the library refuses,
/// too, but for lists and objects that are empty, which it may leave out; the library looks closer: at the order of
/// parts, at members that only some branch of a schema declares, at formats. What is required of vital
/// and cached members is not asked. Members marked as secret are "writeOnly", and may be the mask that
/// ExportConfig puts in their place.
/// \return compact JSON text
/// \throws ConfigStoreException 2000 when the schema store cannot be read
TARN_CONFIG_STORE_EXPORT std::string ExportDocumentSchema();

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

/// Brings stored rows up to date with their installed types: divides their members among the parts
/// as the type says now and writes its version, for all rows that are behind in either. That is no
/// write of the objects: revision and creation time stay, nobody is notified. A row with anything
/// that does not fit its type, current, pending or unconfirmed, is left as it is. One transaction, so
/// that a failure leaves everything as it was. Running it again does what was left, as far as it can
/// be done by then, and nothing else.
/// \param component, group, key  one type; or, all empty, every installed type
/// \param checkOnly              write nothing
/// \return what was done, or would be, with each row that was behind, sorted by type and instance id
/// Raises ConfigStoreException 1037 when the type is not installed, and 2000 for a failure of the
/// databases.
TARN_CONFIG_STORE_EXPORT std::vector<RowReport> UpgradeRows(const std::string& component,
                                                            const std::string& group,
                                                            const std::string& key, bool checkOnly);

}  // namespace TarnConfigStore
