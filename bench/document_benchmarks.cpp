#include "tarnconfigstore/documents.h"
#include "tarnconfigstore/drift.h"

#include "platform/host_paths.h"

#include "benchmarks.h"
#include "comparison.h"
#include "measured_host.h"
#include "samples.h"

#include <rapidjson/prettywriter.h>
#include <rapidjson/reader.h>

#include <array>
#include <stdexcept>

namespace Benchmarks {
namespace {

using namespace TarnConfigStore;

constexpr std::int64_t kStoreMark = 0x54435331;
constexpr std::int64_t kStoreLayout = 2;
constexpr const char* kReadTexts =
    "SELECT Identifier, UserValue FROM Config WHERE Component = ? AND ConfigGroup = ? AND Name = ? "
    "AND Success = 1 AND UserValue NOT NULL ORDER BY Identifier";

std::string DocumentOf(const std::string& key, std::size_t count, unsigned variant) {
  const ConfigStoreObjectId id = IdOf(key);
  std::string text =
      R"({"format":1,"config":{")" + id.component + "\":{\"" + id.group + "\":{\"" + key + "\":[";
  for (std::size_t i = 0; i < count; ++i) {
    text += i == 0 ? "" : ",";
    text += ObjectText(static_cast<unsigned>(i) + variant, InstanceId(i));
  }
  return text += "]}}}}";
}

// Reads the texts of a type's rows and writes them as one, indented, by hand: each is read strictly and
// written as it is read.
class FloorExport {
 public:
  explicit FloorExport(const std::string& root)
      : database_(root + HostPaths::kStore, FloorDatabase::Access::READ, kStoreMark, kStoreLayout),
        texts_(database_, kReadTexts) {}

  std::size_t Run(const ConfigStoreObjectId& type) {
    texts_.Bind(1, type.component);
    texts_.Bind(2, type.group);
    texts_.Bind(3, type.key);
    std::size_t written = 0;
    buffer_.Clear();
    Writer writer(buffer_);
    writer.SetIndent(' ', 2);
    writer.StartArray();
    while (texts_.Step()) {
      const std::string_view text = texts_.Text(1);
      rapidjson::MemoryStream bytes(text.data(), text.size());
      rapidjson::EncodedInputStream<Json::Encoding, rapidjson::MemoryStream> stream(bytes);
      rapidjson::Reader reader;
      if (!reader.Parse<rapidjson::kParseValidateEncodingFlag |
                        rapidjson::kParseNumbersAsStringsFlag>(stream, writer)) {
        throw std::runtime_error("a row is not JSON");
      }
      if (buffer_.GetSize() > kPiece) {
        written += buffer_.GetSize();
        buffer_.Clear();
      }
    }
    writer.EndArray();
    texts_.Reset();
    return written + buffer_.GetSize();
  }

 private:
  static constexpr std::size_t kPiece = 64 * 1024;

  // Numbers as they are written.
  struct Writer : rapidjson::PrettyWriter<rapidjson::StringBuffer> {
    using PrettyWriter::PrettyWriter;
    bool RawNumber(const char* text, rapidjson::SizeType length, bool /*copy*/) {
      return RawValue(text, length, rapidjson::kNumberType);
    }
  };

  FloorDatabase database_;
  FloorStatement texts_;
  rapidjson::StringBuffer buffer_;
};

void Configure(const Sides& sides, std::size_t count) {
  const int repetitions = count > 10000 ? 5 : 9;
  sides.library->Repetitions(repetitions);
  sides.floor->Repetitions(repetitions);
}

void RegisterExport(const std::string& root, std::size_t count) {
  constexpr double kTarget = 1.3;
  const ConfigStoreObjectId type = IdOf(Host::KeyOfInstances(count));
  const auto floor = std::make_shared<FloorExport>(root);
  Configure(
      Compare(
          {.name = "export/" + std::to_string(count),
           .does = "read the rows of a type, each strictly, and write them indented, in pieces",
           .targetRatio = kTarget,
           .items = static_cast<int>(count)},
          [type](benchmark::State& state) {
            Measure(state, [&] {
              std::size_t written = 0;
              ExportConfig(type, {},
                           [&written](std::string_view piece) { written += piece.size(); });
              return written;
            });
          },
          [type, floor](benchmark::State& state) {
            Measure(state, [&] { return floor->Run(type); });
          }),
      count);
}

void RegisterImport(Roads& roads, std::size_t count) {
  constexpr double kTarget = 1.3;
  const std::string key = Host::KeyOfWrittenInstances(count);
  const auto documents = std::make_shared<std::array<std::string, 2>>(
      std::array{DocumentOf(key, count, 0), DocumentOf(key, count, 1)});
  Configure(
      Compare(
          {.name = "import/" + std::to_string(count),
           .does = "parse, validate and write instances that all change; the floor makes objects "
                   "of the same texts and calls SetInstances",
           .targetRatio = kTarget,
           .items = static_cast<int>(count)},
          [documents](benchmark::State& state) {
            std::size_t turn = 0;
            Measure(state, [&] {
              return ImportConfig((*documents)[++turn % 2], {.mode = ImportMode::REPLACE_NAMED})
                  .objects.size();
            });
          },
          [&roads, key, count](benchmark::State& state) {
            unsigned turn = 0;
            Measure(state, [&] {
              ++turn;
              std::vector<std::shared_ptr<ConfigStoreObject>> objects;
              for (std::size_t i = 0; i < count; ++i) {
                const std::string id = InstanceId(i);
                objects.push_back(std::make_shared<ConfigStoreObject>(IdOf(key, id)));
                objects.back()->SetData(
                    ObjectText(static_cast<unsigned>(i) + turn % 2, id).c_str());
              }
              roads.library->SetInstances(std::move(objects), EXTERNAL);
              return turn;
            });
          }),
      count);
}

// What there is to do where nothing differs: read all there is.
Body ReadingAll(Roads& roads, const ConfigStoreObjectId& type,
                const std::shared_ptr<std::string>& document) {
  return [&roads, type, document](benchmark::State& state) {
    Measure(state, [&] {
      Json::Document parsed;
      if (!Json::Parse(*document, parsed, Json::Origin::OUTSIDE)) {
        throw std::runtime_error("the document is not JSON");
      }
      return roads.floor.GetInstances(type).size();
    });
  };
}

void RegisterComparisons(Roads& roads, std::size_t count) {
  constexpr double kTarget = 1.5;
  constexpr double kDiffTarget = 8;  // the same for few and for many
  const ConfigStoreObjectId type = IdOf(Host::KeyOfInstances(count));
  const auto document = std::make_shared<std::string>();
  ExportConfig(type, {}, [&document](std::string_view piece) { *document += piece; });
  Configure(Compare(
                {.name = "apply/" + std::to_string(count) + "-same",
                 .does = "parse a document and hold it against the rows, which are as it says; the "
                         "floor parses it and reads all objects",
                 .targetRatio = kTarget,
                 .items = static_cast<int>(count)},
                [document](benchmark::State& state) {
                  Measure(state, [&] { return ApplyConfig(*document, {}).objects.size(); });
                },
                ReadingAll(roads, type, document)),
            count);
  const auto other =
      std::make_shared<std::string>(DocumentOf(Host::KeyOfInstances(count), count, 1));
  Configure(Compare(
                {.name = "diff/" + std::to_string(count),
                 .does = "tell what differs where every object does; the floor parses the "
                         "document and reads all objects",
                 .targetRatio = kDiffTarget,
                 .items = static_cast<int>(count)},
                [other](benchmark::State& state) {
                  Measure(state, [&] { return ComputeDrift(*other, {}).size(); });
                },
                ReadingAll(roads, type, other)),
            count);
}

}  // namespace

void RegisterDocuments(Roads& roads, const std::string& root) {
  RegisterExport(root, 10000);
  RegisterExport(root, Host::kMany);
  RegisterImport(roads, 10000);
  RegisterComparisons(roads, 1000);
  RegisterComparisons(roads, 10000);
}

}  // namespace Benchmarks
