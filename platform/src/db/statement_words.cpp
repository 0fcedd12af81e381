#include "db/statement_words.h"

#include <cstddef>

namespace DBStore::internal {
namespace {

struct Kind {
  std::string_view word;    // that the statement begins with
  std::string_view before;  // the word before the table's name
  const char* does;
};

constexpr Kind kKinds[] = {
    {"SELECT", "FROM", "a read of "},     {"WITH", "FROM", "a read of "},
    {"INSERT", "INTO", "a write to "},    {"REPLACE", "INTO", "a write to "},
    {"UPDATE", "UPDATE", "a change of "}, {"DELETE", "FROM", "a deletion from "}};

// Takes the first word from a text, without quotes.
std::string_view TakeWord(std::string_view& text) noexcept {
  constexpr std::string_view kBetween = " \n\t\"'`();,";
  const std::size_t begin = text.find_first_not_of(kBetween);
  if (begin == std::string_view::npos) {
    text = {};
    return {};
  }
  text.remove_prefix(begin);
  const std::string_view word = text.substr(0, text.find_first_of(kBetween));
  text.remove_prefix(word.size());
  return word;
}

}  // namespace

StatementWords::StatementWords(std::string_view sql) noexcept : does("a statement") {
  std::string_view word = TakeWord(sql);
  for (const Kind& kind : kKinds) {
    if (kind.word != word) {
      continue;
    }
    while (!word.empty() && word != kind.before) {
      word = TakeWord(sql);
    }
    does = kind.does;
    table = TakeWord(sql);
    return;
  }
}

}  // namespace DBStore::internal
