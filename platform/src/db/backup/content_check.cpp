// Looking into the databases of a backup.
#include "db/backup/backup_file.h"
#include "db/backup/statements.h"
#include "db/layout_parts.h"
#include "db/raising.h"

#include <sqlite3.h>

#include <cstdlib>

namespace DBStore::internal {

HostBackup::Content BackupFile::CheckContent() const {
  HostBackup::Content content;
  content.created = created;
  content.schemaStoreLayout = schemaStore.version;
  content.storeLayout = store.version;
  content.types = CheckPart(schemaStore, Sql::kCountTypes);
  content.objects = CheckPart(store, Sql::kCountObjects);
  return content;
}

std::uint64_t BackupFile::CheckPart(const BackupPart& part, const char* count) const {
  const DatabaseHandle database = OpenPart(part);
  LayoutFound found;
  std::string integrity;
  std::string rows;
  int code = ReadLayout(database.get(), *part.layout, found);
  if (code == SQLITE_OK) {
    code = ReadPragma(database.get(), Sql::kCheckIntegrity, integrity);
  }
  // What is wrong with it may be that it cannot be counted.
  if (code == SQLITE_OK && integrity == "ok" && found.verdict == LayoutFound::READABLE) {
    code = ReadPragma(database.get(), count, rows);
  }
  const std::string what = std::string("the copy of ") + part.layout->fixedPath;
  if (code != SQLITE_OK || integrity != "ok") {
    Raise(ErrorKind::CORRUPT, code,
          name_ + ": " + what + " in it is damaged: " +
              (code != SQLITE_OK ? std::string(sqlite3_errmsg(database.get())) : integrity) +
              "; restore an older backup");
  }
  if (found.verdict == LayoutFound::NEWER) {
    Raise(ErrorKind::NEWER, 0,
          name_ + ": " + what + " in it has layout version " + std::to_string(found.version) +
              ", this library knows up to " + std::to_string(part.layout->version) +
              "; upgrade the library");
  }
  if (found.verdict != LayoutFound::READABLE || found.version != part.version) {
    Refuse(what + " in it has layout version " + std::to_string(found.version) +
           ", which is not readable, or not the one that it should have");
  }
  PartsFound parts;
  code = FindParts(database.get(), *part.layout, found.version, parts);
  if (code != SQLITE_OK || !parts.wrong.empty()) {
    Refuse(what + " in it cannot be used: " +
           (code != SQLITE_OK ? std::string(sqlite3_errmsg(database.get())) : parts.wrong));
  }
  return std::strtoull(rows.c_str(), nullptr, 10);
}

DatabaseHandle BackupFile::OpenPart(const BackupPart& part) const {
  int code = SQLITE_OK;
  DatabaseHandle handle = OpenImage({file_.Number(), part.begin, part.length}, false, code);
  if (code != SQLITE_OK) {
    Raise(ErrorKind::OTHER, code,
          name_ + ": opening the copy of " + part.layout->fixedPath +
              " in it: " + sqlite3_errstr(code));
  }
  return handle;
}

}  // namespace DBStore::internal
