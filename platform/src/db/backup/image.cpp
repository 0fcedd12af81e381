#include "db/backup/image.h"

#include <sqlite3.h>

#include <algorithm>
#include <cerrno>
#include <cinttypes>
#include <cstdio>
#include <cstring>
#include <unistd.h>

namespace DBStore::internal {
namespace {

constexpr const char* kName = "tarn-image";

// What SQLite takes for a file: laid over the memory that it has for one.
struct Image {
  sqlite3_file base;
  int descriptor;
  std::int64_t begin;
  std::int64_t length;
};

Image& ImageOf(sqlite3_file* file) noexcept {
  return *reinterpret_cast<Image*>(file);
}

int Close(sqlite3_file* /*file*/) {
  return SQLITE_OK;  // the descriptor is its owner's
}

int Read(sqlite3_file* file, void* buffer, int amount, sqlite3_int64 offset) {
  const Image& image = ImageOf(file);
  auto* to = static_cast<char*>(buffer);
  std::int64_t left =
      offset >= image.length ? 0 : std::min<std::int64_t>(amount, image.length - offset);
  int done = 0;
  while (left > 0) {
    const ssize_t got = pread(image.descriptor, to + done, static_cast<std::size_t>(left),
                              image.begin + offset + done);
    if (got < 0 && errno == EINTR) {
      continue;
    }
    if (got < 0) {
      return SQLITE_IOERR_READ;
    }
    if (got == 0) {
      break;
    }
    done += static_cast<int>(got);
    left -= got;
  }
  if (done == amount) {
    return SQLITE_OK;
  }
  std::memset(to + done, 0, static_cast<std::size_t>(amount - done));
  return SQLITE_IOERR_SHORT_READ;
}

int Write(sqlite3_file* file, const void* buffer, int amount, sqlite3_int64 offset) {
  Image& image = ImageOf(file);
  const auto* from = static_cast<const char*>(buffer);
  int done = 0;
  while (done < amount) {
    const ssize_t put =
        pwrite(image.descriptor, from + done, static_cast<std::size_t>(amount - done),
               image.begin + offset + done);
    if (put < 0 && errno == EINTR) {
      continue;
    }
    if (put <= 0) {
      return put == 0 || errno == ENOSPC || errno == EDQUOT || errno == EFBIG ? SQLITE_FULL
                                                                              : SQLITE_IOERR_WRITE;
    }
    done += static_cast<int>(put);
  }
  image.length = std::max<std::int64_t>(image.length, offset + amount);
  return SQLITE_OK;
}

int Truncate(sqlite3_file* file, sqlite3_int64 size) {
  Image& image = ImageOf(file);
  if (ftruncate(image.descriptor, image.begin + size) != 0) {
    return SQLITE_IOERR_TRUNCATE;
  }
  image.length = size;
  return SQLITE_OK;
}

int Sync(sqlite3_file* /*file*/, int /*flags*/) {
  return SQLITE_OK;  // its owner syncs the whole file
}

int FileSize(sqlite3_file* file, sqlite3_int64* size) {
  *size = ImageOf(file).length;
  return SQLITE_OK;
}

int Lock(sqlite3_file* /*file*/, int /*kind*/) {
  return SQLITE_OK;
}

int CheckReservedLock(sqlite3_file* /*file*/, int* isHeld) {
  *isHeld = 0;
  return SQLITE_OK;
}

int Control(sqlite3_file* /*file*/, int /*operation*/, void* /*argument*/) {
  return SQLITE_NOTFOUND;
}

int SectorSize(sqlite3_file* /*file*/) {
  return 4096;
}

int Characteristics(sqlite3_file* /*file*/) {
  return 0;
}

constexpr sqlite3_io_methods kMethods = {1,
                                         Close,
                                         Read,
                                         Write,
                                         Truncate,
                                         Sync,
                                         FileSize,
                                         Lock,
                                         Lock,
                                         CheckReservedLock,
                                         Control,
                                         SectorSize,
                                         Characteristics,
                                         nullptr,
                                         nullptr,
                                         nullptr,
                                         nullptr,
                                         nullptr,
                                         nullptr};

int Open(sqlite3_vfs* /*vfs*/, const char* name, sqlite3_file* file, int flags, int* given) {
  file->pMethods = nullptr;
  // No journals, and no temporary files, lie beside it.
  if (name == nullptr || (flags & SQLITE_OPEN_MAIN_DB) == 0) {
    return SQLITE_CANTOPEN;
  }
  Image& image = ImageOf(file);
  image.descriptor = static_cast<int>(sqlite3_uri_int64(name, "descriptor", -1));
  image.begin = sqlite3_uri_int64(name, "begin", 0);
  image.length = sqlite3_uri_int64(name, "length", 0);
  file->pMethods = &kMethods;
  if (given != nullptr) {
    *given = flags;
  }
  return SQLITE_OK;
}

int Delete(sqlite3_vfs* /*vfs*/, const char* /*name*/, int /*isDurable*/) {
  return SQLITE_OK;
}

int Access(sqlite3_vfs* /*vfs*/, const char* /*name*/, int /*flags*/, int* isThere) {
  *isThere = 0;
  return SQLITE_OK;
}

int FullName(sqlite3_vfs* /*vfs*/, const char* name, int size, char* full) {
  return std::snprintf(full, static_cast<std::size_t>(size), "%s", name) < size ? SQLITE_OK
                                                                                : SQLITE_CANTOPEN;
}

// Everything that is not about files is what SQLite brings along.
bool Register() noexcept {
  const sqlite3_vfs* const systems = sqlite3_vfs_find(nullptr);
  if (systems == nullptr) {
    return false;  // SQLite could not be set up
  }
  static sqlite3_vfs vfs = [systems] {
    sqlite3_vfs made = *systems;
    made.iVersion = 2;
    made.szOsFile = sizeof(Image);
    made.pNext = nullptr;
    made.zName = kName;
    made.xOpen = Open;
    made.xDelete = Delete;
    made.xAccess = Access;
    made.xFullPathname = FullName;
    return made;
  }();
  return sqlite3_vfs_find(kName) != nullptr || sqlite3_vfs_register(&vfs, 0) == SQLITE_OK;
}

}  // namespace

DatabaseHandle OpenImage(const ImagePlace& place, bool writable, int& code) noexcept {
  if (!Register()) {
    code = SQLITE_NOMEM;
    return nullptr;
  }
  char uri[128];
  std::snprintf(uri, sizeof uri,
                "file:image?vfs=%s&descriptor=%d&begin=%" PRId64 "&length=%" PRId64, kName,
                place.descriptor, place.begin, place.length);
  DatabaseHandle handle =
      OpenFile(uri, writable ? SQLITE_OPEN_READWRITE : SQLITE_OPEN_READONLY, code);
  if (code == SQLITE_OK) {
    // A copy that breaks off is thrown away, so nothing has to be taken back.
    code = sqlite3_exec(handle.get(),
                        writable ? "PRAGMA journal_mode=OFF; PRAGMA temp_store=MEMORY"
                                 : "PRAGMA temp_store=MEMORY; PRAGMA trusted_schema=OFF",
                        nullptr, nullptr, nullptr);
  }
  return handle;
}

}  // namespace DBStore::internal
