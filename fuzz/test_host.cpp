#include "test_host.h"

#include "tarnconfigstore/type_administration.h"

#include "support/test_types.h"

#include <cstddef>
#include <numeric>
#include <stdexcept>

namespace Fuzz {

using TarnConfigStore::ConfigStoreObjectId;

TestHost& TestHost::Get() {
  static TestHost host;
  return host;
}

TestHost::TestHost() {
  using namespace TestSupport;
  for (const char* const type : {kPlainType, kSwitchType, kManyWaysType}) {
    InstallType(host_, type);
  }
  InstallType(host_, Staged(kPlainType, "plain"));
  InstallType(host_, Staged(kSwitchType, "switch"));
  for (const auto& report : TarnConfigStore::InstallTypes({TARN_SAMPLE_TYPES}, {})) {
    if (!report.errors.empty()) {
      throw std::runtime_error("a sample type is not valid: " + report.path);
    }
  }
  for (const auto& type : TarnConfigStore::ListTypes()) {
    types_.emplace_back(type.key, type.group, type.component, type.hasInstances ? "s" : "");
  }
}

void TestHost::Clear() {
  store_.Run(
      "BEGIN; DELETE FROM Config; DELETE FROM DesiredUserConfig; DELETE FROM KeyValue; COMMIT");
}

const ConfigStoreObjectId& TestHost::Type(std::string_view key) const {
  for (const ConfigStoreObjectId& type : types_) {
    if (type.key == key) {
      return type;
    }
  }
  return types_[std::accumulate(
                    key.begin(), key.end(), std::size_t{0},
                    [](std::size_t sum, char c) { return sum + static_cast<unsigned char>(c); }) %
                types_.size()];
}

}  // namespace Fuzz
