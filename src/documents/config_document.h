// Reading whole documents; tarnconfigstore/documents.h says what they look like.
#pragma once

#include "tarnconfigstore/exceptions.h"
#include "tarnconfigstore/listing.h"

#include "documents/instance_index.h"
#include "documents/sections.h"
#include "documents/staged_parts.h"
#include "json/json_doc.h"
#include "objects/handles.h"

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace TarnConfigStore {

/// What a document says of a row beside its data, as far as it does.
struct RowInfo {
  std::optional<std::string> created;
  std::optional<std::int32_t> revision;
  std::optional<std::string> version;
  bool confirmed = true;
};

/// An object that a document names.
struct NamedObject {
  struct Part {
    const Json::Value* value = nullptr;
    std::int32_t index = -1;  ///< in the list of instances
  };
  ConfigStoreObjectId id;
  std::array<Part, kSections> parts;
  RowInfo info;

  const Part& Of(Section section) const { return parts[static_cast<std::size_t>(section)]; }
  /// JSON Pointer to a part in the document.
  std::string Pointer(Section section) const;
  /// To the first part that there is.
  std::string Pointer() const;
};

/// All objects of a type that a document names, in its order.
struct NamedType {
  ConfigStoreObjectId id;  ///< without instance id
  SchemaHandle schema;     ///< empty when it is not installed
  bool inConfig = false;   ///< "config" names it, perhaps with no instances at all
  std::vector<NamedObject> objects;
  InstanceIndex places;  ///< of the objects
};

/// A record of "staged".
struct NamedChange {
  ConfigStoreObjectId id;
  std::string pointer;
  NextBootAction action = NextBootAction::SET;
  std::string version = {};
  std::array<const Json::Value*, kStagedParts.size()> parts = {};
};

/// A document that has been read: values and types live as long as it.
struct ConfigDocument {
  std::shared_ptr<JsonDoc> text;
  std::size_t bytesOfObject = 0;  ///< of text, as a rule
  std::vector<NamedType> types;
  std::vector<NamedChange> staged;
  std::array<bool, kSections> parts = {true};  ///< which it speaks of
  bool speaksOfStaged = false;
  std::set<std::string, std::less<>> redacted;
  std::vector<ErrorInfo> findings;  ///< of the document itself

  bool SpeaksOf(Section section) const { return parts[static_cast<std::size_t>(section)]; }
  bool IsOfUserOnly() const;
};

/// Reads a document as far as its form goes: sections, types, instances and their ids, metadata. What
/// is wrong is among the findings. Raises InvalidArgumentException 1080 for a text that is not JSON,
/// and 2000 for one that is too long.
ConfigDocument ReadConfigDocument(std::string_view text, std::size_t longest);

/// "YYYY-MM-DD HH:MM:SS", as far as its form goes: the times that a document may have.
bool IsTime(std::string_view text);

}  // namespace TarnConfigStore
