#include "db/doctor/database_check.h"

#include "platform/host_paths.h"
#include "platform/store_error.h"

#include "db/access_rights.h"
#include "db/doctor/layout_check.h"
#include "db/doctor/page_images.h"
#include "db/doctor/statements.h"
#include "db/last_error.h"
#include "db/lock_holder.h"
#include "db/query.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

namespace DBStore::internal {
namespace {

using HostRepair::Finding;
using HostRepair::Weight;

constexpr const char* kSalvage =
    "`tarnctl doctor --repair` brings every row that can still be read into a new database; what "
    "is "
    "lost for good, a backup has (`tarnctl restore --force FILE`)";

class Check {
 public:
  Check(const Layout& layout, std::vector<Finding>& findings)
      : layout_(layout),
        findings_(findings),
        path_(HostPaths::Resolve(layout.fixedPath)),
        isTypes_(&layout == &SchemaStoreLayout()) {}

  DatabaseState Run() {
    if (!LooksAtFile()) {
      return state_;
    }
    state_.isThere = true;
    int code = SQLITE_OK;
    handle_ = OpenWithSettings(CanonicalPath(path_), false, code);
    if (handle_) {
      sqlite3_db_config(handle_.get(), SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
    }
    LayoutFound found;
    if (code == SQLITE_OK) {
      code = ReadLayout(handle_.get(), layout_, found);
    }
    if (code != SQLITE_OK) {
      TellUnreadable(code);
      return state_;
    }
    JudgeLayout(found);
    if (state_.isReadable) {
      CheckContent(found);
    }
    return state_;
  }

 private:
  void Add(Weight weight, const char* kind, const std::string& message, const std::string& advice,
           bool mendable = false, const std::string& table = "") {
    findings_.push_back({weight, kind, layout_.fixedPath, table, message, advice, mendable});
  }

  // False where there is nothing to open.
  bool LooksAtFile() {
    struct stat status {};
    ClearLastError();
    if (!IsDatabasesPlace(layout_, path_, status)) {
      const bool isMissing = GetLastError().kind == ErrorKind::MISSING;
      const std::string advice =
          isMissing && isTypes_
              ? "`tarnctl doctor --repair --types PATH...` makes it again from type "
                "files; so does restoring a backup"
              : kRestoreIt;
      // Its log may have outlived it.
      state_.isSalvageable = isMissing && !ReadLogFile(path_).empty();
      state_.isLost = isMissing;
      Add(Weight::DAMAGE, isMissing ? "missing" : "not-a-file", Reason(), advice,
          state_.isSalvageable);
      return false;
    }
    if (faccessat(AT_FDCWD, path_.c_str(), R_OK, AT_EACCESS) != 0) {
      Add(Weight::FAULT, "not-readable", MissingReadRight(path_),
          "run as its owner or group, or as root");
      return false;
    }
    return true;
  }

  // What was reported, without the path, which a finding has in its place.
  static std::string Reason() {
    const std::string& message = GetLastError().message;
    const std::size_t colon = message.find(": ");
    return colon == std::string::npos ? message : message.substr(colon + 2);
  }

  std::string Said(int code) const {
    return std::string(handle_ ? sqlite3_errmsg(handle_.get()) : sqlite3_errstr(code)) + " (" +
           std::to_string(code) + ")";
  }

  void TellUnreadable(int code) {
    if (code == SQLITE_READONLY_ROLLBACK || code == SQLITE_READONLY_RECOVERY ||
        code == SQLITE_READONLY_CANTINIT) {
      state_.hasJournal = true;
      state_.isSound = true;
      Add(Weight::WARNING, "journal",
          code == SQLITE_READONLY_ROLLBACK
              ? "a process that ended in the middle of a write left its journal, which has to be "
                "taken back before anybody reads"
              : "its write-ahead log has lost its index, which takes a writer to make again",
          "the next who may write it does that by opening it; `tarnctl doctor --repair` as well",
          true);
      return;
    }
    const ErrorKind kind = ErrorKindOf(code);
    if (kind == ErrorKind::CORRUPT) {
      state_.isSalvageable = true;
      state_.isLost = true;
      Add(Weight::DAMAGE, "unreadable", "SQLite cannot read it: " + Said(code), kSalvage, true);
    } else if (kind == ErrorKind::BUSY) {
      Add(Weight::FAULT, "busy", "it is locked: " + Said(code), WhoLocksDatabase(path_));
    } else if (kind == ErrorKind::PERMISSION ||
               (handle_ && sqlite3_system_errno(handle_.get()) == EACCES)) {
      Add(Weight::FAULT, "not-readable", Said(code) + "; " + MissingReadRight(path_),
          "run as its owner, or as root");
    } else {
      Add(Weight::DAMAGE, "not-readable", "the system cannot read it: " + Said(code),
          "look at the disk, and at what the kernel says of it; then restore a backup");
    }
  }

  void JudgeLayout(const LayoutFound& found) {
    const std::string version = std::to_string(found.version);
    switch (found.verdict) {
      case LayoutFound::READABLE:
        state_.isReadable = true;
        return;
      case LayoutFound::SOMETHING_ELSE:
        if (IsEmpty()) {
          state_.isSalvageable = !ReadLogFile(path_).empty();
          state_.isLost = true;
          Add(Weight::DAMAGE, "unreadable", "it is empty: its content was lost",
              isTypes_ ? "`tarnctl doctor --repair --types PATH...` makes it again from type files"
                       : kRestoreIt,
              state_.isSalvageable);
        } else {
          Add(Weight::DAMAGE, "foreign-database",
              "it is a database of something else (application " +
                  std::to_string(found.applicationId) + ")",
              "move it away, then restore the right one");
        }
        return;
      case LayoutFound::NEWER:
        Add(Weight::FAULT, "newer",
            "it has layout version " + version + ", this library knows up to " +
                std::to_string(layout_.version),
            "upgrade the library");
        return;
      case LayoutFound::UNKNOWN:
        state_.isSalvageable = true;
        Add(Weight::DAMAGE, "unknown-layout", "it has unknown layout version " + version, kSalvage,
            true);
    }
  }

  bool IsEmpty() {
    struct stat status {};
    return lstat(path_.c_str(), &status) == 0 && status.st_size == 0;
  }

  void CheckContent(const LayoutFound& found) {
    state_.isSound = true;
    CheckIntegrity();
    CheckLog();
    if (found.version == layout_.version && state_.isSound) {
      const int code = CheckLayout(handle_.get(), layout_, state_, findings_);
      if (code != SQLITE_OK) {
        state_.isSound = false;
        Add(Weight::DAMAGE, "damaged", "its definitions cannot be read: " + Said(code), kSalvage,
            true);
      }
    } else if (found.version != layout_.version) {
      Add(Weight::NOTE, "old-layout",
          "it has layout version " + std::to_string(found.version) + ", of " +
              std::to_string(layout_.version),
          "`tarnctl init` brings it over");
    }
    state_.isSalvageable = !state_.isSound;
  }

  // Rows that break a rule of their table are no damage to the file: what is wrong with them is told
  // where rows are looked at.
  static bool IsAboutRows(const std::string& line) {
    return line.rfind("CHECK constraint failed", 0) == 0 || line.rfind("NULL value in", 0) == 0;
  }

  void CheckIntegrity() {
    Query query(handle_.get(), Sql::kFindDamage);
    std::string lines;
    std::size_t count = 0;
    while (query.Step()) {
      const std::string line = query.Text(0);
      if (line != "ok" && !IsAboutRows(line)) {
        lines.append(lines.empty() ? "" : "; ").append(line);
        ++count;
      }
    }
    if (query.Code() != SQLITE_OK) {
      lines.append(lines.empty() ? "" : "; ").append(Said(query.Code()));
      ++count;
    }
    if (count > 0) {
      state_.isSound = false;
      std::replace(lines.begin(), lines.end(), '\n', ' ');
      Add(Weight::DAMAGE, "damaged", "it is damaged: " + lines, kSalvage, true);
    }
  }

  void CheckLog() {
    const PageImages images(path_);
    if (images.Log().HidesCommits()) {
      state_.isSound = false;
      Add(Weight::DAMAGE, "log-damaged",
          "its write-ahead log is damaged: " + std::to_string(images.Log().damagedFrames) +
              " pages in it cannot be read, and SQLite takes what was committed after them for "
              "nothing",
          "let nobody write the store, which would write over it; `tarnctl doctor --repair` brings "
          "what can still be read into a new database",
          true);
    }
  }

  const Layout& layout_;
  std::vector<Finding>& findings_;
  const std::string path_;
  const bool isTypes_;
  DatabaseHandle handle_;
  DatabaseState state_;
};

}  // namespace

DatabaseState CheckDatabase(const Layout& layout, std::vector<Finding>& findings) {
  return Check(layout, findings).Run();
}

}  // namespace DBStore::internal
