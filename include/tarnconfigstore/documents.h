// Whole documents: the configuration of a host as one JSON text, to be kept under version control,
// looked at, and brought to a host.
//
//   {"format": 1,
//    "config": {COMPONENT: {GROUP: {KEY: OBJECT or [INSTANCE...]}}},
//    "metadata": {...}}
//
// "format" and "config" are enough for a document that is written by hand. An instance holds its
// instance id in the member that its type has for it; types without instances have one object.
//
// A document speaks of parts. "config" is what the user set, and alone in a document it takes whole
// objects, too: members that the type tags as vital or cached go to their part, as in a Set. A
// document of all parts keeps them apart in sections of the same form as "config": "automatic",
// "vital", "cached" and "pending" (what waits for the next boot in a row), and it has "staged", whose
// lists hold a record for each change that is staged: {"action": "set", "delete" or
// "delete-instance", "instance", "version", "user", "vital", "cached"}.
//
// "metadata" may hold
//   "parts"     the parts that the document speaks of, where they are more than the user's:
//               ["user", "automatic", "vital", "cached", "pending", "staged"]
//   "redacted"  JSON Pointers (RFC 6901) into the document, to secrets that it masks as "***"
//   "objects"   {COMPONENT: {GROUP: {KEY: INFO or [INFO...]}}}, each {"instance", "created",
//               "revision", "version", "confirmed"}: what new rows get instead of that of this moment
// Anything else in a document is refused. Texts are UTF-8 of at most 128 levels.
//
// All functions but the one that is given a store take a connection of their own; all are thread-safe.
// Besides what they say, they throw ConfigStoreException 2000 when the store or the schema store cannot
// be opened or read.
#pragma once

#include "tarnconfigstore/config_store.h"
#include "tarnconfigstore/config_store_object.h"
#include "tarnconfigstore/contexts.h"
#include "tarnconfigstore/exceptions.h"
#include "tarnconfigstore/export.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace TarnConfigStore {

/// The longest document that is read, in bytes, unless the caller says otherwise.
inline constexpr std::size_t kLongestDocument = std::size_t{256} << 20U;

/// Makes an object from a text.
/// \param id    names the type and, where it has instances, perhaps the instance; without an
///              instance id the object's own is taken
/// \param json  the data, a JSON object
/// \throws ConfigStoreException 1037, with the identifier's text, when the type is not installed
/// \throws InvalidArgumentException 1080 for a text that is not JSON, 1082 for one that is no object
/// \throws ConfigStoreException 1032, with the member's name, when there is no instance id
TARN_CONFIG_STORE_EXPORT std::shared_ptr<ConfigStoreObject> CreateObject(
    const ConfigStoreObjectId& id, std::string_view json);

/// Makes all objects of a document's "config", in its order. Throws as CreateObject; and
/// ValidationException 1089 for a document of another form, with the places.
TARN_CONFIG_STORE_EXPORT std::vector<std::shared_ptr<ConfigStoreObject>> CreateObjects(
    std::string_view document);

/// What a document holds, and how.
struct ExportOptions {
  bool allParts = false;  ///< all parts, not the user's alone
  bool metadata = false;  ///< times, revisions and versions; of all parts always
  bool reveal = false;    ///< secrets as they are instead of "***"
  /// Leave out rows of types that are not installed, or that have no place for them since they got, or
  /// lost, instances.
  bool skipUnknown = false;
};

/// What came of an export.
struct ExportReport {
  std::size_t objects = 0;  ///< in "config"
  /// Rows that are left out as "skipUnknown" asks.
  std::vector<ConfigStoreObjectId> unknown;
  /// Rows whose user's value a boot has not confirmed yet: a document of the user's part has what is
  /// confirmed.
  std::vector<ConfigStoreObjectId> unconfirmed;
};

/// Writes a document of the store as it is at one moment, whatever is written meanwhile: objects in
/// the order of their identifiers, members in their own, indented by two blanks, so that two exports
/// of one state are equal byte for byte. No more than one object is held at a time.
/// \param prefix  component, group, key and instance id, up to the first empty one
/// \param write   gets the text piece by piece. What it throws ends the export and passes through. It
///                may use the library, but a long stay keeps the database's log from being shortened
/// \throws ConfigStoreException 1037 for a row whose type is not installed, 2000 for one that its type
///         has no place for, or whose instance id is none, unless they are skipped; 2000 for data that name
///         another instance than their row, and for a time or version that is none
/// \throws InvalidArgumentException 1080 for a row that is not JSON
TARN_CONFIG_STORE_EXPORT ExportReport
ExportConfig(const ConfigStoreObjectId& prefix, const ExportOptions& options,
             const std::function<void(std::string_view)>& write);

/// The same as one text.
/// \param report  becomes what ExportConfig returns, where it is not null
TARN_CONFIG_STORE_EXPORT std::string ExportConfigText(const ConfigStoreObjectId& prefix,
                                                      const ExportOptions& options,
                                                      ExportReport* report = nullptr);

/// What becomes, or would become, of an object.
enum class ObjectOutcome : int {
  UNCHANGED = 0,  ///< it is that already; revision and times stay
  CREATED = 1,
  REPLACED = 2,
  REMOVED = 3,
  STAGED = 4,   ///< waits for the next boot
  REFUSED = 5,  ///< for its findings
};

/// An object of a document, or one that the document removes.
struct ObjectResult {
  ConfigStoreObjectId id;
  ObjectOutcome outcome = ObjectOutcome::UNCHANGED;
  std::vector<ErrorInfo> findings;  ///< each field a JSON Pointer into the document
};

/// What came of a document, or would come of it.
struct DocumentReport {
  /// In the document's order; what is removed follows the others of its type, or of a whole import comes
  /// last.
  std::vector<ObjectResult> objects;
  /// What is wrong with the document itself, rather than with an object.
  std::vector<ErrorInfo> findings;

  /// True when nothing was refused.
  TARN_CONFIG_STORE_EXPORT bool Fits() const;
  /// True when there is something to write.
  TARN_CONFIG_STORE_EXPORT bool Changes() const;
  /// \return [{"object", "outcome", "errors": [{"field", "error"}]}], compact; "errors" where there
  ///         are some. An element without "object" has the document's own
  TARN_CONFIG_STORE_EXPORT std::string ToJson() const;
};

/// How much of the store an import replaces.
enum class ImportMode : int {
  /// Lays each object over what is stored, as Update does. For documents of the user's part only.
  MERGE = 0,
  /// Replaces the document's parts of each object that it names.
  REPLACE_NAMED = 1,
  /// The same, and removes the document's parts of all other objects; what has none left goes.
  REPLACE_ALL = 2,
};

struct ImportOptions {
  ImportMode mode = ImportMode::MERGE;
  bool check = false;  ///< say what would come of it: no lock, no write, no announcement
  std::size_t longest = kLongestDocument;
};

/// Brings a document into the store: all of it, or, when anything of it is refused, nothing. What is
/// written is checked as the writes of ConfigStore check it. Replacing the user's part of an object
/// drops its pending value, as SetUserData does; other parts that the document does not speak of
/// stay. A secret that the document masks keeps the value that is stored. New rows get the document's
/// times, revisions and versions, as far as it has them. Every changed object is announced after the
/// commit.
/// \return what came of each object. With `check`, what would
/// \throws InvalidArgumentException 1080 for a text that is not JSON, 2000 for one that is too long
/// \throws ValidationException 2000 while the host boots, as the writes of ConfigStore do; and where changes
///         are to be staged while it boots or is upgraded, as ConfigStore::GetNextBootStore
/// \throws ValidationException 1089 with every finding of every object, each field a JSON Pointer
///         into the document; not with `check`
TARN_CONFIG_STORE_EXPORT DocumentReport ImportConfig(std::string_view document,
                                                     const ImportOptions& options);
/// The same on a store: joins its transaction, if one is open, and announces the changes inside of it.
/// \throws InvalidArgumentException 2000 for a store that ConfigStore::GetStore has not made
TARN_CONFIG_STORE_EXPORT DocumentReport ImportConfig(ConfigStore& store, std::string_view document,
                                                     const ImportOptions& options);

struct ApplyConfigOptions {
  /// Removes the instances of the types in "config" that the document does not name, as far as the
  /// user set something of them.
  bool prune = false;
  bool stage = false;  ///< stages what changes of types that need a reboot, instead of writing it
  bool check = false;  ///< as for ImportOptions
  std::size_t longest = kLongestDocument;
};

/// Makes the store what a document says, as far as it says something: as ImportConfig with
/// REPLACE_NAMED, but members that their type marks as read-only are refused unless they equal what is
/// stored. Nothing is written of objects that are that already, so that a second call does nothing.
/// \throws ValidationException 1091 with every finding; else as ImportConfig
TARN_CONFIG_STORE_EXPORT DocumentReport ApplyConfig(std::string_view document,
                                                    const ApplyConfigOptions& options);

}  // namespace TarnConfigStore
