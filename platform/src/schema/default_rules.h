// Whether the defaults that a type brings along fit it.
#pragma once

#include "platform/type_files.h"

#include "json/json.h"
#include "schema/annotation_rules.h"
#include "schema/type_file_findings.h"

#include <string_view>
#include <vector>

namespace TypeFiles {

/// Checks the "default" of each property against the property's own schema. The schema has to be
/// sound.
void CheckPropertyDefaults(const Json::Value& schema, const std::vector<AnnotatedDefault>& defaults,
                           Findings& findings);

/// Checks the objects of a file's "defaults" against the whole schema, and their instance ids.
/// \return the objects that could be read
std::vector<ShippedObject> CheckShippedObjects(const Json::Value& file,
                                               const Json::TypeSchemaView& type,
                                               Findings& findings);

}  // namespace TypeFiles
