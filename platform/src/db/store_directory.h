// The directory of the stores: making it, keeping others out of it, and putting new files into it.
#pragma once

#include "platform/file_descriptor.h"

#include <string>
#include <string_view>
#include <vector>

namespace DBStore::internal {

/// Keeps other processes from making, restoring or completing stores in a directory. The lock is on
/// the directory itself, which nobody has to make first, and ends with the process that holds it. Who
/// takes it holds the lock of the process for whole stores (process_locks.h), so that no child
/// inherits it.
class StoreDirectory {
 public:
  /// Makes the directory with those above it, below the root, where they are missing.
  /// \param made  gets the paths of what was made
  static void Make(std::vector<std::string>& made);

  /// Waits for the lock up to the wait limit. Raises std::runtime_error.
  /// \param isNeedless  asked while others have the lock: true ends the waiting, without the lock
  explicit StoreDirectory(bool (*isNeedless)() noexcept = nullptr);
  ~StoreDirectory();
  StoreDirectory(const StoreDirectory&) = delete;
  StoreDirectory& operator=(const StoreDirectory&) = delete;

  bool IsHeld() const noexcept { return isHeld_; }
  /// Where a file of a fixed path lies.
  std::string PathOf(const char* fixedPath) const;
  /// Makes names that were given or taken durable. Raises std::runtime_error.
  void Sync() const;

 private:
  const std::string path_;
  FileDescriptor directory_;
  bool isHeld_ = false;
};

/// Makes an empty file, in the place of one that an earlier attempt left. Raises std::runtime_error
/// that names the fixed path.
FileDescriptor MakeDraft(const std::string& draft, unsigned mode, std::string_view fixedPath);

/// Removes what SQLite keeps beside a database.
void RemoveBeside(const std::string& database) noexcept;

/// Removes a database that did not get its name, with what SQLite keeps beside it.
void RemoveDraft(const std::string& draft) noexcept;

/// Never over a file that is there, whoever made it. False, with errno, when that cannot be done.
bool GiveName(const std::string& draft, const std::string& path) noexcept;

}  // namespace DBStore::internal
