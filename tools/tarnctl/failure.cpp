#include "failure.h"

#include "tarnconfigstore/diagnostics.h"

#include "json/print.h"
#include "json/utf8.h"
#include "shown/output.h"

#include <cstddef>
#include <cstdio>

namespace tarnctl {
namespace {

using TarnConfigStore::ConfigStoreException;
using TarnConfigStore::StoreError;
using TarnConfigStore::StoreErrorKind;
using TarnConfigStore::ValidationException;

ExitCode ExitCodeFor(StoreErrorKind kind) {
  switch (kind) {
    case StoreErrorKind::PERMISSION:
      return ExitCode::PERMISSION;
    case StoreErrorKind::BUSY:
      return ExitCode::BUSY;
    case StoreErrorKind::CORRUPT:
      return ExitCode::CORRUPT;
    case StoreErrorKind::NONE:
    case StoreErrorKind::MISSING:
    case StoreErrorKind::NEWER:
    case StoreErrorKind::MISUSE:
    case StoreErrorKind::OTHER:
      break;
  }
  return ExitCode::FAILED;
}

// What the library says names the operation that failed; only the database layer knows why, and
// what mends it.
void AddStoreError(Failure& failure) {
  const StoreError error = TarnConfigStore::GetLastStoreError();
  if (error.kind == StoreErrorKind::NONE) {
    return;
  }
  failure.exitCode = ExitCodeFor(error.kind);
  if (failure.message.find(error.message) == std::string::npos) {
    failure.message += ": " + error.message;
  }
}

// The library's message is the same for every text.
void AddParseFailure(Failure& failure) {
  const TarnConfigStore::ParseFailure last = TarnConfigStore::GetLastParseFailure();
  if (last.reason[0] != '\0') {
    const std::string place = last.line == 0 ? ""
                                             : "line " + std::to_string(last.line) + ", column " +
                                                   std::to_string(last.column) + ": ";
    failure.message.append(" ").append(last.source).append(": ").append(place).append(last.reason);
  }
}

Failure DescribeLibraryFailure(const ConfigStoreException& error) {
  Failure failure{ExitCode::FAILED, error.GetErrorCode(), error.what(), {}};
  switch (error.GetErrorCode()) {
    case TarnConfigStore::CS_SCHEMA_NOT_FOUND:
      failure.exitCode = ExitCode::NOT_FOUND;
      break;
    case TarnConfigStore::CS_JSON_PARSE_FAILED:
      failure.exitCode = ExitCode::INVALID;
      AddParseFailure(failure);
      break;
    case TarnConfigStore::CS_JSON_FILE_FAILED:
      AddParseFailure(failure);
      AddStoreError(failure);
      break;
    default:
      AddStoreError(failure);
  }
  return failure;
}

std::string FormatFinding(const TarnConfigStore::ErrorInfo& finding) {
  return Json::Utf8::WithoutControls(finding.field + ": " + finding.error);
}

std::string Line(const std::string& text) {
  return "tarnctl: " + Json::Utf8::WithoutControls(text) + "\n";
}

std::string Count(std::size_t findings) {
  return std::to_string(findings) + (findings == 1 ? " finding" : " findings");
}

}  // namespace

Failure DescribeCurrentException() {
  try {
    throw;
  } catch (const ToolError& error) {
    return error.GetFailure();
  } catch (const ValidationException& error) {
    return {ExitCode::INVALID, error.GetErrorCode(), error.what(), error.GetErrors()};
  } catch (const ConfigStoreException& error) {
    return DescribeLibraryFailure(error);
  } catch (const std::exception& error) {
    Failure failure{ExitCode::FAILED, TarnConfigStore::CS_GENERIC, error.what(), {}};
    AddStoreError(failure);
    return failure;
  }
}

void Report(const Failure& failure, bool asJson) {
  if (failure.isTold) {
    return;
  }
  std::string text;
  if (asJson) {
    JsonMaker make;
    const Json::Value report = make.Object("code", failure.code, "message", failure.message,
                                           "details", ListFindings(failure.details, make));
    // Messages may quote arguments, which are bytes of any kind.
    Json::Print(report, Json::Layout::ONE_LINE, Json::BadText::REPAIRED, text);
    text += "\n";
  } else {
    text = Line(failure.message);
    for (const auto& finding : failure.details) {
      text += "  " + FormatFinding(finding) + "\n";
    }
  }
  std::fputs(text.c_str(), stderr);
}

void Say(const std::string& text) {
  std::fputs(Line(text).c_str(), stderr);
}

Json::Value ListFindings(const Findings& findings, JsonMaker& make) {
  return make.List(findings, [&](const TarnConfigStore::ErrorInfo& finding) {
    return make.Object("field", finding.field, "error", finding.error);
  });
}

void PrintFindings(const Findings& findings, const Output& output) {
  if (output.AsData()) {
    JsonMaker make;
    output.PrintLenient(ListFindings(findings, make));
  } else {
    std::string lines;
    for (const auto& finding : findings) {
      lines += FormatFinding(finding) + "\n";
    }
    output.PrintText(lines);
  }
  if (!findings.empty()) {
    throw ToolError({ExitCode::INVALID,
                     TarnConfigStore::CS_GENERIC,
                     Count(findings.size()),
                     {},
                     output.AsData()});
  }
}

}  // namespace tarnctl
