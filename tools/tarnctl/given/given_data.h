// Data from the files that the user gives.
#pragma once

#include "failure.h"
#include "given/input_file.h"
#include "json_maker.h"
#include "yaml/yaml_reader.h"

#include <functional>
#include <memory>
#include <string>

namespace tarnctl {

/// What a file has to hold.
enum class Wanted {
  OBJECT,
  LIST,
  DOCUMENT,  ///< JSON is taken as it stands: whoever reads documents judges it, once
};

/// The data of a file, and where in it each piece stands.
class GivenData {
 public:
  /// Of nothing.
  GivenData() = default;

  /// Reads a file, YAML or JSON as IsYamlFile tells, or JSON from standard input for "-". Raises as
  /// ReadInput, and ToolError INVALID, with the reason as a finding, for what is not as wanted.
  /// \param findPlace, null  as ReadYaml takes them
  /// \param largest          as ReadInput takes it
  static GivenData Read(const std::string& path, const FindPlace& findPlace, YamlNull null,
                        Wanted wanted, std::size_t largest = kMaxInputSize);

  /// The data as JSON.
  const std::string& Text() const { return text_; }

  /// The findings with the lines, of a YAML file, that their JSON Pointers lead to: "line 3: ...".
  Findings WithLines(Findings findings) const;
  /// The same for one text.
  std::string WithLine(const std::string& pointer, const std::string& text) const;

  /// The line, of a YAML file, that a JSON Pointer leads to; else 0.
  std::size_t LineOf(const std::string& pointer) const;

  /// Makes a call, and raises the ValidationException that it raises as a ToolError WithLines.
  void Locate(const std::function<void()>& call) const;

 private:
  struct Yaml {
    JsonMaker make;
    YamlData data;
  };

  std::string text_;
  std::shared_ptr<const Yaml> yaml_;
};

}  // namespace tarnctl
