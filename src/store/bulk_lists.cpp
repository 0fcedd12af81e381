#include "store/bulk_lists.h"

#include "tarnconfigstore/exceptions.h"

#include "platform/logger.h"

#include "errors/raise.h"
#include "json/utf8.h"
#include "objects/schema_lookup.h"
#include "validation/guards.h"

#include <string_view>
#include <unordered_set>
#include <vector>

namespace TarnConfigStore {
namespace {

// The findings name members only, which all the instances have.
[[noreturn]] void RefuseInstance(const ValidationException& refused,
                                 const ConfigStoreObjectId& id) {
  CSLogger::Log(CSLogger::kFailure, "Refused: %s", id.toString().c_str());
  std::vector<ErrorInfo> findings = refused.GetErrors();
  if (findings.empty()) {
    throw;
  }
  for (ErrorInfo& finding : findings) {
    finding.error += " (instance \"" + Json::Utf8::Escaped(id.instanceId) + "\")";
  }
  ThrowException<ValidationException>(static_cast<CSErrorCodes>(refused.GetErrorCode()), findings);
}

// Ids come in their order as a rule: then each is compared with the one before it alone.
class SeenIds {
 public:
  explicit SeenIds(std::size_t most) { ascending_.reserve(most); }

  /// Answers whether it is the first of its kind.
  bool Add(std::string_view id) {
    if (known_.empty() && (ascending_.empty() || ascending_.back() < id)) {
      ascending_.push_back(id);
      return true;
    }
    if (known_.empty()) {
      known_.insert(ascending_.begin(), ascending_.end());
    }
    return known_.insert(id).second;
  }

 private:
  std::vector<std::string_view> ascending_;
  std::unordered_set<std::string_view> known_;  // all of them, once one was out of order
};

}  // namespace

ConfigStoreObjectId DropEmptyHandles(ObjectList& objects, const char* operation) {
  std::erase_if(objects, [operation](const auto& object) { return IsNull(object, operation); });
  if (objects.empty()) {
    ThrowException<InvalidArgumentException>(CS_NO_OBJECTS);
  }
  return objects.front()->GetConfigStoreObjectId();
}

void CheckInstances(const ObjectList& objects, const ConfigStoreObjectId& type,
                    const std::function<void(const ObjectHandle&)>& validate) {
  SeenIds instances(objects.size());
  for (const auto& object : objects) {
    const ConfigStoreObjectId& id = object->GetConfigStoreObjectId();
    if (!IsSameType(id, type)) {
      ThrowException<InvalidArgumentException>(CS_MIXED_TYPES);
    }
    validateInstanceId(id);
    ValidateWritableInstanceId(id);
    if (!instances.Add(id.instanceId)) {
      ThrowArgument("The instance is listed twice: " + id.toString());
    }
    try {
      validate(object);
    } catch (const ValidationException& refused) {
      RefuseInstance(refused, id);
    }
  }
}

void DropEmptyObjects(ObjectList& objects, const char* operation) {
  std::erase_if(objects, [operation](const auto& object) { return ObjIsEmpty(object, operation); });
}

}  // namespace TarnConfigStore
