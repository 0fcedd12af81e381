#include "yaml/yaml_reader.h"

#include "yaml/core_scalars.h"
#include "yaml/yaml_events.h"

#include <algorithm>
#include <iterator>
#include <unordered_set>
#include <utility>

namespace tarnctl {
namespace {

using Path = std::vector<std::string>;

// A value that others are put into, and what is known of it.
struct Container {
  Json::Value value;
  std::optional<ValuePlace> place;
  std::size_t entry = 0;  // among the lines
  Json::Value name;       // of the member whose value comes next; null where a name does
  std::size_t nameLine = 0;
  std::unordered_set<std::string> names;
};

class Reader {
 public:
  Reader(std::string_view text, const FindPlace& findPlace, Json::Allocator& allocator,
         YamlNull null)
      : events_(text), findPlace_(findPlace), allocator_(allocator), null_(null) {}

  YamlData Read() {
    while (!isAtEnd_) {
      YamlEvent event;
      events_.Next(event);
      Take(event);
    }
    return std::move(data_);
  }

 private:
  bool IsAtName() const {
    return !open_.empty() && open_.back().value.IsObject() && open_.back().name.IsNull();
  }

  void Take(YamlEvent& event) {
    switch (event->type) {
      case YAML_SCALAR_EVENT:
        IsAtName() ? TakeName(event) : TakeScalar(event);
        break;
      case YAML_SEQUENCE_START_EVENT:
        Open(event, rapidjson::kArrayType);
        break;
      case YAML_MAPPING_START_EVENT:
        Open(event, rapidjson::kObjectType);
        break;
      case YAML_SEQUENCE_END_EVENT:
      case YAML_MAPPING_END_EVENT:
        Close();
        break;
      case YAML_STREAM_END_EVENT:
        isAtEnd_ = true;
        break;
      default:
        break;  // beginnings and ends of the document
    }
  }

  void TakeName(YamlEvent& event) {
    const std::string_view name = event.Text();
    if (event->data.scalar.style == YAML_PLAIN_SCALAR_STYLE) {
      // As the text that it is written as it would mean something else elsewhere.
      if (ReadCoreScalar(name).kind != CoreScalar::Kind::TEXT) {
        RaiseYaml(event->start_mark,
                  "the name \"" + std::string(name) + "\" is no text to YAML: put it in quotes");
      }
      if (name == "<<") {
        RaiseYaml(event->start_mark, "merge keys are not read: write the members out");
      }
    }
    if (!open_.back().names.emplace(name).second) {
      RaiseYaml(event->start_mark, "member \"" + std::string(name) + "\" is named twice");
    }
    open_.back().name = Json::Copy(name, allocator_);
    open_.back().nameLine = event->start_mark.line + 1;
    if (!open_.back().place) {
      path_.emplace_back(name);
    }
  }

  void TakeScalar(YamlEvent& event) {
    const std::optional<ValuePlace> place = Enter(false);
    Lines().Close(OpenLine(event));
    Put(event->data.scalar.style == YAML_PLAIN_SCALAR_STYLE
            ? Plain(event, (place ? *place : ValuePlace()).Kinds())
            : Json::Copy(event.Text(), allocator_));
  }

  // What a plain scalar is where these kinds are taken.
  Json::Value Plain(YamlEvent& event, ValueKinds kinds) {
    const CoreScalar core = ReadCoreScalar(event.Text());
    const bool takesTexts = kinds.Holds(ValueKinds::kString);
    const bool isNull = core.kind == CoreScalar::Kind::NULL_VALUE && null_ == YamlNull::ALWAYS;
    if (core.kind != CoreScalar::Kind::TEXT && !isNull &&
        kinds != ValueKinds(ValueKinds::kString)) {
      std::string fault;
      Json::Value value = JsonOf(core, fault);
      // What cannot be kept as a number must not pass for a text where numbers are taken.
      if (!fault.empty() && (kinds.Meets(ValueKinds::kNumber) || !takesTexts)) {
        RaiseYaml(event->start_mark, fault);
      }
      if (fault.empty() && (!takesTexts || kinds.Holds(ValueKinds::Of(value)))) {
        return value;
      }
    }
    return isNull ? Json::Value() : Json::Copy(event.Text(), allocator_);
  }

  Json::Value JsonOf(const CoreScalar& core, std::string& fault) {
    switch (core.kind) {
      case CoreScalar::Kind::TRUE_VALUE:
        return Json::Value(true);
      case CoreScalar::Kind::FALSE_VALUE:
        return Json::Value(false);
      case CoreScalar::Kind::NUMBER: {
        Json::Document number(&allocator_);
        fault = Json::Parse(core.number, number, Json::Origin::OUTSIDE).message;
        return std::move(static_cast<Json::Value&>(number));
      }
      case CoreScalar::Kind::LONG_INTEGER:
        fault = "an integer of more than 64 bits";
        break;
      case CoreScalar::Kind::NOT_FINITE:
        fault = "JSON has no such number";
        break;
      case CoreScalar::Kind::NULL_VALUE:
      case CoreScalar::Kind::TEXT:
        break;
    }
    return {};
  }

  void Open(YamlEvent& event, rapidjson::Type type) {
    if (IsAtName()) {
      RaiseYaml(event->start_mark, "the name of a member has to be a text");
    }
    if (open_.size() == Json::kMaxDepth) {
      RaiseYaml(event->start_mark,
                "nested deeper than " + std::to_string(Json::kMaxDepth) + " levels");
    }
    Container opened;
    opened.value = Json::Value(type);
    opened.place = Enter(type == rapidjson::kArrayType);
    opened.entry = OpenLine(event);
    open_.push_back(std::move(opened));
  }

  void Close() {
    Lines().Close(open_.back().entry);
    Json::Value value = std::move(open_.back().value);
    open_.pop_back();
    Put(std::move(value));
  }

  // The place of the value that begins.
  std::optional<ValuePlace> Enter(bool isList) {
    if (open_.empty()) {
      return findPlace_(path_, isList);
    }
    const Container& around = open_.back();
    if (around.place) {
      return around.value.IsArray() ? around.place->Element(around.value.Size())
                                    : around.place->Member(Json::Text(around.name));
    }
    if (around.value.IsArray()) {
      path_.push_back(std::to_string(around.value.Size()));
    }
    return findPlace_(path_, isList);
  }

  std::size_t OpenLine(YamlEvent& event) {
    const bool isMember = !open_.empty() && open_.back().value.IsObject();
    return Lines().Open(isMember ? open_.back().nameLine : event->start_mark.line + 1);
  }

  void Put(Json::Value value) {
    if (open_.empty()) {
      data_.value = std::move(value);
      return;
    }
    Container& around = open_.back();
    if (!around.place) {
      path_.pop_back();
    }
    if (around.value.IsArray()) {
      around.value.PushBack(std::move(value), allocator_);
    } else {
      around.value.AddMember(std::move(around.name), std::move(value), allocator_);
      around.name = Json::Value();
    }
  }

  YamlLines& Lines() { return data_.lines; }

  YamlEvents events_;
  const FindPlace& findPlace_;
  Json::Allocator& allocator_;
  const YamlNull null_;
  std::vector<Container> open_;
  Path path_;  // as long as no place is known
  YamlData data_;
  bool isAtEnd_ = false;
};

constexpr std::string_view kSections[] = {"config", "automatic", "vital", "cached", "pending"};
constexpr std::string_view kStagedParts[] = {"user", "vital", "cached"};

template <std::size_t kCount>
bool IsAnyOf(std::string_view name, const std::string_view (&names)[kCount]) {
  return std::find(std::begin(names), std::end(names), name) != std::end(names);
}

}  // namespace

FindPlace PlaceOfData(ValuePlace type) {
  return [type](const Path& /*path*/, bool /*isList*/) { return std::optional(type); };
}

FindPlace PlaceOfInstances(ValuePlace type) {
  return [type](const Path& path, bool /*isList*/) {
    return path.empty() ? std::nullopt : std::optional(type);
  };
}

FindPlace PlacesOfDocument(FindType findType) {
  return [findType = std::move(findType)](const Path& path, bool isList) {
    constexpr std::size_t kObject = 4;  // and one more where there are several
    if (path.size() < kObject) {
      return std::optional<ValuePlace>();
    }
    const bool isObject = path.size() == kObject + 1 || (path.size() == kObject && !isList);
    const bool isPart = path.size() == kObject + 2 && IsAnyOf(path.back(), kStagedParts);
    const bool isData =
        path.front() == "staged" ? isPart : isObject && IsAnyOf(path.front(), kSections);
    return isData ? findType(path[1], path[2], path[3]) : std::nullopt;
  };
}

YamlData ReadYaml(std::string_view text, const FindPlace& findPlace, Json::Allocator& allocator,
                  YamlNull null) {
  return Reader(text, findPlace, allocator, null).Read();
}

}  // namespace tarnctl
