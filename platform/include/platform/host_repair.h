// Examining the files and databases of the stores, and mending them.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace HostRepair {

/// How bad something is: worth knowing, to be looked after, something that does not work, and
/// content that is lost or cannot be read.
enum class Weight { NOTE, WARNING, FAULT, DAMAGE };

/// Something about the files or databases that is not as it should be.
struct Finding {
  Weight weight = Weight::NOTE;
  std::string kind;     ///< a stable name: "store-damaged"
  std::string place;    ///< fixed path of the file
  std::string table;    ///< the table, trigger, index or view in it, where it is about one
  std::string message;  ///< what is wrong
  std::string advice;   ///< what to do about it
  bool mendable = false;
};

struct Examination {
  std::vector<Finding> findings;
  /// What the database layer can read without writing anything first.
  bool canReadStore = false;
  bool canReadTypes = false;
  /// The schema store is not there, or SQLite can read nothing of it: type files can take its place.
  bool typesAreLost = false;
};

/// Looks at all of it. Writes nothing, takes no right to write, waits for nobody for longer than the
/// wait limit, and works whatever state the stores are in. Does not raise for anything that it finds.
Examination Examine();

/// What a row holds, or the part of it that can still be read.
struct Cell {
  std::string column;
  std::optional<std::string> text;  ///< nothing for NULL; perhaps no UTF-8

  friend bool operator==(const Cell&, const Cell&) = default;
};

/// A row that has no place in the tables any more.
struct LostRow {
  std::string place;  ///< fixed path of the database
  std::string table;
  std::string reason;
  std::vector<Cell> cells;
};

struct Action {
  bool done = false;
  std::string kind;     ///< as of the finding
  std::string place;    ///< fixed path
  std::string message;  ///< what was done, or why it could not be
  std::string where;    ///< where every value that it was about is now
};

/// Gets rows before the databases that they were found in are changed. What it raises ends the repair
/// with nothing changed.
using KeepRows = std::function<void(const std::vector<LostRow>&)>;

// The functions below raise std::runtime_error, with the last store error set, when they cannot do
// anything; where only a part cannot be done, an action says so.

/// Makes a directory for what a repair keeps, beside the stores, for their owner alone. \return its path
std::string MakeKeepingPlace();

/// Puts both stores, as they are, into a file "backup" there; where they cannot be read, copies of
/// their files. \return the action
Action KeepCopies(const std::string& keepingPlace);

/// Mends what is beside the databases: a restore that was begun, left-over files, owners and modes.
std::vector<Action> MendFiles(const std::string& keepingPlace);

/// Mends the databases: puts back triggers, indexes, views and empty tables that are missing; and puts
/// in the place of a database that is damaged a new one with every row that can still be read. Both
/// databases change, or neither.
/// \param withoutTypes  allows a schema store without types in the place of one that is lost
std::vector<Action> MendDatabases(const std::string& keepingPlace, bool withoutTypes,
                                  const KeepRows& keep);

}  // namespace HostRepair
