// Compiled schemas of types, kept for as long as the types live.
#include "json_schema/registration.h"

#include "json_schema/findings_text.h"
#include "json_schema/schema_registry.h"

#include <atomic>
#include <optional>
#include <thread>
#include <vector>

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
    FindingsOf(schema, Json::Value("ab"), rules);
  }
  const Registration another(view);
  FindingsOf(schema, Json::Value("b"));
  EXPECT_EQ(CompiledSchema::CountSoFar(), before + 1);
}

TEST(Registration, LastsUntilTheLastOneGoes) {
  Json::Document schema = Parsed(R"({"type": "string"})");
  const Json::TypeSchemaView view(schema);
  std::optional<Registration> one(std::in_place, view);
  std::optional<Registration> other(std::in_place, view);
  one.reset();
  EXPECT_NE(SchemaRegistry::Instance().Find(schema), nullptr);
  const auto held = SchemaRegistry::Instance().Find(schema);
  ASSERT_NE(held, nullptr);
  other.reset();
  EXPECT_EQ(SchemaRegistry::Instance().Find(schema), nullptr);
  EXPECT_TRUE(held->Faults().empty());  // what is in use stays
  // Another schema at the same address is seen as what it is.
  schema["type"] = "null";
  EXPECT_EQ(FindingsOf(schema, Json::Value("a")), "/: expected null, found the text \"a\"");
}

TEST(Registration, AnUnusableSchemaStaysUnusable) {
  const Json::Document schema = Parsed(R"({"pattern": "("})");
  const Json::TypeSchemaView view(schema);
  const Registration registration(view);
  const std::string finding = FindingsOf(schema, Json::Value("a"));
  EXPECT_NE(finding, "");
  EXPECT_EQ(FindingsOf(schema, Json::Value("a")), finding);
}

TEST(Registration, ThreadsShareOneSchema) {
  const Json::Document schema = Parsed(R"({"properties": {
      "name": {"pattern": "^[a-z]+$"}, "next": {"$ref": "#"}, "port": {"format": "port"}},
      "anyOf": [{"required": ["name"]}, {"maxProperties": 1}]})");
  const Json::TypeSchemaView view(schema);
  const Json::Document good = Parsed(R"({"name": "a", "next": {"name": "b", "port": 80}})");
  const Json::Document bad = Parsed(R"({"name": "A", "nxt": 1})");
  const Registration registration(view);
  std::atomic<int> wrong = 0;
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([&] {
      const Json::Document own = Parsed(R"({"type": "object"})");
      const Json::TypeSchemaView ownView(own);
      for (int round = 0; round < 200; ++round) {
        const Registration passing(ownView);  // registrations come and go meanwhile
        wrong += static_cast<int>(FindingsOf(own, good) != "");
        wrong += static_cast<int>(FindingsOf(schema, good) != "");
        wrong +=
            static_cast<int>(FindingsOf(schema, bad) !=
                             "/name: the text \"A\" does not match the pattern ^[a-z]+$\n"
                             "/nxt: member \"nxt\" is not known; known members: name, next, port");
      }
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  EXPECT_EQ(wrong, 0);
}

}  // namespace
}  // namespace ValidatorTest
