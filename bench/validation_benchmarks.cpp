#include "platform/json_validator.h"

#include "benchmarks.h"
#include "comparison.h"
#include "json_schema/registration.h"
#include "rapidjson_validator.h"
#include "samples.h"
#include "validation/rule_sets.h"
#include "valijson_validator.h"

#include <memory>
#include <stdexcept>

namespace Benchmarks {
namespace {

// Each is refused by all three, for a reason of its own.
struct Fault {
  const char* member;
  const char* value;
};
constexpr Fault kFaults[] = {{"description", "7"},    {"port", "70000"},     {"priority", "-1"},
                             {"enabled", R"("yes")"}, {"weight", "1.5"},     {"mode", R"("off")"},
                             {"servers", "[7]"},      {"undeclared", "true"}};

Json::Document Parsed(std::string_view text) {
  Json::Document document;
  if (const Json::ParseResult parsed = Json::Parse(text, document); !parsed) {
    throw std::runtime_error("a sample that is no JSON: " + parsed.message);
  }
  return document;
}

Json::Document SchemaOf(const std::string& typeFile) {
  Json::Document file = Parsed(typeFile);
  Json::Document schema;
  schema.CopyFrom(file["schema"], schema.GetAllocator());
  return schema;
}

// The others need telling what our rules say by themselves.
Json::Document Closed(const Json::Value& open) {
  Json::Document schema;
  schema.CopyFrom(open, schema.GetAllocator());
  schema.AddMember("additionalProperties", false, schema.GetAllocator());
  return schema;
}

Json::Document With(const Json::Value& object, const Fault& fault) {
  Json::Document changed;
  changed.CopyFrom(object, changed.GetAllocator());
  changed.RemoveMember(fault.member);
  Json::Value value;
  value.CopyFrom(Parsed(fault.value), changed.GetAllocator());
  changed.AddMember(Json::Reference(fault.member), value, changed.GetAllocator());
  return changed;
}

// One object and three validators made ready for it.
class Contest {
 public:
  Contest()
      : schema_(SchemaOf(TypeFile("validated", TypeKind::USER))),
        closed_(Closed(schema_)),
        object_(Parsed(ObjectText(1))),
        view_(schema_),
        registration_(view_),
        rapidJson_(closed_),
        valijson_(closed_) {
    CheckSameVerdicts(object_, true);
    for (const Fault& fault : kFaults) {
      CheckSameVerdicts(With(object_, fault), false);
    }
    valijson_.Keep(object_);
  }

  bool Library() const { return LibraryAccepts(object_); }
  bool RapidJson() { return rapidJson_.Accepts(object_); }
  bool Valijson() { return valijson_.AcceptsKept(); }

 private:
  bool LibraryAccepts(const Json::Value& value) const {
    static const std::string noContext;
    Json::Document findings;
    JsonValidator::Validate(schema_, value, findings, TarnConfigStore::SetRules(), noContext);
    return findings.Empty();
  }

  void CheckSameVerdicts(const Json::Value& value, bool good) {
    valijson_.Keep(value);
    if (LibraryAccepts(value) != good || rapidJson_.Accepts(value) != good ||
        valijson_.AcceptsKept() != good) {
      std::string text;
      Json::Serialize(value, text);
      throw std::runtime_error("validators that differ, or all err, on " + text);
    }
  }

  Json::Document schema_;
  Json::Document closed_;
  Json::Document object_;
  const Json::TypeSchemaView view_;
  JsonValidator::Registration registration_;
  RapidJsonValidator rapidJson_;
  ValijsonValidator valijson_;
};

void RegisterFirstValidation() {
  constexpr double kTarget = 1.0;
  constexpr int kFirstRepetitions = 31;
  struct Wide {
    Json::Document schema = Parsed(WideSchema());
    Json::Document object = Parsed(WideObject());
  };
  const auto wide = std::make_shared<Wide>();
  const auto require = [](bool accepted) {
    if (!accepted) {
      throw std::runtime_error("a sample that does not fit");
    }
    return accepted;
  };
  const Sides sides = Compare(
      {.name = "validate/first-of-wide-type",
       .does = "compile a schema of 500 objects of five members, and check one object by it",
       .targetRatio = kTarget},
      [wide, require](benchmark::State& state) {
        Measure(state, [&] {
          const Json::TypeSchemaView view(wide->schema);
          const JsonValidator::Registration registration(view);
          Json::Document findings;
          JsonValidator::Validate(wide->schema, wide->object, findings, TarnConfigStore::SetRules(),
                                  {});
          return require(findings.Empty());
        });
      },
      [wide, require](benchmark::State& state) {
        Measure(state,
                [&] { return require(RapidJsonValidator(wide->schema).Accepts(wide->object)); });
      });
  for (benchmark::internal::Benchmark* side : {sides.library, sides.floor}) {
    side->Repetitions(kFirstRepetitions);
  }
}

}  // namespace

void RegisterValidation() {
  RegisterFirstValidation();
  const auto contest = std::make_shared<Contest>();
  const Body library = [contest](benchmark::State& state) {
    Measure(state, [&] { return contest->Library(); });
  };
  Compare(
      {.name = "validate/against-rapidjson",
       .does = "a parsed object of 400 bytes against ten members; RapidJSON's validator, compiled "
               "once, stops at the first fault and checks no formats",
       .targetRatio = 0.7},
      library,
      [contest](benchmark::State& state) { Measure(state, [&] { return contest->RapidJson(); }); });
  Compare({.name = "validate/against-valijson",
           .does = "the same; valijson's validator, its schema parsed once, collects faults and "
                   "checks no formats but dates and times",
           .targetRatio = 0.33},
          library, [contest](benchmark::State& state) {
            Measure(state, [&] { return contest->Valijson(); });
          });
}

}  // namespace Benchmarks
