#include "floor_filter.h"

#include "floor_json.h"
#include "json/utf8.h"

namespace Benchmarks {
namespace {

// Looks for one member of the outermost object, the first of its name.
class Looker {
 public:
  Looker(std::string_view member, std::string_view wanted) : member_(member), wanted_(wanted) {}

  bool Holds() const { return holds_; }

  bool Null() { return Scalar(); }
  bool Bool(bool /*value*/) { return Scalar(); }
  // Shorter than what may not fit.
  bool Integer(std::string_view text) {
    constexpr std::size_t kSurelyFits = 18;
    return text.size() <= kSurelyFits && Scalar();
  }
  bool Real(std::string_view text) {
    return text.find_first_of("eE") == std::string_view::npos && Integer(text);
  }
  bool String(std::string_view text) {
    holds_ = holds_ || (isMember_ && text == wanted_);
    return Scalar();
  }
  bool Key(std::string_view name) {
    isMember_ = depth_ == 1 && !seen_ && name == member_;
    seen_ = seen_ || isMember_;
    return true;
  }
  bool Open(bool isObject) {
    isMember_ = false;
    return ++depth_ <= Json::kMaxDepth && (isObject || depth_ > 1);
  }
  bool Close(bool /*isObject*/, std::size_t /*count*/) { return --depth_, true; }

 private:
  bool Scalar() {
    isMember_ = false;
    return depth_ > 0;
  }

  std::string_view member_;
  std::string_view wanted_;
  std::size_t depth_ = 0;
  bool isMember_ = false;
  bool seen_ = false;
  bool holds_ = false;
};

}  // namespace

bool MayHold(std::string_view text, std::string_view member, std::string_view wanted) {
  Looker looker(member, wanted);
  return !Json::Utf8::IsValid(text) || !PlainReader<Looker>(text, looker).Read() || looker.Holds();
}

}  // namespace Benchmarks
