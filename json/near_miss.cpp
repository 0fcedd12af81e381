#include "json/near_miss.h"

#include <algorithm>
#include <array>
#include <utility>

namespace Json {
namespace {

constexpr std::size_t kLongestName = 64;

constexpr char Folded(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

std::size_t MostApart(std::size_t length) {
  constexpr std::size_t kMost = 3;
  return std::min(length / 3, kMost);
}

}  // namespace

// The distance of Damerau and Levenshtein, in which no letter is moved twice.
std::optional<unsigned> LettersApart(std::string_view given, std::string_view known) noexcept {
  const std::size_t most = MostApart(given.size());
  const std::size_t longer = std::max(given.size(), known.size());
  if (longer > kLongestName || longer - std::min(given.size(), known.size()) > most) {
    return std::nullopt;
  }
  using Row = std::array<unsigned, kLongestName + 1>;
  std::array<Row, 3> rows;
  Row* before = &rows[0];
  Row* above = &rows[1];
  Row* row = &rows[2];
  for (std::size_t j = 0; j <= known.size(); ++j) {
    (*above)[j] = static_cast<unsigned>(j);
  }
  for (std::size_t i = 1; i <= given.size(); ++i) {
    (*row)[0] = static_cast<unsigned>(i);
    for (std::size_t j = 1; j <= known.size(); ++j) {
      const bool equal = Folded(given[i - 1]) == Folded(known[j - 1]);
      unsigned apart = std::min({(*above)[j] + 1, (*row)[j - 1] + 1, (*above)[j - 1] + !equal});
      if (i > 1 && j > 1 && Folded(given[i - 1]) == Folded(known[j - 2]) &&
          Folded(given[i - 2]) == Folded(known[j - 1])) {
        apart = std::min(apart, (*before)[j - 2] + 1);
      }
      (*row)[j] = apart;
    }
    if (*std::min_element(row->begin(), row->begin() + known.size() + 1) > most) {
      return std::nullopt;
    }
    std::swap(before, above);
    std::swap(above, row);
  }
  const unsigned apart = (*above)[known.size()];
  return apart > most ? std::nullopt : std::optional(apart);
}

void NearMiss::Offer(std::string_view known) noexcept {
  constexpr std::size_t kMostOffered = 1000;
  if (known == given_) {
    best_ = known;
    offered_ = kMostOffered;  // nothing is nearer
  }
  if (offered_++ >= kMostOffered) {
    return;
  }
  const std::optional<unsigned> apart = LettersApart(given_, known);
  if (apart && *apart < apart_) {
    apart_ = *apart;
    best_ = known;
  }
}

}  // namespace Json
