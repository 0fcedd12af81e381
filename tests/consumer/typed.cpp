// What a service does with generated classes.
#include "tarn_types/network-resolver.h"
#include "tarn_types/network-switches.h"
#include "tarn_types/odd_names.h"

#include <cstdio>
#include <cstdlib>
#include <tarnconfigstore/tarnconfigstore.h>

using namespace TarnConfigStore;
namespace Network = TarnTypes::Tarn::Network;
namespace Odd = TarnTypes::Std::N2Class;

namespace {

void Expect(bool condition, const char* what) {
  if (!condition) {
    std::fprintf(stderr, "typed: %s\n", what);
    std::exit(1);
  }
}

template <class Call>
std::string Refused(Call call) {
  try {
    call();
  } catch (const InvalidArgumentException& error) {
    return Describe(error).text;
  }
  return {};
}

void UseSwitches(ConfigStore& store) {
  Network::Switches edge("edge");
  edge.SetMtu(9000L);
  edge.SetDiscovery(Network::Switches_Discovery::kBoth);
  edge.MakeSecurity().SetPromiscuous(true);
  edge.MakePortGroups("Storage").SetVlan(20);
  edge.MakePortGroups("Backup").MakeShaping().SetAverageKbps(1000);
  Expect(Refused([&] { edge.SetMtu(70000); }) == "Value does not fit the member: mtu", "no cut");
  store.Set(edge.Object(), EXTERNAL);

  const auto stored = Network::Switches::Read(store, "edge");
  Expect(stored && stored->GetMtu() == 9000 && stored->GetPorts() == 1024, "own and default");
  Expect(stored->GetDiscovery() == Network::Switches_Discovery::kBoth, "an enumeration");
  Expect(stored->GetSecurity()->GetPromiscuous() == true, "a part");
  Expect(!stored->GetSecurity()->GetMacChanges() && !stored->GetUplinks(), "absent");
  std::string seen;
  for (const auto& group : stored->GetPortGroups()) {
    seen += group.InstanceId() + (group.GetVlan() ? std::to_string(*group.GetVlan()) : "") + " ";
  }
  Expect(seen == "Storage20 Backup ", "instances inside");
  Expect(stored->GetPortGroups("Backup")->GetShaping()->GetAverageKbps() == 1000, "one of them");
  edge.RemovePortGroups("Backup");
  edge.RemovePortGroups("Backup");
  Expect(edge.GetPortGroups().size() == 1 && !edge.GetPortGroups("Backup"), "removed");
  Expect(!Network::Switches::Read(store, "none"), "not stored");
  Expect(Network::Switches::ReadAll(store).front().InstanceId() == "edge", "all");
  Expect(Refused([&] { Network::Resolver resolver(edge.Object()); }) ==
             "tarn/network/switches/edge is no tarn/network/resolver",
         "an object of another type");
}

// Nothing in the type file gets out of its comments and literals, and each member has accessors.
void UseOddNames(ConfigStore& store) {
  Odd::TypeConfig odd;
  odd.SetClass(true);
  odd.Setxsnmp_2dport(255);
  odd.SetxsnmpPort(-128);
  odd.SetGrE(~0ULL);
  odd.Set4th(70000);
  odd.SetMode(Odd::TypeConfig_Mode::kx_22_3f_3f_2f_5c);
  odd.SetModes({Odd::TypeConfig_Mode::kx, Odd::TypeConfig_Mode::kOn, Odd::TypeConfig_Mode::kGrE});
  odd.MakePartAt().SetX(5);
  odd.MakeNodes("a").MakeBelow("b").MakeBelow("c");
  odd.MakeRules().SetHits(5);
  odd.SetFlags({true, false});
  odd.SetExtra(4294967296);
  store.Set(odd.Object(), EXTERNAL);
  const auto stored = Odd::TypeConfig::Read(store);
  Expect(stored->Getxsnmp_2dport() == 255 && stored->GetxsnmpPort() == -128, "names alike");
  Expect(stored->GetGrE() == ~0ULL && stored->Get4th() == 70000U, "names of any characters");
  Expect(stored->GetModes() == odd.GetModes() && stored->GetMode() == odd.GetMode(), "odd texts");
  Expect(stored->GetPartAt()->GetX() == 5.0, "a number that was given as an integer");
  Expect(stored->GetNodes("a")->GetBelow("b")->GetBelow("c").has_value(), "parts of parts");
  Expect(stored->GetRules().front().GetHits() == 5, "named by the store");
  Expect(!stored->GetObject() && odd.MakeObject().GetMode() == Odd::TypeConfig_Mode::kx4_2e1,
         "the default of a part");
  Expect(stored->Object()->GetPath("/mode") == "\"\\\"?\?/\\\\\"", "the text itself");
}

}  // namespace

int main(int argc, char** argv) {
  Expect(argc == 3, "usage: typed ROOT TYPES");
  try {
    SetHostRoot(argv[1]);
    SetLogSink([](int, const char*) {});
    InitializeHost();
    InstallTypes({argv[2], ODD_TYPE}, {});
    const auto store = ConfigStore::GetStore(sGlobalNamespace);
    UseSwitches(*store);
    UseOddNames(*store);
    std::puts("typed: ok");
    return 0;
  } catch (const std::exception& error) {
    Expect(false, Describe(error).ToString().c_str());
    return 1;
  }
}
