#include "rehearsal/host_changes.h"

#include "documents/drift_builder.h"
#include "json/json.h"
#include "json/secrets.h"

#include <algorithm>
#include <cstddef>
#include <utility>

namespace TarnConfigStore {
namespace {

bool HoldTheSame(const StoredRow& a, const StoredRow& b) {
  return a.confirmed == b.confirmed &&
         std::all_of(kValueColumns.begin(), kValueColumns.end(),
                     [&](const ValueColumn& column) { return a.*column.text == b.*column.text; });
}

std::vector<DriftMember> MembersOf(const RowChange& change, const SchemaHandle& type) {
  using Step = DocumentPlan::Step;
  return DriftBuilder(true, false, FoundElsewhere::LEFT)
      .Of({change.after ? Step::WRITE : Step::REMOVE, change.id, type, change.before,
           change.after ? *change.after : StoredRow()})
      .GetMembers();
}

// What is shown with one type and not with the other is a secret of the other.
void HideWhatDiffers(std::vector<DriftMember>& members, const std::vector<DriftMember>& others) {
  const auto hide = [](std::optional<std::string>& value, const std::optional<std::string>* other) {
    if (value && (other == nullptr || value != *other)) {
      value = Json::Quoted(Json::kMask);
    }
  };
  for (DriftMember& member : members) {
    const auto same = std::find_if(others.begin(), others.end(), [&member](const auto& other) {
      return other.pointer == member.pointer && other.part == member.part;
    });
    hide(member.expected, same == others.end() ? nullptr : &same->expected);
    hide(member.found, same == others.end() ? nullptr : &same->found);
  }
}

// All of a change in one text, by which two of them are compared.
std::string TextOf(const PendingChange& change) {
  std::string text;
  const auto add = [&text](const std::optional<std::string>& part) {
    text.append(part.value_or("-")).append(1, '\0');
  };
  const auto addFindings = [&add](const std::vector<ErrorInfo>& findings) {
    for (const ErrorInfo& finding : findings) {
      add(finding.field);
      add(finding.error);
    }
    add({});
  };
  add(std::to_string(static_cast<int>(change.action)));
  for (const bool flag : {change.staged, change.pendingValue, change.unconfirmed, change.hasBase}) {
    add(flag ? "1" : "0");
  }
  for (const DriftObject& object : change.difference) {
    add(object.GetConfigStoreObjectId().toString());
    add(object.ToJson());
  }
  for (const MemberChange& member : change.meanwhile) {
    for (const auto& part : {std::optional(member.pointer), member.base, member.staged,
                             member.current, std::optional(member.part)}) {
      add(part);
    }
  }
  addFindings(change.findings);
  addFindings(change.mergedFindings);
  return text;
}

// Those that are not among others; as they may be shown.
template <class IsKnown>
std::vector<PendingChange> Choose(const HostState& state, const IsKnown& isKnown) {
  std::vector<PendingChange> chosen;
  for (std::size_t i = 0; i < state.waiting.size(); ++i) {
    if (!isKnown(state.waiting[i])) {
      chosen.push_back(state.masked[i]);
    }
  }
  return chosen;
}

const PendingChange* Find(const HostState& state, const ConfigStoreObjectId& id) {
  const auto found =
      std::lower_bound(state.waiting.begin(), state.waiting.end(), id,
                       [](const PendingChange& change, const ConfigStoreObjectId& wanted) {
                         return InOrderOfIds()(change.id, wanted);
                       });
  return found != state.waiting.end() && found->id == id ? &*found : nullptr;
}

// Hands on each key with what either map has for it, or null.
template <class Map, class Visit>
void ForEachKey(const Map& before, const Map& after, const Visit& visit) {
  const auto at = [](const Map& map, const auto& key) {
    const auto found = map.find(key);
    return found == map.end() ? nullptr : &found->second;
  };
  for (const auto& [key, value] : before) {
    visit(key, &value, at(after, key));
  }
  for (const auto& [key, value] : after) {
    if (before.count(key) == 0) {
      visit(key, nullptr, &value);
    }
  }
}

}  // namespace

std::vector<RowChange> FindChangedRows(const HostState& before, const HostState& after) {
  std::vector<RowChange> changes;
  ForEachKey(before.rows, after.rows,
             [&](const ConfigStoreObjectId& id, const StoredRow* was, const StoredRow* is) {
               if (was != nullptr && is != nullptr && HoldTheSame(*was, *is)) {
                 return;
               }
               const auto copy = [](const StoredRow* row) {
                 return row == nullptr ? nullptr : std::make_shared<const StoredRow>(*row);
               };
               changes.push_back({id, copy(was), copy(is)});
             });
  std::sort(changes.begin(), changes.end(),
            [](const RowChange& a, const RowChange& b) { return InOrderOfIds()(a.id, b.id); });
  return changes;
}

std::optional<DriftObject> TellOf(const RowChange& change, const SchemaHandle& before,
                                  const SchemaHandle& after) {
  const DriftKind kind = !change.before  ? DriftKind::MISSING
                         : !change.after ? DriftKind::EXTRA
                                         : DriftKind::CHANGED;
  if (!before && !after) {
    return DriftObject(change.id, kind, {});
  }
  std::vector<DriftMember> members = MembersOf(change, after ? after : before);
  if (before && after && before->GetSchemaPlace().HoldsSecrets()) {
    HideWhatDiffers(members, MembersOf(change, before));
  }
  if (members.empty()) {
    return std::nullopt;
  }
  return DriftObject(change.id, kind, std::move(members));
}

void FindOtherChanges(const HostState& before, const HostState& after, HostDifference& difference) {
  difference.waiting = Choose(after, [&before](const PendingChange& change) {
    const PendingChange* const known = Find(before, change.id);
    return known != nullptr && TextOf(*known) == TextOf(change);
  });
  difference.settled = Choose(
      before, [&after](const PendingChange& change) { return Find(after, change.id) != nullptr; });
  using Type = TypeFiles::KeptType;
  ForEachKey(before.types, after.types,
             [&](const TarnSchemaStore::TypeName& name, const Type* was, const Type* is) {
               if (was == nullptr || is == nullptr || was->text != is->text) {
                 difference.types.push_back({{name.key, name.group, name.component},
                                             was == nullptr ? "" : was->version,
                                             is == nullptr ? "" : is->version});
               }
             });
  ForEachKey(
      before.entries, after.entries,
      [&](const std::string& key, const std::string* was, const std::string* is) {
        if (was == nullptr || is == nullptr || *was != *is) {
          difference.entries.push_back({key, was == nullptr ? "" : *was, is == nullptr ? "" : *is});
        }
      });
}

}  // namespace TarnConfigStore
