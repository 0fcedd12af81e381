// Typed access to the members of one JSON object.
#pragma once

#include "tarnconfigstore/export.h"
#include "tarnconfigstore/object_id.h"

#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

namespace TarnConfigStore {

class StoreObjectImpl;

namespace Internal {
struct Access;  // the library's own access to the handles' implementations
}  // namespace Internal

/// How a member is read and written as a type of C++. typed_values.h has it for each type that there
/// is; of others it stays incomplete, and using them does not compile.
template <class T, class = void>
struct TypedValue;

/// The data of a configuration object or of a filter: one JSON object (RFC 8259).
///
/// A key is the name of a member of that object, never a path. A member that holds null counts as
/// absent.
///
/// Reads return where the value came from:
///   0  the member is absent, and the output keeps its value;
///   1  the value is the object's own;
///   2  the value is the default that the type gives.
///
/// Writes overwrite the member's value, whatever its type, or add the member at the end. To a
/// write, too, a member that holds null is absent: it adds a second member of that name, and reads
/// go on to find the first. Remove the member before writing to it.
///
/// Unless a function says otherwise, it throws
///   InvalidArgumentException 2000 "key cannot be empty" for an empty or null key,
///   InvalidTypeException 2000 "Invalid type specified for: KEY" for a value of another type, and
///   ConfigStoreException 1082 when the data is no JSON object (see SetData).
/// A failed read leaves its output as it was, a failed write the data, except for lists.
///
/// A handle and its copies share the data. Concurrent reads are safe. One thread at a time may use
/// an object that is being written.
class TARN_CONFIG_STORE_EXPORT StoreObject {
 public:
  /// \return the identifier that the object was made with, valid as long as the object
  const ConfigStoreObjectId& GetConfigStoreObjectId() const;

  /// \return true when there is a member of this name, even if it holds null. False for a null key
  bool CheckKey(const char* key) const;

  /// Reads one value.
  /// \param out  int, long, long long and unsigned long long take integers that fit them; a number
  ///             that was written with a fraction or an exponent is no integer. unsigned int takes
  ///             integers that fit it; unsigned short and unsigned char take the same ones and keep
  ///             the low bits. double takes numbers that were written with a fraction or an
  ///             exponent: 5.0, not 5
  /// \return 0, 1 or 2, see the class
  int GetValue(const char* key, std::string* out) const;
  int GetValue(const char* key, int* out) const;
  int GetValue(const char* key, long* out) const;
  int GetValue(const char* key, long long* out) const;
  int GetValue(const char* key, double* out) const;
  int GetValue(const char* key, unsigned int* out) const;
  int GetValue(const char* key, unsigned short* out) const;
  int GetValue(const char* key, unsigned char* out) const;
  int GetValue(const char* key, unsigned long long* out) const;
  int GetValue(const char* key, bool* out) const;

  /// Writes one value.
  /// \param value  a text is copied. It has to be UTF-8, which is checked when the object is stored
  /// \throws InvalidArgumentException 2000 "value cannot be null" for a null text
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
  void SetValue(const char* key, unsigned long long value);
  void SetValue(const char* key, bool value);

  /// Reads one value or a list as a type that typed_values.h knows: include that header, or typed.h.
  /// Nothing is cut: a value that does not fit is an InvalidTypeException that names the member.
  /// \return the value, the object's own or the type's default; nothing where the member is absent
  template <class T>
  std::optional<T> Get(const char* key) const {
    return TypedValue<T>::Read(*this, key);
  }

  /// Writes one value or a list of such a type. Unlike SetValue, it takes the place of a null.
  template <class T>
  void Set(const char* key, const T& value) {
    TypedValue<std::decay_t<const T&>>::Write(*this, key, value);
  }

  /// Reads a list.
  /// \param out  an empty vector. double takes every number, unlike the read of one value
  /// \return 0, 1 or 2, see the class
  /// \throws InvalidArgumentException 2000 "Output vector must be empty."
  /// \throws ConfigStoreException 1082 for an element of another type; the elements before it stay
  ///         in the output
  int GetValue(const char* key, std::vector<int>* out) const;
  int GetValue(const char* key, std::vector<long long>* out) const;
  int GetValue(const char* key, std::vector<double>* out) const;
  int GetValue(const char* key, std::vector<bool>* out) const;
  int GetValue(const char* key, std::vector<std::string>* out) const;

  /// Writes a whole list. Removes the member, adds it again at the end, and appends the values. A
  /// failure leaves the elements that were appended by then.
  void SetValue(const char* key, const std::vector<int>& values);
  void SetValue(const char* key, const std::vector<long long>& values);
  void SetValue(const char* key, const std::vector<double>& values);
  void SetValue(const char* key, const std::vector<bool>& values);
  void SetValue(const char* key, const std::vector<std::string>& values);

  /// Removes the member, and adds it again at the end as an empty list. Takes an empty key, too.
  void SetValueEmptyList(const char* key);

  /// Adds an element at the end of a list. Only the first element is checked for its type.
  /// \throws InvalidArgumentException 2000 "Key not found: KEY" when there is no such member
  /// \throws InvalidTypeException 2000 when the member is no list, or its first element has another
  ///         type
  /// \throws InvalidArgumentException 2000 "value cannot be null" for a null text
  void AppendValue(const char* key, int value);
  void AppendValue(const char* key, long long value);
  void AppendValue(const char* key, double value);
  void AppendValue(const char* key, bool value);
  void AppendValue(const char* key, const std::string& value);
  void AppendValue(const char* key, const char* value);

  /// Removes the first element that equals the value; does nothing when there is none. Throws as
  /// AppendValue, and
  /// \throws ConfigStoreException 1082 for an element of another type before the one that is
  ///         removed
  void RemoveValue(const char* key, int value);
  void RemoveValue(const char* key, long long value);
  void RemoveValue(const char* key, double value);
  void RemoveValue(const char* key, bool value);
  void RemoveValue(const char* key, const std::string& value);
  void RemoveValue(const char* key, const char* value);

  /// Writes bytes as Base64 text (RFC 4648, standard alphabet with padding).
  /// \param length  number of bytes
  /// \throws InvalidArgumentException 2000 "Value pointer cannot be null and length cannot be zero"
  /// \throws ConfigStoreException 2000 "Failed to encode input binary value"
  void SetValueBinary(const char* key, const unsigned char* data, unsigned long length);

  /// Reads bytes that are kept as Base64 text.
  /// \param data    becomes a new array, which the caller releases with delete[]
  /// \param length  becomes the number of bytes
  /// \return 0, 1 or 2, see the class
  /// \throws ConfigStoreException 2000 "Failed to decode binary value" for a text that is no Base64
  int GetValueBinary(const char* key, unsigned char** data, unsigned long* length) const;

  /// Removes a member; does nothing when there is none. The last member takes its place. Takes an
  /// empty or null key, too.
  void Remove(const char* key);

  /// \return true when there are no members
  bool IsEmpty() const;

  /// \return the data as compact JSON text
  /// \throws ConfigStoreException 2000 when it holds a text that is not UTF-8 or a number that is
  ///         not finite
  std::string GetData() const;

  /// Replaces the data.
  /// \param json  a JSON text of UTF-8, of at most 128 levels, without a name twice in one object;
  ///              a null pointer changes nothing. The value should be an object: any other is kept,
  ///              but every access by key throws ConfigStoreException 1082 then
  /// \throws InvalidArgumentException 1080 for any other text; the object keeps its data
  void SetData(const char* json);

 protected:
  // For the handles that derive from this one, and own the implementation.
  explicit StoreObject(StoreObjectImpl* implementation) : implementation_(implementation) {}
  ~StoreObject() = default;
  StoreObject(const StoreObject&) = default;
  StoreObject& operator=(const StoreObject&) = default;

 private:
  StoreObjectImpl* implementation_;  // owned by the derived handle
};

}  // namespace TarnConfigStore
