// Copying a whole database into another one that stays open to others.
#pragma once

struct sqlite3;
struct sqlite3_backup;

namespace DBStore::internal {

/// One copy by SQLite's backup interface. What is copied is a transaction on the target: until it is
/// completed nobody sees it, and dropping it undoes it. Answers with SQLite result codes. Neither
/// database is used otherwise meanwhile.
class PageCopy {
 public:
  PageCopy(sqlite3* from, sqlite3* to) noexcept;
  ~PageCopy();
  PageCopy(const PageCopy&) = delete;
  PageCopy& operator=(const PageCopy&) = delete;

  /// Takes the right to write the target, and keeps it.
  int Lock() noexcept;
  /// All but the last page, with which the copy becomes visible.
  int CopyAllButLast();
  int Complete();

 private:
  int Copy(int pages);

  sqlite3_backup* backup_;
  int code_;
};

}  // namespace DBStore::internal
