// Typed access to the members of one JSON object.
#pragma once

#include "tarnconfigstore/export.h"
#include "tarnconfigstore/object_id.h"

#include <string>
#include <string_view>
#include <vector>

namespace TarnConfigStore {

class StoreObjectImpl;

namespace Internal {
struct Access;  // the library's own access to the handles' implementations
}  // namespace Internal

/// The data of a configuration object or of a filter: one JSON object whose members are named by
/// key. A key is a plain member name, never a path. A member whose value is null counts as absent.
///
/// Reads return 0 when the member is absent (the output is left as it was), 1 when the value is the
/// object's own, and 2 when it is the default that the type gives. Writes add the member at the
/// end, or overwrite its value in place whatever type it had; a member that holds null counts as
/// absent for them too, so writing to it adds a second member of the same name.
///
/// All operations raise, besides what they say themselves:
///   InvalidArgumentException 2000 "key cannot be empty" for an empty key (the typed reads and
///   writes); InvalidTypeException 2000 "Invalid type specified for: KEY" where the value is of
///   another type.
/// A failed scalar write leaves the data as it was.
///
/// A handle and its copies see the same data. One object must not be written by one thread while
/// another uses it; concurrent reads are safe.
class TARN_CONFIG_STORE_EXPORT StoreObject {
 public:
  const ConfigStoreObjectId& GetConfigStoreObjectId() const;

  /// True when the data has a member of this name, null-valued ones included.
  bool CheckKey(const char* key) const;

  // Scalar reads. Integers accept only numbers written without fraction or exponent that fit the
  // type; unsigned short and unsigned char accept what fits an unsigned int and return its low bits
  // unchecked. double accepts only numbers written with a fraction or an exponent: 5 is
  // refused, 5.0 is not.
  int GetValue(const char* key, std::string* out) const;
  int GetValue(const char* key, int* out) const;
  int GetValue(const char* key, long* out) const;
  int GetValue(const char* key, long long* out) const;
  int GetValue(const char* key, double* out) const;
  int GetValue(const char* key, unsigned int* out) const;
  int GetValue(const char* key, unsigned short* out) const;
  int GetValue(const char* key, unsigned char* out) const;
  int GetValue(const char* key, bool* out) const;

  // Scalar writes. Texts are copied and have to be UTF-8, which is checked when the object is
  // stored. A null text raises InvalidArgumentException 2000 "value cannot be null".
  void SetValue(const char* key, const std::string& value);
  void SetValue(const char* key, std::string_view value);
  void SetValue(const char* key, const char* value);
  void SetValue(const char* key, int value);
  void SetValue(const char* key, long value);
  void SetValue(const char* key, long long value);
  void SetValue(const char* key, double value);
  void SetValue(const char* key, float value);
  void SetValue(const char* key, unsigned int value);
  void SetValue(const char* key, unsigned short value);
  void SetValue(const char* key, unsigned char value);
  void SetValue(const char* key, bool value);

  // List reads. The output has to be empty, else InvalidArgumentException 2000 "Output vector must
  // be empty.". An element of another type raises ConfigStoreException 1082; the elements before it
  // stay in the output. A double list accepts integers too.
  int GetValue(const char* key, std::vector<int>* out) const;
  int GetValue(const char* key, std::vector<long long>* out) const;
  int GetValue(const char* key, std::vector<double>* out) const;
  int GetValue(const char* key, std::vector<bool>* out) const;
  int GetValue(const char* key, std::vector<std::string>* out) const;

  // Whole lists: the member is removed and added again at the end, as an array of these elements.
  void SetValue(const char* key, const std::vector<int>& values);
  void SetValue(const char* key, const std::vector<long long>& values);
  void SetValue(const char* key, const std::vector<double>& values);
  void SetValue(const char* key, const std::vector<bool>& values);
  void SetValue(const char* key, const std::vector<std::string>& values);

  /// The member becomes an empty list at the end of the object. The key is not checked.
  void SetValueEmptyList(const char* key);

  // Adds an element at the end of a list. The member must exist (else InvalidArgumentException 2000
  // "Key not found: KEY"), be a list, and its first element, if any, be of the same type.
  void AppendValue(const char* key, int value);
  void AppendValue(const char* key, long long value);
  void AppendValue(const char* key, double value);
  void AppendValue(const char* key, bool value);
  void AppendValue(const char* key, const std::string& value);
  void AppendValue(const char* key, const char* value);

  // Removes the first element that equals the value, if there is one. Checks as AppendValue; an
  // element of another type before the match raises ConfigStoreException 1082.
  void RemoveValue(const char* key, int value);
  void RemoveValue(const char* key, long long value);
  void RemoveValue(const char* key, double value);
  void RemoveValue(const char* key, bool value);
  void RemoveValue(const char* key, const std::string& value);
  void RemoveValue(const char* key, const char* value);

  /// Stores bytes as Base64 text (RFC 4648, standard alphabet with padding).
  /// \param length  number of bytes; 0, or a null pointer, raises InvalidArgumentException 2000
  void SetValueBinary(const char* key, const unsigned char* data, unsigned long length);

  /// Reads bytes back. Returns as the scalar reads do; when not 0, *data is a new array that the
  /// caller releases with delete[], of *length bytes. A text that is not Base64 raises
  /// ConfigStoreException 2000 "Failed to decode binary value" and leaves the outputs as they were.
  int GetValueBinary(const char* key, unsigned char** data, unsigned long* length) const;

  /// Removes a member, if it is there. The last member takes its place.
  void Remove(const char* key);

  /// True when there are no members.
  bool IsEmpty() const;

  /// The data as compact JSON text.
  std::string GetData() const;

  /// Replaces the data by a JSON text. A null pointer does nothing. A text that is not JSON, is not
  /// UTF-8, nests deeper than 128 levels or names a member twice raises InvalidArgumentException
  /// 1080, and the object keeps its data.
  void SetData(const char* json);

 protected:
  explicit StoreObject(StoreObjectImpl* implementation) : implementation_(implementation) {}
  ~StoreObject() = default;
  StoreObject(const StoreObject&) = default;
  StoreObject& operator=(const StoreObject&) = default;

 private:
  StoreObjectImpl* implementation_;  // kept alive by the derived handle
};

}  // namespace TarnConfigStore
