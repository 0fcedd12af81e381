#include "faults/sweep.h"

#include "platform/db_testing.h"
#include "platform/host_paths.h"
#include "platform/host_setup.h"

#include "faults/faulty_host.h"
#include "support/child_process.h"
#include "support/sanitized.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <sys/mman.h>
#include <tuple>

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
  std::array<char[std::size_t{1} << 16], 3> reference = {};

  void Keep(const Reference& learned) {
    std::size_t i = 0;
    for (const std::string* text : {&learned.before, &learned.told, &learned.after}) {
      if (text->size() >= sizeof reference[0]) {
        throw std::runtime_error("an operation tells more than there is room for");
      }
      std::memcpy(reference[i++], text->c_str(), text->size() + 1);
    }
  }
  Reference Kept() const { return {reference[0], reference[1], reference[2]}; }

  void Add(const std::string& problem) {
    const std::size_t size = std::min(problem.size(), sizeof problems - 1 - length);
    std::memcpy(problems + length, problem.data(), size);
    length += size;
  }
};

class SharedTally {
 public:
  SharedTally()
      : memory_(mmap(nullptr, sizeof(Shared), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS,
                     -1, 0)) {
    if (memory_ == MAP_FAILED) {
      throw std::runtime_error("no memory for the children's results");
    }
    new (memory_) Shared();
  }
  ~SharedTally() { munmap(memory_, sizeof(Shared)); }
  SharedTally(const SharedTally&) = delete;
  SharedTally& operator=(const SharedTally&) = delete;
  Shared* operator->() const { return static_cast<Shared*>(memory_); }

 private:
  void* memory_;
};

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

// The lines that one text has and the other has not.
std::string Differences(const std::string& before, const std::string& now) {
  std::string text;
  for (const auto& [sign, all, others] :
       {std::tuple("\n- ", &before, &now), {"\n+ ", &now, &before}}) {
    std::istringstream lines(*all);
    for (std::string line; std::getline(lines, line);) {
      if (("\n" + *others).find("\n" + line + "\n") == std::string::npos) {
        text.append(sign).append(line);
      }
    }
  }
  return text;
}

class Trial {
 public:
  Trial(const std::string& root, const Operation& operation) : root_(root), operation_(operation) {
    HostPaths::SetRoot(root);
  }

  /// One point: answers what is wrong, or nothing.
  std::string Try(Caller& caller, const Sort& sort, bool stays, unsigned point, Shared& shared,
                  const Reference& reference, bool asksOthers) {
    const Ending ending = DoWithFault(operation_, caller, sort, stays, point, shared.struck);
    HostPathsBack();
    if (!shared.struck) {
      Host().Restore();
      return {};
    }
    std::string problem;
    const FaultyHost& host = Host();
    const std::string now = host.Look();
    const std::string told = Settled(ending.told);
    const bool isBefore = now == reference.before;
    const bool isAfter = now == reference.after;
    ++shared.points;
    ++(ending.raised.empty() ? shared.after : isAfter && !isBefore ? shared.after : shared.before);
    const bool isBetween = !isBefore && !isAfter;
    if (isAfter || (isBetween && !operation_.completesLater)) {
      Host().Restore();
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
            Differences(reference.before, now));
    }
    if (const std::string locked = host.Locked(); !locked.empty()) {
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
  Reference Learn() {
    Host().Restore();
    Reference reference;
    reference.before = Host().Look();
    Caller caller;
    const Ending ending = Tried(caller);
    reference.told = ending.told;
    reference.after = Host().Look();
    if (!ending.raised.empty()) {
      throw std::runtime_error(std::string(operation_.name) + " fails by itself: " + ending.raised);
    }
    Host().Restore();
    return reference;
  }

  FaultyHost& Host() {
    if (!host_) {
      host_.emplace(root_);
    }
    return *host_;
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
    } else if ((!completes && again.told != reference.told) || Host().Look() != reference.after) {
      wrong(std::string("the same call by ") + whose + " ends otherwise: " + again.told);
    }
    if (reference.after != reference.before || !again.raised.empty()) {
      Host().Restore();
    }
  }

  std::string root_;
  const Operation& operation_;
  std::optional<FaultyHost> host_;
};

int LeakedMemory() {
#ifdef __SANITIZE_ADDRESS__
  return __lsan_do_recoverable_leak_check();
#else
  return 0;
#endif
}

std::string Words(const char* operation, const Sort& sort, bool stays, Start start, unsigned point,
                  const std::string& problem) {
  return std::string(operation) + ", " + sort.name + " " + std::to_string(point) +
         (stays ? " and on, " : ", ") + (start == Start::WARM ? "warm: " : "fresh: ") + problem +
         "\n";
}

}  // namespace

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
    FaultyHost(root_).Save();
    return 0;
  });
  if (status != 0) {
    failure_ = "the host of the sweep cannot be made";
  }
}

Sweep::~Sweep() {
  std::error_code ignored;
  std::filesystem::remove_all(root_, ignored);
  std::filesystem::remove_all(root_ + ".saved", ignored);
}

std::optional<Reference> Sweep::Learn(const Operation& operation) const {
  const SharedTally shared;
  const int status = TestSupport::InChild([&] {
    shared->Keep(Trial(root_, operation).Learn());
    return 0;
  });
  return status == 0 ? std::optional(shared->Kept()) : std::nullopt;
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

unsigned Sweep::Next(unsigned point, bool often) const {
  constexpr unsigned kClosely = 60;
  switch (extent_) {
    case Extent::WHOLE:
      return point + 1;
    case Extent::BOUNDED:
      return point + (point < kClosely ? 1 : 3);
    case Extent::QUICK:
      break;
  }
  const unsigned closely = !often ? 2 : TestSupport::kSanitized ? 6 : 12;
  const unsigned part = !often ? 1 : TestSupport::kSanitized ? 3 : 5;
  return point + (point < closely ? 1 : std::max(1U, point / part));
}

Tally Sweep::Run(const Operation& operation, const Reference& reference, const Sort& sort,
                 bool stays, Start start) const {
  Tally tally;
  if (Leaves(sort, stays, start)) {
    return tally;
  }
  const SharedTally shared;
  // A child does as many points as it can: in a fresh process one, else until the end, unless it dies
  // of one.
  constexpr int kMostDeaths = 5;
  constexpr unsigned kOthersAsk = 4;
  for (int deaths = 0; shared->struck && deaths < kMostDeaths;) {
    const int status = TestSupport::InChild([&] {
      Trial trial(root_, operation);
      Caller caller;
      if (start == Start::WARM) {
        operation.run(caller);
        trial.Host().Restore();
      }
      for (;;) {
        const std::string problem =
            trial.Try(caller, sort, stays, shared->point, *shared.operator->(), reference,
                      extent_ != Extent::QUICK || shared->point % kOthersAsk == 0);
        if (!problem.empty()) {
          shared->Add(Words(operation.name, sort, stays, start, shared->point, problem));
        }
        shared->point = Next(shared->point, start == Start::WARM && !stays);
        if (start == Start::FRESH || !shared->struck) {
          return LeakedMemory();
        }
      }
    });
    if (status != 0) {
      ++deaths;
      shared->Add(Words(operation.name, sort, stays, start, shared->point,
                        "the process ended with " + std::to_string(status)));
      shared->point = Next(shared->point, start == Start::WARM && !stays);
      shared->struck = true;
      TestSupport::InChild([this] {
        FaultyHost(root_).Restore();
        return 0;
      });
    }
  }
  tally.points = shared->points;
  tally.before = shared->before;
  tally.after = shared->after;
  tally.problems.assign(shared->problems, shared->length);
  return tally;
}

}  // namespace Faults
