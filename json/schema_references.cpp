#include "json/schema_references.h"

#include "json/characters.h"
#include "json/pointer.h"
#include "json/subschemas.h"
#include "json/uri_resolution.h"

#include <algorithm>
#include <charconv>
#include <utility>

namespace Json {
namespace {

std::string PercentDecoded(std::string_view text) {
  std::string decoded;
  for (std::size_t i = 0; i < text.size(); ++i) {
    unsigned byte = 0;
    if (text[i] == '%' && i + 2 < text.size() && IsHexDigit(text[i + 1]) &&
        IsHexDigit(text[i + 2])) {
      std::from_chars(text.data() + i + 1, text.data() + i + 3, byte, 16);
      decoded += static_cast<char>(byte);
      i += 2;
    } else {
      decoded += text[i];
    }
  }
  return decoded;
}

}  // namespace

SchemaReferences::SchemaReferences(const Value& schema) : root_(schema) {
  Walk(schema, {});
  // What a reference leads to may stand where no keyword puts a schema, and refer to others.
  for (std::size_t i = 0; i < pending_.size(); ++i) {
    const Pending here = pending_[i];
    const Value* reference = FindMember(*here.holder, "$ref");
    std::string base;
    const Target target = Resolve(*reference, here.base, base);
    targets_[here.holder] = target;
    if (target.schema != nullptr) {
      Walk(*target.schema, std::move(base));
    }
  }
  pending_.clear();
  pending_.shrink_to_fit();
}

// Does not recurse: the schema may be of any depth, and is not checked yet.
void SchemaReferences::Walk(const Value& schema, std::string base) {
  std::vector<Part> parts;
  parts.push_back({&schema, std::move(base)});
  while (!parts.empty()) {
    Part part = std::move(parts.back());
    parts.pop_back();
    if (!part.schema->IsObject() || !walked_.insert(part.schema).second) {
      continue;
    }
    Read(part);
    ForEachSubschema(*part.schema, [&](const Value& inner, const Subschema&) {
      parts.push_back({&inner, part.base});
    });
  }
}

void SchemaReferences::Read(Part& part) {
  const Value* id = FindMember(*part.schema, "$id");
  if (FindMember(*part.schema, "$ref") != nullptr) {
    pending_.push_back({part.schema, part.base});  // it hides an "$id" beside it
  } else if (id != nullptr && id->IsString()) {
    std::string name = ResolveUri(part.base, Text(*id));
    if (name.ends_with('#')) {
      name.pop_back();
    }
    if (name.find('#') == std::string::npos) {
      part.base = name;
    }
    named_.emplace(std::move(name), part.schema);
  }
}

SchemaReferences::Target SchemaReferences::Resolve(const Value& reference, std::string_view base,
                                                   std::string& found) const {
  if (!reference.IsString()) {
    return {nullptr, "is no text", &reference};
  }
  const std::string uri = ResolveUri(base, Text(reference));
  const std::size_t hash = std::min(uri.find('#'), uri.size());
  const Value* document = &root_;
  found = uri.substr(0, hash);
  if (hash > 0) {
    const auto named = named_.find(found);
    document = named != named_.end() ? named->second : nullptr;
  }
  if (document == nullptr) {
    return {nullptr, "leads outside the schema", nullptr};
  }
  const std::string fragment =
      PercentDecoded(std::string_view(uri).substr(std::min(hash + 1, uri.size())));
  const Value* target = nullptr;
  if (fragment.empty() || fragment.front() == '/') {
    const auto names = ParsePointer(fragment);
    if (!names) {
      return {nullptr, "is no JSON Pointer: after \"~\" comes \"0\" or \"1\"", nullptr};
    }
    target = FindAt(*document, *names);
  } else if (const auto named = named_.find(uri); named != named_.end()) {
    target = named->second;
  }
  if (target == nullptr) {
    return {nullptr, "leads nowhere", nullptr};
  }
  if (!target->IsObject() && !target->IsBool()) {
    return {nullptr, "leads to something that is no schema", target};
  }
  return {target, nullptr, nullptr};
}

const SchemaReferences::Target* SchemaReferences::Find(const Value& schema) const {
  const auto target = targets_.find(&schema);
  return target != targets_.end() ? &target->second : nullptr;
}

std::vector<const Value*> SchemaReferences::Chain(const Value& schema) const {
  std::vector<const Value*> chain = {&schema};
  for (const Target* target = Find(schema); target != nullptr && target->schema != nullptr;
       target = Find(*target->schema)) {
    if (std::find(chain.begin(), chain.end(), target->schema) != chain.end()) {
      break;
    }
    chain.push_back(target->schema);
  }
  return chain;
}

}  // namespace Json
