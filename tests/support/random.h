// Random tests that can be repeated.
#pragma once

#include <cstdlib>
#include <iostream>
#include <random>

namespace TestSupport {

/// Random numbers from a seed that is printed, or given by TARN_TEST_SEED.
class Random {
 public:
  Random() {
    const char* asked = std::getenv("TARN_TEST_SEED");
    seed_ = asked == nullptr ? std::random_device()() : std::strtoul(asked, nullptr, 10);
    random_.seed(seed_);
    std::cout << "seed " << seed_ << " (TARN_TEST_SEED repeats it)" << std::endl;
  }
  explicit Random(unsigned long seed) : seed_(seed), random_(seed) {}
  unsigned long Seed() const { return seed_; }
  unsigned long Below(unsigned long limit) { return random_() % limit; }
  bool OneIn(unsigned long count) { return Below(count) == 0; }

 private:
  unsigned long seed_;
  std::mt19937_64 random_;
};

}  // namespace TestSupport
