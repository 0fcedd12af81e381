#include "documents/drift_builder.h"

#include "documents/difference.h"
#include "documents/sections.h"
#include "documents/staged_parts.h"
#include "json/equality.h"
#include "json/json_doc.h"
#include "json/secrets.h"
#include "objects/generated_ids.h"
#include "objects/named_places.h"
#include "persistence/next_boot_records.h"

#include <array>
#include <utility>

namespace TarnConfigStore {
namespace {

// What a part holds, parsed; null where it holds nothing.
class Part {
 public:
  Part(const std::optional<std::string>& text, bool withIds)
      : value_(text ? JsonDoc::CapacityFor(text->size()) : 0),
        there_(text && value_.Parse(*text, Json::Origin::STORED)) {
    if (!withIds) {
      DropIds();
    }
  }
  const Json::Value* Value() const { return there_ ? value_.GetJsonValuePtr() : nullptr; }
  void DropIds() { DropGeneratedIds(*value_.GetJsonValuePtr()); }

 private:
  JsonDoc value_;
  bool there_;
};

struct NamedPart {
  const char* name;
  RowText text;
};

// Those that hide others come first.
constexpr std::array<NamedPart, 4> kPartsOfRow = {{{kPartNames[0], &StoredRow::user},
                                                   {kPartNames[2], &StoredRow::vital},
                                                   {kPartNames[3], &StoredRow::cached},
                                                   {kPartNames[1], &StoredRow::automatic}}};

}  // namespace

DriftObject DriftBuilder::Of(const DocumentPlan::PlannedStep& step) {
  members_.clear();
  place_ = step.schema ? step.schema->GetSchemaPlace() : Json::SchemaPlace();
  const StoredRow none;
  const bool removes = step.step == DocumentPlan::Step::REMOVE;
  const StoredRow& before = step.before ? *step.before : none;
  const StoredRow& after = removes ? none : step.row;
  // Nobody reads an unconfirmed value, so it is none to who does not speak of it.
  const bool confirms = before.user && after.user && before.confirmed != after.confirmed;
  for (const NamedPart& part : kPartsOfRow) {
    const bool isUser = part.text == &StoredRow::user;
    Compare(part.name, isUser && confirms && !after.confirmed ? std::nullopt : after.*part.text,
            isUser && confirms && !before.confirmed ? std::nullopt : before.*part.text, before);
  }
  if (!userOnly_) {
    Compare(kPartNames[4], after.pending, before.pending, none);
  }
  // Who speaks of the user's part alone has no object where that is not set.
  const bool isThere = step.before && (!userOnly_ || before.user);
  const bool isWanted = !removes && (!userOnly_ || after.user);
  return {step.id,
          !isWanted  ? DriftKind::EXTRA
          : !isThere ? DriftKind::MISSING
                     : DriftKind::CHANGED,
          std::move(members_)};
}

DriftObject DriftBuilder::Of(const DocumentPlan::PlannedRecord& record) {
  members_.clear();
  place_ = {};
  const auto action = [](NextBootAction what) {
    return Json::Quoted(kActionNames[static_cast<std::size_t>(what)]);
  };
  const StoredRow none;
  std::optional<std::string> wanted;
  std::optional<std::string> there;
  if (record.change != nullptr) {
    wanted = action(record.change->action);
  }
  if (record.before) {
    there = action(ActionFromRow(*record.before));
  }
  if (wanted != there) {
    members_.push_back({"", wanted, there, kStagedName});
  }
  for (const StagedPart& part : kStagedParts) {
    const auto found = record.before ? record.before->Find(part.column) : std::nullopt;
    Compare(kStagedName, record.values.*part.text,
            found ? std::optional<std::string>(*found) : std::nullopt, none);
  }
  return {record.id,
          record.change == nullptr ? DriftKind::EXTRA
          : record.before          ? DriftKind::CHANGED
                                   : DriftKind::MISSING,
          std::move(members_)};
}

void DriftBuilder::Compare(const char* name, const std::optional<std::string>& after,
                           const std::optional<std::string>& before, const StoredRow& row) {
  if (after == before) {
    return;
  }
  Part expected(after, !userOnly_);
  Part found(before, !userOnly_);
  if (expected.Value() != nullptr && found.Value() != nullptr &&
      Json::Equal(*expected.Value(), *found.Value())) {
    return;
  }
  expected.DropIds();
  found.DropIds();
  const std::size_t told = members_.size();
  // What one side does not have at all is told member by member.
  const Json::Value empty(rapidjson::kObjectType);
  FindDifferences(expected.Value() == nullptr ? &empty : expected.Value(),
                  found.Value() == nullptr ? &empty : found.Value(), place_, "",
                  [&](const std::string& pointer, const Json::Value* wanted,
                      const Json::Value* there, Json::SchemaPlace place) {
                    if (IsIdOfObject(pointer) && (wanted == nullptr || there == nullptr)) {
                      return;
                    }
                    DriftMember member{pointer, Shown(wanted, place), Shown(there, place), name};
                    if (there == nullptr && elsewhere_ == FoundElsewhere::TOLD) {
                      FindElsewhere(row, member, place);
                    }
                    members_.push_back(std::move(member));
                  });
  if (members_.size() == told) {  // there is nothing in it but the id, or what holds null
    members_.push_back({"", Shown(expected.Value(), place_), Shown(found.Value(), place_), name});
  }
}

// It goes into every part that is not empty.
bool DriftBuilder::IsIdOfObject(const std::string& pointer) const {
  return pointer.size() > 1 && pointer.find('/', 1) == std::string::npos &&
         place_.IsIdMember(std::string_view(pointer).substr(1));
}

// What is read where the part itself has nothing.
void DriftBuilder::FindElsewhere(const StoredRow& row, DriftMember& member,
                                 Json::SchemaPlace place) const {
  for (const NamedPart& other : kPartsOfRow) {
    if (member.part == other.name) {
      continue;
    }
    const Part part(row.*other.text, false);
    const Json::Value* found =
        part.Value() == nullptr ? nullptr : FindByIds(*part.Value(), place_, member.pointer);
    if (found != nullptr && !found->IsNull()) {
      member.found = Shown(found, place);
      member.part = other.name;
      return;
    }
  }
}

std::optional<std::string> DriftBuilder::Shown(const Json::Value* value,
                                               Json::SchemaPlace place) const {
  if (value == nullptr) {
    return std::nullopt;
  }
  if (!reveal_) {
    return Json::TextWithMasks(*value, place);
  }
  std::string text;
  Json::Serialize(*value, text);
  return text;
}

}  // namespace TarnConfigStore
