// A store with types that wait for the next boot.
#pragma once

#include "tarnconfigstore/apply_next_boot.h"
#include "tarnconfigstore/key_values.h"
#include "tarnconfigstore/listing.h"

#include "support/store_fixture.h"

namespace TestSupport {

/// The plain type and the switch type again, staged: "one", without instances, and "many".
class NextBootFixture : public StoreFixture {
 protected:
  NextBootFixture() {
    InstallType(host_, Staged(kPlainType, "one"));
    InstallType(host_, Staged(kSwitchType, "many"));
    nextBoot_ = store_->GetNextBootStore();
  }

  static Id Many(const std::string& instance) { return {"many-switch", "test", "tarn", instance}; }
  static ObjectHandle ManyObject(const std::string& instance, const std::string& members) {
    return Object(Many(instance), Named(instance, members));
  }
  static ObjectHandle Mtu(const std::string& instance, int mtu) {
    return ManyObject(instance, "\"mtu\":" + std::to_string(mtu));
  }
  using StoreFixture::PutRow;
  /// A row of "many"; texts are members of its object, an empty one makes a NULL.
  void PutRow(const std::string& instance, const std::string& user, const std::string& desired,
              const std::string& automatic, const std::string& vital, int success) {
    const auto value = [&](const std::string& members) {
      return members.empty() ? "" : Named(instance, members);
    };
    PutRow(Many(instance), value(user), value(desired), value(automatic), value(vital), "",
           success);
  }
  /// Both tables and the mode, the common part of the names left out.
  std::string State() {
    std::string text = database_.Rows() + "\n| " + database_.Staged() + "\n| " +
                       TarnConfigStore::GetKeyValue("BOOT_MODE");
    for (std::size_t at; (at = text.find("tarn/test/")) != std::string::npos;) {
      text.erase(at, 10);
    }
    return text;
  }

  Id one_{"one-plain", "test", "tarn"};
  std::shared_ptr<TarnConfigStore::NextBootStore> nextBoot_;
};

}  // namespace TestSupport
