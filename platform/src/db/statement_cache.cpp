#include "db/statement_cache.h"

#include <sqlite3.h>

#include <algorithm>
#include <cstring>

namespace DBStore::internal {
namespace {

bool HasText(const CachedStatement& entry, std::string_view text) noexcept {
  return entry.text.size() == text.size() &&
         std::memcmp(entry.text.data(), text.data(), text.size()) == 0;
}

}  // namespace

CachedStatement::CachedStatement(sqlite3_stmt* prepared, std::string_view sql)
    : statement(prepared),
      text(sql),
      parameters(static_cast<std::size_t>(sqlite3_bind_parameter_count(prepared))) {}

std::size_t StatementCache::HintOf(std::string_view text) noexcept {
  // Most texts are constants: where one lies tells it from the others without looking at it.
  const auto address = reinterpret_cast<std::uintptr_t>(text.data());
  return (address ^ (address >> 8) ^ text.size()) % kHints;
}

CachedStatement* StatementCache::Lend(CachedStatement* entry, std::string_view text) noexcept {
  hints_[HintOf(text)] = entry;
  entry->taken = true;
  entry->lastUse = ++uses_;
  return entry;
}

CachedStatement* StatementCache::Take(std::string_view text) noexcept {
  CachedStatement* hint = hints_[HintOf(text)];
  if (hint != nullptr && !hint->taken && HasText(*hint, text)) {
    hint->taken = true;
    hint->lastUse = ++uses_;
    return hint;
  }
  for (const auto& entry : entries_) {
    if (!entry->taken && HasText(*entry, text)) {
      return Lend(entry.get(), text);
    }
  }
  return nullptr;
}

CachedStatement* StatementCache::Add(std::string_view text, sqlite3_stmt* statement) {
  try {
    if (entries_.size() >= kCapacity) {
      DropLeastRecentlyUsed();
    }
    entries_.push_back(std::make_unique<CachedStatement>(statement, text));
  } catch (...) {
    sqlite3_finalize(statement);
    throw;
  }
  return Lend(entries_.back().get(), text);
}

void StatementCache::GiveBack(CachedStatement* entry) noexcept {
  if (entry->statement != nullptr) {
    sqlite3_reset(entry->statement);
  }
  entry->parameters.Clear();
  entry->taken = false;
  entry->running = false;
}

bool StatementCache::AreIdle() const noexcept {
  return std::none_of(entries_.begin(), entries_.end(),
                      [](const auto& entry) { return entry->taken; });
}

void StatementCache::Finalise() noexcept {
  for (const auto& entry : entries_) {
    sqlite3_finalize(entry->statement);
    entry->statement = nullptr;
  }
}

void StatementCache::Clear() noexcept {
  Finalise();
  entries_.clear();
  hints_.fill(nullptr);
}

void StatementCache::DropLeastRecentlyUsed() noexcept {
  std::unique_ptr<CachedStatement>* oldest = nullptr;
  for (auto& entry : entries_) {
    if (!entry->taken && (oldest == nullptr || entry->lastUse < (*oldest)->lastUse)) {
      oldest = &entry;
    }
  }
  if (oldest == nullptr) {
    return;
  }
  for (CachedStatement*& hint : hints_) {
    if (hint == oldest->get()) {
      hint = nullptr;
    }
  }
  sqlite3_finalize((*oldest)->statement);
  oldest->swap(entries_.back());
  entries_.pop_back();
}

}  // namespace DBStore::internal
