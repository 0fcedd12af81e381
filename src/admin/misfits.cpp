#include "admin/misfits.h"

#include "admin/row_views.h"
#include "persistence/next_boot_records.h"
#include "store/staged_content.h"
#include "validation/object_validation.h"

#include <string>
#include <utility>

namespace TarnConfigStore {
namespace {

std::string NameOf(const ConfigStoreObjectId& id) {
  std::string name = id.component + "/" + id.group + "/" + id.key;
  return id.instanceId.empty() ? name : name + "/" + id.instanceId;
}

std::string Beginning(DataPlace place) {
  switch (place) {
    case DataPlace::PENDING:
      return "pending for the next boot: ";
    case DataPlace::UNCONFIRMED:
      return "unconfirmed: ";
    case DataPlace::STAGED:
      return "staged: ";
    case DataPlace::CURRENT:
      break;
  }
  return {};
}

void Add(const ConfigStoreObjectId& id, DataPlace place, ErrorInfo error,
         std::vector<Misfit>& misfits) {
  misfits.push_back({{NameOf(id) + "#" + error.field, Beginning(place) + error.error},
                     id,
                     place,
                     std::move(error.field)});
}

// A column whose text is not JSON.
void FindDamage(const StoredRow& row, const ConfigStoreObjectId& id, std::vector<Misfit>& misfits) {
  for (const auto& [name, column] : kValueColumns) {
    const std::optional<std::string>& text = row.*column;
    if (!text) {
      continue;
    }
    JsonDoc document(JsonDoc::CapacityFor(text->size()));
    if (const Json::ParseResult result = document.Parse(*text, Json::Origin::STORED); !result) {
      const DataPlace place = column == &StoredRow::pending ? DataPlace::PENDING
                              : column == &StoredRow::user && !row.confirmed
                                  ? DataPlace::UNCONFIRMED
                                  : DataPlace::CURRENT;
      Add(id, place,
          {"/", std::string(name) + " is not valid JSON at byte " + std::to_string(result.offset) +
                    ": " + result.message},
          misfits);
    }
  }
}

}  // namespace

bool JudgeRow(const StoredRow& row, const ConfigStoreObjectId& id, const SchemaHandle& type,
              std::vector<Misfit>& misfits) {
  const std::size_t before = misfits.size();
  FindDamage(row, id, misfits);
  if (misfits.size() != before) {
    return false;
  }
  const std::vector<RowView> views = ViewsOf(row);
  for (const RowView& view : views) {
    const ObjectHandle object = MergeView(row, view.user, id, type);
    if (!object) {
      continue;
    }
    std::vector<ErrorInfo> errors;
    const bool hasUser = view.user != nullptr && row.*view.user;
    if (hasUser || views.size() == 1) {
      ValidateCSO(type, object, errors);
    } else if (ValidateIdentity(type, id, errors)) {
      ValidateObjectData(type, object, UpdateRules(), errors, true);
    }
    for (ErrorInfo& error : errors) {
      Add(id, view.place, std::move(error), misfits);
    }
  }
  return true;
}

void JudgeStaged(const RowMap& change, const SchemaHandle& type, std::vector<Misfit>& misfits) {
  const ConfigStoreObjectId id = IdFromRow(change);
  std::vector<ErrorInfo> errors;
  if (!type->IsRebootRequired()) {
    errors.push_back({"/",
                      "Changes of the type no longer wait for the next boot: this one could not be "
                      "taken back."});
  }
  if (ActionFromRow(change) == NextBootAction::SET) {
    JudgeStagedContent(change, id, type, errors);
  }
  for (ErrorInfo& error : errors) {
    Add(id, DataPlace::STAGED, std::move(error), misfits);
  }
}

}  // namespace TarnConfigStore
