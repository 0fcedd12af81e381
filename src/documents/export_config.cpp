#include "tarnconfigstore/documents.h"
#include "tarnconfigstore/listing.h"

#include "platform/logger.h"
#include "platform/type_files.h"

#include "documents/config_document.h"
#include "documents/document_writer.h"
#include "documents/sections.h"
#include "documents/staged_parts.h"
#include "errors/parse_failures.h"
#include "errors/raise.h"
#include "json/indent.h"
#include "json/instance_ids.h"
#include "json/json_doc.h"
#include "json/secrets.h"
#include "json/utf8.h"
#include "objects/generated_ids.h"
#include "objects/schema_lookup.h"
#include "persistence/connection.h"
#include "persistence/next_boot_records.h"
#include "persistence/prefix_rows.h"
#include "persistence/row_objects.h"
#include "persistence/statements.h"

#include <array>
#include <string>
#include <unordered_set>
#include <utility>

namespace TarnConfigStore {
namespace {

constexpr std::array<const PrefixStatements*, kSections> kValues = {
    &READ_USER_VALUES, &READ_AUTOMATIC_VALUES, &READ_VITAL_VALUES, &READ_CACHED_VALUES,
    &READ_PENDING_VALUES};

class Export {
 public:
  Export(const ConfigStoreObjectId& prefix, const ExportOptions& options,
         const std::function<void(std::string_view)>& write)
      : prefix_(prefix),
        options_(options),
        connection_(GetDBStore(DBStore::Type::CURRENT_STORE, true)),
        schemas_(TarnSchemaStore::SchemaStore::GetCache()),
        writer_(write),
        id_(prefix),
        isOfOneType_(!prefix.component.empty() && !prefix.group.empty() && !prefix.key.empty()) {}

  ExportReport Run() {
    ReadAtOneMoment(connection_, [this] { Write(); });
    return std::move(report_);
  }

 private:
  void Write() {
    writer_.Open();
    writer_.Add(kFormatName, std::to_string(kDocumentFormat));
    for (std::size_t i = 0; i < (options_.allParts ? kSections : 1); ++i) {
      WriteSection(i);
    }
    if (options_.allParts) {
      WriteStaged();
    }
    WriteMetadata();
    writer_.Finish();
  }

  void WriteSection(std::size_t section) {
    writer_.Open(kSectionNames[section]);
    ForEachRowUnder(prefix_, *kValues[section], connection_, [&](const RowMap& row) {
      const ConfigStoreObjectId& id = IdOf(row);
      if (!CanName(id)) {
        return;
      }
      if (!options_.allParts && row.Text("Success") != "1") {
        report_.unconfirmed.push_back(id);
        return;
      }
      const bool isInstance = type_->IsNonSingleton();
      const std::string_view text = row.Text("Value");
      if (IsShownAsItIs(text, id)) {
        writer_.AddIndented(id, isInstance, {indented_.GetString(), indented_.GetSize()});
      } else {
        writer_.AddObject(
            id, isInstance,
            Shown(text, id, writer_.PointerTo(id, isInstance), kSectionNames[section]));
      }
      report_.objects += section == 0 ? 1 : 0;
    });
    writer_.EndObjects();
    writer_.Close();
  }

  void WriteStaged() {
    writer_.Open(kStagedName);
    ForEachRowUnder(prefix_, READ_STAGED_RECORDS, connection_, [&](const RowMap& row) {
      const ConfigStoreObjectId id = IdFromRow(row);
      if (!HasWritableId(id)) {
        return;
      }
      const std::string pointer = writer_.PointerTo(id, true);
      const NextBootAction action = ActionFromRow(row);
      std::string json = "{\"action\":";
      json += Json::Quoted(kActionNames[static_cast<std::size_t>(action)]);
      const auto add = [&json](const char* name, const std::string& value) {
        json.append(",\"").append(name).append("\":").append(value);
      };
      if (!id.instanceId.empty()) {
        add(kInstanceName, Json::Quoted(id.instanceId));
      }
      add(kVersionName, QuotedColumn(row, "Version", IsVersion));
      for (const StagedPart& part : kStagedParts) {
        if (const auto text = row.Find(part.column)) {
          add(part.name, Shown(*text, id, pointer + "/" + part.name, kStagedName));
        }
      }
      json += '}';
      writer_.AddObject(id, true, json);
    });
    writer_.EndObjects();
    writer_.Close();
  }

  void WriteMetadata() {
    const bool hasInfo = options_.allParts || options_.metadata;
    if (!hasInfo && redacted_.empty()) {
      return;
    }
    writer_.Open(kMetadataName);
    if (options_.allParts) {
      std::string parts = "[";
      for (const char* part : kPartNames) {
        parts.append(Json::Quoted(part)).append(",");
      }
      writer_.Add(kPartsName, parts.append(Json::Quoted(kStagedName)).append("]"));
    }
    if (!redacted_.empty()) {
      writer_.Add(kRedactedName, redacted_ + "]");
    }
    if (hasInfo) {
      WriteInfo();
    }
    writer_.Close();
  }

  void WriteInfo() {
    writer_.Open(kObjectsName);
    ForEachRowUnder(prefix_, LIST_STORED, connection_, [&](const RowMap& row) {
      const ConfigStoreObjectId id = IdFromRow(row);
      const bool confirmed = row.Text("Success") == "1";
      if (!CanName(id) || (!options_.allParts && (row.Text("HasUser") != "1" || !confirmed))) {
        return;
      }
      std::string json = "{";
      const auto add = [&json](const char* name, const std::string& value) {
        json.append(json.size() > 1 ? ",\"" : "\"").append(name).append("\":").append(value);
      };
      const bool isInstance = type_->IsNonSingleton();
      if (isInstance) {
        add(kInstanceName, Json::Quoted(id.instanceId));
      }
      if (row.Find("CreationTime")) {
        add(kCreatedName, QuotedColumn(row, "CreationTime", IsTime));
      }
      const std::string revision(row.Text("Revision"));
      add(kRevisionName, std::to_string(RevisionFrom(revision.c_str())));
      add(kVersionName, QuotedColumn(row, "Version", IsVersion));
      if (!confirmed) {
        add(kConfirmedName, "false");
      }
      writer_.AddObject(id, isInstance, json.append("}"));
    });
    writer_.EndObjects();
    writer_.Close();
  }

  // The identifier of a row with a value. Most differ from the one before in nothing but the instance.
  const ConfigStoreObjectId& IdOf(const RowMap& row) {
    const bool isSameType =
        isOfOneType_ || (row.Text("Name") == id_.key && row.Text("ConfigGroup") == id_.group &&
                         row.Text("Component") == id_.component);
    if (isSameType) {
      id_.instanceId = row.Text("Identifier");
    } else {
      id_ = IdFromRow(row);
    }
    return id_;
  }

  // Looks up the type of a row. False for one that is left out.
  bool Knows(const ConfigStoreObjectId& id) {
    if (!looked_ || !IsSameType(known_, id)) {
      type_ = FindSchema(schemas_, id);
      known_ = id;
      looked_ = true;
    }
    if (type_) {
      return true;
    }
    if (!options_.skipUnknown) {
      ThrowException<ConfigStoreException>(CS_SCHEMA_NOT_FOUND, id.toString());
    }
    LeaveOut(id);
    return false;
  }

  // The same, and false as well for what its type has no place for since it got, or lost, instances.
  bool CanName(const ConfigStoreObjectId& id) {
    if (!HasWritableId(id)) {
      return false;
    }
    if (type_->IsNonSingleton() != id.instanceId.empty()) {
      return true;
    }
    Refuse(id, type_->IsNonSingleton() ? " is stored without the instance id that its type has"
                                       : " is stored with an instance id that its type has not");
    return false;
  }

  // Knows, and false as well for a row of another program whose instance id no document can have.
  bool HasWritableId(const ConfigStoreObjectId& id) {
    if (!Knows(id)) {
      return false;
    }
    if (id.instanceId.empty() || Json::IsInstanceId(id.instanceId)) {
      return true;
    }
    Refuse(id,
           " has an id that is no instance id: 1 to 255 bytes of UTF-8 without control characters");
    return false;
  }

  void Refuse(const ConfigStoreObjectId& id, const char* reason) {
    if (!options_.skipUnknown) {
      ThrowFailure(id.toString() + reason);
    }
    LeaveOut(id);
  }

  // A column of a row that a document has a form for.
  static std::string QuotedColumn(const RowMap& row, const char* column,
                                  bool (*isOfForm)(std::string_view)) {
    const std::string_view text = row.Text(column);
    if (!isOfForm(text)) {
      ThrowFailure(std::string(column) + " of " + IdFromRow(row).toString() +
                   " is nothing that a document can hold: \"" + Json::Utf8::Escaped(text) + "\"");
    }
    return Json::Quoted(text);
  }
  static bool IsVersion(std::string_view text) { return TypeFiles::IsVersion(text); }

  void LeaveOut(const ConfigStoreObjectId& id) {
    if (unknown_.insert(id.toString()).second) {
      report_.unknown.push_back(id);
    }
  }

  // Whether a row's text is sound, and nothing in it is to be masked, to go or to be added. It is
  // indented then.
  bool IsShownAsItIs(std::string_view text, const ConfigStoreObjectId& id) {
    const Json::SchemaPlace place = type_->GetSchemaPlace();
    if ((!options_.reveal && place.HoldsSecrets()) ||
        (!options_.allParts && place.HoldsGeneratedIds())) {
      return false;
    }
    indented_.Clear();
    return Json::AppendIndentedIfSound(text, {place.InstanceIdMember(), id.instanceId},
                                       writer_.LevelOfObject(type_->IsNonSingleton()), indented_);
  }

  // A row's text as the document has it.
  std::string Shown(std::string_view text, const ConfigStoreObjectId& id, std::string pointer,
                    const char* section) {
    JsonDoc document(JsonDoc::CapacityFor(text.size()));
    if (const Json::ParseResult result = document.Parse(text, Json::Origin::STORED); !result) {
      ReportParseFailure("\"" + std::string(section) + "\" of " + id.toString(), result, text);
      ThrowException<InvalidArgumentException>(CS_JSON_PARSE_FAILED);
    }
    Json::Value& value = *document.GetJsonValuePtr();
    Json::Allocator& allocator = document.GetAllocator();
    const Json::SchemaPlace place = type_->GetSchemaPlace();
    bool changed = false;
    if (!options_.reveal && place.HoldsSecrets()) {
      Json::MaskSecrets(value, place, allocator, pointer, [&](const std::string& masked) {
        redacted_.append(redacted_.empty() ? "[" : ",").append(Json::Quoted(masked));
        changed = true;
      });
    }
    if (!options_.allParts && Json::HasGeneratedId(value)) {
      DropGeneratedIds(value);
      changed = true;
    }
    changed = (!id.instanceId.empty() && NameInstance(value, id, allocator)) || changed;
    std::string shown;
    if (changed) {
      Json::Serialize(value, shown);
    } else {
      shown = text;
    }
    return shown;
  }

  // Gives data their instance id where they have none. They would be filed as another instance by an
  // import where they have that one's.
  bool NameInstance(Json::Value& value, const ConfigStoreObjectId& id,
                    Json::Allocator& allocator) const {
    const std::string_view idMember = type_->GetSchemaPlace().InstanceIdMember();
    Json::Value* own = Json::FindMember(value, idMember);
    if (own != nullptr && own->IsString() && Json::Text(*own) == id.instanceId) {
      return false;
    }
    if (own != nullptr && !own->IsNull()) {
      std::string found;
      Json::Serialize(*own, found);
      ThrowFailure("The data of " + id.toString() + " name another instance: " + found);
    }
    if (own != nullptr) {
      *own = Json::Copy(id.instanceId, allocator);
    } else {
      value.AddMember(Json::Copy(idMember, allocator), Json::Copy(id.instanceId, allocator),
                      allocator);
    }
    return true;
  }

  const ConfigStoreObjectId& prefix_;
  const ExportOptions& options_;
  DBStore::ConnectionHandle connection_;
  SchemaCacheHandle schemas_;
  DocumentWriter writer_;
  ExportReport report_;
  std::string redacted_;  // JSON, but for its end
  std::unordered_set<std::string> unknown_;
  bool looked_ = false;
  ConfigStoreObjectId known_{"", "", ""};
  ConfigStoreObjectId id_;  // of the row that was read last
  const bool isOfOneType_;
  Json::Buffer indented_;  // its text
  SchemaHandle type_;
};

}  // namespace

ExportReport ExportConfig(const ConfigStoreObjectId& prefix, const ExportOptions& options,
                          const std::function<void(std::string_view)>& write) {
  CSLogger::Log(CSLogger::kTrace, "%s invoked", "ExportConfig");
  return Export(prefix, options, write).Run();
}

std::string ExportConfigText(const ConfigStoreObjectId& prefix, const ExportOptions& options,
                             ExportReport* report) {
  std::string text;
  ExportReport exported =
      ExportConfig(prefix, options, [&text](std::string_view piece) { text += piece; });
  if (report != nullptr) {
    *report = std::move(exported);
  }
  return text;
}

}  // namespace TarnConfigStore
