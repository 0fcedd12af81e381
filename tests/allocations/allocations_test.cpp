#include "tarnconfigstore/config_store.h"
#include "tarnconfigstore/documents.h"
#include "tarnconfigstore/held_rows.h"

#include "allocation_count.h"
#include "support/temporary_host.h"
#include "support/test_types.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstddef>
#include <functional>
#include <malloc.h>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace {

using namespace TarnConfigStore;

constexpr int kInstances = 100;

std::shared_ptr<ConfigStoreObject> Plain(const char* json) {
  auto object = std::make_shared<ConfigStoreObject>(ConfigStoreObjectId("plain", "test", "tarn"));
  object->SetData(json);
  return object;
}

// How often the everyday operations allocate, SQLite's own part included. Whoever makes them allocate less lowers
// the bounds; whoever makes them allocate more should know why.
TEST(Allocations, StayBelowTheirBounds) {
  const TestSupport::TemporaryHost host;
  TestSupport::InstallType(host, TestSupport::kPlainType);
  TestSupport::InstallType(host, TestSupport::kSwitchType);
  auto store = ConfigStore::GetStore(sGlobalNamespace);
  const auto object = Plain(R"({"name":"a name that is too long for a small string","port":7})");
  const auto change = Plain(R"({"port":8})");
  const ConfigStoreObjectId id = object->GetConfigStoreObjectId();
  store->Set(object, EXTERNAL);
  for (int i = 0; i < kInstances; ++i) {
    const std::string name = "instance-number-" + std::to_string(i);
    const auto instance =
        std::make_shared<ConfigStoreObject>(ConfigStoreObjectId("switch", "test", "tarn", name));
    instance->SetData((R"({"name":")" + name + R"(","mtu":1500})").c_str());
    store->Set(instance, EXTERNAL);
  }
  const auto all =
      std::make_shared<FilterSpecObject>(ConfigStoreObjectId("switch", "test", "tarn"));

  const std::string document = ExportConfigText({"switch", "test", "tarn"}, {});

  // Until then the types are asked for again and again.
  std::this_thread::sleep_for(std::chrono::milliseconds(150));
  for (int i = 0; i < 3; ++i) {
    store->Get(id);
  }
  const auto get = [&] { EXPECT_TRUE(store->Get(id)); };
  EXPECT_LE(Benchmarks::AllocationsOf([] {}, get), 6) << "of an object that did not change";
  SetRowHolding(false);
  EXPECT_GT(Benchmarks::AllocationsOf([] {}, get), 6) << "each time from the database";
  SetRowHolding(true);
  const std::size_t before = mallinfo2().uordblks;
  std::vector<std::shared_ptr<ConfigStoreObject>> instances = store->GetInstances(all);
  EXPECT_GT(mallinfo2().uordblks, before + 64 * 1024);
  const auto kept = instances[kInstances / 2];
  instances = {};
  EXPECT_LT(mallinfo2().uordblks, before + 64 * 1024) << "one instance keeps no other's memory";
  EXPECT_EQ(kept->GetData(), store->Get(kept->GetConfigStoreObjectId())->GetData());
  ConfigStoreTransaction transaction(store);
  const struct {
    const char* name;
    std::function<void()> run;
    int times;  // what one run does
    double most;
  } operations[] = {
      {"Get", [&] { EXPECT_TRUE(store->Get(id)); }, 1, 11},
      {"GetInstances, each", [&] { EXPECT_EQ(store->GetInstances(all).size(), kInstances); },
       kInstances, 1.5},
      {"Set", [&] { store->Set(object, EXTERNAL); }, 1, 30},
      {"Update", [&] { store->Update(change, EXTERNAL); }, 1, 47},
      {"ImportConfig of what is there, each",
       [&] { EXPECT_FALSE(ImportConfig(*store, document, {}).Changes()); }, kInstances, 3},
      {"GetRevision", [&] { EXPECT_GT(store->GetRevision(id), 0); }, 1, 4},
  };
  for (const auto& [name, run, times, most] : operations) {
    run();
    const double counted = Benchmarks::AllocationsOf([] {}, run) / times;
    EXPECT_LE(counted, most) << name;
    // A counter that stands still would keep every bound.
    EXPECT_GT(counted, 0) << name;
  }
}

}  // namespace
