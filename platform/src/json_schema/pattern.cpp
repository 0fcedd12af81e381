#include "json_schema/pattern.h"

#include "json_schema/ecma_pattern.h"

#define PCRE2_CODE_UNIT_WIDTH 8
#include <pcre2.h>

#include <algorithm>
#include <array>
#include <new>
#include <pthread.h>
#include <utility>

namespace JsonValidator {
namespace {

// A group that repeats keeps its way back for each round. An ordinary pattern of groups is to get
// through a text of a megabyte, a short text must not take memory that it has no need of.
constexpr std::size_t kLeastHeapKiB = std::size_t{16} * 1024;
constexpr std::size_t kMostHeapKiB = std::size_t{256} * 1024;
constexpr std::size_t kHeapKiBOfAKiB = 128;
// Where callouts would miss a loop of PCRE2's.
constexpr std::uint32_t kMatchLimit = 100'000'000;
// PCRE2 keeps a match's working memory with the match data: what a long text needs is given back.
constexpr std::size_t kShortText = 1024;

/// What a thread keeps from one match to the next. Trivial, so that it can be used even when the
/// thread's other objects are gone: patterns may still be matched while the process exits.
struct Room {
  pcre2_match_data* data = nullptr;
  pcre2_match_context* context = nullptr;

  void Free() const {
    pcre2_match_data_free(data);
    pcre2_match_context_free(context);
  }
};
constinit thread_local Room kept;

// Has what an ending thread keeps freed. Not a thread-local object's destructor: registering one
// takes memory, and ends the process where there is none.
class ThreadEnd {
 public:
  ThreadEnd() noexcept
      : made_(pthread_key_create(&key_, [](void* /*room*/) { std::exchange(kept, {}).Free(); }) ==
              0) {}
  ~ThreadEnd() {
    if (std::exchange(made_, false)) {
      pthread_key_delete(key_);
    }
  }
  ThreadEnd(const ThreadEnd&) = delete;
  ThreadEnd& operator=(const ThreadEnd&) = delete;

  /// False where nobody would free what this thread keeps.
  bool IsWatched() const noexcept {
    return made_ && (pthread_getspecific(key_) != nullptr || pthread_setspecific(key_, this) == 0);
  }

 private:
  pthread_key_t key_ = 0;
  bool made_;
};
const ThreadEnd threadEnd;

Room TakeRoom() {
  if (kept.data != nullptr) {
    return std::exchange(kept, {});
  }
  const Room room{pcre2_match_data_create(1, nullptr), pcre2_match_context_create(nullptr)};
  if (room.data == nullptr || room.context == nullptr) {
    room.Free();
    throw std::bad_alloc();
  }
  pcre2_set_match_limit(room.context, kMatchLimit);
  return room;
}

void GiveBack(const Room& room, bool keep) {
  if (!keep || kept.data != nullptr || !threadEnd.IsWatched()) {
    room.Free();
    return;
  }
  kept = room;
}

/// PCRE2's own limits count neither what a repeated character runs over nor what one attempt after
/// another adds up to. Its callouts, which stand wherever it may try once more, tell how far it got.
struct Counted {
  Budget& budget;
  std::uint64_t stepsOfACharacter;
  std::size_t at = 0;  ///< where the callout before stood
};

std::uint64_t LongestCapture(const pcre2_callout_block& block) {
  std::size_t longest = 0;
  for (std::uint32_t group = 1; group < block.capture_top; ++group) {
    const PCRE2_SIZE* bounds = block.offset_vector + std::size_t{2} * group;
    if (bounds[0] != PCRE2_UNSET && bounds[1] > bounds[0]) {
      longest = std::max(longest, bounds[1] - bounds[0]);
    }
  }
  return longest;
}

int Count(pcre2_callout_block* block, void* data) {
  Counted& counted = *static_cast<Counted*>(data);
  const std::size_t at = block->current_position;
  std::size_t characters = at > counted.at ? at - counted.at : counted.at - at;
  counted.at = at;
  if (block->callout_number == kBeforeBackReference) {
    characters += LongestCapture(*block);
  } else if (block->callout_number != 0) {
    characters += std::size_t{1} << block->callout_number;
  }
  return counted.budget.Take((1 + characters) * counted.stepsOfACharacter) ? 0
                                                                           : PCRE2_ERROR_CALLOUT;
}

}  // namespace

std::unique_ptr<const Pattern> Pattern::Compile(std::string_view text, std::string& fault) {
  const std::optional<TranslatedPattern> translated = TranslatePattern(text, fault);
  if (!translated) {
    return nullptr;
  }
  constexpr std::uint32_t kOptions = PCRE2_UTF | PCRE2_ALLOW_EMPTY_CLASS |
                                     PCRE2_MATCH_UNSET_BACKREF | PCRE2_DOLLAR_ENDONLY |
                                     PCRE2_NEVER_BACKSLASH_C;
  int error = 0;
  PCRE2_SIZE offset = 0;
  pcre2_code* code = pcre2_compile(reinterpret_cast<PCRE2_SPTR>(translated->text.data()),
                                   translated->text.size(), kOptions, &error, &offset, nullptr);
  if (error == PCRE2_ERROR_HEAP_FAILED) {
    throw std::bad_alloc();  // says nothing of the pattern
  }
  if (code == nullptr) {
    std::array<PCRE2_UCHAR, 256> message{};
    pcre2_get_error_message(error, message.data(), message.size());
    fault = std::string(reinterpret_cast<const char*>(message.data())) + " (at byte " +
            std::to_string(translated->SourceOf(offset)) + ")";
    return nullptr;
  }
  std::unique_ptr<pcre2_code, void (*)(pcre2_code*)> owned(code, pcre2_code_free);
  std::unique_ptr<const Pattern> pattern(new Pattern(text, code, translated->stepsOfACharacter));
  static_cast<void>(owned.release());  // the pattern has it
  return pattern;
}

Pattern::~Pattern() {
  pcre2_code_free(code_);
}

Pattern::Result Pattern::Match(std::string_view text, Budget& budget) const {
  const Room room = TakeRoom();
  Counted counted{budget, stepsOfACharacter_};
  pcre2_set_callout(room.context, Count, &counted);
  constexpr std::size_t kKiB = 1024;
  pcre2_set_heap_limit(room.context,
                       static_cast<std::uint32_t>(std::clamp(text.size() / kKiB * kHeapKiBOfAKiB,
                                                             kLeastHeapKiB, kMostHeapKiB)));
  const int status = budget.Take(1)
                         ? pcre2_match(code_, reinterpret_cast<PCRE2_SPTR>(text.data()),
                                       text.size(), 0, PCRE2_NO_UTF_CHECK, room.data, room.context)
                         : PCRE2_ERROR_CALLOUT;
  GiveBack(room, text.size() <= kShortText && (status >= 0 || status == PCRE2_ERROR_NOMATCH));
  if (status == PCRE2_ERROR_NOMEMORY) {
    throw std::bad_alloc();
  }
  if (status >= 0) {
    return Result::MATCH;
  }
  return status == PCRE2_ERROR_NOMATCH ? Result::NO_MATCH : Result::UNDECIDED;
}

}  // namespace JsonValidator
