#include "objects/document.h"

#include "errors/parse_failures.h"
#include "errors/raise.h"
#include "json/text_file.h"

namespace TarnConfigStore {

std::shared_ptr<JsonDoc> CreateDocument() {
  return JsonDoc::Make();
}

std::shared_ptr<JsonDoc> CreateDocumentFromString(std::string_view text, Json::Origin origin) {
  auto document = JsonDoc::Make(JsonDoc::CapacityFor(text.size()));
  if (const Json::ParseResult result = document->Parse(text, origin); !result) {
    ReportParseFailure("The text", result, text);
    ThrowException<InvalidArgumentException>(CS_JSON_PARSE_FAILED);
  }
  return document;
}

std::shared_ptr<JsonDoc> CreateDocumentFromFile(const std::string& path) {
  constexpr std::size_t kLongest = std::size_t{64} << 20U;
  const Json::TextFile file = Json::ReadTextFile(path, kLongest);
  if (!file) {
    ReportUnreadFile(path, file.Reason());
    ThrowException<InvalidArgumentException>(CS_JSON_FILE_FAILED, path);
  }
  auto document = JsonDoc::Make(JsonDoc::CapacityFor(file.text.size()));
  if (const Json::ParseResult result = document->Parse(file.text, Json::Origin::OUTSIDE); !result) {
    ReportParseFailure(path, result, file.text);
    ThrowException<InvalidArgumentException>(CS_JSON_FILE_FAILED, path);
  }
  return document;
}

}  // namespace TarnConfigStore
