// Passing by objects that a filter does not keep.
#pragma once

#include <string_view>

namespace Benchmarks {

/// False where a text is a JSON object, read strictly to its end, whose member is not the wanted text. True
/// where it is, and where only a careful reader can tell.
/// \param text  followed by a NUL
bool MayHold(std::string_view text, std::string_view member, std::string_view wanted);

}  // namespace Benchmarks
