// Type files: reading and checking them, and keeping them in the schema store.
//
// Thread safety: functions may be called from several threads; a TypeWriter belongs to one. The library
// writes to the store while it has a TypeWriter, never the other way round: nothing here may wait for
// the store.
#pragma once

#include "platform/schema_store.h"

#include "json/json.h"
#include "json/json_doc.h"

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

namespace TypeFiles {

/// Something in a type file that breaks a rule, or is hardly what was meant.
struct Finding {
  std::string field;  ///< JSON Pointer into the file, "/" for the file as a whole
  std::string error;  ///< what is wrong, and what would be right
};

/// An object that comes with a type.
struct ShippedObject {
  std::string instance;                ///< empty for a type without instances
  const Json::Value* value = nullptr;  ///< lives as long as the file's document
};

/// A type as the schema store keeps it.
struct KeptType {
  TarnSchemaStore::TypeName name;
  std::string version;
  std::string text;  ///< its file as compact JSON, members in their order
};

/// One type file, read and checked.
struct TypeFile {
  std::string path;
  KeptType type;                  ///< name and version as far as they could be read
  std::vector<Finding> findings;  ///< everything that is wrong, in the order of the checks
  std::vector<Finding> warnings;  ///< what is odd; a type is kept all the same
  // Set, as the type's text is, only when nothing is wrong.
  std::shared_ptr<TarnConfigStore::JsonDoc> document;
  std::vector<ShippedObject> shipped;  ///< in the order of the file

  bool Good() const { return findings.empty(); }
};

/// The files that a path stands for: itself, or of a directory the "*.json" files, sorted by name.
/// \param error  says why, when the path cannot be read
std::vector<std::string> FilesAt(const std::string& path, std::error_code& error);

/// As many bytes a type file has at most.
inline constexpr std::size_t kLongestFile = std::size_t{16} << 20U;

/// Checks a text against all the rules for type files. What is wrong is in the result's findings.
TypeFile Check(std::string path, std::string_view text);

/// True for numbers separated by dots: "1.0", "1.2.3", "7".
bool IsVersion(std::string_view text) noexcept;

/// Compares dot-separated numbers, a missing one counting as 0: negative, 0 or positive as `a` is
/// older than, as old as or newer than `b`. What is no number counts as 0.
int CompareVersions(std::string_view a, std::string_view b) noexcept;

/// The type as an object of its own, whatever is installed. Raises std::runtime_error when the text
/// is damaged.
std::shared_ptr<TarnSchemaStore::SchemaObject> Load(const KeptType& type);

/// All kept types, sorted by name. Raises std::runtime_error when the schema store cannot be read,
/// with the last store error set; so do the functions and classes below when it cannot be read or
/// written.
std::vector<KeptType> ReadAll();

/// One kept type, or nothing when it is not there.
std::optional<KeptType> Read(const TarnSchemaStore::TypeName& name);

/// Changes the kept types in one transaction: others write only when it is over, and see nothing of
/// it before Commit. Without a Commit, or when one fails, everything is as it was. A thread has one
/// of these at a time, and calls neither Read nor ReadAll beside it.
class TypeWriter {
 public:
  /// Waits for other writers up to the wait limit of the database layer.
  TypeWriter();
  TypeWriter(const TypeWriter&) = delete;
  TypeWriter& operator=(const TypeWriter&) = delete;
  ~TypeWriter();

  std::optional<KeptType> Read(const TarnSchemaStore::TypeName& name);
  /// Keeps a type, in place of one of the same name. Its text has to have been found good.
  void Put(const KeptType& type);
  void Remove(const TarnSchemaStore::TypeName& name);
  void Commit();

 private:
  struct State;  // the platform's own
  std::unique_ptr<State> state_;
};

}  // namespace TypeFiles
