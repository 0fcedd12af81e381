#include "boot_arguments.h"

#include "boot_verbs.h"
#include "kernel_option_verbs.h"
#include "next_boot_verbs.h"

namespace tarnctl {
namespace {

void AddStagedGet(CLI::App& family, Arguments& a) {
  CLI::App* get = AddVerb(family, a, "get", "Print what is staged: an object, a member, instances",
                          [&a](const Output& output) {
                            if (MeansInstances(a)) {
                              GetStagedInstances(a.name, a.conditions, output);
                            } else {
                              GetStaged(a.name, a.detail, output);
                            }
                          });
  AddInstances(*get, a);
  AddMember(*get, a);
}

void AddStagedDelete(CLI::App& family, Arguments& a) {
  CLI::App* remove = AddVerb(
      family, a, "delete", "Stage the deletion of an object, or of instances", [&a](const Output&) {
        if (MeansInstances(a)) {
          StageDeleteInstances(a.name, a.conditions);
        } else {
          StageDelete(a.name);
        }
      });
  AddInstances(*remove, a);
  AddNote(*remove, "Instances are chosen among those stored; those that are only staged stay so.");
}

void AddVerdict(CLI::App& family, Arguments& a, const char* name, const char* help,
                BootVerdict verdict) {
  CLI::App* judge = AddVerb(family, a, name, help, [&a, verdict](const Output&) {
    if (a.everything) {
      JudgeWholeBoot(verdict);
    } else {
      JudgeBoot(a.name, verdict);
    }
  });
  CLI::App* which = judge->add_option_group("Which");
  which->add_option("OBJECT", a.name, "A TYPE means all its instances");
  which->add_flag("--all", a.everything, "Everything that waits");
  which->require_option(1);
}

}  // namespace

void AddNextBootVerbs(CLI::App& app, Arguments& a) {
  CLI::App* family =
      AddFamily(app, "next-boot", "Stage changes of types that need a reboot, and take them back");
  AddStagedGet(*family, a);
  CLI::App* set = AddVerb(*family, a, "set", "Stage the whole new content of an object",
                          [&a](const Output&) { StageObject(a.name, a.list); });
  AddObject(*set, a);
  AddData(*set, a);
  AddStagedDelete(*family, a);
  CLI::App* reset =
      AddVerb(*family, a, "reset", "Take back everything that is staged for an object's type",
              [&a](const Output&) { ResetStaged(a.name); });
  AddObject(*reset, a);
  AddNote(*reset, "All records of the type are cleared, those of other instances than OBJECT too.");
  CLI::App* list = AddVerb(*family, a, "list", "List the staged changes",
                           [&a](const Output& output) { ListStagedChanges(a.name, output); });
  list->add_option("PREFIX", a.name, "COMPONENT[/GROUP[/KEY[/INSTANCE]]]");
}

void AddBootVerbs(CLI::App& app, Arguments& a) {
  CLI::App* family = AddFamily(app, "boot", "Look at the host's boot, and play the boot process");
  AddVerb(*family, a, "status", "Print what boots, what is staged, and what waits to be accepted",
          ShowBootStatus);
  AddVerb(*family, a, "info", "Print the kind of the boot", ShowBootInfo);
  CLI::App* apply =
      AddVerb(*family, a, "apply", "Make the staged changes current: all of them, or none",
              [&a](const Output& output) { ApplyStaged(a.rest, output); });
  apply->add_flag("--rest", a.rest, "Apply those that fit even when others do not");
  AddVerdict(*family, a, "accept", "Make the values that waited for this boot the user's",
             BootVerdict::ACCEPT);
  AddVerdict(*family, a, "reject", "Drop the values that waited for this boot",
             BootVerdict::REJECT);
}

void AddKernelOptionVerbs(CLI::App& app, Arguments& a) {
  CLI::App* family =
      AddFamily(app, "kernel-options", "Read and replace the kernel options of the next boot");
  CLI::App* get = AddVerb(*family, a, "get", "Print the options, or a member of them",
                          [&a](const Output& output) { GetKernelOptions(a.detail, output); });
  get->add_option("MEMBER", a.detail, "A dotted path, through objects only");
  CLI::App* set = AddVerb(*family, a, "set", "Replace the options; boot accept puts them in force",
                          [&a](const Output&) { SetKernelOptions(a.list); });
  AddData(*set, a);
  AddNote(*set, "Vital members are in force at once, and gone at once where DATA has none.");
}

}  // namespace tarnctl
