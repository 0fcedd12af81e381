#include "tarnconfigstore/store_object.h"

#include "objects/store_object_impl.h"

namespace TarnConfigStore {

const ConfigStoreObjectId& StoreObject::GetConfigStoreObjectId() const {
  return implementation_->GetConfigStoreObjectId();
}

bool StoreObject::CheckKey(const char* key) const {
  return implementation_->CheckKey(key);
}

// The typed family forwards overload by overload; a table keeps the two in step. The arguments are
// types. NOLINTBEGIN(bugprone-macro-parentheses)
#define TARN_READ(T)                                         \
  int StoreObject::GetValue(const char* key, T* out) const { \
    return implementation_->GetValue(key, out);              \
  }
#define TARN_WRITE(T)                                    \
  void StoreObject::SetValue(const char* key, T value) { \
    implementation_->SetValue(key, value);               \
  }
#define TARN_CHANGE(T)                                      \
  void StoreObject::AppendValue(const char* key, T value) { \
    implementation_->AppendValue(key, value);               \
  }                                                         \
  void StoreObject::RemoveValue(const char* key, T value) { \
    implementation_->RemoveValue(key, value);               \
  }
// NOLINTEND(bugprone-macro-parentheses)
TARN_READ(std::string)
TARN_READ(int)
TARN_READ(long)
TARN_READ(long long)
TARN_READ(double)
TARN_READ(unsigned int)
TARN_READ(unsigned short)
TARN_READ(unsigned char)
TARN_READ(unsigned long long)
TARN_READ(bool)
TARN_READ(std::vector<int>)
TARN_READ(std::vector<long long>)
TARN_READ(std::vector<double>)
TARN_READ(std::vector<bool>)
TARN_READ(std::vector<std::string>)
TARN_WRITE(const std::string&)
TARN_WRITE(std::string_view)
TARN_WRITE(const char*)
TARN_WRITE(int)
TARN_WRITE(long)
TARN_WRITE(long long)
TARN_WRITE(double)
TARN_WRITE(float)
TARN_WRITE(unsigned int)
TARN_WRITE(unsigned short)
TARN_WRITE(unsigned char)
TARN_WRITE(unsigned long long)
TARN_WRITE(bool)
TARN_WRITE(const std::vector<int>&)
TARN_WRITE(const std::vector<long long>&)
TARN_WRITE(const std::vector<double>&)
TARN_WRITE(const std::vector<bool>&)
TARN_WRITE(const std::vector<std::string>&)
TARN_CHANGE(int)
TARN_CHANGE(long long)
TARN_CHANGE(double)
TARN_CHANGE(bool)
TARN_CHANGE(const std::string&)
#undef TARN_READ
#undef TARN_WRITE
#undef TARN_CHANGE

void StoreObject::AppendValue(const char* key, const char* value) {
  implementation_->AppendValue(key, value);
}

void StoreObject::RemoveValue(const char* key, const char* value) {
  implementation_->RemoveValue(key, value);
}

void StoreObject::SetValueEmptyList(const char* key) {
  implementation_->SetValueEmptyList(key);
}

void StoreObject::SetValueBinary(const char* key, const unsigned char* data, unsigned long length) {
  implementation_->SetValueBinary(key, data, length);
}

int StoreObject::GetValueBinary(const char* key, unsigned char** data,
                                unsigned long* length) const {
  return implementation_->GetValueBinary(key, data, length);
}

void StoreObject::Remove(const char* key) {
  implementation_->Remove(key);
}

bool StoreObject::IsEmpty() const {
  return implementation_->IsEmpty();
}

std::string StoreObject::GetData() const {
  return implementation_->GetData();
}

void StoreObject::SetData(const char* json) {
  implementation_->SetData(json);
}

}  // namespace TarnConfigStore
