// Objects made from what the user gives.
#pragma once

#include "tarnconfigstore/config_store.h"

#include "command_line.h"
#include "failure.h"
#include "given/given_data.h"
#include "given/member_values.h"
#include "store/type_schema.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace tarnctl {

/// What an object is made of: one file ("-" for standard input), or MEMBER=VALUE arguments.
inline constexpr const char* kData = "DATA";
Argument DataArgument();

/// The same, where some members, or all, may come from standard input.
inline constexpr const char* kSecret = "--secret";
std::vector<Argument> DataOrSecretArguments();

/// True where kData is a file.
bool IsFile(const std::vector<std::string>& data);

/// What an object is to be made of.
struct ObjectData {
  std::vector<std::string> data = {};     ///< of kData
  std::vector<std::string> secrets = {};  ///< of kSecret
  bool areSeen = true;  ///< by every user of the host, as the arguments of a process are
};

/// What was given for kData, and for kSecret where the verb takes it. Raises ToolError USAGE for
/// nothing, and for a file and secrets.
ObjectData DataOf(const Given& given);

struct GivenObject {
  std::shared_ptr<TarnConfigStore::ConfigStoreObject> object;
  GivenData source;  ///< of nothing where members were given
};

/// An object with what is given. A secret among the arguments gets a warning. Raises as
/// GivenData::Read, ReadMembers and ReadSecrets do, and ToolError
/// INVALID for "***" where a secret belongs, with each place.
GivenObject MakeObject(const TarnConfigStore::ConfigStoreObjectId& id, const ObjectData& data,
                       const TypeSchema& schema, Null null = Null::OF_TYPE);

using Write = std::function<void(TarnConfigStore::ConfigStore&,
                                 const std::shared_ptr<TarnConfigStore::ConfigStoreObject>&)>;

/// A write that only needs a store, and does without more of the user. Answers what people are to be told
/// of it beside.
using Notes = std::vector<std::string>;
using PreparedWrite = std::function<Notes(TarnConfigStore::ConfigStore&)>;

/// The way that every verb takes which writes an object: makes it of what is given, and then writes it.
/// The notes name each element that says nothing and was left out. Raises as MakeObject does; the write
/// what `write` raises, with the lines of a YAML file where it has findings, and ToolError INVALID when
/// the store was left as it is because the object comes to nothing.
PreparedWrite PrepareObject(const TarnConfigStore::ConfigStoreObjectId& id, const ObjectData& data,
                            const Write& write);

/// The same for a write that changes the members given, and removes those that are given as null.
PreparedWrite PrepareUpdate(const TarnConfigStore::ConfigStoreObjectId& id, const ObjectData& data,
                            const Write& write);

/// Opens the store, writes, and says the notes.
void Run(const PreparedWrite& write);

/// Both at once.
void WriteObject(const TarnConfigStore::ConfigStoreObjectId& id, const ObjectData& data,
                 const Write& write);
void UpdateObject(const TarnConfigStore::ConfigStoreObjectId& id, const ObjectData& data,
                  const Write& write);

}  // namespace tarnctl
