// The document of what has no place in the store any more.
#pragma once

#include "platform/host_repair.h"

#include <string>
#include <vector>

namespace TarnConfigStore {

/// Keeps values in a file "put-aside.json" for its owner alone:
///
///   {"format": 1, "values": [{"place", "table", "reason", "columns": {NAME: TEXT}}]}
///
/// A text is as it was stored, null for NULL; one that is no UTF-8 is {"base64": TEXT}.
class PutAside {
 public:
  explicit PutAside(std::string directory);

  /// What a recovery found no place for; replaces what it found before.
  void SetRecovered(std::vector<HostRepair::LostRow> rows);
  /// What was taken from rows; likewise.
  void SetTaken(std::vector<HostRepair::LostRow> rows);

  /// The file has everything, on the disk, or is as it was before. Nothing is written where there is
  /// nothing. Raises ConfigStoreException 2000.
  void Write() const;

 private:
  std::string directory_;
  std::vector<HostRepair::LostRow> recovered_;
  std::vector<HostRepair::LostRow> taken_;
};

}  // namespace TarnConfigStore
