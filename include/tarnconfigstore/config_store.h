// The store of current configuration, and transactions over it.
#pragma once

#include "tarnconfigstore/config_store_object.h"
#include "tarnconfigstore/contexts.h"
#include "tarnconfigstore/exceptions.h"
#include "tarnconfigstore/filter_spec_object.h"
#include "tarnconfigstore/next_boot_store.h"

#include <cstdint>
#include <list>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace TarnConfigStore {

/// Reads and writes the host's current configuration.
///
/// The store keeps one row for each object. A row has several values: what the user set, what
/// automatic configuration set, the vital and the cached value, and a user value that is pending
/// for the next boot. Reads merge them.
///
/// A store is held through a shared pointer. It lives, with its database connection, until the last
/// copy of the pointer is gone.
///
/// What holds for every operation:
/// - An empty object or filter handle is logged (code 1041). The call returns an empty result and
///   writes nothing.
/// - A type that is not installed throws ConfigStoreException 1037 with the identifier's text.
///   ValidationException 2000 is thrown for an instance id where the type has no instances, for
///   none where it has some, and by operations on several instances for a type without instances.
///   All of this comes before the database is read.
/// - A failure of the database throws ConfigStoreException 2000 with a message that says what
///   failed. GetLastStoreError (diagnostics.h) returns what the database said. A schema store that
///   cannot be read throws the same.
/// - A store whose file is not at its path any more fails as one that is missing; one that was opened
///   under another host root fails, too. Writes ask each time, reads every few milliseconds.
/// - A stored value that is no JSON throws InvalidArgumentException 1080; the log names the row.
/// - A write joins the transaction that is open on this store, if there is one. Else it is durable
///   when the call returns. A write that throws has written nothing.
///
/// What holds for every write of objects, unless the function says otherwise:
/// - The data is cleaned, and then checked against the type. Cleaning removes what reads back the
///   same without it: empty objects and lists that the type knows and does not require, has no
///   default for (for an object: for any member of it either), and that are neither vital nor cached;
///   in lists of instances the elements that are empty; and the object's own instance id where
///   nothing else is left beside it. What fits the type only with its empty members keeps them. The
///   findings name places in the data as they were given.
/// - What is stored is completed: where the data of an instance lack its id, it is written into them,
///   elements of lists get the ids that the store generates, and numbers the kind that the schema
///   leaves them: 9.0 becomes 9 for an "integer", and 5 becomes 5.0 for a "number", where that
///   changes no digit.
/// - The caller's object holds what was stored once the call returns. A call that throws leaves it as
///   it was.
/// - An object without data is logged, and not written.
/// - A change of a type on the host's allowlist is announced to the management daemon, while the
///   key/value entry "NOTIFY_KEELD" is "true": before the write by SetUserData, after it by all
///   others, and inside a transaction before its commit. DeleteInstances announces nothing for a
///   filter without conditions. A failure of the announcement is logged, and never reported.
///
/// Thread-safe: each operation is one unit, and other threads' operations on the store come before
/// or after it. But what one thread begins with BeginTransaction belongs to the store: until its
/// end, whatever any thread writes through the store is part of it, and is undone with it. Threads
/// that want transactions of their own get a store each.
///
/// The order of the virtual operations is part of the interface.
class TARN_CONFIG_STORE_EXPORT ConfigStore {
 public:
  /// Makes a new store with a connection of its own.
  /// \param storeNamespace  the empty text, sGlobalNamespace
  /// \throws InvalidArgumentException 2000 "Invalid value for namespace." for any other text
  /// \throws ConfigStoreException 2000 "Failed to connect to database"
  static std::shared_ptr<ConfigStore> GetStore(const std::string& storeNamespace);

  /// Makes a new store of configuration that takes effect at the next boot, on this store's
  /// connection. A next-boot store stays usable when an upgrade or a boot begins.
  /// \throws ValidationException 2000 "NextBootStore is not supported during the upgrade or boot
  ///         phase" while the host boots or is upgraded
  virtual std::shared_ptr<NextBootStore> GetNextBootStore() = 0;

  /// Reads one object: the automatic value, and over it the cached, the vital and the user value.
  /// The user value counts only where it is confirmed. During an upgrade it counts either way, and
  /// a pending value replaces it.
  /// \return the merged object; an empty pointer when nothing is stored
  virtual std::shared_ptr<ConfigStoreObject> Get(const ConfigStoreObjectId& csoId) = 0;

  /// Reads the object that the type shipped with, all values merged.
  /// \return the object, without times and with revision 0; an empty pointer, and a line in the
  ///         log, when there is none
  virtual std::shared_ptr<ConfigStoreObject> GetDefaultConfig(const ConfigStoreObjectId& csoId) = 0;

  /// Reads the instances that the type shipped with.
  /// \return those that the filter keeps, each as GetDefaultConfig returns it, in the order of
  ///         their ids
  virtual std::vector<std::shared_ptr<ConfigStoreObject>> GetDefaultConfigInstances(
      const std::shared_ptr<FilterSpecObject>& filter) = 0;

  /// Lists the instances of a type.
  /// \param csoId  names the type; its instance id is ignored
  /// \return the instance ids of all rows, in order; rows without any value are among them
  virtual std::list<std::string> GetInstanceIds(const ConfigStoreObjectId& csoId) = 0;

  /// Replaces the whole object.
  ///
  /// The data is divided among the values of the row. A member belongs to the nearest tag, "vital"
  /// or "cached", at or above it in the type's schema. Untagged members go to the user value, or to
  /// the automatic one in an automatic context. Values that get nothing become empty, the other
  /// context's and the pending one included. To write one value and keep the others, use
  /// SetUserData and its siblings.
  /// \throws ValidationException 1089 with every finding, when the data does not fit the type
  /// \throws ValidationException 2000 while the host boots and no upgrade runs, for user data in
  ///         the EXTERNAL context of a type that is not accessible during boot
  virtual void Set(std::shared_ptr<ConfigStoreObject> object, const USERDATA_CONTEXT& context) = 0;

  /// Writes all of the data into the user value, or into the automatic one in an automatic context,
  /// and keeps the other values.
  ///
  /// Writing the user value removes the pending one. During the part of an upgrade whose writes are
  /// confirmed afterwards (context 2, see GetUpgradeContext) the row is then not confirmed, unless
  /// the type is tagged "confirmedDuringUpgrade".
  /// \throws ValidationException 1087 with every finding, when the data does not fit the type;
  ///         vital and cached members are findings
  /// \throws ValidationException 2000 while the host boots and no upgrade runs, in the EXTERNAL
  ///         context for a type that is not accessible during boot
  virtual void SetUserData(std::shared_ptr<ConfigStoreObject> object,
                           const USERDATA_CONTEXT& context) = 0;
  /// Writes all of the data into the vital value and keeps the other values. Does not clean the
  /// data.
  /// \throws ValidationException 1086 with every finding; members that are neither vital nor
  ///         instance ids are findings
  virtual void SetVitalData(std::shared_ptr<ConfigStoreObject> object) = 0;
  /// Writes all of the data into the cached value and keeps the other values. Does not clean the
  /// data.
  /// \throws ValidationException 1084 with every finding; members that are neither cached nor
  ///         instance ids are findings
  virtual void SetCachedData(std::shared_ptr<ConfigStoreObject> object) = 0;
  /// Changes the members that the object holds, and no others.
  ///
  /// Plain values and lists are replaced. Objects change member by member. Lists with instance ids
  /// change element by element, and new elements are added at the end. A member that is given as
  /// null is removed, and an empty list or object replaces what is there; in elements of lists with
  /// instance ids too, but not inside other lists, where they are values. All this holds for the
  /// values that the caller writes: not for the automatic value in the EXTERNAL context, nor for the
  /// user's in an automatic one. A member that these still show is a finding that names them.
  ///
  /// The data is divided as Set divides it. Each part is merged into the row's value of its kind,
  /// so an automatic value never becomes the user's. A value without a part stays as it is; the
  /// pending value is removed. The row may be new. What results is checked before other programs have
  /// to wait for the write, and again where they changed the row meanwhile.
  /// \throws ValidationException 1090 with every finding, when the data, or the object that
  ///         results, does not fit the type, a member cannot be removed, or nothing would be left
  /// \throws ValidationException 2000 during boot, as Set
  virtual void Update(std::shared_ptr<ConfigStoreObject> object,
                      const USERDATA_CONTEXT& context) = 0;
  /// Deletes the object's row with all its values; does nothing when there is none.
  virtual void Delete(const ConfigStoreObjectId& csoId) = 0;
  /// Deletes the rows of the instances that the filter keeps, in a transaction of its own, nested
  /// in the caller's. A filter without conditions deletes all instances, or the one that its
  /// identifier names, in one statement.
  virtual void DeleteInstances(const std::shared_ptr<FilterSpecObject>& filter) = 0;

  /// Reads instances of a type.
  /// \return those that the filter keeps, each merged as Get merges it, in the order of their ids.
  ///         Neighbours share blocks of memory, of 64 KB at most: one that is kept keeps its block
  virtual std::vector<std::shared_ptr<ConfigStoreObject>> GetInstances(
      const std::shared_ptr<FilterSpecObject>& filter) = 0;

  // Writes of several instances. They check all objects before they write, drop empty handles from
  // the list, and run in a transaction of their own, nested in the caller's. Objects without data
  // are left out; a list of nothing else writes nothing. All of these throw, besides what the write
  // of one object throws,
  //   InvalidArgumentException 1061 when there is no object in the list,
  //   InvalidArgumentException 1062 for an object of another type than the first,
  //   InvalidArgumentException 2000 for an instance that is listed twice; the message names it,
  //   ValidationException 2000 for an object without instance id.

  /// Replaces all instances of a type. Instances that are not listed are deleted. Those that are
  /// keep their creation time, and their revision counts on.
  virtual void SetInstances(std::vector<std::shared_ptr<ConfigStoreObject>> objects,
                            const USERDATA_CONTEXT& context) = 0;
  /// Replaces one value of all instances of a type: the user value, or the automatic one in an
  /// automatic context. Instances that are not listed lose it, and keep their other values.
  virtual void SetUserDataInstances(std::vector<std::shared_ptr<ConfigStoreObject>> objects,
                                    const USERDATA_CONTEXT& context) = 0;
  /// The same for the cached value.
  virtual void SetCachedDataInstances(std::vector<std::shared_ptr<ConfigStoreObject>> objects) = 0;
  /// The same for the vital value.
  virtual void SetVitalDataInstances(std::vector<std::shared_ptr<ConfigStoreObject>> objects) = 0;

  /// \return the number of writes of an object; kDefaultRevision when it has no row
  virtual std::int32_t GetRevision(const ConfigStoreObjectId& csoId) = 0;

  /// \return instance id and revision of each row of a type, as GetInstanceIds lists them
  virtual std::list<std::pair<std::string, std::int32_t>> GetInstancesRevision(
      const ConfigStoreObjectId& csoId) = 0;

  /// Opens a transaction, or a level inside the one that is open. ConfigStoreTransaction is safer.
  /// \return 0, or an SQLite result code (https://sqlite.org/rescode.html): 5 when another writer
  ///         did not end within 3 seconds, or is this thread on another connection; 8 when this
  ///         user may only read; 516 when SQLite has rolled the open levels back by itself. Nothing
  ///         is begun then. Throws nothing
  virtual int BeginTransaction() = 0;

  /// Commits the innermost level. The outermost commit makes the changes durable.
  /// \return 0
  /// \throws ConfigStoreException 2000 "Commit transaction failed."; the level stays open until it
  ///         is cancelled
  virtual int CommitTransaction() = 0;

  /// Rolls the innermost level back, and that one alone.
  /// \return 0; 21 when no transaction is open. A database layer that refuses to cancel a nested
  ///         transaction answers 1, which ends the process: going on would commit what was to be
  ///         rolled back. The embedded database layer never refuses
  virtual int CancelTransaction() noexcept = 0;

  /// Checks an object's data as they are, against the whole type. Does not clean them: a member that
  /// is empty is judged as it stands, and an object without data is no finding. Of a type that is
  /// vital or cached as a whole, it asks what SetVitalData or SetCachedData asks, else what Set asks.
  /// FindingsOfWrite (dry_run.h) does all that a write does before it writes.
  /// \return everything that is wrong. A type that is not installed, and an instance id that does
  ///         not suit the type, are findings on "/"
  virtual std::vector<ErrorInfo> Validate(std::shared_ptr<ConfigStoreObject> object) = 0;

  virtual ~ConfigStore();

 protected:
  ConfigStore() = default;
  ConfigStore(const ConfigStore&) = default;
  ConfigStore& operator=(const ConfigStore&) = default;
};

/// Groups store operations in one transaction: all of them take effect, or none.
///
///     ConfigStoreTransaction transaction(store);
///     store->Set(first, EXTERNAL);
///     store->Set(second, EXTERNAL);
///     transaction.Commit();
///
/// Leaving the scope without Commit or Cancel rolls back. For one thread at a time.
class TARN_CONFIG_STORE_EXPORT ConfigStoreTransaction {
 public:
  /// Begins a transaction.
  /// \param store  the caller's variable, to which the guard refers: it has to outlive the guard
  /// \throws ConfigStoreException 2000 "Failed to use NULL as the store" for an empty pointer
  /// \throws ConfigStoreException 2000 "Failed to start a transaction."; see BeginTransaction
  explicit ConfigStoreTransaction(std::shared_ptr<ConfigStore>& store);
  /// Rolls back, unless Commit or Cancel has returned.
  ~ConfigStoreTransaction();
  ConfigStoreTransaction(const ConfigStoreTransaction&) = delete;
  ConfigStoreTransaction& operator=(const ConfigStoreTransaction&) = delete;

  /// Commits and finishes the guard.
  /// \return 0
  /// \throws ConfigStoreException 2000 "Commit transaction failed."; the guard rolls back when it
  ///         goes out of scope
  int Commit();

  /// Rolls back and finishes the guard.
  /// \return as ConfigStore::CancelTransaction
  int Cancel();

 private:
  std::shared_ptr<ConfigStore>& store_;
  bool active_;
};

}  // namespace TarnConfigStore
