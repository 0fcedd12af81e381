// Making the documents that objects hold their data in.
#pragma once

#include "json/json_doc.h"

#include <memory>
#include <string>
#include <string_view>

namespace TarnConfigStore {

/// A document whose value is null, with a little room.
std::shared_ptr<JsonDoc> CreateDocument();

/// Parses a text. Raises InvalidArgumentException 1080, after logging what was wrong and at which
/// byte, when it is not JSON; see Json::Parse for what that means.
std::shared_ptr<JsonDoc> CreateDocumentFromString(std::string_view text,
                                                  Json::Origin origin = Json::Origin::STORED);

/// Parses a file. Raises InvalidArgumentException 1081 with the path, after logging what was wrong,
/// when it cannot be read or is not JSON.
std::shared_ptr<JsonDoc> CreateDocumentFromFile(const std::string& path);

}  // namespace TarnConfigStore
