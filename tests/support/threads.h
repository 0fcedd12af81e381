// Several threads that do the same.
#pragma once

#include <functional>
#include <thread>
#include <vector>

namespace TestSupport {

/// Runs a function in threads, each with its number, and waits for all of them.
inline void InThreads(int count, const std::function<void(int thread)>& function) {
  std::vector<std::thread> threads;
  for (int thread = 0; thread < count; ++thread) {
    threads.emplace_back(function, thread);
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
}

}  // namespace TestSupport
