// What a statement's parameters are to be.
#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

struct sqlite3_stmt;

namespace DBStore::internal {

/// Collects the values of a statement's parameters until it runs. Whoever holds the statement fills
/// them in without its connection's lock, and the engine gets them all in one turn. Texts are not
/// copied: they have to live until the statement has run.
class Parameters {
 public:
  explicit Parameters(std::size_t count) : values_(count) {}

  // False when there is no such parameter; the first one is 1.
  bool SetNull(int index) noexcept { return Set(index, Kind::NOTHING, 0, {}); }
  bool SetInteger(int index, int value) noexcept { return Set(index, Kind::INTEGER, value, {}); }
  bool SetText(int index, std::string_view text) noexcept {
    return Set(index, Kind::TEXT, 0, text);
  }

  /// Binds what was set since it last did. Returns SQLite's result code.
  int Bind(sqlite3_stmt* statement) noexcept;
  /// Forgets what was set. What is bound stays so until the next Bind, which makes it NULL where nothing
  /// else was set: as a rule everything is.
  void Clear() noexcept;

 private:
  enum class Kind { KEPT, NOTHING, INTEGER, TEXT };
  struct Value {
    Kind kind = Kind::KEPT;
    int number = 0;
    std::string_view text;
    bool isBound = false;  // to something; NULL is what there is at first
  };
  bool Set(int index, Kind kind, int number, std::string_view text) noexcept;

  std::vector<Value> values_;
  bool changed_ = false;
};

}  // namespace DBStore::internal
