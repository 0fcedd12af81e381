// What a call raises, as one line of text.
#pragma once

#include "tarnconfigstore/exceptions.h"

#include <string>

namespace TestSupport {

/// "ClassAbbreviation code message", for example "VE 1089 The object ...", and of each finding its
/// place, or its text too; "nothing" when it returns.
template <class Call>
std::string Raised(Call call, bool withTexts = false) {
  using namespace TarnConfigStore;
  const auto line = [](const char* name, const ConfigStoreException& exception) {
    return std::string(name) + " " + std::to_string(exception.GetErrorCode()) + " " +
           exception.what();
  };
  try {
    call();
  } catch (const ValidationException& exception) {
    std::string text = line("VE", exception);
    for (const ErrorInfo& error : exception.GetErrors()) {
      text += " | " + error.field + (withTexts ? ": " + error.error : "");
    }
    return text;
  } catch (const InvalidArgumentException& exception) {
    return line("IAE", exception);
  } catch (const InvalidTypeException& exception) {
    return line("ITE", exception);
  } catch (const ConfigStoreException& exception) {
    // Where the JSON library's headers lie is the machine's business.
    std::string text = line("CSE", exception);
    const std::size_t path = text.find("JSON error:");
    const std::size_t condition = text.rfind("\":");
    return path == std::string::npos
               ? text
               : text.substr(0, path) + "JSON: " + text.substr(text.find(": ", condition) + 2);
  } catch (const std::exception& exception) {
    return std::string("std ") + exception.what();
  }
  return "nothing";
}

}  // namespace TestSupport
