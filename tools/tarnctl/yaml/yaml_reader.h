// Data from YAML.
#pragma once

#include "json/json.h"
#include "json/value_place.h"
#include "yaml/yaml_lines.h"

#include <functional>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace tarnctl {

using Json::ValueKinds;
using Json::ValuePlace;

/// What is wrong with a YAML text, and where: "line 2, column 7: ...", characters counted from 1.
class YamlError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// What a plain null is where a member takes texts only.
enum class YamlNull {
  OF_TYPE,  ///< the text
  ALWAYS,   ///< null, as an update needs it
};

/// Tells where the data of types begin. It is asked about every value that is in none yet, from the
/// outside in.
/// \param path    the names of the members on the way, and the indexes of elements
/// \param isList  what the value itself is
using FindPlace =
    std::function<std::optional<ValuePlace>(const std::vector<std::string>& path, bool isList)>;

/// For a text that is the data of one object of a type.
FindPlace PlaceOfData(ValuePlace type);

/// For a list of them.
FindPlace PlaceOfInstances(ValuePlace type);

/// For a whole document: {"config": {component: {group: {key: object or list of instances}}}} and its
/// other sections.
/// \param findType  the place of a type's objects; nothing for a type that is not known
using FindType = std::function<std::optional<ValuePlace>(
    const std::string& component, const std::string& group, const std::string& key)>;
FindPlace PlacesOfDocument(FindType findType);

struct YamlData {
  Json::Value value;
  YamlLines lines;
};

/// Reads one YAML document (https://yaml.org/spec/1.2.2), which may as well be JSON.
///
/// A quoted scalar is a text. A plain one is a text too where its place takes nothing else: `NO`,
/// `1.0`, `012` and `2001-01-01`. Elsewhere it is what YAML's core schema takes it for, if its place
/// takes that, and else a text, if it takes texts. Numbers are read as Json::Parse reads them in what
/// comes from OUTSIDE.
///
/// Nothing is dropped or altered: what JSON has no way to say is refused, as are anchors, aliases, tags,
/// merge keys, several documents, names that are given twice or that some reader would not take for a
/// text unless they are quoted (`1:`, `null:`), and the line ends of Unicode, which readers of YAML 1.1
/// would fold.
/// \param text       at most 4 GB
/// \param allocator  owns the value
/// \throws YamlError for all of that, for what is not UTF-8 and for more than Json::kMaxDepth levels
YamlData ReadYaml(std::string_view text, const FindPlace& findPlace, Json::Allocator& allocator,
                  YamlNull null = YamlNull::OF_TYPE);

}  // namespace tarnctl
