// What may stand in one part of an object, as a document of all parts has it.
#pragma once

#include "tarnconfigstore/exceptions.h"

#include "documents/sections.h"
#include "objects/handles.h"

#include <vector>

namespace TarnConfigStore {

/// Everything that keeps an object's data from being a part of a row, as the writes of that part find
/// it; but members may be required that other parts hold, and lists of nothing but ids, which can be
/// left in a part of which everything else was taken away, belong to every part.
std::vector<ErrorInfo> FaultsOfPart(const SchemaHandle& schema, const ObjectHandle& object,
                                    Section section);

}  // namespace TarnConfigStore
