#include "objects/document.h"

#include "platform/logger.h"
#include "platform/regular_file.h"

#include "errors/parse_failures.h"
#include "errors/raise.h"

#include <cerrno>
#include <cstring>

namespace TarnConfigStore {

std::shared_ptr<JsonDoc> CreateDocument() {
  return std::make_shared<JsonDoc>();
}

std::shared_ptr<JsonDoc> CreateDocumentFromString(std::string_view text, Json::Origin origin) {
  auto document = std::make_shared<JsonDoc>(JsonDoc::CapacityFor(text.size()));
  if (const Json::ParseResult result = document->Parse(text, origin); !result) {
    ReportParseFailure("The text", result, text);
    ThrowException<InvalidArgumentException>(CS_JSON_PARSE_FAILED);
  }
  return document;
}

std::shared_ptr<JsonDoc> CreateDocumentFromFile(const std::string& path) {
  constexpr std::size_t kLongest = std::size_t{64} << 20U;
  std::string text;
  if (!ReadRegularFile(path, kLongest, text)) {
    CSLogger::Log(CSLogger::kFailure, "%s cannot be read: %s", path.c_str(), std::strerror(errno));
    ThrowException<InvalidArgumentException>(CS_JSON_FILE_FAILED, path);
  }
  auto document = std::make_shared<JsonDoc>(JsonDoc::CapacityFor(text.size()));
  if (const Json::ParseResult result = document->Parse(text, Json::Origin::OUTSIDE); !result) {
    ReportParseFailure(path, result, text);
    ThrowException<InvalidArgumentException>(CS_JSON_FILE_FAILED, path);
  }
  return document;
}

}  // namespace TarnConfigStore
