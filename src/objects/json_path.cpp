#include "objects/json_path.h"

#include "json/pointer.h"
#include "json/type_schema_view.h"
#include "objects/argument_errors.h"

#include <algorithm>

namespace TarnConfigStore {

const Json::Value* FindPath(const Json::Value& root, const std::string& pointer) {
  const auto names = Json::ParsePointer(pointer);
  if (!names) {
    ThrowArgument("Not a JSON Pointer: " + pointer);
  }
  // Callers see nothing of the identifiers that the store gives.
  const bool hidden =
      std::find(names->begin(), names->end(), Json::kGeneratedInstanceId) != names->end();
  return hidden ? nullptr : Json::FindAt(root, *names);
}

}  // namespace TarnConfigStore
