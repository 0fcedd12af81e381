#include "schema/annotation_rules.h"

#include "schema/annotations.h"
#include "schema/meta_schema.h"
#include "schema/schema_walk.h"

#include <array>

namespace TypeFiles {
namespace {

using namespace TarnSchemaStore;

// Keywords that hold one schema, a list of schemas, or schemas by name, and that say nothing about
// where members stand in the object: annotations below them mean nothing.
constexpr std::array kSingles = {"additionalItems",
                                 "additionalProperties",
                                 "contains",
                                 "else",
                                 "if",
                                 "not",
                                 "propertyNames",
                                 "then"};
constexpr std::array kLists = {"allOf", "anyOf", "oneOf"};
constexpr std::array kMaps = {"dependencies", "patternProperties"};

enum class Position { ROOT, PROPERTY, ELEMENT, DEFINITION, ELSEWHERE };

struct Place {
  const Json::Value& node;
  std::string pointer;
  Position position;
  std::string_view name;      // of the property, of the array for an element, or the type's key
  Kind around = KIND_USER;    // the kind of what the node stands in
  bool inDefinition = false;  // reached through "$ref" only
  bool mayBeId = false;       // a property of an object that can have an instance id
};

class AnnotationRules {
 public:
  AnnotationRules(const Json::Value& root, Findings& findings) : root_(root), findings_(findings) {}

  void Visit(const Place& place) {
    if (!place.node.IsObject()) {
      return;
    }
    CheckKeywords(place);
    CheckFlags(place);
    CheckTags(place);
    CheckInstanceId(place);
    CheckGeneratedId(place);
    CheckArray(place);
    const Json::Value* value = Json::FindMember(place.node, Keyword::kDefault);
    if (value != nullptr && place.position == Position::PROPERTY) {
      defaults_.push_back({place.pointer + "/" + Keyword::kDefault, &place.node, value});
    }
    VisitProperties(place);
    VisitItems(place);
    VisitDefinitions(place);
    VisitElsewhere(place);
  }

  std::vector<AnnotatedDefault> TakeDefaults() { return std::move(defaults_); }

 private:
  // True when the annotation is there and true; anything else that is there is a finding.
  bool Has(const Place& place, const char* annotation) {
    const Json::Value* value = Json::FindMember(place.node, annotation);
    if (value == nullptr) {
      return false;
    }
    if (!value->IsTrue()) {
      Add(place, annotation, "can only be true; leave it out where it does not hold");
      return false;
    }
    return true;
  }

  void Add(const Place& place, const char* annotation, const std::string& error) {
    findings_.Add(place.pointer + "/" + annotation, error);
  }

  // A misspelt tag would silently make other data of a member.
  void CheckKeywords(const Place& place) {
    for (const auto& member : place.node.GetObject()) {
      const std::string_view name = Json::Text(member.name);
      if (!IsKeyword(name) && name.substr(0, 2) != "x-") {
        findings_.Add(place.pointer + "/" + EscapePointerToken(name),
                      "is neither a keyword of JSON Schema draft-07 nor an annotation of types; "
                      "members of your own begin with \"x-\"");
      }
    }
  }

  void CheckFlags(const Place& place) {
    for (const char* flag : Keyword::kFlags) {
      if (Has(place, flag) && place.position != Position::ROOT) {
        Add(place, flag, "is a flag of the whole type and belongs at the root of the schema");
      }
    }
  }

  void CheckTags(const Place& place) {
    const bool vital = Has(place, Keyword::kVital);
    const bool cached = Has(place, Keyword::kCached);
    if (vital && cached) {
      Add(place, Keyword::kCached, "cannot stand beside \"vital\": data is of one kind");
    }
    for (const char* tag : {Keyword::kVital, Keyword::kCached}) {
      if (!(tag == Keyword::kVital ? vital : cached)) {
        continue;
      }
      if (place.inDefinition) {
        Add(place, tag,
            "is not looked for in definitions; put it beside the \"$ref\" that leads here");
      } else if (place.position != Position::ROOT && place.position != Position::PROPERTY) {
        Add(place, tag, "means something at the root of the schema and in a property only");
      } else if (place.around != KIND_USER && KindOf(place.node, place.around) != place.around) {
        Add(place, tag,
            std::string("stands inside of what is tagged \"") +
                (place.around == KIND_VITAL ? Keyword::kVital : Keyword::kCached) +
                "\", and data is of one kind");
      }
    }
  }

  void CheckInstanceId(const Place& place) {
    if (!Has(place, Keyword::kInstanceId)) {
      return;
    }
    if (!place.mayBeId) {
      Add(place, Keyword::kInstanceId,
          "means something only in a property of the type itself or of the objects in an array");
      return;
    }
    const Json::Value* type = Json::FindMember(ResolveReference(root_, place.node), Keyword::kType);
    if (type == nullptr || !type->IsString() || Json::Text(*type) != "string") {
      Add(place, Keyword::kInstanceId, "belongs to a property of \"type\": \"string\"");
    }
    if (Json::IsTrue(place.node, Keyword::kVital) || Json::IsTrue(place.node, Keyword::kCached)) {
      Add(place, Keyword::kInstanceId,
          "cannot be vital or cached: the instance id goes into every part of the object");
    }
  }

  void CheckGeneratedId(const Place& place) {
    if (!Has(place, Keyword::kGeneratedInstanceId)) {
      return;
    }
    const Json::Value& element = ResolveReference(root_, place.node);
    if (place.position != Position::ELEMENT) {
      Add(place, Keyword::kGeneratedInstanceId,
          "means something only in the \"items\" of an array");
    } else if (!DescribesObject(element)) {
      Add(place, Keyword::kGeneratedInstanceId, "belongs to elements of \"type\": \"object\"");
    } else if (const auto member = InstanceIdMember(root_, element); !member.empty()) {
      Add(place, Keyword::kGeneratedInstanceId,
          "cannot be had beside the instance id \"" + std::string(member) + "\"");
    }
  }

  // The parts of such an array, stored apart, could not be put together again.
  void CheckArray(const Place& place) {
    const Json::Value* items = ElementsOf(place.node);
    if (items == nullptr || !ElementIdMember(root_, place.node).empty()) {
      return;
    }
    const unsigned kinds = KindsOfLeaves(root_, *items, KindOf(place.node, place.around));
    if ((kinds & (kinds - 1)) != 0) {
      findings_.Add(
          place.pointer + "/" + Keyword::kItems,
          "the elements have no instance id, so all their members have to be of one kind: "
          "tag the array as a whole, or give the elements an instance id");
    }
  }

  void VisitProperties(const Place& place) {
    const Json::Value* properties = PropertiesOf(place.node);
    if (properties == nullptr) {
      return;
    }
    const bool elsewhere = place.position == Position::ELSEWHERE;
    std::string_view idMember;
    for (const auto& property : properties->GetObject()) {
      const std::string_view name = Json::Text(property.name);
      Place below{property.value,
                  place.pointer + "/properties/" + EscapePointerToken(name),
                  elsewhere ? Position::ELSEWHERE : Position::PROPERTY,
                  name,
                  KindOf(place.node, place.around),
                  place.inDefinition,
                  !elsewhere && place.position != Position::PROPERTY};
      Visit(below);
      if (below.mayBeId && Json::IsTrue(property.value, Keyword::kInstanceId)) {
        if (!idMember.empty()) {
          Add(below, Keyword::kInstanceId,
              "an object has one instance id, and this one has \"" + std::string(idMember) + "\"");
        }
        idMember = name;
      }
      if (!elsewhere && name == place.name &&
          !ElementIdMember(root_, ResolveReference(root_, property.value)).empty()) {
        findings_.Add(
            below.pointer,
            "an array of instances cannot have the name of what it stands in: instance ids "
            "are found by name");
      }
    }
  }

  void VisitItems(const Place& place) {
    const Json::Value* items = Json::FindMember(place.node, Keyword::kItems);
    if (items != nullptr && items->IsArray()) {
      VisitList(place, Keyword::kItems, *items);
    } else if (items != nullptr) {
      Visit({*items, place.pointer + "/" + Keyword::kItems,
             place.position == Position::ELSEWHERE ? Position::ELSEWHERE : Position::ELEMENT,
             place.name, KindOf(place.node, place.around), place.inDefinition});
    }
  }

  void VisitDefinitions(const Place& place) {
    const Json::Value* definitions = Json::FindMember(place.node, Keyword::kDefinitions);
    if (definitions == nullptr || !definitions->IsObject()) {
      return;
    }
    for (const auto& definition : definitions->GetObject()) {
      const std::string_view name = Json::Text(definition.name);
      Visit({definition.value,
             place.pointer + "/definitions/" + EscapePointerToken(name),
             Position::DEFINITION,
             {},
             KIND_USER,
             true});
    }
  }

  void VisitElsewhere(const Place& place) {
    for (const char* keyword : kSingles) {
      if (const Json::Value* node = Json::FindMember(place.node, keyword)) {
        Visit(Elsewhere(*node, place.pointer + "/" + keyword));
      }
    }
    for (const char* keyword : kLists) {
      if (const Json::Value* list = Json::FindMember(place.node, keyword)) {
        VisitList(place, keyword, *list);
      }
    }
    for (const char* keyword : kMaps) {
      const Json::Value* map = Json::FindMember(place.node, keyword);
      if (map == nullptr || !map->IsObject()) {
        continue;
      }
      for (const auto& entry : map->GetObject()) {
        Visit(Elsewhere(entry.value, place.pointer + "/" + keyword + "/" +
                                         EscapePointerToken(Json::Text(entry.name))));
      }
    }
  }

  void VisitList(const Place& place, const char* keyword, const Json::Value& list) {
    if (!list.IsArray()) {
      return;
    }
    for (rapidjson::SizeType i = 0; i < list.Size(); ++i) {
      Visit(Elsewhere(list[i], place.pointer + "/" + keyword + "/" + std::to_string(i)));
    }
  }

  static Place Elsewhere(const Json::Value& node, std::string pointer) {
    return {node, std::move(pointer), Position::ELSEWHERE, {}};
  }

  const Json::Value& root_;
  Findings& findings_;
  std::vector<AnnotatedDefault> defaults_;
};

}  // namespace

std::vector<AnnotatedDefault> CheckAnnotations(const Json::Value& schema, std::string_view key,
                                               Findings& findings) {
  AnnotationRules rules(schema, findings);
  rules.Visit({schema, "/schema", Position::ROOT, key});
  return rules.TakeDefaults();
}

}  // namespace TypeFiles
