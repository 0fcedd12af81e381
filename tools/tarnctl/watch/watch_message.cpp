#include "watch/watch_message.h"

#include "json/json.h"
#include "json/pointer.h"

#include <algorithm>
#include <charconv>
#include <stdexcept>
#include <strings.h>

namespace tarnctl {
namespace {

constexpr std::string_view kRequestLine = "POST /api HTTP/1.1\r\n";
constexpr std::string_view kLineEnd = "\r\n";
constexpr std::string_view kHeadEnd = "\r\n\r\n";

[[noreturn]] void RaiseTooLong() {
  throw std::invalid_argument("is longer than " + std::to_string(WatchMessageReader::kLongest) +
                              " bytes");
}

bool IsContentLength(std::string_view name) {
  constexpr std::string_view kName = "Content-Length";
  return name.size() == kName.size() && ::strncasecmp(name.data(), kName.data(), kName.size()) == 0;
}

std::size_t ParseLength(std::string_view text) {
  const std::size_t start = text.find_first_not_of(" \t");
  const std::size_t end = text.find_last_not_of(" \t") + 1;
  text = start == std::string_view::npos ? std::string_view() : text.substr(start, end - start);
  std::size_t length = 0;
  const auto result = std::from_chars(text.data(), text.data() + text.size(), length);
  if (result.ec == std::errc::result_out_of_range) {
    RaiseTooLong();
  }
  if (result.ec != std::errc() || result.ptr != text.data() + text.size()) {
    throw std::invalid_argument("has a Content-Length that is no number");
  }
  return length;
}

// The length of the body, from the header lines, each with its line end.
std::size_t FindBodyLength(std::string_view lines) {
  std::optional<std::size_t> length;
  while (!lines.empty()) {
    const std::string_view line = lines.substr(0, lines.find(kLineEnd));
    lines.remove_prefix(line.size() + kLineEnd.size());
    const std::size_t colon = line.find(':');
    if (colon == std::string_view::npos) {
      throw std::invalid_argument("has a header line without a colon");
    }
    if (IsContentLength(line.substr(0, colon))) {
      if (length) {
        throw std::invalid_argument("has a Content-Length twice");
      }
      length = ParseLength(line.substr(colon + 1));
    }
  }
  if (!length) {
    throw std::invalid_argument("has no Content-Length");
  }
  return *length;
}

const Json::Value& Find(const Json::Value& request, const char* pointer) {
  const Json::Value* found = Json::FindAt(request, *Json::ParsePointer(pointer));
  if (found == nullptr) {
    throw std::invalid_argument(std::string("has no ") + pointer);
  }
  return *found;
}

void Expect(const Json::Value& request, const char* pointer, const char* text) {
  if (Find(request, pointer) != text) {
    throw std::invalid_argument(std::string("has another ") + pointer + " than \"" + text + "\"");
  }
}

Notification ParseBody(std::string_view body) {
  Json::Document request;
  if (const auto parsed = Json::Parse(body, request, Json::Origin::OUTSIDE); !parsed) {
    throw std::invalid_argument("holds no JSON: " + parsed.Describe(body));
  }
  Expect(request, "/method", "invoke");
  Expect(request, "/params/operationId", "notify");
  const Json::Value& objects = Find(request, "/params/input/STRUCTURE/operation-input/identifiers");
  const Json::Value& process = Find(request, "/params/input/STRUCTURE/operation-input/cartel_id");
  if (!objects.IsArray() || objects.Empty() ||
      !std::all_of(objects.Begin(), objects.End(),
                   [](const Json::Value& object) { return object.IsString(); })) {
    throw std::invalid_argument("has identifiers that are no list of texts");
  }
  if (!process.IsInt() || process.GetInt() < 0) {
    throw std::invalid_argument("has a cartel_id that is no process id");
  }
  Notification notification{{}, process.GetInt()};
  for (const Json::Value& object : objects.GetArray()) {
    notification.objects.emplace_back(Json::Text(object));
  }
  return notification;
}

}  // namespace

std::optional<Notification> WatchMessageReader::Next() {
  const std::string_view seen(buffer_);
  const std::size_t compared = std::min(seen.size(), kRequestLine.size());
  if (seen.substr(0, compared) != kRequestLine.substr(0, compared)) {
    throw std::invalid_argument("does not begin with POST /api HTTP/1.1");
  }
  const std::size_t headEnd = seen.find(kHeadEnd);
  if (std::min(headEnd, seen.size()) > kLongest) {
    RaiseTooLong();
  }
  if (headEnd == std::string_view::npos) {
    return std::nullopt;
  }
  const std::size_t headLength = headEnd + kHeadEnd.size();
  const std::size_t bodyLength = FindBodyLength(
      seen.substr(kRequestLine.size(), headEnd + kLineEnd.size() - kRequestLine.size()));
  if (bodyLength > kLongest || headLength + bodyLength > kLongest) {
    RaiseTooLong();
  }
  if (seen.size() - headLength < bodyLength) {
    return std::nullopt;
  }
  Notification notification = ParseBody(seen.substr(headLength, bodyLength));
  buffer_.erase(0, headLength + bodyLength);
  return notification;
}

}  // namespace tarnctl
