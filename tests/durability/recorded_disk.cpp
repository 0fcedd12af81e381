#include "durability/recorded_disk.h"

#include <sqlite3.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <new>
#include <stdexcept>
#include <utility>

namespace Durability {
namespace {

RecordedDisk* recorder = nullptr;
sqlite3_vfs* beneath = nullptr;

// A file of SQLite's: its own begins where this ends.
struct RecordedFile {
  sqlite3_file base;
  std::string* name;

  sqlite3_file* Own() { return reinterpret_cast<sqlite3_file*>(this + 1); }
};

RecordedFile& Of(sqlite3_file* file) {
  return *reinterpret_cast<RecordedFile*>(file);
}
sqlite3_file* Own(sqlite3_file* file) {
  return Of(file).Own();
}

void Note(sqlite3_file* file, DiskEvent::Kind kind, sqlite3_int64 offset = 0,
          std::string bytes = {}) {
  if (recorder != nullptr) {
    recorder->Add({kind, *Of(file).name, offset, std::move(bytes)});
  }
}

// All calls go on to the file beneath; those that change it are written down once they succeed.
template <auto Method, class... Arguments>
int Pass(sqlite3_file* file, Arguments... arguments) {
  sqlite3_file* const own = Own(file);
  return (own->pMethods->*Method)(own, arguments...);
}

int Close(sqlite3_file* file) {
  const int code = Pass<&sqlite3_io_methods::xClose>(file);
  delete Of(file).name;
  return code;
}

int Write(sqlite3_file* file, const void* bytes, int size, sqlite3_int64 offset) {
  const int code = Pass<&sqlite3_io_methods::xWrite>(file, bytes, size, offset);
  if (code == SQLITE_OK) {
    Note(file, DiskEvent::Kind::WRITE, offset,
         std::string(static_cast<const char*>(bytes), static_cast<std::size_t>(size)));
  }
  return code;
}

int Truncate(sqlite3_file* file, sqlite3_int64 size) {
  const int code = Pass<&sqlite3_io_methods::xTruncate>(file, size);
  if (code == SQLITE_OK) {
    Note(file, DiskEvent::Kind::TRUNCATE, size);
  }
  return code;
}

int Sync(sqlite3_file* file, int flags) {
  const int code = Pass<&sqlite3_io_methods::xSync>(file, flags);
  if (code == SQLITE_OK) {
    Note(file, DiskEvent::Kind::SYNC);
  }
  return code;
}

void Barrier(sqlite3_file* file) {
  Own(file)->pMethods->xShmBarrier(Own(file));
}

// No pages are mapped: what is written has to come this way.
const sqlite3_io_methods kMethods = {
    2,
    Close,
    Pass<&sqlite3_io_methods::xRead>,
    Write,
    Truncate,
    Sync,
    Pass<&sqlite3_io_methods::xFileSize>,
    Pass<&sqlite3_io_methods::xLock>,
    Pass<&sqlite3_io_methods::xUnlock>,
    Pass<&sqlite3_io_methods::xCheckReservedLock>,
    Pass<&sqlite3_io_methods::xFileControl>,
    Pass<&sqlite3_io_methods::xSectorSize>,
    Pass<&sqlite3_io_methods::xDeviceCharacteristics>,
    Pass<&sqlite3_io_methods::xShmMap>,
    Pass<&sqlite3_io_methods::xShmLock>,
    Barrier,
    Pass<&sqlite3_io_methods::xShmUnmap>,
    nullptr,
    nullptr,
};

int Open(sqlite3_vfs* /*vfs*/, const char* path, sqlite3_file* file, int flags, int* found) {
  RecordedFile& recorded = *new (file) RecordedFile{{nullptr}, nullptr};
  const int code = beneath->xOpen(beneath, path, recorded.Own(), flags, found);
  if (recorded.Own()->pMethods != nullptr) {
    recorded.base.pMethods = &kMethods;
    recorded.name = new std::string(path == nullptr ? "" : path);
  }
  return code;
}

int Remove(sqlite3_vfs* /*vfs*/, const char* path, int syncsDirectory) {
  const int code = beneath->xDelete(beneath, path, syncsDirectory);
  if (code == SQLITE_OK && recorder != nullptr) {
    recorder->Add({DiskEvent::Kind::REMOVE, path});
  }
  return code;
}

sqlite3_vfs vfs;

std::string ReadAll(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

}  // namespace

RecordedDisk::RecordedDisk() {
  beneath = sqlite3_vfs_find(nullptr);
  if (recorder != nullptr || beneath == nullptr) {
    throw std::logic_error("one disk is recorded at a time");
  }
  vfs = *beneath;
  vfs.zName = "recorded";
  vfs.szOsFile += static_cast<int>(sizeof(RecordedFile));
  vfs.xOpen = Open;
  vfs.xDelete = Remove;
  vfs.pNext = nullptr;
  sqlite3_vfs_register(&vfs, 1);
  recorder = this;
}

RecordedDisk::~RecordedDisk() {
  recorder = nullptr;
  // What is open still stays registered with it: the methods above stay.
  sqlite3_vfs_register(beneath, 1);
}

void RecordedDisk::Record(const std::string& directory) {
  directory_ = directory + "/";
  for (const auto& entry : std::filesystem::directory_iterator(directory)) {
    const std::string name = entry.path().string();
    if (entry.is_regular_file() && !name.ends_with("-shm")) {
      before_[name] = ReadAll(entry.path());
    }
  }
}

void RecordedDisk::Promise() {
  events_.push_back({DiskEvent::Kind::PROMISE});
}

void RecordedDisk::Add(DiskEvent event) {
  if (!directory_.empty() && event.file.starts_with(directory_)) {
    events_.push_back(std::move(event));
  }
}

}  // namespace Durability
