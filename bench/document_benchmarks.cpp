#include "tarnconfigstore/documents.h"
#include "tarnconfigstore/drift.h"

#include "benchmarks.h"
#include "comparison.h"
#include "floor_export.h"
#include "measured_host.h"
#include "samples.h"

#include <array>
#include <stdexcept>

namespace Benchmarks {
namespace {

using namespace TarnConfigStore;

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

void RegisterImport(Roads& roads, const std::string& root, std::size_t count) {
  constexpr double kTarget = 1.3;
  const ConfigStoreObjectId id = IdOf(Host::KeyOfWrittenInstances(count));
  const auto type = std::make_shared<FloorType>(root, id);
  const auto documents = std::make_shared<std::array<std::string, 2>>(
      std::array{DocumentOf(id.key, count, 0), DocumentOf(id.key, count, 1)});
  Configure(
      Compare(
          {.name = "import/" + std::to_string(count),
           .does = "parse a document, validate and write its instances, which all change, in one "
                   "transaction",
           .targetRatio = kTarget,
           .items = static_cast<int>(count)},
          [documents](benchmark::State& state) {
            std::size_t turn = 0;
            Measure(state, [&] {
              return ImportConfig((*documents)[++turn % 2], {.mode = ImportMode::REPLACE_NAMED})
                  .objects.size();
            });
          },
          [&roads, id, type, documents](benchmark::State& state) {
            std::size_t turn = 0;
            Measure(state, [&] { return roads.floor.Import(id, (*documents)[++turn % 2], *type); });
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

void RegisterDocuments(Roads& roads, const std::string& root, Extent extent) {
  RegisterExport(root, 10000);
  RegisterImport(roads, root, 10000);
  RegisterComparisons(roads, 1000);
  if (extent == Extent::ALL) {
    RegisterExport(root, Host::kMany);
    RegisterImport(roads, root, Host::kMany);
    RegisterComparisons(roads, 10000);
  }
}

}  // namespace Benchmarks
