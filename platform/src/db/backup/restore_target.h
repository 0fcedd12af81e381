// One database that becomes what a backup holds.
#pragma once

#include "db/backup/backup_file.h"
#include "db/backup/page_copy.h"
#include "db/store_directory.h"
#include "db/write_queue.h"

#include <memory>
#include <string>

namespace DBStore::internal {

/// A database that is there is written through SQLite, whatever is in it: a file that took its place
/// would find the old one's write-ahead log beside it, and whoever has the old one open would go on
/// with that. One that is not there is made beside its place. Nobody sees anything of it before
/// Complete; dropping it before undoes it. Everything raises std::runtime_error, reported.
class RestoreTarget {
 public:
  RestoreTarget(const BackupFile& backup, const BackupPart& part, const StoreDirectory& directory);
  ~RestoreTarget();
  RestoreTarget(const RestoreTarget&) = delete;
  RestoreTarget& operator=(const RestoreTarget&) = delete;

  const std::string& Path() const noexcept { return path_; }
  bool IsNew() const noexcept { return isNew_; }

  /// Keeps other writers out by means that let others read, as long as the database is sound.
  void LockWriters();
  /// Keeps other writers out in earnest; of a database without a write-ahead log, readers too. False
  /// when others keep it locked for longer than the limit, in milliseconds.
  bool Lock(int limit);
  [[noreturn]] void RaiseLocked() const;
  /// Does all that needs room and may take long.
  void Copy();
  /// What is left to do.
  void Complete();
  /// False as long as the database is certainly what it was.
  bool MayHaveChanged() const noexcept { return mayHaveChanged_; }

 private:
  void OpenThere();
  void OpenDraft();
  void PrepareForPageSize();
  void FinishDraft();
  void Check(int code, const char* what) const;

  const BackupPart& part_;
  const Layout& layout_;
  const std::string path_;
  const std::string draft_;
  bool isNew_ = false;
  bool locked_ = false;
  bool mayHaveChanged_ = false;
  WriteQueue::Place place_;
  DatabaseHandle source_;
  DatabaseHandle database_;
  std::unique_ptr<PageCopy> copy_;
};

}  // namespace DBStore::internal
