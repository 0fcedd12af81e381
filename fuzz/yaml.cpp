// YAML, as the tool reads and writes it. An input is a type on a line, and the text.
#include "fuzz_target.h"
#include "json/equality.h"
#include "store/type_schema.h"
#include "test_host.h"
#include "yaml/yaml_reader.h"
#include "yaml/yaml_writer.h"

#include <string>

namespace Fuzz {
namespace {

using namespace tarnctl;

bool Read(std::string_view text, const FindPlace& findPlace, Json::Document& value) {
  try {
    static_cast<Json::Value&>(value) = ReadYaml(text, findPlace, value.GetAllocator()).value;
    return true;
  } catch (const YamlError& error) {
    Require(std::string_view(error.what()).starts_with("line "), "a refusal names the line",
            error.what());
    return false;
  }
}

void CheckWriting(const Json::Value& value, const FindPlace& findPlace) {
  std::string written;
  Require(WriteYaml(value, written), "what was read can be written");
  Json::Document again;
  Require(Read(written, findPlace, again), "what is written is read", written);
  Require(Json::Equal(value, again), "what is read back is equal", written);
}

void Run(std::string_view input) {
  const TypeSchema schema(TestHost::Get().Type(TakeLine(input)));
  Json::Document typed;
  if (Read(input, PlaceOfData(schema.Root()), typed)) {
    CheckWriting(typed, PlaceOfData(schema.Root()));
  }
  Json::Document plain;
  if (Read(input, PlaceOfData({}), plain)) {
    CheckWriting(plain, PlaceOfData({}));
    Json::Document json;
    if (Json::Parse(input, json, Json::Origin::OUTSIDE)) {
      Require(Json::Equal(plain, json), "JSON is YAML that says the same");
    }
  }
}

const Target target("yaml", Run);

}  // namespace
}  // namespace Fuzz
