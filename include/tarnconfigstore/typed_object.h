// Instances to walk over, and what the classes that `tarnctl schema generate-cpp` writes stand on.
#pragma once

#include "tarnconfigstore/config_store.h"
#include "tarnconfigstore/object_text.h"
#include "tarnconfigstore/typed_values.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

namespace TarnConfigStore {

/// Reads the instances of a type, in the order of their ids:
///
///     for (const auto& object : InstancesOf(*store, ParseObjectId("tarn/network/switches"))) ...
///
/// \param type  with an instance id, that instance alone
/// \throws as ConfigStore::GetInstances
inline std::vector<std::shared_ptr<ConfigStoreObject>> InstancesOf(
    ConfigStore& store, const ConfigStoreObjectId& type) {
  return store.GetInstances(std::make_shared<FilterSpecObject>(type));
}

/// A value that a member of type T is to be set to, as generated classes take it: where T is an
/// integer any integer, where it is floating point any number, for bool and std::string the same and
/// nothing that turns into it. So nothing is cut on the way: what does not fit is refused when it is
/// written, with the member's name. For arguments only: it does not own texts.
template <class T>
class Given {
 public:
  template <class V,
            class = std::enable_if_t<
                std::is_same_v<T, V> || (Internal::kIsInteger<T> && Internal::kIsInteger<V>) ||
                (Internal::kIsFloat<T> && (Internal::kIsInteger<V> || Internal::kIsFloat<V>))>>
  Given(V value) : fits_(Fits(value)), value_(fits_ ? static_cast<T>(value) : T{}) {}

  void WriteTo(StoreObject& object, const char* key) const {
    if (!fits_) {
      Internal::RaiseUnfitWrite(key);
    }
    object.Set(key, value_);
  }

 private:
  template <class V>
  static bool Fits(V value) {
    if constexpr (std::is_same_v<T, V>) {
      return true;  // the write itself judges what is not finite
    } else {
      return Internal::NumberFits<T>(value);
    }
  }

  bool fits_;
  T value_;
};

template <>
class Given<std::string> {
 public:
  Given(const char* text) : text_(text == nullptr ? "" : text), isNull_(text == nullptr) {}
  Given(std::string_view text) : text_(text) {}
  Given(const std::string& text) : text_(text) {}

  void WriteTo(StoreObject& object, const char* key) const {
    isNull_ ? object.Set(key, static_cast<const char*>(nullptr)) : object.Set(key, text_);
  }

 private:
  std::string_view text_;
  bool isNull_ = false;
};

/// A handle with accessors for the members that a type describes; what generated classes derive from.
/// Copies share the object. Thread safety is that of StoreObject.
class TypedPart {
 public:
  /// \param object  a part of an object as the type describes it, which is not checked
  /// \throws InvalidArgumentException 2000 for an empty pointer
  explicit TypedPart(std::shared_ptr<ConfigStoreObject> object) : object_(std::move(object)) {
    if (!object_) {
      throw InvalidArgumentException(CS_GENERIC, "value cannot be null");
    }
  }

  /// The object itself: to be stored, and for what has no accessor.
  const std::shared_ptr<ConfigStoreObject>& Object() const { return object_; }
  /// Its instance id; empty where it is the only one.
  const std::string& InstanceId() const { return object_->GetConfigStoreObjectId().instanceId; }

 protected:
  // For the accessors of parts, which throw what the object throws. An absent part is nothing. No
  // accessor is called as these are.
  template <class Part>
  std::optional<Part> PartAt(const char* key, const std::string& instanceId = {}) const {
    auto part = object_->GetSubObject(SubObjectId(key, instanceId));
    return part ? std::optional<Part>(Part(std::move(part))) : std::nullopt;
  }
  template <class Part>
  Part PartMadeAt(const char* key, const std::string& instanceId = {}) const {
    auto part = PartAt<Part>(key, instanceId);
    return part ? *std::move(part) : Part(object_->CreateSubObject(SubObjectId(key, instanceId)));
  }
  template <class Part>
  Part NewPartAt(const char* key) const {
    return Part(object_->CreateSubObject(SubObjectId(key)));
  }
  template <class Part>
  std::vector<Part> PartsAt(const char* key) const {
    std::vector<Part> parts;
    for (auto& part : object_->GetSubObjectInstances(key)) {
      parts.push_back(Part(std::move(part)));
    }
    return parts;
  }
  void PartRemovedAt(const char* key, const std::string& instanceId) const {
    const SubObjectId id(key, instanceId);
    if (object_->GetSubObject(id)) {
      object_->DeleteSubObject(id);
    }
  }

 private:
  std::shared_ptr<ConfigStoreObject> object_;
};

/// A whole object of one type. `Typed` derives from it, and says by Type() which type that is.
template <class Typed>
class TypedObject : public TypedPart {
 public:
  /// \throws InvalidArgumentException 2000 for an empty pointer and for an object of another type
  explicit TypedObject(std::shared_ptr<ConfigStoreObject> object) : TypedPart(std::move(object)) {
    const ConfigStoreObjectId& id = Object()->GetConfigStoreObjectId();
    const ConfigStoreObjectId type = Typed::Type();
    if (id.component != type.component || id.group != type.group || id.key != type.key) {
      throw InvalidArgumentException(
          CS_GENERIC, (FormatObjectId(id) + " is no " + FormatObjectId(type)).c_str());
    }
  }

 protected:
  static ConfigStoreObjectId Named(const std::string& instanceId) {
    ConfigStoreObjectId id = Typed::Type();
    id.instanceId = instanceId;
    return id;
  }
  static std::shared_ptr<ConfigStoreObject> NewObject(const std::string& instanceId = {}) {
    return std::make_shared<ConfigStoreObject>(Named(instanceId));
  }
  static std::optional<Typed> ReadOne(ConfigStore& store, const std::string& instanceId = {}) {
    auto object = store.Get(Named(instanceId));
    return object ? std::optional<Typed>(Typed(std::move(object))) : std::nullopt;
  }
  static std::vector<Typed> ReadInstances(ConfigStore& store) {
    std::vector<Typed> all;
    for (auto& object : InstancesOf(store, Typed::Type())) {
      all.push_back(Typed(std::move(object)));
    }
    return all;
  }
};

}  // namespace TarnConfigStore
