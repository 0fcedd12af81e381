// Staging a change of some members for the next boot.
#pragma once

#include "tarnconfigstore/config_store_object.h"
#include "tarnconfigstore/export.h"

#include <memory>

namespace TarnConfigStore {

/// Changes members of what an object is to be, and stages the whole: NextBootStore::Set stages what
/// it is given, and nothing else.
///
/// What is changed is what is staged for the object already or, where nothing is, what is current: its
/// cached, vital and user's value laid over each other, of the latter the pending one where there is
/// one, confirmed or not. Automatic values stay where they are, and are not staged. Where neither is
/// there, the object is made of what is given. Reading and staging are one transaction, on a connection
/// of its own: nothing that others stage in between is lost. Thread-safe, as long as nobody changes
/// the object meanwhile.
/// \param object  the members to change. As ConfigStore::Update takes it: objects and lists of
///                instances are laid over what is there, other lists replace it, a null removes the
///                member, an empty list or object what is in it
/// \return whether anything was staged: false for an empty handle, and where nothing would change
/// \throws ConfigStoreException 1037 with the identifier's text when the type is not installed
/// \throws ValidationException 2000 for a type that needs no reboot, for an instance id that does not
///         suit, and while the host boots or is upgraded
/// \throws ValidationException 1090 with every finding, when the change does not fit the type, nothing
///         would be left of the object, or it is staged to be deleted
/// \throws ValidationException 1089 when what comes out does not fit the type
/// \throws ConfigStoreException 2000 "Tarn host is being remediated by ORC, cannot set next-boot
///         configuration."
/// \throws ConfigStoreException 2000 "Begin Transaction failed for: UpdateNextBoot", also when the
///         calling thread holds a transaction on a store, and for any other failure of the database
TARN_CONFIG_STORE_EXPORT bool UpdateNextBoot(const std::shared_ptr<ConfigStoreObject>& object);

}  // namespace TarnConfigStore
