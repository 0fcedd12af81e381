#include "json_schema/ecma_escape.h"

#include <algorithm>
#include <iterator>

namespace JsonValidator::Ecma {
namespace {

struct Category {
  std::string_view name;
  std::string_view alias;
};

constexpr Category kCategories[] = {
    {"L&", "LC"},
    {"L&", "Cased_Letter"},
    {"Pe", "Close_Punctuation"},
    {"Pc", "Connector_Punctuation"},
    {"Cc", "Control"},
    {"Cc", "cntrl"},
    {"Sc", "Currency_Symbol"},
    {"Pd", "Dash_Punctuation"},
    {"Nd", "Decimal_Number"},
    {"Nd", "digit"},
    {"Me", "Enclosing_Mark"},
    {"Pf", "Final_Punctuation"},
    {"Cf", "Format"},
    {"Pi", "Initial_Punctuation"},
    {"L", "Letter"},
    {"Nl", "Letter_Number"},
    {"Zl", "Line_Separator"},
    {"Ll", "Lowercase_Letter"},
    {"M", "Mark"},
    {"M", "Combining_Mark"},
    {"Sm", "Math_Symbol"},
    {"Lm", "Modifier_Letter"},
    {"Sk", "Modifier_Symbol"},
    {"Mn", "Nonspacing_Mark"},
    {"N", "Number"},
    {"Ps", "Open_Punctuation"},
    {"C", "Other"},
    {"Lo", "Other_Letter"},
    {"No", "Other_Number"},
    {"Po", "Other_Punctuation"},
    {"So", "Other_Symbol"},
    {"Zp", "Paragraph_Separator"},
    {"Co", "Private_Use"},
    {"P", "Punctuation"},
    {"P", "punct"},
    {"Z", "Separator"},
    {"Zs", "Space_Separator"},
    {"Mc", "Spacing_Mark"},
    {"Cs", "Surrogate"},
    {"S", "Symbol"},
    {"Lt", "Titlecase_Letter"},
    {"Cn", "Unassigned"},
    {"Lu", "Uppercase_Letter"},
};

// Each between blanks.
constexpr std::string_view kBinary =
    " ASCII ASCII_Hex_Digit AHex Alphabetic Alpha Any Bidi_Control Bidi_C Bidi_Mirrored Bidi_M "
    "Case_Ignorable CI Cased Changes_When_Casefolded CWCF Changes_When_Casemapped CWCM "
    "Changes_When_Lowercased CWL Changes_When_Titlecased CWT Changes_When_Uppercased CWU Dash "
    "Default_Ignorable_Code_Point DI Deprecated Dep Diacritic Dia Emoji Emoji_Component EComp "
    "Emoji_Modifier EMod Emoji_Modifier_Base EBase Emoji_Presentation EPres Extended_Pictographic "
    "ExtPict Extender Ext Grapheme_Base Gr_Base Grapheme_Extend Gr_Ext Hex_Digit Hex "
    "IDS_Binary_Operator IDSB IDS_Trinary_Operator IDST ID_Continue IDC ID_Start IDS Ideographic "
    "Ideo Join_Control Join_C Logical_Order_Exception LOE Lowercase Lower Math "
    "Noncharacter_Code_Point NChar Pattern_Syntax Pat_Syn Pattern_White_Space Pat_WS "
    "Quotation_Mark QMark Radical Regional_Indicator RI Sentence_Terminal STerm Soft_Dotted SD "
    "Terminal_Punctuation Term Unified_Ideograph UIdeo Uppercase Upper Variation_Selector VS "
    "White_Space space XID_Continue XIDC XID_Start XIDS ";

bool IsName(std::string_view text) {
  return !text.empty() && std::all_of(text.begin(), text.end(), [](char c) {
    return Json::IsLetter(c) || Json::IsDigit(c) || c == '_';
  });
}

std::optional<std::string> CategoryOf(std::string_view written) {
  const auto* found =
      std::find_if(std::begin(kCategories), std::end(kCategories), [&](const Category& category) {
        return category.name == written || category.alias == written;
      });
  return found == std::end(kCategories) || written == "L&"
             ? std::nullopt
             : std::optional<std::string>(found->name);
}

}  // namespace

std::optional<std::string> PropertyOf(const std::string& written) {
  const std::size_t equals = written.find('=');
  if (equals == std::string::npos) {
    const bool binary =
        IsName(written) && kBinary.find(" " + written + " ") != std::string_view::npos;
    return binary ? std::optional(written) : CategoryOf(written);
  }
  const std::string name = written.substr(0, equals);
  const std::string value = written.substr(equals + 1);
  if (name == "General_Category" || name == "gc") {
    return CategoryOf(value);
  }
  const bool extended = name == "Script_Extensions" || name == "scx";
  if (!IsName(value) || (!extended && name != "Script" && name != "sc")) {
    return std::nullopt;
  }
  return (extended ? "scx:" : "sc:") + value;
}

}  // namespace JsonValidator::Ecma
