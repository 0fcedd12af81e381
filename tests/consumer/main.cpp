// What a host service does with the library, through its public headers alone.
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <tarnconfigstore/tarnconfigstore.h>
#include <vector>

using namespace TarnConfigStore;

namespace {

void Expect(bool condition, const char* what) {
  if (!condition) {
    std::fprintf(stderr, "consumer: %s\n", what);
    std::exit(1);
  }
}

// What tarnconfigstore.h shows, word for word.
void ShowFirstSteps() {
  // begin
  auto store = ConfigStore::GetStore(sGlobalNamespace);
  // Key, group, component, instance id.
  const ConfigStoreObjectId id("switches", "network", kDefaultComponent, "edge");
  auto edge = std::make_shared<ConfigStoreObject>(id);
  edge->SetValue("mtu", 9000);
  store->Set(edge, EXTERNAL);
  // The pointer is empty when nothing is stored.
  int mtu = 0;
  if (const auto stored = store->Get(id)) {
    stored->GetValue("mtu", &mtu);
  }
  // A filter without an instance id: all switches that hold this MTU.
  auto filter = std::make_shared<FilterSpecObject>(
      ConfigStoreObjectId("switches", "network", kDefaultComponent));
  filter->SetValue("mtu", 9000);
  const std::vector<std::shared_ptr<ConfigStoreObject>> found = store->GetInstances(filter);
  // end
  Expect(mtu == 9000, "the object reads back");
  Expect(found.size() == 1 && found.front()->GetConfigStoreObjectId() == id, "the filter finds it");
}

}  // namespace

int main(int argc, char** argv) {
  Expect(argc == 3, "usage: consumer ROOT TYPES");
  SetHostRoot(argv[1]);
  SetLogSink([](int, const char*) {});
  InitializeHost();
  for (const TypeReport& report : InstallTypes({argv[2]}, {})) {
    Expect(report.outcome == TypeOutcome::INSTALLED, report.path.c_str());
  }

  const ConfigStoreObjectId id("resolver", "network", kDefaultComponent);
  auto store = ConfigStore::GetStore(sGlobalNamespace);
  Expect(!store->Get(id), "nothing is stored yet");
  auto resolver = std::make_shared<ConfigStoreObject>(id);
  {
    ConfigStoreTransaction transaction(store);
    resolver->SetValue("servers", std::vector<std::string>{"10.0.0.1"});
    resolver->SetValue("timeout", 9);
    store->Set(resolver, EXTERNAL);
    transaction.Commit();
  }
  int timeout = 0;
  Expect(store->Get(id)->GetValue("timeout", &timeout) == 1 && timeout == 9, "timeout reads back");

  // The exception that crosses the library's border is the caller's own type.
  try {
    resolver->SetValue("timeout", "soon");
    store->Set(resolver, EXTERNAL);
    Expect(false, "a timeout that is no number is refused");
  } catch (const HostCtl::Lib::HostCtlException& base) {
    const auto* exception = dynamic_cast<const ValidationException*>(&base);
    Expect(exception != nullptr && exception->GetErrorCode() == 1089, "what is raised, and why");
    Expect(base.GetDetailedMessage() == base.what(), "its message");
  }
  Expect(store->GetRevision(id) == 1, "one write, and refused ones change nothing");

  ShowFirstSteps();
  std::puts("consumer: ok");
  return 0;
}
