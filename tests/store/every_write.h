// What has to hold for each of the store's ways to write.
#pragma once

#include "support/store_fixture.h"

namespace TestSupport {

class EveryWrite : public StoreFixture {
 protected:
  struct NamedWrite {
    std::string name;
    std::string code;     // of what is raised for data that do not fit
    std::string members;  // of the switch type, that it takes
    std::function<void(const ObjectHandle&)> write;

    bool IsOfMany() const { return name.ends_with("Instances"); }
    bool IsOfUser() const { return members.starts_with(R"("mtu")"); }
  };
  const TarnConfigStore::USERDATA_CONTEXT external_ = TarnConfigStore::EXTERNAL;
  const std::string mtu_ = R"("mtu":1)";
  const std::string serial_ = R"("serial":"x")";
  const std::string state_ = R"("state":{"up":true})";
  const std::vector<NamedWrite> writes_ = {
      {"Set", "1089", mtu_, [&](auto& o) { store_->Set(o, external_); }},
      {"SetUserData", "1087", mtu_, [&](auto& o) { store_->SetUserData(o, external_); }},
      {"SetInstances", "1089", mtu_, [&](auto& o) { store_->SetInstances({o}, external_); }},
      {"SetUserDataInstances", "1087", mtu_,
       [&](auto& o) { store_->SetUserDataInstances({o}, external_); }},
      {"Update", "1090", mtu_, [&](auto& o) { store_->Update(o, external_); }},
      {"SetVitalData", "1086", serial_, [&](auto& o) { store_->SetVitalData(o); }},
      {"SetCachedData", "1084", state_, [&](auto& o) { store_->SetCachedData(o); }},
      {"SetVitalDataInstances", "1086", serial_,
       [&](auto& o) { store_->SetVitalDataInstances({o}); }},
      {"SetCachedDataInstances", "1084", state_,
       [&](auto& o) { store_->SetCachedDataInstances({o}); }}};

  /// What each write raises for an object, or how that begins.
  template <class Expected>
  void ExpectOfEach(const ObjectHandle& object, Expected expected) {
    for (const NamedWrite& each : writes_) {
      const std::string text = expected(each);
      EXPECT_EQ(Raised([&] { each.write(object); }).substr(0, text.size()), text) << each.name;
    }
  }
};

}  // namespace TestSupport
