// Whether a database has the tables that its layout promises, and nothing that meddles with them:
// other programs write it, too.
#pragma once

#include "db/database_file.h"
#include "db/layout.h"

#include <string>
#include <vector>

struct sqlite3;

namespace DBStore::internal {

/// What is not as the layout has it, each in words that go on after the database's name.
struct PartsFound {
  /// Why it cannot be used: a table that is none or lacks something, or something of others that
  /// could refuse, change or drop what is written. Empty where it can be used.
  std::string wrong;
  std::string mend;                  ///< of what is wrong, where more than a backup helps
  std::vector<std::string> missing;  ///< what can be done without
  std::vector<std::string> foreign;  ///< what others added and nobody here minds
};

/// Looks at everything that is declared. An SQLite result code.
int FindParts(sqlite3* database, const Layout& layout, int version, PartsFound& found);

/// Looks once at each state of a file's declarations, and reports what is wrong; what is odd goes to
/// the log. False where the database cannot be used.
bool HasItsParts(sqlite3* database, const Layout& layout, int version,
                 const FileIdentity& identity);

}  // namespace DBStore::internal
