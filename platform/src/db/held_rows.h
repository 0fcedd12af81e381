// What one connection holds of rows, and how it knows that they did not change.
#pragma once

#include "platform/held_rows.h"

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

struct sqlite3;

namespace DBStore::internal {

/// Everything is held with the state of the write-ahead log that it was read in: the header of the log's
/// index, which every commit rewrites, whoever makes it, and which SQLite's own readers compare to
/// learn whether anything was written (https://www.sqlite.org/walformat.html, "The WAL-Index File
/// Format"). They read it in memory, without a lock or a call of the system. Without a log, nothing is
/// held.
///
/// Not thread-safe, but for IsEmpty: its connection locks.
class HeldRows {
 public:
  HeldRows() = default;
  HeldRows(const HeldRows&) = delete;
  HeldRows& operator=(const HeldRows&) = delete;

  bool IsEmpty() const noexcept { return isEmpty_.load(std::memory_order_relaxed); }

  /// Null where nothing is held that is current.
  MadeOfRow Find(sqlite3* database, const RowQuery& query) noexcept;
  /// Notes a row that was read just now; whether the store is as it was when it was read before.
  bool NoteRead(sqlite3* database, const RowQuery& query) noexcept;
  /// Of a row that was just noted so.
  void Hold(const RowQuery& query, MadeOfRow made, std::size_t size);
  /// Drops all rows.
  void Clear() noexcept;
  /// The same, before the database is closed.
  void Close() noexcept;

 private:
  using State = std::array<std::uint32_t, 12>;  // the header's words
  enum class Log { UNKNOWN, KEPT, NONE };

  struct Entry {
    std::uint64_t hash = 0;
    State state{};
    std::string_view sql;
    std::array<std::size_t, 4> lengths{};
    std::string parameters;
    MadeOfRow made;
    std::size_t size = 0;
    std::uint64_t lastUse = 0;

    bool IsOf(std::uint64_t wanted, const RowQuery& query) const noexcept;
  };
  struct Note {
    std::uint64_t hash = 0;
    State state{};
  };

  // Rows with the same remainder of their hash share a few entries, the least recently used of which
  // makes room.
  static constexpr std::size_t kSets = 64;
  static constexpr std::size_t kPerSet = 4;
  static constexpr std::size_t kMostBytes = std::size_t{512} << 10U;
  static constexpr std::size_t kMostBytesOfOne = kMostBytes / 4;

  static bool ReadState(sqlite3* database, State& state) noexcept;
  static std::uint64_t HashOf(const RowQuery& query) noexcept;
  Entry* EntryFor(std::uint64_t hash, const RowQuery& query) noexcept;
  void Drop(Entry& entry) noexcept;
  bool HasLog(sqlite3* database) noexcept;

  std::atomic<bool> isEmpty_{true};
  std::vector<Entry> entries_;
  std::array<Note, kSets> notes_{};
  std::size_t bytes_ = 0;
  std::uint64_t uses_ = 0;
  Log log_ = Log::UNKNOWN;
};

}  // namespace DBStore::internal
