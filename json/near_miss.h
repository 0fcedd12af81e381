// Names that somebody may have meant who wrote another one.
#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

namespace Json {

/// How many letters of a name are wrong, missing, too many or swapped with their neighbour, if it
/// is to be another one; case counts nothing. Nothing where they are too many for a slip: more than
/// one in three, or than three, and where a name is longer than 64 bytes. Takes a microsecond at
/// most.
std::optional<unsigned> LettersApart(std::string_view given, std::string_view known) noexcept;

/// The known name that is nearest to one that was given. Looks at the first 1000 that are offered,
/// so that it takes a millisecond at most.
class NearMiss {
 public:
  /// \param given  outlives this, as all names that are offered do
  explicit NearMiss(std::string_view given) noexcept : given_(given) {}

  void Offer(std::string_view known) noexcept;

  /// Empty where none is near; of several the one that was offered first.
  std::string_view Best() const noexcept { return best_; }

 private:
  std::string_view given_;
  std::string_view best_;
  unsigned apart_ = ~0U;
  std::size_t offered_ = 0;
};

}  // namespace Json
