#include "faults/sweep.h"

#include "platform/db_testing.h"
#include "platform/host_paths.h"
#include "platform/host_setup.h"

#include "faults/faulty_host.h"
#include "support/child_process.h"
#include "support/sanitized.h"
#include "support/shared_memory.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <optional>
#include <stdexcept>

#ifdef __SANITIZE_ADDRESS__
extern "C" int __lsan_do_recoverable_leak_check();
#endif

namespace Faults {
namespace {

// What a child leaves to its parent, however it ends.
struct Shared {
  unsigned point = 1;
  bool struck = true;
  unsigned points = 0;
  unsigned before = 0;
  unsigned after = 0;
  std::size_t length = 0;
  char problems[std::size_t{1} << 16] = {};

  void Add(const std::string& problem) {
    const std::size_t size = std::min(problem.size(), sizeof problems - 1 - length);
    std::memcpy(problems + length, problem.data(), size);
    length += size;
  }
};

using SharedTally = TestSupport::SharedMemory<Shared>;

struct Ending {
  std::string told;
  std::string raised;  // nothing: it returned
};

Ending Do(const Operation& operation, Caller& caller) {
  try {
    return {operation.run(caller), ""};
  } catch (const std::exception& /*any that callers may expect*/) {
    return {{}, "raised"};  // faults are still armed: nothing here may ask for memory
  }
}

// The point itself: whatever fails, fails in here.
Ending DoWithFault(const Operation& operation, Caller& caller, const Sort& sort, bool stays,
                   unsigned point, bool& struck) {
  if (sort.kind == Kind::DATABASE) {
    using Asked = DBStore::testing::Operation;
    DBStore::testing::SetHook([](Asked asked, std::string_view /*detail*/) {
      // Refusing to cancel is for platforms that cannot.
      return asked != Asked::CANCEL && Strikes(Kind::DATABASE) ? 1 : 0;
    });
  }
  Arm(sort.kind, point, stays);
  Ending ending = Do(operation, caller);
  struck = Disarm();
  if (sort.kind == Kind::DATABASE) {
    DBStore::testing::SetHook({});
  }
  return ending;
}

class Trial {
 public:
  Trial(const std::string& root, const Examiner& host, const Operation& operation)
      : root_(root), host_(host), operation_(operation) {
    HostPaths::SetRoot(root);
  }

  /// One point: answers what is wrong, or nothing.
  std::string Try(Caller& caller, const Sort& sort, bool stays, unsigned point, Shared& shared,
                  const Reference& reference, bool asksOthers) {
    const Ending ending = DoWithFault(operation_, caller, sort, stays, point, shared.struck);
    HostPathsBack();
    if (!shared.struck) {
      host_.Restore();
      return {};
    }
    std::string problem;
    const unsigned now = host_.Look();
    const std::string told = Settled(ending.told);
    const bool isBefore = now == reference.before;
    const bool isAfter = now == reference.after;
    ++shared.points;
    ++(ending.raised.empty() ? shared.after : isAfter && !isBefore ? shared.after : shared.before);
    const bool isBetween = !isBefore && !isAfter;
    if (isAfter || (isBetween && !operation_.completesLater)) {
      host_.Restore();
    }
    const auto wrong = [&](const std::string& what) { problem += what + "; "; };
    if (ending.raised.empty()) {
      if (told != reference.told) {
        wrong("it returned \"" + told + "\" instead of \"" + reference.told + "\"");
      }
      if (!isAfter) {
        wrong("it returned without having done it");
      }
    } else if (isBetween && !operation_.completesLater) {
      wrong("it raised, and the host is neither as before nor as after:" +
            host_.Differences(reference.before, now));
    }
    if (const std::string locked = host_.Locked(); !locked.empty()) {
      wrong(locked);
    }
    // First the others, whom what was left behind would keep out.
    if (asksOthers && !isBetween) {
      Caller other;
      Again(other, reference, false, "another handle", wrong);
    }
    Again(caller, reference, isBetween, "the same handle", wrong);
    return problem;
  }

  /// What it does where nothing fails, from the state that was saved and back there.
  void Learn(Reference& reference) {
    host_.Restore();
    reference.before = host_.Look();
    Caller caller;
    const Ending ending = Tried(caller);
    reference.Tell(ending.told);
    reference.after = host_.Look();
    if (!ending.raised.empty()) {
      throw std::runtime_error(std::string(operation_.name) + " fails by itself: " + ending.raised);
    }
    host_.Restore();
  }

  /// From where it calls what.
  void Learn(Places& places, Caller& caller) {
    places.Learn([&] { operation_.run(caller); });
    HostPathsBack();
    host_.Restore();
  }

 private:
  Ending Tried(Caller& caller) {
    try {
      const std::string told = Settled(operation_.run(caller));
      HostPathsBack();
      return {told, ""};
    } catch (const std::exception& failure) {
      HostPathsBack();
      return {{}, failure.what()};
    }
  }
  void HostPathsBack() {
    if (operation_.leaves) {
      HostPaths::SetRoot(root_);
    }
  }

  template <class Wrong>
  void Again(Caller& caller, const Reference& reference, bool completes, const char* whose,
             const Wrong& wrong) {
    const Ending again = Tried(caller);
    if (!again.raised.empty()) {
      wrong(std::string("the same call by ") + whose + " raises " + again.raised);
    } else if ((!completes && again.told != reference.told) || host_.Look() != reference.after) {
      wrong(std::string("the same call by ") + whose + " ends otherwise: " + again.told);
    }
    if (reference.after != reference.before || !again.raised.empty()) {
      host_.Restore();
    }
  }

  std::string root_;
  const Examiner& host_;
  const Operation& operation_;
};

int LeakedMemory() {
#ifdef __SANITIZE_ADDRESS__
  return __lsan_do_recoverable_leak_check();
#else
  return 0;
#endif
}

constexpr unsigned kClosely = 60;

std::string Words(const char* operation, const Sort& sort, bool stays, Start start, unsigned point,
                  const std::string& problem) {
  return std::string(operation) + ", " + sort.name + " " + std::to_string(point) +
         (stays ? " and on, " : ", ") + (start == Start::WARM ? "warm: " : "fresh: ") + problem +
         "\n";
}

}  // namespace

void Reference::Tell(const std::string& text) {
  if (text.size() >= sizeof told) {
    throw std::runtime_error("an operation tells more than there is room for");
  }
  std::memcpy(told, text.c_str(), text.size() + 1);
}

Sweep::Sweep(Extent extent) : extent_(extent) {
  std::string name = (std::filesystem::temp_directory_path() / "tarn-faults-XXXXXX").string();
  if (mkdtemp(name.data()) == nullptr) {
    failure_ = "cannot make a directory " + name;
    return;
  }
  root_ = name;
  const int status = TestSupport::InChild([this] {
    HostPaths::SetRoot(root_);
    const HostSetup::Result made = HostSetup::Initialize();
    if (!made.ok) {
      throw std::runtime_error(made.failure);
    }
    PrepareHost(root_);
    return 0;
  });
  if (status != 0) {
    failure_ = "the host of the sweep cannot be made";
    return;
  }
  TestSupport::InChild([this] {
    FaultyHost::Save(root_);
    return 0;
  });
  examiner_.emplace(root_);
}

Sweep::~Sweep() {
  examiner_.reset();
  const std::filesystem::path root(root_);
  for (const auto& entry : std::filesystem::directory_iterator(root.parent_path())) {
    if (entry.path().string().starts_with(root_)) {
      std::filesystem::remove_all(entry.path());
    }
  }
}

SharedReference Sweep::Learn(const Operation& operation) const {
  auto learned = std::make_unique<TestSupport::SharedMemory<Reference>>();
  Reference& reference = **learned;
  const auto inChild = [&](const std::function<void(Trial&, Caller&)>& learn) {
    return TestSupport::InChild([&] {
             Trial trial(root_, *examiner_, operation);
             Caller caller;
             learn(trial, caller);
             return 0;
           }) == 0;
  };
  bool isLearned = inChild([&](Trial& trial, Caller&) { trial.Learn(reference); });
  if (extent_ == Extent::PLACES) {
    isLearned = isLearned && inChild([&](Trial& trial, Caller& caller) {
                  operation.run(caller);
                  examiner_->Restore();
                  trial.Learn(reference.warm, caller);
                });
    examiner_->Leave();
    isLearned = isLearned && inChild([&](Trial& trial, Caller& caller) {
                  trial.Learn(reference.fresh, caller);
                });
  }
  return isLearned ? std::move(learned) : nullptr;
}

// A quick sweep leaves out what hardly tells more than what it has: processes of one point each for
// what is the same in those of many, and all that fails on where one failure was survived; of files,
// what a sanitizer would see is seen where memory runs out.
bool Sweep::Leaves(const Sort& sort, bool stays, Start start) const {
  const bool isOfFiles = sort.kind != Kind::ALLOCATION && sort.kind != Kind::DATABASE;
  return extent_ == Extent::QUICK &&
         ((TestSupport::kSanitized && isOfFiles) ||
          (start == Start::FRESH && (sort.kind != Kind::ALLOCATION || stays)) ||
          (stays && sort.kind != Kind::ALLOCATION && sort.kind != Kind::IO_ERROR));
}

std::vector<bool> Sweep::Alike(const Reference& reference, const Sort& sort, bool stays,
                               Start start) {
  if (extent_ != Extent::PLACES || sort.kind == Kind::DATABASE) {
    return {};
  }
  std::set<std::uint64_t> own;
  const bool isFresh = start == Start::FRESH;
  std::set<std::uint64_t>& known = isFresh ? fresh_[{sort.kind, stays}] : own;
  const Places& places = isFresh ? reference.fresh : reference.warm;
  std::vector<bool> alike(places.Count(sort.kind) + 1);
  for (unsigned point = 1; point < alike.size(); ++point) {
    const bool isNew = known.insert(places.Of(sort.kind, point)).second;
    alike[point] = !isNew && (isFresh || point > kClosely);
  }
  return alike;
}

unsigned Sweep::Next(unsigned point, bool often, const std::vector<bool>& alike) const {
  if (extent_ == Extent::BOUNDED) {
    return point + (point < kClosely ? 1 : 3);
  }
  if (extent_ != Extent::QUICK) {
    do {
      ++point;
    } while (point < alike.size() && alike[point]);
    return point;
  }
  const unsigned closely = !often ? 2 : TestSupport::kSanitized ? 6 : 12;
  const unsigned part = !often ? 1 : TestSupport::kSanitized ? 3 : 5;
  return point + (point < closely ? 1 : std::max(1U, point / part));
}

Tally Sweep::Run(const Operation& operation, const Reference& reference, const Sort& sort,
                 bool stays, Start start) {
  Tally tally;
  if (Leaves(sort, stays, start)) {
    return tally;
  }
  const SharedTally shared;
  const std::vector<bool> alike = Alike(reference, sort, stays, start);
  shared->point = Next(0, false, alike);
  // A child does as many points as it can: in a fresh process one, else until the end, unless it dies
  // of one.
  constexpr int kMostDeaths = 5;
  constexpr unsigned kOthersAsk = 4;
  for (int deaths = 0; shared->struck && deaths < kMostDeaths;) {
    if (start == Start::FRESH) {
      examiner_->Leave();
    }
    const int status = TestSupport::InChild([&] {
      Trial trial(root_, *examiner_, operation);
      Caller caller;
      if (start == Start::WARM) {
        operation.run(caller);
        examiner_->Restore();
      }
      for (;;) {
        const std::string problem =
            trial.Try(caller, sort, stays, shared->point, *shared, reference,
                      extent_ > Extent::PLACES || shared->point % kOthersAsk == 0);
        if (!problem.empty()) {
          shared->Add(Words(operation.name, sort, stays, start, shared->point, problem));
        }
        shared->point = Next(shared->point, start == Start::WARM && !stays, alike);
        if (start == Start::FRESH || !shared->struck) {
          return LeakedMemory();
        }
      }
    });
    if (status != 0) {
      ++deaths;
      shared->Add(Words(operation.name, sort, stays, start, shared->point,
                        "the process ended with " + std::to_string(status)));
      shared->point = Next(shared->point, start == Start::WARM && !stays, alike);
      shared->struck = true;
      examiner_->Restore();
    }
  }
  tally.points = shared->points;
  tally.before = shared->before;
  tally.after = shared->after;
  tally.problems.assign(shared->problems, shared->length);
  return tally;
}

}  // namespace Faults
