#include "db/doctor/file_check.h"

#include "platform/host_paths.h"

#include "db/backup/backup_file.h"
#include "db/backup/pending_restore.h"
#include "db/database_file.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <dirent.h>
#include <memory>
#include <stdexcept>
#include <sys/statvfs.h>
#include <unistd.h>

namespace DBStore::internal {
namespace {

using HostRepair::Finding;
using HostRepair::Weight;

constexpr mode_t kRights = 07777;
constexpr std::array<const char*, 2> kDatabases = {HostPaths::kStore, HostPaths::kSchemaStore};
constexpr std::array<const char*, 3> kBeside = {"-wal", "-shm", "-journal"};

bool Look(const std::string& path, struct stat& status) {
  return lstat(path.c_str(), &status) == 0;
}

void AddIfWrong(const std::string& path, const std::string& fixedPath, const struct stat& is,
                mode_t mode, uid_t owner, gid_t group, std::vector<WrongRights>& wrong) {
  const mode_t rights = is.st_mode & kRights;
  if (rights != mode || is.st_uid != owner || is.st_gid != group) {
    wrong.push_back({path, fixedPath, rights, mode, is.st_uid, owner, is.st_gid, group});
  }
}

std::string Octal(mode_t mode) {
  char text[8];
  std::snprintf(text, sizeof text, "%04o", static_cast<unsigned>(mode));
  return text;
}

std::vector<std::string> NamesIn(const std::string& directory) {
  std::vector<std::string> names;
  const auto close = [](DIR* list) { closedir(list); };
  const std::unique_ptr<DIR, decltype(close)> list(opendir(directory.c_str()), close);
  if (list) {
    while (const dirent* entry = readdir(list.get())) {
      names.emplace_back(entry->d_name);
    }
  }
  std::sort(names.begin(), names.end());
  return names;
}

void CheckRoom(std::vector<Finding>& findings) {
  struct statvfs room {};
  std::uint64_t size = 0;
  for (const char* fixedPath : kDatabases) {
    for (const char* suffix : {"", "-wal"}) {
      struct stat status {};
      if (Look(HostPaths::Resolve(fixedPath) + suffix, status)) {
        size += static_cast<std::uint64_t>(status.st_size);
      }
    }
  }
  constexpr std::uint64_t kLeast = std::uint64_t{1} << 20U;
  if (statvfs(StoresDirectory().c_str(), &room) == 0 &&
      std::uint64_t{room.f_bavail} * room.f_frsize < kLeast + 2 * size) {
    findings.push_back(
        {Weight::WARNING, "little-room", StoresDirectoryName(), "",
         "the file system has " + std::to_string(std::uint64_t{room.f_bavail} * room.f_frsize) +
             " bytes left: less than twice what the stores take up",
         "make room: writes fail on a full disk, and a repair needs as much again", false});
  }
}

void CheckPendingRestore(std::vector<Finding>& findings) {
  if (!PendingRestore::IsBegun()) {
    return;
  }
  const bool isSound = IsPendingRestoreSound();
  findings.push_back(
      {Weight::FAULT, "restore-begun", HostPaths::kPendingRestore, "",
       isSound ? "a restore was begun and is not complete: nobody can use the stores meanwhile"
               : "a restore was begun with a copy that cannot be read: it can never be completed, "
                 "and nobody can use the stores",
       isSound ? "open the stores as a user who may write both (`tarnctl doctor --repair`, or any "
                 "command): that completes it"
               : "`tarnctl doctor --repair` moves the copy away and leaves the stores as they are; "
                 "then restore a backup again",
       true});
}

}  // namespace

std::string StoresDirectory() {
  const std::string path = HostPaths::Resolve(HostPaths::kStore);
  return path.substr(0, path.rfind('/'));
}

std::string StoresDirectoryName() {
  const std::string path = HostPaths::kStore;
  return path.substr(0, path.rfind('/'));
}

std::string WrongRights::Describe() const {
  std::string text;
  const auto add = [&text](const std::string& part) {
    text.append(text.empty() ? "" : ", ").append(part);
  };
  if (mode != rightMode) {
    add("mode " + Octal(mode) + ", which should be " + Octal(rightMode));
  }
  if (owner != rightOwner) {
    add("owner " + std::to_string(owner) + ", who should be " + std::to_string(rightOwner));
  }
  if (group != rightGroup) {
    add("group " + std::to_string(group) + ", which should be " + std::to_string(rightGroup));
  }
  return text;
}

bool WrongRights::CanBeMended() const noexcept {
  return geteuid() == 0 || (geteuid() == owner && owner == rightOwner && group == rightGroup);
}

std::vector<WrongRights> FindWrongRights() {
  std::vector<WrongRights> wrong;
  struct stat directory {};
  if (stat(StoresDirectory().c_str(), &directory) != 0 || !S_ISDIR(directory.st_mode)) {
    return wrong;
  }
  // Where an administrator put a link there, what it leads to is theirs.
  struct stat own {};
  if (Look(StoresDirectory(), own) && S_ISDIR(own.st_mode)) {
    AddIfWrong(StoresDirectory(), StoresDirectoryName(), directory,
               ((directory.st_mode & kRights) | 0700U) & ~mode_t{0002}, directory.st_uid,
               directory.st_gid, wrong);
  }
  for (const char* fixedPath : kDatabases) {
    const std::string path = HostPaths::Resolve(fixedPath);
    struct stat database {};
    if (!Look(path, database) || !S_ISREG(database.st_mode)) {
      continue;
    }
    // What an administrator gave to the group, or took from it, stays.
    const mode_t mode = ((database.st_mode & kRights) | 0600U) & 0660U;
    AddIfWrong(path, fixedPath, database, mode, directory.st_uid, database.st_gid, wrong);
    for (const char* suffix : kBeside) {
      struct stat beside {};
      if (Look(path + suffix, beside) && S_ISREG(beside.st_mode)) {
        AddIfWrong(path + suffix, std::string(fixedPath) + suffix, beside, mode, directory.st_uid,
                   database.st_gid, wrong);
      }
    }
  }
  return wrong;
}

std::vector<LeftOver> FindLeftOvers() {
  std::vector<LeftOver> leftOvers;
  for (const char* fixedPath :
       {HostPaths::kStore, HostPaths::kSchemaStore, HostPaths::kPendingRestore}) {
    for (const char* suffix : {".new", ".new-wal", ".new-shm", ".new-journal"}) {
      struct stat status {};
      const std::string path = HostPaths::Resolve(fixedPath) + suffix;
      if (Look(path, status)) {
        leftOvers.push_back({path, std::string(fixedPath) + suffix});
      }
    }
  }
  return leftOvers;
}

bool IsPendingRestoreSound() {
  try {
    BackupFile::Open(HostPaths::Resolve(HostPaths::kPendingRestore), HostPaths::kPendingRestore)
        .CheckBytes();
    return true;
  } catch (const std::runtime_error&) {
    return false;
  }
}

void CheckFiles(std::vector<Finding>& findings) {
  struct stat directory {};
  if (!Look(StoresDirectory(), directory)) {
    findings.push_back({Weight::DAMAGE, "directory-missing", StoresDirectoryName(), "",
                        "there is no such directory, or no way into it",
                        "restore a backup (`tarnctl restore FILE`); `tarnctl init` makes it on a "
                        "new host",
                        false});
    return;
  }
  for (const WrongRights& wrong : FindWrongRights()) {
    const bool mendable = wrong.CanBeMended();
    findings.push_back({Weight::WARNING, "rights", wrong.fixedPath, "", "has " + wrong.Describe(),
                        mendable ? "`tarnctl doctor --repair` gives it those"
                                 : "run `tarnctl doctor --repair` as root",
                        mendable});
  }
  for (const LeftOver& leftOver : FindLeftOvers()) {
    findings.push_back({Weight::WARNING, "left-over", leftOver.fixedPath, "",
                        "was left by a process that ended while it made or restored a database, "
                        "or is being made just now",
                        "`tarnctl doctor --repair` moves it away, unless somebody is at it", true});
  }
  CheckPendingRestore(findings);
  for (const std::string& name : NamesIn(StoresDirectory())) {
    if (name.rfind("doctor-", 0) == 0) {
      findings.push_back({Weight::NOTE, "kept", StoresDirectoryName() + "/" + name, "",
                          "holds what an earlier repair kept: a backup, and what it put aside",
                          "look through it, and remove it once nothing of it is needed", false});
    }
  }
  CheckRoom(findings);
}

}  // namespace DBStore::internal
