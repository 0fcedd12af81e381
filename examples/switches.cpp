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
#include <tarnconfigstore/tarnconfigstore.h>
#include <utility>
#include <vector>

using namespace TarnConfigStore;

namespace {

using Switch = std::shared_ptr<ConfigStoreObject>;

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

// Without an instance id it names the type, and so all switches.
ConfigStoreObjectId SwitchId(const std::string& name = "") {
  return {"switches", "network", kDefaultComponent, name};
}

// An object is not in the store until the store is given it.
Switch MakeSwitch(const std::string& name) {
  return std::make_shared<ConfigStoreObject>(SwitchId(name));
}

// A sub-object is a view: what it is given, the switch has.
void AddPortGroup(const Switch& aSwitch, const std::string& name, int vlan) {
  aSwitch->CreateSubObject(SubObjectId("portGroups", name))->SetValue("vlan", vlan);
}

void Print(const Switch& aSwitch) {
  int mtu = 0;
  const bool isDefault = aSwitch->GetValue("mtu", &mtu) == 2;  // 1: its own, 0: there is none
  std::cout << "  " << aSwitch->GetConfigStoreObjectId().instanceId << ": MTU " << mtu
            << (isDefault ? " by default" : "") << ", revision " << aSwitch->GetRevision() << "\n";
  for (const auto& group : aSwitch->GetSubObjectInstances("portGroups")) {
    int vlan = 0;
    const bool isTagged = group->GetValue("vlan", &vlan) != 0;
    std::cout << "    " << group->GetConfigStoreObjectId().instanceId << ", "
              << (isTagged ? "VLAN " + std::to_string(vlan) : "no VLAN") << "\n";
  }
}

void Print(const std::vector<Switch>& switches) {
  for (const Switch& aSwitch : switches) {
    Print(aSwitch);
  }
}

void ManageSwitches() {
  auto store = ConfigStore::GetStore(sGlobalNamespace);
  const auto all = std::make_shared<FilterSpecObject>(SwitchId());

  std::cout << "Two switches of ours, and those that the type came with, stored as one:\n";
  const Switch edge = MakeSwitch("edge");
  edge->SetValue("mtu", 9000);
  AddPortGroup(edge, "Storage", 20);
  AddPortGroup(edge, "Backup", 21);
  const Switch lab = MakeSwitch("lab");
  lab->CreateSubObject(SubObjectId("security"))->SetValue("promiscuous", true);
  AddPortGroup(lab, "Experiments", 99);
  std::vector<Switch> switches = {edge, lab};
  AddDefaultConfigInstances(SwitchId(), switches);
  store->SetInstances(switches, EXTERNAL);  // a switch that is not in the list would be gone now
  Print(store->GetInstances(all));

  std::cout << "Those whose guests may listen to everything:\n";
  const auto open = std::make_shared<FilterSpecObject>(SwitchId());
  open->CreateSubObjectFilter(SubObjectId("security"))->SetValue("promiscuous", true);
  Print(store->GetInstances(open));

  std::cout << "An update changes what it names, here one VLAN of one port group:\n";
  const Switch change = MakeSwitch("edge");
  AddPortGroup(change, "Backup", 22);
  store->Update(change, EXTERNAL);
  Print(store->Get(SwitchId("edge")));

  std::cout
      << "A transaction is whole or nothing. The second MTU is refused, so the first goes too:\n";
  try {
    ConfigStoreTransaction transaction(store);
    for (const auto& [name, mtu] : {std::pair("edge", 1500), std::pair("lab", 15000)}) {
      const Switch resized = MakeSwitch(name);
      resized->SetValue("mtu", mtu);
      store->Update(resized, EXTERNAL);
    }
    transaction.Commit();
  } catch (const ValidationException& refusal) {
    for (const ErrorInfo& finding : refusal.GetErrors()) {
      std::cout << "  " << finding.field << ": " << finding.error << "\n";
    }
  }
  std::cout << "  edge still has " << store->Get(SwitchId("edge"))->GetPath("/mtu").value() << "\n";

  std::cout << "What is left when the open ones are deleted:\n";
  store->DeleteInstances(open);
  Print(store->GetInstances(all));
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
    std::cerr << "switches: " << error.what() << "\n";
    return 1;
  }
}
