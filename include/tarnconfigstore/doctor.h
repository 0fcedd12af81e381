// Examining a host's stores, and repairing them.
#pragma once

#include "tarnconfigstore/export.h"
#include "tarnconfigstore/object_id.h"

#include <string>
#include <vector>

namespace TarnConfigStore {

/// How bad something is.
enum class DoctorSeverity : int {
  NOTE = 0,     ///< worth knowing; nothing has to be done about it
  WARNING = 1,  ///< to be looked after: rights, left-over files, what nobody can use any more
  FAULT = 2,    ///< something does not work: an object that cannot be read, a trigger that is gone
  DAMAGE = 3,   ///< a database that is lost or cannot be read, wholly or in part
};

/// Something that is not as it should be.
struct DoctorFinding {
  DoctorSeverity severity = DoctorSeverity::NOTE;
  /// What it is, in one word that never changes its meaning: "damaged", "row-not-json".
  std::string kind;
  std::string file;   ///< fixed path
  std::string table;  ///< of a database: the table, or what else in it has a name; empty for all
  /// The object; all empty where it is not about one.
  ConfigStoreObjectId object{"", "", ""};
  std::string
      pointer;  ///< JSON Pointer (RFC 6901) into the object's data, or the column of its row
  std::string message;  ///< what is wrong; tells no secret
  std::string advice;   ///< what to do about it
  /// RepairHost mends it without losing a value, as far as this user may.
  bool mendable = false;
};

/// One thing that a repair did, or could not do.
struct DoctorAction {
  bool done = false;
  std::string kind;  ///< of the finding
  std::string file;  ///< fixed path
  ConfigStoreObjectId object{"", "", ""};
  std::string message;  ///< what was done, or why it was not
  std::string where;    ///< where every value is now that it was about
};

/// What a host's stores are like, and what a repair did about it.
struct DoctorReport {
  std::vector<DoctorFinding>
      findings;                       ///< as things are now: after the repair, where there was one
  std::vector<DoctorFinding> before;  ///< what a repair found first
  std::vector<DoctorAction> actions;  ///< in their order
  /// Directory with the backup that a repair made first and with "put-aside.json", which has every
  /// value that has no place in the store any more. Empty when nothing was to be done.
  std::string keepingPlace;

  /// True when there are no findings but notes, and everything that was tried was done.
  TARN_CONFIG_STORE_EXPORT bool IsHealthy() const;
  /// True when a finding says DAMAGE.
  TARN_CONFIG_STORE_EXPORT bool IsDamaged() const;
  /// \return {"healthy", "findings": [{"severity", "kind", "file", "table", "object", "pointer",
  ///         "message", "advice", "mendable"}], "before", "actions": [{"done", "kind", "file",
  ///         "object", "message", "where"}], "keepingPlace"}, compact; without what is empty
  TARN_CONFIG_STORE_EXPORT std::string ToJson() const;
};

/// Looks at everything that the store rests on: the files' rights and owners, left-over files, a restore
/// that was begun, both databases (pages, write-ahead log, layout), the types, every row against its
/// type, what is staged and what waits, the objects that types bring along, the allowlist, and whether
/// anybody listens for notifications, where those are switched on: by a connection that sends nothing.
///
/// Writes nothing, keeps nobody from writing, and works on stores that all other calls refuse; where
/// the rows cannot be read, a finding says so. Databases that are in use may be written meanwhile: what
/// it says is true of the moment at which it looked. Thread-safe; a fork waits for the end.
/// \throws std::bad_alloc; nothing else that it finds is an exception
TARN_CONFIG_STORE_EXPORT DoctorReport ExamineHost();

/// What keeps changes from being announced, as far as it lies with the host: what ExamineHost says of the
/// allowlist, and that the announcements are switched off, which is no fault there. For whoever listens;
/// whether somebody does is not looked at. Writes nothing. Thread-safe.
/// \return empty where changes of all types on the allowlist are announced
/// \throws std::bad_alloc; nothing else that it finds is an exception
TARN_CONFIG_STORE_EXPORT std::vector<DoctorFinding> ExamineNotification();

struct RepairOptions {
  /// Type files, or directories of them, from which types are installed that are not there any more, or
  /// are damaged. Types that are there stay as they are.
  std::vector<std::string> typePaths;
};

/// Examines the host, and mends what can be mended without losing a value: nothing is ever thrown away.
/// When there is nothing of the kind, nothing is written. Otherwise:
///
/// 1. A directory "doctor-TIME" is made beside the stores, for their owner alone, with a backup of both
///    ("backup", for RestoreHost), or where that cannot be made, with copies of their files.
/// 2. A restore that was begun is completed; left-over files are moved into the directory; owners and
///    modes are set.
/// 3. Triggers, indexes, views and tables that are missing are made again. A database that is damaged is
///    read page by page, its log with it, and every row that can still be read goes into a new one, which
///    takes its place as a restored one does: who has it open sees it from then on. It has the layout
///    that InitializeHost makes. Where others write meanwhile, it begins again.
/// 4. Types are installed from the files given, as far as they are not there.
/// 5. In one transaction: values that are no JSON are put aside, data that carry another instance's id
///    get that of their row, members are moved to the part that their type says, staged changes that
///    can never be applied are put aside, and the objects that types bring along are written again. None
///    of it counts as a write: revision and times stay, nobody is notified.
///
/// Then the host is examined again. A row that does not fit its type, or whose type is not installed,
/// stays as it is. Run again, it does what is left. Thread-safe; a fork waits for each step's end.
/// \throws ConfigStoreException 2000 when no directory or copies can be made (nothing was changed then)
/// \throws InvalidArgumentException 1081, with the path, when a type file cannot be read (likewise)
TARN_CONFIG_STORE_EXPORT DoctorReport RepairHost(const RepairOptions& options);

}  // namespace TarnConfigStore
