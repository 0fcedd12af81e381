#include "db/backup/page_copy.h"

#include "db/testing_hook.h"

#include <sqlite3.h>

#include <algorithm>

namespace DBStore::internal {
namespace {

constexpr int kPagesAtOnce = 1024;

}  // namespace

PageCopy::PageCopy(sqlite3* from, sqlite3* to) noexcept
    : backup_(sqlite3_backup_init(to, "main", from, "main")),
      code_(backup_ != nullptr ? SQLITE_OK : sqlite3_extended_errcode(to)) {}

PageCopy::~PageCopy() {
  sqlite3_backup_finish(backup_);
}

int PageCopy::Lock() noexcept {
  return code_ != SQLITE_OK ? code_ : code_ = sqlite3_backup_step(backup_, 0);
}

int PageCopy::Copy(int pages) {
  if (const int status = AskHook(testing::Operation::COPY, "copying pages")) {
    return code_ = status;
  }
  return code_ = sqlite3_backup_step(backup_, pages);
}

int PageCopy::CopyAllButLast() {
  while (code_ == SQLITE_OK && sqlite3_backup_remaining(backup_) > 1) {
    Copy(std::min(kPagesAtOnce, sqlite3_backup_remaining(backup_) - 1));
  }
  return code_;
}

int PageCopy::Complete() {
  if (code_ == SQLITE_OK) {
    Copy(-1);
  }
  return code_ == SQLITE_DONE ? SQLITE_OK : code_;
}

}  // namespace DBStore::internal
