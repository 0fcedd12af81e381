// MEMBER=VALUE arguments, as data and as conditions.
#pragma once

#include "tarnconfigstore/filter_spec_object.h"

#include "json_maker.h"
#include "store/type_schema.h"

#include <memory>
#include <string>
#include <vector>

namespace tarnctl {

/// What MEMBER=null gives.
enum class Null {
  OF_TYPE,  ///< null where the member may be null, the text "null" where it is a text
  REMOVES,  ///< null, whatever the member's type: it is to be removed
};

/// A member and the text of its value, which did not stand among the arguments and is told to nobody.
struct HiddenValue {
  std::string member;
  std::string text;
};

/// The object that the arguments describe, and the hidden values beside them. Each value takes the type that the schema gives its
/// member; a member of several types takes JSON text that fits one of them, and else the text itself
/// where texts are allowed. Numbers are kept as they are, or refused. Raises ToolError INVALID for a
/// value that does not fit or cannot be kept and for what is not UTF-8, and USAGE for an argument
/// without "=", a member given twice, and a member inside one that was given as something else than
/// an object.
Json::Value ReadMembers(const std::vector<std::string>& arguments, const TypeSchema& schema,
                        JsonMaker& make, Null null = Null::OF_TYPE,
                        const std::vector<HiddenValue>& hidden = {});

/// The members that such arguments give secrets to: those values that are shown as "***", but for null
/// and empty texts.
std::vector<std::string> FindSecretsGiven(const std::vector<std::string>& arguments,
                                          const TypeSchema& schema);

/// A filter that keeps the instances of a type that meet every condition; all of them when there is
/// none. Values are typed as those of ReadMembers, and dotted paths become conditions on objects
/// inside. Raises as ReadMembers does, ToolError INVALID for members that the type does not have,
/// with each of them, and ConfigStoreException 1037 when the type is not installed.
std::shared_ptr<TarnConfigStore::FilterSpecObject> MakeFilter(
    const TarnConfigStore::ConfigStoreObjectId& type, const std::vector<std::string>& conditions);

}  // namespace tarnctl
