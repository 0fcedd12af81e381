#include "write_verbs.h"

#include "findings.h"
#include "given_object.h"
#include "object_name.h"
#include "store_access.h"
#include "write_object.h"

#include <memory>

namespace tarnctl {
namespace {

using TarnConfigStore::ConfigStore;
using TarnConfigStore::ConfigStoreObject;
using TarnConfigStore::ConfigStoreObjectId;

void SetLayer(ConfigStore& store, const std::shared_ptr<ConfigStoreObject>& object, Layer layer) {
  switch (layer) {
    case Layer::WHOLE:
      return store.Set(object, TarnConfigStore::EXTERNAL);
    case Layer::USER:
      return store.SetUserData(object, TarnConfigStore::EXTERNAL);
    case Layer::AUTOMATIC:
      return store.SetUserData(object, TarnConfigStore::AUTO_CONFIG);
    case Layer::VITAL:
      return store.SetVitalData(object);
    case Layer::CACHED:
      return store.SetCachedData(object);
  }
}

Findings FindFaults(const ConfigStoreObjectId& id, const std::string& path,
                    const TypeSchema& schema) {
  const std::shared_ptr<ConfigStore> store = OpenStore();
  std::shared_ptr<ConfigStoreObject> object;
  try {
    object = ReadObject(id, path);
  } catch (const ToolError& error) {
    if (error.GetFailure().details.empty()) {
      throw;
    }
    return error.GetFailure().details;  // data that describes no object
  }
  Findings findings = KeepInstanceId(*object, schema);
  const Findings misfits = store->Validate(object);
  findings.insert(findings.end(), misfits.begin(), misfits.end());
  return findings;
}

}  // namespace

void SetObject(const std::string& object, const std::vector<std::string>& data, Layer layer) {
  WriteObject(ParseObject(object), data,
              [layer](ConfigStore& store, const auto& given) { SetLayer(store, given, layer); });
}

void UpdateObject(const std::string& object, const std::vector<std::string>& data,
                  TarnConfigStore::USERDATA_CONTEXT context) {
  WriteObject(ParseObject(object), data,
              [context](ConfigStore& store, const auto& given) { store.Update(given, context); });
}

void ValidateObject(const std::string& object, const std::string& path, const Output& output) {
  const ConfigStoreObjectId id = ParseObject(object);
  const TypeSchema schema(id);
  PrintFindings(FindFaults(id, path, schema), output);
}

}  // namespace tarnctl
