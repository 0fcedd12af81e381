// What a write would say, without writing.
#pragma once

#include "tarnconfigstore/config_store_object.h"
#include "tarnconfigstore/exceptions.h"
#include "tarnconfigstore/export.h"

#include <memory>
#include <vector>

namespace TarnConfigStore {

/// The writes of ConfigStore that take a whole value of a row.
enum class WriteKind : int {
  SET = 0,              ///< Set: the whole object
  SET_USER_DATA = 1,    ///< SetUserData, in either context
  SET_VITAL_DATA = 2,   ///< SetVitalData
  SET_CACHED_DATA = 3,  ///< SetCachedData
};

/// Does with a copy of an object all that a write does before it writes: cleans it, and checks it
/// and its identifier. Nothing is written, locked or announced, and the object stays as it is. What
/// a write would be refused for that has nothing to do with the object, as while the host boots, is
/// not asked.
/// Thread-safe, as long as nobody changes the object meanwhile.
/// \param object  an empty handle has no findings
/// \return everything that the write would refuse, in its words and with its places; empty when it
///         would go through. What it would refuse or leave out as a whole is a finding on "/": a type
///         that is not installed, an instance id that does not suit, an object that holds no data
/// \throws ConfigStoreException 2000 when the schema store cannot be read
TARN_CONFIG_STORE_EXPORT std::vector<ErrorInfo> FindingsOfWrite(
    const std::shared_ptr<ConfigStoreObject>& object, WriteKind kind);

}  // namespace TarnConfigStore
