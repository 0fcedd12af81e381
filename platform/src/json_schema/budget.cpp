#include "json_schema/budget.h"

#include "json_schema/validation_findings.h"

namespace JsonValidator {

void Budget::LeaveOpen(const Place& place, const std::string& what, const std::string& further) {
  if (!told_) {
    findings_.Add(place, what + " could not be checked" + (further.empty() ? "" : " ") + further +
                             ": it takes too much work");
  }
  told_ = spent_;
}

}  // namespace JsonValidator
