#include "platform/base64.h"
#include "platform/formatted_text.h"
#include "platform/generated_instance_id.h"
#include "platform/logger.h"
#include "platform/upgrade_context.h"

#include "json/json_doc.h"
#include "json/print.h"
#include "support/captured_log.h"
#include "support/temporary_host.h"

#include <gtest/gtest.h>

namespace {

using TarnConfigStore::JsonDoc;
using TestSupport::TemporaryHost;

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

TEST(Logger, LetsNoTextDriveATerminalOrForgeALine) {
  // What somebody may put into a name, and how people get to see it: in a line, and as JSON.
  const std::tuple<const char*, const char*, const char*> cases[] = {
      {"a\nb\r\tc", R"(a\nb\r\tc)", R"("a\nb\r\tc")"},
      {"\x1b[2J\x7f", R"(\x1b[2J\x7f)", R"("\u001b[2J\u007f")"},
      {"\xc2\x9b"
       "1m",
       R"(\xc2\x9b1m)", R"("\u009b1m")"},
      {"\xe2\x80\xae"
       "gpj",
       R"(\u202egpj)", R"("\u202egpj")"},
      {"\xd8\x9c\xe2\x80\x8f\xe2\x80\xa8\xe2\x81\xa9", R"(\u061c\u200f\u2028\u2069)",
       R"("\u061c\u200f\u2028\u2069")"},
      {"half \xe2\x80", R"(half \xe2\x80)", "\"half \xef\xbf\xbd\xef\xbf\xbd\""},
      {"gr\xc3\xbc\xc3\x9f \xf0\x9f\x98\x80", "gr\xc3\xbc\xc3\x9f \xf0\x9f\x98\x80",
       "\"gr\xc3\xbc\xc3\x9f \xf0\x9f\x98\x80\""}};
  for (const auto& [text, line, json] : cases) {
    const TestSupport::CapturedLog log;
    CSLogger::Log(1, "%s", text);
    EXPECT_EQ(log.Count(std::string("1 ") + line), 1) << line;
    std::string printed;
    Json::Print(Json::Reference(text), Json::Layout::ONE_LINE, Json::BadText::REPAIRED, printed);
    EXPECT_EQ(printed, json);
  }
}

TEST(UpgradeContext, IsWhatTheFileSays) {
  const TemporaryHost host;
  EXPECT_EQ(GetUpgradeCtx(), 0);
  const std::string file = host.Path(HostPaths::kUpgradeContext);
  for (const auto& [content, expected] : {std::pair("2", 2), {" 3\n", 3}, {"-1", -1}}) {
    TestSupport::WriteFile(file, content);
    EXPECT_EQ(GetUpgradeCtx(), expected);
  }
  // Taken for 0, these would confirm what must not be confirmed.
  for (const std::string& content :
       {std::string(), std::string("2x"), std::string(64, ' ') + "2"}) {
    TestSupport::WriteFile(file, content);
    EXPECT_THROW(GetUpgradeCtx(), std::runtime_error) << content;
  }
  const auto refusal = [] {
    try {
      return std::to_string(GetUpgradeCtx());
    } catch (const std::runtime_error& error) {
      return std::string(error.what());
    }
  };
  EXPECT_EQ(refusal(),
            "Upgrade context /run/kestrel/upgrade-context cannot be read: is larger than 63 bytes");
  std::filesystem::remove(file);
  ASSERT_EQ(mkfifo(file.c_str(), 0600), 0);
  EXPECT_EQ(refusal(),
            "Upgrade context /run/kestrel/upgrade-context cannot be read: is no regular file");
  std::filesystem::remove(file);
  std::filesystem::create_directory(file);
  EXPECT_EQ(refusal(),
            "Upgrade context /run/kestrel/upgrade-context cannot be read: is a directory");
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
  EXPECT_EQ(root["rules"][1].MemberCount(), 1U);
  EXPECT_TRUE(root["plain"][0].ObjectEmpty() && root["other"][0].ObjectEmpty());
}

}  // namespace
