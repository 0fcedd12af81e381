#include "persistence/existing_instances.h"

#include <algorithm>

namespace TarnConfigStore {

std::string_view ExistingInstances::Id(const Entry& entry) const {
  return std::string_view(texts_).substr(entry.at, entry.idSize);
}

std::size_t ExistingInstances::PlaceOf(std::string_view instanceId) const {
  const auto place = std::lower_bound(
      entries_.begin(), entries_.end(), instanceId,
      [this](const Entry& entry, std::string_view wanted) { return Id(entry) < wanted; });
  return static_cast<std::size_t>(place - entries_.begin());
}

void ExistingInstances::Add(std::string_view instanceId, int revision,
                            std::string_view creationTime) {
  const Entry entry = {texts_.size(), instanceId.size(), creationTime.size(), revision};
  texts_.append(instanceId).append(creationTime);
  if (entries_.empty() || Id(entries_.back()) < instanceId) {
    entries_.push_back(entry);
    return;
  }
  const auto place = entries_.begin() + static_cast<std::ptrdiff_t>(PlaceOf(instanceId));
  if (Id(*place) == instanceId) {
    *place = entry;
  } else {
    entries_.insert(place, entry);
  }
}

std::optional<ExistingInstances::Row> ExistingInstances::Find(std::string_view instanceId,
                                                              std::size_t& next) const {
  if (next >= entries_.size() || Id(entries_[next]) != instanceId) {
    next = PlaceOf(instanceId);
  }
  if (next == entries_.size() || Id(entries_[next]) != instanceId) {
    return std::nullopt;
  }
  const Entry& found = entries_[next++];
  return Row{found.revision,
             std::string_view(texts_).substr(found.at + found.idSize, found.creationTimeSize)};
}

}  // namespace TarnConfigStore
