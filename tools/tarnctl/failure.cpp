#include "failure.h"

#include "tarnconfigstore/describe.h"

#include "json/print.h"
#include "json/utf8.h"
#include "shown/output.h"

#include <cstddef>
#include <cstdio>

namespace tarnctl {
namespace {

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
Failure DescribeOthersFailure(const std::exception& error) {
  TarnConfigStore::FailureDescription known = TarnConfigStore::Describe(error);
  Failure failure{ExitCodeFor(known.storeError.kind), known.code, known.Message(),
                  std::move(known.findings)};
  if (dynamic_cast<const ValidationException*>(&error) != nullptr ||
      known.code == TarnConfigStore::CS_JSON_PARSE_FAILED) {
    failure.exitCode = ExitCode::INVALID;
  } else if (known.code == TarnConfigStore::CS_SCHEMA_NOT_FOUND) {
    failure.exitCode = ExitCode::NOT_FOUND;
  } else if (known.code == 0) {
    failure.code = TarnConfigStore::CS_GENERIC;
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
  } catch (const std::exception& error) {
    return DescribeOthersFailure(error);
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
