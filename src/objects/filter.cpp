#include "objects/filter.h"

#include "platform/config_store_document.h"
#include "platform/logger.h"

#include "errors/raise.h"
#include "json/scan.h"
#include "json/type_schema_view.h"
#include "objects/access.h"
#include "objects/config_store_object_impl.h"
#include "objects/filter_spec_object_impl.h"

#include <algorithm>
#include <cstdint>

namespace TarnConfigStore {
namespace {

// The lines are built only when somebody logs them: a filter passes by thousands of objects.
bool Keeps(const FilterSpecObjectImpl& filter, const ConfigStoreObjectImpl& object, bool traced) {
  const ConfigStoreObjectId& wanted = filter.GetConfigStoreObjectId();
  const ConfigStoreObjectId& id = object.GetConfigStoreObjectId();
  if (!wanted.instanceId.empty() && wanted.instanceId != id.instanceId) {
    if (traced) {
      CSLogger::Log(CSLogger::kTrace, "obj is not subset, instanceId %s did not match",
                    id.instanceId.c_str());
    }
    return false;
  }
  const Json::Value& data = object.GetRoot();
  for (const auto& member : filter.GetRoot().GetObject()) {
    const Json::Value* value = Json::FindMember(data, Json::Text(member.name));
    if (value == nullptr || !IsSubset(member.value, *value)) {
      if (traced) {
        CSLogger::Log(CSLogger::kTrace, "obj is not susbset, key %s did not match",
                      member.name.GetString());
      }
      return false;
    }
  }
  return true;
}

// Compares what can be compared without an object: of each condition's member, the first of its name.
class Conditions : public Json::MemberReceiver {
 public:
  static constexpr std::size_t kMost = 64;

  /// \param conditions  at most so many
  explicit Conditions(const Json::Value& conditions) : conditions_(conditions) {
    for (const auto& condition : conditions.GetObject()) {
      lengths_ |= LengthBit(condition.name.GetStringLength());
      open_ = open_ << 1U | 1U;
    }
  }

  bool Wants(std::string_view name) override {
    // Most members' names have another length than those that are asked for.
    if ((lengths_ & LengthBit(name.size())) == 0 || failed_) {
      return false;
    }
    for (at_ = 0; at_ < conditions_.MemberCount(); ++at_) {
      if (Json::Text(Condition().name) == name) {
        return IsOpen();
      }
    }
    return false;
  }
  void Receive(const Json::Value& value) override {
    const std::string_view name = Json::Text(Condition().name);
    for (; at_ < conditions_.MemberCount(); ++at_) {
      if (Json::Text(Condition().name) == name) {
        failed_ = failed_ || !MayBePart(Condition().value, value);
        open_ &= ~(std::uint64_t{1} << at_);
      }
    }
  }

  bool MayMeet() const { return !failed_ && open_ == 0; }

 private:
  static std::uint64_t LengthBit(std::size_t length) { return std::uint64_t{1} << (length % 64); }
  static bool MayBePart(const Json::Value& wanted, const Json::Value& value) {
    return wanted.IsObject() || wanted.IsArray() ? wanted.GetType() == value.GetType()
                                                 : IsSubset(wanted, value);
  }
  const Json::Value::Member& Condition() const {
    return *(conditions_.MemberBegin() + static_cast<std::ptrdiff_t>(at_));
  }
  bool IsOpen() const { return (open_ >> at_ & 1U) != 0; }

  const Json::Value& conditions_;
  std::uint64_t lengths_ = 0;
  std::uint64_t open_ = 0;  // a bit for each condition whose member has not come
  std::size_t at_ = 0;
  bool failed_ = false;
};

// Conditions of one sub-object, on a member that holds several.
bool ConditionsMeetInstances(const Json::Value& conditions, Json::SchemaPlace type) {
  return conditions.IsObject() &&
         std::any_of(conditions.MemberBegin(), conditions.MemberEnd(), [&](const auto& member) {
           if (!member.value.IsObject()) {
             return false;
           }
           const Json::SchemaPlace property = type.Property(Json::Text(member.name));
           return !property.Items().InstanceIdMember().empty() ||
                  ConditionsMeetInstances(member.value, property);
         });
}

void RefuseInstanceFilters(const FilterSpecObjectImpl& filter,
                           const std::vector<std::shared_ptr<ConfigStoreObject>>& objects) {
  // In a filter, what looks like a generated id names the instance that conditions are on.
  bool refused = Json::HasGeneratedId(filter.GetRoot());
  if (!refused && !objects.empty()) {
    // All objects are of one type.
    const auto& schema = Internal::Access::Of(*objects.front()).GetSchema();
    refused = schema && ConditionsMeetInstances(filter.GetRoot(), schema->GetSchemaPlace());
  }
  if (refused) {
    ThrowFailure(
        Format("%s: Non-Singleton SubObject filtering not supported", "FilterConfigStoreObjects"));
  }
}

}  // namespace

bool IsSubset(const Json::Value& part, const Json::Value& value) {
  if (part.IsObject() && value.IsObject()) {
    return std::all_of(part.MemberBegin(), part.MemberEnd(), [&](const auto& member) {
      const Json::Value* found = Json::FindMember(value, Json::Text(member.name));
      return found != nullptr && IsSubset(member.value, *found);
    });
  }
  if (part.IsArray() && value.IsArray()) {
    return std::all_of(part.Begin(), part.End(), [&](const Json::Value& wanted) {
      return std::any_of(value.Begin(), value.End(),
                         [&](const Json::Value& element) { return IsSubset(wanted, element); });
    });
  }
  return ConfigStoreDocument::ValuesEqual(part, value);
}

InstanceFilter::InstanceFilter(const FilterSpecObject& filter, Json::SchemaPlace type)
    : conditions_(Internal::Access::Of(filter)),
      refused_(Json::HasGeneratedId(conditions_.GetRoot()) ||
               ConditionsMeetInstances(conditions_.GetRoot(), type)) {}

bool InstanceFilter::CanStream() const {
  return !refused_ && !CSLogger::IsEnabled(CSLogger::kTrace) && conditions_.GetRoot().IsObject();
}

bool InstanceFilter::RulesOut(std::string_view text) const {
  if (conditions_.GetRoot().MemberCount() > Conditions::kMost) {
    return false;
  }
  Conditions conditions(conditions_.GetRoot());
  return Json::ScanMembers(text, conditions) && !conditions.MayMeet();
}

bool InstanceFilter::Keeps(const ConfigStoreObject& object) const {
  return TarnConfigStore::Keeps(conditions_, Internal::Access::Of(object), false);
}

std::vector<std::shared_ptr<ConfigStoreObject>> FilterConfigStoreObjects(
    std::vector<std::shared_ptr<ConfigStoreObject>> objects,
    const std::shared_ptr<FilterSpecObject>& filter) {
  if (filter) {
    const FilterSpecObjectImpl& conditions = Internal::Access::Of(*filter);
    RefuseInstanceFilters(conditions, objects);
    const bool traced = CSLogger::IsEnabled(CSLogger::kTrace);
    std::erase_if(objects, [&](const std::shared_ptr<ConfigStoreObject>& object) {
      return !Keeps(conditions, Internal::Access::Of(*object), traced);
    });
  }
  return objects;
}

}  // namespace TarnConfigStore
