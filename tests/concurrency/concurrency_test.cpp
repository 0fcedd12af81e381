// What threads that share a store, or any other value, may rely on, and the children of their process: a
// child has none of its parent's other threads, but a copy of everything that they held when it was forked.
#include "tarnconfigstore/compare_and_set.h"
#include "tarnconfigstore/host.h"
#include "tarnconfigstore/typed.h"

#include "platform/json_validator.h"
#include "platform/made_once.h"
#include "platform/store_error.h"

#include "json/type_schema_view.h"
#include "json_schema/registration.h"
#include "support/child_process.h"
#include "support/sanitized.h"
#include "support/store_fixture.h"
#include "support/threads.h"

#include <atomic>
#include <pthread.h>
#include <stdexcept>
#include <thread>

namespace {

using namespace TestSupport;
using TarnConfigStore::ConfigStore;
using TarnConfigStore::EXTERNAL;

// A process that waits for nobody ends by a signal after these.
constexpr unsigned kChildSeconds = 10;
constexpr unsigned kTestSeconds = 280;

using Forking = StoreFixture;

TEST_F(Forking, NoChildWaitsForWhatAThreadOfItsParentHeld) {
  if (!kAllocatorForks) {
    GTEST_SKIP();
  }
  constexpr int kChildren = 10'000;
  enum Outcome { READ, REFUSED, WRONG, OUTCOMES };
  alarm(kTestSeconds);
  Set(plain_, R"({"name":"read by everybody"})");
  DBStore::testing::SetHook([](auto, auto) { return 0; });
  const auto readOne = [this] {
    return ConfigStore::GetStore("")->Get(plain_)->GetData() == R"({"name":"read by everybody"})" &&
           TarnConfigStore::GetHostRoot() == host_.Root();
  };
  int outcomes[OUTCOMES] = {};
  CSLogger::SetSink([](int, const char*) { TarnConfigStore::GetHostRoot(); });
  std::atomic<bool> stop{false};
  std::thread busy([&] {
    while (!stop) {
      EXPECT_TRUE(readOne());
    }
  });
  for (int i = 0; i < kChildren && outcomes[WRONG] == 0; ++i) {
    const int outcome = InChild([&readOne] {
      alarm(kChildSeconds);
      TarnConfigStore::GetHostRoot();
      try {
        return readOne() ? READ : WRONG;
      } catch (const TarnConfigStore::ConfigStoreException&) {
        // Forked while the other thread was in the database: nothing can be read, but it is said.
        const DBStore::LastError& error = DBStore::GetLastError();
        return error.message.find("forked in the middle") != std::string::npos ? REFUSED : WRONG;
      }
    });
    EXPECT_LT(outcome, WRONG) << "child " << i << " (1014 is one that waited for ever)";
    ++outcomes[std::min<int>(outcome, WRONG)];
  }
  stop = true;
  busy.join();
  DBStore::testing::SetHook({});
  alarm(0);
  std::printf("%d children read, %d were refused\n", outcomes[READ], outcomes[REFUSED]);
  EXPECT_GT(outcomes[READ], 0);
}

// The schema takes so long to be compiled that children are forked meanwhile.
TEST(ForkingValidator, ChildValidatesWithASchemaThatAnotherThreadCompiles) {
  if (!kAllocatorForks) {
    GTEST_SKIP();
  }
  constexpr int kProperties = 5'000;
  std::string text = R"({"properties":{)";
  for (int i = 0; i < kProperties; ++i) {
    text += "\"p" + std::to_string(i) + R"(":{"pattern":"^[a-z]+(-[0-9]{1,3})*$"},)";
  }
  Json::Document schema;
  schema.Parse((text + R"("last":{"type":"integer"}}})").c_str());
  const Json::TypeSchemaView view(schema);
  const JsonValidator::Registration registration(view);
  const auto validates = [&schema] {
    Json::Document value;
    value.Parse(R"({"last":"text"})");
    Json::Document findings;
    JsonValidator::Validate(schema, value, findings, {JsonValidator::RULE_JSON_SCHEMA}, "");
    return findings.Size() == 1;
  };
  std::atomic<bool> compiled{false};
  std::thread compiler([&] {
    EXPECT_TRUE(validates());
    compiled = true;
  });
  std::vector<std::unique_ptr<ChildProcess>> children;
  do {
    children.push_back(std::make_unique<ChildProcess>([&validates] {
      alarm(kChildSeconds);
      return validates() ? 0 : 1;
    }));
    usleep(1000);
  } while (!compiled);
  compiler.join();
  for (const auto& child : children) {
    EXPECT_EQ(child->Wait(), 0);
  }
}

using SharedStore = StoreFixture;

// One operation's begin and commit, and another's rollback, meet on one connection.
TEST_F(SharedStore, WhatIsAcknowledgedIsThere) {
  constexpr int kThreads = 4;
  constexpr int kWrites = 600;
  InThreads(kThreads, [&](int thread) {
    for (int i = 1; i <= kWrites; ++i) {
      const auto object =
          thread > 0 ? SwitchObject("s" + std::to_string(thread), R"("mtu":)" + std::to_string(i))
                     : Object(plain_, R"({"port":1})");  // and no name
      const std::string raised = Raised([&] {
        thread > 0 && i % 2 == 0 ? store_->Set(object, EXTERNAL) : store_->Update(object, EXTERNAL);
      });
      EXPECT_EQ(raised.substr(0, 7), thread > 0 ? "nothing" : "VE 1090");
    }
  });
  EXPECT_EQ(
      database_.Lines("SELECT Identifier, UserValue ->> 'mtu', Revision FROM Config ORDER BY 1"),
      "s1 600 600\ns2 600 600\ns3 600 600");
}

// Neighbours share memory; who drops which of them, and in what order, is their callers' business.
TEST_F(SharedStore, InstancesAreChangedAndDroppedByAnybody) {
  constexpr std::size_t kThreads = 4;
  Objects written;
  for (int i = 0; i < 200; ++i) {
    written.push_back(SwitchObject("s" + std::to_string(i), R"("mtu":)" + std::to_string(i)));
  }
  store_->SetInstances(written, EXTERNAL);
  Objects read = store_->GetInstances(Filter({"switch", "test", "tarn"}));
  ASSERT_EQ(read.size(), written.size());
  InThreads(kThreads, [&](int thread) {
    for (std::size_t i = static_cast<std::size_t>(thread); i < read.size(); i += kThreads) {
      int mtu = 0;
      read[i]->GetValue("mtu", &mtu);
      read[i]->SetValue("name", std::string(1000, 'x'));
      EXPECT_EQ("s" + std::to_string(mtu), read[i]->GetConfigStoreObjectId().instanceId);
      read[i].reset();
    }
  });
}

#ifndef __SANITIZE_THREAD__  // which knows nothing of threads that are cancelled
TEST_F(SharedStore, AThreadThatIsCancelledLeavesItInOrder) {
  for (int i = 0; i < 40; ++i) {
    std::thread writer([this] {
      for (;;) {
        store_->Update(SwitchObject("s1", R"("mtu":1)"), EXTERNAL);
        store_->Get(switch_);
        pthread_testcancel();  // the library may have no such point
      }
    });
    usleep(static_cast<useconds_t>(100 * i));
    pthread_cancel(writer.native_handle());
    writer.join();
  }
  const std::int32_t revision = store_->GetRevision(switch_);
  store_->Update(SwitchObject("s1", R"("mtu":2)"), EXTERNAL);
  EXPECT_EQ(store_->GetRevision(switch_), revision + 1);
  EXPECT_EQ(store_->CancelTransaction(), 21) << "nothing was left open";
}
#endif

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

using Sharing = StoreFixture;

TEST_F(Sharing, LosesNothingWhereProcessesWriteWhatTheyWorkedOutFromARead) {
  constexpr int kProcesses = 4;
  constexpr int kRounds = 25;
  Set(switch_, R"({"name":"s1","mtu":1500})");
  store_.reset();
  std::vector<std::unique_ptr<ChildProcess>> writers;
  for (int i = 0; i < kProcesses; ++i) {
    writers.push_back(std::make_unique<ChildProcess>([this] {
      const auto store = ConfigStore::GetStore("");
      for (int written = 0; written < kRounds;) {
        const TarnConfigStore::ObjectForChange read = GetForChange(*store, switch_);
        read.object->Set("mtu", *read.object->Get<int>("mtu") + 1);
        const auto changed = WriteIfUnchanged(*store, {read.state},
                                              [&] { store->SetUserData(read.object, EXTERNAL); });
        written += changed.empty() ? 1 : 0;
      }
      return 0;
    }));
  }
  for (const auto& writer : writers) {
    EXPECT_EQ(writer->Wait(), 0);
  }
  EXPECT_EQ(ConfigStore::GetStore("")->Get(switch_)->Get<int>("mtu"), 1500 + kProcesses * kRounds);
}

}  // namespace
