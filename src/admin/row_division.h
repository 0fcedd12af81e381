// Dividing the values of stored rows again, by what their type says now.
#pragma once

#include "persistence/row_objects.h"
#include "persistence/type_rows.h"

namespace TarnConfigStore {

/// A type that moves a member to another part would leave it in its old column, from where it hides
/// what is written to the new one. So rows are divided again, by this rule:
///
/// - What counts is what the row reads as: as a whole, in each of its views (see ViewsOf), with and
///   without the automatic value. A division that would change any of them, up to the order of
///   members and null-valued ones, is not made.
/// - The cached, the vital and the user's value, laid over each other, are divided as a write by the
///   user would be; where two of them hold the same member, what the later one says is kept and the
///   other goes.
/// - The automatic value stays as it is: it lies below all others, so it hides none of them, and its
///   writer goes on seeing what it wrote.
/// - Pending and unconfirmed user's values share the cached and the vital column with the current
///   one. Members that move there move only if all views agree on them. Where they don't, current
///   values are divided without what waits, and if that would show as well, nothing is.
/// - A pending value never becomes none, which would make nothing of it pending.
///
/// Readers of one part are answered with that part as it is now: those who read the user's and the
/// automatic value alone no longer see a member that became vital.
class RowDivider {
 public:
  enum class Result {
    AS_IT_IS,  ///< every member stands in its part
    DIVIDED,
    PARTLY,  ///< only what is current
    NOT,     ///< some member stands in another part, and has to stay there
  };

  /// \param before  the type that the rows are of, as readers know it; empty for the next one
  /// \param after   the type that they are divided by
  RowDivider(const SchemaHandle& before, const SchemaHandle& after);

  /// Divides the values of a row. Dividing the result again changes nothing more. Raises
  /// InvalidArgumentException 1080 for a text that is not JSON.
  Result Divide(const ConfigStoreObjectId& id, StoredRow& row) const;

 private:
  Result DivideOnce(const ConfigStoreObjectId& id, const SchemaHandle& before,
                    StoredRow& row) const;

  SchemaHandle before_;
  SchemaHandle after_;
};

}  // namespace TarnConfigStore
