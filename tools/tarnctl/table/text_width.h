// How much room texts take on a terminal.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace tarnctl {

/// Columns of a text that is UTF-8 without control characters: none for what is combined with the
/// character before it, two for wide characters.
std::size_t WidthOf(std::string_view text);

/// The text, or as much of it as fits with an ellipsis at its end.
std::string CutTo(std::size_t width, std::string_view text);

}  // namespace tarnctl
