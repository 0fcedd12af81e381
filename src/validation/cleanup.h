// Removing empty content before an object is validated.
#pragma once

#include "validation/guards.h"

namespace TarnConfigStore {

/// What is written of an object.
enum class Writes { WHOLE_ROW, ONE_PART };

/// Takes out of the user's data what reads back the same without it, at any depth: members that are
/// or become empty objects or lists, where the type knows them, cannot require them, and has no
/// default at or below them; in lists of instances the elements that name nothing; and the instance
/// id of the object itself where it is all that is left. An element that was given an id stays, as
/// do those of all other lists; so does what the type does not know, which is the validator's to
/// refuse. An empty list that is written as one part alone stays too, as it takes the place of
/// another part's. Vital and cached data stay as they are. Each removal is logged at priority 2.
void CleanupObject(const ObjectHandle& object, const SchemaHandle& schema,
                   Writes writes = Writes::WHOLE_ROW);

/// Whether there is anything empty, at any depth, that cleaning could take.
bool HoldsEmptyContent(const Json::Value& value);

}  // namespace TarnConfigStore
