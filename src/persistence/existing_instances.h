// What a bulk write carries over from the rows that it replaces.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace TarnConfigStore {

/// Revision and creation time of instances of one type, by instance id. The texts lie in one block.
class ExistingInstances {
 public:
  struct Row {
    int revision;
    std::string_view creationTime;  ///< valid until the next one is added
  };

  /// Fastest in the order of the ids. Of an id that is there already, the later one counts.
  void Add(std::string_view instanceId, int revision, std::string_view creationTime);

  /// Looks one up.
  /// \param next  0 at first; who asks in the order of the ids and hands on what it became gets the
  ///              answer at once
  std::optional<Row> Find(std::string_view instanceId, std::size_t& next) const;

 private:
  struct Entry {
    std::size_t at;
    std::size_t idSize;
    std::size_t creationTimeSize;
    int revision;
  };
  std::string_view Id(const Entry& entry) const;
  std::size_t PlaceOf(std::string_view instanceId) const;

  std::vector<Entry> entries_;  // in the order of their ids
  std::string texts_;
};

}  // namespace TarnConfigStore
