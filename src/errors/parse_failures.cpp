#include "errors/parse_failures.h"

#include "tarnconfigstore/diagnostics.h"

#include "platform/logger.h"

#include <algorithm>
#include <cstring>

namespace TarnConfigStore {
namespace {

// No destructor: threads may fail while they end.
constinit thread_local ParseFailure lastFailure;

// As much of a text as there is room for, no character cut in two.
template <std::size_t size>
void Keep(std::string_view text, char (&room)[size]) {
  std::size_t length = std::min(text.size(), size - 1);
  while (length < text.size() && length > 0 &&
         (static_cast<unsigned char>(text[length]) & 0xC0U) == 0x80U) {
    --length;
  }
  std::memcpy(room, text.data(), length);
  room[length] = '\0';
}

}  // namespace

ParseFailure GetLastParseFailure() noexcept {
  return lastFailure;
}

void ClearLastParseFailure() noexcept {
  lastFailure = {};
}

void ReportParseFailure(std::string_view source, const Json::ParseResult& result,
                        std::string_view text) {
  const auto place = result.PlaceIn(text);
  lastFailure.line = place.line;
  lastFailure.column = place.column;
  Keep(source, lastFailure.source);
  Keep(result.message, lastFailure.reason);
  CSLogger::Log(CSLogger::kFailure, "%.*s cannot be read as JSON: line %zu, column %zu: %s",
                static_cast<int>(source.size()), source.data(), place.line, place.column,
                result.forLogs != nullptr ? result.forLogs : result.message.c_str());
}

}  // namespace TarnConfigStore
