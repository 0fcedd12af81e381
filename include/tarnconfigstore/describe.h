// All that is known of a failure, in one place: for logs, and for those who tell people.
#pragma once

#include "tarnconfigstore/diagnostics.h"
#include "tarnconfigstore/exceptions.h"

#include <exception>
#include <string>
#include <vector>

namespace TarnConfigStore {

/// A failure, taken apart.
struct FailureDescription {
  int code = 0;                     ///< a value of CSErrorCodes; 0 for what is not the library's
  std::string text;                 ///< the message
  std::vector<ErrorInfo> findings;  ///< of a ValidationException
  StoreError storeError;            ///< what the database said; NONE where it is not to blame
  ParseFailure parseFailure;  ///< which text or file, and where; no reason where there is none

  /// Lines for a log: "[CODE] TEXT", what the database said, where the text is at fault, and a line
  /// "  FIELD: ERROR" for each finding. Names in fields are not escaped: see ErrorInfo.
  std::string ToString() const {
    std::string lines = "[" + std::to_string(code) + "] " + text;
    if (storeError.kind != StoreErrorKind::NONE && text.find(storeError.message) == text.npos) {
      lines.append(": ").append(storeError.message);
    }
    if (parseFailure.reason[0] != '\0') {
      lines.append(": ").append(parseFailure.source).append(": ");
      if (parseFailure.line != 0) {
        lines.append("line ").append(std::to_string(parseFailure.line));
        lines.append(", column ").append(std::to_string(parseFailure.column)).append(": ");
      }
      lines.append(parseFailure.reason);
    }
    for (const ErrorInfo& finding : findings) {
      lines.append("\n  ").append(finding.field).append(": ").append(finding.error);
    }
    return lines;
  }
};

/// Takes a failure apart. To be called where it was caught, on the thread that it was thrown on, and
/// before the next operation: the database's word is the thread's last one. Whoever wants to be sure
/// that it is of this failure calls ClearLastStoreError and ClearLastParseFailure before the
/// operation; an older one is not told apart.
inline FailureDescription Describe(const std::exception& error) {
  FailureDescription description;
  description.text = error.what();
  if (const auto* refusal = dynamic_cast<const ValidationException*>(&error)) {
    description.code = refusal->GetErrorCode();
    description.findings = refusal->GetErrors();
    return description;
  }
  if (const auto* failure = dynamic_cast<const ConfigStoreException*>(&error)) {
    description.code = failure->GetErrorCode();
  }
  const bool isParse =
      description.code == CS_JSON_PARSE_FAILED || description.code == CS_JSON_FILE_FAILED;
  if (isParse) {
    description.parseFailure = GetLastParseFailure();
  }
  if (description.code != CS_SCHEMA_NOT_FOUND && description.code != CS_JSON_PARSE_FAILED) {
    description.storeError = GetLastStoreError();
  }
  return description;
}

}  // namespace TarnConfigStore
