// A row that another program wrote: any text in its columns. Reads answer or refuse.
// An input is a line for each of the type, flags, the identifier, the user's, pending, automatic, vital and
// cached value, and the staged change; "-" stands for NULL. Each letter of the flags is one.
#include "tarnconfigstore/apply_next_boot.h"
#include "tarnconfigstore/boot_state.h"
#include "tarnconfigstore/config_store.h"
#include "tarnconfigstore/documents.h"
#include "tarnconfigstore/listing.h"
#include "tarnconfigstore/pending.h"
#include "tarnconfigstore/stored_views.h"

#include "fuzz_target.h"
#include "test_host.h"

#include <sqlite3.h>

#include <functional>
#include <map>
#include <string>

namespace Fuzz {
namespace {

using namespace TarnConfigStore;

enum Flag : unsigned { UNCONFIRMED = 1, BLOBS = 2, UPGRADE = 4, STORED_ID = 8, BOOT = 16 };

unsigned FlagsOf(std::string_view letters) {
  constexpr std::string_view kKnown = "cbuix";
  unsigned flags = 0;
  for (std::size_t i = 0; i < kKnown.size(); ++i) {
    flags |= letters.find(kKnown[i]) != std::string_view::npos ? 1U << i : 0U;
  }
  return flags;
}

// As a literal of SQL, which can say any bytes.
std::string Literal(std::string_view bytes, bool asBlob = false) {
  constexpr const char* kHex = "0123456789ABCDEF";
  std::string text = "X'";
  for (const char c : bytes) {
    text += kHex[static_cast<unsigned char>(c) >> 4U];
    text += kHex[static_cast<unsigned char>(c) & 15U];
  }
  return asBlob ? text + "'" : "CAST(" + text + "' AS TEXT)";
}

std::string ValueOf(std::string_view line, unsigned flags) {
  return line == "-" ? "NULL" : Literal(line, (flags & BLOBS) != 0);
}

std::string KeyOf(const ConfigStoreObjectId& id) {
  return Literal(id.component) + "," + Literal(id.group) + "," + Literal(id.key) + "," +
         Literal(id.instanceId) + ",'1.0'";
}

void PutRows(ConfigStoreObjectId id, unsigned flags, std::string_view input) {
  std::string values;
  for (int i = 0; i < 5; ++i) {
    values += "," + ValueOf(TakeLine(input), flags);
  }
  std::string sql =
      "BEGIN; INSERT INTO Config (Component, ConfigGroup, Name, Identifier, Version, UserValue, "
      "DesiredValue, AutoConfValue, VitalValue, CachedValue, Success) VALUES (" +
      KeyOf(id) + values + "," + ((flags & UNCONFIRMED) != 0 ? "0" : "1") + ");";
  if (!input.empty()) {
    const std::string_view staged = TakeLine(input);
    sql +=
        "INSERT INTO DesiredUserConfig (Component, ConfigGroup, Name, Identifier, Version, Value, "
        "BootAction) VALUES (" +
        KeyOf(id) + "," + ValueOf(staged, flags) + ",'SET');";
  }
  sql += (flags & BOOT) != 0 ? "INSERT INTO KeyValue VALUES ('IS_BOOT', 'true');" : "";
  TestHost::Get().Store().Run(sql + "COMMIT");
}

// What a call answers; it may refuse, but with an exception of the library's alone.
std::string Answer(const std::function<std::string()>& call) {
  try {
    return call();
  } catch (const ConfigStoreException& error) {
    Require(*error.what() != '\0', "a refusal has a reason");
    return "refused";
  }
}

std::string DataOf(const std::shared_ptr<ConfigStoreObject>& object) {
  return object ? object->GetData() : "none";
}

template <class List>
std::string DataOfAll(const List& objects) {
  std::string text;
  for (const auto& object : objects) {
    text += DataOf(object) + " ";
  }
  return text;
}

void Read(const ConfigStoreObjectId& id) {
  const auto store = ConfigStore::GetStore("");
  const ConfigStoreObjectId type(id.key, id.group, id.component);
  const auto filter = std::make_shared<FilterSpecObject>(type);
  const std::string one = Answer([&] { return DataOf(store->Get(id)); });
  const std::string all = Answer([&] { return DataOfAll(store->GetInstances(filter)); });
  if (!id.instanceId.empty() && one != "refused" && one != "none" && all != "refused") {
    Require(all == one + " ", "one object reads as it does among all", one + "\n" + all);
  }
  for (const FLAG flag : {DESIRED_USER_ONLY, DESIRED_WITH_VITAL_AND_CACHED}) {
    Answer([&] { return DataOf(GetDesiredUserConfig(id, flag)); });
    Answer([&] { return DataOfAll(GetDesiredUserConfigInstances(type, flag)); });
  }
  Answer([&] { return DataOf(GetConfigDuringBoot(id, EXTERNAL)); });
  Answer([&] { return DataOf(store->GetNextBootStore()->Get(id)); });
  Answer([&] { return DataOfAll(store->GetNextBootStore()->GetInstances(filter)); });
  Answer([&] { return DataOfAll(GetConfigOfGroup(id.component).objects); });
  Answer([&] { return std::to_string(store->GetRevision(id)); });
  Answer([&] { return std::to_string(store->GetInstanceIds(type).size()); });
  const ConfigStoreObjectId everything("", "", "");
  Answer([&] { return std::to_string(ListStored(everything).size()); });
  Answer([&] { return std::to_string(ListStaged(everything).size()); });
  Answer([&] { return ExportConfigText(everything, {.allParts = true, .skipUnknown = true}); });
}

// What is foretold of a merge is what comes of it.
void ApplyMerged() {
  std::size_t foretold = 0;
  const std::string listed = Answer([&foretold] {
    for (const PendingChange& change : ListPendingChanges({})) {
      for (const MemberChange& member : change.meanwhile) {
        foretold += member.conflicts ? 1 : 0;
      }
    }
    return "done";
  });
  Answer([&] {
    std::size_t found = 0;
    for (const UnappliedChange& change :
         ApplyNextBootConfig({.applyRest = true, .merge = ApplyMerge::MERGE}).staged) {
      found += change.conflicts.size();
    }
    Require(listed != "done" || found == foretold, "conflicts are foretold");
    return "done";
  });
}

// Writes over the row do or do not take place, and then it can be deleted.
void Write(const ConfigStoreObjectId& id) {
  const auto store = ConfigStore::GetStore("");
  TestSupport::Database& rows = TestHost::Get().Store();
  const std::string before = rows.Rows();
  const std::string update = Answer([&] {
    const auto object = std::make_shared<ConfigStoreObject>(id);
    object->SetValue("name", "s");
    store->Update(object, EXTERNAL);
    return "done";
  });
  Require(update != "refused" || rows.Rows() == before, "a refused write leaves the row as it was");
  ApplyMerged();
  Answer([&] { return std::to_string(ApplyNextBootConfig({}).applied.size()); });
  if (Answer([&] { return store->Delete(id), "done"; }) == "done") {
    Require(rows.Rows().find("/" + id.key + "/" + id.instanceId + " ") == std::string::npos,
            "what is deleted is gone");
  }
}

void Run(std::string_view input) {
  TestHost& host = TestHost::Get();
  ConfigStoreObjectId id = host.Type(TakeLine(input));
  const unsigned flags = FlagsOf(TakeLine(input));
  const std::string_view identifier = TakeLine(input);
  if ((flags & STORED_ID) != 0) {
    id.instanceId = identifier.substr(0, identifier.find('\0'));
  }
  const std::string context = host.Host().Path(HostPaths::kUpgradeContext);
  if ((flags & UPGRADE) != 0) {
    TestSupport::WriteFile(context, "1");
  }
  PutRows(id, flags, input);
  Read(id);
  Write(id);
  host.Clear();
  if ((flags & UPGRADE) != 0) {
    std::filesystem::remove(context);
  }
}

const Target target("stored_rows", Run);

}  // namespace
}  // namespace Fuzz
