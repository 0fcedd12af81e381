#include "editing/user_part.h"

#include "tarnconfigstore/documents.h"
#include "tarnconfigstore/listing.h"

#include "given/given_masks.h"
#include "json/pointer.h"
#include "store/stored_objects.h"
#include "writes/object_writes.h"

#include <utility>

namespace tarnctl {
namespace {

using TarnConfigStore::ConfigStoreObjectId;
using TarnConfigStore::ImportMode;

std::string PlaceInDocument(const ConfigStoreObjectId& id, bool hasInstances) {
  std::string place = "/config";
  for (const std::string* name : {&id.component, &id.group, &id.key}) {
    Json::AppendToken(place, *name);
  }
  return place + (hasInstances ? "/0" : "");
}

// What a set of the user's part would refuse, and a document would lay in the place of another part.
void FindOthers(const Json::Value& value, Json::SchemaPlace place, const std::string& pointer,
                Findings& findings) {
  if (place.IsInstanceId()) {
    return;
  }
  if (!place.IsMixed()) {
    if (place.WholeKind() != Json::Kind::USER) {
      findings.push_back(
          {pointer, std::string("belongs to the ") +
                        (place.WholeKind() == Json::Kind::VITAL ? "vital" : "cached") +
                        " part, which is not edited here: update changes it"});
    }
  } else if (value.IsObject()) {
    for (const auto& [name, member] : value.GetObject()) {
      FindOthers(member, place.Property(Json::Text(name)),
                 Json::PointerBelow(pointer, Json::Text(name)), findings);
    }
  } else if (value.IsArray()) {
    for (rapidjson::SizeType i = 0; i < value.Size(); ++i) {
      FindOthers(value[i], place.Items(), Json::PointerBelow(pointer, std::to_string(i)), findings);
    }
  }
}

[[noreturn]] void Refuse(Findings findings) {
  throw ToolError(ExitCode::INVALID, "nothing was written: the text is refused",
                  TarnConfigStore::CS_SET_INVALID, std::move(findings));
}

}  // namespace

UserPart::UserPart(const ConfigStoreObjectId& id, bool reveals)
    : id_(id),
      reveals_(reveals),
      schema_(id),
      place_(PlaceInDocument(id, HasInstances())),
      // Before anything is read of the object: what is read is as old, or newer.
      state_(TarnConfigStore::GetState(*OpenStore(), id)),
      data_(Read()) {}

Json::Value UserPart::Read() {
  if (state_.GetRevision() == TarnConfigStore::kDefaultRevision) {
    RaiseNotStored(id_);
  }
  if (!schema_.Place().IsMixed() && schema_.Place().WholeKind() != Json::Kind::USER) {
    throw ToolError(ExitCode::INVALID, FormatObject(id_) +
                                           " has nothing that the user sets: all of it is vital or "
                                           "cached; set and update change it");
  }
  for (const auto& stored : TarnConfigStore::ListStored(id_)) {
    hasPending_ = stored.hasPending;
  }
  TarnConfigStore::ExportReport report;
  const std::string document =
      TarnConfigStore::ExportConfigText(id_, {.reveal = reveals_}, &report);
  if (!report.unconfirmed.empty()) {
    throw ToolError(ExitCode::INVALID, "what the user set of " + FormatObject(id_) +
                                           " waits to be confirmed by a boot");
  }
  JsonMaker make;
  const Json::Value whole = make.Parse(document);
  if (const Json::Value* own = Json::FindAt(whole, *Json::ParsePointer(place_))) {
    return Json::Value(*own, make_.GetAllocator());
  }
  Json::Value nothing(rapidjson::kObjectType);
  if (HasInstances()) {
    nothing.AddMember(make_.Of(schema_.InstanceIdMember()), make_.Of(id_.instanceId),
                      make_.GetAllocator());
  }
  return nothing;
}

void UserPart::RequireOwn(const Json::Value& edited) const {
  Findings findings = reveals_ ? FindMasks(edited, schema_) : Findings();  // nothing was masked
  const Json::Value* const id =
      HasInstances() ? Json::FindMember(edited, schema_.InstanceIdMember()) : nullptr;
  if (HasInstances() && (id == nullptr || !id->IsString() || Json::Text(*id) != id_.instanceId)) {
    findings.push_back({Json::PointerBelow("", schema_.InstanceIdMember()),
                        "has to stay \"" + id_.instanceId + "\": another object is another text"});
  }
  FindOthers(edited, schema_.Place(), "", findings);
  if (!findings.empty()) {
    Refuse(std::move(findings));
  }
}

std::string UserPart::DocumentOf(const Json::Value& edited) const {
  JsonMaker make;
  Json::Value object(edited, make.GetAllocator());
  if (HasInstances()) {
    Json::Value list(rapidjson::kArrayType);
    list.PushBack(object, make.GetAllocator());
    object = list;
  }
  for (const std::string* name : {&id_.key, &id_.group, &id_.component}) {
    Json::Value around(rapidjson::kObjectType);
    around.AddMember(make.Of(*name), object, make.GetAllocator());
    object = around;
  }
  std::vector<std::string> masked;
  for (const auto& mask : reveals_ ? Findings() : FindMasks(edited, schema_)) {
    masked.push_back(place_ + mask.field);
  }
  Json::Value metadata(rapidjson::kObjectType);
  if (!masked.empty()) {
    make.Add(metadata, "redacted", masked);
  }
  std::string text;
  Json::Serialize(
      make.Object("format", 1, "config", std::move(object), "metadata", std::move(metadata)), text);
  return text;
}

bool UserPart::Write(const Json::Value& edited) const {
  RequireOwn(edited);
  const auto store = OpenStore();
  TarnConfigStore::DocumentReport report;
  std::vector<ConfigStoreObjectId> changed;
  try {
    changed = TarnConfigStore::WriteIfUnchanged(*store, {state_}, [&] {
      report = TarnConfigStore::ImportConfig(*store, DocumentOf(edited),
                                             {.mode = ImportMode::REPLACE_NAMED});
    });
  } catch (const TarnConfigStore::ValidationException& refusal) {
    Findings findings = refusal.GetErrors();
    for (auto& finding : findings) {
      if (finding.field.starts_with(place_)) {
        finding.field.erase(0, place_.size());
      }
    }
    if (findings.empty()) {
      throw;
    }
    Refuse(std::move(findings));
  }
  if (!changed.empty()) {
    throw ToolError(ExitCode::CONFLICT,
                    "nothing was written: " + FormatObject(id_) + " was changed meanwhile");
  }
  const bool isWritten = report.Changes();
  if (isWritten && hasPending_) {
    Say(kPendingWent);
  }
  return isWritten;
}

}  // namespace tarnctl
