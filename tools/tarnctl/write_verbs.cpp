#include "write_verbs.h"

#include "findings.h"
#include "given_object.h"
#include "object_name.h"
#include "store_access.h"

#include <memory>

namespace tarnctl {
namespace {

using TarnConfigStore::ConfigStore;
using TarnConfigStore::ConfigStoreObject;
using TarnConfigStore::ConfigStoreObjectId;

/// Makes the object and writes it by `write(store, object)`.
template <class Write>
void WriteObject(const std::string& object, const std::vector<std::string>& data, Write write) {
  const ConfigStoreObjectId id = ParseObject(object);
  const TypeSchema schema(id);
  const auto given = MakeObject(id, data, schema);
  const auto store = OpenStore();
  const std::int32_t revision = store->GetRevision(id);
  write(*store, given);
  // The library writes nothing, and says nothing, when cleaning leaves nothing to write.
  if (store->GetRevision(id) == revision) {
    throw ToolError(ExitCode::INVALID,
                    "nothing was written: without its empty members the object holds no data");
  }
}

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
  WriteObject(object, data,
              [layer](ConfigStore& store, const auto& given) { SetLayer(store, given, layer); });
}

void UpdateObject(const std::string& object, const std::vector<std::string>& data,
                  TarnConfigStore::USERDATA_CONTEXT context) {
  WriteObject(object, data,
              [context](ConfigStore& store, const auto& given) { store.Update(given, context); });
}

void ValidateObject(const std::string& object, const std::string& path, const Output& output) {
  const ConfigStoreObjectId id = ParseObject(object);
  const TypeSchema schema(id);
  PrintFindings(FindFaults(id, path, schema), output);
}

}  // namespace tarnctl
