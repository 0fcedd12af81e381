#include "db/doctor/keeping.h"

#include "platform/file_descriptor.h"
#include "platform/host_backup.h"
#include "platform/host_paths.h"
#include "platform/host_repair.h"
#include "platform/process_locks.h"

#include "db/backup/pending_restore.h"
#include "db/doctor/database_check.h"
#include "db/doctor/file_check.h"
#include "db/doctor/page_images.h"
#include "db/raising.h"
#include "json/text_file.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <ctime>
#include <fcntl.h>
#include <filesystem>
#include <stdexcept>
#include <sys/stat.h>
#include <unistd.h>

namespace DBStore::internal {

std::string NameOfPath(const std::string& path) {
  return path.substr(HostPaths::GetRoot().size());
}

bool MoveInto(const std::string& directory, const std::string& path) {
  const std::string to = directory + path.substr(path.rfind('/'));
  return renameat2(AT_FDCWD, path.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0;
}

namespace {

constexpr mode_t kMode = 0600;

void WriteAll(const FileDescriptor& file, const std::string& name, const std::string& bytes) {
  if (const int code = file.WriteAll(bytes)) {
    RaiseSystemError(name, "cannot write the copy", code);
  }
}

FileDescriptor MakeCopy(const std::string& path) {
  FileDescriptor file(
      open(path.c_str(), O_CREAT | O_EXCL | O_WRONLY | O_NOFOLLOW | O_CLOEXEC, kMode));
  if (!file.IsOpen()) {
    RaiseSystemError(NameOfPath(path), "cannot make the file", errno);
  }
  return file;
}

void Finish(const FileDescriptor& file, const std::string& path) {
  if (fsync(file.Number()) != 0) {
    RaiseSystemError(NameOfPath(path), "cannot make the copy durable", errno);
  }
}

// The database through SQLite's own descriptor; what lies beside it, which nobody locks, as a file.
// The index of the log has nothing that the log has not. Answers how many blocks the disk would not
// give: they are zeros in the copy.
std::size_t CopyRaw(const char* fixedPath, const std::string& keepingPlace) {
  constexpr std::int64_t kBlock = 4096;
  std::size_t unreadable = 0;
  const std::string path = HostPaths::Resolve(fixedPath);
  const std::string to = keepingPlace + path.substr(path.rfind('/'));
  const PageImages images(path);
  struct stat status {};
  if (lstat(path.c_str(), &status) == 0) {
    const FileDescriptor file = MakeCopy(to);
    std::string block;
    for (std::int64_t offset = 0; offset < images.FileLength(); offset += kBlock) {
      const std::int64_t length = std::min(kBlock, images.FileLength() - offset);
      if (!images.ReadFile(offset, static_cast<std::size_t>(length), block)) {
        block.assign(static_cast<std::size_t>(length), '\0');
        ++unreadable;
      }
      WriteAll(file, NameOfPath(to), block);
    }
    Finish(file, to);
  }
  for (const char* suffix : {"-wal", "-journal"}) {
    constexpr std::size_t kLongest = std::size_t{1} << 30U;
    if (lstat((path + suffix).c_str(), &status) == 0 && S_ISREG(status.st_mode) &&
        status.st_size > 0) {
      const Json::TextFile bytes = Json::ReadTextFile(path + suffix, kLongest);
      if (!bytes) {
        RaiseSystemError(std::string(fixedPath) + suffix, "cannot be read", bytes.error);
      }
      const FileDescriptor file = MakeCopy(to + suffix);
      WriteAll(file, NameOfPath(to + suffix), bytes.text);
      Finish(file, to + suffix);
    }
  }
  return unreadable;
}

bool IsFitForABackup() {
  const ProcessLocks::Guard guard(ProcessLocks::Rank::WHOLE_STORES);
  std::vector<HostRepair::Finding> ignored;
  return !PendingRestore::IsBegun() && CheckDatabase(CurrentStoreLayout(), ignored).isSound &&
         CheckDatabase(SchemaStoreLayout(), ignored).isSound;
}

}  // namespace
}  // namespace DBStore::internal

namespace HostRepair {

using namespace DBStore::internal;

std::string MakeKeepingPlace() {
  std::array<char, 32> time{};
  const std::time_t now = std::time(nullptr);
  std::tm parts = {};
  gmtime_r(&now, &parts);
  std::strftime(time.data(), time.size(), "/doctor-%Y%m%d-%H%M%S", &parts);
  const std::string base = StoresDirectory() + time.data();
  std::string path = base;
  for (int number = 2; mkdir(path.c_str(), 0700) != 0; ++number) {
    if (errno != EEXIST || number > 100) {
      RaiseSystemError(NameOfPath(path), "cannot make the directory", errno);
    }
    path = base + "-" + std::to_string(number);
  }
  // The mask of the process may have taken from the owner's rights.
  struct stat stores {};
  if (chmod(path.c_str(), 0700) != 0 ||
      (geteuid() == 0 && stat(StoresDirectory().c_str(), &stores) == 0 &&
       lchown(path.c_str(), stores.st_uid, stores.st_gid) != 0)) {
    RaiseSystemError(NameOfPath(path), "cannot be given its owner and mode", errno);
  }
  return path;
}

Action KeepCopies(const std::string& keepingPlace) {
  const std::string backup = keepingPlace + "/backup";
  if (IsFitForABackup()) {
    try {
      HostBackup::Backup(backup, false);
      return {true, "backup", StoresDirectoryName(), "the stores were backed up as they were",
              NameOfPath(backup) + "; `tarnctl restore --force` brings them back"};
    } catch (const std::runtime_error&) {
      // One row that breaks a rule of its table is enough. The reason is in the log.
      unlink(backup.c_str());
    }
  }
  const ProcessLocks::Guard guard(ProcessLocks::Rank::WHOLE_STORES);
  std::size_t unreadable = 0;
  try {
    unreadable =
        CopyRaw(HostPaths::kStore, keepingPlace) + CopyRaw(HostPaths::kSchemaStore, keepingPlace);
  } catch (const std::runtime_error&) {
    // Halves of copies are of no use, least of all on a full disk.
    std::error_code ignored;
    std::filesystem::remove_all(keepingPlace, ignored);
    throw;
  }
  return {true, "backup", StoresDirectoryName(),
          "the files of the stores were copied as they were, since no backup can be made of them" +
              (unreadable == 0 ? std::string()
                               : "; " + std::to_string(unreadable) +
                                     " blocks that the disk does not give are zeros there"),
          NameOfPath(keepingPlace)};
}

}  // namespace HostRepair
