#include "json_schema/ecma_writer.h"

#include <algorithm>
#include <bit>

namespace JsonValidator::Ecma {
namespace {

constexpr std::string_view kOpenCallout = "(?C000)";

std::string CalloutText(std::size_t number) {
  return std::string("(?C").append(std::to_string(number)).append(")");
}

std::size_t LogarithmOf(std::size_t rounds) {
  return static_cast<std::size_t>(std::bit_width(std::min(rounds, kMostRounds) - 1));
}

std::string UpTo(std::size_t rounds) {
  return std::string("0,").append(std::to_string(rounds));
}

/// More rounds than PCRE2 counts, with one way for each number of them.
std::string Pieces(const std::string& atom, Rounds rounds) {
  const auto times = [&](const std::string& count) {
    return std::string(atom).append("{").append(count).append("}");
  };
  const std::string lazy = rounds.lazy ? "?" : "";
  const std::string callout = CalloutText(0);
  const std::string full = times(std::to_string(kMostRounds));
  const std::string fewer = times(UpTo(kMostRounds - 1)).append(lazy);
  const std::string otherwise = std::string("|").append(callout).append(fewer).append(")");
  std::string text = "(?:";
  std::string end = ")";
  std::size_t rest = rounds.least;
  for (; rest > kMostRounds; rest -= kMostRounds) {
    text.append(full).append(callout);
  }
  text.append(times(std::to_string(rest))).append(callout);
  if (rounds.most == kNoEnd) {
    return text.append(times("0,")).append(lazy).append(end);
  }
  for (rest = rounds.most - rounds.least; rest > kMostRounds; rest -= kMostRounds) {
    if (rounds.lazy) {
      text.append("(?:").append(fewer).append("|");
      end.insert(end.begin(), ')');
    } else {
      text.append("(?:");
      end.insert(0, otherwise);
    }
    text.append(full).append(callout);
  }
  return text.append(times(UpTo(rest))).append(lazy).append(end);
}

}  // namespace

void Writer::AddAtom(std::string_view text, std::size_t callout) {
  constexpr std::size_t kLongRun = 16;
  tries_ = tries_ || ++run_ >= kLongRun;
  AddCallout(callout);
  atom_ = Size();
  result_.text += text;
}

void Writer::AddCallout(std::size_t number) {
  if (tries_) {
    result_.text += CalloutText(number);
    tries_ = false;
    run_ = 0;
  }
}

std::size_t Writer::AddOpenCallout() {
  result_.text += kOpenCallout;
  return Size() - 1;
}

void Writer::FillIn(std::size_t callout, std::size_t rounds) {
  const std::string number = std::to_string(LogarithmOf(rounds));
  result_.text.replace(callout - number.size(), number.size(), number);
}

void Writer::Repeat(const Rounds& rounds, bool atom) {
  if (rounds.AreMoreThan(kMostRounds)) {
    const std::string repeated = result_.text.substr(atom_);
    result_.text.resize(atom_);
    result_.text += Pieces(repeated, rounds);
  } else {
    const auto& [least, most, lazy] = rounds;
    result_.text.append("{").append(std::to_string(least));
    if (most != least) {
      result_.text.append(",").append(most == kNoEnd ? std::string() : std::to_string(most));
    }
    result_.text.append(lazy ? "}?" : "}");
  }
  constexpr std::size_t kFewRounds = 16;
  if (atom && rounds.least > kFewRounds) {
    result_.text.insert(atom_, CalloutText(LogarithmOf(rounds.least)));
  }
  tries_ = true;
}

void Writer::Weigh(std::size_t branches) {
  constexpr std::size_t kBranchesOfAStep = 32;
  result_.stepsOfACharacter =
      std::max<std::uint64_t>(result_.stepsOfACharacter, 1 + branches / kBranchesOfAStep);
}

}  // namespace JsonValidator::Ecma
