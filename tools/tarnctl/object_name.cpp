#include "object_name.h"

#include "failure.h"

#include <cstddef>

namespace tarnctl {
namespace {

using TarnConfigStore::ConfigStoreObjectId;

/// At most `limit` parts, the last of which takes all that is left. Empty parts are kept.
std::vector<std::string> Split(std::string_view text, char separator, std::size_t limit) {
  std::vector<std::string> parts;
  while (parts.size() + 1 < limit) {
    const std::size_t end = text.find(separator);
    if (end == std::string_view::npos) {
      break;
    }
    parts.emplace_back(text.substr(0, end));
    text.remove_prefix(end + 1);
  }
  parts.emplace_back(text);
  return parts;
}

ConfigStoreObjectId Parse(std::string_view text, std::size_t fewest, std::size_t most,
                          const char* form) {
  std::vector<std::string> parts = Split(text, '/', 4);
  bool fits = parts.size() >= fewest && parts.size() <= most;
  for (const std::string& part : parts) {
    fits = fits && !part.empty();
  }
  if (!fits) {
    throw ToolError(ExitCode::USAGE, "\"" + std::string(text) + "\" is not of the form " + form);
  }
  parts.resize(4);
  return {parts[2], parts[1], parts[0], parts[3]};
}

}  // namespace

ConfigStoreObjectId ParseObject(std::string_view text) {
  return Parse(text, 3, 4, "COMPONENT/GROUP/KEY[/INSTANCE]");
}

ConfigStoreObjectId ParseType(std::string_view text) {
  return Parse(text, 3, 3, "COMPONENT/GROUP/KEY");
}

ConfigStoreObjectId ParsePrefix(std::string_view text) {
  return Parse(text, 1, 4, "COMPONENT[/GROUP[/KEY[/INSTANCE]]]");
}

ConfigStoreObjectId ParsePrefixIfGiven(std::string_view text) {
  return text.empty() ? ConfigStoreObjectId("", "", "") : ParsePrefix(text);
}

std::string FormatObject(const ConfigStoreObjectId& id) {
  std::string text = id.component + "/" + id.group + "/" + id.key;
  if (!id.instanceId.empty()) {
    text += "/" + id.instanceId;
  }
  return text;
}

MemberPath ParseMember(std::string_view text) {
  MemberPath path = Split(text, '.', std::string_view::npos);
  for (const std::string& name : path) {
    if (name.empty()) {
      throw ToolError(ExitCode::USAGE, "\"" + std::string(text) + "\" does not name a member");
    }
  }
  return path;
}

MemberPath ParseMemberIfGiven(std::string_view text) {
  return text.empty() ? MemberPath() : ParseMember(text);
}

std::string FormatMember(const MemberPath& path) {
  std::string text;
  for (const std::string& name : path) {
    text += (text.empty() ? "" : ".") + name;
  }
  return text;
}

std::string FormatPointer(const MemberPath& path) {
  std::string pointer;
  for (const std::string& name : path) {
    pointer += '/';
    for (const char character : name) {
      switch (character) {
        case '~':
          pointer += "~0";
          break;
        case '/':
          pointer += "~1";
          break;
        default:
          pointer += character;
      }
    }
  }
  return pointer;
}

}  // namespace tarnctl
