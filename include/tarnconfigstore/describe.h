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

  /// \return the message, which text or file could not be read, and what the database said of it
  std::string Message() const {
    std::string message = text;
    if (parseFailure.reason[0] != '\0') {
      message.append(" ").append(parseFailure.source).append(": ");
      if (parseFailure.line != 0) {
        message.append("line ").append(std::to_string(parseFailure.line));
        message.append(", column ").append(std::to_string(parseFailure.column)).append(": ");
      }
      message.append(parseFailure.reason);
    }
    if (storeError.kind != StoreErrorKind::NONE &&
        message.find(storeError.message) == std::string::npos) {
      message.append(": ").append(storeError.message);
    }
    return message;
  }

  /// Lines for a log: "[CODE] MESSAGE", and "  FIELD: ERROR" for each finding. Names in fields are not
  /// escaped: see ErrorInfo.
  std::string ToString() const {
    std::string lines = "[" + std::to_string(code) + "] " + Message();
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
  const bool isOfText =
      description.code == CS_JSON_PARSE_FAILED || description.code == CS_JSON_FILE_FAILED;
  if (isOfText) {
    description.parseFailure = GetLastParseFailure();
  }
  // What the caller gave, and a type that is not there, are no fault of the database.
  const bool isOfDatabase = description.code == CS_JSON_FILE_FAILED ||
                            (description.code != CS_SCHEMA_NOT_FOUND && !isOfText &&
                             dynamic_cast<const InvalidArgumentException*>(&error) == nullptr &&
                             dynamic_cast<const InvalidTypeException*>(&error) == nullptr);
  if (isOfDatabase) {
    description.storeError = GetLastStoreError();
  }
  return description;
}

}  // namespace TarnConfigStore
