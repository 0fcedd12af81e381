#include "objects/access.h"
#include "objects/config_store_object_impl.h"
#include "support/store_fixture.h"

#include <unordered_set>

namespace TarnConfigStore {
namespace {

using TestSupport::Raised;

// A plain object: filters have the same accessors and need no installed type.
FilterSpecObject Object(const char* json) {
  FilterSpecObject object(ConfigStoreObjectId("k", "g", "c"));
  object.SetData(json);
  return object;
}

// What reads of these types make of a member; "." for the exception of a wrong type.
template <class... Types>
std::string Read(const FilterSpecObject& object, const char* key) {
  const auto read = [&](auto value) -> std::string {
    int origin = 0;
    const std::string raised = Raised([&] { origin = object.GetValue(key, &value); });
    if (raised != "nothing") {
      return raised.starts_with("ITE") ? "." : raised.substr(0, 3);
    }
    if constexpr (std::is_arithmetic_v<decltype(value)>) {
      return origin == 0 ? "absent" : std::to_string(value);
    } else {
      return origin == 0 ? "absent" : value;
    }
  };
  std::string all;
  ((all += (all.empty() ? "" : " ") + read(Types())), ...);
  return all;
}

class TypedValues : public testing::Test {
  const TestSupport::CapturedLog log_;
};

TEST_F(TypedValues, ReadsTakeOnlyTheirOwnKind) {
  const FilterSpecObject object = Object(
      R"({"t":"x","i":5,"neg":-5,"big":5000000000,"huge":18446744073709551615,"d":5.0,"b":true,"n":null,"l":[1],"short":65537})");
  const std::string absent = "absent absent absent absent absent absent absent absent absent";
  const std::pair<const char*, std::string> cases[] = {
      {"t", "x . . . . . . . ."},
      {"i", ". 5 5 5 . 5 5 5 ."},
      {"neg", ". -5 -5 -5 . . . . ."},
      {"big", ". . 5000000000 5000000000 . . . . ."},
      {"huge", ". . . . . . . . ."},
      {"d", ". . . . 5.000000 . . . ."},
      {"b", ". . . . . . . . 1"},
      {"l", ". . . . . . . . ."},
      {"short", ". 65537 65537 65537 . 65537 1 1 ."},
      {"n", absent},
      {"no", absent},
      {"", "IAE IAE IAE IAE IAE IAE IAE IAE IAE"},
  };
  for (const auto& [key, expected] : cases) {
    const std::string seen = Read<std::string, int, long, long long, double, unsigned int,
                                  unsigned short, unsigned char, bool>(object, key);
    EXPECT_EQ(seen, expected) << key;
  }
}

TEST_F(TypedValues, WritesOverwriteInPlaceOrAddAtTheEnd) {
  FilterSpecObject object = Object(R"({"a":"old","b":[1],"c":null})");
  object.SetValue("a", 1);
  object.SetValue("b", "literal");
  object.SetValue("c", true);  // a null member counts as absent, and keeps its place
  object.SetValue("s", std::string("text"));
  object.SetValue("v", std::string_view("cut here", 3));
  object.SetValue("l", 5000000000L);
  object.SetValue("ll", -5000000000LL);
  object.SetValue("d", 2.0);
  object.SetValue("f", 0.5F);
  object.SetValue("u", 4294967295U);
  object.SetValue("us", static_cast<unsigned short>(65535));
  object.SetValue("uc", static_cast<unsigned char>(255));
  EXPECT_EQ(object.GetData(),
            R"({"a":1,"b":"literal","c":null,"c":true,"s":"text","v":"cut","l":5000000000,)"
            R"("ll":-5000000000,"d":2.0,"f":0.5,"u":4294967295,"us":65535,"uc":255})");
  EXPECT_EQ(Read<bool>(object, "c"), "absent") << "the first member of the name is the null one";
  EXPECT_EQ(Raised([&] { object.SetValue("", 1); }), "IAE 2000 key cannot be empty");
  EXPECT_EQ(Raised([&] { object.SetValue("a", static_cast<const char*>(nullptr)); }),
            "IAE 2000 value cannot be null");
  object.SetValue("b", "\xFF");
  EXPECT_EQ(Raised([&] { object.StoreObject::GetData(); }).substr(0, 24),
            "CSE 2000 The data holds ");
}

TEST_F(TypedValues, ListsAreOfOneKindByTheirFirstElement) {
  const std::pair<std::function<void(FilterSpecObject&)>, const char*> cases[] = {
      {[](auto& o) { o.AppendValue("e", "a"); }, R"("e":["a"])"},
      {[](auto& o) { o.AppendValue("i", 7LL); }, R"("i":[2,3,2,7])"},
      {[](auto& o) { o.AppendValue("s", std::string("z")); }, R"("s":["x","y","z"])"},
      {[](auto& o) { o.AppendValue("b", false); }, R"("b":[true,false])"},
      {[](auto& o) { o.AppendValue("s", static_cast<const char*>(nullptr)); },
       "IAE 2000 value cannot be null"},
      {[](auto& o) { o.RemoveValue("s", static_cast<const char*>(nullptr)); },
       "IAE 2000 value cannot be null"},
      {[](auto& o) { o.AppendValue("s", 1); }, "ITE 2000 Invalid type specified for: s"},
      {[](auto& o) { o.AppendValue("n", 1); }, "ITE 2000 Invalid type specified for: n"},
      {[](auto& o) { o.AppendValue("a", 1); }, "IAE 2000 Key not found: a"},
      {[](auto& o) { o.RemoveValue("a", 1); }, "IAE 2000 Key not found: a"},
      {[](auto& o) { o.RemoveValue("s", 1); }, "ITE 2000 Invalid type specified for: s"},
      {[](auto& o) { o.RemoveValue("i", 2); }, R"("i":[3,2])"},
      {[](auto& o) { o.RemoveValue("b", true); }, R"("b":[])"},
      {[](auto& o) { o.SetValueEmptyList("s"); }, R"("s":[])"},
      {[](auto& o) { o.SetValue("i", std::vector<int>{4}); },
       R"({"e":[],"t":"x","s":["x","y"],"d":[1.5],"b":[true],"n":null,"i":[4]})"},
  };
  for (const auto& [change, expected] : cases) {
    FilterSpecObject object =
        Object(R"({"e":[],"i":[2,3,2],"s":["x","y"],"d":[1.5],"b":[true],"n":null,"t":"x"})");
    const std::string raised = Raised([&, &call = change] { call(object); });
    const std::string seen = raised == "nothing" ? object.GetData() : raised;
    EXPECT_NE(seen.find(expected), std::string::npos) << seen << " lacks " << expected;
  }
}

TEST_F(TypedValues, MixedListsAreMetWhileScanning) {
  FilterSpecObject object = Object(R"({"i":[1,"x",2],"d":[1.5,2,"x"],"b":[true,1],"s":["a"]})");
  std::vector<int> ints;
  EXPECT_EQ(Raised([&] { object.GetValue("i", &ints); }),
            "CSE 1082 JSON: data_.f.flags & kIntFlag");
  EXPECT_EQ(ints, std::vector<int>{1}) << "what was copied before stays";
  EXPECT_EQ(Raised([&] { object.GetValue("i", &ints); }), "IAE 2000 Output vector must be empty.");
  EXPECT_EQ(Raised([&] { object.RemoveValue("i", 2); }), "CSE 1082 JSON: data_.f.flags & kIntFlag");
  std::vector<double> doubles;
  EXPECT_EQ(Raised([&] { object.GetValue("d", &doubles); }), "CSE 1082 JSON: IsNumber()");
  EXPECT_EQ(doubles, (std::vector<double>{1.5, 2.0})) << "a double list takes integers";
  EXPECT_EQ(Raised([&] { object.RemoveValue("d", 9.0); }), "CSE 1082 JSON: IsNumber()");
  std::vector<std::string> texts;
  EXPECT_EQ(object.GetValue("s", &texts), 1);
  std::vector<bool> bools;
  EXPECT_EQ(Raised([&] { object.GetValue("b", &bools); }), "CSE 1082 JSON: IsBool()");
}

TEST_F(TypedValues, BinaryGoesBothWaysAsBase64) {
  FilterSpecObject object = Object(R"({"bad":"***","number":1})");
  const unsigned char bytes[] = {0, 255, 7};
  EXPECT_EQ(Raised([&] { object.SetValueBinary("k", bytes, 0); }),
            "IAE 2000 Value pointer cannot be null and length cannot be zero");
  object.SetValueBinary("k", bytes, sizeof bytes);
  EXPECT_EQ(Read<std::string>(object, "k"), "AP8H");
  unsigned char* back = nullptr;
  unsigned long length = 99;
  EXPECT_EQ(object.GetValueBinary("absent", &back, &length), 0);
  EXPECT_EQ(Raised([&] { object.GetValueBinary("bad", &back, &length); }),
            "CSE 2000 Failed to decode binary value");
  EXPECT_TRUE(back == nullptr && length == 99) << "failures leave the outputs";
  ASSERT_EQ(object.GetValueBinary("k", &back, &length), 1);
  const std::unique_ptr<unsigned char[]> owned(back);
  EXPECT_TRUE(length == 3 && std::equal(bytes, bytes + 3, back));
}

TEST_F(TypedValues, WholeObjects) {
  FilterSpecObject object = Object(R"({"a":1,"b":2,"c":3})");
  object.Remove("a");
  object.Remove("no");
  EXPECT_EQ(object.GetData(), R"({"c":3,"b":2})") << "the last member takes the place";
  object.SetData(nullptr);
  EXPECT_EQ(Raised([&] { object.SetData("{"); }), "IAE 1080 The text is not valid JSON.");
  EXPECT_EQ(Raised([&] { object.SetData(R"({"a":1,"a":2})"); }),
            "IAE 1080 The text is not valid JSON.");
  EXPECT_EQ(object.GetData(), R"({"c":3,"b":2})") << "kept after a failure";
  EXPECT_FALSE(object.IsEmpty());
  EXPECT_TRUE(Object("{}").IsEmpty());
  FilterSpecObject list = Object("[]");
  EXPECT_EQ(Raised([&] { (void)list.IsEmpty(); }), "CSE 1082 JSON: IsObject()");
}

using ConfigStoreObjectTest = TestSupport::StoreFixture;

TEST_F(ConfigStoreObjectTest, ReadsFallBackToTheTypesDefaults) {
  ConfigStoreObject object(plain_);
  const auto port = [&](const char* json) {
    int value = 0;
    object.SetData(json);
    const int origin = object.GetValue("port", &value);
    return std::pair(origin, value);
  };
  EXPECT_EQ(port("{}"), std::pair(2, 22));
  EXPECT_EQ(port(R"({"port":null})"), std::pair(2, 22)) << "a null member counts as absent";
  EXPECT_EQ(port(R"({"port":8080})"), std::pair(1, 8080));
  std::string name;
  EXPECT_EQ(object.GetValue("name", &name), 0);
}

TEST_F(ConfigStoreObjectTest, HidesGeneratedInstanceIdsFromCallersOnly) {
  ConfigStoreObject object(plain_);
  const std::string stored =
      R"({"cs_generated_id":"1","a":{"cs_generated_id":"2"},"b":[{"cs_generated_id":"3","c":[]}]})";
  object.SetData(stored.c_str());
  EXPECT_EQ(object.GetData(), R"({"a":{},"b":[{"c":[]}]})");
  EXPECT_EQ(Internal::Access::Of(object).GetSerializedData(), stored);
}

TEST_F(ConfigStoreObjectTest, SetsMembersFromValuesThatMayBeItsOwn) {
  ConfigStoreObject object(plain_);
  object.SetData(R"({"a":{"b":[1,2]}})");
  ConfigStoreObjectImpl& data = Internal::Access::Of(object);
  data.SetValueEx("a", &data.GetRoot()["a"]);
  EXPECT_EQ(object.GetData(), R"({"a":{"b":[1,2]}})");
  data.SetValueEx("a", &data.GetRoot()["a"]["b"]);
  EXPECT_EQ(object.GetData(), R"({"a":[1,2]})");
  data.SetValueEx("whole", &data.GetRoot());
  EXPECT_EQ(object.GetData(), R"({"a":[1,2],"whole":{"a":[1,2]}})");
  object.SetValue("name", "\xff");
  EXPECT_EQ(Raised([&] { data.GetSerializedData(); }).substr(0, 8), "CSE 2000") << "not UTF-8";
}

TEST(ObjectId, PrintsAsLogsAndMessagesKnowIt) {
  EXPECT_EQ(ConfigStoreObjectId("k1", "g1", "tarn").toString(), "comp tarn grp g1 key k1");
  EXPECT_EQ(ConfigStoreObjectId("k1", "g1", "tarn", "a1").toString(),
            "comp tarn grp g1 key k1 id a1");
  EXPECT_EQ(SubObjectId("k1").toString() + SubObjectId("k1", "3").toString(), "key k1key k1 id 3");
  EXPECT_THROW(ConfigStoreObjectId("k", nullptr, "c"), std::logic_error);
  const std::string id = GenerateInstanceId();
  ASSERT_EQ(id.size(), 36U);
  EXPECT_EQ(id[14], '4') << "a random UUID";
  EXPECT_NE(id, GenerateInstanceId());
}

TEST(ObjectId, IsToldApartByEveryFieldAlthoughHashesMayMeet) {
  const ConfigStoreObjectId left("ab", "c", "tarn");
  const ConfigStoreObjectId right("a", "bc", "tarn");
  EXPECT_EQ(hashCsoId(left), hashCsoId(right));
  // Other programs of the host compute the same number.
  EXPECT_EQ(hashCsoId(left), std::hash<std::string>()("abctarn"));
  const std::unordered_set<ConfigStoreObjectId> ids = {
      left, right, {"ab", "c", "tarn", "x"}, {"Ab", "c", "tarn"}, left};
  EXPECT_EQ(ids.size(), 4U);
  EXPECT_NE(SubObjectId("a"), SubObjectId("a", "1"));
}

}  // namespace
}  // namespace TarnConfigStore
