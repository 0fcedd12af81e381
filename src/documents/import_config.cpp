#include "tarnconfigstore/documents.h"

#include "platform/logger.h"

#include "documents/document_plan.h"
#include "errors/raise.h"
#include "notify/notification.h"
#include "persistence/connection.h"
#include "persistence/prefix_rows.h"
#include "store/config_store_impl.h"
#include "store/under_transaction.h"

namespace TarnConfigStore {
namespace {

[[noreturn]] void Refuse(const DocumentPlan& plan, CSErrorCodes code) {
  std::vector<ErrorInfo> findings = plan.Findings();
  for (const ErrorInfo& finding : findings) {
    CSLogger::LogErrCode(CSLogger::kFailure, CS_VALIDATION_FINDING, finding.field.c_str(),
                         finding.error.c_str());
  }
  ThrowException<ValidationException>(code, findings);
}

DBStore::ConnectionHandle OwnConnection() {
  return GetDBStore(DBStore::Type::CURRENT_STORE, true);
}

template <class Connect>
DocumentReport Bring(std::string_view text, const DocumentMode& mode, bool check,
                     std::size_t longest, CSErrorCodes refused, const char* operation,
                     const Connect& connect) {
  CSLogger::Log(CSLogger::kWriteCall, "%s invoked", operation);
  const ConfigDocument document = ReadConfigDocument(text, longest);
  DocumentPlan plan(document, mode);
  plan.Judge();
  const DBStore::ConnectionHandle connection = connect();
  if (check) {
    ReadAtOneMoment(connection, [&] {
      plan.Work(connection);
      plan.RequireAllowed(connection);
    });
    return plan.TakeReport();
  }
  std::vector<ConfigStoreObjectId> changed;

  RunUnderTransaction(connection, operation, [&] {
    plan.Work(connection);
    if (!plan.Report().Fits()) {
      Refuse(plan, refused);
    }
    plan.RequireAllowed(connection);
    plan.Write(connection);
    changed = plan.Changed();  // after the commit nothing may fail any more
  });
  NotifyIfAllowlisted(changed, connection);
  return plan.TakeReport();
}

template <class Connect>
DocumentReport Import(std::string_view document, const ImportOptions& options,
                      const Connect& connect) {
  DocumentMode mode;
  mode.import = options.mode;
  return Bring(document, mode, options.check, options.longest, CS_SET_INVALID, "ImportConfig",
               connect);
}

}  // namespace

DocumentReport ImportConfig(std::string_view document, const ImportOptions& options) {
  return Import(document, options, OwnConnection);
}

DocumentReport ImportConfig(ConfigStore& store, std::string_view document,
                            const ImportOptions& options) {
  return Import(document, options, [&store] { return ConnectionOf(store); });
}

DocumentReport ApplyConfig(std::string_view document, const ApplyConfigOptions& options) {
  DocumentMode mode;
  mode.apply = true;
  mode.prune = options.prune;
  mode.stage = options.stage;
  return Bring(document, mode, options.check, options.longest, CS_APPLY_FILE_INVALID, "ApplyConfig",
               OwnConnection);
}

}  // namespace TarnConfigStore
