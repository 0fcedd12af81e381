#include "given/given_data.h"

#include <utility>

namespace tarnctl {
namespace {

[[noreturn]] void RaiseUnfit(Wanted wanted, const std::string& reason) {
  throw ToolError(ExitCode::INVALID,
                  wanted == Wanted::OBJECT ? "the data does not describe an object"
                  : wanted == Wanted::LIST ? "the data does not describe a list of objects"
                                           : "the file holds no document",
                  TarnConfigStore::CS_JSON_PARSE_FAILED, {{"/", reason}});
}

void Require(Wanted wanted, const Json::Value& data, const char* language) {
  if (wanted == Wanted::LIST ? !data.IsArray() : !data.IsObject()) {
    RaiseUnfit(wanted,
               std::string("is no ") + language + (wanted == Wanted::LIST ? " array" : " object"));
  }
}

}  // namespace

GivenData GivenData::Read(const std::string& path, const FindPlace& findPlace, YamlNull null,
                          Wanted wanted, std::size_t largest) {
  GivenData given;
  given.text_ = ReadInput(path, largest);
  if (!IsYamlFile(path)) {
    if (wanted == Wanted::DOCUMENT) {
      return given;
    }
    Json::Document data;
    const auto parsed = Json::Parse(given.text_, data, Json::Origin::OUTSIDE);
    if (!parsed) {
      RaiseUnfit(wanted, parsed.Describe(given.text_));
    }
    Require(wanted, data, "JSON");
    return given;
  }
  const auto yaml = std::make_shared<Yaml>();
  try {
    yaml->data = ReadYaml(given.text_, findPlace, yaml->make.GetAllocator(), null);
  } catch (const YamlError& error) {
    RaiseUnfit(wanted, error.what());
  }
  Require(wanted, yaml->data.value, "YAML");
  Json::Serialize(yaml->data.value, given.text_);
  given.yaml_ = yaml;
  return given;
}

std::size_t GivenData::LineOf(const std::string& pointer) const {
  return yaml_ ? yaml_->data.lines.Find(yaml_->data.value, pointer) : 0;
}

std::string GivenData::WithLine(const std::string& pointer, const std::string& text) const {
  const std::size_t line = LineOf(pointer);
  return line == 0 ? text : "line " + std::to_string(line) + ": " + text;
}

void GivenData::Locate(const std::function<void()>& call) const {
  try {
    call();
  } catch (const TarnConfigStore::ValidationException&) {
    Failure failure = DescribeCurrentException();
    failure.details = WithLines(std::move(failure.details));
    throw ToolError(std::move(failure));
  }
}

Findings GivenData::WithLines(Findings findings) const {
  for (auto& finding : findings) {
    finding.error = WithLine(finding.field, finding.error);
  }
  return findings;
}

}  // namespace tarnctl
