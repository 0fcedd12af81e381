#include "kernel_option_verbs.h"

#include "tarnconfigstore/kernel_options.h"

#include "object_output.h"
#include "store_access.h"
#include "write_object.h"

namespace tarnctl {
namespace {

TarnConfigStore::ConfigStoreObjectId KernelOptions() {
  return {"options", "tkernel", TarnConfigStore::kDefaultComponent};
}

}  // namespace

void GetKernelOptions(const std::string& member, const Output& output) {
  const MemberPath path = ParseMemberIfGiven(member);
  const auto options = TarnConfigStore::GetKernelOptions(KernelOptions());
  if (!options) {
    RaiseNotStored(KernelOptions());
  }
  PrintObject(*options, path, output);
}

void SetKernelOptions(const std::vector<std::string>& data) {
  WriteObject(KernelOptions(), data,
              [](auto&, const auto& given) { TarnConfigStore::SetKernelOptions(given); });
}

}  // namespace tarnctl
