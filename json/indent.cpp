#include "json/indent.h"

#include "json/number_text.h"
#include "json/plain_reader.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace Json {
namespace {

bool IsBlank(char c) {
  return c == ' ' || c == '\n' || c == '\r' || c == '\t';
}

// The place after the string that begins at `start`.
std::size_t EndOfString(std::string_view text, std::size_t start) {
  for (std::size_t end = text.find('"', start + 1); end != std::string_view::npos;
       end = text.find('"', end + 1)) {
    // A quote after an odd number of backslashes is a part of the string.
    std::size_t before = end;
    while (text[before - 1] == '\\') {
      --before;
    }
    if ((end - before) % 2 == 0) {
      return end + 1;
    }
  }
  return text.size();
}

// The place after the number or word that begins at `start`.
std::size_t EndOfUnmarked(std::string_view text, std::size_t start) {
  std::size_t end = start + 1;
  while (end < text.size() && text[end] != ',' && text[end] != '}' && text[end] != ']' &&
         !IsBlank(text[end])) {
    ++end;
  }
  return end;
}

constexpr std::size_t kDeepest = 16 + kMaxDepth;

// A comma or none, a line's end, and the blanks of a level.
std::string_view Gap(std::size_t level, bool comma) {
  static constexpr auto kLongest = [] {
    std::array<char, 2 + 2 * kDeepest> bytes{};
    bytes.fill(' ');
    bytes[0] = ',';
    bytes[1] = '\n';
    return bytes;
  }();
  return {kLongest.data() + (comma ? 0 : 1), 2 * level + (comma ? 2 : 1)};
}

// Writes what a reader hands on, as it stands in the text.
class SoundIndenter {
 public:
  SoundIndenter(std::string_view text, const OwnName& name, unsigned level, Buffer& out)
      : rest_(text), name_(name), isNamed_(name.text.empty()), level_(level), out_(out) {}
  bool IsNamed() const { return isNamed_; }

  bool Null() { return Scalar("null"); }
  bool Bool(bool value) { return Scalar(value ? "true" : "false"); }
  bool Number(std::string_view text, bool isInteger) {
    return IsInRange(text, isInteger) && Scalar(text);
  }
  /// \param stays  it stands in the text as it is, without escapes
  bool String(std::string_view text, bool stays) {
    const bool named = isOwnName_ && text == name_.text;
    const bool goesOn = Scalar(Quoted(text, stays));
    isNamed_ = isNamed_ || named;
    return goesOn;
  }
  bool Key(std::string_view text, bool stays) {
    isOwnName_ = depth_ == 1 && !name_.text.empty() && text == name_.member;
    Put(GapBefore(), Quoted(text, stays), ": ");
    isBehindName_ = true;
    return true;
  }
  bool Open(bool isObject) {
    Unname();
    Put(GapBefore(), isObject ? "{" : "[");
    isFirst_ = true;
    return ++depth_ <= kMaxDepth && (isObject || depth_ > 1);
  }
  bool Close(bool isObject, std::size_t count) {
    --depth_;
    Put(count == 0 ? std::string_view() : Gap(level_ + depth_, false), isObject ? "}" : "]");
    return true;
  }

 private:
  // The string as it is written. Between two of them nothing else has quotes.
  std::string_view Quoted(std::string_view text, bool stays) {
    const std::size_t begin =
        stays ? static_cast<std::size_t>(text.data() - rest_.data()) - 1 : rest_.find('"');
    const std::size_t end = stays ? begin + text.size() + 2 : EndOfString(rest_, begin);
    const std::string_view quoted = rest_.substr(begin, end - begin);
    rest_.remove_prefix(end);
    return quoted;
  }

  // Few numbers are written so that they have to be read for it.
  static bool IsInRange(std::string_view number, bool isInteger) {
    return NumberText::SurelyFits(number, isInteger) ||
           NumberText(number, isInteger).GetKind() != NumberText::Kind::TOO_LARGE;
  }

  bool Scalar(std::string_view value) {
    Unname();
    Put(GapBefore(), value);
    return depth_ > 0;
  }
  // Of members of the same name the last one counts.
  void Unname() {
    isNamed_ = isNamed_ && !isOwnName_;
    isOwnName_ = false;
  }

  // A member's value stands on the line of its name.
  std::string_view GapBefore() const {
    return depth_ == 0 || isBehindName_ ? std::string_view() : Gap(level_ + depth_, !isFirst_);
  }
  void Put(std::string_view gap, std::string_view what, std::string_view after = {}) {
    char* to = out_.Push(gap.size() + what.size() + after.size());
    to = std::copy(gap.begin(), gap.end(), to);
    to = std::copy(what.begin(), what.end(), to);
    std::copy(after.begin(), after.end(), to);
    isFirst_ = false;
    isBehindName_ = false;
  }

  std::string_view rest_;  // of the text, behind the last string
  const OwnName& name_;
  bool isNamed_;
  bool isOwnName_ = false;  // of the member that comes
  const unsigned level_;
  std::size_t depth_ = 0;
  bool isFirst_ = true;        // nothing stands yet in what is open
  bool isBehindName_ = false;  // its value comes
  Buffer& out_;
};

}  // namespace

bool AppendIndentedIfSound(std::string_view text, const OwnName& name, unsigned level,
                           Buffer& out) {
  SoundIndenter indenter(text, name, level, out);
  return PlainReader(text, indenter).Read() && indenter.IsNamed();
}

void AppendLine(unsigned level, std::string& out) {
  out += '\n';
  out.append(std::size_t{2} * level, ' ');
}

void AppendIndented(std::string_view text, unsigned level, std::string& out) {
  char open = 0;  // the bracket that nothing has followed yet
  for (std::size_t at = 0; at < text.size();) {
    const char c = text[at];
    if (IsBlank(c)) {
      ++at;
      continue;
    }
    const bool closes = c == '}' || c == ']';
    if (closes) {
      --level;
    }
    if (open != 0 ? !closes : closes) {
      AppendLine(level, out);
    }
    open = 0;
    switch (c) {
      case '{':
      case '[':
        open = c;
        ++level;
        out += c;
        ++at;
        break;
      case ',':
        out += c;
        AppendLine(level, out);
        ++at;
        break;
      case ':':
        out += ": ";
        ++at;
        break;
      case '}':
      case ']':
        out += c;
        ++at;
        break;
      default: {
        const std::size_t end = c == '"' ? EndOfString(text, at) : EndOfUnmarked(text, at);
        out.append(text, at, end - at);
        at = end;
      }
    }
  }
}

}  // namespace Json
