// What an update takes away: members that it gives as null, and lists and objects that it gives as
// empty.
#pragma once

#include "tarnconfigstore/exceptions.h"

#include "json/json.h"
#include "json/type_schema_view.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace TarnConfigStore {

/// Where an update names something to take away, through objects and through the elements of lists of
/// instances, which it finds again by their ids; within any other list a null is a value. Refers to
/// the data that it was collected from, which stay as they are while this lives.
class Removals {
 public:
  /// \param type  the place of the object in its type
  Removals(const Json::Value& given, Json::SchemaPlace type);

  bool Empty() const { return removals_.empty(); }
  bool HasNulls() const;
  /// The parts that something is taken away from, as bits of Json::Kind.
  unsigned Kinds() const;

  /// Takes the nulls out of (a copy of) the data, and the objects that held nothing else: they would
  /// be made where there are none. What was given as empty stays, to be laid over.
  void TakeNullsFrom(Json::Value& data) const;

  /// Takes away what a part holds. Answers whether there was anything.
  bool TakeFrom(Json::Value& part) const;

  /// Adds a finding for each that is still there in what came out of the update.
  /// \param holder  the part that was not the caller's to change
  void CheckGone(const Json::Value& result, const char* holder,
                 std::vector<ErrorInfo>& findings) const;

 private:
  // Into a member and, where an id is named, on into that element.
  struct Step {
    std::string_view member;
    std::string_view idMember;
    std::string_view id;
  };
  struct Removal {
    std::vector<Step> way;
    std::string_view member;
    bool isNull;
    unsigned kinds;
    std::string pointer;
  };

  void Collect(const Json::Value& object, Json::SchemaPlace place, std::vector<Step>& way,
               std::string& pointer);
  void CollectElements(const Json::Value& array, std::string_view member, Json::SchemaPlace items,
                       std::vector<Step>& way, std::string& pointer);
  static Json::Value* Follow(const std::vector<Step>& way, std::size_t steps, Json::Value& root);
  static void EraseEmptied(const std::vector<Step>& way, Json::Value& root);
  /// The object whose member is meant, or null.
  static Json::Value* Holder(const Removal& removal, Json::Value& root);

  std::vector<Removal> removals_;
};

}  // namespace TarnConfigStore
