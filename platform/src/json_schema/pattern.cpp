#include "json_schema/pattern.h"

#include "platform/made_once.h"

#define PCRE2_CODE_UNIT_WIDTH 8
#include <pcre2.h>

#include <array>
#include <cstdint>
#include <new>
#include <utility>

namespace JsonValidator {
namespace {

// ECMAScript's reading of what PCRE2 reads in its own way.
constexpr std::uint32_t kOptions = PCRE2_UTF | PCRE2_ALT_BSUX | PCRE2_ALLOW_EMPTY_CLASS |
                                   PCRE2_MATCH_UNSET_BACKREF | PCRE2_DOLLAR_ENDONLY;
// Together they bound the worst case at about 20 ms.
constexpr std::uint32_t kMatchLimit = 1000000;
constexpr std::uint32_t kHeapLimitKiB = 16384;
// PCRE2 keeps a match's working memory with the match data: what a long text needs is given back.
constexpr std::size_t kShortText = 1024;

/// The match data of one thread, kept from one match to the next. Trivial, so that it can be used
/// even when the thread's other objects are gone: patterns may still be matched while the process
/// exits.
struct KeptMatchData {
  pcre2_match_data* data = nullptr;
  bool threadEnds = false;
};
thread_local KeptMatchData kept;

struct FreeAtThreadEnd {
  ~FreeAtThreadEnd() {
    pcre2_match_data_free(kept.data);
    kept = {nullptr, true};
  }
  void Arm() const {}  // naming the object is what makes it
};
thread_local const FreeAtThreadEnd freeAtThreadEnd;

pcre2_match_data* TakeMatchData() {
  if (kept.data == nullptr) {
    pcre2_match_data* data = pcre2_match_data_create(1, nullptr);
    if (data == nullptr) {
      throw std::bad_alloc();
    }
    return data;
  }
  return std::exchange(kept.data, nullptr);
}

void GiveBack(pcre2_match_data* data, bool keep) {
  if (!keep || kept.threadEnds) {
    pcre2_match_data_free(data);
    return;
  }
  freeAtThreadEnd.Arm();
  kept.data = data;
}

class Limits {
 public:
  Limits() : context_(pcre2_match_context_create(nullptr)) {
    if (context_ == nullptr) {
      throw std::bad_alloc();
    }
    pcre2_set_match_limit(context_, kMatchLimit);
    pcre2_set_heap_limit(context_, kHeapLimitKiB);
  }
  ~Limits() { pcre2_match_context_free(context_); }
  Limits(const Limits&) = delete;
  Limits& operator=(const Limits&) = delete;
  pcre2_match_context* Context() const noexcept { return context_; }

 private:
  pcre2_match_context* context_;
};
constinit MadeOnce<const Limits> limits;

}  // namespace

std::unique_ptr<const Pattern> Pattern::Compile(std::string_view text, std::string& fault) {
  int error = 0;
  PCRE2_SIZE offset = 0;
  pcre2_code* code = pcre2_compile(reinterpret_cast<PCRE2_SPTR>(text.data()), text.size(), kOptions,
                                   &error, &offset, nullptr);
  if (code == nullptr) {
    std::array<PCRE2_UCHAR, 256> message{};
    pcre2_get_error_message(error, message.data(), message.size());
    fault = std::string(reinterpret_cast<const char*>(message.data())) + " (at byte " +
            std::to_string(offset) + ")";
    return nullptr;
  }
  return std::unique_ptr<const Pattern>(new Pattern(text, code));
}

Pattern::~Pattern() {
  pcre2_code_free(code_);
}

Pattern::Result Pattern::Match(std::string_view text) const {
  pcre2_match_data* data = TakeMatchData();
  const int status = pcre2_match(code_, reinterpret_cast<PCRE2_SPTR>(text.data()), text.size(), 0,
                                 PCRE2_NO_UTF_CHECK, data, limits.Get().Context());
  GiveBack(data, text.size() <= kShortText && (status >= 0 || status == PCRE2_ERROR_NOMATCH));
  if (status >= 0) {
    return Result::MATCH;
  }
  return status == PCRE2_ERROR_NOMATCH ? Result::NO_MATCH : Result::UNDECIDED;
}

}  // namespace JsonValidator
