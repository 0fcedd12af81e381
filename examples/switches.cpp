// The virtual switches of a host: several instances of one type, each with port groups inside.
//
//     switches TYPES        TYPES is the directory of type files, share/types
//
// Everything happens on a host of its own, in a temporary directory. switches.expected has what it
// prints.
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <memory>
#include <stdexcept>
#include <string>
#include <tarn_types/network-switches.h>
#include <tarnconfigstore/tarnconfigstore.h>
#include <utility>
#include <vector>

using namespace TarnConfigStore;

namespace {

// What "tarnctl schema generate-cpp" writes for the type: a misspelt member does not compile.
using Switch = TarnTypes::Tarn::Network::Switches;

// A service on a real host needs none of this: its host has a store, under "/".
class TemporaryHost {
 public:
  explicit TemporaryHost(const std::string& types) {
    std::string pattern = std::filesystem::temp_directory_path() / "switches-XXXXXX";
    if (::mkdtemp(pattern.data()) == nullptr) {
      throw std::runtime_error("no temporary directory");
    }
    root_ = pattern;
    SetHostRoot(root_);
    SetLogSink([](int, const char*) {});  // nor is it the system log's business
    InitializeHost();
    for (const TypeReport& report : InstallTypes({types}, {})) {
      if (report.outcome == TypeOutcome::INVALID) {
        throw std::runtime_error("bad type: " + report.path);
      }
    }
  }
  ~TemporaryHost() {
    std::error_code ignored;
    std::filesystem::remove_all(root_, ignored);
  }
  TemporaryHost(const TemporaryHost&) = delete;
  TemporaryHost& operator=(const TemporaryHost&) = delete;

 private:
  std::string root_;
};

// An object is not in the store until the store is given it.
std::shared_ptr<ConfigStoreObject> MakeSwitch(const std::string& name, int mtu) {
  Switch aSwitch(name);
  aSwitch.SetMtu(mtu);
  return aSwitch.Object();
}

void Print(const Switch& aSwitch) {
  const bool isDefault = !aSwitch.Object()->CheckKey("mtu");
  std::cout << "  " << aSwitch.InstanceId() << ": MTU " << aSwitch.GetMtu().value()
            << (isDefault ? " by default" : "") << ", revision " << aSwitch.Object()->GetRevision()
            << "\n";
  for (const auto& group : aSwitch.GetPortGroups()) {
    const auto vlan = group.GetVlan();  // nothing where the group has none
    std::cout << "    " << group.InstanceId() << ", "
              << (vlan ? "VLAN " + std::to_string(*vlan) : "no VLAN") << "\n";
  }
}

void PrintAll(const std::vector<std::shared_ptr<ConfigStoreObject>>& objects) {
  for (const auto& object : objects) {
    Print(Switch(object));
  }
}

void ManageSwitches() {
  auto store = ConfigStore::GetStore(sGlobalNamespace);

  std::cout << "Two switches of ours, and those that the type came with, stored as one:\n";
  Switch edge("edge");
  edge.SetMtu(9000);
  edge.MakePortGroups("Storage").SetVlan(20);  // a view: what it is given, the switch has
  edge.MakePortGroups("Backup").SetVlan(21);
  Switch lab("lab");
  lab.MakeSecurity().SetPromiscuous(true);
  lab.MakePortGroups("Experiments").SetVlan(99);
  std::vector<std::shared_ptr<ConfigStoreObject>> switches = {edge.Object(), lab.Object()};
  AddDefaultConfigInstances(Switch::Type(), switches);
  store->SetInstances(switches, EXTERNAL);  // a switch that is not in the list would be gone now
  PrintAll(InstancesOf(*store, Switch::Type()));

  std::cout << "Those whose guests may listen to everything:\n";
  const auto open = std::make_shared<FilterSpecObject>(Switch::Type());
  open->CreateSubObjectFilter(SubObjectId("security"))->Set("promiscuous", true);
  PrintAll(store->GetInstances(open));

  std::cout << "An update changes what it names, here one VLAN of one port group:\n";
  Switch change("edge");
  change.MakePortGroups("Backup").SetVlan(22);
  store->Update(change.Object(), EXTERNAL);
  Print(Switch::Read(*store, "edge").value());

  std::cout
      << "A transaction is whole or nothing. The second MTU is refused, so the first goes too:\n";
  try {
    ConfigStoreTransaction transaction(store);
    for (const auto& [name, mtu] : {std::pair("edge", 1500), std::pair("lab", 15000)}) {
      store->Update(MakeSwitch(name, mtu), EXTERNAL);
    }
    transaction.Commit();
  } catch (const ValidationException& refusal) {
    for (const ErrorInfo& finding : refusal.GetErrors()) {
      std::cout << "  " << finding.field << ": " << finding.error << "\n";
    }
  }
  std::cout << "  edge still has " << Switch::Read(*store, "edge")->GetMtu().value() << "\n";

  std::cout << "What is left when the open ones are deleted:\n";
  store->DeleteInstances(open);
  for (const Switch& left : Switch::ReadAll(*store)) {
    Print(left);
  }
}

}  // namespace

int main(int argumentCount, char** arguments) {
  if (argumentCount != 2) {
    std::cerr << "usage: switches TYPES\n";
    return 2;
  }
  try {
    const TemporaryHost host(arguments[1]);
    ManageSwitches();
    return 0;
  } catch (const std::exception& error) {  // all of the library's derive from it
    std::cerr << "switches: " << Describe(error).ToString() << "\n";
    return 1;
  }
}
