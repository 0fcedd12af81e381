// Type files for a test, in a folder of their own.
#pragma once

#include "tarnconfigstore/type_administration.h"

#include "support/temporary_host.h"

#include <string>
#include <vector>

namespace TarnConfigStore {

class TypeFolder {
 public:
  explicit TypeFolder(const TestSupport::TemporaryHost& host) : path_(host.Root() + "/types") {
    std::filesystem::create_directory(path_);
  }
  const std::string& Path() const { return path_; }

  void Write(const std::string& name, const std::string& text) const {
    std::ofstream(path_ + "/" + name) << text;
  }

  /// Installs the folder; "FILE OUTCOME" for each, or "OUTCOME POINTER TEXT" where there are
  /// errors.
  std::vector<std::string> Install(const InstallOptions& options = {}) const {
    constexpr const char* kOutcomes[] = {"invalid",  "valid",      "installed",
                                         "upgraded", "downgraded", "unchanged"};
    std::vector<std::string> lines;
    for (const TypeReport& report : InstallTypes({path_}, options)) {
      std::string line = std::filesystem::path(report.path).filename().string() + " " +
                         kOutcomes[static_cast<int>(report.outcome)];
      for (const ErrorInfo& error : report.errors) {
        line += " | " + error.field + " " + error.error;
      }
      lines.push_back(line);
    }
    return lines;
  }

 private:
  std::string path_;
};

}  // namespace TarnConfigStore
