#include "objects/instance_order.h"

#include <algorithm>
#include <iterator>
#include <unordered_map>
#include <unordered_set>

namespace TarnConfigStore {
namespace {

using IdSet = std::unordered_set<std::string_view>;

IdSet SetOf(const InstanceIds& ids) {
  return {ids.begin(), ids.end()};
}

InstanceIds Only(const InstanceIds& ids, const IdSet& wanted) {
  InstanceIds kept;
  std::copy_if(ids.begin(), ids.end(), std::back_inserter(kept),
               [&wanted](std::string_view id) { return wanted.contains(id); });
  return kept;
}

// The ids of a list, and those that only the other has where they stand there.
InstanceIds Interleave(const InstanceIds& leading, const InstanceIds& other) {
  const IdSet known = SetOf(leading);
  InstanceIds first;
  std::unordered_map<std::string_view, InstanceIds> following;
  InstanceIds* at = &first;
  for (const std::string_view id : other) {
    if (known.contains(id)) {
      at = &following[id];
    } else {
      at->push_back(id);
    }
  }
  InstanceIds ids = std::move(first);
  for (const std::string_view id : leading) {
    ids.push_back(id);
    if (const auto more = following.find(id); more != following.end()) {
      ids.insert(ids.end(), more->second.begin(), more->second.end());
    }
  }
  return ids;
}

}  // namespace

MergedOrder MergeOrders(const InstanceIds* base, const InstanceIds& staged,
                        const InstanceIds& current) {
  IdSet common = SetOf(Only(staged, SetOf(current)));
  if (base != nullptr) {
    common = SetOf(Only(*base, common));
  }
  const InstanceIds inStaged = Only(staged, common);
  const InstanceIds inCurrent = Only(current, common);
  MergedOrder merged;
  bool stagedMoved = inStaged != inCurrent;
  if (base == nullptr) {
    merged.conflicts = stagedMoved;
  } else {
    const InstanceIds inBase = Only(*base, common);
    merged.changedMeanwhile = inCurrent != inBase;
    merged.conflicts = stagedMoved && merged.changedMeanwhile && inStaged != inBase;
    stagedMoved = inStaged != inBase;
  }
  const bool currentLeads = merged.changedMeanwhile && !stagedMoved;
  merged.ids = currentLeads ? Interleave(current, staged) : Interleave(staged, current);
  return merged;
}

bool ShareIds(const InstanceIds& a, const InstanceIds& b) {
  return !Only(a, SetOf(b)).empty();
}

}  // namespace TarnConfigStore
