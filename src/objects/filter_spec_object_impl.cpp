#include "objects/filter_spec_object_impl.h"

#include "platform/generated_instance_id.h"
#include "platform/logger.h"

#include "errors/raise.h"
#include "objects/access.h"
#include "objects/sub_object_place.h"

#include <utility>

namespace TarnConfigStore {
namespace {

using Filter = std::shared_ptr<FilterSpecObject>;

// A filter knows no type, hence not the member that holds an instance id; the one for generated
// ids, which no caller can mean, stands for it.
std::unique_ptr<const SubObjectPlace> PlaceOf(const std::shared_ptr<FilterSpecObjectImpl>& filter,
                                              const SubObjectId& id) {
  if (id.key.empty()) {
    ThrowArgument("key cannot be empty");
  }
  return std::make_unique<const SubObjectPlace>(
      filter, id, id.instanceId.empty() ? "" : Json::kGeneratedInstanceId);
}

Filter MakeView(const SubObjectId& id, std::unique_ptr<const SubObjectPlace> place) {
  return Internal::Access::Wrap(std::make_shared<FilterSpecObjectImpl>(id, std::move(place)));
}

}  // namespace

FilterSpecObjectImpl::FilterSpecObjectImpl(const SubObjectId& id,
                                           std::unique_ptr<const SubObjectPlace> place)
    : StoreObjectImpl(id, std::move(place)) {}

Filter FilterSpecObjectImpl::CreateSubObjectFilter(const Shared& filter, const SubObjectId& id) {
  auto place = PlaceOf(filter, id);
  if (place->Find() != nullptr) {
    ThrowFailure("SubObject filter already exists.");
  }
  place->Create();
  return MakeView(id, std::move(place));
}

Filter FilterSpecObjectImpl::GetSubObjectFilter(const Shared& filter, const SubObjectId& id) {
  auto place = PlaceOf(filter, id);
  if (place->Find() == nullptr) {
    CSLogger::Log(CSLogger::kTrace, "%s: Could not find key: %s", "GetSubObjectFilter",
                  id.key.c_str());
    return nullptr;
  }
  return MakeView(id, std::move(place));
}

void FilterSpecObjectImpl::DeleteSubObjectFilter(const Shared& filter, const SubObjectId& id) {
  PlaceOf(filter, id)->Delete();
  if (id.instanceId.empty()) {
    return;
  }
  // An empty list would still be a condition.
  if (FindInstances(*filter, id.key)->Empty()) {
    filter->RemoveMember(id.key);
  }
}

}  // namespace TarnConfigStore
