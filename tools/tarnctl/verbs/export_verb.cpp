#include "tarnconfigstore/documents.h"

#include "failure.h"
#include "given/input_file.h"
#include "given/object_name.h"
#include "shown/progress.h"
#include "store/prefix_contents.h"
#include "store/stored_objects.h"
#include "verbs/option_names.h"
#include "verbs/verbs.h"
#include "whole_file.h"
#include "yaml/yaml_stream.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <functional>
#include <memory>
#include <system_error>

namespace tarnctl {
namespace {

using TarnConfigStore::ConfigStoreObjectId;
using TarnConfigStore::ExportOptions;
using TarnConfigStore::ExportReport;

constexpr const char* kOutput = "--output";
constexpr const char* kMetadata = "--metadata";

constexpr const char* kSkipUnknown = "--skip-unknown";

using Write = std::function<void(std::string_view)>;

// Text that is kept until it is whole: one cannot see of YAML that its end is missing.
class Spool {
 public:
  Spool() : file_(std::tmpfile()) { Require(file_ != nullptr); }

  void Write(std::string_view text) {
    Require(std::fwrite(text.data(), 1, text.size(), file_.get()) == text.size());
  }

  void PrintTo(const Output& output) {
    Require(std::fflush(file_.get()) == 0);
    std::rewind(file_.get());
    std::array<char, 65536> block;
    while (const std::size_t length = std::fread(block.data(), 1, block.size(), file_.get())) {
      output.PrintText(std::string(block.data(), length));
    }
    Require(std::ferror(file_.get()) == 0);
  }

 private:
  struct CloseFile {
    void operator()(std::FILE* file) const { std::fclose(file); }
  };

  static void Require(bool isWell) {
    if (!isWell) {
      throw ToolError(ExitCode::FAILED,
                      "cannot keep a temporary file: " + std::generic_category().message(errno));
    }
  }

  std::unique_ptr<std::FILE, CloseFile> file_;
};

class Export {
 public:
  Export(const Given& given, const Output& output)
      : prefixText_(given.Text(kPrefix)),
        prefix_(ParsePrefixIfGiven(prefixText_)),
        path_(given.Text(kOutput)),
        isYaml_(output.AsData() ? !output.AsJson() : IsYamlFile(path_)),
        output_(output) {
    if (given.Has(kOutput) && path_.empty()) {  // an unset variable must not mean standard output
      throw ToolError(ExitCode::USAGE, std::string(kOutput) + " takes the name of a file");
    }
    options_.allParts = given.Has(kAllParts);
    options_.metadata = given.Has(kMetadata);
    options_.reveal = Reveals(given);
    options_.skipUnknown = given.Has(kSkipUnknown);
  }

  void Run() {
    RequireStore();
    if (!prefixText_.empty() && !HoldsAnything(prefix_)) {
      throw ToolError(ExitCode::NOT_FOUND, "nothing is stored under " + prefixText_);
    }
    if (path_.empty() || path_ == "-") {
      ToStandardOutput();
    } else {
      ToFile();
    }
    TellLeftOut();
  }

 private:
  void ToFile() {
    WholeFile file(path_);
    Produce("exporting to " + path_, [&file](std::string_view piece) { file.Write(piece); });
    file.Commit();
  }

  void ToStandardOutput() {
    if (isYaml_) {
      Spool spool;
      Produce("exporting", [&spool](std::string_view piece) { spool.Write(piece); });
      spool.PrintTo(output_);
    } else {
      Produce("exporting",
              [this](std::string_view piece) { output_.PrintText(std::string(piece)); });
    }
  }

  void Produce(const std::string& what, const Write& write) {
    Progress progress(what);
    const Write counted = [&](std::string_view piece) {
      progress.Add(piece.size());
      write(piece);
    };
    if (isYaml_) {
      YamlStream yaml(counted);
      Read([&yaml](std::string_view piece) { yaml.Take(piece); });
      yaml.End();
    } else {
      Read(counted);
    }
  }

  void Read(const Write& write) {
    try {
      report_ = TarnConfigStore::ExportConfig(prefix_, options_, write);
    } catch (const TarnConfigStore::ConfigStoreException& error) {
      if (error.GetErrorCode() != TarnConfigStore::CS_SCHEMA_NOT_FOUND) {
        throw;
      }
      Failure failure = DescribeCurrentException();
      failure.message += std::string(" (") + kSkipUnknown + " leaves such objects out)";
      throw ToolError(std::move(failure));
    }
  }

  void TellLeftOut() const {
    Findings leftOut;
    AddObjects(report_.unknown, kNotInstalled, leftOut);
    AddObjects(report_.unconfirmed, "no boot has confirmed what the user set of it", leftOut);
    if (!leftOut.empty()) {
      Report({ExitCode::DONE, TarnConfigStore::CS_GENERIC,
              "left out of the document: " + std::to_string(leftOut.size()) +
                  (leftOut.size() == 1 ? " object" : " objects"),
              leftOut},
             output_.AsJson());
    }
  }

  const std::string prefixText_;
  const ConfigStoreObjectId prefix_;
  const std::string path_;
  const bool isYaml_;
  const Output& output_;
  ExportOptions options_;
  ExportReport report_;
};

}  // namespace

Verb ExportVerb() {
  return {
      .name = "export",
      .help = "Write the configuration as one document, to be kept, looked at and applied",
      .arguments = {PrefixArgument(),
                    {.name = kOutput,
                     .help = "Write to this file, as a whole or not at all; YAML where it ends in "
                             ".yaml or .yml",
                     .valueName = "FILE",
                     .aliases = {"-o"}},
                    Flag(kAllParts,
                         "All that is stored and staged, to get the same store from it: not only "
                         "what the user set"),
                    Flag(kMetadata, "With times, revisions and versions, as --all-parts has them"),
                    RevealArgument(),
                    Flag(kSkipUnknown,
                         "Leave out, and name, objects of types that are not "
                         "installed")},
      .run = [](const Given& given, const Output& output) { Export(given, output).Run(); }};
}

}  // namespace tarnctl
