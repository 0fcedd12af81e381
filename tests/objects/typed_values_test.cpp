#include "tarnconfigstore/filter_spec_object.h"

#include "support/captured_log.h"
#include "support/raised.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>

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
      R"({"t":"x","i":5,"neg":-5,"big":5000000000,"huge":18446744073709551615,"d":5.0,"e":5e2,
          "b":true,"n":null,"l":[1],"o":{},"byte":300,"short":65537})");
  const std::string absent = "absent absent absent absent absent absent absent absent absent";
  const std::pair<const char*, std::string> cases[] = {
      {"t", "x . . . . . . . ."},
      {"i", ". 5 5 5 . 5 5 5 ."},
      {"neg", ". -5 -5 -5 . . . . ."},
      {"big", ". . 5000000000 5000000000 . . . . ."},
      {"huge", ". . . . . . . . ."},
      {"d", ". . . . 5.000000 . . . ."},
      {"e", ". . . . 500.000000 . . . ."},
      {"b", ". . . . . . . . 1"},
      {"l", ". . . . . . . . ."},
      {"o", ". . . . . . . . ."},
      {"byte", ". 300 300 300 . 300 300 44 ."},
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
      {[](auto& o) { o.AppendValue("e", 1); }, R"("e":[1])"},
      {[](auto& o) { o.AppendValue("e", "a"); }, R"("e":["a"])"},
      {[](auto& o) { o.AppendValue("i", 7LL); }, R"("i":[2,3,2,7])"},
      {[](auto& o) { o.AppendValue("s", std::string("z")); }, R"("s":["x","y","z"])"},
      {[](auto& o) { o.AppendValue("d", 2.0); }, R"("d":[1.5,2.0])"},
      {[](auto& o) { o.AppendValue("b", false); }, R"("b":[true,false])"},
      {[](auto& o) { o.AppendValue("s", static_cast<const char*>(nullptr)); },
       "IAE 2000 value cannot be null"},
      {[](auto& o) { o.RemoveValue("s", static_cast<const char*>(nullptr)); },
       "IAE 2000 value cannot be null"},
      {[](auto& o) { o.AppendValue("s", 1); }, "ITE 2000 Invalid type specified for: s"},
      {[](auto& o) { o.AppendValue("i", 1.0); }, "ITE 2000 Invalid type specified for: i"},
      {[](auto& o) { o.AppendValue("n", 1); }, "ITE 2000 Invalid type specified for: n"},
      {[](auto& o) { o.AppendValue("t", "x"); }, "ITE 2000 Invalid type specified for: t"},
      {[](auto& o) { o.AppendValue("a", 1); }, "IAE 2000 Key not found: a"},
      {[](auto& o) { o.RemoveValue("a", 1); }, "IAE 2000 Key not found: a"},
      {[](auto& o) { o.RemoveValue("s", 1); }, "ITE 2000 Invalid type specified for: s"},
      {[](auto& o) { o.RemoveValue("i", 2); }, R"("i":[3,2])"},
      {[](auto& o) { o.RemoveValue("i", 9); }, R"("i":[2,3,2])"},
      {[](auto& o) { o.RemoveValue("s", "y"); }, R"("s":["x"])"},
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
  std::vector<long long> longs;
  EXPECT_EQ(Raised([&] { object.GetValue("s", &longs); }),
            "CSE 1082 JSON: data_.f.flags & kInt64Flag");
  EXPECT_EQ(Raised([&] { Object(R"({"t":"x"})").GetValue("t", &longs); }),
            "ITE 2000 Invalid type specified for: t");
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

}  // namespace
}  // namespace TarnConfigStore
