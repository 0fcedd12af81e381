// Names that the host's store and types give to what is typed.
#pragma once

#include "given/object_name.h"

#include <string>
#include <string_view>
#include <vector>

namespace tarnctl {

/// Which names: of objects, of types, or of whatever a prefix may name.
enum class Named { OBJECT, TYPE, PREFIX };

/// Those that begin with a word. A name that ends with "/" goes on. Raises what the library raises
/// where the types or the store cannot be read.
std::vector<std::string> FindNames(Named named, std::string_view word);

/// Members of an object's type, from the object itself on; one that has members of its own ends with
/// ".". Raises as FindNames.
std::vector<std::string> FindMembers(const std::string& object, std::string_view word);

/// "MEMBER=" as FindMembers has them, and behind it the values that the schema names.
std::vector<std::string> FindAssignments(const std::string& object, std::string_view word);

}  // namespace tarnctl
