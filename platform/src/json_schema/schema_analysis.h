// What is known of a schema only when all of its nodes are there.
#pragma once

#include "json_schema/compiled_schema.h"

#include <deque>
#include <vector>

namespace JsonValidator {

/// Notes references that come back to where they stand without going into a member or an element,
/// and schemas nested in one another so deeply at one place that checking them could overflow the
/// stack.
void FindLoops(const std::deque<Node>& nodes, std::vector<SchemaFault>& faults);

/// Fills in which tags are found beneath each node, and which property holds the instance id. Only
/// for nodes without loops.
void LinkTags(std::deque<Node>& nodes);

}  // namespace JsonValidator
