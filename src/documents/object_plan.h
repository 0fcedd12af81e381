// What a document makes of one object.
#pragma once

#include "tarnconfigstore/documents.h"

#include "documents/config_document.h"
#include "persistence/type_rows.h"

#include <optional>
#include <string>
#include <vector>

namespace TarnConfigStore {

/// How a document is brought to the store.
struct DocumentMode {
  ImportMode import = ImportMode::REPLACE_NAMED;
  bool apply = false;  ///< as ApplyConfig says; `import` is REPLACE_NAMED then
  bool prune = false;
  bool stage = false;
  /// Objects beyond it are left as they are.
  ConfigStoreObjectId prefix{"", "", ""};
};

/// Two texts of a part hold the same data, or neither is there.
/// \param withIds  and the same generated ids, by which the parts of an object find each other
bool HoldTheSame(const std::optional<std::string>& a, const std::optional<std::string>& b,
                 bool withIds);

/// Works out what becomes of the row of one object that a document names.
class ObjectPlan {
 public:
  /// All of these have to outlive it.
  ObjectPlan(const ConfigDocument& document, const NamedType& type, const NamedObject& object,
             const DocumentMode& mode);

  /// Checks what can be checked without the row, so that nobody waits meanwhile.
  void Judge();
  /// Holds the object against its row. True where the row says what the document says, and stays.
  bool Meet(const RowTexts& row);
  /// Whether it does; false as well where it met none.
  bool StaysAsItIs() const { return match_ == Match::SAME; }
  /// The row that is to be there; nothing where there are findings. To be asked once.
  /// \param stored          null where there is no row; otherwise it was met
  /// \param upgradeContext  what ReadUpgradeContext answered
  std::optional<StoredRow> After(const StoredRow* stored, int upgradeContext);

  /// It is known already that the row is to change; otherwise they have to be compared.
  bool DiffersFromRow() const { return differs_; }

  /// Each field is a JSON Pointer into the document.
  const std::vector<ErrorInfo>& Findings() const { return findings_; }
  std::vector<ErrorInfo> TakeFindings() { return std::move(findings_); }

 private:
  bool IsDivided() const { return !document_.IsOfUserOnly(); }
  const Json::Value& Given() const { return *object_.Of(Section::USER).value; }
  void JudgeWhole(const StoredRow* stored);
  void RefuseEmpty();
  void JudgeParts(const StoredRow* stored);
  std::optional<StoredRow> Merged(const StoredRow& stored, int upgradeContext);
  StoredRow Replaced(const StoredRow* stored, int upgradeContext);
  StoredRow WithParts(const StoredRow* stored, StoredRow given) const;
  bool IsTakenAsGiven() const;

  ObjectHandle Known(Section section, const StoredRow* stored) const;
  ObjectHandle MakeCopy(const Json::Value& value) const;
  ObjectHandle MakeGiven(Section section, const StoredRow* stored);
  void RestoreMasks(const ObjectHandle& object, Section section, const StoredRow* stored);
  void Validate(const ObjectHandle& object, const StoredRow* stored);
  bool FitsRow(const ObjectHandle& object, const StoredRow* stored);
  void Take(const ConfigStoreObject& object);
  void CheckReadOnly(const ObjectHandle& object, Section section, const StoredRow* stored);
  bool HasFaults() const { return !findings_.empty(); }
  void Add(Section section, std::vector<ErrorInfo> findings);

  const ConfigDocument& document_;
  const NamedType& type_;
  const NamedObject& object_;
  const DocumentMode& mode_;
  bool judged_ = false;
  enum class Match { UNKNOWN, SAME, OTHER } match_ = Match::UNKNOWN;  // of the data and the row
  bool isAsGiven_ = false;  // validation left the data as the document has them
  bool differs_ = false;
  std::vector<ErrorInfo> findings_;
  StoredRow given_;  // its texts: the parts, as they are to be written
};

}  // namespace TarnConfigStore
