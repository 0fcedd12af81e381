// Where the references of a schema lead.
#pragma once

#include "json/json.h"

#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace Json {

/// What each "$ref" of one schema document leads to: by JSON Pointer (RFC 6901) in a URI fragment,
/// and by the names that "$id" gives to parts of the document, relative ones made absolute (RFC
/// 3986, JSON Schema draft-07 core section 8). Nothing is ever fetched. All references are followed
/// when this is made; the schema has to stay as and where it is. Immutable; safe from several
/// threads.
class SchemaReferences {
 public:
  explicit SchemaReferences(const Value& schema);

  struct Target {
    const Value* schema = nullptr;  ///< null where the reference leads nowhere
    const char* fault = nullptr;    ///< what is wrong with it then
    const Value* found = nullptr;   ///< what stands there, where that is no schema
  };

  /// What the reference of a schema leads to, in one step; null for a schema without one.
  const Target* Find(const Value& schema) const;

  /// True for a schema in the document: one that keywords or references lead to.
  bool IsSchema(const Value& value) const { return walked_.contains(&value); }

  /// The schemas that a schema stands for, itself first: what its reference leads to, what that
  /// one's leads to, and so on. Ends before a reference that leads nowhere, or back.
  std::vector<const Value*> Chain(const Value& schema) const;

 private:
  struct Part {
    const Value* schema;
    std::string base;  ///< the URI that references in it are relative to
  };
  struct Pending {
    const Value* holder;
    std::string base;
  };

  void Walk(const Value& schema, std::string base);
  void Read(Part& part);
  Target Resolve(const Value& reference, std::string_view base, std::string& found) const;

  const Value& root_;
  std::unordered_set<const Value*> walked_;
  std::unordered_map<std::string, const Value*> named_;
  std::unordered_map<const Value*, Target> targets_;  ///< by the schema that holds the reference
  std::vector<Pending> pending_;
};

}  // namespace Json
