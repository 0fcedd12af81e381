// The order of a list's elements, by their ids, where two sides changed the list.
#pragma once

#include <string_view>
#include <vector>

namespace TarnConfigStore {

/// The ids of a list's elements in their order, none twice.
using InstanceIds = std::vector<std::string_view>;

struct MergedOrder {
  InstanceIds ids;                ///< of all elements that either side has
  bool conflicts = false;         ///< both have another order than the base, and not the same one
  bool changedMeanwhile = false;  ///< the current order is another one than the base's
};

/// Of elements that all have, the order of the side that changed it comes out. Those that one side
/// alone has follow the element that they follow there.
/// \param base  null where there was no list: then what both sides have must stand in one order
MergedOrder MergeOrders(const InstanceIds* base, const InstanceIds& staged,
                        const InstanceIds& current);

bool ShareIds(const InstanceIds& a, const InstanceIds& b);

}  // namespace TarnConfigStore
