// What a word that is being typed can become.
#pragma once

#include "completion/position.h"

#include <string>
#include <vector>

namespace tarnctl {

/// The whole words that begin with what there is of the last one, sorted. Empty where nothing is known,
/// or files are meant, which a shell knows better. Raises what the library raises where the host
/// cannot be asked.
std::vector<std::string> FindCandidates(const Program& program, const Position& position);

}  // namespace tarnctl
