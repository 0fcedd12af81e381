// Fuzz targets: what they are, and what they assert with.
#pragma once

#include <string_view>

namespace Fuzz {

/// Takes one input. Whatever it holds, nothing may crash, hang or leak, and what the target requires
/// has to hold. An input finds everything as the first one did: what fails, fails alone, too.
using Run = void (*)(std::string_view input);

/// Makes a target known under a name, by a global object.
class Target {
 public:
  Target(const char* name, Run run);
};

/// Ends the process, with the reason on standard error, unless the condition holds.
void Require(bool condition, const char* what, std::string_view detail = {});

/// Takes the first byte off an input, to choose by; 0 of an empty one.
unsigned char TakeByte(std::string_view& input);

/// Takes a line off an input, without its end; all of it where there is none.
std::string_view TakeLine(std::string_view& input);

}  // namespace Fuzz
