// Finding the objects of a type by their instance ids.
#pragma once

#include <algorithm>
#include <cstddef>
#include <optional>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace TarnConfigStore {

/// The places of ids in the order in which they were added. As long as that is the ids' own order, in
/// which documents are exported and rows are read, nothing but comparisons is needed. The texts have to
/// outlive it.
class InstanceIndex {
 public:
  std::size_t Size() const { return ids_.size(); }
  void Reserve(std::size_t count) { ids_.reserve(count); }

  /// The next place gets the id, which nothing has yet.
  void Add(std::string_view id) {
    if (isInOrder_ && !ids_.empty() && id < ids_.back()) {
      isInOrder_ = false;
      for (const std::string_view earlier : ids_) {
        places_.emplace(earlier, places_.size());
      }
    }
    if (!isInOrder_) {
      places_.emplace(id, ids_.size());
    }
    ids_.push_back(id);
  }

  /// \param likely  the place where it may be, as a rule the one after the last that was found
  std::optional<std::size_t> Find(std::string_view id, std::size_t likely = 0) const {
    if (likely < ids_.size() && ids_[likely] == id) {
      return likely;
    }
    if (!isInOrder_) {
      const auto known = places_.find(id);
      return known == places_.end() ? std::nullopt : std::optional(known->second);
    }
    if (ids_.empty() || ids_.back() < id) {
      return std::nullopt;
    }
    const auto at = std::lower_bound(ids_.begin(), ids_.end(), id);
    return *at == id ? std::optional(static_cast<std::size_t>(at - ids_.begin())) : std::nullopt;
  }

 private:
  std::vector<std::string_view> ids_;
  bool isInOrder_ = true;
  std::unordered_map<std::string_view, std::size_t> places_;  // where they are in another order
};

}  // namespace TarnConfigStore
