#include "program.h"

#include "rehearsal/dry_run.h"
#include "verbs/verbs.h"

namespace tarnctl {
namespace {

constexpr const char* kFooter =
    "An OBJECT is COMPONENT/GROUP/KEY[/INSTANCE], a TYPE the same without an instance.\n"
    "Exit codes: 0 done, 1 failed, 2 usage, 3 not found, 4 invalid, 5 not as expected, 6 "
    "permission, 7 busy, 8 corrupt.";

}  // namespace

Program MakeProgram() {
  Program program = {.name = "tarnctl",
                     .help = "Looks at the host's configuration store and changes it.",
                     .footer = kFooter,
                     .version = "tarnctl " TARNCTL_VERSION,
                     .arguments = {Flag("--json", "Print everything as JSON, errors too"),
                                   Flag("--yaml", "Print data as YAML", {"--json"}),
                                   {.name = "--root",
                                    .help = "Directory that the host's paths are resolved under",
                                    .valueName = "DIR"},
                                   {.name = "--log",
                                    .help = "Print log lines of priority up to N on standard error",
                                    .valueName = "N",
                                    .range = NumberRange{0, 4}}}};
  for (Verb (*const make)() :
       {InitVerb,      TypeVerbs,  GetVerb,           SetVerb,     UpdateVerb,
        UnsetVerb,     ResetVerb,  DeleteVerb,        EditVerb,    TransactionVerb,
        ValidateVerb,  ListVerb,   RevisionVerb,      ExplainVerb, DescribeVerb,
        ExportVerb,    ImportVerb, ApplyVerb,         DiffVerb,    NextBootVerbs,
        PendingVerb,   BootVerbs,  KernelOptionVerbs, EntryVerbs,  BackupVerb,
        RestoreVerb,   DoctorVerb, WatchVerb,         HelpVerb,    CompletionVerb,
        CandidatesVerb}) {
    program.verbs.push_back(make());
  }
  OfferDryRun(program.verbs);
  return program;
}

}  // namespace tarnctl
