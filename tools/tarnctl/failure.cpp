#include "failure.h"

#include "tarnconfigstore/describe.h"

#include "json/print.h"
#include "json/utf8.h"
#include "shown/output.h"
#include "table/terminal.h"
#include "table/text_width.h"

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <unistd.h>

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

// A line for each; on a terminal the errors stand below each other, and are never cut.
std::string LinesOf(const Findings& findings, const char* indent, const Terminal& terminal) {
  constexpr std::size_t kWidest = 40;  // places that are longer push their errors to the right
  std::size_t width = 0;
  for (const auto& finding : findings) {
    const std::size_t own = WidthOf(Json::Utf8::WithoutControls(finding.field));
    width = own <= kWidest ? std::max(width, own) : width;
  }
  std::string lines;
  for (const auto& finding : findings) {
    const std::string field = Json::Utf8::WithoutControls(finding.field);
    const std::size_t own = terminal.isOne ? WidthOf(field) : 0;
    lines.append(indent).append(terminal.Coloured(field + ":", kRed)).append(" ");
    lines.append(terminal.isOne && own < width ? width - own : 0, ' ');
    lines.append(Json::Utf8::WithoutControls(finding.error)).append("\n");
  }
  return lines;
}

Wording::Put& CurrentWording() {
  static Wording::Put put;
  return put;
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
    text = Line(failure.message) + LinesOf(failure.details, "  ", Terminal::Of(STDERR_FILENO));
  }
  std::fputs(text.c_str(), stderr);
}

void Say(const std::string& text) {
  std::fputs(Line(CurrentWording() ? CurrentWording()(text) : text).c_str(), stderr);
}

Wording::Wording(Put put) {
  CurrentWording() = std::move(put);
}

Wording::~Wording() {
  CurrentWording() = nullptr;
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
    output.PrintText(LinesOf(findings, "", Terminal::Of(STDOUT_FILENO)));
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
