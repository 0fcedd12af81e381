// The store and what comes out of it, as the verbs for objects meet them.
#pragma once

#include "tarnconfigstore/config_store.h"

#include "given/object_name.h"
#include "shown/output.h"
#include "shown/shown_data.h"

#include <memory>
#include <string>
#include <vector>

namespace tarnctl {

/// Opens the store; raises what ConfigStore::GetStore raises.
std::shared_ptr<TarnConfigStore::ConfigStore> OpenStore();

/// A host that has lost its store says so whatever it is asked, before anybody takes what it has for a
/// host in good order. Raises what GetStore raises, which tells more than other operations do.
void RequireStore();

/// Raises ToolError NOT_FOUND "no object ... is stored".
[[noreturn]] void RaiseNotStored(const TarnConfigStore::ConfigStoreObjectId& id);

/// Raises ToolError NOT_FOUND for a type none of whose stored instances meets the conditions.
[[noreturn]] void RaiseNoInstances(const TarnConfigStore::ConfigStoreObjectId& type,
                                   const std::vector<std::string>& conditions);

/// Prints an object, or one of its members when the path is not empty; an absent member as the
/// default that its schema gives it. ToolError NOT_FOUND when there is neither.
void PrintObject(const TarnConfigStore::ConfigStoreObject& object, const MemberPath& member,
                 ShownData shown, const Output& output);

/// Prints what stands at a place in an object, which may lead through lists; an absent member as
/// PrintObject does. ToolError NOT_FOUND when nothing does.
/// \param place  the names on the way; empty for the whole object
void PrintPlace(const TarnConfigStore::ConfigStoreObject& object, const MemberPath& place,
                ShownData shown, const Output& output);

/// Says on standard error how many instances of a type met something, as "deleted".
void SayHowMany(std::size_t count, const TarnConfigStore::ConfigStoreObjectId& type,
                const char* what);

}  // namespace tarnctl
