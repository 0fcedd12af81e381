#include "roads.h"

#include "measured_host.h"
#include "samples.h"

#include <stdexcept>
#include <vector>

namespace Benchmarks {
namespace {

using TarnConfigStore::ConfigStoreObject;

void CheckSame(const std::shared_ptr<ConfigStoreObject>& object, FloorObject* floor) {
  if (!object || floor == nullptr) {
    throw std::runtime_error("an object is missing");
  }
  Json::Document data;
  // Values of objects are equal whatever the order of their members.
  const bool same = Json::Parse(object->GetData(), data) &&
                    static_cast<const Json::Value&>(data) == floor->Data() &&
                    object->GetRevision() == floor->Metadata().revision &&
                    object->GetModifiedTime() == floor->Metadata().modifiedTime &&
                    object->GetConfigStoreObjectId().instanceId == floor->Metadata().instanceId;
  if (!same) {
    throw std::runtime_error("library and floor differ on " +
                             object->GetConfigStoreObjectId().toString() + ": " +
                             object->GetData());
  }
}

}  // namespace

void CheckSameAnswers(Roads& roads) {
  for (const char* key : {Host::kPlain, Host::kLayered}) {
    CheckSame(roads.library->Get(IdOf(key)), roads.floor.Get(IdOf(key)).get());
  }
  const auto id = IdOf(Host::kRewritten);
  const auto objects =
      roads.library->GetInstances(std::make_shared<TarnConfigStore::FilterSpecObject>(id));
  const auto floor = roads.floor.GetInstances(id);
  if (objects.size() != floor.size() || objects.empty()) {
    throw std::runtime_error("library and floor differ in the number of instances");
  }
  for (std::size_t i = 0; i < objects.size(); ++i) {
    CheckSame(objects[i], floor[i].get());
  }
}

}  // namespace Benchmarks
