#include "samples.h"

#include <array>
#include <cstdarg>
#include <cstdio>

namespace Benchmarks {
namespace {

constexpr const char* kGroup = "bench";
constexpr unsigned kWidth = 500;

__attribute__((format(printf, 1, 2))) std::string Format(const char* format, ...) {
  std::array<char, 2048> buffer;
  va_list arguments;
  va_start(arguments, format);
  const int length = std::vsnprintf(buffer.data(), buffer.size(), format, arguments);
  va_end(arguments);
  return std::string(buffer.data(), static_cast<std::size_t>(length));
}

// Fills the blank in a text so that the whole is as long as an object has to be.
std::string Padded(const std::string& before, const std::string& after) {
  static const std::string filler =
      "Carries the traffic of the storage network between this host and the others of its rack. "
      "Changes take effect at once; what is in flight is not lost. Ask the owner before changing "
      "it. ";
  std::string text = before;
  while (text.size() + after.size() < kObjectSize) {
    text += filler.substr(0, kObjectSize - text.size() - after.size());
  }
  return text + after;
}

}  // namespace

std::string TypeFile(const std::string& key, TypeKind kind, Effect effect) {
  const bool mixed = kind == TypeKind::MIXED;
  const std::string name = kind == TypeKind::INSTANCES
                               ? R"("id": {"type": "string", "instanceId": true, "maxLength": 64})"
                               : R"("host": {"type": "string", "maxLength": 64})";
  return Format(
      R"({"component": "tarn", "group": "%s", "key": "%s", "version": "1.0", "schema": {
  "type": "object"%s, "properties": {
    %s,
    "description": {"type": "string", "maxLength": 1024},
    "address": {"type": "string", "format": "ipv4"%s},
    "port": {"type": "integer", "minimum": 1, "maximum": 65535%s},
    "priority": {"type": "integer", "minimum": 0, "maximum": 1000000, "default": 100%s},
    "enabled": {"type": "boolean", "default": true},
    "managed": {"type": "boolean"%s},
    "weight": {"type": "number", "minimum": 0, "maximum": 1},
    "mode": {"type": "string", "enum": ["active", "standby", "failover"]},
    "servers": {"type": "array", "maxItems": 16, "items": {"type": "string", "format": "ipv4"}}
  }, "required": ["description"]}})",
      kGroup, key.c_str(), effect == Effect::AT_BOOT ? R"(, "rebootRequired": true)" : "",
      name.c_str(), mixed ? R"(, "vital": true)" : "", mixed ? R"(, "vital": true)" : "",
      mixed ? R"(, "cached": true)" : "", mixed ? R"(, "cached": true)" : "");
}

std::string LargeTypeFile(const std::string& key) {
  return Format(
      R"({"component": "tarn", "group": "%s", "key": "%s", "version": "1.0", "schema": {
  "type": "object", "additionalProperties": true, "properties": {
    "%s": {"type": "array", "items": {"type": "object", "properties": {
      "id": {"type": "string", "instanceId": true}}}}}}})",
      kGroup, key.c_str(), kParts);
}

std::string ObjectText(unsigned variant, const std::string& instanceId) {
  const unsigned byte = variant % 200;
  const std::string first = instanceId.empty() ? Format(R"("host":"edge-%03u.example.net")", byte)
                                               : Format(R"("id":"%s")", instanceId.c_str());
  return Padded(
      Format(R"({%s,"description":"Link %03u. )", first.c_str(), byte),
      Format(R"(","address":"192.0.2.%03u","port":%u,"priority":%u,"enabled":%s,"managed":%s,)"
             R"("weight":0.%03u,"mode":"active","servers":["198.51.100.1","198.51.100.%u",)"
             R"("198.51.100.3"]})",
             byte % 100 + 100, 40000 + byte, 500 + byte, variant % 2 == 0 ? "true" : "false",
             variant % 2 == 0 ? "false" : "true", byte + 125, byte % 100 + 100));
}

RowValues DividedObject(unsigned variant) {
  const unsigned byte = variant % 200;
  RowValues row;
  row.automatic = Format(R"({"host":"edge-%03u.example.net","enabled":false,"weight":0.%03u,)"
                         R"("servers":["198.51.100.1","198.51.100.2","198.51.100.3"]})",
                         byte, byte + 125);
  row.cached = Format(R"({"priority":%u,"managed":true})", 500 + byte);
  row.vital = Format(R"({"address":"192.0.2.%u","port":%u})", byte % 100 + 100, 40000 + byte);
  const std::size_t others = row.automatic.size() + row.cached.size() + row.vital.size();
  const std::string user = Padded(std::string(others, ' ') + R"({"description":")",
                                  R"(","enabled":true,"mode":"active"})");
  row.user = user.substr(others);
  return row;
}

std::string MegabyteText(unsigned variant) {
  constexpr unsigned kMembers = 2500;
  std::string text;
  for (unsigned i = 0; i < kMembers; ++i) {
    text += (i == 0 ? "{\"" : ",\"") + InstanceId(i) + "\":" + ObjectText(i + variant);
  }
  return text + "}";
}

std::string WideSchema() {
  std::string text = R"({"type":"object","properties":{)";
  for (unsigned i = 0; i < kWidth; ++i) {
    text += Format(
        R"(%s"part-%u":{"type":"object","required":["address"],"properties":{)"
        R"("address":{"type":"string","format":"ipv4"},)"
        R"("name":{"type":"string","pattern":"^[a-z][a-z0-9-]*%u$","maxLength":64},)"
        R"("mode":{"enum":["active","standby","failover"]},)"
        R"("port":{"anyOf":[{"type":"integer","minimum":1},{"type":"string","maxLength":%u}]},)"
        R"("servers":{"type":"array","maxItems":16,"items":{"type":"string"}}}})",
        i == 0 ? "" : ",", i, i, i + 1);
  }
  return text + "}}";
}

std::string WideObject() {
  std::string text = "{";
  for (unsigned i = 0; i < kWidth; ++i) {
    text += Format(R"(%s"part-%u":{"address":"192.0.2.1","name":"part-%u","mode":"active",)"
                   R"("port":7,"servers":["a","b"]})",
                   i == 0 ? "" : ",", i, i);
  }
  return text + "}";
}

TarnConfigStore::ConfigStoreObjectId IdOf(const std::string& key, const std::string& instanceId) {
  return {key, kGroup, TarnConfigStore::kDefaultComponent, instanceId};
}

std::string InstanceId(std::size_t number) {
  return Format("instance-%06zu", number);
}

}  // namespace Benchmarks
