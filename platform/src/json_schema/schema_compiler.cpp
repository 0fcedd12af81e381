#include "json_schema/schema_compiler.h"

#include "platform/made_once.h"

#include "json_schema/describe.h"

#include <algorithm>
#include <utility>

namespace JsonValidator {
namespace {

constinit MadeOnce<const Json::Document> generatedIdSchema;

}  // namespace

void SchemaCompiler::Run() {
  NodeOf(view_.Schema());
  while (read_ < nodes_.size()) {
    ReadSchema(nodes_[read_++]);
  }
}

const Node* SchemaCompiler::NodeOf(const Json::Value& schema) {
  Node*& node = known_[&schema];
  if (node == nullptr) {
    node = &nodes_.emplace_back();
    node->source = &schema;
  }
  return node;
}

void SchemaCompiler::ReadSchema(Node& node) {
  const Json::Value& schema = *node.source;
  if (schema.IsBool()) {
    node.refusesAll = schema.IsFalse();
    return;
  }
  if (!schema.IsObject()) {
    Fault(schema, "expected a schema (an object, or true or false), found " + Found(schema));
    return;
  }
  const Json::Value* reference = Json::FindMember(schema, "$ref");
  const bool getsId = Json::IsTrue(schema, "generatedInstanceId");
  const std::vector<const Json::Value*> chain = view_.References().Chain(schema);
  const bool ends = chain.back()->IsObject() && Json::FindMember(*chain.back(), "$ref") == nullptr;
  if (reference != nullptr && !(getsId && ends)) {
    ReadReference(node, *reference, *view_.References().Find(schema));
    ReadKeywords(node, schema, true);
  } else {
    // Elements that get an identifier are not those that other places refer to: what the reference
    // leads to is read once more for them.
    for (const Json::Value* part : chain) {
      ReadKeywords(node, *part, part != chain.back());
    }
    if (getsId) {
      DeclareGeneratedId(node);
    }
  }
  if (node.object) {
    FinishRequired(*node.object);
  }
  if (node.text && node.text->pattern) {
    FinishPattern(node);
  }
}

void SchemaCompiler::FinishPattern(Node& node) {
  for (const char* keyword : {"description", "title"}) {
    const Json::Value* meaning = Json::FindMember(*node.source, keyword);
    if (meaning != nullptr && meaning->IsString() && meaning->GetStringLength() > 0) {
      node.text->meaning = Json::Text(*meaning);
      return;
    }
  }
}

void SchemaCompiler::ReadKeywords(Node& node, const Json::Value& schema, bool besideReference) {
  const auto& keywords = Keywords();
  for (const auto& member : schema.GetObject()) {
    const Entry entry{Json::Text(member.name), member.value};
    const auto keyword = keywords.find(entry.keyword);
    if (keyword != keywords.end() && (!besideReference || keyword->second.besideReference)) {
      keyword->second.read(*this, node, entry);
    }
  }
}

// The store gives such elements an identifier, which comes back in objects that were read from it.
// No type file declares it.
void SchemaCompiler::DeclareGeneratedId(Node& node) {
  const Json::Value& schema = generatedIdSchema.Get([] {
    Json::Document document;
    document.Parse(R"({"type": "string", "instanceId": true})");
    return document;
  });
  if (!node.object) {
    node.object = std::make_unique<ObjectRules>();
  }
  std::vector<Property> properties = node.object->properties.All();
  properties.push_back({Json::kGeneratedInstanceId, NodeOf(schema), 0});
  node.object->properties.Assign(std::move(properties));
}

void SchemaCompiler::ReadReference(Node& node, const Json::Value& reference,
                                   const Json::SchemaReferences::Target& target) {
  if (!reference.IsString()) {
    Malformed({"$ref", reference}, "a text");
  } else if (target.schema == nullptr) {
    Fault(reference, "the reference " + Quoted(Json::Text(reference)) + " " + target.fault +
                         (target.found != nullptr ? ": " + Found(*target.found) : ""));
  } else {
    node.composition = std::make_unique<Composition>();
    node.composition->reference = NodeOf(*target.schema);
  }
}

void SchemaCompiler::FinishRequired(ObjectRules& rules) {
  // Required members that are declared, too, are ticked off while the members are walked.
  constexpr std::size_t kMostBits = 64;
  std::vector<Property> properties = rules.properties.All();
  const auto declared = [&](std::string_view name) {
    return std::find_if(properties.begin(), properties.end(),
                        [&](const Property& property) { return property.name == name; });
  };
  std::stable_partition(rules.required.begin(), rules.required.end(),
                        [&](std::string_view name) { return declared(name) != properties.end(); });
  for (std::size_t i = 0; i < std::min(rules.required.size(), kMostBits); ++i) {
    const auto property = declared(rules.required[i]);
    if (property == properties.end()) {
      break;
    }
    property->requiredBit = std::uint64_t{1} << i;
    rules.requiredBits |= property->requiredBit;
  }
  rules.properties.Assign(std::move(properties));
}

void SchemaCompiler::Fault(const Json::Value& where, std::string text) {
  faults_.push_back({&where, std::move(text)});
}

void SchemaCompiler::Malformed(const Entry& entry, std::string_view expected) {
  Fault(entry.value, Quoted(entry.keyword) + " has to be " + std::string(expected) + ", found " +
                         Found(entry.value));
}

}  // namespace JsonValidator
