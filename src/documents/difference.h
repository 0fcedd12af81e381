// Where two values of a type differ.
#pragma once

#include "json/json.h"
#include "json/type_schema_view.h"

#include <functional>
#include <string>

namespace TarnConfigStore {

/// Gets each place that differs: what is expected and what is found there, null where there is
/// nothing. Elements of lists of instances are named by their ids.
using DifferenceVisitor =
    std::function<void(const std::string& pointer, const Json::Value* expected,
                       const Json::Value* found, Json::SchemaPlace place)>;

/// Compares two values, either of which may be null: nothing is there then, and so it is with what
/// holds null. Ids that the store generates do not count. Where the elements of a list of instances are
/// the same in another order, the list differs.
/// \param pointer  of the place, as it is to be given out
void FindDifferences(const Json::Value* expected, const Json::Value* found, Json::SchemaPlace place,
                     const std::string& pointer, const DifferenceVisitor& visit);

}  // namespace TarnConfigStore
