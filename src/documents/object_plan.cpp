#include "documents/object_plan.h"

#include "admin/misfits.h"
#include "admin/row_views.h"
#include "documents/empty_elements.h"
#include "documents/part_rules.h"
#include "documents/read_only.h"
#include "json/equality.h"
#include "json/json_doc.h"
#include "json/secrets.h"
#include "json/text_match.h"
#include "objects/access.h"
#include "objects/division.h"
#include "objects/generated_ids.h"
#include "persistence/write_values.h"
#include "store/layer_update.h"
#include "validation/cleanup.h"
#include "validation/guards.h"
#include "validation/object_validation.h"

#include <array>
#include <utility>

namespace TarnConfigStore {

bool HoldTheSame(const std::optional<std::string>& a, const std::optional<std::string>& b,
                 bool withIds) {
  if (a == b || !a || !b) {
    return a == b;
  }
  JsonDoc one(JsonDoc::CapacityFor(a->size()));
  JsonDoc other(JsonDoc::CapacityFor(b->size()));
  if (!one.Parse(*a, Json::Origin::STORED) || !other.Parse(*b, Json::Origin::STORED)) {
    return false;
  }
  if (!withIds) {
    DropGeneratedIds(*one.GetJsonValuePtr());
    DropGeneratedIds(*other.GetJsonValuePtr());
  }
  return Json::Equal(*one.GetJsonValuePtr(), *other.GetJsonValuePtr());
}

namespace {

Json::Value& RootOf(const ObjectHandle& object) {
  return Internal::Access::Of(*object).GetRoot();
}

RowText TextOf(Section section) {
  constexpr std::array<RowText, kSections> kTexts = {&StoredRow::user, &StoredRow::automatic,
                                                     &StoredRow::vital, &StoredRow::cached,
                                                     &StoredRow::pending};
  return kTexts[static_cast<std::size_t>(section)];
}

// A row as it is read for an update.
RowMap RowMapOf(const StoredRow& row) {
  std::vector<const char*> names = {"Version"};
  std::vector<const char*> values = {row.version.c_str()};
  for (const auto& [name, column] : kValueColumns) {
    const std::optional<std::string>& text = row.*column;
    names.push_back(name);
    values.push_back(text ? text->c_str() : nullptr);
  }
  RowMap map;
  map.Put(static_cast<int>(names.size()), values.data(), names.data());
  return map;
}

}  // namespace

ObjectPlan::ObjectPlan(const ConfigDocument& document, const NamedType& type,
                       const NamedObject& object, const DocumentMode& mode)
    : document_(document), type_(type), object_(object), mode_(mode) {}

void ObjectPlan::Add(Section section, std::vector<ErrorInfo> findings) {
  const std::string pointer = object_.Pointer(section);
  for (ErrorInfo& finding : findings) {
    finding.field = finding.field == "/" ? pointer : pointer + finding.field;
    findings_.push_back(std::move(finding));
  }
}

void ObjectPlan::Judge() {
  const Json::SchemaPlace place = type_.schema->GetSchemaPlace();
  // These look at the row: generated ids come from there, and so do secrets and what an object is laid
  // over or held against.
  if (HasFaults() || IsDivided() || mode_.apply || mode_.import == ImportMode::MERGE ||
      place.HoldsGeneratedIds() || place.HoldsSecrets()) {
    return;
  }
  JudgeWhole(nullptr);
  // Without the row it is not said yet that the object does not fit.
  judged_ = !HasFaults();
  findings_.clear();
}

std::optional<StoredRow> ObjectPlan::After(const StoredRow* stored, int upgradeContext) {
  if (StaysAsItIs()) {
    return *stored;
  }
  if (!HasFaults() && mode_.import == ImportMode::MERGE && stored != nullptr) {
    return Merged(*stored, upgradeContext);
  }
  if (!HasFaults() && !judged_) {
    IsDivided() ? JudgeParts(stored) : JudgeWhole(stored);
  }
  if (HasFaults()) {
    return std::nullopt;
  }
  return Replaced(stored, upgradeContext);
}

bool ObjectPlan::Meet(const RowTexts& row) {
  if (IsDivided() || !row.confirmed || !row.user) {
    return false;
  }
  const Json::Value& given = Given();
  const auto equals = [&given](std::string_view text) {
    JsonDoc known(JsonDoc::CapacityFor(text.size()));
    return known.Parse(text, Json::Origin::STORED) && Json::Equal(given, *known.GetJsonValuePtr());
  };
  const Json::TextMatch match = Json::MatchText(*row.user, given);
  const bool same =
      match == Json::TextMatch::SAME || (match == Json::TextMatch::UNKNOWN && equals(*row.user));
  match_ = same ? Match::SAME : Match::OTHER;
  return same;
}

// What is stored of a section; where a document has no other, that is the whole object.
ObjectHandle ObjectPlan::Known(Section section, const StoredRow* stored) const {
  if (stored == nullptr) {
    return nullptr;
  }
  if (!IsDivided()) {
    return MergeView(*stored, &StoredRow::user, object_.id, type_.schema);
  }
  const std::optional<std::string>& text = stored->*TextOf(section);
  return text ? MakeObject(*text, object_.id, type_.schema) : nullptr;
}

ObjectHandle ObjectPlan::MakeCopy(const Json::Value& value) const {
  const auto data = JsonDoc::Make(JsonDoc::CapacityFor(document_.bytesOfObject));
  data->GetJsonValuePtr()->CopyFrom(value, data->GetAllocator());
  return MakeObject(data, object_.id, type_.schema);
}

ObjectHandle ObjectPlan::MakeGiven(Section section, const StoredRow* stored) {
  ObjectHandle object = MakeCopy(*object_.Of(section).value);
  if (!IsDivided() && HoldsEmptyContent(RootOf(object))) {
    FindEmptyElements(RootOf(object), type_.schema->GetSchemaPlace(), object_.Pointer(section),
                      findings_);
  }
  RestoreMasks(object, section, stored);
  return object;
}

void ObjectPlan::RestoreMasks(const ObjectHandle& object, Section section,
                              const StoredRow* stored) {
  const Json::SchemaPlace place = type_.schema->GetSchemaPlace();
  if (!Json::HoldsMasks(RootOf(object), place)) {
    return;
  }
  const ObjectHandle known = Known(section, stored);
  std::string pointer = object_.Pointer(section);
  Json::RestoreSecrets(
      RootOf(object), known ? &RootOf(known) : nullptr, place,
      Internal::Access::Of(*object).GetAllocator(), pointer,
      {[this](const std::string& masked) { return document_.redacted.count(masked) != 0; },
       [this](const std::string& masked, const char* reason) {
         findings_.push_back({masked, reason});
       }});
}

// As the store's own writes judge objects: Set, or SetUserData where there is nothing but user data.
void ObjectPlan::Validate(const ObjectHandle& object, const StoredRow* stored) {
  try {
    ValidateWritableInstanceId(object_.id);
    const Json::SchemaPlace place = type_.schema->GetSchemaPlace();
    const ColumnValues parts =
        place.IsMixed() ? DivideValue(RootOf(object), *type_.schema, EXTERNAL) : ColumnValues();
    (place.IsMixed() && !parts.vital && !parts.cached ? ValidateUserConfig : ValidateSet)(
        type_.schema, object);
  } catch (const ValidationException& refused) {
    if (!FitsRow(object, stored)) {
      Add(Section::USER, refused.GetErrors().empty() ? std::vector<ErrorInfo>{{"/", refused.what()}}
                                                     : refused.GetErrors());
    }
  }
}

void ObjectPlan::RefuseEmpty() {
  Add(Section::USER, {{"/", "the object holds no data beside its instance id and empty members"}});
}

void ObjectPlan::JudgeWhole(const StoredRow* stored) {
  const ObjectHandle object = MakeGiven(Section::USER, stored);
  if (HasFaults()) {
    return;
  }
  const Json::SchemaPlace place = type_.schema->GetSchemaPlace();
  if (place.HoldsNothingBesideId(RootOf(object))) {
    RefuseEmpty();
    return;
  }
  if (place.HoldsGeneratedIds()) {
    if (const ObjectHandle known = Known(Section::USER, stored)) {
      AdoptGeneratedIds(RootOf(object), RootOf(known), place,
                        Internal::Access::Of(*object).GetAllocator());
    }
  }
  Validate(object, stored);
  if (HasFaults()) {
    return;
  }
  if (place.HoldsNothingBesideId(RootOf(object))) {  // validation takes out empty members
    RefuseEmpty();
    return;
  }
  if (mode_.apply) {
    CheckReadOnly(object, Section::USER, stored);
  }
  GiveGeneratedIds(*object, *type_.schema);
  Take(*object);
}

void ObjectPlan::Take(const ConfigStoreObject& object) {
  static_cast<ColumnValues&>(given_) = DivideObject(object, *type_.schema, EXTERNAL).values;
  const Json::SchemaPlace place = type_.schema->GetSchemaPlace();
  isAsGiven_ = !place.IsMixed() && !place.HoldsGeneratedIds() &&
               Json::Equal(Internal::Access::Of(object).GetRoot(), Given());
}

// What the object lacks may be held by parts of the row that stay as they are.
bool ObjectPlan::FitsRow(const ObjectHandle& object, const StoredRow* stored) {
  if (stored == nullptr) {
    return false;
  }
  try {
    ValidateUpdate(type_.schema, object);
  } catch (const ValidationException&) {
    return false;
  }
  Take(*object);
  StoredRow row = WithParts(stored, given_);
  row.pending.reset();
  row.confirmed = true;
  std::vector<Misfit> misfits;
  return JudgeRow(row, object_.id, type_.schema, misfits) && misfits.empty();
}

void ObjectPlan::CheckReadOnly(const ObjectHandle& object, Section section,
                               const StoredRow* stored) {
  const ObjectHandle known = Known(section, stored);
  std::vector<ErrorInfo> findings;
  FindReadOnlyChanges(RootOf(object), known ? &RootOf(known) : nullptr, *type_.schema, findings);
  Add(section, std::move(findings));
}

// As they stand: an import of all parts gives the rows that were exported.
void ObjectPlan::JudgeParts(const StoredRow* stored) {
  for (std::size_t i = 0; i < kSections; ++i) {
    const auto section = static_cast<Section>(i);
    if (object_.Of(section).value == nullptr) {
      continue;
    }
    const ObjectHandle object = MakeGiven(section, stored);
    Add(section, FaultsOfPart(type_.schema, object, section));
    if (mode_.apply) {
      CheckReadOnly(object, section, stored);
    }
    if (HasFaults()) {
      continue;
    }
    given_.*TextOf(section) = Internal::Access::Of(*object).GetSerializedData();
  }
  if (HasFaults()) {
    return;
  }
  std::vector<Misfit> misfits;
  JudgeRow(WithParts(stored, given_), object_.id, type_.schema, misfits);
  for (Misfit& misfit : misfits) {
    const std::string pointer = object_.Pointer();
    findings_.push_back(
        {misfit.pointer == "/" ? pointer : pointer + misfit.pointer, std::move(misfit.error)});
  }
}

std::optional<StoredRow> ObjectPlan::Merged(const StoredRow& stored, int upgradeContext) {
  const ObjectHandle object = MakeGiven(Section::USER, &stored);
  if (HasFaults()) {
    return std::nullopt;
  }
  StoredRow row = stored;
  try {
    ValidateWritableInstanceId(object_.id);
    const Json::SchemaPlace place = type_.schema->GetSchemaPlace();
    if (const ObjectHandle known = Known(Section::USER, &stored)) {
      AdoptGeneratedIds(RootOf(object), RootOf(known), place,
                        Internal::Access::Of(*object).GetAllocator());
    }
    // Removals refer to the data that they were collected from.
    const ObjectHandle change = MakeCopy(RootOf(object));
    const Removals removals(RootOf(object), place);
    ValidateChange(change, removals, type_.schema);
    static_cast<ColumnValues&>(row) = LayerUpdate(change, removals, type_.schema, EXTERNAL)
                                          .Over(RowMapOf(stored), upgradeContext != 0);
  } catch (const ValidationException& refused) {
    Add(Section::USER, refused.GetErrors().empty() ? std::vector<ErrorInfo>{{"/", refused.what()}}
                                                   : refused.GetErrors());
    return std::nullopt;
  }
  if (row.user != stored.user) {
    row.pending.reset();
    row.confirmed = stored.confirmed || upgradeContext != 0;
  }
  row.version = type_.schema->GetVersion();
  return row;
}

StoredRow ObjectPlan::WithParts(const StoredRow* stored, StoredRow given) const {
  StoredRow row = std::move(given);
  if (stored != nullptr) {
    for (std::size_t i = 0; i < kSections; ++i) {
      const auto section = static_cast<Section>(i);
      // Of whole objects a row keeps what they do not hold.
      if (!document_.SpeaksOf(section) && (IsDivided() || !(row.*TextOf(section)))) {
        row.*TextOf(section) = stored->*TextOf(section);
      }
    }
    row.version = stored->version;
    row.creationTime = stored->creationTime;
    row.revision = stored->revision;
    row.confirmed = stored->confirmed;
  }
  row.instanceId = object_.id.instanceId;
  if (IsDivided()) {
    row.confirmed = object_.info.confirmed;
  }
  return row;
}

// Validation may add to data, and settle how their numbers are written.
bool ObjectPlan::IsTakenAsGiven() const {
  std::string text;
  return given_.user && (isAsGiven_ || (Json::Serialize(Given(), text) && text == *given_.user));
}

StoredRow ObjectPlan::Replaced(const StoredRow* stored, int upgradeContext) {
  differs_ = match_ == Match::OTHER && IsTakenAsGiven();
  StoredRow row = WithParts(stored, std::move(given_));
  row.version = object_.info.version && stored == nullptr ? *object_.info.version
                                                          : type_.schema->GetVersion();
  const bool stays = stored != nullptr && stored->confirmed && !DiffersFromRow() &&
                     HoldTheSame(row.user, stored->user, false);
  if (!IsDivided() && !stays) {
    row.pending.reset();
    row.confirmed = AreConfirmedAtOnce(type_.schema->IsConfirmedDuringUpgrade(), upgradeContext);
  }
  return row;
}

}  // namespace TarnConfigStore
