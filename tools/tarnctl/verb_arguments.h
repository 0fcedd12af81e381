// What the command line says, and the pieces that verbs are made of.
#pragma once

#include "output.h"
#include "watch.h"
#include "write_verbs.h"

#include <CLI/CLI.hpp>

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace tarnctl {

using Verb = std::function<void(const Output&)>;

struct Arguments {
  bool asJson = false;
  std::optional<std::string> root;
  std::optional<int> logLevel;

  std::string name;    // object, type, prefix or key
  std::string detail;  // member or value
  std::vector<std::string> list;
  std::vector<std::string> conditions;
  bool allInstances = false;
  bool shipped = false;
  bool automatic = false;
  Layer layer = Layer::WHOLE;
  bool checkOnly = false;
  bool force = false;
  bool rest = false;
  bool everything = false;
  std::string socket = kNotificationSocket;
  std::optional<std::uint64_t> count;

  Verb verb;
};

/// Adds a verb. It runs after parsing, so that what it raises is never taken for a usage error.
CLI::App* AddVerb(CLI::App& parent, Arguments& arguments, const char* name, const char* help,
                  Verb verb);

/// Says more in a verb's help, before what stands in everyone's.
void AddNote(CLI::App& verb, const std::string& note);

/// Adds a verb that only stands before others.
CLI::App* AddFamily(CLI::App& parent, const char* name, const char* help);

/// OBJECT.
void AddObject(CLI::App& verb, Arguments& a);

/// DATA, of which objects are made.
void AddData(CLI::App& verb, Arguments& a);

/// OBJECT, --all-instances and --where: with either of the latter the verb is about the instances of
/// a type, as MeansInstances tells.
void AddInstances(CLI::App& verb, Arguments& a);
bool MeansInstances(const Arguments& a);

/// MEMBER, for verbs that have what AddInstances adds.
void AddMember(CLI::App& verb, Arguments& a);

}  // namespace tarnctl
