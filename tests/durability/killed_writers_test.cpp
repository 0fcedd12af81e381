// Processes that are killed while they write leave what they were told is done, and nothing by half.
#include "support/child_process.h"
#include "support/store_fixture.h"

#include <array>
#include <chrono>
#include <csignal>
#include <random>
#include <thread>

namespace TarnConfigStore {
namespace {

class KilledWriters : public TestSupport::StoreFixture {
 protected:
  static constexpr std::size_t kWriters = 3;
  static constexpr std::array<const char*, 4> kInstances = {"p", "q", "r", "s"};

  static std::string Own(std::size_t writer, const char* instance) {
    return std::to_string(writer) + instance;
  }

  // Gives each of its objects the next number, all in one transaction, and tells the number.
  static int WriteForever(std::size_t writer, int first, int told) {
    auto store = ConfigStore::GetStore("");
    for (int number = first;; ++number) {
      ConfigStoreTransaction transaction(store);
      for (const char* instance : kInstances) {
        const std::string name = Own(writer, instance);
        store->Set(SwitchObject(name, "\"mtu\":" + std::to_string(number)), EXTERNAL);
      }
      transaction.Commit();
      if (write(told, &number, sizeof(number)) != sizeof(number)) {
        return 1;
      }
    }
  }
};

TEST_F(KilledWriters, LoseNothingThatTheyWereToldIsDone) {
  constexpr int kRounds = 12;
  const unsigned seed = std::random_device()();
  std::mt19937 random(seed);
  std::array<int, kWriters> confirmed = {};
  for (int round = 0; round < kRounds; ++round) {
    std::array<std::array<int, 2>, kWriters> pipes;
    std::vector<std::unique_ptr<TestSupport::ChildProcess>> writers;
    for (std::size_t i = 0; i < kWriters; ++i) {
      ASSERT_EQ(pipe(pipes[i].data()), 0);
      writers.push_back(std::make_unique<TestSupport::ChildProcess>(
          [&, i] { return WriteForever(i, confirmed[i] + 1, pipes[i][1]); }));
      close(pipes[i][1]);
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(30 + random() % 60));
    for (std::size_t i = 0; i < kWriters; ++i) {
      kill(writers[i]->Id(), SIGKILL);
      ASSERT_EQ(writers[i]->Wait(), 1000 + SIGKILL) << "seed " << seed;
      for (int number = 0; read(pipes[i][0], &number, sizeof(number)) == sizeof(number);) {
        confirmed[i] = number;
      }
      close(pipes[i][0]);
    }
    ASSERT_EQ(database_.Lines("PRAGMA integrity_check"), "ok");
    for (std::size_t i = 0; i < kWriters; ++i) {
      const std::string numbers = database_.Lines(
          "SELECT group_concat(DISTINCT UserValue ->> 'mtu') || ' ' || count(*) FROM Config WHERE "
          "Identifier LIKE '" +
          std::to_string(i) + "_'");
      const auto all = [&](int number) { return std::to_string(number) + " 4"; };
      // It may have been killed between its commit and telling of it.
      EXPECT_TRUE(confirmed[i] == 0 || numbers == all(confirmed[i]) ||
                  numbers == all(confirmed[i] + 1))
          << "seed " << seed << ", round " << round << ": " << numbers << " where " << confirmed[i]
          << " was confirmed";
      if (numbers == all(confirmed[i] + 1)) {
        ++confirmed[i];
      }
    }
    // Whoever comes next is not held up.
    store_->Set(SwitchObject("next", "\"mtu\":" + std::to_string(round)), EXTERNAL);
  }
  for (const int number : confirmed) {
    EXPECT_GT(number, kRounds) << "seed " << seed;
  }
}

}  // namespace
}  // namespace TarnConfigStore
