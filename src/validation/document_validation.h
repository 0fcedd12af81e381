// Checking whole documents: {component: {group: {key: object, or array of instances}}}.
#pragma once

#include "tarnconfigstore/exceptions.h"

#include "json/json_doc.h"
#include "validation/guards.h"

#include <vector>

namespace TarnConfigStore {

/// Validates the whole document that is an object's data as user configuration of the types that it
/// names, and gives array elements that need one a generated instance id. Adds the findings, and
/// logs them; types that are not installed are undeclared members. True when nothing was added.
bool ValidateDocument(const ObjectHandle& object, std::vector<ErrorInfo>& errors);

/// The same for a document that is to be imported, by the rules of a set.
bool ValidateImportDocument(JsonDoc& document, std::vector<ErrorInfo>& errors);

}  // namespace TarnConfigStore
