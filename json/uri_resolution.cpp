#include "json/uri_resolution.h"

#include "json/characters.h"

#include <algorithm>

namespace Json {
namespace {

/// Length of "scheme://authority" or of "scheme:".
std::size_t OriginLength(std::string_view uri) {
  const std::size_t scheme = SchemeLength(uri);
  const std::size_t start = scheme == 0 ? 0 : scheme + 1;
  if (uri.substr(start, 2) != "//") {
    return start;
  }
  return std::min(uri.find_first_of("/?#", start + 2), uri.size());
}

/// A path without the segments "." and "..".
std::string WithoutDots(std::string_view path) {
  std::string result;
  while (!path.empty()) {
    const std::size_t end = std::min(path.find('/', 1), path.size());
    const std::string_view segment = path.substr(0, end);
    path.remove_prefix(end);
    if (segment == "/.." || segment == "/.") {
      if (segment == "/..") {
        result.erase(std::min(result.rfind('/'), result.size()));
      }
      result += path.empty() ? "/" : "";
    } else {
      result += segment;
    }
  }
  return result;
}

}  // namespace

std::size_t SchemeLength(std::string_view text) {
  const std::size_t end = text.find_first_of(":/?#");
  if (end == std::string_view::npos || end == 0 || text[end] != ':' || !IsLetter(text.front())) {
    return 0;
  }
  const bool ok = std::all_of(
      text.begin(), text.begin() + static_cast<std::ptrdiff_t>(end),
      [](char c) { return IsLetter(c) || IsDigit(c) || c == '+' || c == '-' || c == '.'; });
  return ok ? end : 0;
}

std::string ResolveUri(std::string_view base, std::string_view reference) {
  if (base.empty() || SchemeLength(reference) > 0) {
    return std::string(reference);
  }
  base = base.substr(0, base.find('#'));
  if (reference.empty() || reference.front() == '#') {
    return std::string(base) + std::string(reference);
  }
  if (reference.starts_with("//")) {
    return std::string(base.substr(0, base.find("//"))) + std::string(reference);
  }
  const std::size_t origin = OriginLength(base);
  std::string_view basePath = base.substr(origin, base.find('?', origin) - origin);
  const std::size_t pathEnd = std::min(reference.find_first_of("?#"), reference.size());
  std::string path(reference.substr(0, pathEnd));
  if (path.empty()) {
    path = basePath;
  } else if (path.front() != '/') {
    const std::size_t folder = basePath.rfind('/');
    basePath =
        folder == std::string_view::npos ? std::string_view() : basePath.substr(0, folder + 1);
    path = std::string(basePath.empty() && origin > 0 ? "/" : basePath) + path;
  }
  return std::string(base.substr(0, origin)) + WithoutDots(path) +
         std::string(reference.substr(pathEnd));
}

}  // namespace Json
