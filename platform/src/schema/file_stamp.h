// Noticing that a file has changed, for less than the price of a stat.
#pragma once

#include "platform/file_descriptor.h"

#include <cstdint>
#include <string>
#include <sys/types.h>

namespace TarnSchemaStore {

/// What stat tells of a file that changes when its content does; all zero when there is none.
struct FileStamp {
  dev_t device = 0;
  ino_t inode = 0;
  off_t size = 0;
  std::int64_t modified = 0;  ///< nanoseconds since 1970
  std::int64_t changed = 0;   ///< nanoseconds since 1970

  bool Exists() const { return inode != 0; }
  friend bool operator==(const FileStamp&, const FileStamp&) = default;
};

/// Never opens the file: closing it again would drop SQLite's locks on it.
FileStamp StampOf(const std::string& path) noexcept;

/// Keeps a hold on a file through which it can be asked about without looking its path up. A
/// descriptor of the path only (O_PATH): closing it drops nobody's locks, as closing any other one
/// would.
class FileWatch {
 public:
  explicit FileWatch(const std::string& path) noexcept;

  /// The file's stamp now, wherever it lies by now: a file that was removed or replaced has another
  /// one. All zero when there was no file.
  FileStamp Stamp() const noexcept;

 private:
  FileDescriptor file_;
};

/// Nanoseconds since 1970.
std::int64_t Now() noexcept;

/// A file that was written just before the stamp was taken could be written again without its stamp
/// changing, because clocks of file systems tick a few milliseconds apart. Only a stamp of which
/// this is false speaks for what comes after it.
/// \param taken  what Now() said before the stamp was taken
bool MayHideChanges(const FileStamp& stamp, std::int64_t taken) noexcept;

}  // namespace TarnSchemaStore
