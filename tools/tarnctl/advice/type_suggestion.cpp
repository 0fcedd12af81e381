#include "advice/type_suggestion.h"

#include "tarnconfigstore/type_administration.h"

#include "given/object_name.h"
#include "json/near_miss.h"

#include <exception>
#include <optional>

namespace tarnctl {
namespace {

using TarnConfigStore::ConfigStoreObjectId;
using TarnConfigStore::InstalledType;

// How far the names are apart, part by part; nothing where one part is another word.
std::optional<unsigned> Apart(const ConfigStoreObjectId& id, const InstalledType& type) {
  unsigned sum = 0;
  for (const auto& [given, known] : {std::pair(&id.component, &type.component),
                                     {&id.group, &type.group},
                                     {&id.key, &type.key}}) {
    const std::optional<unsigned> apart =
        *given == *known ? std::optional(0U) : Json::LettersApart(*given, *known);
    if (!apart) {
      return std::nullopt;
    }
    sum += *apart;
  }
  return sum;
}

std::string Suggest(const ConfigStoreObjectId& id) {
  std::string nearest;
  unsigned least = ~0U;
  for (const InstalledType& type : TarnConfigStore::ListTypes()) {
    if (const auto apart = Apart(id, type); apart && *apart < least) {
      least = *apart;
      nearest = FormatObject({type.key, type.group, type.component});
    }
  }
  // None apart: the type was installed meanwhile, or is not the one that is missing.
  return nearest.empty() || least == 0 ? "" : " Did you mean " + nearest + "?";
}

}  // namespace

std::string SuggestType(const Given& given) {
  try {
    for (const char* name : {kObject, kType}) {
      if (given.Takes(name)) {
        return Suggest(ParseObject(given.Text(name)));
      }
    }
  } catch (const std::exception&) {
    // The failure at hand is the one to tell.
  }
  return {};
}

}  // namespace tarnctl
