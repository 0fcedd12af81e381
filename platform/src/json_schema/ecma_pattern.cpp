#include "json_schema/ecma_pattern.h"

#include "json_schema/ecma_captures.h"
#include "json_schema/ecma_escape.h"
#include "json_schema/ecma_reader.h"
#include "json_schema/ecma_writer.h"

#include <algorithm>
#include <iterator>

namespace JsonValidator {
namespace {

using Ecma::Characters;
using Ecma::Fault;
using Ecma::Reader;

class Translation {
 public:
  explicit Translation(std::string_view pattern) : reader_(pattern), captures_(pattern) {}

  TranslatedPattern Run() {
    while (!reader_.AtEnd()) {
      ReadTerm();
    }
    if (!open_.empty()) {
      throw Fault{reader_.At(), "missing closing parenthesis"};
    }
    return writer_.Take();
  }

 private:
  enum class Kind { NOTHING, REPEATED, CHARACTER, REFERENCE, GROUP };
  struct Group {
    bool looksAhead;
    bool looksBehind;
    std::size_t callout;  // of one that looks behind
    std::size_t rounds;   // of all that is repeated in it, multiplied
  };

  void ReadTerm() {
    const std::size_t begin = reader_.At();
    writer_.Mark(begin);
    switch (const char c = reader_.Peek()) {
      case '^':
        Assert("^", 1);
        if (open_.empty() && begin == branch_) {
          writer_.ForgetTries();  // this branch is tried once, at the beginning of the text
        }
        return;
      case '$':
        return Assert("$", 1);
      case '(':
        return OpenGroup(begin);
      case ')':
        return CloseGroup(begin);
      case '|':
        reader_.Advance(1);
        writer_.Add("|");
        writer_.Weigh(++alternatives_);
        last_ = Kind::NOTHING;
        if (open_.empty()) {
          branch_ = reader_.At();
          writer_.NoteTries();
        }
        return;
      case '[': {
        reader_.Advance(1);
        std::size_t members = 0;
        Atom(Ecma::ReadClass(reader_, members));
        return writer_.Weigh(members);
      }
      case '.':
        reader_.Advance(1);
        return Atom("[^\\n\\r\\x{2028}\\x{2029}]");
      case '*':
      case '+':
      case '?':
        reader_.Advance(1);
        return Repeat(begin, c == '+' ? 1 : 0, c == '?' ? 1 : Ecma::kNoEnd);
      case '{':
        if (ReadBraces(begin)) {
          return;
        }
        break;
      case '\\':
        if (ReadAssertionOrReference(begin)) {
          return;
        }
        break;
      default:
        break;
    }
    const Characters characters = Ecma::ReadCharacters(reader_);
    if (!characters.set.empty()) {
      Atom("[" + characters.set + "]");
    } else if (Ecma::IsSurrogate(characters.one)) {
      Atom("[]");  // is in no text
    } else {
      Atom(Ecma::Written(characters.one));
    }
  }

  void Assert(std::string_view text, std::size_t bytes) {
    reader_.Advance(bytes);
    if (reader_.At() - bytes > branch_) {
      writer_.AddCallout();
    }
    writer_.Add(text);
    last_ = Kind::NOTHING;
  }

  bool ReadAssertionOrReference(std::size_t begin) {
    const char c = reader_.Peek(1);
    if (c == 'b' || c == 'B') {
      Assert(c == 'b' ? "\\b" : "\\B", 2);
      return true;
    }
    std::size_t group = 0;
    if (c == 'k') {
      reader_.Advance(2);
      if (!reader_.Skip("<")) {
        throw Fault{begin, "ECMAScript has no escape \\k without the name of a group"};
      }
      group = captures_.Named(Ecma::Captures::TakeName(reader_, begin));
    } else if (Json::IsDigit(c) && c != '0') {
      reader_.Advance(1);
      group = reader_.TakeNumber();
    } else {
      return false;
    }
    if (group == 0 || group > captures_.Count()) {
      throw Fault{begin, "there is no group for the reference " + reader_.From(begin)};
    }
    writer_.NoteTries();
    writer_.AddAtom("\\g{" + std::to_string(group) + "}", kBeforeBackReference);
    last_ = Kind::REFERENCE;
    return true;
  }

  void OpenGroup(std::size_t begin) {
    constexpr std::string_view kOpenings[] = {"(?:", "(?=", "(?!", "(?<=", "(?<!"};
    const auto* opening = std::find_if(std::begin(kOpenings), std::end(kOpenings),
                                       [&](std::string_view text) { return reader_.Skip(text); });
    const bool looksBehind = opening >= std::begin(kOpenings) + 3 && opening != std::end(kOpenings);
    const bool looksAhead = opening != std::end(kOpenings) && opening > std::begin(kOpenings);
    Group group{looksAhead && !looksBehind, looksBehind, 0, 1};
    if (looksBehind) {
      group.callout = writer_.AddOpenCallout();
    }
    if (opening != std::end(kOpenings)) {
      writer_.Add(*opening);
    } else {
      reader_.Advance(1);
      if (reader_.Skip("?<")) {
        Ecma::Captures::TakeName(reader_, begin);
      } else if (reader_.Peek() == '?' || reader_.Peek() == '*') {
        reader_.Advance(1);
        if (!reader_.AtEnd()) {
          reader_.TakeCharacter();
        }
        throw Fault{begin, "ECMAScript has no group " + reader_.From(begin)};
      }
      writer_.Add("(");
    }
    open_.push_back(group);
    writer_.NoteTries();
    last_ = Kind::NOTHING;
  }

  void CloseGroup(std::size_t begin) {
    if (open_.empty()) {
      throw Fault{begin, "unmatched closing parenthesis"};
    }
    reader_.Advance(1);
    const Group group = open_.back();
    open_.pop_back();
    if (group.looksAhead || group.looksBehind) {
      writer_.AddCallout();  // matching goes back from here, and what it ran over would not be seen
    }
    if (group.looksBehind) {
      writer_.FillIn(group.callout, group.rounds);
    }
    writer_.Add(")");
    if (!open_.empty()) {
      Multiply(open_.back().rounds, group.rounds);
    }
    last_ = group.looksBehind ? Kind::NOTHING : Kind::GROUP;
    writer_.NoteTries();
  }

  bool ReadBraces(std::size_t begin) {
    Reader ahead = reader_;
    ahead.Advance(1);
    if (!Json::IsDigit(ahead.Peek())) {
      return false;
    }
    const std::size_t least = ahead.TakeNumber();
    std::size_t most = least;
    if (ahead.Skip(",")) {
      most = Json::IsDigit(ahead.Peek()) ? ahead.TakeNumber() : Ecma::kNoEnd;
    }
    if (!ahead.Skip("}")) {
      return false;
    }
    reader_ = ahead;
    if (least > most) {
      throw Fault{begin, "numbers out of order in " + reader_.From(begin)};
    }
    Repeat(begin, least, most);
    return true;
  }

  void Repeat(std::size_t begin, std::size_t least, std::size_t most) {
    if (last_ == Kind::REPEATED || last_ == Kind::NOTHING) {
      const std::string written = reader_.From(begin);
      throw Fault{begin, last_ == Kind::REPEATED && written == "+"
                             ? "ECMAScript has no possessive quantifier +"
                             : "there is nothing that " + written + " could repeat"};
    }
    const Ecma::Rounds rounds{least, most, reader_.Skip("?")};
    if (rounds.AreMoreThan(last_ == Kind::CHARACTER ? Ecma::kMostRoundsOfAtoms
                                                    : Ecma::kMostRounds)) {
      throw Fault{begin, "the number is too large in " + reader_.From(begin)};
    }
    writer_.Repeat(rounds, last_ != Kind::GROUP);
    if (!open_.empty()) {
      Multiply(open_.back().rounds, std::max<std::size_t>(least, 1));
    }
    last_ = Kind::REPEATED;
  }

  void Atom(const std::string& text) {
    writer_.AddAtom(text);
    last_ = Kind::CHARACTER;
  }

  static void Multiply(std::size_t& rounds, std::size_t by) {
    rounds = std::min(rounds * by, Ecma::kMostRounds);
  }

  Ecma::Reader reader_;
  Ecma::Captures captures_;
  Ecma::Writer writer_;
  std::vector<Group> open_;
  Kind last_ = Kind::NOTHING;
  std::size_t branch_ = 0;  // where the one outside of groups begins
  std::size_t alternatives_ = 0;
};

}  // namespace

std::size_t TranslatedPattern::SourceOf(std::size_t offset) const {
  std::size_t source = 0;
  for (const auto& [here, there] : marks) {
    if (here > offset) {
      break;
    }
    source = there;
  }
  return source;
}

std::optional<TranslatedPattern> TranslatePattern(std::string_view pattern, std::string& fault) {
  if (!Json::Utf8::IsValid(pattern)) {
    fault = "it is not valid UTF-8";
    return std::nullopt;
  }
  try {
    return Translation(pattern).Run();
  } catch (const Fault& found) {
    fault = found.what + " (at byte " + std::to_string(found.at) + ")";
    return std::nullopt;
  }
}

}  // namespace JsonValidator
