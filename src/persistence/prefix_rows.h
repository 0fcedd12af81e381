// Reading everything under a prefix of identifiers, in the order of identifiers.
#pragma once

#include "tarnconfigstore/object_id.h"

#include "platform/db_store.h"

#include "persistence/row_map.h"

#include <array>
#include <functional>
#include <string_view>

namespace TarnConfigStore {

/// The same question for prefixes of none to all four of component, group, name and identifier,
/// which are the statement's parameters.
using PrefixStatements = std::array<std::string_view, 5>;

/// Whether an identifier stands under a prefix: component, group, key and instance id, up to the first
/// empty one.
bool IsUnder(const ConfigStoreObjectId& prefix, const ConfigStoreObjectId& id);

/// Hands on the rows under a prefix. Raises ConfigStoreException 2000 "Get store rows failed.".
void ForEachRowUnder(const ConfigStoreObjectId& prefix, const PrefixStatements& statements,
                     const DBStore::ConnectionHandle& connection, const RowVisitor& visit);

/// Runs steps that read on the connection. What they read is the store of one moment, whatever is
/// written meanwhile; nobody waits for them. Raises ConfigStoreException 2000 "Get store rows
/// failed."; what the steps raise passes through.
void ReadAtOneMoment(const DBStore::ConnectionHandle& connection,
                     const std::function<void()>& steps);

}  // namespace TarnConfigStore
