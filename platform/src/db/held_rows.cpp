#include "db/held_rows.h"

#include "db/query.h"
#include "db/testing_hook.h"

#include <sqlite3.h>

#include <algorithm>
#include <functional>
#include <span>
#include <utility>

namespace DBStore::internal {

// False where the header is being written, or is none that is known.
bool HeldRows::ReadState(sqlite3* database, State& state) noexcept {
  constexpr std::uint32_t kFormat = 3007000;
  constexpr int kRegion = 32768;
  sqlite3_file* file = nullptr;
  void volatile* region = nullptr;
  if (sqlite3_file_control(database, "main", SQLITE_FCNTL_FILE_POINTER, &file) != SQLITE_OK ||
      file->pMethods == nullptr || file->pMethods->iVersion < 2 ||
      file->pMethods->xShmMap(file, 0, kRegion, 0, &region) != SQLITE_OK || region == nullptr) {
    return false;
  }
  // There are two copies, written in the other order.
  const auto* const words = static_cast<const volatile std::uint32_t*>(region);
  for (std::size_t i = 0; i < state.size(); ++i) {
    state[i] = words[i];
  }
  file->pMethods->xShmBarrier(file);
  for (std::size_t i = 0; i < state.size(); ++i) {
    if (state[i] != words[state.size() + i]) {
      return false;
    }
  }
  return state[0] == kFormat;
}

// Asking for the index of a log that is not kept would make one.
bool HeldRows::HasLog(sqlite3* database) noexcept {
  if (log_ == Log::UNKNOWN) {
    CountPrepare();
    Query mode(database, "PRAGMA journal_mode");
    log_ = mode.Step() && mode.Is(0, "wal") ? Log::KEPT : Log::NONE;
  }
  return log_ == Log::KEPT;
}

std::uint64_t HeldRows::HashOf(const RowQuery& query) noexcept {
  constexpr std::uint64_t kOdd = 0x9e3779b97f4a7c15U;
  std::uint64_t hash = reinterpret_cast<std::uintptr_t>(query.sql.data());
  for (const std::string_view parameter : query.parameters) {
    hash = (hash ^ std::hash<std::string_view>()(parameter)) * kOdd;
  }
  return hash ^ (hash >> 32U);
}

bool HeldRows::Entry::IsOf(std::uint64_t wanted, const RowQuery& query) const noexcept {
  if (hash != wanted || !made || sql.data() != query.sql.data() || sql.size() != query.sql.size()) {
    return false;
  }
  std::string_view rest = parameters;
  for (std::size_t i = 0; i < lengths.size(); ++i) {
    const std::string_view parameter = query.parameters[i];
    if (parameter.size() != lengths[i] || !rest.starts_with(parameter)) {
      return false;
    }
    rest.remove_prefix(parameter.size());
  }
  return true;
}

// The one that holds the row, or else the one to hold it; null before there are any.
HeldRows::Entry* HeldRows::EntryFor(std::uint64_t hash, const RowQuery& query) noexcept {
  if (entries_.empty()) {
    return nullptr;
  }
  const std::span<Entry> set(&entries_[hash % kSets * kPerSet], kPerSet);
  for (Entry& entry : set) {
    if (entry.IsOf(hash, query)) {
      return &entry;
    }
  }
  return &*std::ranges::min_element(set, {}, &Entry::lastUse);
}

void HeldRows::Drop(Entry& entry) noexcept {
  bytes_ -= entry.size;
  entry = Entry();
}

MadeOfRow HeldRows::Find(sqlite3* database, const RowQuery& query) noexcept {
  const std::uint64_t hash = HashOf(query);
  Entry* const entry = EntryFor(hash, query);
  if (entry == nullptr || !entry->IsOf(hash, query)) {
    return nullptr;
  }
  State present;
  if (!ReadState(database, present) || present != entry->state) {
    Drop(*entry);
    return nullptr;
  }
  entry->lastUse = ++uses_;
  return entry->made;
}

// Noted is the state after the row was read. Found again after it was read once more, it is also the
// one that this second reading saw.
bool HeldRows::NoteRead(sqlite3* database, const RowQuery& query) noexcept {
  Note read{HashOf(query)};
  if (!HasLog(database) || !ReadState(database, read.state)) {
    return false;
  }
  const Note before = std::exchange(notes_[read.hash % kSets], read);
  return before.hash == read.hash && before.state == read.state;
}

void HeldRows::Hold(const RowQuery& query, MadeOfRow made, std::size_t size) {
  if (size > kMostBytesOfOne) {
    return;
  }
  const std::uint64_t hash = HashOf(query);
  std::string parameters;
  std::array<std::size_t, 4> lengths{};
  for (std::size_t i = 0; i < lengths.size(); ++i) {
    parameters += query.parameters[i];
    lengths[i] = query.parameters[i].size();
  }
  size += sizeof(Entry) + parameters.size();
  if (entries_.empty()) {
    entries_.resize(kSets * kPerSet);
    isEmpty_.store(false, std::memory_order_relaxed);
  } else if (bytes_ + size > kMostBytes) {
    std::ranges::for_each(entries_, [this](Entry& entry) { Drop(entry); });
  }
  Entry& entry = *EntryFor(hash, query);
  Drop(entry);
  entry = {hash,
           notes_[hash % kSets].state,
           query.sql,
           lengths,
           std::move(parameters),
           std::move(made),
           size,
           ++uses_};
  bytes_ += size;
}

void HeldRows::Clear() noexcept {
  entries_.clear();
  isEmpty_.store(true, std::memory_order_relaxed);
  notes_ = {};
  bytes_ = 0;
}

void HeldRows::Close() noexcept {
  Clear();
  log_ = Log::UNKNOWN;
}

}  // namespace DBStore::internal
