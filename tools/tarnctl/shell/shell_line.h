// Command lines as a POSIX shell reads them ("Shell Command Language", 2.2 Quoting).
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tarnctl {

/// The words of a line that is being typed, quotes and backslashes taken away. The last one is what is
/// being typed: empty where the line ends with a blank, up to its end where a quote is still open.
/// Nothing is expanded.
std::vector<std::string> SplitShellLine(std::string_view line);

/// A text as one word of a line.
std::string QuoteForShell(std::string_view text);

}  // namespace tarnctl
