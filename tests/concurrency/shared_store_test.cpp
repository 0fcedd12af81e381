// What threads that share a store may rely on.
#include "support/store_fixture.h"
#include "support/threads.h"

#include <pthread.h>
#include <thread>

namespace {

using namespace TestSupport;
using TarnConfigStore::EXTERNAL;

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
  EXPECT_EQ(database_.Lines("SELECT Identifier, UserValue ->> 'mtu', Revision FROM Config"),
            "s1 600 600\ns2 600 600\ns3 600 600");
}

#ifndef __SANITIZE_THREAD__  // which knows nothing of threads that are cancelled
TEST_F(SharedStore, AThreadThatIsCancelledLeavesItInOrder) {
  for (int i = 0; i < 40; ++i) {
    std::thread writer([this] {
      for (;;) {
        store_->Update(SwitchObject("s1", R"("mtu":1)"), EXTERNAL);
        store_->Get(switch_);
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

}  // namespace
