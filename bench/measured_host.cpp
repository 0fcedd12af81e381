#include "measured_host.h"

#include "tarnconfigstore/host.h"
#include "tarnconfigstore/type_administration.h"

#include "platform/host_paths.h"

#include "floor_store.h"
#include "samples.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <linux/magic.h>
#include <random>
#include <stdexcept>
#include <sys/vfs.h>
#include <vector>

namespace Benchmarks {
namespace {

constexpr std::size_t kTypes = 2000;
constexpr int kRewrites = 10;
constexpr std::size_t kInstanceCounts[] = {10, 1000, 10000};
constexpr std::size_t kRewrittenCount = 10000;

// Durable writes cost nothing in memory, so they would measure nothing.
void RefuseMemoryFileSystem(const std::string& path) {
  struct statfs status {};
  if (statfs(path.c_str(), &status) == 0 && status.f_type == TMPFS_MAGIC) {
    throw std::runtime_error("the current directory lies on a tmpfs; run where fsync is real");
  }
}

std::string MakeRoot() {
  std::string root = (std::filesystem::current_path() / "bench-host-XXXXXX").string();
  if (mkdtemp(root.data()) == nullptr) {
    throw std::runtime_error("cannot make " + root);
  }
  RefuseMemoryFileSystem(root);
  return root;
}

RowValues Row(unsigned variant, const std::string& instanceId = std::string()) {
  RowValues row;
  row.user = ObjectText(variant, instanceId);
  return row;
}

RowValues LargeRow() {
  constexpr std::size_t kSize = 4'000'000;
  RowValues row;
  row.user = "{\"text\":\"" + std::string(kSize, 'x') + "\"}";
  return row;
}

void FillInstances(FloorStore& store, const std::string& key, std::size_t count) {
  for (std::size_t i = 0; i < count; ++i) {
    const std::string id = InstanceId(i);
    store.Fill(IdOf(key, id), Row(static_cast<unsigned>(i), id));
  }
}

// In another order each time, as a host's services would.
void RewriteInstances(FloorStore& store, const std::string& key, std::size_t count) {
  std::vector<std::size_t> order(count);
  for (std::size_t i = 0; i < count; ++i) {
    order[i] = i;
  }
  std::mt19937 random(1);
  for (unsigned round = 0; round < kRewrites; ++round) {
    std::shuffle(order.begin(), order.end(), random);
    store.Run("BEGIN IMMEDIATE");
    for (const std::size_t i : order) {
      const std::string id = InstanceId(i);
      store.Fill(IdOf(key, id), Row(static_cast<unsigned>(i) + round, id));
    }
    store.Run("COMMIT");
  }
}

}  // namespace

std::string Host::KeyOfInstances(std::size_t count) {
  return "instances-" + std::to_string(count);
}

std::string Host::KeyOfWrittenInstances(std::size_t count) {
  return "written-instances-" + std::to_string(count);
}

Host::Host() : root_(MakeRoot()) {
  try {
    TarnConfigStore::SetHostRoot(root_);
    TarnConfigStore::InitializeHost();
    WriteAllowlist();
    InstallAllTypes();
    FillStore();
  } catch (...) {
    std::filesystem::remove_all(root_);
    throw;
  }
}

Host::~Host() {
  std::error_code ignored;
  std::filesystem::remove_all(root_, ignored);
}

// What the management daemon is told of: one of the types.
void Host::WriteAllowlist() const {
  const std::filesystem::path path = root_ + HostPaths::kNotifyAllowlist;
  std::filesystem::create_directories(path.parent_path());
  std::ofstream(path) << "[\"tarn.bench." << kWritten << "\"]";
}

void Host::InstallAllTypes() const {
  const std::filesystem::path directory = std::filesystem::path(root_) / "types";
  std::filesystem::create_directory(directory);
  std::size_t written = 0;
  const auto write = [&](const std::string& key, TypeKind kind, Effect effect = Effect::AT_ONCE) {
    std::ofstream(directory / (key + ".json")) << TypeFile(key, kind, effect);
    ++written;
  };
  for (const char* key : {kPlain, kWritten}) {
    write(key, TypeKind::USER);
  }
  write(kLayered, TypeKind::MIXED);
  write(kRewritten, TypeKind::INSTANCES);
  write(KeyOfInstances(kMany), TypeKind::INSTANCES);
  write(KeyOfWrittenInstances(kMany), TypeKind::INSTANCES);
  write(kBesideLarge, TypeKind::INSTANCES);
  write(kWithoutLarge, TypeKind::INSTANCES);
  write(kStaged, TypeKind::USER, Effect::AT_BOOT);
  write(kStagedInstances, TypeKind::INSTANCES, Effect::AT_BOOT);
  for (const char* key : {kLarge, kMegabyte}) {
    std::ofstream(directory / (std::string(key) + ".json")) << LargeTypeFile(key);
    ++written;
  }
  for (const std::size_t count : kInstanceCounts) {
    write(KeyOfInstances(count), TypeKind::INSTANCES);
    write(KeyOfWrittenInstances(count), TypeKind::INSTANCES);
  }
  while (written < kTypes) {
    write("other-" + std::to_string(written), TypeKind::USER);
  }
  for (const TarnConfigStore::TypeReport& report :
       TarnConfigStore::InstallTypes({directory.string()}, {})) {
    if (report.outcome != TarnConfigStore::TypeOutcome::INSTALLED) {
      throw std::runtime_error("not installed: " + report.path +
                               (report.errors.empty() ? "" : ": " + report.errors[0].error));
    }
  }
}

void Host::FillStore() const {
  FloorStore store(root_);
  // All of it in memory, or each transaction would write the same pages again and again.
  store.Run("PRAGMA cache_size=-65536");
  store.Run("BEGIN IMMEDIATE");
  store.Fill(IdOf(kPlain), Row(1));
  store.Fill(IdOf(kWritten), Row(1));
  store.Fill(IdOf(kLayered), DividedObject(1));
  RowValues megabyte;
  megabyte.user = MegabyteText(1);
  store.Fill(IdOf(kMegabyte), megabyte);
  for (const std::size_t count : kInstanceCounts) {
    FillInstances(store, KeyOfInstances(count), count);
    FillInstances(store, KeyOfWrittenInstances(count), count);
  }
  FillInstances(store, kRewritten, kRewrittenCount);
  FillInstances(store, KeyOfInstances(kMany), kMany);
  FillInstances(store, kWithoutLarge, kNeighbours);
  FillInstances(store, kBesideLarge, kNeighbours);
  // In the middle of the others.
  store.Fill(IdOf(kBesideLarge, InstanceId(kNeighbours / 2) + "-large"), LargeRow());
  store.Run("COMMIT");
  RewriteInstances(store, kRewritten, kRewrittenCount);
  store.Run("PRAGMA wal_checkpoint(TRUNCATE)");
}

}  // namespace Benchmarks
