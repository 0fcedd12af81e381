// valijson's own validator, to be measured against.
#pragma once

#include "json/json.h"

#include <memory>

namespace Benchmarks {

/// One schema parsed once, and one validator, which keeps its compiled patterns. Collects the
/// faults of each value; checks dates and times only of the formats. Raises std::runtime_error for
/// a schema that valijson refuses. Used by one thread.
class ValijsonValidator {
 public:
  explicit ValijsonValidator(const Json::Value& schema);
  ~ValijsonValidator();

  /// It reads values of RapidJSON's own allocator only: keeps a copy of this one for AcceptsKept.
  void Keep(const Json::Value& value);
  bool AcceptsKept();

 private:
  struct Parts;
  std::unique_ptr<Parts> parts_;
};

}  // namespace Benchmarks
