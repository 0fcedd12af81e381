// Mending what lies beside the databases.
#include "platform/file_descriptor.h"
#include "platform/host_paths.h"
#include "platform/host_repair.h"
#include "platform/process_locks.h"
#include "platform/store_error.h"

#include "db/backup/pending_restore.h"
#include "db/doctor/file_check.h"
#include "db/doctor/keeping.h"
#include "db/store_directory.h"

#include <cerrno>
#include <fcntl.h>
#include <system_error>
#include <unistd.h>

namespace HostRepair {
namespace {

using namespace DBStore::internal;

std::string ErrnoText() {
  return std::error_code(errno, std::generic_category()).message();
}

// A restore is completed by whoever opens the stores. One that can't be, because its copy is damaged,
// is given up: each store is whole, the old one or the new one.
Action MendPendingRestore(const std::string& keepingPlace) {
  Action action{false, "restore-begun", HostPaths::kPendingRestore, "", ""};
  if (PendingRestore::IsComplete()) {
    action.done = true;
    action.message = "the restore was completed";
    action.where = "the stores are what its backup held; what they were before it is in the copies";
    return action;
  }
  const std::string failure = DBStore::GetLastError().message;
  const ProcessLocks::Guard guard(ProcessLocks::Rank::WHOLE_STORES);
  const StoreDirectory directory;
  if (IsPendingRestoreSound()) {
    action.message = "the restore could not be completed: " + failure;
    return action;
  }
  const std::string path = directory.PathOf(HostPaths::kPendingRestore);
  action.done = MoveInto(keepingPlace, path);
  action.message = action.done ? "the restore was given up: its copy cannot be read"
                               : "cannot be moved away: " + ErrnoText();
  if (action.done) {
    directory.Sync();
    action.where = "the copy is in " + NameOfPath(keepingPlace) +
                   "; the stores keep what they hold: restore a backup again";
  }
  return action;
}

void MoveLeftOvers(const std::string& keepingPlace, std::vector<Action>& actions) {
  if (FindLeftOvers().empty()) {
    return;
  }
  // Who makes or restores a database has the directory: with it in hand, nobody is at them.
  const ProcessLocks::Guard guard(ProcessLocks::Rank::WHOLE_STORES);
  const StoreDirectory directory;
  for (const LeftOver& leftOver : FindLeftOvers()) {
    const bool done = MoveInto(keepingPlace, leftOver.path);
    actions.push_back({done, "left-over", leftOver.fixedPath,
                       done ? "was moved away" : "cannot be moved away: " + ErrnoText(),
                       done ? NameOfPath(keepingPlace) : ""});
  }
  directory.Sync();
}

// By a descriptor of the path only, whose closing drops nobody's locks, and which follows no link.
bool GiveRights(const WrongRights& wrong) {
  const FileDescriptor file(open(wrong.path.c_str(), O_PATH | O_NOFOLLOW | O_CLOEXEC));
  if (!file.IsOpen()) {
    return false;
  }
  if ((wrong.owner != wrong.rightOwner || wrong.group != wrong.rightGroup) &&
      fchownat(file.Number(), "", wrong.rightOwner, wrong.rightGroup, AT_EMPTY_PATH) != 0) {
    return false;
  }
  // A change of owner may have taken bits away.
  const std::string path = "/proc/self/fd/" + std::to_string(file.Number());
  return chmod(path.c_str(), wrong.rightMode) == 0;
}

}  // namespace

std::vector<Action> MendFiles(const std::string& keepingPlace) {
  std::vector<Action> actions;
  if (PendingRestore::IsBegun()) {
    actions.push_back(MendPendingRestore(keepingPlace));
  }
  MoveLeftOvers(keepingPlace, actions);
  for (const WrongRights& wrong : FindWrongRights()) {
    const bool done = GiveRights(wrong);
    actions.push_back({done, "rights", wrong.fixedPath,
                       done ? "had " + wrong.Describe() + ", and has that now"
                            : wrong.Describe() + ": cannot be changed: " + ErrnoText(),
                       done ? "where it was" : ""});
  }
  return actions;
}

}  // namespace HostRepair
