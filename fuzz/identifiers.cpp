// Names: of objects on a command line, instance ids, JSON Pointers, versions, references, and text that
// is to be shown. An input is two texts, on a line each.
#include "platform/type_files.h"

#include "failure.h"
#include "fuzz_target.h"
#include "given/object_name.h"
#include "json/pointer.h"
#include "json/uri_resolution.h"
#include "json/utf8.h"

#include <algorithm>
#include <string>

namespace Fuzz {
namespace {

void CheckObjectName(std::string_view text) {
  try {
    const auto id = tarnctl::ParseObject(text);
    Require(tarnctl::FormatObject(id) == text, "an object's name is written as it is read", text);
    Require(hashCsoId(id) == hashCsoId(tarnctl::ParseObject(tarnctl::FormatObject(id))),
            "equal ids have equal hashes");
  } catch (const tarnctl::ToolError&) {
    // Not of that form.
  }
  try {
    Require(tarnctl::FormatMember(tarnctl::ParseMember(text)) == text,
            "a member's name is written as it is read", text);
  } catch (const tarnctl::ToolError&) {
    // Not of that form.
  }
}

void CheckPointer(std::string_view text) {
  const auto names = Json::ParsePointer(text);
  Require(!text.empty() || names, "the empty text points to the whole");
  if (!names) {
    return;
  }
  std::string written;
  Json::Document root;
  Json::Value* place = &root;
  for (const std::string& name : *names) {
    Json::AppendToken(written, name);
    place->SetObject();
    place->AddMember(Json::Copy(name, root.GetAllocator()), Json::Value(), root.GetAllocator());
    place = &place->MemberBegin()->value;
  }
  Require(written == text, "a pointer is written as it is read", text);
  Require(Json::FindAt(root, *names) == place, "a pointer leads to its place", text);
}

void CheckShownText(std::string_view text) {
  for (const std::string& shown : {Json::Utf8::Escaped(text), Json::Utf8::WithoutControls(text)}) {
    Require(Json::Utf8::IsValid(shown) && !Json::Utf8::HasControls(shown),
            "what is shown holds no controls", shown);
    Require(Json::Utf8::WithoutControls(shown) == shown, "what is shown may be shown again", shown);
  }
  Require(Json::Utf8::IsValid(Json::Utf8::Repaired(text)), "what is repaired is UTF-8");
}

int Sign(int number) {
  return (number > 0) - (number < 0);
}

void CheckPair(const std::string& first, const std::string& second) {
  Require(Sign(TypeFiles::CompareVersions(first, second)) ==
              -Sign(TypeFiles::CompareVersions(second, first)),
          "versions have an order", first + "\n" + second);
  const std::string uri = Json::ResolveUri(first, second);
  Require(uri.size() <= first.size() + second.size() + 1, "a reference grows by its base at most",
          uri);
}

void Run(std::string_view input) {
  const std::string first(TakeLine(input));
  const std::string second(input);
  for (const std::string& text : {first, second}) {
    CheckObjectName(text);
    CheckPointer(text);
    CheckShownText(text);
  }
  CheckPair(first, second);
}

const Target target("identifiers", Run);

}  // namespace
}  // namespace Fuzz
