// The pages of a database as they lie in its files, sound or not: each from the write-ahead log where
// that has it, else from the database.
#pragma once

#include "db/database_file.h"
#include "db/doctor/log_images.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace DBStore::internal {

/// The log beside a database, read while nobody wrote to it; empty where there is none, or it cannot
/// be read. Nobody's locks lie on it.
std::string ReadLogFile(const std::string& database);

/// Reads the database through SQLite's own descriptor: opening and closing the file by other means
/// would drop the locks that this process has on it. Where SQLite can read the database, nobody
/// writes the log anew as long as this lives; nor does its end write anything back.
class PageImages {
 public:
  /// What SQLite sees; or, where the log hides commits from it, what it would see with them.
  enum class View { OF_SQLITE, WITH_HIDDEN };
  explicit PageImages(const std::string& path, View view = View::OF_SQLITE);
  PageImages(const PageImages&) = delete;
  PageImages& operator=(const PageImages&) = delete;

  std::uint32_t Count() const noexcept { return count_; }
  std::size_t PageSize() const noexcept { return pageSize_; }
  /// The bytes of a page that hold content.
  std::size_t Usable() const noexcept { return pageSize_ - reserved_; }
  /// The first page begins as that of a database does.
  bool HasHeader() const noexcept { return hasHeader_; }
  const LogImages& Log() const noexcept { return log_; }

  /// A page, counted from 1. False where there is none, or not all of it.
  bool Read(std::uint32_t page, std::string& image) const;
  /// The bytes of the database file itself. False beyond its end.
  bool ReadFile(std::int64_t offset, std::size_t length, std::string& bytes) const;
  std::int64_t FileLength() const noexcept { return fileLength_; }

 private:
  void ReadHeader(View view);

  DatabaseHandle handle_;
  std::int64_t fileLength_ = 0;
  std::string logBytes_;
  LogImages log_;
  LogImages::Pages logged_;
  std::size_t pageSize_ = 4096;
  std::size_t reserved_ = 0;
  std::uint32_t count_ = 0;
  bool hasHeader_ = false;
};

}  // namespace DBStore::internal
