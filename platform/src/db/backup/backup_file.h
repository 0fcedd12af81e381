// The file that holds both stores.
//
//     0     a header, padded to 4096 bytes
//     4096  the schema store, a database
//           padding up to the next multiple of 4096
//           the store, a database
//     end   the checksum of everything before it: 32 bytes of BLAKE2b (RFC 7693)
//
// The header: "TARN CONFIG\r\n\x1a\n" and a 0; the format and a reserved word; the time of writing in
// seconds since 1970; for each database, in their order, its application_id, its layout version, its
// offset and its length. Numbers are little-endian, of 4 or, times, offsets and lengths, 8 bytes.
// The checksum tells damage, not forgery: whoever may write the file may also make its checksum.
#pragma once

#include "platform/file_descriptor.h"
#include "platform/host_backup.h"

#include "db/backup/image.h"
#include "db/layout.h"

#include <array>
#include <string>

namespace DBStore::internal {

/// A database in a backup.
struct BackupPart {
  const Layout* layout = nullptr;
  int version = 0;
  std::int64_t begin = 0;
  std::int64_t length = 0;
};

/// A backup that is open, under the name that messages give it. What it finds wrong it raises as
/// std::runtime_error, reported.
class BackupFile {
 public:
  /// Where the first database begins, and what each begins at a multiple of.
  static constexpr std::int64_t kAlignment = 4096;

  /// An empty file that a backup is to be written to.
  BackupFile(FileDescriptor file, std::string name);
  /// Opens a backup and reads its header. Never waits, and opens none of the live stores' files:
  /// closing them would drop the locks that this process has on them.
  static BackupFile Open(const std::string& path, const std::string& name);

  int Descriptor() const noexcept { return file_.Number(); }
  const std::string& Name() const noexcept { return name_; }
  std::int64_t Length() const noexcept { return End() + kChecksumLength; }

  BackupPart schemaStore;
  BackupPart store;
  std::int64_t created = 0;

  /// Writes the header and the checksum around the databases, and makes the file durable.
  void Finish();

  /// Reads everything and compares it with the checksum.
  void CheckBytes() const;
  /// Looks into both databases: whether they are sound, and what there is in them.
  HostBackup::Content CheckContent() const;
  DatabaseHandle OpenPart(const BackupPart& part) const;

  /// Writes the same bytes to another file, and makes it durable.
  void CopyTo(const BackupFile& other) const;

 private:
  static constexpr std::int64_t kChecksumLength = 32;
  using Checksum = std::array<unsigned char, kChecksumLength>;

  std::int64_t End() const noexcept { return store.begin + store.length; }
  void ReadHeader();
  Checksum SumUp(const BackupFile* copy) const;
  void ReadAt(std::int64_t offset, unsigned char* to, std::size_t length) const;
  void WriteAt(std::int64_t offset, const unsigned char* from, std::size_t length) const;
  void Sync() const;
  std::uint64_t CheckPart(const BackupPart& part, const char* count) const;
  [[noreturn]] void Refuse(const std::string& what) const;

  FileDescriptor file_;
  std::string name_;
};

/// Whether a file, by what stat(2) says of it, is one of those that the stores consist of.
bool IsLiveFile(const struct stat& status);

}  // namespace DBStore::internal
