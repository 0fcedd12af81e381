// Every operation, with every call of the system that it makes failing in turn.
#pragma once

#include "faults/examiner.h"
#include "faults/injected.h"
#include "faults/operations.h"
#include "faults/places.h"
#include "support/shared_memory.h"

#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace Faults {

/// Which points are tried, from least to most: a part that leaves a sanitizer time for the other tests;
/// every one up to 60 and then each that is called from another place than those before, in a fresh
/// process each that is called from another place than those of the operations before, too; every one
/// up to 60 and then each third; all.
enum class Extent { QUICK, PLACES, BOUNDED, WHOLE };

/// What an operation's sweep by one sort of faults came to.
struct Tally {
  unsigned points = 0;  ///< at which something failed
  unsigned before = 0;  ///< ended with the host as it was
  unsigned after = 0;   ///< ended with all done
  std::string problems;
};

/// Where a point is tried: in a process that has done the same before, with handles that were used, or
/// in one of its own that has done nothing yet.
enum class Start { WARM, FRESH };

/// What an operation does where nothing fails.
struct Reference {
  unsigned before = 0;  ///< the host's state
  unsigned after = 0;
  char told[std::size_t{1} << 16] = {};

  Places warm;
  Places fresh;

  /// Raises std::runtime_error for more than there is room for.
  void Tell(const std::string& text);
};
using SharedReference = std::unique_ptr<TestSupport::SharedMemory<Reference>>;

/// The process itself does nothing but fork: all is done in its children.
class Sweep {
 public:
  explicit Sweep(Extent extent);
  ~Sweep();
  Sweep(const Sweep&) = delete;
  Sweep& operator=(const Sweep&) = delete;

  /// Why no host could be made, or nothing.
  const std::string& Failure() const { return failure_; }
  /// What an operation does; nothing, where it does not even work.
  SharedReference Learn(const Operation& operation) const;
  /// \param stays  whether all calls fail after the first that does
  Tally Run(const Operation& operation, const Reference& reference, const Sort& sort, bool stays,
            Start start);

 private:
  bool Leaves(const Sort& sort, bool stays, Start start) const;
  /// By points: true for those that are left out; for what is past the end, nothing is known.
  std::vector<bool> Alike(const Reference& reference, const Sort& sort, bool stays, Start start);
  unsigned Next(unsigned point, bool often, const std::vector<bool>& alike) const;

  Extent extent_;
  std::string root_;
  std::string failure_;
  std::optional<Examiner> examiner_;
  std::map<std::pair<Kind, bool>, std::set<std::uint64_t>> fresh_;  // places, and whether it stayed
};

}  // namespace Faults
