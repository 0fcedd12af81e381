#include "given/given_masks.h"

#include "json/secrets.h"

namespace tarnctl {

Findings FindMasks(const Json::Value& data, const TypeSchema& type) {
  Findings masks;
  if (!Json::HoldsMasks(data, type.Place())) {
    return masks;
  }
  // There is nothing to restore, so that each mask is told of.
  JsonMaker make;
  Json::Value given(data, make.GetAllocator());
  std::string pointer;
  Json::RestoreSecrets(
      given, nullptr, type.Place(), make.GetAllocator(), pointer,
      {[](const std::string&) { return false; },
       [&](const std::string& place, const char*) {
         masks.push_back({place,
                          "\"***\" is what a secret is shown as: give the secret itself "
                          "(get --reveal prints what is stored)"});
       }});
  return masks;
}

}  // namespace tarnctl
