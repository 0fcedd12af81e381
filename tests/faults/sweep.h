// Every operation, with every call of the system that it makes failing in turn.
#pragma once

#include "faults/injected.h"
#include "faults/operations.h"

#include <string>

namespace Faults {

/// Which points are tried: all, or a part that takes no longer than a test may.
enum class Extent { BOUNDED, WHOLE };

/// What an operation's sweep by one sort of faults came to.
struct Tally {
  unsigned points = 0;
  unsigned before = 0;  ///< ended with the host as it was
  unsigned after = 0;   ///< ended with all done
  std::string problems;
};

/// Where a point is tried: in a process that has done the same before, with handles that were used, or
/// in one of its own that has done nothing yet.
enum class Start { WARM, FRESH };

/// The process itself does nothing but fork: all is done in its children.
class Sweep {
 public:
  explicit Sweep(Extent extent);
  ~Sweep();
  Sweep(const Sweep&) = delete;
  Sweep& operator=(const Sweep&) = delete;

  /// Why no host could be made, or nothing.
  const std::string& Failure() const { return failure_; }
  Tally Run(const Operation& operation, const Sort& sort, bool stays, Start start) const;

 private:
  /// \param often  where points are cheap
  unsigned Next(unsigned point, bool often) const;

  Extent extent_;
  std::string root_;
  std::string failure_;
};

}  // namespace Faults
