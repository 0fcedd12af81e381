// Writing the nested sections of a document, object by object.
#pragma once

#include "tarnconfigstore/object_id.h"

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

namespace TarnConfigStore {

/// Writes one JSON object, indented, in pieces. What the receiver throws passes through.
class DocumentWriter {
 public:
  explicit DocumentWriter(const std::function<void(std::string_view)>& write);

  /// Opens the document itself, or a member that is an object.
  void Open(std::string_view name = {});
  void Close();
  /// A member of what is open. The text is JSON.
  void Add(std::string_view name, std::string_view json);

  /// An object in what is open, under its component, group and key. Those of one type come one after
  /// the other, as do types of one group and groups of one component.
  /// \param isInstance  it is an element of the list of its type
  void AddObject(const ConfigStoreObjectId& id, bool isInstance, std::string_view json);
  /// The same of a text that is indented already, by this many levels.
  void AddIndented(const ConfigStoreObjectId& id, bool isInstance, std::string_view lines);
  unsigned LevelOfObject(bool isInstance) const;
  /// The JSON Pointer that AddObject would give to an object.
  std::string PointerTo(const ConfigStoreObjectId& id, bool isInstance) const;
  /// Closes what AddObject has opened.
  void EndObjects();

  /// Ends the document.
  void Finish();

 private:
  bool IsSameType(const ConfigStoreObjectId& id) const;
  void BeginMember(std::string_view name);
  void BeginObject(const ConfigStoreObjectId& id, bool isInstance);
  void OpenType(const ConfigStoreObjectId& id, bool isInstance);
  void CloseType();
  void CloseLevel();
  void FlushIfLong();

  const std::function<void(std::string_view)>& write_;
  std::string out_;
  std::string pointer_;
  unsigned level_ = 0;
  bool isFirst_ = true;  // nothing stands yet in what is open
  unsigned typeLevels_ = 0;
  ConfigStoreObjectId type_{"", "", ""};
  bool isList_ = false;
  std::size_t index_ = 0;
};

}  // namespace TarnConfigStore
