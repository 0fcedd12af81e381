#include "db/doctor/page_images.h"

#include "db/doctor/records.h"
#include "json/text_file.h"

#include <sqlite3.h>

#include <algorithm>
#include <sys/stat.h>
#include <utility>

namespace DBStore::internal {
namespace {

constexpr std::string_view kDatabaseMagic("SQLite format 3\0", 16);
constexpr std::size_t kLongestLog = std::size_t{1} << 30U;

// Keeps the log from being written anew while it is read, where the database can be read at all.
void TryToHoldStill(sqlite3* database) noexcept {
  sqlite3_db_config(database, SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
  sqlite3_exec(database, "BEGIN; SELECT 1 FROM sqlite_schema", nullptr, nullptr, nullptr);
}

sqlite3_file* FileOf(sqlite3* database) noexcept {
  sqlite3_file* file = nullptr;
  sqlite3_file_control(database, "main", SQLITE_FCNTL_FILE_POINTER, &file);
  return file != nullptr && file->pMethods != nullptr ? file : nullptr;
}

bool IsRegular(const std::string& path) {
  struct stat status {};
  return lstat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode);
}

}  // namespace

std::string ReadLogFile(const std::string& database) {
  const std::string path = database + "-wal";
  if (!IsRegular(path)) {
    return {};
  }
  Json::TextFile log = Json::ReadTextFile(path, kLongestLog);
  if (!log) {
    return {};
  }
  constexpr int kAttempts = 20;
  for (int attempt = 0; attempt < kAttempts; ++attempt) {
    Json::TextFile again = Json::ReadTextFile(path, kLongestLog);
    if (!again || again.text == log.text) {
      break;
    }
    log = std::move(again);
  }
  return std::move(log.text);
}

PageImages::PageImages(const std::string& path, View view) {
  int code = SQLITE_OK;
  if (IsRegular(path)) {
    handle_ = OpenWithSettings(CanonicalPath(path), false, code);
  }
  if (handle_) {
    TryToHoldStill(handle_.get());
    if (sqlite3_file* file = FileOf(handle_.get())) {
      sqlite3_int64 length = 0;
      file->pMethods->xFileSize(file, &length);
      fileLength_ = length;
    }
  }
  logBytes_ = ReadLogFile(path);
  ReadHeader(view);
}

void PageImages::ReadHeader(View view) {
  std::string header;
  const auto take = [&header, this] {
    hasHeader_ = header.substr(0, kDatabaseMagic.size()) == kDatabaseMagic;
    if (hasHeader_) {
      const std::size_t size = ReadBigEndian(std::string_view(header).substr(16), 2);
      const std::size_t pageSize = size == 1 ? 65536 : size;
      hasHeader_ = pageSize >= 512 && (pageSize & (pageSize - 1)) == 0;
      pageSize_ = hasHeader_ ? pageSize : pageSize_;
      reserved_ = hasHeader_ ? static_cast<unsigned char>(header[20]) : 0;
    }
  };
  if (ReadFile(0, 100, header)) {
    take();
  }
  log_ = ReadLog(logBytes_, pageSize_);
  logged_ = log_.pages;
  if (view == View::WITH_HIDDEN) {
    for (const auto& [page, offset] : log_.hidden) {
      logged_[page] = offset;
    }
  }
  if (const auto first = logged_.find(1); first != logged_.end()) {
    header = logBytes_.substr(first->second, 100);
    take();
  }
  if (!logged_.empty()) {
    pageSize_ = log_.pageSize;
  }
  count_ = static_cast<std::uint32_t>((fileLength_ + static_cast<std::int64_t>(pageSize_) - 1) /
                                      static_cast<std::int64_t>(pageSize_));
  if (!logged_.empty()) {
    count_ = std::max(count_, logged_.rbegin()->first);
  }
}

bool PageImages::ReadFile(std::int64_t offset, std::size_t length, std::string& bytes) const {
  sqlite3_file* file = handle_ ? FileOf(handle_.get()) : nullptr;
  if (file == nullptr || offset + static_cast<std::int64_t>(length) > fileLength_) {
    return false;
  }
  bytes.resize(length);
  return file->pMethods->xRead(file, bytes.data(), static_cast<int>(length), offset) == SQLITE_OK;
}

bool PageImages::Read(std::uint32_t page, std::string& image) const {
  if (page == 0 || page > count_) {
    return false;
  }
  const auto logged = logged_.find(page);
  if (logged != logged_.end()) {
    image.assign(logBytes_, logged->second, pageSize_);
    return true;
  }
  const auto size = static_cast<std::int64_t>(pageSize_);
  return ReadFile((page - 1) * size, pageSize_, image);
}

}  // namespace DBStore::internal
