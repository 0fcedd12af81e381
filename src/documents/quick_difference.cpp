#include "documents/quick_difference.h"

#include "json/equality.h"
#include "json/scan.h"

namespace TarnConfigStore {
namespace {

class QuickComparison final : public Json::MemberReceiver {
 public:
  explicit QuickComparison(const Json::Value& object) : object_(object) {}
  bool Differs() const { return differs_; }

  bool Wants(std::string_view name) override {
    if (differs_) {
      return false;
    }
    other_ = Json::FindMember(object_, name);
    return other_ != nullptr && !Json::IsContainer(*other_);
  }
  void Receive(const Json::Value& value) override {
    differs_ = !Json::IsContainer(value) && !Json::Equal(value, *other_);
  }

 private:
  const Json::Value& object_;
  const Json::Value* other_ = nullptr;
  bool differs_ = false;
};

}  // namespace

bool DiffersAtOnce(std::string_view text, const Json::Value& object) {
  QuickComparison comparison(object);
  return object.IsObject() && Json::ScanMembers(text, comparison) && comparison.Differs();
}

}  // namespace TarnConfigStore
