#include "json_schema/compiled_schema.h"

#include "json_schema/place.h"
#include "json_schema/schema_compiler.h"

#include <atomic>
#include <deque>
#include <string_view>
#include <unordered_map>

namespace JsonValidator {
namespace {

std::atomic<std::uint64_t> compiledSoFar{0};

}  // namespace

CompiledSchema::CompiledSchema(const Json::TypeSchemaView& view) : view_(view) {
  compiledSoFar.fetch_add(1, std::memory_order_relaxed);
  SchemaCompiler(view, nodes_, faults_).Run();
  FindLoops(nodes_, faults_);
  if (faults_.empty()) {
    LinkTags(nodes_);
  }
}

std::uint64_t CompiledSchema::CountSoFar() {
  return compiledSoFar.load(std::memory_order_relaxed);
}

void NoteFaults(const Json::Value& schema, const std::vector<SchemaFault>& faults,
                Findings& findings) {
  if (faults.empty()) {
    return;
  }
  std::unordered_multimap<const Json::Value*, std::string_view> texts;
  for (const SchemaFault& fault : faults) {
    texts.emplace(fault.where, fault.text);
  }
  struct Seen {
    const Json::Value* value;
    Place place;
  };
  // Level by level and without recursion, because the schema may be of any depth; places stay where
  // they are.
  std::deque<Seen> seen{{&schema, Place{}}};
  for (std::size_t i = 0; i < seen.size(); ++i) {
    const Json::Value& value = *seen[i].value;
    const Place& place = seen[i].place;
    const auto here = texts.equal_range(&value);
    for (auto fault = here.first; fault != here.second; ++fault) {
      findings.Add(place, fault->second);
    }
    std::uint32_t index = 0;
    if (value.IsObject()) {
      for (const auto& member : value.GetObject()) {
        seen.push_back({&member.value, Place{&place, &member.name, index++}});
      }
    } else if (value.IsArray()) {
      for (const Json::Value& element : value.GetArray()) {
        seen.push_back({&element, Place{&place, nullptr, index++}});
      }
    }
  }
}

std::string FaultsInWords(const CompiledSchema& schema) {
  Findings findings;
  NoteFaults(schema.Schema(), schema.Faults(), findings);
  const auto& sorted = findings.Sorted();
  std::string text = "the schema of this type cannot be used: at " + sorted.front().field + ": " +
                     sorted.front().error;
  if (sorted.size() > 1) {
    text += " (and " + std::to_string(sorted.size() - 1) + " more)";
  }
  return text;
}

}  // namespace JsonValidator
