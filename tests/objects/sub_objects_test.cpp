#include "objects/access.h"
#include "objects/config_store_object_impl.h"
#include "objects/document.h"
#include "objects/filter.h"
#include "support/random_objects.h"
#include "support/store_fixture.h"

#include <algorithm>

namespace TarnConfigStore {
namespace {

using TestSupport::Raised;
using Handle = std::shared_ptr<ConfigStoreObject>;

constexpr const char* kGone = "CSE 2000 Subobject does not exists.";
constexpr const char* kInstanceGone = "CSE 2000 Subobject instance does not exists.";
constexpr const char* kTree = R"({ "type": "object", "properties": {
    "name": { "type": "string" },
    "lease": { "type": "object", "properties": { "ttl": { "type": "integer", "default": 60 },
      "from": { "type": "object", "properties": { "host": { "type": "string" } } } } },
    "ports": { "type": "array", "items": { "$ref": "#/definitions/port" } },
    "rules": { "type": "array", "items": { "type": "object", "generatedInstanceId": true,
      "properties": { "allow": { "type": "string" } } } },
    "plain": { "type": "array", "items": { "type": "object", "properties": { "x": {} } } } },
  "definitions": { "port": { "type": "object", "properties": {
    "id": { "type": "string", "instanceId": true }, "vlan": { "type": "integer", "default": 1 },
    "ports": { "type": "array", "items": { "$ref": "#/definitions/port" } } } } } })";

SubObjectId Port(const std::string& id) {
  return SubObjectId("ports", id);
}

// The data with ports from "p<first>" on up or down to before "p<last>".
std::string Ports(int first, int last) {
  std::string text;
  for (int i = first; i != last; i += first < last ? 1 : -1) {
    const std::string number = std::to_string(i);
    text +=
        (text.empty() ? R"({"id":"p)" : R"(,{"id":"p)") + number + R"(","vlan":)" + number + "}";
  }
  return R"({"ports":[)" + text + "]}";
}

int Vlan(const Handle& port) {
  int vlan = -1;
  port->GetValue("vlan", &vlan);
  return vlan;
}

class SubObjectsTest : public TestSupport::StoreFixture {
 protected:
  SubObjectsTest() {
    InstallType(host_, TestSupport::TypeFile("tree", "1.0", kTree));
    tree_ = std::make_shared<ConfigStoreObject>(id_);
  }
  // An object with this schema, or none, as the store would read it.
  ObjectHandle Stored(const std::string& data,
                      const std::shared_ptr<TarnSchemaStore::SchemaObject>& schema) const {
    return Internal::Access::Wrap(std::make_shared<ConfigStoreObjectImpl>(
        id_, id_, std::nullopt, CreateDocumentFromString(data), schema, "1.0", "then", "now", 4,
        true, nullptr, nullptr));
  }
  Id id_{"tree", "test", "tarn"};
  ObjectHandle tree_;
};

TEST_F(SubObjectsTest, ViewFollowsItsPlaceWhateverBecomesOfTheParent) {
  const Handle port = tree_->CreateSubObject(Port("p7"));
  const Handle inner = port->CreateSubObject(Port("in"));
  EXPECT_EQ(Vlan(inner), 1) << "the default of its own type";
  inner->SetValue("vlan", 70);
  constexpr int kMany = 300;
  for (int i = 100; i < 100 + kMany; ++i) {
    tree_->CreateSubObject(Port("p" + std::to_string(i)))->SetValue("vlan", i);
  }
  EXPECT_EQ(Vlan(inner), 70);
  EXPECT_EQ(port->GetData(), R"({"id":"p7","ports":[{"id":"in","vlan":70}]})");
  const auto all = tree_->GetSubObjectInstances("ports");
  ASSERT_EQ(all.size(), kMany + 1);
  EXPECT_EQ(Vlan(all[kMany]), 99 + kMany);

  tree_->SetData(Ports(20, 5).c_str());
  EXPECT_EQ(Vlan(port), 7) << "reordered";
  EXPECT_EQ(Raised([&] { Vlan(inner); }), kInstanceGone);
  tree_->DeleteSubObject(Port("p12"));
  tree_->DeleteSubObject(Port("p20"));
  port->SetValue("vlan", 77);
  EXPECT_EQ(tree_->GetPath("/ports/11"), R"({"id":"p7","vlan":77})");
  EXPECT_EQ(tree_->GetPath("/ports/10/id"), R"("p8")") << "the others keep their order";

  const Handle deep = port->CreateSubObject(Port("a"))->CreateSubObject(Port("b"));
  tree_.reset();
  deep->SetValue("vlan", 5);
  EXPECT_EQ(port->GetPath("/ports/0/ports/0/vlan"), "5") << "views keep what they look into";
}

TEST_F(SubObjectsTest, ViewsSayWhenTheirPlaceIsGoneAndLiveAgainWithIt) {
  const Handle lease = tree_->CreateSubObject(SubObjectId("lease"));
  const Handle from = lease->CreateSubObject(SubObjectId("from"));
  const Handle port = tree_->CreateSubObject(Port("p1"));
  tree_->SetData(R"({"lease":null,"ports":{}})");
  ExpectRaised({{kGone, [&] { from->SetValue("host", "h"); }},
                {kGone, [&] { lease->SetData("{}"); }},
                {kGone, [&] { lease->IsEmpty(); }},
                {"ITE 2000 Invalid type specified for: ports", [&] { port->GetData(); }}});
  EXPECT_EQ(tree_->GetSubObject(SubObjectId("lease")), nullptr);
  EXPECT_EQ(log_.Count("4 GetSubObject: Could not find key: lease"), 1);

  tree_->SetData(R"({"name":"n","lease":null,"ports":[{"id":"p1"}]})");
  tree_->CreateSubObject(SubObjectId("lease"));
  lease->SetValue("ttl", 5);
  EXPECT_EQ(tree_->GetData(), R"({"name":"n","lease":{"ttl":5},"ports":[{"id":"p1"}]})")
      << "null gives way to the new object";
  port->SetValue("id", "p2");
  EXPECT_EQ(Raised([&] { port->Remove("vlan"); }), kInstanceGone);
  tree_->DeleteSubObjectInstances("ports");
  tree_->DeleteSubObjectInstances("ports");
  tree_->DeleteSubObject(SubObjectId("lease"));
  EXPECT_EQ(tree_->GetData(), R"({"name":"n"})");
  EXPECT_TRUE(tree_->GetSubObjectInstances("ports").empty());
}

TEST_F(SubObjectsTest, ViewIsAnObjectOfItsOwnTypeThatNoStoreTakes) {
  tree_ = Stored(Ports(0, 3), Internal::Access::Of(*tree_).GetSchema());
  const Handle port = tree_->GetSubObjectInstances("ports")[2];
  EXPECT_EQ(port->GetConfigStoreObjectId().toString(), "comp  grp  key ports id p2");
  EXPECT_EQ(port->GetVersion() + port->GetCreationTime() + port->GetModifiedTime(), "1.0thennow");
  EXPECT_EQ(port->GetRevision(), 4);
  EXPECT_EQ(Internal::Access::Of(*port).GetIdMapStr(), R"({"ports":"id"})");
  int ttl = 0;
  EXPECT_EQ(tree_->CreateSubObject(SubObjectId("lease"))->GetValue("ttl", &ttl), 2);
  EXPECT_EQ(ttl, 60);
}

TEST_F(SubObjectsTest, GeneratedIdsNameInstancesAndStayHidden) {
  const Handle first = tree_->CreateSubObject(SubObjectId("rules"));
  first->SetValue("allow", "a");
  const std::string id = first->GetConfigStoreObjectId().instanceId;
  EXPECT_EQ(id.size(), 36U);
  first->SetData(first->GetData().c_str());
  EXPECT_EQ(tree_->GetSubObject(SubObjectId("rules", id))->GetData(), R"({"allow":"a"})");
  EXPECT_EQ(tree_->GetPath("/rules"), R"([{"allow":"a"}])");
  EXPECT_EQ(tree_->GetPath("/rules/0/cs_generated_id"), std::nullopt);

  tree_->SetData(R"({"rules":[{"allow":"b"},{"allow":"c"}]})");
  const auto rules = tree_->GetSubObjectInstances("rules");
  tree_->DeleteSubObject(SubObjectId("rules", rules[0]->GetConfigStoreObjectId().instanceId));
  EXPECT_EQ(rules[1]->GetData(), R"({"allow":"c"})");
}

TEST_F(SubObjectsTest, NewDataOfAViewStayInTheirPlace) {
  const Handle port = tree_->CreateSubObject(Port("p1"));
  port->SetData(R"({"vlan":3})");
  EXPECT_EQ(tree_->GetData(), R"({"ports":[{"vlan":3,"id":"p1"}]})");
  const std::string tooDeep = R"({"a":)" + std::string(126, '[') + std::string(126, ']') + "}";
  ExpectRaised({{"IAE 2000 The data name another instance than key ports id p1",
                 [&] { port->SetData(R"({"id":"p2"})"); }},
                {"ITE 2000 Invalid type specified for: ports", [&] { port->SetData("[1]"); }},
                {"IAE 1080", [&] { port->SetData("{"); }},
                {"IAE 1080", [&] { port->SetData(tooDeep.c_str()); }}});
  EXPECT_EQ(tree_->GetData(), R"({"ports":[{"vlan":3,"id":"p1"}]})");
  Handle at = port;
  EXPECT_EQ(Raised([&] {
              for (;;) {
                at = at->CreateSubObject(Port("deeper"));
              }
            }),
            "CSE 2000 Nested too deep: ports");
  tree_->SetData(tree_->GetData().c_str());
}

TEST_F(SubObjectsTest, RefusesWhatTheTypeDoesNotKnow) {
  tree_->SetData(R"({"lease":5,"ports":[{"id":"p1"},{"id":7}],"plain":[{"x":1}]})");
  const auto create = [&](const char* key, const char* id) {
    return [this, subObject = SubObjectId(key, id)] { tree_->CreateSubObject(subObject); };
  };
  ExpectRaised(
      {{"IAE 2000 key cannot be empty", create("", "")},
       {"CSE 2000 Object already exists.", create("ports", "p1")},
       {"IAE 2000 Non-Singleton sub-object should contain instanceId: ports", create("ports", "")},
       {"IAE 2000 Singleton sub-object cannot contain instanceId: lease", create("lease", "x")},
       {"ITE 2000 Invalid type specified for: lease", create("lease", "")},
       {"ITE 2000 Invalid type specified for: plain", create("plain", "")},
       {"CSE 2000 The type knows no sub-object of this key: name", create("name", "")},
       {"CSE 2000 Schema error:Expected array type",
        [&] { tree_->GetSubObjectInstances("plain"); }},
       {"CSE 1032 Member id does not hold an instance id.",
        [&] { tree_->GetSubObjectInstances("ports"); }},
       {kInstanceGone, [&] { tree_->DeleteSubObject(Port("p2")); }}});
  EXPECT_EQ(log_.Count("0 Schema object not found for key: name"), 1);
  EXPECT_EQ(Raised([&] { Stored("{}", nullptr)->GetSubObject(SubObjectId("lease")); }),
            "CSE 2000 The object was made without its type: lease");
  EXPECT_EQ(log_.Count("0 Schema object is null."), 1);
}

// What is done to the object is done to plain JSON as well, by walking through it.
TEST_F(SubObjectsTest, ManyMembersAndInstancesAreFoundAsAWalkFindsThem) {
  TestSupport::Random random;
  Json::Document model = TestSupport::Parsed(Ports(0, 100));
  tree_->SetData(Ports(0, 100).c_str());
  for (int step = 0; step < 20000; ++step) {
    const std::string id = "p" + std::to_string(random.Below(200));
    const std::string other = "p" + std::to_string(random.Below(200));
    Json::Value& ports = model["ports"];
    Json::Value* port = std::find_if(ports.Begin(), ports.End(), [&](const Json::Value& each) {
      return Json::Text(each["id"]) == id;
    });
    const bool known = port != ports.End();
    const auto view = tree_->GetSubObject(Port(id));
    ASSERT_EQ(view != nullptr, known) << step;
    ASSERT_TRUE(!known || (*port)["vlan"].GetInt() == Vlan(view)) << step;
    ASSERT_EQ(tree_->CheckKey(id.c_str()), model.HasMember(id)) << step;
    const unsigned long action = random.Below(64);
    if (action == 0 && known) {  // renamed, perhaps to what another is named already
      view->SetValue("id", other);
      (*port)["id"].SetString(other, model.GetAllocator());
    } else if (action < 12 && known) {
      tree_->DeleteSubObject(Port(id));
      ports.Erase(port);
    } else if (action < 30 && !known) {
      tree_->CreateSubObject(Port(id))->SetValue("vlan", step);
      Json::Value made(rapidjson::kObjectType);
      made.AddMember("id", Json::Copy(id, model.GetAllocator()), model.GetAllocator());
      ports.PushBack(made.AddMember("vlan", step, model.GetAllocator()), model.GetAllocator());
    } else if (action < 40) {
      tree_->Remove(id.c_str());
      model.RemoveMember(id.c_str());
    } else if (action < 63) {
      if (!tree_->CheckKey(id.c_str())) {
        model.AddMember(Json::Copy(id, model.GetAllocator()), Json::Value(), model.GetAllocator());
      }
      tree_->SetValue(id.c_str(), step);
      model[id.c_str()].SetInt(step);
    } else if (step % 8 == 0) {
      tree_->SetData(tree_->GetData().c_str());
    }
  }
  std::string text;
  Json::Serialize(model, text);
  EXPECT_EQ(tree_->GetData(), text);
}

TEST_F(SubObjectsTest, PathsLeadIntoTheData) {
  tree_->SetData(R"({"a/b":{"~":[1,{"x":null}]},"":"empty"})");
  const auto at = [&](const char* pointer) { return tree_->GetPath(pointer).value_or("nothing"); };
  EXPECT_EQ(at(""), tree_->GetData());
  EXPECT_EQ(at("/a~1b/~0"), R"([1,{"x":null}])");
  EXPECT_EQ(at("/") + at("/a"), R"("empty"nothing)");
  EXPECT_EQ(Raised([&] { at("/a~2"); }), "IAE 2000 Not a JSON Pointer: /a~2");
}

TEST_F(SubObjectsTest, FiltersKeepTheInstanceAndWhatTheirConditionsAreASubsetOf) {
  const std::string data = R"({"n":1,"tags":["a","b"],"o":{"x":1,"y":2},"l":[{"x":1,"y":2}]})";
  for (const char* part : {"{}", R"({"n":1})", R"({"tags":["b","a"]})", R"({"tags":[]})",
                           R"({"o":{"x":1}})", R"({"l":[{"y":2}]})"}) {
    EXPECT_TRUE(IsSubset(TestSupport::Parsed(part), TestSupport::Parsed(data))) << part;
  }
  for (const char* other : {R"({"n":2})", R"({"n":"1"})", R"({"m":null})", R"({"tags":["a","c"]})",
                            R"({"tags":"a"})", R"({"o":{"x":1,"y":3}})", R"({"l":[{"z":2}]})"}) {
    EXPECT_FALSE(IsSubset(TestSupport::Parsed(other), TestSupport::Parsed(data))) << other;
  }
  const Objects switches = List(SwitchObject("s1"), SwitchObject("s2"));
  EXPECT_EQ(Data(FilterConfigStoreObjects(switches, Filter(Switch("s2")))), R"(s2{"name":"s2"} )");
}

TEST_F(SubObjectsTest, FiltersHaveConditionsOnSubObjects) {
  Objects trees;
  for (const char* data : {R"({"lease":{"ttl":1,"from":{"host":"a"}}})",
                           R"({"lease":{"ttl":2,"from":{"host":"a"}}})", R"({"ports":[]})"}) {
    trees.push_back(Object(id_, data));
  }
  const SubObjectId leaseId("lease");
  const auto filter = Filter(id_);
  const auto kept = [&] { return FilterConfigStoreObjects(trees, filter).size(); };
  const auto lease = filter->CreateSubObjectFilter(leaseId);
  const auto from = lease->CreateSubObjectFilter(SubObjectId("from"));
  EXPECT_EQ(kept(), 2U);
  filter->GetSubObjectFilter(leaseId)->SetValue("ttl", 1);
  from->SetValue("host", "a");
  EXPECT_EQ(filter->GetData(), R"({"lease":{"from":{"host":"a"},"ttl":1}})");
  EXPECT_EQ(kept(), 1U);
  EXPECT_EQ(log_.Count("4 obj is not susbset, key lease did not match"), 3);

  const std::string twice = "CSE 2000 SubObject filter already exists.";
  const std::string refused =
      "CSE 2000 FilterConfigStoreObjects: Non-Singleton SubObject filtering not supported";
  lease->CreateSubObjectFilter(Port("p1"))->SetValue("vlan", 1);
  int vlan = 0;
  EXPECT_EQ(lease->GetSubObjectFilter(Port("p1"))->GetValue("vlan", &vlan), 1);
  ExpectRaised({{twice, [&] { filter->CreateSubObjectFilter(leaseId); }},
                {twice, [&] { lease->CreateSubObjectFilter(Port("p1")); }},
                {refused, kept}});
  lease->DeleteSubObjectFilter(Port("p1"));
  EXPECT_EQ(kept(), 1U);
  ExpectRaised({{kInstanceGone, [&] { lease->DeleteSubObjectFilter(Port("p1")); }}});
  from->CreateSubObjectFilter(Port("p1"));
  filter->DeleteSubObjectFilter(leaseId);
  EXPECT_EQ(kept(), 3U) << "with the conditions go those inside";
  EXPECT_EQ(filter->GetSubObjectFilter(leaseId), nullptr);
  ExpectRaised({{kGone, [&] { from->GetSubObjectFilter(Port("p1")); }},
                {kGone, [&] { filter->DeleteSubObjectFilter(leaseId); }}});
  filter->CreateSubObjectFilter(SubObjectId("ports"));
  ExpectRaised({{refused, kept}});  // the type holds instances there
  filter->DeleteSubObjectFilter(SubObjectId("ports"));
  filter->CreateSubObjectFilter(Port("p1"));
  trees.clear();
  ExpectRaised({{refused, kept}});  // whatever there is to filter
  EXPECT_FALSE(filter->IsEmpty()) << "empty filters stand for everything, deletes included";
}

}  // namespace
}  // namespace TarnConfigStore
