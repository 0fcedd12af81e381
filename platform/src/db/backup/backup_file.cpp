#include "db/backup/backup_file.h"

#include "platform/host_paths.h"

#include "db/backup/statements.h"
#include "db/raising.h"

#include <sodium.h>
#include <sqlite3.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace DBStore::internal {
namespace {

constexpr char kMagic[16] = "TARN CONFIG\r\n\x1a\n";
constexpr std::uint64_t kFormat = 1;
constexpr std::size_t kBlock = 1U << 18U;

// Both ways through the header, field by field.
class HeaderWriter {
 public:
  explicit HeaderWriter(unsigned char* to) : to_(to) {}
  void Number(std::uint64_t value, int bytes) {
    for (int i = 0; i < bytes; ++i) {
      *to_++ = static_cast<unsigned char>(value >> (8 * i));
    }
  }

 private:
  unsigned char* to_;
};

class HeaderReader {
 public:
  explicit HeaderReader(const unsigned char* from) : from_(from) {}
  std::uint64_t Number(int bytes) {
    std::uint64_t value = 0;
    for (int i = 0; i < bytes; ++i) {
      value |= static_cast<std::uint64_t>(*from_++) << (8 * i);
    }
    return value;
  }

 private:
  const unsigned char* from_;
};

void RequireRegular(const struct stat& status, const std::string& name) {
  if (!S_ISREG(status.st_mode)) {
    Raise(ErrorKind::OTHER, 0,
          name + (S_ISDIR(status.st_mode) ? ": is a directory, not a backup"
                                          : ": is a special file, not a backup"));
  }
}

}  // namespace

BackupFile::BackupFile(FileDescriptor file, std::string name)
    : file_(std::move(file)), name_(std::move(name)) {
  schemaStore.layout = &SchemaStoreLayout();
  store.layout = &CurrentStoreLayout();
}

BackupFile BackupFile::Open(const std::string& path, const std::string& name) {
  struct stat status {};
  if (stat(path.c_str(), &status) != 0) {
    RaiseSystemError(name, "cannot read the backup", errno);
  }
  RequireRegular(status, name);
  if (IsLiveFile(status)) {
    Raise(ErrorKind::OTHER, 0, name + ": is a file of the stores themselves, not a backup");
  }
  // It may be another one by now, and opening a pipe would wait for its writer.
  FileDescriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
  if (!file.IsOpen() || fstat(file.Number(), &status) != 0) {
    RaiseSystemError(name, "cannot read the backup", errno);
  }
  RequireRegular(status, name);
  BackupFile backup(std::move(file), name);
  backup.ReadHeader();
  if (status.st_size < backup.Length()) {
    backup.Refuse("is cut short: it has " + std::to_string(status.st_size) + " bytes of " +
                  std::to_string(backup.Length()));
  }
  if (status.st_size > backup.Length()) {
    backup.Refuse("is damaged: it has " + std::to_string(status.st_size) + " bytes, not " +
                  std::to_string(backup.Length()));
  }
  return backup;
}

void BackupFile::Refuse(const std::string& what) const {
  Raise(ErrorKind::OTHER, 0, name_ + ": " + what + "; use another backup");
}

void BackupFile::ReadHeader() {
  std::array<unsigned char, kAlignment> header{};
  struct stat status {};
  if (fstat(file_.Number(), &status) != 0) {
    RaiseSystemError(name_, "cannot read the backup", errno);
  }
  const auto there = std::min<std::int64_t>(status.st_size, header.size());
  ReadAt(0, header.data(), static_cast<std::size_t>(there));
  if (std::memcmp(header.data(), kMagic, sizeof kMagic) != 0) {
    Refuse("is not a backup of the stores");
  }
  if (there < kAlignment) {
    Refuse("is cut short: it ends within its header");
  }
  HeaderReader read(header.data() + sizeof kMagic);
  const std::uint64_t format = read.Number(4);
  if (format != kFormat) {
    Raise(ErrorKind::NEWER, 0,
          name_ + ": has format " + std::to_string(format) + ", this library knows format " +
              std::to_string(kFormat) + "; upgrade the library, or use another backup");
  }
  read.Number(4);
  created = static_cast<std::int64_t>(read.Number(8));
  std::int64_t end = kAlignment;
  for (BackupPart* part : {&schemaStore, &store}) {
    constexpr std::uint64_t kMost = std::uint64_t{1} << 62U;
    const auto applicationId = static_cast<int>(read.Number(4));
    part->version = static_cast<int>(read.Number(4));
    const std::uint64_t begin = read.Number(8);
    const std::uint64_t length = read.Number(8);
    if (applicationId != part->layout->applicationId || begin > kMost || length > kMost ||
        static_cast<std::int64_t>(begin) < end) {
      Refuse("is damaged: its header makes no sense");
    }
    part->begin = static_cast<std::int64_t>(begin);
    part->length = static_cast<std::int64_t>(length);
    end = part->begin + part->length;
  }
}

void BackupFile::Finish() {
  std::array<unsigned char, kAlignment> header{};
  std::memcpy(header.data(), kMagic, sizeof kMagic);
  HeaderWriter write(header.data() + sizeof kMagic);
  write.Number(kFormat, 4);
  write.Number(0, 4);
  write.Number(static_cast<std::uint64_t>(created), 8);
  for (const BackupPart* part : {&schemaStore, &store}) {
    write.Number(static_cast<std::uint64_t>(part->layout->applicationId), 4);
    write.Number(static_cast<std::uint64_t>(part->version), 4);
    write.Number(static_cast<std::uint64_t>(part->begin), 8);
    write.Number(static_cast<std::uint64_t>(part->length), 8);
  }
  WriteAt(0, header.data(), header.size());
  const Checksum sum = SumUp(nullptr);
  WriteAt(End(), sum.data(), sum.size());
  Sync();
  // So that checking it reads what the disk has.
  posix_fadvise(file_.Number(), 0, 0, POSIX_FADV_DONTNEED);
}

void BackupFile::CheckBytes() const {
  Checksum kept;
  const Checksum sum = SumUp(nullptr);
  ReadAt(End(), kept.data(), kept.size());
  if (sum != kept) {
    Refuse("is damaged: its checksum is not that of its content");
  }
}

void BackupFile::CopyTo(const BackupFile& other) const {
  Checksum kept;
  ReadAt(End(), kept.data(), kept.size());
  if (SumUp(&other) != kept) {
    Refuse("is damaged: its checksum is not that of its content");
  }
  other.WriteAt(End(), kept.data(), kept.size());
  other.Sync();
}

BackupFile::Checksum BackupFile::SumUp(const BackupFile* copy) const {
  if (sodium_init() < 0) {
    Raise(ErrorKind::OTHER, 0, name_ + ": checksums cannot be made on this machine");
  }
  crypto_generichash_state state;
  crypto_generichash_init(&state, nullptr, 0, kChecksumLength);
  std::vector<unsigned char> block(kBlock);
  for (std::int64_t offset = 0; offset < End();) {
    const auto length = static_cast<std::size_t>(std::min<std::int64_t>(kBlock, End() - offset));
    ReadAt(offset, block.data(), length);
    crypto_generichash_update(&state, block.data(), length);
    if (copy != nullptr) {
      copy->WriteAt(offset, block.data(), length);
    }
    offset += static_cast<std::int64_t>(length);
  }
  Checksum sum;
  crypto_generichash_final(&state, sum.data(), sum.size());
  return sum;
}

void BackupFile::ReadAt(std::int64_t offset, unsigned char* to, std::size_t length) const {
  while (length > 0) {
    const ssize_t got = pread(file_.Number(), to, length, offset);
    if (got < 0 && errno == EINTR) {
      continue;
    }
    if (got < 0) {
      RaiseSystemError(name_, "cannot read the backup", errno);
    }
    if (got == 0) {
      Refuse("is cut short: it ended while it was read");
    }
    to += got;
    offset += got;
    length -= static_cast<std::size_t>(got);
  }
}

void BackupFile::WriteAt(std::int64_t offset, const unsigned char* from, std::size_t length) const {
  while (length > 0) {
    const ssize_t put = pwrite(file_.Number(), from, length, offset);
    if (put < 0 && errno == EINTR) {
      continue;
    }
    if (put <= 0) {
      RaiseSystemError(name_, "cannot write the backup", put == 0 ? ENOSPC : errno);
    }
    from += put;
    offset += put;
    length -= static_cast<std::size_t>(put);
  }
}

void BackupFile::Sync() const {
  if (fsync(file_.Number()) != 0) {
    RaiseSystemError(name_, "cannot make the backup durable", errno);
  }
}

bool IsLiveFile(const struct stat& status) {
  const FileIdentity file{status.st_dev, status.st_ino};
  for (const char* fixedPath : {HostPaths::kStore, HostPaths::kSchemaStore}) {
    for (const char* suffix : {"", "-wal", "-shm", "-journal"}) {
      FileIdentity live;
      if (IdentifyFile(HostPaths::Resolve(fixedPath) + suffix, live) && live.IsSameFile(file)) {
        return true;
      }
    }
  }
  return false;
}

}  // namespace DBStore::internal
