// Every operation, with every call of the system that it makes failing in turn.
#pragma once

#include "faults/injected.h"
#include "faults/operations.h"

#include <optional>
#include <string>

namespace Faults {

/// Which points are tried: all; every one up to 60 and then each third; or a part that takes no longer
/// than a test may.
enum class Extent { QUICK, BOUNDED, WHOLE };

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
  std::string before;  ///< the host
  std::string told;
  std::string after;
};

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
  std::optional<Reference> Learn(const Operation& operation) const;
  /// \param stays  whether all calls fail after the first that does
  Tally Run(const Operation& operation, const Reference& reference, const Sort& sort, bool stays,
            Start start) const;

 private:
  bool Leaves(const Sort& sort, bool stays, Start start) const;
  unsigned Next(unsigned point, bool often) const;

  Extent extent_;
  std::string root_;
  std::string failure_;
};

}  // namespace Faults
