// The classes of C++ that stand for a configuration type.
#pragma once

#include "tarnconfigstore/object_id.h"

#include "json/type_schema_view.h"

#include <string>
#include <string_view>
#include <vector>

namespace tarnctl {

/// An enumeration, and the texts of its values.
struct CppEnum {
  struct Value {
    std::string name;
    std::string text;
  };
  std::string name;
  std::vector<Value> values;
};

/// A member that has accessors.
struct CppMember {
  enum class Access {
    ID,       ///< the instance id: read only
    INTEGER,  ///< these four are values of a type of C++
    PLAIN,    ///< a number, text or truth value
    ENUMERATION,
    LIST,
    PART,       ///< an object
    INSTANCES,  ///< objects with instance ids
    GENERATED,  ///< objects that the store names where they are not named
  };
  std::string name;     ///< in the data
  std::string cppName;  ///< goes after "Get", "Set" and so on
  Access access;
  std::string type;  ///< of a value, of a part, or of an instance
  std::vector<std::string> comment;
};

struct CppClass {
  std::string name;
  std::vector<std::string> comment;
  std::vector<CppMember> members;
  std::vector<std::string> without;  ///< members without accessors, and why
};

/// A whole type: the first class is the one of its objects, the others are of objects inside.
struct CppTypes {
  std::vector<CppEnum> enums;
  std::vector<CppClass> classes;
};

/// Reads the classes out of a type's schema.
/// \param name  of the first class, which the names of all others begin with
CppTypes ReadCppTypes(const Json::TypeSchemaView& view, const std::string& name);

}  // namespace tarnctl
