// What is told of texts that cannot be read as JSON.
#pragma once

#include "json/json.h"

#include <string_view>

namespace TarnConfigStore {

/// Logs why a text cannot be read, and where, and keeps it for GetLastParseFailure.
/// \param source  which text it is
void ReportParseFailure(std::string_view source, const Json::ParseResult& result,
                        std::string_view text);

/// The same for a file that cannot be read at all.
void ReportUnreadFile(std::string_view path, std::string_view reason);

}  // namespace TarnConfigStore
