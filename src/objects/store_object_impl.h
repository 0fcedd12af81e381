// The JSON object behind StoreObject.
#pragma once

#include "tarnconfigstore/object_id.h"

#include "json/json_doc.h"
#include "objects/lookups.h"

#include <atomic>
#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace TarnConfigStore {

class SubObjectPlace;

/// Contracts as for StoreObject, whose operations forward to those of the same name here. Either a
/// whole object, which has a document of its own, or a view of an object within another one.
class StoreObjectImpl {
 public:
  explicit StoreObjectImpl(const ConfigStoreObjectId& id);
  /// Copies the value, if there is one, into the data.
  StoreObjectImpl(const ConfigStoreObjectId& id, const Json::Value* value);
  StoreObjectImpl(const StoreObjectImpl&) = delete;
  StoreObjectImpl& operator=(const StoreObjectImpl&) = delete;

  /// The value that a typed read of the key sees, or null; the filter object and plain objects know
  /// no defaults. The order of the virtual operations is fixed.
  virtual const Json::Value* GetValuePtrDefault(const char* key, bool& isDefault) const;
  virtual ~StoreObjectImpl();

  const ConfigStoreObjectId& GetConfigStoreObjectId() const { return id_; }
  /// The data. A view looks its place up each time, and raises ConfigStoreException 2000 when it is
  /// gone.
  const Json::Value& GetRoot() const {
    return document_ ? *document_->GetJsonValuePtr() : ViewedRoot();
  }
  Json::Value& GetRoot() {
    ForgetLookups();
    return RootForValues();
  }
  /// The same for those who change no member's name, and no instance id, or say so to the lookups.
  Json::Value& RootForValues() const {
    return document_ ? *document_->GetJsonValuePtr() : ViewedRoot();
  }
  /// The document of a whole object.
  const JsonDoc& GetDocument() const { return *document_; }
  /// Where everything in the data is allocated.
  Json::Allocator& GetAllocator();
  /// Puts another document in the place of a whole object's, and returns the one there was.
  std::shared_ptr<JsonDoc> ExchangeDocument(std::shared_ptr<JsonDoc> document) noexcept {
    ForgetLookups();
    document_.swap(document);
    return document;
  }
  /// Levels of nesting around the data; 0 for a whole object.
  std::size_t Depth() const;

  /// The first member of a name, whatever it holds; null when there is none.
  Json::Value* FindMember(std::string_view name) const;
  // The next two raise the JSON assertion where the data is no object.
  /// Adds a member at the end, whether or not there is one of its name.
  Json::Value& AddMember(std::string_view name, Json::Value&& value);
  /// Removes the first member of a name, if there is one; the last takes its place.
  void RemoveMember(std::string_view name);
  /// What is known of places in the data of the whole object.
  Lookups& GetLookups() const;
  /// The same; null while there is nothing to tell it.
  Lookups* FindLookups() const;
  /// To be called before names or ids change, or move, that the lookups are not told of.
  void ForgetLookups() const {
    if (Lookups* lookups = FindLookups()) {
      lookups->Forget();
    }
  }

  bool CheckKey(const char* key) const;

  // The typed family: one template for each operation, over the kinds of value in json_kinds.h.
  template <class T>
  int GetValue(const char* key, T* out) const;
  template <class T>
  int GetValue(const char* key, std::vector<T>* out) const;
  template <class T>
  void SetValue(const char* key, const T& value);
  void SetValue(const char* key, const char* value);
  template <class T>
  void SetValue(const char* key, const std::vector<T>& values);
  template <class T>
  void AppendValue(const char* key, const T& value);
  void AppendValue(const char* key, const char* value);
  template <class T>
  void RemoveValue(const char* key, const T& value);
  void RemoveValue(const char* key, const char* value);

  void SetValueEmptyList(const char* key);
  void SetValueBinary(const char* key, const unsigned char* data, unsigned long length);
  int GetValueBinary(const char* key, unsigned char** data, unsigned long* length) const;
  static bool EncodeBinary(const unsigned char* data, unsigned long length, std::string& out);
  static bool DecodeBinary(std::string& text, unsigned char** out, unsigned long* length);

  void Remove(const char* key);
  bool IsEmpty() const;
  std::string GetData() const;
  void SetData(const char* json);

 protected:
  /// A value of the data as text. Raises ConfigStoreException 2000 when it holds what JSON cannot
  /// say.
  std::string Serialized(const Json::Value& value) const;
  StoreObjectImpl(const ConfigStoreObjectId& id, std::shared_ptr<JsonDoc> document);
  /// A view. Its identifier has key and instance id only, so that no store takes it for a whole
  /// object.
  StoreObjectImpl(const SubObjectId& id, std::unique_ptr<const SubObjectPlace> place);

  /// Empty for a whole object.
  const SubObjectPlace* GetPlace() const { return view_.get(); }

  /// The member's value; null when the member is absent or holds null. Raises "key cannot be
  /// empty".
  const Json::Value* GetValuePtr(const char* key) const;
  Json::Value* GetValuePtr(const char* key);

  /// Overwrites the member's value in place, or adds the member at the end.
  void Assign(const char* key, Json::Value&& value);

 private:
  Json::Value& ViewedRoot() const;
  Json::Value& ListForChange(const char* key);
  const StoreObjectImpl& Whole() const;
  Json::Value* Find(Json::Value& root, std::string_view name) const;
  rapidjson::SizeType PositionIn(const Json::Value& root, std::string_view name) const;
  void ForgetIfId(std::string_view member) const;

  ConfigStoreObjectId id_;
  std::shared_ptr<JsonDoc> document_;  // empty for a view
  std::unique_ptr<const SubObjectPlace> view_;
  mutable std::atomic<Lookups*> lookups_{nullptr};  // of a whole object
};

}  // namespace TarnConfigStore
