// What has to hold for each of the store's ways to write.
#pragma once

#include "support/store_fixture.h"

namespace TestSupport {

class EveryWrite : public StoreFixture {
 protected:
  using Write = std::function<void(const ObjectHandle&)>;
  struct NamedWrite {
    std::string name;
    std::string code;  // of what is raised for data that do not fit
    Write write;
  };
  const TarnConfigStore::USERDATA_CONTEXT external_ = TarnConfigStore::EXTERNAL;
  const std::vector<NamedWrite> ofUser_ = {
      {"Set", "1089", [&](auto& o) { store_->Set(o, external_); }},
      {"SetUserData", "1087", [&](auto& o) { store_->SetUserData(o, external_); }},
      {"SetInstances", "1089", [&](auto& o) { store_->SetInstances({o}, external_); }},
      {"SetUserDataInstances", "1087",
       [&](auto& o) { store_->SetUserDataInstances({o}, external_); }},
      {"Update", "1090", [&](auto& o) { store_->Update(o, external_); }}};
  const std::vector<NamedWrite> ofParts_ = {
      {"SetVitalData", "1086", [&](auto& o) { store_->SetVitalData(o); }},
      {"SetCachedData", "1084", [&](auto& o) { store_->SetCachedData(o); }},
      {"SetVitalDataInstances", "1086", [&](auto& o) { store_->SetVitalDataInstances({o}); }},
      {"SetCachedDataInstances", "1084", [&](auto& o) { store_->SetCachedDataInstances({o}); }}};

  /// What each write of a list raises for an object, by the write's name.
  template <class Expected>
  static void ExpectOfEach(const std::vector<NamedWrite>& writes, const ObjectHandle& object,
                           Expected expected) {
    for (const NamedWrite& each : writes) {
      const std::string text = expected(each);
      EXPECT_EQ(Raised([&] { each.write(object); }).substr(0, text.size()), text) << each.name;
    }
  }
  static bool IsOfMany(const NamedWrite& each) {
    return each.name.find("Instances") != std::string::npos;
  }
};

}  // namespace TestSupport
