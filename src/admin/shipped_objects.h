// The objects that a type brings along, as rows.
#pragma once

#include "platform/type_files.h"

#include "persistence/type_rows.h"

#include <vector>

namespace TarnConfigStore {

/// A good file's shipped objects, divided among the value columns.
std::vector<DefaultRow> DivideShippedObjects(const TypeFiles::TypeFile& file);

}  // namespace TarnConfigStore
