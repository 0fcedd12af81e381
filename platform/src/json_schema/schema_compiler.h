// Turns the JSON of a schema into nodes.
#pragma once

#include "json/type_schema_view.h"
#include "json_schema/compiled_schema.h"

#include <cstdint>
#include <deque>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace JsonValidator {

/// Reads every schema that is found from the root, by keyword or by reference, and notes what is
/// wrong with it. Each gets one node however often it is referred to. Does not recurse, whatever
/// the schema.
class SchemaCompiler {
 public:
  SchemaCompiler(const Json::TypeSchemaView& view, std::deque<Node>& nodes,
                 std::vector<SchemaFault>& faults)
      : view_(view), nodes_(nodes), faults_(faults) {}

  void Run();

 private:
  /// A keyword of a schema and its value.
  struct Entry {
    std::string_view keyword;
    const Json::Value& value;
  };
  struct Keyword {
    void (*read)(SchemaCompiler& compiler, Node& node, const Entry& entry);
    bool besideReference = false;  ///< counts beside "$ref", which hides all assertions
  };
  static const std::unordered_map<std::string_view, Keyword>& Keywords();
  static std::unordered_map<std::string_view, Keyword> MakeKeywords();

  /// The node of a schema; it is read later.
  const Node* NodeOf(const Json::Value& schema);
  void ReadSchema(Node& node);
  void ReadKeywords(Node& node, const Json::Value& schema, bool besideReference);
  void ReadReference(Node& node, const Json::Value& reference,
                     const Json::SchemaReferences::Target& target);
  void DeclareGeneratedId(Node& node);
  void FinishRequired(ObjectRules& rules);
  static void FinishPattern(Node& node);

  void Fault(const Json::Value& where, std::string text);
  void Malformed(const Entry& entry, std::string_view expected);

  // What keywords hold. A value of another kind is noted, and answered with something harmless.
  const Json::Value* Number(const Entry& entry);
  std::uint64_t Count(const Entry& entry);
  bool Flag(const Entry& entry);
  void Text(const Entry& entry);
  const Node* Schema(const Entry& entry);
  Nodes Schemas(const Entry& entry);
  std::vector<std::string_view> Names(const Entry& entry);
  std::unique_ptr<const Pattern> PatternOf(const Json::Value& text, const Json::Value& where);

  void ReadType(Node& node, const Entry& entry);
  void ReadItems(Node& node, const Entry& entry);
  void ReadProperties(Node& node, const Entry& entry);
  void ReadPatternProperties(Node& node, const Entry& entry);
  void ReadDependencies(Node& node, const Entry& entry);
  void ReadDefinitions(const Entry& entry);
  void ReadFormat(Node& node, const Entry& entry);
  void ReadTag(Node& node, const Entry& entry, Tags tag);

  const Json::TypeSchemaView& view_;
  std::deque<Node>& nodes_;
  std::vector<SchemaFault>& faults_;
  std::unordered_map<const Json::Value*, Node*> known_;
  std::size_t read_ = 0;  ///< the nodes before it are read
};

// What is known only when all nodes are there.

/// Notes references that come back to where they stand without going into a member or an element,
/// and schemas nested in one another so deeply at one place that checking them could overflow the
/// stack.
void FindLoops(const std::deque<Node>& nodes, std::vector<SchemaFault>& faults);

/// Fills in which tags are found beneath each node. Only for nodes without loops.
void LinkTags(std::deque<Node>& nodes);

}  // namespace JsonValidator
