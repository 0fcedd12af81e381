// The configuration types and objects that are measured.
#pragma once

#include "tarnconfigstore/object_id.h"

#include <cstddef>
#include <string>

namespace Benchmarks {

/// Bytes of every object's JSON text, which has ten members: texts, integers, booleans, a double
/// and a list.
constexpr std::size_t kObjectSize = 400;

/// Texts of one row's value columns; an empty one is stored as NULL.
struct RowValues {
  std::string user;
  std::string automatic;
  std::string vital;
  std::string cached;
};

/// How the members of a type are tagged.
enum class TypeKind { USER, MIXED, INSTANCES };

/// When changes of a type take effect.
enum class Effect { AT_ONCE, AT_BOOT };

/// The type file of a type in the benchmarks' group.
std::string TypeFile(const std::string& key, TypeKind kind, Effect effect = Effect::AT_ONCE);

/// The type file of a type that takes any members, and a list of parts, each with an "id".
std::string LargeTypeFile(const std::string& key);
constexpr const char* kParts = "parts";

/// An object of a USER type, and of an INSTANCES type when an instance id is given. Objects of
/// different variants differ in all members but the id, and are equally long.
std::string ObjectText(unsigned variant, const std::string& instanceId = std::string());

/// The members of ObjectText divided among all four value columns of a MIXED type; automatic and
/// user values overlap in one member.
RowValues DividedObject(unsigned variant);

/// An object of a large type: 2,500 members, each as ObjectText makes them. 1 MB.
std::string MegabyteText(unsigned variant);

/// A schema that takes long to compile: objects of many members, with formats, patterns and choices.
std::string WideSchema();
/// What fits it.
std::string WideObject();

TarnConfigStore::ConfigStoreObjectId IdOf(const std::string& key,
                                          const std::string& instanceId = std::string());

/// The id of the n-th instance.
std::string InstanceId(std::size_t number);

}  // namespace Benchmarks
