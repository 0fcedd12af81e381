#include "schema/annotation_rules.h"

#include "json/pointer.h"
#include "json/schema_keywords.h"
#include "json/subschemas.h"
#include "json_schema/formats.h"
#include "schema/meta_schema.h"

#include <algorithm>
#include <array>
#include <set>

namespace TypeFiles {
namespace {

namespace Keyword = Json::Keyword;
using Json::Kind;

constexpr std::array kOwners = {Keyword::kVital, Keyword::kCached, Keyword::kUser,
                                Keyword::kSolutionUser};

constexpr std::array kAnnotations = {Keyword::kVital, Keyword::kCached, Keyword::kInstanceId,
                                     Keyword::kGeneratedInstanceId, Keyword::kSecret};

enum class Position { ROOT, PROPERTY, ELEMENT, DEFINITION, ELSEWHERE };

struct Place {
  const Json::Value& node;
  std::string pointer;
  Position position;
  std::string_view name;     // of the property, of the array for an element, or the type's key
  Kind around = Kind::USER;  // the kind of what the node stands in
  bool mayBeId = false;      // a property of an object that can have an instance id
};

class AnnotationRules {
 public:
  AnnotationRules(const Json::TypeSchemaView& type, Findings& findings)
      : type_(type), findings_(findings) {}

  void Visit(const Place& place) {
    if (!place.node.IsObject()) {
      return;
    }
    CheckKeywords(place);
    CheckFormat(place);
    CheckFlags(place);
    CheckTags(place);
    CheckUser(place);
    CheckInstanceId(place);
    CheckGeneratedId(place);
    CheckSecret(place);
    CheckReference(place);
    CheckArray(place);
    const Json::Value* value = Json::FindMember(place.node, Keyword::kDefault);
    // What a definition says counts for the properties that refer to it.
    if (value != nullptr &&
        (place.position == Position::PROPERTY || place.position == Position::DEFINITION)) {
      defaults_.push_back({place.pointer + "/" + Keyword::kDefault, &place.node, value});
    }
    VisitBelow(place);
  }

  std::vector<AnnotatedDefault> TakeDefaults() { return std::move(defaults_); }

 private:
  // True when the annotation is there and true. Anything else that is there is a finding, but for
  // the words that say whose data a member holds: they may also say whose it does not.
  bool Has(const Place& place, const char* annotation) {
    const Json::Value* value = Json::FindMember(place.node, annotation);
    if (value == nullptr) {
      return false;
    }
    if (std::find(kOwners.begin(), kOwners.end(), std::string_view(annotation)) != kOwners.end()) {
      if (!value->IsBool()) {
        Add(place, annotation, "has to be true or false");
      }
      return value->IsTrue();
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
        findings_.Add(Below(place, name), WhyNoKeyword(name));
      }
    }
  }

  // A misspelt format would silently check nothing.
  void CheckFormat(const Place& place) {
    const Json::Value* format = Json::FindMember(place.node, Keyword::kFormat);
    if (format != nullptr && format->IsString() && !Json::Text(*format).starts_with("x-") &&
        JsonValidator::FindFormat(Json::Text(*format)) == nullptr) {
      Add(place, Keyword::kFormat,
          "is no format that is checked; these are: " + JsonValidator::FormatNames() +
              "; formats of your own begin with \"x-\"");
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
      if (place.position == Position::ELEMENT || place.position == Position::ELSEWHERE) {
        Add(place, tag, "means something at the root of the schema and in a property only");
      } else if (place.around != Kind::USER && At(place).OwnKind() != place.around) {
        Add(place, tag,
            std::string("stands inside of what is tagged \"") +
                (place.around == Kind::VITAL ? Keyword::kVital : Keyword::kCached) +
                "\", and data is of one kind");
      }
    }
  }

  // These change nothing: data is the user's where nothing is tagged otherwise.
  void CheckUser(const Place& place) {
    for (const char* owner : {Keyword::kUser, Keyword::kSolutionUser}) {
      if (Has(place, owner) && place.position != Position::ELSEWHERE &&
          At(place).OwnKind() != Kind::USER) {
        Add(place, owner, "contradicts the tag here or around it, and data is of one kind");
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
    if (place.name.empty()) {
      Add(place, Keyword::kInstanceId, "belongs to a property with a name");
    }
    const Json::Value* type = Json::FindMember(*At(place).Schema(), Keyword::kType);
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
    if (place.position != Position::ELEMENT) {
      Add(place, Keyword::kGeneratedInstanceId,
          "means something only in the \"items\" of an array");
    } else if (!At(place).DescribesObject()) {
      Add(place, Keyword::kGeneratedInstanceId, "belongs to elements of \"type\": \"object\"");
    } else if (const auto member = At(place).InstanceIdMember();
               member != Json::kGeneratedInstanceId) {
      Add(place, Keyword::kGeneratedInstanceId,
          "cannot be had beside the instance id \"" + std::string(member) + "\"");
    }
  }

  void CheckSecret(const Place& place) {
    if (!Has(place, Keyword::kSecret)) {
      return;
    }
    if (place.position == Position::ROOT || place.position == Position::ELSEWHERE) {
      Add(place, Keyword::kSecret, "means something in properties and in \"items\" only");
    } else if (At(place).IsInstanceId()) {
      Add(place, Keyword::kSecret, "cannot stand beside \"instanceId\": an id names the object");
    }
  }

  // What a reference leads to is looked at where it stands: this is about the two together.
  void CheckReference(const Place& place) {
    const Json::SchemaReferences::Target* target = type_.References().Find(place.node);
    if (target == nullptr || target->schema == nullptr) {
      return;
    }
    if (place.position == Position::ELSEWHERE && HoldsAnnotations(*target->schema)) {
      Add(place, Keyword::kReference,
          "leads to instance ids, secrets, or vital or cached data, which can be told apart only "
          "where \"properties\" and \"items\" lead to them");
      return;
    }
    const Kind kind = At(place).OwnKind();
    const bool holdsOthers = At(place).Kinds() != static_cast<unsigned>(kind);
    if (kind != Kind::USER && (holdsOthers || IsTaggedOtherwise(*target->schema, kind))) {
      Add(place, Keyword::kReference,
          "leads to data that is tagged otherwise than what it stands in, and data is of one kind");
    }
  }

  static bool IsTaggedOtherwise(const Json::Value& schema, Kind kind) {
    return Json::IsTrue(schema, kind == Kind::VITAL ? Keyword::kCached : Keyword::kVital);
  }

  bool HoldsAnnotations(const Json::Value& schema) const {
    std::vector<const Json::Value*> open = {&schema};
    std::set<const Json::Value*> seen;
    while (!open.empty()) {
      const Json::Value& at = *open.back();
      open.pop_back();
      if (!seen.insert(&at).second) {
        continue;
      }
      for (const char* annotation : kAnnotations) {
        if (Json::IsTrue(at, annotation)) {
          return true;
        }
      }
      if (const auto* target = type_.References().Find(at); target != nullptr && target->schema) {
        open.push_back(target->schema);
      }
      Json::ForEachSubschema(at, [&](const Json::Value& inner, const Json::Subschema& where) {
        if (where.keyword != Keyword::kDefinitions) {
          open.push_back(&inner);
        }
      });
    }
    return false;
  }

  // The parts of such an array, stored apart, could not be put together again.
  void CheckArray(const Place& place) {
    const Json::SchemaPlace array = At(place);
    const Json::SchemaPlace items = array.Items();
    if (place.position == Position::ELSEWHERE || !items || !array.IsMixed()) {
      return;
    }
    const bool here = Json::FindMember(place.node, Keyword::kItems) != nullptr;
    const std::string pointer =
        place.pointer + "/" + (here ? Keyword::kItems : Keyword::kReference);
    const Json::Value* type = Json::FindMember(*items.Schema(), Keyword::kType);
    if (items.InstanceIdMember().empty()) {
      findings_.Add(pointer,
                    "the elements have no instance id, so all their members have to be of one "
                    "kind: tag the array as a whole, or give the elements an instance id");
    } else if (type == nullptr || !type->IsString()) {
      findings_.Add(pointer,
                    "the elements have members of several kinds, and are told apart by their "
                    "instance ids: all of them have to be of \"type\": \"object\"");
    }
  }

  void VisitBelow(const Place& place) {
    const bool leadsOn = place.position != Position::ELSEWHERE;
    const Kind around = At(place).OwnKind();
    std::string_view idMember;
    Json::ForEachSubschema(place.node, [&](const Json::Value& node, const Json::Subschema& where) {
      const std::string pointer = place.pointer + where.Pointer();
      if (where.keyword == Keyword::kDefinitions) {
        Visit({node, pointer, Position::DEFINITION, {}, Kind::USER});
      } else if (leadsOn && where.keyword == Keyword::kProperties) {
        const Place below{node,       pointer, Position::PROPERTY,
                          where.name, around,  place.position != Position::PROPERTY};
        Visit(below);
        CheckName(below, place.name);
        CheckOneId(below, idMember);
      } else if (leadsOn && where.keyword == Keyword::kItems && where.index < 0) {
        Visit({node, pointer, Position::ELEMENT, place.name, around});
      } else {
        // Where members stand in the object says nothing here, so annotations mean nothing.
        Visit({node, pointer, Position::ELSEWHERE, {}});
      }
    });
  }

  void CheckName(const Place& property, std::string_view around) {
    if (property.name == around && !At(property).Items().InstanceIdMember().empty()) {
      findings_.Add(property.pointer,
                    "an array of instances cannot have the name of what it stands in: instance ids "
                    "are found by name");
    }
  }

  void CheckOneId(const Place& property, std::string_view& idMember) {
    if (!property.mayBeId || !Json::IsTrue(property.node, Keyword::kInstanceId)) {
      return;
    }
    if (!idMember.empty()) {
      Add(property, Keyword::kInstanceId,
          "an object has one instance id, and this one has \"" + std::string(idMember) + "\"");
    }
    idMember = property.name;
  }

  Json::SchemaPlace At(const Place& place) const { return type_.At(place.node, place.around); }

  static std::string Below(const Place& place, std::string_view name) {
    std::string pointer = place.pointer;
    Json::AppendToken(pointer, name);
    return pointer;
  }

  const Json::TypeSchemaView& type_;
  Findings& findings_;
  std::vector<AnnotatedDefault> defaults_;
};

}  // namespace

std::vector<AnnotatedDefault> CheckAnnotations(const Json::TypeSchemaView& type,
                                               std::string_view key, Findings& findings) {
  AnnotationRules rules(type, findings);
  rules.Visit({type.Schema(), "/schema", Position::ROOT, key});
  return rules.TakeDefaults();
}

}  // namespace TypeFiles
