// Type files for a test, in a folder of their own.
#pragma once

#include "tarnconfigstore/type_administration.h"

#include "support/test_types.h"

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace TestSupport {

class TypeFolder {
 public:
  explicit TypeFolder(const TemporaryHost& host) : path_(host.Root() + "/types") {
    std::filesystem::create_directory(path_);
  }
  const std::string& Path() const { return path_; }

  void Write(const std::string& name, const std::string& text) const {
    std::ofstream(path_ + "/" + name) << text;
  }

  /// Installs the folder; "FILE OUTCOME" for each, or "OUTCOME POINTER TEXT" where there are
  /// errors.
  std::vector<std::string> Install(const TarnConfigStore::InstallOptions& options = {}) const {
    return Lines(TarnConfigStore::InstallTypes({path_}, options));
  }

  static std::vector<std::string> Lines(const std::vector<TarnConfigStore::TypeReport>& reports) {
    constexpr const char* kOutcomes[] = {"invalid",  "valid",      "installed",
                                         "upgraded", "downgraded", "unchanged"};
    std::vector<std::string> lines;
    for (const TarnConfigStore::TypeReport& report : reports) {
      std::string line = std::filesystem::path(report.path).filename().string() + " " +
                         kOutcomes[static_cast<int>(report.outcome)];
      for (const TarnConfigStore::ErrorInfo& error : report.errors) {
        line += " | " + error.field + " " + error.error;
      }
      lines.push_back(line);
    }
    return lines;
  }

 private:
  std::string path_;
};

/// "KEY VERSION" of everything that is installed.
inline std::vector<std::string> InstalledTypes() {
  std::vector<std::string> lines;
  for (const TarnConfigStore::InstalledType& type : TarnConfigStore::ListTypes()) {
    lines.push_back(type.key + " " + type.version);
  }
  return lines;
}

}  // namespace TestSupport
