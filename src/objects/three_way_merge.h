// Putting together two changes of the same data that nobody made one after the other.
#pragma once

#include "json/json.h"
#include "json/type_schema_view.h"

#include <functional>
#include <optional>
#include <string>

namespace TarnConfigStore {

/// One value as it was, as it is to be, and as it has become meanwhile. Null where there is none; what
/// holds null counts as none.
struct ThreeValues {
  const Json::Value* base = nullptr;
  const Json::Value* staged = nullptr;
  const Json::Value* current = nullptr;
};

/// A place at which the current value is not the base any more.
struct ChangedMeanwhile {
  /// JSON Pointer. Elements of lists of instances are named by their ids; where those are generated,
  /// by their places in the staged list or, where it lacks them, in the current or the base's.
  const std::string& pointer;
  const ThreeValues& values;
  Json::SchemaPlace place;
  /// What is staged is neither the base nor the current value.
  bool conflicts;
};
using MeanwhileVisitor = std::function<void(const ChangedMeanwhile&)>;

/// Lays what changed between base and current, and what changed between base and staged, over the
/// base. Where only one side changed a value, that side's comes out; so it does where both made the same
/// change. Else there is a conflict.
///
/// - Objects merge member by member, where both sides have one and the base has one or nothing.
/// - Lists whose elements have instance ids that tell them apart merge element by element in the
///   same way; those with generated ids only while both sides kept some of the base's, since whoever
///   makes such a list anew gets new ids. The order is the staged one, or the current one where only
///   that changed; elements that the other side has follow the one that they follow there. Two
///   different new orders are a conflict of the list.
/// - Everything else is one value, and so is a secret. Generated ids do not count.
///
/// \param currentWins  conflicts come out as the current value, else as the staged one
/// \param visit        gets each place that changed meanwhile; may be empty
/// \return what comes out; nothing where that is no value
std::optional<Json::Value> MergeThreeWay(const ThreeValues& values, Json::SchemaPlace place,
                                         bool currentWins, Json::Allocator& allocator,
                                         const MeanwhileVisitor& visit);

}  // namespace TarnConfigStore
