// What threads of a process have in common.
#include "platform/made_once.h"
#include "platform/schema_store.h"

#include "support/test_types.h"
#include "support/threads.h"

#include <gtest/gtest.h>

#include <atomic>
#include <stdexcept>

namespace {

using TestSupport::InThreads;

TEST(MadeOnce, ThreadsThatMakeAValueAtOnceGetTheSameOneAndTheOthersAreFreed) {
  static std::atomic<int> alive{0};
  struct Value {
    Value() { ++alive; }
    ~Value() { --alive; }
    Value(const Value&) = delete;
    Value& operator=(const Value&) = delete;
  };
  static constinit MadeOnce<const Value> value;
  EXPECT_THROW(value.Get([]() -> Value { throw std::runtime_error("not yet"); }),
               std::runtime_error);
  EXPECT_EQ(value.Find(), nullptr);
  std::atomic<int> ready{0};
  const Value* seen[4] = {};
  InThreads(4, [&](int thread) {
    ++ready;
    while (ready < 4) {
    }
    seen[thread] = &value.Get();
  });
  EXPECT_EQ(alive, 1);
  for (const Value* one : seen) {
    EXPECT_EQ(one, value.Find());
  }
}

TEST(TypeCache, AnswersThreadsThatAskForSeveralTypesAndSeesNoLaterChange) {
  const TestSupport::TemporaryHost host;
  TestSupport::InstallType(host, TestSupport::kPlainType);
  TestSupport::InstallType(host, TestSupport::kSwitchType);
  const auto cache = TarnSchemaStore::SchemaStore::GetCache();
  std::atomic<int> wrong{0};
  const auto ask = [&](const std::string& key, const char* version) {
    const auto type = cache->GetSchemaObject("tarn", "test", key);
    wrong += type && type->GetKey() == key && type->GetVersion() == version ? 0 : 1;
    wrong += cache->GetSchemaObject("tarn", "other", key) ? 1 : 0;
  };
  InThreads(4, [&](int thread) {
    for (int i = 0; i < 2000; ++i) {
      (i + thread) % 3 == 0 ? ask("plain", "1.0") : ask("switch", "2.1");
    }
  });
  std::string newer = TestSupport::kPlainType;
  newer.replace(newer.find("1.0"), 3, "1.1");
  TestSupport::InstallType(host, newer);
  ask("plain", "1.0");
  EXPECT_EQ(wrong, 0);
  EXPECT_EQ(TarnSchemaStore::SchemaStore::GetCache()
                ->GetSchemaObject("tarn", "test", "plain")
                ->GetVersion(),
            "1.1");
}

}  // namespace
