// Both stores in one file, and back.
#pragma once

#include "tarnconfigstore/export.h"

#include <cstdint>
#include <string>
#include <vector>

namespace TarnConfigStore {

/// What a backup holds.
struct BackupContent {
  std::string creationTime;   ///< of the backup: UTC, "YYYY-MM-DD HH:MM:SS"
  int storeLayout = 0;        ///< version of the layout of the store's tables: 1 or 2
  int schemaStoreLayout = 0;  ///< the same of the schema store
  std::uint64_t objects = 0;  ///< stored objects, as ListStored counts them
  std::uint64_t types = 0;    ///< installed types
};

/// How BackupHost deals with what is there.
struct BackupOptions {
  bool replace = false;  ///< takes the place of a file of that name; otherwise it is refused
};

/// What BackupHost wrote.
struct BackupReport {
  std::string path;         ///< as it was given
  std::uint64_t bytes = 0;  ///< length of the file
  BackupContent content;
};

/// Writes the store and the schema store into one file: both as they are at one moment, with
/// everything that was committed before, while threads and processes go on reading and writing.
/// Installing and removing types waits while the types are copied.
///
/// The file appears under its name when it is whole, has been read again and found sound; with mode
/// 0600, since it holds every secret of the stores. Until then it lies in the same directory under a
/// name of its own, beginning with ".tarn-backup-", which only a process that is killed leaves
/// behind. No symbolic link is followed at the file's name. Thread-safe; a fork waits for the end.
/// \param path  a file outside the directory of the stores
/// \throws ConfigStoreException 2000 with the path, what is wrong and what corrects it: a file that is
///         there, no right to write, a full disk, a store that is missing, damaged or locked. What was
///         at the path stays as it was, and no other file is left. Needs the right to write the
///         stores
TARN_CONFIG_STORE_EXPORT BackupReport BackupHost(const std::string& path,
                                                 const BackupOptions& options = {});

/// How RestoreHost deals with what is there.
struct RestoreOptions {
  bool force =
      false;  ///< restores over stores that are there, and over what is left of damaged ones
};

/// What RestoreHost changed.
struct RestoreReport {
  std::string storePath;              ///< path of the store, under the root
  std::string schemaStorePath;        ///< path of the schema store, under the root
  std::vector<std::string> created;   ///< files and directories that were created
  std::vector<std::string> replaced;  ///< databases whose content is now the backup's
  std::vector<std::string> outdated;  ///< those of them, and of the created, whose tables are an
                                      ///< older library's
  BackupContent content;
};

/// Makes the stores what they were when a backup was written. What is missing of directories and
/// databases is created as InitializeHost does.
///
/// The tables are those of the library that wrote the backup. An older one's are used as they are;
/// InitializeHost brings them over.
///
/// A database that is there is written, in one transaction: whoever has it open sees the new content
/// from then on, and the new types with it. What is stored and installed and is not in the backup is
/// lost; nobody is notified. Both databases change, or neither, even if the process is killed in the
/// middle: a restore that was begun is completed by whoever next opens a store, reads or writes, and
/// is allowed to write both, and until then the stores refuse to be used. A damaged database is
/// written as well, but while other processes have it open it may be refused as locked.
/// Thread-safe; a fork waits for the end.
/// \throws ConfigStoreException 2000 with the path, what is wrong and what corrects it: a file that is
///         no backup, was cut short or altered, is of a newer library, stores that are there without
///         `force`, no right to write them, others writing for longer than 3 seconds, a transaction
///         of this thread, a full disk. The stores are as before then, unless the message says that
///         the restore is to be completed
TARN_CONFIG_STORE_EXPORT RestoreReport RestoreHost(const std::string& path,
                                                   const RestoreOptions& options = {});

}  // namespace TarnConfigStore
