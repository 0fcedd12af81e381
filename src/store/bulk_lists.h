// What the operations on several objects make sure of.
#pragma once

#include "objects/handles.h"

#include <functional>

namespace TarnConfigStore {

/// Drops the empty handles, each logged as code 1041 under the operation's name, and returns the
/// identifier of the first object, which names the type. Raises InvalidArgumentException 1061 when
/// nothing is left.
ConfigStoreObjectId DropEmptyHandles(ObjectList& objects, const char* operation);

/// Checks every object, in order: it is of the type named (else InvalidArgumentException 1062), its
/// identifier has an instance id that no object before it has (else ValidationException 2000, or
/// InvalidArgumentException 2000 naming the id), and what `validate` raises; the object that it
/// refuses is logged, and named in its findings.
void CheckInstances(const ObjectList& objects, const ConfigStoreObjectId& type,
                    const std::function<void(const ObjectHandle&)>& validate);

/// Leaves out the objects without data, each logged; they are not written.
void DropEmptyObjects(ObjectList& objects, const char* operation);

}  // namespace TarnConfigStore
