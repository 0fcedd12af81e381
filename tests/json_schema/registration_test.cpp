// Compiled schemas of types, kept for as long as the types live.
#include "json_schema/registration.h"

#include "json_schema/findings_text.h"
#include "json_schema/schema_registry.h"

#include <atomic>
#include <optional>
#include <thread>

namespace ValidatorTest {
namespace {

using JsonValidator::CompiledSchema;
using JsonValidator::Registration;
using JsonValidator::SchemaRegistry;

TEST(Registration, CompilesOnceAndOnlyWhenUsed) {
  const Json::Document schema = Parsed(R"({"type": "string", "pattern": "^a"})");
  const Json::TypeSchemaView view(schema);
  EXPECT_EQ(SchemaRegistry::Instance().Find(schema), nullptr);
  const std::uint64_t before = CompiledSchema::CountSoFar();
  const Registration registration(view);
  EXPECT_EQ(CompiledSchema::CountSoFar(), before);
  for (const Rules& rules : {Rules{0, 1}, Rules{0, 1, 3, 7, 8}, Rules{}}) {
    const Registration another(view);
    FindingsOf(schema, Json::Value("ab"), rules);
  }
  EXPECT_EQ(CompiledSchema::CountSoFar(), before + 1);
}

TEST(Registration, LastsUntilTheLastOneGoes) {
  Json::Document schema = Parsed(R"({"type": "string"})");
  const Json::TypeSchemaView view(schema);
  std::optional<Registration> one(std::in_place, view);
  std::optional<Registration> other(std::in_place, view);
  one.reset();
  const auto held = SchemaRegistry::Instance().Find(schema);
  ASSERT_NE(held, nullptr);
  other.reset();
  EXPECT_EQ(SchemaRegistry::Instance().Find(schema), nullptr);
  EXPECT_TRUE(held->Faults().empty());  // what is in use stays
  // Another schema at the same address is seen as what it is.
  schema["type"] = "null";
  EXPECT_EQ(FindingsOf(schema, Json::Value("a")), "/: expected null, found the text \"a\"");
}

TEST(Registration, ThreadsShareOneSchema) {
  const Json::Document schema = Parsed(R"({"properties": {
      "name": {"pattern": "^[a-z]+$"}, "next": {"$ref": "#"}, "port": {"format": "port"}},
      "anyOf": [{"required": ["name"]}, {"maxProperties": 1}]})");
  const Json::TypeSchemaView view(schema);
  const Json::Document good = Parsed(R"({"name": "a", "next": {"name": "b", "port": 80}})");
  const Json::Document bad = Parsed(R"({"name": "A", "nxt": 1})");
  const std::string findings = R"(/name: the text "A" does not match the pattern ^[a-z]+$
/nxt: member "nxt" is not known; known members: name, next, port)";
  const Registration registration(view);
  std::atomic<int> right = 0;
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([&] {
      const Json::Document own = Parsed(R"({"type": "object"})");
      const Json::TypeSchemaView ownView(own);
      for (int round = 0; round < 200; ++round) {
        const Registration passing(ownView);  // registrations come and go meanwhile
        right += FindingsOf(own, good).empty() && FindingsOf(schema, good).empty() &&
                 FindingsOf(schema, bad) == findings;
      }
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  EXPECT_EQ(right, 4 * 200);
}

}  // namespace
}  // namespace ValidatorTest
