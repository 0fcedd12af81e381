// What lives on where memory runs out: objects that are changed.
#include "tarnconfigstore/config_store_object.h"

#include "faults/injected.h"
#include "support/child_process.h"
#include "support/test_types.h"

#include <gtest/gtest.h>

#include <functional>
#include <new>

namespace Faults {
namespace {

using TarnConfigStore::ConfigStoreObject;

// Answers how often the change failed before it came to its end.
int FailEachAllocation(ConfigStoreObject& object, const std::function<void()>& change) {
  const std::string before = object.GetData();
  for (int failures = 0;; ++failures) {
    Arm(Kind::ALLOCATION, static_cast<unsigned>(failures) + 1, false);
    try {
      change();
      Disarm();
      return failures;
    } catch (const std::bad_alloc&) {
      Disarm();
    }
    EXPECT_EQ(object.GetData(), before) << "after failure " << failures;
  }
}

void ChangeAnObject() {
  const TestSupport::TemporaryHost host;
  TestSupport::InstallType(host, TestSupport::kPlainType);
  // As many as an object has room for at first, and more.
  constexpr int kMembers = 60;
  const auto object = std::make_shared<ConfigStoreObject>(
      TarnConfigStore::ConfigStoreObjectId("plain", "test", "tarn"));
  const std::string text(600, 'x');  // more than the memory that is at hand
  int failures = 0;
  for (int i = 0; i < kMembers; ++i) {
    const std::string name = "member" + std::to_string(i);
    failures += FailEachAllocation(*object, [&] { object->SetValue(name.c_str(), text); });
  }
  failures += FailEachAllocation(*object, [&] { object->SetData(R"({"list":[]})"); });
  for (int i = 0; i < kMembers; ++i) {
    failures += FailEachAllocation(*object, [&] { object->AppendValue("list", text); });
  }
  EXPECT_GT(failures, kMembers);
  std::vector<std::string> list;
  object->GetValue("list", &list);
  EXPECT_EQ(list, std::vector<std::string>(kMembers, text));
}

// In children: the sweeps of this program begin with processes that have done nothing yet.
int InPeace(void (*test)()) {
  return TestSupport::InChild([test] {
    test();
    return testing::Test::HasFailure() ? 1 : 0;
  });
}

TEST(WithoutMemory, ObjectsAreAsTheyWereAndCanBeChanged) {
  EXPECT_EQ(InPeace(ChangeAnObject), 0);
}

}  // namespace
}  // namespace Faults
