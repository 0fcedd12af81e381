// Terminals that the tool writes to.
#pragma once

#include <cstddef>
#include <string>

namespace tarnctl {

inline constexpr const char* kBold = "\033[1m";
inline constexpr const char* kGreen = "\033[32m";
inline constexpr const char* kRed = "\033[31m";
inline constexpr const char* kYellow = "\033[33m";
inline constexpr const char* kNoColour = "";

/// What a descriptor leads to, for those who lay out what they write to it.
struct Terminal {
  bool isOne = false;  ///< false for files and pipes, which get everything plain and whole
  bool showsColours =
      false;  ///< a terminal that has them, of somebody who has not asked for none (NO_COLOR)
  std::size_t width = 0;  ///< as COLUMNS says, or the terminal itself; 80 where neither does

  static Terminal Of(int descriptor);

  /// The text, in a colour where one is given and shown.
  std::string Coloured(const std::string& text, const char* colour) const;
};

}  // namespace tarnctl
