// Whole documents from the files that the user gives.
#pragma once

#include "given_data.h"

#include <cstddef>
#include <string>

namespace tarnctl {

/// Reads a document, of YAML by the installed types. Raises as GivenData::Read does.
/// \param largest  in bytes, as ReadInput takes it
GivenData ReadDocument(const std::string& path, YamlNull null, std::size_t largest);

}  // namespace tarnctl
