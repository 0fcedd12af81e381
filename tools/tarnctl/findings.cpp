#include "findings.h"

#include <cstddef>

namespace tarnctl {
namespace {

std::string FormatLines(const Findings& findings) {
  std::string lines;
  for (const auto& finding : findings) {
    lines += FormatFinding(finding) + "\n";
  }
  return lines;
}

std::string Count(std::size_t findings) {
  return std::to_string(findings) + (findings == 1 ? " finding" : " findings");
}

}  // namespace

std::string FormatFinding(const TarnConfigStore::ErrorInfo& finding) {
  return finding.field + ": " + finding.error;
}

Json ListFindings(const Findings& findings) {
  Json list = Json::array();
  for (const auto& finding : findings) {
    list.push_back({{"field", finding.field}, {"error", finding.error}});
  }
  return list;
}

void PrintFindings(const Findings& findings, const Output& output) {
  if (output.AsJson()) {
    output.PrintLenient(ListFindings(findings));
  } else {
    output.PrintText(FormatLines(findings));
  }
  if (!findings.empty()) {
    throw ToolError({ExitCode::INVALID,
                     TarnConfigStore::CS_GENERIC,
                     Count(findings.size()),
                     {},
                     output.AsJson()});
  }
}

}  // namespace tarnctl
