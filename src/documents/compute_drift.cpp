#include "tarnconfigstore/drift.h"

#include "platform/logger.h"

#include "documents/document_plan.h"
#include "documents/drift_builder.h"
#include "errors/raise.h"
#include "persistence/connection.h"
#include "persistence/prefix_rows.h"

namespace TarnConfigStore {

std::vector<DriftObject> ComputeDrift(std::string_view text, const DriftOptions& options) {
  CSLogger::Log(CSLogger::kTrace, "%s invoked", "ComputeDrift");
  const ConfigDocument document = ReadConfigDocument(text, options.longest);
  DocumentMode mode;
  mode.import = options.complete ? ImportMode::REPLACE_ALL : ImportMode::REPLACE_NAMED;
  mode.prefix = options.prefix;
  DocumentPlan plan(document, mode);
  plan.Judge();
  const DBStore::ConnectionHandle connection = GetDBStore(DBStore::Type::CURRENT_STORE, true);
  ReadAtOneMoment(connection, [&] { plan.Work(connection); });
  if (!plan.Report().Fits()) {
    std::vector<ErrorInfo> findings = plan.Findings();
    ThrowException<ValidationException>(CS_SET_INVALID, findings);
  }
  std::vector<DriftObject> objects;
  DriftBuilder drift(document.IsOfUserOnly(), options.reveal);
  objects.reserve(plan.Steps().size() + plan.Records().size());
  for (const DocumentPlan::PlannedStep& step : plan.Steps()) {
    objects.push_back(drift.Of(step));
  }
  for (const DocumentPlan::PlannedRecord& record : plan.Records()) {
    objects.push_back(drift.Of(record));
  }
  return objects;
}

}  // namespace TarnConfigStore
