#include "platform/base64.h"
#include "platform/formatted_text.h"
#include "platform/generated_instance_id.h"
#include "platform/upgrade_context.h"

#include "json/json_doc.h"
#include "support/captured_log.h"
#include "support/temporary_host.h"

#include <gtest/gtest.h>

namespace {

using TarnConfigStore::JsonDoc;
using TestSupport::TemporaryHost;

// "" when the text is taken, else where and why not.
std::string Refusal(std::string_view text, Json::Origin origin = Json::Origin::OUTSIDE) {
  JsonDoc document(JsonDoc::CapacityFor(text.size()));
  const Json::ParseResult result = document.Parse(text, origin);
  if (result) {
    return "";
  }
  EXPECT_TRUE(document.GetJsonValuePtr()->IsNull());
  return std::to_string(result.offset) + " " + result.message;
}

TEST(JsonParse, IsStrict) {
  EXPECT_EQ(Refusal(R"({"a":[1,"\u00e9",{"b":null}]})"), "");
  EXPECT_EQ(Refusal("\"\xc3\x28\""), "1 Invalid encoding in string.");
  EXPECT_EQ(Refusal(std::string_view("{}\0{}", 5)), "2 a NUL byte");
  EXPECT_NE(Refusal("{} x"), "");
  EXPECT_NE(Refusal(""), "");
  const std::string twice = R"({"a":{"b":1,"b":2}})";
  EXPECT_NE(Refusal(twice).find("member \"b\" is named twice"), std::string::npos);
  EXPECT_EQ(Refusal(twice, Json::Origin::STORED), "");
  std::string many = "{";
  for (int i = 0; i < 40; ++i) {
    many += "\"m" + std::to_string(i) + "\":1,";
  }
  EXPECT_EQ(Refusal(many + "\"x\":1}"), "");
  EXPECT_NE(Refusal(many + "\"m7\":1}"), "");
}

TEST(JsonParse, RefusesWhatWalksCannotBear) {
  const auto nested = [](std::size_t levels) {
    return std::string(levels, '[') + std::string(levels, ']');
  };
  EXPECT_EQ(Refusal(nested(Json::kMaxDepth)), "");
  EXPECT_NE(Refusal(nested(Json::kMaxDepth + 1)).find("nested deeper than 128"), std::string::npos);
  EXPECT_NE(Refusal(std::string(10'000'000, '[')), "");
}

TEST(JsonParse, RefusesIntegersThatItWouldAlter) {
  const std::string refusal = "an integer of more than 64 bits";
  for (const char* text :
       {"18446744073709551616", "[-9223372036854775809]", "{\"a\":123456789012345678901}"}) {
    EXPECT_NE(Refusal(text).find(refusal), std::string::npos) << text;
    EXPECT_EQ(Refusal(text, Json::Origin::STORED), "");
  }
  for (const char* text : {"1e21", "1E+21", "1e300", "123456789012345678901.5", "-9.3e18", "1e-21",
                           "18446744073709551615", "-9223372036854775808"}) {
    EXPECT_EQ(Refusal(text), "") << text;
  }
}

TEST(JsonParse, KeepsEveryDigit) {
  for (const char* text :
       {"0.30000000000000004", "9007199254740993", "18446744073709551615", "-9223372036854775808",
        "1.7976931348623157e+308", "5.0", "0.1", "1e-05"}) {
    JsonDoc document;
    ASSERT_TRUE(document.Parse(text, Json::Origin::OUTSIDE));
    std::string back;
    ASSERT_TRUE(Json::Serialize(*document.GetJsonValuePtr(), back));
    EXPECT_EQ(back, text);
  }
}

TEST(JsonSerialize, RefusesWhatJsonCannotSay) {
  JsonDoc document;
  std::string text = "left over";
  document.GetJsonValuePtr()->SetDouble(std::numeric_limits<double>::infinity());
  EXPECT_FALSE(Json::Serialize(*document.GetJsonValuePtr(), text));
  document.GetJsonValuePtr()->SetString("\xff", 1, document.GetAllocator());
  EXPECT_FALSE(Json::Serialize(*document.GetJsonValuePtr(), text));
  EXPECT_EQ(text, "");
}

TEST(Base64, GoesBothWaysAndRefusesWhatIsNone) {
  const unsigned char bytes[] = {0xfb, 0xff, 0x00, 0x41};
  char text[16];
  std::size_t length = 0;
  EXPECT_FALSE(Base64_Encode(bytes, 4, text, Base64_EncodedLength(4) - 1, &length));
  ASSERT_TRUE(Base64_Encode(bytes, 4, text, sizeof text, &length));
  EXPECT_EQ(std::string_view(text, length), "+/8AQQ==");
  unsigned char back[8];
  ASSERT_TRUE(Base64_Decode({text, length}, back, Base64_DecodedLength(text, length), &length));
  EXPECT_TRUE(length == 4 && std::equal(bytes, bytes + 4, back));
  for (const char* wrong : {"+/8AQQ=", "-_8AQQ==", "+/8A\nQQ==", "A"}) {
    EXPECT_FALSE(Base64_Decode(wrong, back, sizeof back, &length)) << wrong;
  }
}

TEST(FormattedText, FillsWhatItIsGivenAndLeavesTheRest) {
  EXPECT_EQ(Str_Asprintf("%1$s and %2$s, %1$s: 5%% %3$s", {"a", "b"}), "a and b, a: 5% %3$s");
  EXPECT_EQ(MsgFmt_Asprintf("%s%% of %s %s", {"5", "x"}), "5% of x ");
}

TEST(UpgradeContext, IsWhatTheFileSays) {
  TestSupport::CapturedLog log;
  const TemporaryHost host;
  EXPECT_EQ(GetUpgradeCtx(), 0);
  EXPECT_TRUE(log.Lines().empty());
  const std::string file = host.Path(HostPaths::kUpgradeContext);
  const std::pair<const char*, int> cases[] = {
      {"2", 2}, {" 3\n", 3}, {"", 0}, {"2x", 0}, {"-1", -1}};
  for (const auto& [content, expected] : cases) {
    TestSupport::WriteFile(file, content);
    EXPECT_EQ(GetUpgradeCtx(), expected) << content;
  }
  EXPECT_EQ(log.Lines().size(), 2U) << "each text that is no number is logged";
  std::filesystem::remove(file);
  std::filesystem::create_directory(file);
  EXPECT_EQ(GetUpgradeCtx(), 0);
}

TEST(GeneratedInstanceId, IsGivenOnceAndOnlyWhereTheSchemaAsks) {
  JsonDoc schema;
  ASSERT_TRUE(schema.Parse(R"({"properties":{"rules":{"items":{"generatedInstanceId":true,
    "properties":{"more":{"items":{"generatedInstanceId":true}}}}},"plain":{"items":{}}}})",
                           Json::Origin::OUTSIDE));
  JsonDoc data;
  ASSERT_TRUE(data.Parse(
      R"({"rules":[{"more":[{}]},{"cs_generated_id":"kept"},7],"plain":[{}],"other":[{}]})",
      Json::Origin::OUTSIDE));
  Json::Value& root = *data.GetJsonValuePtr();
  PopulateGeneratedInstanceId(*schema.GetJsonValuePtr(), root, data.GetAllocator());
  EXPECT_EQ(root["rules"][0]["cs_generated_id"].GetStringLength(), 36U);
  EXPECT_EQ(root["rules"][0]["more"][0]["cs_generated_id"].GetStringLength(), 36U);
  EXPECT_STREQ(root["rules"][1]["cs_generated_id"].GetString(), "kept");
  EXPECT_TRUE(root["plain"][0].ObjectEmpty() && root["other"][0].ObjectEmpty());
}

}  // namespace
