// Texts made from printf-style templates that are not known when the program is compiled. Everything
// here is thread-safe.
#pragma once

#include <string>
#include <string_view>
#include <vector>

/// Replaces each "%N$s" (N from 1) by the N-th argument; "%%" is one "%". One that there is no
/// argument for stays as it is.
std::string Str_Asprintf(std::string_view format, const std::vector<std::string_view>& arguments);

/// Replaces each "%s" in turn by the next argument, by nothing when there are no more; "%%" is one
/// "%".
std::string MsgFmt_Asprintf(std::string_view format, const std::vector<std::string>& arguments);
