#include "documents/config_document.h"

#include "documents/document_reader.h"
#include "errors/raise.h"
#include "json/pointer.h"
#include "objects/document.h"

#include <algorithm>

namespace TarnConfigStore {
namespace {

// "/NAME/COMPONENT/GROUP/KEY" in a document.
std::string SectionPointer(const char* name, const ConfigStoreObjectId& id) {
  std::string pointer;
  for (const std::string_view token : {std::string_view(name), std::string_view(id.component),
                                       std::string_view(id.group), std::string_view(id.key)}) {
    Json::AppendToken(pointer, token);
  }
  return pointer;
}

}  // namespace

bool IsTime(std::string_view text) {
  constexpr std::string_view kForm = "dddd-dd-dd dd:dd:dd";
  return std::equal(text.begin(), text.end(), kForm.begin(), kForm.end(), [](char c, char form) {
    return form == 'd' ? c >= '0' && c <= '9' : c == form;
  });
}

std::string NamedObject::Pointer(Section section) const {
  std::string pointer = SectionPointer(kSectionNames[static_cast<std::size_t>(section)], id);
  if (Of(section).index >= 0) {
    Json::AppendToken(pointer, std::to_string(Of(section).index));
  }
  return pointer;
}

std::string NamedObject::Pointer() const {
  const auto there =
      std::find_if(parts.begin(), parts.end(), [](const Part& part) { return part.value; });
  return Pointer(static_cast<Section>(there == parts.end() ? 0 : there - parts.begin()));
}

bool ConfigDocument::IsOfUserOnly() const {
  return SpeaksOf(Section::USER) && !speaksOfStaged &&
         std::none_of(parts.begin() + 1, parts.end(), [](bool speaks) { return speaks; });
}

ConfigDocument ReadConfigDocument(std::string_view text, std::size_t longest) {
  if (text.size() > longest) {
    ThrowArgument("The document has " + std::to_string(text.size()) + " bytes, and no more than " +
                  std::to_string(longest) + " are read.");
  }
  ConfigDocument document;
  document.text = CreateDocumentFromString(text, Json::Origin::OUTSIDE);
  DocumentReader(document).Read(*document.text->GetJsonValuePtr());
  std::size_t objects = 1;
  for (const NamedType& type : document.types) {
    objects += type.objects.size();
  }
  document.bytesOfObject = text.size() / objects;
  return document;
}

}  // namespace TarnConfigStore
