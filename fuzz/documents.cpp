// Whole documents: checked and imported into an empty store, exported, and imported again.
// An input is a byte for the mode, and the document.
#include "tarnconfigstore/documents.h"

#include "tarnconfigstore/drift.h"

#include "fuzz_target.h"
#include "json/pointer.h"
#include "test_host.h"

#include <cstddef>
#include <string>

namespace Fuzz {
namespace {

using namespace TarnConfigStore;

const ConfigStoreObjectId kEverything("", "", "");

std::string Told(const DocumentReport& report) {
  for (const ObjectResult& object : report.objects) {
    Require((object.outcome == ObjectOutcome::REFUSED) == !object.findings.empty(),
            "an object is refused for findings, and for nothing else", object.id.toString());
  }
  return report.ToJson();
}

std::string Export(bool allParts) {
  return ExportConfigText(kEverything, {.allParts = allParts, .metadata = false, .reveal = true});
}

// What is exported says all that it is made of.
void CheckRoundTrip() {
  const std::string all = Export(true);
  const std::string users = Export(false);
  Require(ComputeDrift(users, {}).empty(), "a store does not differ from its export", users);
  TestHost::Get().Clear();
  const DocumentReport report = ImportConfig(all, {.mode = ImportMode::REPLACE_ALL});
  Require(report.Fits(), "an export is taken back", all + "\n" + Told(report));
  Require(Export(false) == users, "the user's part comes back from an export", all);
  const DocumentReport again = ImportConfig(users, {.mode = ImportMode::REPLACE_NAMED});
  Require(again.Fits() && !again.Changes(), "what is there already changes nothing",
          users + "\n" + Told(again));
}

void Run(std::string_view input) {
  TestHost& host = TestHost::Get();
  const ImportMode mode = static_cast<ImportMode>(TakeByte(input) % 3);
  try {
    const DocumentReport check = ImportConfig(input, {.mode = mode, .check = true});
    const std::size_t differences = ComputeDrift(input, {}).size();
    const DocumentReport report = ImportConfig(input, {.mode = mode});
    Require(Told(check) == Told(report), "a check tells what comes of it",
            Told(check) + "\n" + Told(report));
    if (report.Fits() && report.Changes()) {
      Require(differences > 0, "what an import changes is a difference", Told(report));
      CheckRoundTrip();
    }
    if (report.Changes()) {
      host.Clear();
    }
  } catch (const InvalidArgumentException&) {
    // It is no JSON.
  } catch (const ValidationException& refused) {
    Require(!refused.GetErrors().empty(), "a refusal has findings");
  }
}

const Target target("documents", Run);

}  // namespace
}  // namespace Fuzz
