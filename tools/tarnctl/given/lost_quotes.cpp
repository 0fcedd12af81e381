#include "given/lost_quotes.h"

#include "json/json.h"
#include "json/scan.h"

#include <algorithm>

namespace tarnctl {
namespace {

class Reader {
 public:
  explicit Reader(std::string_view text) : text_(text) {}

  bool ReadAll() {
    return (Next() == '[' || Next() == '{') && ReadValue("") && Next() == '\0' && hasBareWord_;
  }

 private:
  static constexpr unsigned kDeepest = 128;

  char Next() {
    text_.remove_prefix(std::min(text_.find_first_not_of(" \t\r\n"), text_.size()));
    return text_.empty() ? '\0' : text_.front();
  }
  bool Take(char wanted) {
    const bool isThere = Next() == wanted;
    text_.remove_prefix(isThere ? 1 : 0);
    return isThere;
  }

  // \param ends  what a word ends at
  bool ReadValue(std::string_view ends) {
    const char first = Next();
    return first == '[' ? ReadElements() : first == '{' ? ReadMembers() : ReadWord(ends);
  }

  bool ReadWord(std::string_view ends) {
    std::string_view word = text_.substr(0, text_.find_first_of(ends));
    text_.remove_prefix(word.size());
    word.remove_suffix(word.size() - std::min(word.find_last_not_of(" \t\r\n") + 1, word.size()));
    hasBareWord_ = hasBareWord_ || !Json::TypeByGrammar(word);
    return !word.empty() && word.find_first_of("[]{}\"") == std::string_view::npos;
  }

  // \param read  reads one of those that commas divide
  template <class Read>
  bool ReadList(char begin, char end, const Read& read) {
    if (!Take(begin) || ++depth_ > kDeepest) {
      return false;
    }
    if (!Take(end)) {
      do {
        if (!read()) {
          return false;
        }
      } while (Take(','));
      if (!Take(end)) {
        return false;
      }
    }
    --depth_;
    return true;
  }

  bool ReadElements() {
    return ReadList('[', ']', [this] { return ReadValue(",]"); });
  }
  bool ReadMembers() {
    return ReadList('{', '}', [this] { return ReadWord(":") && Take(':') && ReadValue(",}"); });
  }

  std::string_view text_;
  bool hasBareWord_ = false;
  unsigned depth_ = 0;
};

}  // namespace

bool HasLostItsQuotes(std::string_view text) {
  return Reader(text).ReadAll();
}

}  // namespace tarnctl
