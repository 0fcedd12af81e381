// Whole documents from the files that the user gives.
#pragma once

#include "command_line.h"
#include "given/given_data.h"

#include <cstddef>
#include <functional>
#include <string>

namespace tarnctl {

/// How large a document may be, in bytes, before it is not read.
Argument LimitArgument();
std::size_t LimitOf(const Given& given);

/// Reads a document, of YAML by the installed types. Raises as GivenData::Read does.
/// \param largest  in bytes, as ReadInput takes it
GivenData ReadDocument(const std::string& path, YamlNull null, std::size_t largest);

inline constexpr const char* kRefused = "the document is refused";

/// Makes a call, and raises the ValidationException that it raises as GivenData::Locate does; where it
/// has findings, with this message, since the library's are about one object.
void LocateInDocument(const GivenData& document, const std::string& message,
                      const std::function<void()>& call);

}  // namespace tarnctl
