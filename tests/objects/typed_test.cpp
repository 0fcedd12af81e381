#include "tarnconfigstore/typed.h"

#include "objects/access.h"
#include "support/store_fixture.h"

#include <array>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <limits>

namespace TarnConfigStore {

enum class Mode : std::uint8_t { OFF, ON, NEITHER };
constexpr std::array<EnumText<Mode>, 2> TextsOf(Mode) {
  return {{{Mode::OFF, "off"}, {Mode::ON, ""}}};
}

namespace {

using TestSupport::Raised;

template <class T>
std::string Shown(const T& value) {
  if constexpr (std::is_enum_v<T>) {
    return "mode" + std::to_string(static_cast<int>(value));
  } else if constexpr (std::is_arithmetic_v<T>) {
    return std::to_string(value);
  } else if constexpr (std::is_same_v<T, std::string>) {
    return value;
  } else {
    std::string all = "[";
    for (auto&& element : value) {
      all += (all == "[" ? "" : " ") + Shown(element);
    }
    return all + "]";
  }
}

class TypedObjects : public TestSupport::StoreFixture {
 protected:
  void SetUp() override {
    TestSupport::InstallType(host_, TestSupport::TypeFile("any", "1", kSchema));
  }
  static ConfigStoreObject Any(const std::string& json) {
    ConfigStoreObject object(ParseObjectId("tarn/test/any"));
    object.SetData(json.c_str());
    return object;
  }

  /// What a read makes of one value: itself, "absent", or what is raised.
  template <class T>
  static std::string Read(const std::string& json) {
    const ConfigStoreObject object = Any(R"({"m":)" + json + "}");
    std::string seen;
    const std::string raised = Raised([&] {
      const auto value = object.Get<T>("m");
      seen = value ? Shown(*value) : "absent";
    });
    return raised == "nothing" ? seen : raised;
  }

  /// The data after a write over a null, beside another member; or what is raised, and the data as
  /// they are then.
  template <class T>
  static std::string Write(const T& value) {
    ConfigStoreObject object = Any(R"({"m":null,"n":1})");
    const std::string raised = Raised([&] { object.Set("m", value); });
    return (raised == "nothing" ? "" : raised + " ") + object.GetData();
  }

  static constexpr const char* kSchema = R"({"type":"object","additionalProperties":true,
      "properties":{"d":{"type":"number","default":5},"i":{"type":"integer","default":300}}})";
};

constexpr const char* kUnfitRead = "ITE 2000 Value does not fit the type asked for: m";
constexpr const char* kUnfitWrite = "IAE 2000 Value does not fit the member: ";
constexpr const char* kOtherKind = "ITE 2000 Invalid type specified for: m";

TEST_F(TypedObjects, ReadsCutNothing) {
  EXPECT_EQ(Read<std::int8_t>("-128"), "-128");
  EXPECT_EQ(Read<std::int8_t>("128"), kUnfitRead);
  EXPECT_EQ(Read<std::uint8_t>("255"), "255");
  EXPECT_EQ(Read<std::uint8_t>("256"), kUnfitRead);
  EXPECT_EQ(Read<std::uint16_t>("-1"), kUnfitRead);
  EXPECT_EQ(Read<std::uint32_t>("4294967295"), "4294967295");
  EXPECT_EQ(Read<std::int64_t>("-9223372036854775808"), "-9223372036854775808");
  EXPECT_EQ(Read<std::int64_t>("9223372036854775808"), kOtherKind);
  EXPECT_EQ(Read<std::uint64_t>("18446744073709551615"), "18446744073709551615");
  EXPECT_EQ(Read<std::uint64_t>("-1"), kUnfitRead);
  EXPECT_EQ(Read<int>("5.0"), kOtherKind);
  EXPECT_EQ(Read<int>("null"), "absent");
  EXPECT_EQ(Read<double>("5"), "5.000000");
  EXPECT_EQ(Read<double>("9007199254740993"), kUnfitRead);
  EXPECT_EQ(Read<double>("9223372036854775807"), kUnfitRead);
  EXPECT_EQ(Read<float>("0.5"), "0.500000");
  EXPECT_EQ(Read<float>("1e300"), kUnfitRead);
  EXPECT_EQ(Read<float>("\"1\""), kOtherKind);
  EXPECT_EQ(Read<bool>("1"), kOtherKind);
  EXPECT_EQ(Read<Mode>("\"\""), "mode1");
  EXPECT_EQ(Read<Mode>("\"on\""), kUnfitRead);
}

TEST_F(TypedObjects, ListsNameTheElementThatDoesNotFit) {
  EXPECT_EQ(Read<std::vector<std::uint16_t>>("[1,65535]"), "[1 65535]");
  EXPECT_EQ(Read<std::vector<std::uint16_t>>("[1,65536]"), std::string(kUnfitRead) + "/1");
  EXPECT_EQ(Read<std::vector<std::uint64_t>>("[1,2,18446744073709551615]"),
            std::string(kUnfitRead) + "/2");
  EXPECT_EQ(Read<std::vector<std::string>>("[\"a\",null]"), std::string(kUnfitRead) + "/1");
  EXPECT_EQ(Read<std::vector<bool>>("[true,false]"), "[1 0]");
  EXPECT_EQ(Read<std::vector<float>>("[1,0.5]"), "[1.000000 0.500000]");
  EXPECT_EQ(Read<std::vector<Mode>>("[\"off\",\"\"]"), "[mode0 mode1]");
  EXPECT_EQ(Read<std::vector<int>>("[]"), "[]");
  EXPECT_EQ(Read<std::vector<int>>("{}"), kOtherKind);
}

TEST_F(TypedObjects, WritesTakeThePlaceOfANull) {
  const std::string untouched = R"({"m":null,"n":1})";
  EXPECT_EQ(Write(std::int8_t{-3}), R"({"n":1,"m":-3})");
  EXPECT_EQ(Write(std::numeric_limits<std::uint64_t>::max()),
            R"({"n":1,"m":18446744073709551615})");
  EXPECT_EQ(Write(0.5F), R"({"n":1,"m":0.5})");
  EXPECT_EQ(Write(true), R"({"n":1,"m":true})");
  EXPECT_EQ(Write("text"), R"({"n":1,"m":"text"})");
  EXPECT_EQ(Write(std::string_view("a\0b", 3)), R"({"n":1,"m":"a\u0000b"})");
  EXPECT_EQ(Write(Mode::OFF), R"({"n":1,"m":"off"})");
  EXPECT_EQ(Write(std::vector<std::int8_t>()), R"({"n":1,"m":[]})");
  EXPECT_EQ(Write(std::vector<std::string_view>{"a", ""}), R"({"n":1,"m":["a",""]})");
  EXPECT_EQ(Write(Mode::NEITHER), kUnfitWrite + ("m " + untouched));
  EXPECT_EQ(Write(std::vector<Mode>{Mode::ON, Mode::NEITHER}), kUnfitWrite + ("m/1 " + untouched));
  EXPECT_EQ(Write(std::vector<std::uint64_t>{~0ULL}), kUnfitWrite + ("m/0 " + untouched));
  EXPECT_EQ(Write(std::numeric_limits<double>::infinity()), kUnfitWrite + ("m " + untouched));
  EXPECT_EQ(Write(static_cast<const char*>(nullptr)), "IAE 2000 value cannot be null " + untouched);

  ConfigStoreObject object = Any(R"({"a":1,"b":2})");
  object.Set("a", "in its place, whatever it was");
  EXPECT_EQ(object.GetData(), R"({"a":"in its place, whatever it was","b":2})");
  object.Set("q\"~/", ~0ULL);
  EXPECT_EQ(object.Get<std::uint64_t>("q\"~/"), ~0ULL);
  // What the store gave to elements stays theirs.
  ConfigStoreObject stored = Any("{}");
  stored.SetData(R"({"l":[{"x":1}]})");
  Json::Value& element = (*Internal::Access::Of(stored).FindMember("l"))[0];
  element.AddMember("cs_generated_id", "id", Internal::Access::Of(stored).GetAllocator());
  stored.Set("n", ~0ULL);
  EXPECT_EQ(Internal::Access::Of(stored).GetSerializedData(),
            R"({"l":[{"x":1,"cs_generated_id":"id"}],"n":18446744073709551615})");
  for (const char* key : {"", static_cast<const char*>(nullptr)}) {
    const std::string empty = "IAE 2000 key cannot be empty";
    EXPECT_EQ(Raised([&] { object.Set(key, 1); }), empty);
    EXPECT_EQ(Raised([&] { object.Set(key, std::vector<int>{1}); }), empty);
    EXPECT_EQ(Raised([&] { object.Get<std::uint64_t>(key); }), empty);
    EXPECT_EQ(Raised([&] { object.Get<std::vector<int>>(key); }), empty);
  }
}

TEST_F(TypedObjects, WhatIsGivenToAMemberFitsIt) {
  ConfigStoreObject object = Any("{}");
  const auto give = [&](auto given) { return Raised([&] { given.WriteTo(object, "m"); }); };
  const std::string unfit = std::string(kUnfitWrite) + "m";
  EXPECT_EQ(give(Given<std::uint8_t>(256)), unfit);
  EXPECT_EQ(give(Given<std::uint32_t>(-1)), unfit);
  EXPECT_EQ(give(Given<std::int64_t>(~0ULL)), unfit);
  EXPECT_EQ(give(Given<float>(1e300)), unfit);
  EXPECT_EQ(give(Given<double>((1LL << 53) + 1)), unfit);
  EXPECT_EQ(give(Given<double>(std::numeric_limits<double>::quiet_NaN())), unfit);
  EXPECT_EQ(give(Given<std::string>(nullptr)), "IAE 2000 value cannot be null");
  EXPECT_EQ(object.GetData(), "{}");
  EXPECT_EQ(give(Given<double>(7)), "nothing");
  EXPECT_EQ(object.GetData(), R"({"m":7.0})");
  static_assert(!std::is_convertible_v<double, Given<int>> &&
                !std::is_convertible_v<bool, Given<int>>);
  static_assert(!std::is_convertible_v<int, Given<bool>> &&
                !std::is_convertible_v<char, Given<int>>);
  static_assert(!std::is_convertible_v<const char*, Given<bool>>);
}

TEST_F(TypedObjects, DefaultsAreReadAndFitOrDoNot) {
  const ConfigStoreObject object = Any("{}");
  EXPECT_EQ(object.Get<double>("d"), 5.0);
  EXPECT_EQ(object.Get<std::uint16_t>("i"), 300);
  EXPECT_EQ(object.Get<std::uint64_t>("i"), 300U);
  EXPECT_EQ(Raised([&] { object.Get<std::uint8_t>("i"); }),
            "ITE 2000 Value does not fit the type asked for: i");
}

TEST_F(TypedObjects, SecretsStayOutOfMessages) {
  Read<std::uint8_t>("73001");
  Write(std::vector<std::uint64_t>{18446744073709551557ULL});
  for (const std::string& line : log_.Lines()) {
    EXPECT_EQ(line.find("73001"), std::string::npos) << line;
    EXPECT_EQ(line.find("18446744073709551557"), std::string::npos) << line;
  }
}

TEST_F(TypedObjects, NamesOfObjects) {
  const std::pair<const char*, const char*> cases[] = {
      {"tarn/network/resolver", "comp tarn grp network key resolver"},
      {"a/b/c/d/e", "comp a grp b key c id d/e"},
      {"a/b/c//", "comp a grp b key c id /"},
  };
  for (const auto& [text, expected] : cases) {
    EXPECT_EQ(ParseObjectId(text).toString(), expected);
    EXPECT_EQ(FormatObjectId(ParseObjectId(text)), text);
  }
  for (const char* text : {"", "a", "a/b", "a/b/", "/b/c", "a//c", "a/b/c/"}) {
    EXPECT_EQ(
        Raised([&] { ParseObjectId(text); }),
        "IAE 2000 \"" + std::string(text) + "\" is not of the form COMPONENT/GROUP/KEY[/INSTANCE]");
  }
  EXPECT_EQ(FindObjectId("a/b")->toString(), "comp a grp b key ");
  EXPECT_FALSE(FindObjectId("a/"));
}

TEST_F(TypedObjects, InstancesAreWalkedOver) {
  for (const char* name : {"b", "a"}) {
    auto object =
        std::make_shared<ConfigStoreObject>(ParseObjectId("tarn/test/switch/" + std::string(name)));
    object->Set("mtu", 1500);
    store_->Set(object, EXTERNAL);
  }
  std::string seen;
  for (const auto& object : InstancesOf(*store_, ParseObjectId("tarn/test/switch"))) {
    seen += object->GetConfigStoreObjectId().instanceId + std::to_string(*object->Get<int>("mtu")) +
            " ";
  }
  EXPECT_EQ(seen, "a1500 b1500 ");
}

std::string Described(const std::function<void()>& call) {
  ClearLastStoreError();
  ClearLastParseFailure();
  try {
    call();
  } catch (const std::exception& error) {
    return Describe(error).ToString();
  }
  return "nothing";
}

TEST_F(TypedObjects, FailuresAreDescribed) {
  auto plain = std::make_shared<ConfigStoreObject>(ParseObjectId("tarn/test/plain"));
  EXPECT_EQ(Described([&] { plain->SetData("{\n  \"a\": }"); }).substr(0, 6), "[1080]");
  EXPECT_NE(Described([&] { plain->SetData("{\n  \"a\": }"); }).find("line 2, column 8"),
            std::string::npos);
  plain->SetData(R"({"port":0})");
  const std::string refusal = Described([&] { store_->Set(plain, EXTERNAL); });
  EXPECT_EQ(refusal.substr(0, 6), "[1089]");
  EXPECT_NE(refusal.find("\n  /port: 1 is the smallest value allowed, found 0"), std::string::npos)
      << refusal;
  EXPECT_EQ(Described([] { throw std::runtime_error("of others"); }), "[0] of others");

  std::filesystem::remove(host_.Path(HostPaths::kStore));
  const std::string lost = Described([] { ConfigStore::GetStore(sGlobalNamespace); });
  EXPECT_EQ(lost.substr(0, 6), "[2000]");
  EXPECT_NE(lost.find("current-store-1"), std::string::npos) << lost;
}

}  // namespace
}  // namespace TarnConfigStore
