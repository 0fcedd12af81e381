#include "objects/store_object_impl.h"

#include "platform/config_store_document.h"

#include "errors/raise.h"
#include "objects/document.h"
#include "objects/json_kinds.h"
#include "objects/sub_object_place.h"

#include <utility>

namespace TarnConfigStore {
namespace {

// What reads return: the value's origin.
constexpr int kAbsent = 0;
int Origin(bool isDefault) {
  return isDefault ? 2 : 1;
}

void RequireText(const char* value) {
  if (value == nullptr) {
    ThrowArgument("value cannot be null");
  }
}

}  // namespace

StoreObjectImpl::StoreObjectImpl(const ConfigStoreObjectId& id) : StoreObjectImpl(id, nullptr) {}

StoreObjectImpl::StoreObjectImpl(const ConfigStoreObjectId& id, const Json::Value* value)
    : id_(id), document_(CreateDocument()) {
  GetRoot().SetObject();
  if (value != nullptr) {
    GetRoot().CopyFrom(*value, GetAllocator());
  }
}

StoreObjectImpl::StoreObjectImpl(const ConfigStoreObjectId& id, std::shared_ptr<JsonDoc> document)
    : id_(id), document_(std::move(document)) {}

StoreObjectImpl::StoreObjectImpl(const SubObjectId& id, std::unique_ptr<const SubObjectPlace> place)
    : id_(id.key, kEmptyString, kEmptyString, id.instanceId), view_(std::move(place)) {}

StoreObjectImpl::~StoreObjectImpl() {
  delete lookups_.load(std::memory_order_acquire);
}

const Json::Value* StoreObjectImpl::GetValuePtrDefault(const char* key, bool& isDefault) const {
  isDefault = false;
  return GetValuePtr(key);
}

Json::Value& StoreObjectImpl::ViewedRoot() const {
  if (!view_) {
    ThrowFailure("The object was made without data: " + id_.toString());
  }
  return view_->Get();
}

Json::Allocator& StoreObjectImpl::GetAllocator() {
  return view_ ? view_->GetAllocator() : document_->GetAllocator();
}

std::size_t StoreObjectImpl::Depth() const {
  return view_ ? view_->Depth() : 0;
}

bool StoreObjectImpl::CheckKey(const char* key) const {
  return key != nullptr && Find(RootForValues(), key) != nullptr;
}

const Json::Value* StoreObjectImpl::GetValuePtr(const char* key) const {
  if (key == nullptr || *key == '\0') {
    ThrowArgument("key cannot be empty");
  }
  const Json::Value* value = Find(RootForValues(), key);
  return value == nullptr || value->IsNull() ? nullptr : value;
}

Json::Value* StoreObjectImpl::GetValuePtr(const char* key) {
  return const_cast<Json::Value*>(std::as_const(*this).GetValuePtr(key));
}

void StoreObjectImpl::Assign(const char* key, Json::Value&& value) {
  ForgetIfId(key);
  if (Json::Value* member = GetValuePtr(key)) {
    *member = std::move(value);
  } else {
    AddMember(key, std::move(value));
  }
}

template <class T>
int StoreObjectImpl::GetValue(const char* key, T* out) const {
  bool isDefault = false;
  const Json::Value* value = GetValuePtrDefault(key, isDefault);
  if (value == nullptr) {
    return kAbsent;
  }
  if (!JsonKind<T>::Accepts(*value)) {
    ThrowInvalidType(key);
  }
  *out = JsonKind<T>::Get(*value);
  return Origin(isDefault);
}

template <class T>
int StoreObjectImpl::GetValue(const char* key, std::vector<T>* out) const {
  if (!out->empty()) {
    ThrowArgument("Output vector must be empty.");
  }
  bool isDefault = false;
  const Json::Value* value = GetValuePtrDefault(key, isDefault);
  if (value == nullptr) {
    return kAbsent;
  }
  if (!value->IsArray()) {
    ThrowInvalidType(key);
  }
  out->reserve(value->Size());
  for (const Json::Value& element : value->GetArray()) {
    out->push_back(JsonKind<T>::Get(element));
  }
  return Origin(isDefault);
}

template <class T>
void StoreObjectImpl::SetValue(const char* key, const T& value) {
  GetValuePtr(key);  // the key is checked before anything is allocated
  Assign(key, JsonKind<T>::Make(value, GetAllocator()));
}

void StoreObjectImpl::SetValue(const char* key, const char* value) {
  RequireText(value);
  SetValue(key, std::string_view(value));
}

void StoreObjectImpl::AppendValue(const char* key, const char* value) {
  RequireText(value);
  AppendValue(key, std::string(value));
}

void StoreObjectImpl::RemoveValue(const char* key, const char* value) {
  RequireText(value);
  RemoveValue(key, std::string(value));
}

template <class T>
void StoreObjectImpl::SetValue(const char* key, const std::vector<T>& values) {
  SetValueEmptyList(key);
  for (const T& value : values) {
    AppendValue(key, value);
  }
}

template <class T>
void StoreObjectImpl::AppendValue(const char* key, const T& value) {
  Json::Value& list = ListForChange(key);
  if (!list.Empty() && !JsonKind<T>::Accepts(list[0])) {
    ThrowInvalidType(key);
  }
  list.PushBack(JsonKind<T>::Make(value, GetAllocator()), GetAllocator());
}

template <class T>
void StoreObjectImpl::RemoveValue(const char* key, const T& value) {
  Json::Value& list = ListForChange(key);
  if (!list.Empty() && !JsonKind<T>::Accepts(list[0])) {
    ThrowInvalidType(key);
  }
  ForgetLookups();  // elements move
  for (auto element = list.Begin(); element != list.End(); ++element) {
    if (JsonKind<T>::Get(*element) == value) {
      list.Erase(element);
      return;
    }
  }
}

Json::Value& StoreObjectImpl::ListForChange(const char* key) {
  if (!CheckKey(key)) {
    ThrowArgument(std::string("Key not found: ") + (key == nullptr ? "" : key));
  }
  Json::Value* list = GetValuePtr(key);
  if (list == nullptr || !list->IsArray()) {
    ThrowInvalidType(key);
  }
  return *list;
}

void StoreObjectImpl::SetValueEmptyList(const char* key) {
  if (key == nullptr) {
    ThrowArgument("key cannot be empty");
  }
  Remove(key);
  AddMember(key, Json::Value(rapidjson::kArrayType));
}

void StoreObjectImpl::Remove(const char* key) {
  if (key != nullptr) {
    RemoveMember(key);
  }
}

bool StoreObjectImpl::IsEmpty() const {
  return GetRoot().ObjectEmpty();
}

std::string StoreObjectImpl::Serialized(const Json::Value& value) const {
  std::string text;
  if (!ConfigStoreDocument::SerializeValue(value, text)) {
    ThrowFailure("The data holds a text that is not UTF-8 or a number that is not finite: " +
                 id_.toString());
  }
  return text;
}

std::string StoreObjectImpl::GetData() const {
  return Serialized(GetRoot());
}

void StoreObjectImpl::SetData(const char* json) {
  if (json == nullptr) {
    return;
  }
  if (view_) {
    view_->SetData(json);
  } else {
    auto document = CreateDocumentFromString(json, Json::Origin::OUTSIDE);
    ForgetLookups();
    document_ = std::move(document);
  }
}

// The argument is a type. NOLINTNEXTLINE(bugprone-macro-parentheses)
#define TARN_SCALAR_READ(T) template int StoreObjectImpl::GetValue(const char*, T*) const;
#define TARN_SCALAR_WRITE(T) template void StoreObjectImpl::SetValue(const char*, const T&);
#define TARN_LIST(T)                                                           \
  template int StoreObjectImpl::GetValue(const char*, std::vector<T>*) const;  \
  template void StoreObjectImpl::SetValue(const char*, const std::vector<T>&); \
  template void StoreObjectImpl::AppendValue(const char*, const T&);           \
  template void StoreObjectImpl::RemoveValue(const char*, const T&);
TARN_SCALAR_READ(std::string)
TARN_SCALAR_READ(int)
TARN_SCALAR_READ(long)
TARN_SCALAR_READ(long long)
TARN_SCALAR_READ(double)
TARN_SCALAR_READ(unsigned int)
TARN_SCALAR_READ(unsigned short)
TARN_SCALAR_READ(unsigned char)
TARN_SCALAR_READ(unsigned long long)
TARN_SCALAR_READ(bool)
TARN_SCALAR_WRITE(std::string)
TARN_SCALAR_WRITE(std::string_view)
TARN_SCALAR_WRITE(int)
TARN_SCALAR_WRITE(long)
TARN_SCALAR_WRITE(long long)
TARN_SCALAR_WRITE(double)
TARN_SCALAR_WRITE(float)
TARN_SCALAR_WRITE(unsigned int)
TARN_SCALAR_WRITE(unsigned short)
TARN_SCALAR_WRITE(unsigned char)
TARN_SCALAR_WRITE(unsigned long long)
TARN_SCALAR_WRITE(bool)
TARN_LIST(int)
TARN_LIST(long long)
TARN_LIST(double)
TARN_LIST(bool)
TARN_LIST(std::string)
#undef TARN_SCALAR_READ
#undef TARN_SCALAR_WRITE
#undef TARN_LIST

}  // namespace TarnConfigStore
