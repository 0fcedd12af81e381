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

/// Reads and writes the host's current configuration. Held through a shared pointer; it lives, with
/// its database connection, until the last one is gone.
///
/// What holds for every operation:
/// - An empty object or filter handle is logged and the call returns quietly, writing nothing.
/// - A type that is not installed raises ConfigStoreException 1037 with the identifier's text. An
///   instance id where the type has none, or none where it has one, raises ValidationException 2000.
///   Both before the database is touched.
/// - A failure of the database raises ConfigStoreException 2000; GetLastStoreError (diagnostics.h)
///   tells what the database said. A write that failed has written nothing.
/// - A write joins the transaction that is open on this store, if there is one; otherwise it is
///   durable when the call returns.
///
/// No locks are taken: a transaction belongs to the store's connection, so threads that share a
/// store share its transaction. Threads that want transactions of their own get a store each.
///
/// The order of the virtual operations is part of the interface.
class TARN_CONFIG_STORE_EXPORT ConfigStore {
 public:
  /// A new store with a connection of its own.
  /// \param storeNamespace  the empty text (sGlobalNamespace)
  /// Raises InvalidArgumentException 2000 "Invalid value for namespace." for any other text, and
  /// ConfigStoreException 2000 "Failed to connect to database" when the store cannot be opened.
  static std::shared_ptr<ConfigStore> GetStore(const std::string& storeNamespace);

  /// A new store of configuration that takes effect at the next boot, on this store's connection.
  /// Raises ValidationException 2000 "NextBootStore is not supported during the upgrade or boot
  /// phase" while an upgrade runs or the host boots; a next-boot store that is there already stays
  /// of use then.
  virtual std::shared_ptr<NextBootStore> GetNextBootStore() = 0;

  /// Reads one object, all its layers merged: what automatic configuration set, over it the cached
  /// and the vital values, over them what the user set. Returns an empty pointer when nothing is
  /// stored. While an upgrade runs, a value that is pending for the next boot stands in for the
  /// user's.
  virtual std::shared_ptr<ConfigStoreObject> Get(const ConfigStoreObjectId& csoId) = 0;

  /// The object that its type came with, all its parts merged; an empty pointer, after a log line,
  /// when it came with none. It has no times, and revision 0.
  virtual std::shared_ptr<ConfigStoreObject> GetDefaultConfig(const ConfigStoreObjectId& csoId) = 0;

  /// The instances that a type came with and a filter keeps, each as GetDefaultConfig returns it,
  /// in the order of their ids.
  virtual std::vector<std::shared_ptr<ConfigStoreObject>> GetDefaultConfigInstances(
      const std::shared_ptr<FilterSpecObject>& filter) = 0;

  /// The ids of the rows of a type, in order, whatever the identifier's instance id. Rows whose
  /// values have all been deleted are among them.
  virtual std::list<std::string> GetInstanceIds(const ConfigStoreObjectId& csoId) = 0;

  /// Replaces the whole object. The data is cleaned of empty content, checked against the type's
  /// schema, and divided among the row's values: vital and cached members to theirs, the rest to
  /// the user's value, or to the automatic one in an automatic context. Values that the object
  /// gives nothing for become empty, the other context's and the pending one included; callers that
  /// mean one of them use SetUserData and its siblings. An object without data is logged and not
  /// written. Raises ValidationException 1089 with every finding when the data does not fit the
  /// type; and, while the host boots and no upgrade runs, ValidationException 2000 for user data in
  /// the EXTERNAL context of a type that is not accessible during boot.
  virtual void Set(std::shared_ptr<ConfigStoreObject> object, const USERDATA_CONTEXT& context) = 0;

  /// Replaces one value of the object's row by all of the object's data, and keeps the others: the
  /// user value, or the automatic one in an automatic context. Writing the user value drops a value
  /// that is pending for the next boot, and leaves the row to be confirmed when it happens in the
  /// part of an upgrade (context 2) that wants that and the type does not confirm itself. The data
  /// is cleaned of empty content first, and not written when nothing is left. Raises
  /// ValidationException 1087 with every finding, vital and cached members among them; and, while
  /// the host boots and no upgrade runs, ValidationException 2000 in the EXTERNAL context for a type
  /// that is not accessible during boot.
  virtual void SetUserData(std::shared_ptr<ConfigStoreObject> object,
                           const USERDATA_CONTEXT& context) = 0;
  /// The same for the vital value: the data may hold nothing but vital members and instance ids.
  /// Raises ValidationException 1086 with every finding.
  virtual void SetVitalData(std::shared_ptr<ConfigStoreObject> object) = 0;
  /// The same for the cached value. Raises ValidationException 1084 with every finding.
  virtual void SetCachedData(std::shared_ptr<ConfigStoreObject> object) = 0;
  /// Changes the members that the object gives and no others: plain values and lists are replaced,
  /// objects change member by member, lists whose elements have instance ids change element by
  /// element and grow by those that are new. Nothing can be deleted so: an object without data is
  /// logged and nothing is written. Each part of the object is laid over the row's value of its
  /// kind, as Set divides it, so that automatic values never become user values; values that get no
  /// part keep what they hold, a value that is pending for the next boot is dropped. The row need
  /// not be there. Runs in a transaction of its own, nested in the caller's. Raises
  /// ValidationException 1090 with every finding when the members, or the object that they would
  /// make, do not fit the type, and as Set during boot.
  virtual void Update(std::shared_ptr<ConfigStoreObject> object,
                      const USERDATA_CONTEXT& context) = 0;
  /// Deletes an object's row with all its values. No row, nothing done.
  virtual void Delete(const ConfigStoreObjectId& csoId) = 0;
  /// Deletes the rows of the instances that a filter keeps, in a transaction of its own, nested in
  /// the caller's; without conditions those of all instances, or of the one that the filter's
  /// identifier names, in one statement.
  virtual void DeleteInstances(const std::shared_ptr<FilterSpecObject>& filter) = 0;

  /// Reads the instances of a type that a filter keeps, each merged as Get does, in the order of
  /// their ids.
  virtual std::vector<std::shared_ptr<ConfigStoreObject>> GetInstances(
      const std::shared_ptr<FilterSpecObject>& filter) = 0;

  // The bulk writes. They drop empty handles from the list and raise InvalidArgumentException 1061
  // when nothing is left, 1062 for an object of another type than the first, 2000, naming it, for an
  // instance that is listed twice, ValidationException 2000 for an object without instance id, and
  // what their single-object sibling raises. All that before anything is written. Objects without
  // data are logged and left out; a list of nothing else writes nothing. They run in a transaction
  // of their own, nested in the caller's: after a failure the store is as it was before the call.

  /// Replaces all instances of a type by these: others are deleted, those that stay keep their
  /// creation time and their revision goes on.
  virtual void SetInstances(std::vector<std::shared_ptr<ConfigStoreObject>> objects,
                            const USERDATA_CONTEXT& context) = 0;
  /// Replaces one value, the user's or the automatic one, of all instances of a type: instances that
  /// are not listed lose it, and keep their other values.
  virtual void SetUserDataInstances(std::vector<std::shared_ptr<ConfigStoreObject>> objects,
                                    const USERDATA_CONTEXT& context) = 0;
  /// The same for the cached value.
  virtual void SetCachedDataInstances(std::vector<std::shared_ptr<ConfigStoreObject>> objects) = 0;
  /// The same for the vital value.
  virtual void SetVitalDataInstances(std::vector<std::shared_ptr<ConfigStoreObject>> objects) = 0;

  /// The number of writes of an object; kDefaultRevision when nothing is stored.
  virtual std::int32_t GetRevision(const ConfigStoreObjectId& csoId) = 0;

  /// Id and revision of each row of a type, as GetInstanceIds lists them.
  virtual std::list<std::pair<std::string, std::int32_t>> GetInstancesRevision(
      const ConfigStoreObjectId& csoId) = 0;

  /// Opens a transaction, or a level inside the one that is open: cancelling an inner level undoes
  /// that level alone. Returns 0, or the database layer's status. ConfigStoreTransaction is the
  /// safer way.
  virtual int BeginTransaction() = 0;

  /// Commits the innermost level. Returns 0; any failure raises ConfigStoreException 2000 "Commit
  /// transaction failed.", and the level stays open until it is cancelled.
  virtual int CommitTransaction() = 0;

  /// Undoes the innermost level. Returns the database layer's status. A database layer that refuses
  /// to cancel a nested transaction (status 1) ends the process: going on would commit what was
  /// meant to be undone. The embedded one never refuses.
  virtual int CancelTransaction() noexcept = 0;

  /// Everything wrong with an object, without writing it; empty when it could be set. A type that
  /// is not installed and an instance id that does not belong are findings too (field "/").
  virtual std::vector<ErrorInfo> Validate(std::shared_ptr<ConfigStoreObject> object) = 0;

  virtual ~ConfigStore();

 protected:
  ConfigStore() = default;
  ConfigStore(const ConfigStore&) = default;
  ConfigStore& operator=(const ConfigStore&) = default;
};

/// Groups store operations in one transaction: all of them take effect at Commit, or none.
///
///     ConfigStoreTransaction transaction(store);
///     store->Set(first, EXTERNAL);
///     store->Set(second, EXTERNAL);
///     transaction.Commit();
///
/// Leaving the scope without Commit or Cancel cancels. Used by one thread.
class TARN_CONFIG_STORE_EXPORT ConfigStoreTransaction {
 public:
  /// Begins a transaction on a store. The guard refers to the caller's variable, which must outlive
  /// it. Raises ConfigStoreException 2000 "Failed to use NULL as the store" for an empty handle and
  /// "Failed to start a transaction." when the store cannot begin one.
  explicit ConfigStoreTransaction(std::shared_ptr<ConfigStore>& store);
  /// Cancels, if neither Commit nor Cancel has completed.
  ~ConfigStoreTransaction();
  ConfigStoreTransaction(const ConfigStoreTransaction&) = delete;
  ConfigStoreTransaction& operator=(const ConfigStoreTransaction&) = delete;

  /// Makes the changes durable and finishes the guard. Returns 0. A failure raises
  /// ConfigStoreException 2000 "Commit transaction failed."; the guard is then still active and
  /// cancels when it goes.
  int Commit();

  /// Undoes the changes and finishes the guard. Returns the store's status.
  int Cancel();

 private:
  std::shared_ptr<ConfigStore>& store_;
  bool active_;
};

}  // namespace TarnConfigStore
