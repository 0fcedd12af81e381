#include "shown/member_json.h"

#include "failure.h"
#include "given/object_name.h"

#include <array>
#include <cstddef>

namespace tarnctl {
namespace {

using TarnConfigStore::ExplainedMember;
using TarnConfigStore::MemberDescription;
using TarnConfigStore::MemberLimit;
using TarnConfigStore::MemberPart;
using TarnConfigStore::TypeSummary;

// By MemberToken, and by PartRole.
constexpr std::array kTokens = {"name", "element", "position", "pattern", "other"};
constexpr std::array kRoles = {"read", "hidden", "waits"};

void AddText(Json::Value& object, const char* name, const std::string& text, JsonMaker& make) {
  if (!text.empty()) {
    make.Add(object, name, text);
  }
}

void AddJson(Json::Value& object, const char* name, const std::optional<std::string>& json,
             JsonMaker& make) {
  if (json) {
    make.Add(object, name, make.Parse(*json));
  }
}

Json::Value Describe(const TypeSummary& type, JsonMaker& make) {
  Json::Value described =
      make.Object("type", FormatObject({type.key, type.group, type.component}), "version",
                  type.version, "instances", type.hasInstances, "needsReboot", type.needsReboot,
                  "bootAccessible", type.bootAccessible);
  AddText(described, "title", type.title, make);
  AddText(described, "description", type.description, make);
  return described;
}

Json::Value Describe(const MemberDescription& member, JsonMaker& make) {
  Json::Value described =
      make.Object("pointer", member.pointer, "token",
                  kTokens.at(static_cast<std::size_t>(member.token)), "type", member.type);
  AddText(described, "title", member.title, make);
  AddText(described, "description", member.description, make);
  AddJson(described, "default", member.defaultValue, make);
  make.Add(described, "limits", make.List(member.limits, [&](const MemberLimit& limit) {
    return make.Object("keyword", limit.keyword, "value", make.Parse(limit.value), "always",
                       limit.always);
  }));
  make.Add(described, "parts", make.List(member.parts, [](auto part) { return NameOf(part); }));
  make.Add(described, "required", member.isRequired);
  make.Add(described, "secret", member.isSecret);
  make.Add(described, "readOnly", member.isReadOnly);
  make.Add(described, "instanceId", member.isInstanceId);
  return described;
}

Json::Value Explain(const ExplainedMember& member, JsonMaker& make) {
  Json::Value explained = Describe(member, make);
  make.Add(explained, "expanded", member.isExpanded);
  AddJson(explained, "value", member.value, make);
  make.Add(explained, "isDefault", member.isDefault);
  make.Add(explained, "held", make.List(member.held, [&](const MemberPart& held) {
    return make.Object("part", NameOf(held.part), "role",
                       kRoles.at(static_cast<std::size_t>(held.role)), "value",
                       make.Parse(held.value));
  }));
  make.Add(explained, "changesAtBoot", member.changesAtBoot);
  AddJson(explained, "afterBoot", member.afterBoot, make);
  return explained;
}

}  // namespace

Json::Value DescribeType(const TarnConfigStore::TypeDescription& type, JsonMaker& make) {
  Json::Value described = Describe(type, make);
  make.Add(described, "members", make.List(type.members, [&](const MemberDescription& member) {
    return Describe(member, make);
  }));
  return described;
}

Json::Value DescribeExplanation(const TarnConfigStore::ObjectExplanation& object, JsonMaker& make) {
  Json::Value explained = make.Object(
      "object", FormatObject(object.id), "type", Describe(object.type, make), "stored",
      object.isStored, "confirmed", object.isConfirmed, "changesAtBoot", object.changesAtBoot,
      "removedAtBoot", object.removedAtBoot, "misfits", ListFindings(object.misfits, make));
  if (object.isStored) {
    make.Add(explained, "version", object.version);
    make.Add(explained, "creationTime", object.creationTime);
    make.Add(explained, "modifiedTime", object.modifiedTime);
    make.Add(explained, "revision", object.revision);
  }
  make.Add(explained, "members", make.List(object.members, [&](const ExplainedMember& member) {
    return Explain(member, make);
  }));
  return explained;
}

}  // namespace tarnctl
