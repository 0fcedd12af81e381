// Each number but 0 is a mistake that the compiler has to find.
#include "switches.h"

using TarnTypes::Tarn::Network::Switches;

void Use(Switches& edge) {
  edge.SetMtu(9000);
  edge.MakeSecurity().SetPromiscuous(true);
  edge.SetDiscovery(TarnTypes::Tarn::Network::Switches_Discovery::kBoth);
#if MISTAKE == 1
  edge.SetMtuu(9000);
#elif MISTAKE == 2
  edge.SetMtu("9000");
#elif MISTAKE == 3
  edge.SetMtu(9000.5);
#elif MISTAKE == 4
  edge.MakeSecurity().SetPromiscuous("no");
#elif MISTAKE == 5
  edge.SetDiscovery("both");
#elif MISTAKE == 6
  edge.SetName("other");  // the instance id is given once
#elif MISTAKE == 7
  edge.Object()->Get<std::string_view>("name");  // nobody would own the text
#elif MISTAKE == 8
  edge.Object()->Set("mtu", 'x');
#elif MISTAKE == 9
  enum class Unlisted { ONE };
  edge.Object()->Set("discovery", Unlisted::ONE);
#endif
}

int main() {}
