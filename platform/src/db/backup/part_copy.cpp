#include "db/backup/part_copy.h"

#include "db/backup/image.h"
#include "db/backup/page_copy.h"
#include "db/raising.h"

#include <sqlite3.h>

#include <array>
#include <cerrno>
#include <unistd.h>

namespace DBStore::internal {

void CopyIntoBackup(sqlite3* from, const std::string& fromPath, BackupPart& part,
                    std::int64_t begin, const BackupFile& backup) {
  LayoutFound found;
  int code = ReadLayout(from, *part.layout, found);
  part.version = found.version;
  part.begin = begin;
  if (code == SQLITE_OK) {
    const DatabaseHandle to = OpenImage({backup.Descriptor(), begin, 0}, true, code);
    if (code == SQLITE_OK) {
      PageCopy copy(from, to.get());
      code = copy.Lock();
      code = code == SQLITE_OK ? copy.CopyAllButLast() : code;
      code = code == SQLITE_OK ? copy.Complete() : code;
    }
  }
  if (code != SQLITE_OK) {
    RaiseSqliteError(code, backup.Name(), fromPath,
                     std::string("copying ") + part.layout->fixedPath + " into it");
  }
  const off_t end = lseek(backup.Descriptor(), 0, SEEK_END);
  part.length = end - begin;
  // The copy has no write-ahead log: the header's versions of writing and reading say so
  // (https://sqlite.org/fileformat2.html#file_format_version_numbers).
  const std::array<unsigned char, 2> withoutLog = {1, 1};
  if (pwrite(backup.Descriptor(), withoutLog.data(), withoutLog.size(), begin + 18) !=
      static_cast<ssize_t>(withoutLog.size())) {
    RaiseSystemError(backup.Name(), "cannot write the backup", errno);
  }
}

std::int64_t BehindSchemaStore(const BackupFile& backup) noexcept {
  const std::int64_t end = backup.schemaStore.begin + backup.schemaStore.length;
  constexpr std::int64_t kStep = BackupFile::kAlignment;
  return (end + kStep - 1) / kStep * kStep;
}

}  // namespace DBStore::internal
