#include "objects/document.h"

#include "platform/logger.h"

#include "errors/raise.h"

#include <cerrno>
#include <cstring>
#include <fstream>
#include <sstream>

namespace TarnConfigStore {

std::shared_ptr<JsonDoc> CreateDocument() {
  return std::make_shared<JsonDoc>();
}

std::shared_ptr<JsonDoc> CreateDocumentFromString(std::string_view text, Json::Origin origin) {
  auto document = std::make_shared<JsonDoc>(JsonDoc::CapacityFor(text.size()));
  if (const Json::ParseResult result = document->Parse(text, origin); !result) {
    CSLogger::Log(CSLogger::kFailure, "Not valid JSON at byte %zu: %s", result.offset,
                  result.message.c_str());
    ThrowException<InvalidArgumentException>(CS_JSON_PARSE_FAILED);
  }
  return document;
}

std::shared_ptr<JsonDoc> CreateDocumentFromFile(const std::string& path) {
  errno = 0;
  std::ifstream file(path, std::ios::binary);
  std::ostringstream text;
  if (!file || !(text << file.rdbuf())) {
    CSLogger::Log(CSLogger::kFailure, "%s cannot be read: %s", path.c_str(), std::strerror(errno));
    ThrowException<InvalidArgumentException>(CS_JSON_FILE_FAILED, path);
  }
  auto document = std::make_shared<JsonDoc>(JsonDoc::CapacityFor(text.str().size()));
  if (const Json::ParseResult result = document->Parse(text.str(), Json::Origin::OUTSIDE);
      !result) {
    CSLogger::Log(CSLogger::kFailure, "%s is not valid JSON at byte %zu: %s", path.c_str(),
                  result.offset, result.message.c_str());
    ThrowException<InvalidArgumentException>(CS_JSON_FILE_FAILED, path);
  }
  return document;
}

}  // namespace TarnConfigStore
