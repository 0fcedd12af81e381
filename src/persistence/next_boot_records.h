// The changes that are staged for the next boot.
#pragma once

#include "tarnconfigstore/filter_spec_object.h"
#include "tarnconfigstore/next_boot_store.h"

#include "platform/db_store.h"

#include "objects/division.h"
#include "persistence/row_objects.h"

#include <memory>
#include <optional>
#include <vector>

namespace TarnConfigStore {

// The operations that stage or take back refuse to while the host is being remediated (see
// RequireNoRemediation), before anything else. Those that stage write the type's version as of now
// and, at the end, "BOOT_MODE" (see AnnounceStagedChanges). All of it on the caller's connection:
// the caller's transaction undoes what was written before a failure, which raises
// ConfigStoreException 2000 with the text named here. At most one change is kept for an instance,
// the last one.

/// Stages an object's data, divided into its user, vital and cached part; array elements that need
/// a generated instance id get one. "Failed to update reboot-required configuraition."; the
/// spelling is part of the interface.
void SetRebootRequiredConfigInternal(const ObjectHandle& object, const SchemaHandle& schema,
                                     const DBStore::ConnectionHandle& connection);

/// Takes back what is staged for the type of the first object, and stages the objects instead.
/// Raises as SetRebootRequiredConfigInternal and ClearRebootRequiredConfigInstances.
/// \param objects  one at least, all of one type
void SetRebootRequiredConfigInstancesInternal(const std::vector<ObjectHandle>& objects,
                                              const SchemaHandle& schema,
                                              const DBStore::ConnectionHandle& connection);

/// Takes back what is staged for a type. "Failed to clear RebootRequired config for csoId:
/// IDENTIFIER".
void ClearRebootRequiredConfigInstances(const ConfigStoreObjectId& id, const SchemaHandle& schema,
                                        const DBStore::ConnectionHandle& connection);

/// Stages a deletion: of an instance where the type has instances, else of the object. "Failed to
/// delete reboot-required configuraition.".
void DeleteRebootRequiredConfigInternal(const ConfigStoreObjectId& id, const SchemaHandle& schema,
                                        const DBStore::ConnectionHandle& connection);

/// Stages the deletion of each object of the current configuration that a filter keeps. Raises as
/// DeleteRebootRequiredConfigInternal and GetConfigInstancesInternal.
void DeleteRebootRequiredConfigInstancesInternal(const std::shared_ptr<FilterSpecObject>& filter,
                                                 const SchemaHandle& schema,
                                                 const DBStore::ConnectionHandle& connection);

/// The content staged for an object, all parts merged, without times and revision; empty when there
/// is none. "Get failed: IDENTIFIER".
ObjectHandle GetRebootRequiredConfigInternal(const ConfigStoreObjectId& id,
                                             const SchemaHandle& schema,
                                             const DBStore::ConnectionHandle& connection);

/// The staged instances that a filter keeps. "Read Instances failed for: IDENTIFIER".
std::vector<ObjectHandle> GetRebootRequiredConfigInstancesInternal(
    const std::shared_ptr<FilterSpecObject>& filter, const SchemaHandle& schema,
    const DBStore::ConnectionHandle& connection);

/// Hands on every change that is staged, in the order of component, group, name and identifier: the columns
/// of the key, "BootAction", and the parts as "UserValue", "VitalValue" and "CachedValue". "Get
/// store rows failed.".
void ForEachStagedChange(const DBStore::ConnectionHandle& connection, const RowVisitor& receiver);

/// Content as such a row would have it, without anything else.
RowMap StagedContentRow(const ColumnValues& values);

/// What such a row does. A text that is none of the three raises ConfigStoreException 2000, or answers
/// with nothing.
NextBootAction ActionFromRow(const RowMap& row);
std::optional<NextBootAction> FindAction(const RowMap& row);

/// Writes a record as a document has it, and nothing else. Raises as the operation that stages such a
/// change.
void WriteStagedRecord(const ConfigStoreObjectId& id, NextBootAction action,
                       const std::string& version, const ColumnValues& values,
                       const DBStore::ConnectionHandle& connection);

/// Remove one staged change, or all, once they are applied. "Failed to clear RebootRequired config
/// for csoId: IDENTIFIER" and "Failed to clear RebootRequired config".
void RemoveStagedChange(const ConfigStoreObjectId& id, const DBStore::ConnectionHandle& connection);
void RemoveStagedChanges(const DBStore::ConnectionHandle& connection);

}  // namespace TarnConfigStore
