#include "table/text_width.h"

#include "json/utf8.h"

#include <algorithm>
#include <clocale>
#include <cwchar>
#include <locale.h>

namespace tarnctl {
namespace {

// What the system knows of characters, whatever language the user has chosen. Where it knows nothing,
// each character takes one column.
class CharactersOfUtf8 {
 public:
  CharactersOfUtf8() : before_(Utf8() != nullptr ? ::uselocale(Utf8()) : nullptr) {}
  ~CharactersOfUtf8() {
    if (before_ != nullptr) {
      ::uselocale(before_);
    }
  }
  CharactersOfUtf8(const CharactersOfUtf8&) = delete;
  CharactersOfUtf8& operator=(const CharactersOfUtf8&) = delete;

  static std::size_t WidthOf(std::string_view character) {
    const int width = ::wcwidth(static_cast<wchar_t>(Json::Utf8::CodePointOf(character)));
    return width < 0 ? 1 : static_cast<std::size_t>(width);
  }

 private:
  // Made once: making one takes longer than all that is asked of it.
  static locale_t Utf8() {
    static const locale_t locale = ::newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
    return locale;
  }

  locale_t before_;
};

bool IsAsciiText(std::string_view text) {
  return std::all_of(text.begin(), text.end(),
                     [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

struct Beginning {
  std::size_t bytes = 0;
  std::size_t width = 0;
};

// The longest one that is no wider than `most`.
Beginning BeginningOf(std::string_view text, std::size_t most) {
  const CharactersOfUtf8 characters;
  Beginning fits;
  while (fits.bytes < text.size()) {
    const std::size_t length =
        std::max<std::size_t>(1, Json::Utf8::SequenceLength(text.substr(fits.bytes)));
    const std::size_t width = CharactersOfUtf8::WidthOf(text.substr(fits.bytes, length));
    if (width > most - fits.width) {
      break;
    }
    fits.bytes += length;
    fits.width += width;
  }
  return fits;
}

}  // namespace

std::size_t WidthOf(std::string_view text) {
  return IsAsciiText(text) ? text.size() : BeginningOf(text, std::string_view::npos).width;
}

std::string CutTo(std::size_t width, std::string_view text) {
  if (WidthOf(text) <= width) {
    return std::string(text);
  }
  return width == 0 ? ""
                    : std::string(text.substr(0, BeginningOf(text, width - 1).bytes)) + "\u2026";
}

}  // namespace tarnctl
