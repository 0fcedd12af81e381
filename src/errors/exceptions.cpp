#include "tarnconfigstore/exceptions.h"

#include "platform/logger.h"

#include "errors/raise.h"
#include "json/utf8.h"

#include <utility>

namespace HostCtl::Lib {

HostCtlException::HostCtlException(const char* message, std::shared_ptr<const NotaMessage> nota)
    : message_(message), nota_(std::move(nota)) {}
HostCtlException::HostCtlException(const HostCtlException&) = default;
HostCtlException& HostCtlException::operator=(const HostCtlException&) = default;
HostCtlException::~HostCtlException() = default;

const char* HostCtlException::what() const noexcept {
  return message_.c_str();
}

std::string HostCtlException::GetDetailedMessage() const {
  return nota_ ? message_ + nota_->ToString() : message_;
}

}  // namespace HostCtl::Lib

namespace TarnConfigStore {

ConfigStoreException::ConfigStoreException(int code, const char* message)
    : HostCtlException(message), code_(code) {
  CSLogger::Log(CSLogger::kFailure, "[%d] %s", code, message);
  CSLogger::LogBacktrace();
}
ConfigStoreException::ConfigStoreException(const ConfigStoreException&) = default;
ConfigStoreException& ConfigStoreException::operator=(const ConfigStoreException&) = default;
ConfigStoreException::~ConfigStoreException() = default;

std::string ConfigStoreException::toString() const {
  return "Error Code: " + Format("%d", code_) + "\nMessage: " + what() + "\n";
}

ValidationException::ValidationException(int code, const char* message,
                                         std::vector<ErrorInfo>& errors)
    : ConfigStoreException(code, message), errors_(errors) {}
ValidationException::ValidationException(const ValidationException&) = default;
ValidationException& ValidationException::operator=(const ValidationException&) = default;
ValidationException::~ValidationException() = default;

std::string ValidationException::toString() const {
  std::string text = ConfigStoreException::toString();
  if (!errors_.empty()) {
    text += "Details: \n";
  }
  for (const ErrorInfo& info : errors_) {
    text += Json::Utf8::WithoutControls(info.field + ": " + info.error) + "\n";
  }
  return text;
}

InvalidArgumentException::InvalidArgumentException(int code, const char* message)
    : ConfigStoreException(code, message) {}
InvalidArgumentException::InvalidArgumentException(const InvalidArgumentException&) = default;
InvalidArgumentException& InvalidArgumentException::operator=(const InvalidArgumentException&) =
    default;
InvalidArgumentException::~InvalidArgumentException() = default;

InvalidTypeException::InvalidTypeException(int code, const char* message)
    : ConfigStoreException(code, message) {}
InvalidTypeException::InvalidTypeException(const InvalidTypeException&) = default;
InvalidTypeException& InvalidTypeException::operator=(const InvalidTypeException&) = default;
InvalidTypeException::~InvalidTypeException() = default;

}  // namespace TarnConfigStore
