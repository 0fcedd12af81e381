// A configuration object: its data, and what the store knows about it.
#pragma once

#include "tarnconfigstore/store_object.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace TarnConfigStore {

class ConfigStoreObjectImpl;

/// One configuration object of one type. Callers build it from an identifier or get it from a
/// store, change it through the accessors of StoreObject, and hand it back to a store. Passed
/// around as a shared pointer; thread safety is that of StoreObject.
///
/// An object may hold others, in the members that its type describes as objects (singletons) or as
/// arrays of instances. A sub-object is a ConfigStoreObject too, with sub-objects of its own, and
/// is a view: it has no data but its place in its parent's, which it keeps alive, and counts as one
/// object with it for thread safety. A change of one is seen in the other, and the view follows its
/// place whatever becomes of the parent: new data, more, fewer or reordered instances. An instance
/// is known by its instance id; writing another one into the member that holds it makes the views
/// of it lose their place. When its place is gone, every use of the data raises
/// ConfigStoreException 2000 "Subobject does not exists." or "Subobject instance does not exists.".
///
/// The identifier of a sub-object has key and instance id only: no store takes it. Version, times
/// and revision are those of the whole object. SetData replaces the data in their place; the text
/// has to be an object (else InvalidTypeException), and an instance keeps its id where the text
/// does not name it (naming another raises InvalidArgumentException 2000).
class TARN_CONFIG_STORE_EXPORT ConfigStoreObject : public StoreObject {
 public:
  /// A new object without data, but for the member that carries the instance id in types that have
  /// one. Raises ConfigStoreException 1037, with the identifier's text, when the type is not
  /// installed.
  explicit ConfigStoreObject(const ConfigStoreObjectId& id);

  /// Version of the type's schema under which the object was stored; empty for a new object.
  std::string GetVersion() const;
  /// Time of the first write, "YYYY-MM-DD HH:MM:SS" in UTC; empty for a new object.
  std::string GetCreationTime() const;
  /// Time of the last change, in the same form; empty for a new object.
  std::string GetModifiedTime() const;
  /// Number of writes; kDefaultRevision for a new object.
  std::int32_t GetRevision() const;

  /// The data as compact JSON text, without the generated identifiers ("cs_generated_id") that the
  /// store keeps inside.
  std::string GetData() const;

  /// The value that a JSON Pointer (RFC 6901) leads to in the data, as compact JSON text without
  /// generated identifiers, which no pointer leads to either; the empty pointer leads to all of the
  /// data. Nothing where there is no value, or null; the type's defaults are not asked. Raises
  /// InvalidArgumentException 2000 "Not a JSON Pointer: TEXT" for a text that is none.
  std::optional<std::string> GetPath(const std::string& pointer) const;

  // Sub-objects. All raise, besides what they say themselves:
  //   InvalidArgumentException 2000 for an empty key, for an instance id where the key has no
  //   instances, and for none where it has; InvalidTypeException where the data of the member are
  //   not as the type describes them; ConfigStoreException 2000 for a key that the type describes
  //   neither as an object nor as an array of objects.
  // A member that holds null counts as absent.

  /// Adds a sub-object without data, but for its instance id, at the end. A null-valued member is
  /// written over. Where the type has the store generate the instance ids, an empty one asks for
  /// that; the identifier of what is returned tells which.
  /// Raises ConfigStoreException 2000 "Object already exists." when there is one, and the same code
  /// when the data would nest deeper than 128 levels.
  std::shared_ptr<ConfigStoreObject> CreateSubObject(const SubObjectId& id);

  /// The sub-object, or an empty pointer when there is none.
  std::shared_ptr<ConfigStoreObject> GetSubObject(const SubObjectId& id);

  /// All sub-objects of a key, in their order. Where the store generates the instance ids, those
  /// that have none yet get one, so this counts as a write. Raises ConfigStoreException 2000
  /// "Schema error:Expected array type" where the key has no instances, and 1032 with the name of
  /// the id's member when an instance has no id.
  std::vector<std::shared_ptr<ConfigStoreObject>> GetSubObjectInstances(const std::string& key);

  /// Removes a sub-object. Other instances keep their order, other members as with Remove. Raises
  /// ConfigStoreException 2000 "Subobject does not exists." or "Subobject instance does not
  /// exists." when there is none.
  void DeleteSubObject(const SubObjectId& id);

  /// Removes all sub-objects of a key, if there are any. Raises as GetSubObjectInstances does for a
  /// key without instances.
  void DeleteSubObjectInstances(const std::string& key);

 private:
  friend struct Internal::Access;
  explicit ConfigStoreObject(std::shared_ptr<ConfigStoreObjectImpl> const& implementation);

  std::shared_ptr<ConfigStoreObjectImpl> object_;
};

}  // namespace TarnConfigStore
