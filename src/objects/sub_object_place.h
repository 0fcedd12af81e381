// Where an object within an object lies.
#pragma once

#include "tarnconfigstore/object_id.h"

#include "json/json.h"

#include <atomic>
#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace TarnConfigStore {

class StoreObjectImpl;

/// The place of a sub-object's data: a member of its parent's data or, where the member is an array
/// of instances, the element with its instance id. It is looked up at every use, through the
/// parent, so that nothing that happens to the parent's data leaves a pointer dangling. Keeps the
/// parent alive. Concurrent lookups are safe.
class SubObjectPlace {
 public:
  /// \param idMember  the member that holds an element's instance id; empty where the sub-object is
  ///                  the only one of its key
  /// \param index     the element to look at first
  SubObjectPlace(std::shared_ptr<StoreObjectImpl> parent, SubObjectId id, std::string idMember,
                 rapidjson::SizeType index = 0);

  /// The data, or null when there are none (any more). Raises InvalidTypeException where the member
  /// holds something else than such an object, or no array of them.
  Json::Value* Find() const;
  /// The same, raising ConfigStoreException 2000 when there are none.
  Json::Value& Get() const;

  /// Makes data that are empty but for the instance id. Only where there are none. A member that
  /// holds null is taken over. Raises ConfigStoreException 2000 where JSON would nest too deep.
  void Create() const;
  /// Takes the data out of the parent's; raises as Get.
  void Delete() const;
  /// Replaces the data by the object that a text holds; an instance keeps its id. Raises as Get, as
  /// CreateDocumentFromString, InvalidTypeException when the text holds no object, and
  /// InvalidArgumentException 2000 when it names another instance id; the data then stay as they
  /// are.
  void SetData(const char* json) const;

  const StoreObjectImpl& GetParent() const { return *parent_; }
  /// True for the member that the data are found by in their list.
  bool IsIdMember(std::string_view member) const { return IsInstance() && member == idMember_; }
  Json::Allocator& GetAllocator() const;
  /// Where among the instances the data were last found.
  std::optional<unsigned long> Index() const;
  /// Levels of nesting around the data.
  std::size_t Depth() const;

 private:
  bool IsInstance() const { return !idMember_.empty(); }
  rapidjson::SizeType PositionIn(const Json::Value& list) const;
  Json::Value IdValue() const;
  void KeepInstanceId(Json::Value& data) const;

  std::shared_ptr<StoreObjectImpl> parent_;
  SubObjectId id_;
  std::string idMember_;
  mutable std::atomic<rapidjson::SizeType> index_;
};

/// The array of instances in a member, or null when there is none. Raises InvalidTypeException
/// where the member holds something else.
Json::Value* FindInstances(const StoreObjectImpl& parent, const std::string& key);

}  // namespace TarnConfigStore
