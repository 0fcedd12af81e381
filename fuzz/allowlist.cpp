// The allowlist, as any text that somebody puts there.
#include "notify/allowlist.h"

#include "tarnconfigstore/exceptions.h"

#include "fuzz_target.h"
#include "json/json.h"
#include "test_host.h"

#include <string>

namespace Fuzz {
namespace {

using namespace TarnConfigStore;

// As the host's own documentation of the file has it.
bool IsListOfTexts(const Json::Value& value) {
  bool texts = value.IsArray();
  for (rapidjson::SizeType i = 0; texts && i < value.Size(); ++i) {
    texts = value[i].IsString();
  }
  return texts;
}

void Run(std::string_view input) {
  TestSupport::WriteFile(TestHost::Get().Host().Path(HostPaths::kNotifyAllowlist),
                         std::string(input));
  Json::Document value;
  const bool parsed(Json::Parse(input, value, Json::Origin::OUTSIDE));
  try {
    const NotifyAllowlist allowlist = ReadNotifyAllowlist();
    Require(parsed && IsListOfTexts(value), "only a list of texts is an allowlist");
    for (const Json::Value& name : value.GetArray()) {
      Require(allowlist.contains(std::string(Json::Text(name))), "every name is on the list",
              Json::Text(name));
    }
    Require(allowlist.size() <= value.Size(), "no other name is on the list");
  } catch (const InvalidArgumentException& error) {
    Require(!parsed && error.GetErrorCode() == CS_JSON_FILE_FAILED, "what is no JSON is told so");
  } catch (const ConfigStoreException& error) {
    Require(parsed && !IsListOfTexts(value) && error.GetErrorCode() == CS_JSON_ASSERTION,
            "what is no list of texts is told so");
  }
}

const Target target("allowlist", Run);

}  // namespace
}  // namespace Fuzz
