#include "errors/parse_failures.h"

#include "tarnconfigstore/diagnostics.h"

#include "platform/logger.h"

#include "json/utf8.h"

#include <cstring>

namespace TarnConfigStore {
namespace {

// No destructor: threads may fail while they end.
constinit thread_local ParseFailure lastFailure;

// As much of a text as there is room for.
template <std::size_t size>
void Keep(std::string_view text, char (&room)[size]) {
  const std::string_view kept = Json::Utf8::Fitting(text, size - 1);
  std::memcpy(room, kept.data(), kept.size());
  room[kept.size()] = '\0';
}

}  // namespace

ParseFailure GetLastParseFailure() noexcept {
  return lastFailure;
}

void ClearLastParseFailure() noexcept {
  lastFailure = {};
}

void ReportUnreadFile(std::string_view path, std::string_view reason) {
  lastFailure.line = 0;
  lastFailure.column = 0;
  Keep(path, lastFailure.source);
  Keep(reason, lastFailure.reason);
  CSLogger::Log(CSLogger::kFailure, "%.*s cannot be read: %.*s", static_cast<int>(path.size()),
                path.data(), static_cast<int>(reason.size()), reason.data());
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
