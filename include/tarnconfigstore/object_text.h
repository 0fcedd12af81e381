// Names of configuration objects as people write them: "component/group/key[/instance]".
#pragma once

#include "tarnconfigstore/exceptions.h"
#include "tarnconfigstore/object_id.h"

#include <optional>
#include <string>
#include <string_view>

namespace TarnConfigStore {

/// Reads the name of an object, or the beginning of one up to a slash: "tarn", "tarn/network" and so
/// on. Everything after the third slash is the instance id. Inline; allocates nothing but the id.
/// \return what was named, other fields empty; nothing where there is an empty name
inline std::optional<ConfigStoreObjectId> FindObjectId(std::string_view text) {
  ConfigStoreObjectId id("", "", "");
  std::string* const fields[] = {&id.component, &id.group, &id.key, &id.instanceId};
  for (std::string* field : fields) {
    const std::size_t end = field == &id.instanceId ? std::string_view::npos : text.find('/');
    *field = text.substr(0, end);
    if (field->empty()) {
      return std::nullopt;
    }
    if (end == std::string_view::npos) {
      break;
    }
    text.remove_prefix(end + 1);
  }
  return id;
}

/// Reads the name of an object or of a type: ParseObjectId("tarn/network/resolver").
/// \throws InvalidArgumentException 2000, with the text, for one that is not of that form
inline ConfigStoreObjectId ParseObjectId(std::string_view text) {
  auto id = FindObjectId(text);
  if (!id || id->key.empty()) {
    throw InvalidArgumentException(CS_GENERIC, ("\"" + std::string(text) +
                                                "\" is not of the form "
                                                "COMPONENT/GROUP/KEY[/INSTANCE]")
                                                   .c_str());
  }
  return *std::move(id);
}

/// \return the text that ParseObjectId takes
inline std::string FormatObjectId(const ConfigStoreObjectId& id) {
  std::string text = id.component;
  text.append("/").append(id.group).append("/").append(id.key);
  if (!id.instanceId.empty()) {
    text.append("/").append(id.instanceId);
  }
  return text;
}

}  // namespace TarnConfigStore
