// What every store operation makes sure of before it touches the database.
#pragma once

#include "tarnconfigstore/contexts.h"

#include "objects/handles.h"

namespace TarnConfigStore {

// Unless they say otherwise, guards return quietly or raise ValidationException 2000 with a fixed
// message and no findings. None changes anything.

/// During boot, outside an upgrade, only automatic configuration may write.
void checkUserContext(bool booting, const USERDATA_CONTEXT& context);

/// The instance id is not empty.
void validateInstanceId(const ConfigStoreObjectId& id);

/// The instance id, where there is one, may be written: 1 to 255 bytes of UTF-8 without control
/// characters. Rows of other ids, which older versions let in, can still be read and deleted.
void ValidateWritableInstanceId(const ConfigStoreObjectId& id);

/// The identifier has an instance id exactly when its type has instances.
void validateSingletonNonSingleton(const ConfigStoreObjectId& id, const SchemaHandle& schema);
void validateSingletonNonSingleton(const ObjectHandle& object, const SchemaHandle& schema);

/// The type is staged for the next boot rather than changed in place.
void ValidateRebootRequiredConfig(const SchemaHandle& schema);

/// The object has data.
void ValidateEmptyObject(const ObjectHandle& object);

/// The identifier is that of the kernel options; its instance id does not matter.
void ValidateKernelOptionsCsoId(const ConfigStoreObjectId& id);

/// The type is installed; raises ConfigStoreException 1037 with the identifier's text.
void CheckSchema(const ConfigStoreObjectId& id, const SchemaHandle& schema);

/// CheckSchema, then validateSingletonNonSingleton; of an object, which is about to be written,
/// ValidateWritableInstanceId as well.
void ValidateCsoId(const ConfigStoreObjectId& id, const SchemaHandle& schema);
void ValidateCsoId(const ObjectHandle& object, const SchemaHandle& schema);

/// CheckSchema, and the type has instances, whatever the identifier's instance id.
void ValidateCsoIdInstances(const ConfigStoreObjectId& id, const SchemaHandle& schema);
void ValidateCsoIdInstances(const FilterHandle& filter, const SchemaHandle& schema);

/// True, after logging code 1041 with the argument's name, for an empty handle. Never throws.
bool IsNull(const ObjectHandle& object, const char* name) noexcept;
bool IsNull(const FilterHandle& filter, const char* name) noexcept;

/// True, after logging it, for an object without data, which is then not written.
bool ObjIsEmpty(const ObjectHandle& object, const char* caller);

/// True when at least one leaf of the object's data is governed by schema nodes none of which, on
/// the way down, is tagged vital or cached; instance ids never make an object user data. Never
/// throws.
bool isUserType(const ObjectHandle& object, const SchemaHandle& schema);

}  // namespace TarnConfigStore
