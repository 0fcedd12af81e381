// Reading type files, and telling what became of them.
#pragma once

#include "tarnconfigstore/object_id.h"
#include "tarnconfigstore/type_administration.h"

#include "platform/type_files.h"

#include <optional>
#include <string>
#include <vector>

namespace TarnConfigStore {

/// Reads and checks the files that the paths stand for; a type that two of them bring is a finding
/// as well. Raises InvalidArgumentException 1081 for a path that cannot be read, where that is to raise.
std::vector<TypeFiles::TypeFile> ReadTypeFiles(const std::vector<std::string>& paths,
                                               UnreadFile unread = UnreadFile::RAISES);

/// The report about a file: INVALID with what was found, or VALID.
TypeReport MakeReport(const TypeFiles::TypeFile& file);

/// What installing a file means, given what is installed. A file that was found bad stays INVALID;
/// one that is older than what is installed becomes so, unless that is forced.
void JudgeInstallation(const TypeFiles::TypeFile& file,
                       const std::optional<TypeFiles::KeptType>& installed, bool force,
                       TypeReport& report);

inline ConfigStoreObjectId IdOf(const TarnSchemaStore::TypeName& name) {
  return ConfigStoreObjectId(name.key, name.group, name.component);
}

}  // namespace TarnConfigStore
