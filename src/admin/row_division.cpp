#include "admin/row_division.h"

#include "admin/row_views.h"
#include "errors/raise.h"
#include "json/equality.h"
#include "objects/access.h"
#include "objects/division.h"

#include <array>
#include <utility>

namespace TarnConfigStore {
namespace {

// Each column that is divided, and the part that it is for. Not the automatic value.
constexpr std::array<std::pair<RowText, std::optional<std::string> ColumnValues::*>, 4> kColumns = {
    {{&StoredRow::cached, &ColumnValues::cached},
     {&StoredRow::vital, &ColumnValues::vital},
     {&StoredRow::user, &ColumnValues::user},
     {&StoredRow::pending, &ColumnValues::user}}};

Json::Value& RootOf(const ObjectHandle& object) {
  return Internal::Access::Of(*object).GetRoot();
}

void DropNulls(Json::Value& value) {
  if (value.IsArray()) {
    for (Json::Value& element : value.GetArray()) {
      DropNulls(element);
    }
  } else if (value.IsObject()) {
    for (auto member = value.MemberBegin(); member != value.MemberEnd();) {
      if (member->value.IsNull()) {
        member = value.EraseMember(member);
      } else {
        DropNulls(member->value);
        ++member;
      }
    }
  }
}

// Uses the objects up.
bool ReadTheSame(const ObjectHandle& a, const ObjectHandle& b) {
  if (!a || !b) {
    return !a && !b;
  }
  for (const ObjectHandle& object : {a, b}) {
    Json::ClearGeneratedIds(RootOf(object));
    DropNulls(RootOf(object));
  }
  return Json::Equal(RootOf(a), RootOf(b));
}

bool IsChange(RowDivider::Result result) {
  return result == RowDivider::Result::DIVIDED || result == RowDivider::Result::PARTLY;
}

// The division of one row.
class Division {
 public:
  Division(const ConfigStoreObjectId& id, const SchemaHandle& before, const SchemaHandle& after,
           const StoredRow& row)
      : id_(id), before_(before), after_(after), row_(row), views_(ViewsOf(row)) {}

  /// Gives each element that is to have a generated id one, where it has none, before anything is
  /// taken apart: the parts of an element find each other by it.
  void GiveIds() {
    for (const auto& [column, part] : kColumns) {
      if (after_->GetIdMap() && row_.*column) {
        const ObjectHandle object = Parse(*(row_.*column));
        GiveGeneratedIds(*object, *after_);
        row_.*column = Internal::Access::Of(*object).GetSerializedData();
      }
    }
  }

  bool IsNeeded() const {
    for (const auto& [column, part] : kColumns) {
      if (row_.*column && !HoldsOnly(*(row_.*column), part)) {
        return true;
      }
    }
    return false;
  }

  /// A division of all values, where one reads the same.
  std::optional<StoredRow> OfEverything() const {
    // What goes to the columns that all views share can be what any of them shows.
    for (const RowView& view : views_) {
      StoredRow divided = WithShared(view.user);
      if (row_.confirmed || row_.user) {
        divided.user = Divided(&StoredRow::user).user;
      }
      if (row_.pending) {
        divided.pending = Divided(&StoredRow::pending).user;
        divided.pending = divided.pending ? divided.pending : IdAlone(*row_.pending);
      }
      if (ReadsTheSame(divided)) {
        return divided;
      }
    }
    return std::nullopt;
  }

  /// A division that leaves alone what waits.
  std::optional<StoredRow> OfWhatIsCurrent() const {
    StoredRow divided = WithShared(views_.front().user);
    if (row_.confirmed) {
      divided.user = Divided(&StoredRow::user).user;
    }
    return ReadsTheSame(divided) ? std::optional(std::move(divided)) : std::nullopt;
  }

  bool Changes(const StoredRow& divided) const {
    for (const auto& [column, part] : kColumns) {
      const auto& was = row_.*column;
      const auto& is = divided.*column;
      if (was != is && !(was && is && ReadTheSame(Parse(*was), Parse(*is)))) {
        return true;
      }
    }
    return false;
  }

 private:
  ObjectHandle Parse(const std::string& text) const { return MakeObject(text, id_, after_); }

  bool HoldsOnly(const std::string& text, std::optional<std::string> ColumnValues::*part) const {
    const ObjectHandle object = Parse(text);
    // Ids and nothing else stand well wherever they are.
    if (after_->GetSchemaPlace().HoldsNothingBesideId(RootOf(object))) {
      return true;
    }
    const std::optional<std::string> own = DivideObject(*object, *after_, EXTERNAL).values.*part;
    return own && (*own == text || ReadTheSame(Parse(*own), object));
  }

  // The parts of what the cached, the vital and this user's value make together.
  ColumnValues Divided(RowText user) const {
    const ObjectHandle object = MergeSetView(row_, user, id_, before_);
    if (!object) {
      return {};
    }
    return DivideObject(*object, *after_, EXTERNAL).values;
  }

  StoredRow WithShared(RowText user) const {
    ColumnValues parts = Divided(user);
    StoredRow divided = row_;
    divided.cached = std::move(parts.cached);
    divided.vital = std::move(parts.vital);
    return divided;
  }

  std::string IdAlone(const std::string& text) const {
    const ObjectHandle object = Parse(text);
    const std::string_view idMember = after_->GetSchemaPlace().InstanceIdMember();
    const Json::Value* id = idMember.empty() ? nullptr : Json::FindMember(RootOf(object), idMember);
    Json::Allocator& allocator = Internal::Access::Of(*object).GetAllocator();
    Json::Value alone(rapidjson::kObjectType);
    if (id != nullptr) {
      alone.AddMember(Json::Copy(idMember, allocator), Json::Value(*id, allocator), allocator);
    }
    RootOf(object) = std::move(alone);
    return Internal::Access::Of(*object).GetSerializedData();
  }

  bool ReadsTheSame(const StoredRow& divided) const {
    for (const RowView& view : views_) {
      if (!ReadTheSame(MergeView(row_, view.user, id_, before_),
                       MergeView(divided, view.user, id_, after_)) ||
          (row_.automatic && !ReadTheSame(MergeSetView(row_, view.user, id_, before_),
                                          MergeSetView(divided, view.user, id_, after_)))) {
        return false;
      }
    }
    return true;
  }

  const ConfigStoreObjectId& id_;
  const SchemaHandle& before_;
  const SchemaHandle& after_;
  StoredRow row_;
  std::vector<RowView> views_;
};

}  // namespace

RowDivider::RowDivider(const SchemaHandle& before, const SchemaHandle& after)
    : before_(before ? before : after), after_(after) {}

RowDivider::Result RowDivider::Divide(const ConfigStoreObjectId& id, StoredRow& row) const {
  Result result = DivideOnce(id, before_, row);
  // A null that moves over another layer's value goes, and what it left empty only the next time: no
  // more often than there are layers.
  Result next = result;
  for (std::size_t i = 0; i < kColumns.size() && IsChange(next); ++i) {
    next = DivideOnce(id, after_, row);
    result = IsChange(next) ? next : result;
  }
  return result;
}

RowDivider::Result RowDivider::DivideOnce(const ConfigStoreObjectId& id, const SchemaHandle& before,
                                          StoredRow& row) const {
  Division division(id, before, after_, row);
  if (!division.IsNeeded()) {
    return Result::AS_IT_IS;
  }
  division.GiveIds();
  Result result = Result::DIVIDED;
  std::optional<StoredRow> divided = division.OfEverything();
  if (!divided) {
    result = Result::PARTLY;
    divided = division.OfWhatIsCurrent();
  }
  if (!divided || !division.Changes(*divided)) {
    return divided && result == Result::DIVIDED ? Result::AS_IT_IS : Result::NOT;
  }
  row = std::move(*divided);
  return result;
}

}  // namespace TarnConfigStore
