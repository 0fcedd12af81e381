#include "objects/three_way_merge.h"

#include "json/type_schema_view.h"
#include "support/random_objects.h"
#include "support/sanitized.h"
#include "support/test_types.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>

namespace TarnConfigStore {
namespace {

using TestSupport::Canonical;
using TestSupport::Parsed;
using TestSupport::Random;

// A type, told from its file.
class Type {
 public:
  explicit Type(const char* file) : file_(Parsed(file)), view_(file_["schema"]) {}
  Json::SchemaPlace Root() const { return view_.Root(); }

 private:
  Json::Document file_;
  Json::TypeSchemaView view_;
};

std::string TextOf(const Json::Value* value) {
  std::string text = "-";
  if (value != nullptr) {
    Json::Serialize(*value, text);
  }
  return text;
}

// What comes out, and each place that changed meanwhile: "/mtu 1 2 3!" with "!" for a conflict.
struct Outcome {
  std::string merged;
  std::string told;
  std::set<std::string> conflicts;
};

Outcome Merge(const Type& type, const std::string& base, const std::string& staged,
              const std::string& current, bool currentWins = false) {
  const Json::Document sides[] = {Parsed(base), Parsed(staged), Parsed(current)};
  const auto side = [&](int i) { return sides[i].IsNull() ? nullptr : &sides[i]; };
  Json::Document holder;
  Outcome outcome;
  const auto merged = MergeThreeWay(
      {side(0), side(1), side(2)}, type.Root(), currentWins, holder.GetAllocator(),
      [&outcome](const ChangedMeanwhile& changed) {
        outcome.told += changed.pointer + " " + TextOf(changed.values.base) + " " +
                        TextOf(changed.values.staged) + " " + TextOf(changed.values.current) +
                        (changed.conflicts ? "!" : "") + "\n";
        if (changed.conflicts) {
          outcome.conflicts.insert(changed.pointer);
        }
      });
  outcome.merged = TextOf(merged ? &*merged : nullptr);
  return outcome;
}

struct Case {
  const char* base;
  const char* staged;
  const char* current;
  const char* merged;
  const char* told;
};

TEST(ThreeWayMerge, KeepsWhatEitherSideChanged) {
  const Type type(TestSupport::kSwitchType);
  const Case cases[] = {
      {R"({"name":"s","mtu":1,"serial":"a"})", R"({"name":"s","mtu":2,"serial":"a"})",
       R"({"name":"s","mtu":1,"serial":"b"})", R"({"name":"s","mtu":2,"serial":"b"})",
       "/serial \"a\" \"a\" \"b\"\n"},
      {R"({"mtu":1,"serial":"a"})", R"({"mtu":1})", R"({"serial":"a"})", "{}", "/mtu 1 1 -\n"},
      {R"({"mtu":1})", R"({"mtu":2})", R"({"mtu":2.0})", R"({"mtu":2})", "/mtu 1 2 2.0\n"},
      {R"({"mtu":1})", R"({"mtu":2})", R"({"mtu":3})", R"({"mtu":2})", "/mtu 1 2 3!\n"},
      {R"({"mtu":1})", "{}", R"({"mtu":3})", "{}", "/mtu 1 - 3!\n"},
      {R"({"mtu":1})", R"({"mtu":2})", "{}", R"({"mtu":2})", "/mtu 1 2 -!\n"},
      {R"({"mtu":1})", "{}", "{}", "{}", "/mtu 1 - -\n"},
      // Null says nothing, but stays where it is required.
      {R"({"mtu":null})", R"({"mtu":null})", R"({"serial":"a"})", R"({"mtu":null,"serial":"a"})",
       "/serial - - \"a\"\n"},
      // Both made an object, or one took it away.
      {"{}", R"({"state":{"up":true}})", R"({"state":{"down":1}})",
       R"({"state":{"up":true,"down":1}})", "/state/down - - 1\n"},
      {R"({"state":{"up":true}})", R"({"mtu":1})", R"({"state":{"up":false}})", R"({"mtu":1})",
       "/state {\"up\":true} - {\"up\":false}!\n"},
      {R"({"state":{"up":null}})", R"({"mtu":1})", R"({"state":{}})", R"({"mtu":1})", ""},
      {R"({"state":1})", R"({"state":{"up":true}})", R"({"state":{"up":false}})",
       R"({"state":{"up":true}})", "/state 1 {\"up\":true} {\"up\":false}!\n"},
  };
  for (const Case& one : cases) {
    const Outcome outcome = Merge(type, one.base, one.staged, one.current);
    EXPECT_EQ(outcome.merged + "\n" + outcome.told, std::string(one.merged) + "\n" + one.told)
        << one.base << one.staged << one.current;
  }
  EXPECT_EQ(Merge(type, cases[3].base, cases[3].staged, cases[3].current, true).merged,
            R"({"mtu":3})");
}

// Elements as "b:1": the id and the vlan, or the id alone.
std::string Ports(const std::string& elements) {
  std::string json;
  for (std::size_t i = 0; i < elements.size(); i += elements.find(' ', i) == std::string::npos
                                                        ? elements.size()
                                                        : elements.find(' ', i) - i + 1) {
    const std::string element = elements.substr(i, elements.find(' ', i) - i);
    json += (json.empty() ? "" : ",") + std::string("{\"id\":\"") + element[0] + "\"" +
            (element.size() > 1 ? ",\"vlan\":" + element.substr(2) : "") + "}";
  }
  return R"({"ports":[)" + json + "]}";
}

TEST(ThreeWayMerge, MergesInstancesByIdAndInOrder) {
  const Type type(TestSupport::kSwitchType);
  const Case cases[] = {
      {"a:1 b:1", "a:2 b:1", "a:1 b:3", "a:2 b:3", "/ports/b/vlan"},
      {"a:1 b:1", "b:1", "a:1 b:1 c:1", "b:1 c:1", "/ports/c"},
      {"a:1 b:1", "b:1", "a:2 b:1", "b:1", "/ports/a!"},
      {"a:1 b:1", "a:1 b:2", "a:1", "a:1 b:2", "/ports/b!"},
      {"a:1", "a:1 x:1", "a:1 y:1", "a:1 y:1 x:1", "/ports/y"},
      {"a b c", "a b c", "c b a", "c b a", "/ports"},
      {"a b c", "c b a", "a x b c", "c b a x", "/ports/x"},
      {"a b c", "a b x c y", "z c b a", "z c y b x a", "/ports /ports/z"},
      {"a b c", "c b a", "b a c", "c b a", "/ports!"},
      {"a b c", "c a", "c b a", "c a", "/ports"},
  };
  for (const Case& one : cases) {
    const Outcome outcome = Merge(type, Ports(one.base), Ports(one.staged), Ports(one.current));
    std::string places;
    for (std::size_t at = 0; at < outcome.told.size(); at = outcome.told.find('\n', at) + 1) {
      const std::string line = outcome.told.substr(at, outcome.told.find('\n', at) - at);
      places += (places.empty() ? "" : " ") + line.substr(0, line.find(' ')) +
                (line.back() == '!' ? "!" : "");
    }
    EXPECT_EQ(outcome.merged + places, Ports(one.merged) + one.told)
        << one.base << " | " << one.staged << " | " << one.current;
  }
  // Ids that do not tell the elements apart make the list one value, as having none does.
  const std::string twice = R"({"ports":[{"id":"a"},{"id":"a"}]})";
  EXPECT_EQ(Merge(type, Ports("a"), twice, Ports("a b")).conflicts,
            std::set<std::string>{"/ports"});
  EXPECT_EQ(Merge(type, "{}", Ports("a"), Ports("b")).merged, Ports("b a"));
}

TEST(ThreeWayMerge, GeneratedIdsTellOnlyWhereBothSidesKeptSome) {
  const Type type(TestSupport::kSwitchType);
  const auto rules = [](const char* ids, const char* allows) {
    std::string json;
    for (std::size_t i = 0; ids[i] != '\0'; ++i) {
      json += (i == 0 ? "" : ",") + std::string(R"({"cs_generated_id":")") + ids[i] +
              R"(","allow":")" + allows[i] + "\"}";
    }
    return R"({"rules":[)" + json + "]}";
  };
  Outcome outcome = Merge(type, rules("12", "ab"), rules("12", "xb"), rules("12", "ay"));
  EXPECT_EQ(outcome.merged + outcome.told,
            rules("12", "xy") + "/rules/1/allow \"b\" \"b\" \"y\"\n");
  outcome = Merge(type, rules("12", "ab"), rules("34", "ab"), rules("12", "ay"));
  EXPECT_EQ(outcome.merged, rules("12", "ay")) << "made anew, and the same";
  EXPECT_TRUE(outcome.conflicts.empty());
  outcome = Merge(type, rules("12", "ab"), rules("34", "xb"), rules("12", "ay"));
  EXPECT_EQ(outcome.conflicts, std::set<std::string>{"/rules"});
  outcome = Merge(type, "{}", rules("3", "a"), rules("4", "a"));
  EXPECT_EQ(outcome.merged, rules("3", "a")) << "both made the same";
}

TEST(ThreeWayMerge, ASecretIsOneValue) {
  const Type type(R"({"schema":{"type":"object","properties":{
    "key":{"type":"object","secret":true,"properties":{"a":{},"b":{}}},
    "keys":{"type":"array","items":{"type":"object","secret":true,"properties":{
      "id":{"type":"string","instanceId":true},"a":{}}}}}}})");
  const auto conflicts = [&](const char* base, const char* staged, const char* current) {
    return Merge(type, base, staged, current).conflicts;
  };
  EXPECT_EQ(
      conflicts(R"({"key":{"a":1,"b":1}})", R"({"key":{"a":2,"b":1}})", R"({"key":{"a":1,"b":2}})"),
      std::set<std::string>{"/key"});
  EXPECT_EQ(conflicts(R"({"keys":[{"id":"x"}]})", R"({"keys":[{"id":"x"},{"id":"y"}]})",
                      R"({"keys":[{"id":"x","a":1}]})"),
            std::set<std::string>{"/keys"});
}

// A small model of the same: an object as its paths, each with a text. Containers that are opened are
// paths, too.
using Paths = std::map<std::string, std::string>;

std::string IdOf(const Json::Value& element, Json::SchemaPlace items) {
  const Json::Value* id = Json::FindMember(element, items.InstanceIdMember());
  return std::string(Json::Text(*id));
}

void Flatten(const Json::Value& value, Json::SchemaPlace place, const std::string& path,
             Paths& paths) {
  if (value.IsObject()) {
    paths[path] = "{";
    for (const auto& member : value.GetObject()) {
      const std::string name(Json::Text(member.name));
      if (!member.value.IsNull()) {
        Flatten(member.value, place.Property(name), path + "/" + name, paths);
      }
    }
  } else if (value.IsArray() && !place.Items().InstanceIdMember().empty()) {
    paths[path] = "[";
    for (const Json::Value& element : value.GetArray()) {
      Flatten(element, place.Items(), path + "/" + IdOf(element, place.Items()), paths);
    }
  } else {
    paths[path] = Canonical(value);
  }
}

// A path and all below it.
Paths Below(const Paths& paths, const std::string& path) {
  Paths below;
  for (const auto& [name, text] : paths) {
    if (name == path || name.starts_with(path + "/")) {
      below.emplace(name, text);
    }
  }
  return below;
}

std::string At(const Paths& paths, const std::string& path) {
  const auto found = paths.find(path);
  return found == paths.end() ? "" : found->second;
}

struct Modelled {
  Paths merged;
  std::set<std::string> conflicts;
};

Modelled Model(const Paths& base, const Paths& staged, const Paths& current, bool currentWins) {
  Modelled model;
  std::set<std::string> names;
  for (const Paths* side : {&base, &staged, &current}) {
    for (const auto& [name, text] : *side) {
      names.insert(name);
    }
  }
  std::set<std::string> closed;  // decided as a whole
  for (const std::string& name : names) {
    if (std::any_of(closed.begin(), closed.end(),
                    [&name](const std::string& above) { return name.starts_with(above + "/"); })) {
      continue;
    }
    const std::string kind = At(staged, name);
    const bool opens = (kind == "{" || kind == "[") && kind == At(current, name) &&
                       (At(base, name).empty() || At(base, name) == kind);
    if (opens) {
      model.merged[name] = kind;
      continue;
    }
    closed.insert(name);
    const Paths was = Below(base, name);
    const Paths wanted = Below(staged, name);
    const Paths is = Below(current, name);
    const bool conflicts = was != wanted && was != is && wanted != is;
    model.merged.merge(Paths(was == wanted || (conflicts && currentWins) ? is : wanted));
    if (conflicts) {
      model.conflicts.insert(name);
    }
  }
  return model;
}

// The model knows nothing of orders.
Json::Value Sorted(const Json::Value& value, Json::SchemaPlace place, Json::Allocator& allocator) {
  Json::Value sorted(value.GetType());
  if (value.IsObject()) {
    for (const auto& member : value.GetObject()) {
      const std::string_view name = Json::Text(member.name);
      if (name != "rules") {  // nor of generated ids
        sorted.AddMember(Json::Copy(name, allocator),
                         Sorted(member.value, place.Property(name), allocator), allocator);
      }
    }
  } else if (value.IsArray() && !place.Items().InstanceIdMember().empty()) {
    std::map<std::string, const Json::Value*> elements;
    for (const Json::Value& element : value.GetArray()) {
      elements[IdOf(element, place.Items())] = &element;
    }
    for (const auto& [id, element] : elements) {
      sorted.PushBack(Sorted(*element, place.Items(), allocator), allocator);
    }
  } else {
    sorted.CopyFrom(value, allocator);
  }
  return sorted;
}

// Objects of which each has some places of another.
class Mixer {
 public:
  explicit Mixer(Random& random) : random_(random) {}

  Json::Value Mix(const Json::Value& own, const Json::Value& other, Json::SchemaPlace place,
                  Json::Allocator& allocator) {
    Json::Value mixed(own.GetType());
    if (own.IsObject() && other.IsObject()) {
      std::set<std::string> names;
      for (const Json::Value* side : {&own, &other}) {
        for (const auto& member : side->GetObject()) {
          names.insert(std::string(Json::Text(member.name)));
        }
      }
      for (const std::string& name : names) {
        auto value = Choose(Json::FindMember(own, name), Json::FindMember(other, name),
                            place.Property(name), place.IsIdMember(name), allocator);
        if (value) {
          mixed.AddMember(Json::Copy(name, allocator), std::move(*value), allocator);
        }
      }
    } else if (own.IsArray() && other.IsArray() && !place.Items().InstanceIdMember().empty()) {
      std::map<std::string, std::pair<const Json::Value*, const Json::Value*>> elements;
      for (const Json::Value& element : own.GetArray()) {
        elements[IdOf(element, place.Items())].first = &element;
      }
      for (const Json::Value& element : other.GetArray()) {
        elements[IdOf(element, place.Items())].second = &element;
      }
      for (const auto& [id, sides] : elements) {
        if (auto value = Choose(sides.first, sides.second, place.Items(), false, allocator)) {
          mixed.PushBack(std::move(*value), allocator);
        }
      }
    } else {
      mixed.CopyFrom(other, allocator);
    }
    return mixed;
  }

 private:
  std::optional<Json::Value> Choose(const Json::Value* own, const Json::Value* other,
                                    Json::SchemaPlace place, bool isId,
                                    Json::Allocator& allocator) {
    const auto copy = [&](const Json::Value* value) {
      return value == nullptr ? std::nullopt
                              : std::optional<Json::Value>(std::in_place, *value, allocator);
    };
    if (own != nullptr && other != nullptr && (isId || random_.OneIn(2))) {
      return Mix(*own, *other, place, allocator);
    }
    return copy(random_.OneIn(3) ? other : own);
  }

  Random& random_;
};

TEST(ThreeWayMerge, IsWhatAModelOfPathsSays) {
  const Type type(TestSupport::kManyWaysType);
  Random random;
  TestSupport::RandomObjects objects(random, 4);
  Mixer mixer(random);
  int conflicting = 0;
  int merging = 0;
  for (int round = 0; round < TestSupport::Rounds(5000); ++round) {
    Json::Document holder;
    const auto make = [&] {
      return Sorted(Parsed(objects.Make(type.Root(), "s")), type.Root(), holder.GetAllocator());
    };
    const Json::Value base = make();
    Json::Value sides[2];
    for (Json::Value& side : sides) {
      side = mixer.Mix(base, make(), type.Root(), holder.GetAllocator());
    }
    Paths paths[3];
    Flatten(base, type.Root(), "", paths[0]);
    Flatten(sides[0], type.Root(), "", paths[1]);
    Flatten(sides[1], type.Root(), "", paths[2]);
    const bool currentWins = round % 2 == 0;
    const Modelled expected = Model(paths[0], paths[1], paths[2], currentWins);
    SCOPED_TRACE("seed " + std::to_string(random.Seed()) + "\n" + TextOf(&base) + "\n" +
                 TextOf(&sides[0]) + "\n" + TextOf(&sides[1]));
    const Outcome outcome =
        Merge(type, TextOf(&base), TextOf(&sides[0]), TextOf(&sides[1]), currentWins);
    Paths merged;
    Flatten(Parsed(outcome.merged), type.Root(), "", merged);
    ASSERT_EQ(merged, expected.merged);
    ASSERT_EQ(outcome.conflicts, expected.conflicts);
    conflicting += expected.conflicts.empty() ? 0 : 1;
    merging += expected.conflicts.empty() && paths[0] != paths[1] && paths[0] != paths[2] &&
                       paths[1] != paths[2]
                   ? 1
                   : 0;
  }
  EXPECT_GT(std::min(conflicting, merging), TestSupport::Rounds(200)) << "both happen";
}

}  // namespace
}  // namespace TarnConfigStore
