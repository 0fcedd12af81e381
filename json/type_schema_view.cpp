#include "json/type_schema_view.h"

#include "json/place_node.h"
#include "json/schema_keywords.h"
#include "json/schema_parts.h"
#include "json/subschemas.h"

#include <algorithm>
#include <array>
#include <set>
#include <vector>

namespace Json {
namespace {

constexpr std::array kCompositions = {"allOf", "anyOf", "oneOf",       "if",
                                      "then",  "else",  "dependencies"};

bool IsComposition(std::string_view keyword) {
  return std::find(kCompositions.begin(), kCompositions.end(), keyword) != kCompositions.end();
}

// Members beyond those that "properties" names. An object whose members are named is closed to
// others unless it says that it is not.
bool AdmitsOthers(const Value& schema) {
  const Value* additional = FindMember(schema, Keyword::kAdditionalProperties);
  const Value* patterns = FindObject(schema, Keyword::kPatternProperties);
  return (additional != nullptr && !additional->IsFalse()) ||
         (patterns != nullptr && !patterns->ObjectEmpty());
}

// The kind of number that "type" leaves; ANY where it says nothing of numbers.
NumberKind NumbersOf(const Value& schema) {
  const Value* type = FindMember(schema, Keyword::kType);
  const auto names = [&](std::string_view wanted) {
    const auto isWanted = [&](const Value& name) {
      return name.IsString() && Text(name) == wanted;
    };
    return type != nullptr &&
           (type->IsArray() ? std::any_of(type->Begin(), type->End(), isWanted) : isWanted(*type));
  };
  const bool integer = names("integer");
  return integer == names("number") ? NumberKind::ANY
         : integer                  ? NumberKind::INTEGER
                                    : NumberKind::FLOATING;
}

}  // namespace

TypeSchemaView::TypeSchemaView(const Value& schema) : schema_(schema), references_(schema) {
  NodeOf(schema);
  for (std::size_t read = 0; read < nodes_.size(); ++read) {
    Read(nodes_[read]);
  }
  ReadOverlays();
  ReadInstanceIds();
  SpreadMarks();
  SpreadKinds();
}

TypeSchemaView::~TypeSchemaView() = default;

SchemaPlace TypeSchemaView::Root() const {
  return {&nodes_.front(), Kind::USER};
}

SchemaPlace TypeSchemaView::At(const Value& schema, Kind around) const {
  const auto known = known_.find(&schema);
  return {known == known_.end() ? nullptr : known->second, around};
}

TypeSchemaView::Node* TypeSchemaView::NodeOf(const Value& schema) {
  Node*& node = known_[&schema];
  if (node == nullptr) {
    node = &nodes_.emplace_back();
    node->schema = &schema;
  }
  return node;
}

void TypeSchemaView::Read(Node& node) {
  // Annotations may stand beside a reference, or where it leads; the first on the way counts.
  for (const Value* schema : references_.Chain(*node.schema)) {
    node.schema = schema;
    if (node.tag == 0) {
      node.tag = IsTrue(*schema, Keyword::kVital)    ? static_cast<unsigned>(Kind::VITAL)
                 : IsTrue(*schema, Keyword::kCached) ? static_cast<unsigned>(Kind::CACHED)
                                                     : 0;
    }
    node.mentionsTag = node.mentionsTag || FindMember(*schema, Keyword::kVital) != nullptr ||
                       FindMember(*schema, Keyword::kCached) != nullptr;
    node.isInstanceId = node.isInstanceId || IsTrue(*schema, Keyword::kInstanceId);
    node.getsGeneratedId = node.getsGeneratedId || IsTrue(*schema, Keyword::kGeneratedInstanceId);
    node.isSecret = node.isSecret || IsTrue(*schema, Keyword::kSecret);
    if (node.defaultValue == nullptr) {
      node.defaultValue = FindMember(*schema, Keyword::kDefault);
    }
  }
  const Value& schema = *node.schema;
  if (const Value* definitions = FindObject(schema, Keyword::kDefinitions)) {
    for (const auto& definition : definitions->GetObject()) {
      NodeOf(definition.value);
    }
  }
  if (FindMember(schema, Keyword::kReference) != nullptr) {
    return;  // it leads nowhere, and hides what stands beside it
  }
  node.admitsOthers = AdmitsOthers(schema);
  if (const Value* properties = FindObject(schema, Keyword::kProperties)) {
    node.members.reserve(properties->MemberCount());
    for (const auto& property : properties->GetObject()) {
      node.members.push_back({Text(property.name), NodeOf(property.value)});
    }
  }
  if (const Value* items = FindObject(schema, Keyword::kItems)) {
    node.items = NodeOf(*items);
  }
  node.ReadRequired(schema);
  node.numbers = NumbersOf(schema);
}

// What schemas that hold beside the one of a place admit there, or below it.
void TypeSchemaView::ReadOverlays() {
  std::vector<Overlay> work;
  std::set<Overlay> seen;
  const auto addParts = [&](Node& node, const Value& schema) {
    ForEachSubschema(schema, [&](const Value& part, const Subschema& where) {
      if (IsComposition(where.keyword)) {
        work.emplace_back(&node, &part);
      }
    });
  };
  for (Node& node : nodes_) {
    addParts(node, *node.schema);
  }
  while (!work.empty()) {
    const Overlay overlay = work.back();
    work.pop_back();
    if (!seen.insert(overlay).second) {
      continue;
    }
    Node& node = *overlay.first;
    const Value& schema = *references_.Chain(*overlay.second).back();
    node.admitsOthers = node.admitsOthers || AdmitsOthers(schema);
    node.ReadRequired(schema);
    if (NumbersOf(schema) != node.numbers && FindMember(schema, Keyword::kType) != nullptr) {
      node.numbers = NumberKind::ANY;
    }
    if (const Value* properties = FindObject(schema, Keyword::kProperties)) {
      for (const auto& property : properties->GetObject()) {
        if (Node* own = node.Find(Text(property.name))) {
          work.emplace_back(own, &property.value);
        } else {
          node.admitsOthers = true;
        }
      }
    }
    const Value* items = FindObject(schema, Keyword::kItems);
    if (items != nullptr && node.items != nullptr) {
      work.emplace_back(node.items, items);
    }
    addParts(node, schema);
  }
}

void TypeSchemaView::ReadInstanceIds() {
  for (Node& node : nodes_) {
    const auto id =
        std::find_if(node.members.begin(), node.members.end(),
                     [](const Node::Member& member) { return member.node->isInstanceId; });
    if (id != node.members.end()) {
      node.instanceIdMember = id->name;
    } else if (node.getsGeneratedId) {
      node.instanceIdMember = kGeneratedInstanceId;
    }
  }
}

// References may go round in circles through properties and items: again until nothing changes.
void TypeSchemaView::SpreadMarks() {
  for (bool changed = true; changed;) {
    changed = false;
    for (auto node = nodes_.rbegin(); node != nodes_.rend(); ++node) {
      const bool held = node->holdsDefaults;
      const bool given = node->holdsGeneratedIds;
      node->holdsDefaults = held || node->defaultValue != nullptr;
      node->holdsGeneratedIds =
          given || (node->items != nullptr &&
                    (node->items->getsGeneratedId || node->items->holdsGeneratedIds));
      const bool hidden = node->holdsSecrets;
      node->holdsSecrets =
          hidden || node->isSecret || (node->items != nullptr && node->items->holdsSecrets);
      for (const Node::Member& member : node->members) {
        node->holdsDefaults = node->holdsDefaults || member.node->holdsDefaults;
        node->holdsGeneratedIds = node->holdsGeneratedIds || member.node->holdsGeneratedIds;
        node->holdsSecrets = node->holdsSecrets || member.node->holdsSecrets;
      }
      changed = changed || held != node->holdsDefaults || given != node->holdsGeneratedIds ||
                hidden != node->holdsSecrets;
    }
  }
}

// The same for kinds.
void TypeSchemaView::SpreadKinds() {
  const auto kindsOf = [](const Node& node) {
    unsigned kinds = node.admitsOthers ? kInherited : 0;
    for (const Node::Member& member : node.members) {
      kinds |= member.node->isInstanceId ? 0 : member.node->kinds;
    }
    kinds |= node.items != nullptr ? node.items->kinds : 0;
    return kinds;
  };
  const auto settle = [](const Node& node, unsigned kinds) {
    return node.tag != 0 && (kinds & kInherited) != 0 ? (kinds & ~kInherited) | node.tag : kinds;
  };
  // Where nothing is known below, or nothing but ids, the place itself is what has a kind.
  const auto spread = [&](bool leaves) {
    for (bool changed = true; changed;) {
      changed = false;
      for (auto node = nodes_.rbegin(); node != nodes_.rend(); ++node) {
        unsigned kinds = node->kinds | kindsOf(*node);
        kinds = settle(*node, leaves && kinds == 0 ? kInherited : kinds);
        changed = changed || kinds != node->kinds;
        node->kinds = kinds;
      }
    }
  };
  for (Node& node : nodes_) {
    const bool bare = node.items == nullptr && std::all_of(node.members.begin(), node.members.end(),
                                                           [](const Node::Member& member) {
                                                             return member.node->isInstanceId;
                                                           });
    node.kinds = bare ? settle(node, kInherited) : 0;
  }
  spread(false);
  spread(true);
}

}  // namespace Json
