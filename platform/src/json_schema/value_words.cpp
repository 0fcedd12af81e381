#include "json_schema/value_words.h"

#include "json/pointer.h"
#include "json/secrets.h"
#include "json/utf8.h"
#include "json_schema/describe.h"

namespace JsonValidator {
namespace {

Json::Sight Next(const Place& place, const Json::Sight& around) {
  return place.name != nullptr ? around.Member(Json::Text(*place.name)) : around.Element();
}

Json::Sight SightOf(const Place& place, Json::SchemaPlace root) {
  return place.parent == nullptr ? Json::Sight(root) : Next(place, SightOf(*place.parent, root));
}

}  // namespace

ValueWords::ValueWords(const Place& place, Json::SchemaPlace root) {
  if (!root.HoldsSecrets()) {
    return;  // as most types
  }
  const Json::Sight sight = SightOf(place, root);
  isSecret_ = sight.IsSecret();
  holdsSecrets_ = sight.Place().HoldsSecrets();
  hidesName_ = sight.HidesName();
}

std::string ValueWords::Found(const Json::Value& value) const {
  return Hides(value) ? Json::kMask : JsonValidator::Found(value);
}

std::string ValueWords::Text(std::string_view text) const {
  return HidesListedValues() ? std::string("the text ") + Json::kMask : "the text " + Quoted(text);
}

std::string ValueWords::Literal(const Json::Value& value, Budget& budget) const {
  return HidesListedValues() ? Found(value) : JsonValidator::Literal(value, budget);
}

std::string ValueWords::Literal(const Json::Value& value) const {
  return HidesListedValues() ? Found(value) : JsonValidator::Literal(value);
}

std::string ValueWords::Size(const Json::Value& value, std::uint64_t count) const {
  return Hides(value) ? Json::kMask : std::to_string(count);
}

std::string ValueWords::Size(const Json::Value& value, std::uint64_t count,
                             std::string_view noun) const {
  return Hides(value) ? Json::kMask : Count(count, noun);
}

std::string ValueWords::Member(std::string_view name) const {
  return hidesName_ ? "a member" : "member " + Quoted(name);
}

std::string ValueWords::Name(std::string_view name) const {
  return hidesName_ ? Json::kMask : Quoted(name);
}

std::string ValueWords::NotAmong(const std::vector<const Json::Value*>& allowed,
                                 const Json::Value& value, bool suggests, Budget& budget) const {
  if (!HidesListedValues()) {
    return JsonValidator::NotAmong(allowed, value, suggests, budget);
  }
  return std::string("expected ") + (allowed.size() == 1 ? "the value" : "one of the values") +
         " that the type allows, found " + Found(value);
}

std::string ValueWords::UnknownMember(std::string_view name,
                                      const std::vector<const ObjectRules*>& schemas,
                                      bool suggests) const {
  return Member(name) + " is not known; " +
         KnownMembers(hidesName_ ? std::string_view() : name, schemas, suggests && !hidesName_);
}

std::string FieldOf(const Place& place, Json::SchemaPlace root) {
  std::vector<const Place*> way;
  for (const Place* step = &place; step->parent != nullptr; step = step->parent) {
    way.push_back(step);
  }
  std::string field;
  const bool looks = root.HoldsSecrets();
  Json::Sight sight(root);
  for (auto step = way.rbegin(); step != way.rend(); ++step) {
    const Json::Value* name = (*step)->name;
    if (looks) {
      sight = Next(**step, sight);
    }
    Json::AppendToken(field, sight.HidesName() ? Json::kMask
                             : name != nullptr ? Json::Utf8::Repaired(Json::Text(*name))
                                               : std::to_string((*step)->index));
  }
  return field.empty() ? "/" : field;
}

Json::SchemaPlace SchemaPlaceOf(const Place& place, Json::SchemaPlace root) {
  return SightOf(place, root).Place();
}

}  // namespace JsonValidator
