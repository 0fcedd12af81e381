// Values that a shell has taken the quotes from.
#pragma once

#include <string_view>

namespace tarnctl {

/// True for a text that would be an array or an object in JSON, if some of its words had quotes, of
/// which it has none: [10.0.0.1], {name:Storage,vlan:20}.
bool HasLostItsQuotes(std::string_view text);

}  // namespace tarnctl
