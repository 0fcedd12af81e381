#include "db/layout_upgrade.h"

#include "platform/db_store.h"
#include "platform/logger.h"

#include "db/access_rights.h"
#include "db/backup/steps.h"
#include "db/layout_parts.h"
#include "db/raising.h"
#include "db/write_queue.h"

#include <sqlite3.h>

#include <string>

namespace DBStore::internal {
namespace {

class Upgrade {
 public:
  Upgrade(const Layout& layout, const DatabaseFile& file) : layout_(layout), file_(file) {}
  ~Upgrade() {
    if (sqlite3_get_autocommit(file_.handle.get()) == 0) {
      sqlite3_exec(file_.handle.get(), "ROLLBACK", nullptr, nullptr, nullptr);
    }
    WriteQueue::Leave(place_);
  }
  Upgrade(const Upgrade&) = delete;
  Upgrade& operator=(const Upgrade&) = delete;

  bool IsNeeded() {
    LayoutFound found;
    Check(ReadLayout(file_.handle.get(), layout_, found), "reading it");
    version_ = found.version;
    return version_ < layout_.version;
  }

  void Begin() {
    if (file_.readOnly) {
      Raise(ErrorKind::PERMISSION, SQLITE_READONLY,
            Name() + ": has layout " + std::to_string(version_) + " and is to get layout " +
                std::to_string(layout_.version) + ": " + MissingWriteRight(file_.path));
    }
    if (WriteQueue::ThisThreadWritesBeside(place_, file_.identity)) {
      RaiseBusy("this thread has a transaction open on it; end it first");
    }
    int limit = kWaitLimit;
    if (!WriteQueue::Enter(place_, file_.identity, limit)) {
      RaiseBusy("another thread of this process kept writing; try again");
    }
    Run({"locking it", "BEGIN IMMEDIATE"});
  }

  void Complete() {
    RefuseWhatWouldBeLost();
    // Records that are copied are not staged anew.
    Check(sqlite3_db_config(file_.handle.get(), SQLITE_DBCONFIG_ENABLE_TRIGGER, 0, nullptr),
          "keeping triggers from running");
    for (const UpgradeStep& step : layout_.upgrade) {
      Run(step);
    }
    const std::string mark = "PRAGMA user_version=" + std::to_string(layout_.version);
    Run({"marking it", mark.c_str()});
    Run({"committing", "COMMIT"});
    CSLogger::Log(CSLogger::kOutcome, "%s: brought from layout %d to layout %d", layout_.fixedPath,
                  version_, layout_.version);
  }

 private:
  std::string Name() const { return layout_.fixedPath; }

  void Check(int code, const std::string& what) const {
    if (code != SQLITE_OK) {
      RaiseSqliteError(code, layout_.fixedPath, file_.path,
                       "bringing it to layout " + std::to_string(layout_.version) + ": " + what);
    }
  }

  [[noreturn]] void RaiseBusy(const char* why) const {
    Raise(ErrorKind::BUSY, SQLITE_BUSY, Name() + ": bringing it to another layout: " + why);
  }

  void Run(const UpgradeStep& step) const {
    Step(step.what);
    Check(sqlite3_exec(file_.handle.get(), step.sql, nullptr, nullptr, nullptr), step.what);
  }

  void RefuseWhatWouldBeLost() const {
    PartsFound found;
    Check(FindParts(file_.handle.get(), layout_, version_, found), "looking at what is in it");
    if (!found.wrong.empty()) {
      Raise(ErrorKind::CORRUPT, SQLITE_CORRUPT, Name() + ": " + found.wrong);
    }
    if (!found.foreign.empty()) {
      Raise(ErrorKind::OTHER, 0,
            Name() + ": has " + found.foreign.front() +
                ", which is not of this layout and would be lost by bringing it to layout " +
                std::to_string(layout_.version) + "; remove it first");
    }
  }

  const Layout& layout_;
  const DatabaseFile& file_;
  WriteQueue::Place place_;
  int version_ = 0;
};

}  // namespace

bool UpgradeLayout(const Layout& layout, const DatabaseFile& file) {
  Upgrade upgrade(layout, file);
  if (!upgrade.IsNeeded()) {
    return false;
  }
  upgrade.Begin();
  // Another process may have been faster.
  if (!upgrade.IsNeeded()) {
    return false;
  }
  upgrade.Complete();
  return true;
}

}  // namespace DBStore::internal
