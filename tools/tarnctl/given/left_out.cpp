#include "given/left_out.h"

#include "json/pointer.h"

namespace tarnctl {
namespace {

class Comparison {
 public:
  void Compare(const Json::Value& given, const Json::Value* written) {
    if (given.IsObject()) {
      for (const auto& member : given.GetObject()) {
        if (Json::IsContainer(member.value)) {
          const Json::Value* same =
              written == nullptr ? nullptr : Json::FindMember(*written, Json::Text(member.name));
          Below(Json::Text(member.name), [&] { Compare(member.value, same); });
        }
      }
    } else if (given.IsArray()) {
      CompareElements(given, written);
    }
  }

  std::vector<std::string> Take() { return std::move(leftOut_); }

 private:
  // What was left out were empty elements, and the others are still in their order.
  void CompareElements(const Json::Value& given, const Json::Value* written) {
    const rapidjson::SizeType count =
        written == nullptr || !written->IsArray() ? 0 : written->Size();
    rapidjson::SizeType missing = given.Size() > count ? given.Size() - count : 0;
    rapidjson::SizeType at = 0;
    for (rapidjson::SizeType i = 0; i < given.Size(); ++i) {
      const bool isEmpty = given[i].IsObject() && given[i].ObjectEmpty();
      Below(std::to_string(i), [&] {
        if (isEmpty && missing > 0) {
          --missing;
          leftOut_.push_back(pointer_);
        } else {
          Compare(given[i], at < count ? &(*written)[at] : nullptr);
          ++at;
        }
      });
    }
  }

  template <class Steps>
  void Below(std::string_view name, const Steps& steps) {
    const std::size_t above = pointer_.size();
    Json::AppendToken(pointer_, name);
    steps();
    pointer_.resize(above);
  }

  std::string pointer_;
  std::vector<std::string> leftOut_;
};

}  // namespace

std::vector<std::string> FindLeftOut(const Json::Value& given, const Json::Value& written) {
  Comparison comparison;
  comparison.Compare(given, &written);
  return comparison.Take();
}

}  // namespace tarnctl
