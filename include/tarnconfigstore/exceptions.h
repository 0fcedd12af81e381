// Every failure that the library reports is an exception of this tree.
#pragma once

#include "tarnconfigstore/error_codes.h"
#include "tarnconfigstore/export.h"

#include <exception>
#include <memory>
#include <string>
#include <vector>

namespace HostCtl::Lib {

/// A chain of message records that programs of the host attach to failures. The library never adds
/// records; it only renders those that it is given.
class TARN_CONFIG_STORE_EXPORT NotaMessage {
 public:
  /// \param id      what the record is called
  /// \param format  a printf format whose conversions are all "%s"
  /// \param arguments  the texts for them; missing ones print as nothing, further ones are left out
  /// \param next    the record that this one is put in front of, or none
  NotaMessage(std::string id, std::string format, std::vector<std::string> arguments,
              std::shared_ptr<const NotaMessage> next = nullptr);

  /// "\nNota Stack: \n" and then "[id]: message" for each record, the last of the chain first.
  std::string ToString() const;

 private:
  std::string id_;
  std::string format_;
  std::vector<std::string> arguments_;
  std::shared_ptr<const NotaMessage> next_;
};

/// The root of all exceptions of the host's libraries.
class TARN_CONFIG_STORE_EXPORT HostCtlException : public std::exception {
 public:
  explicit HostCtlException(const char* message, std::shared_ptr<const NotaMessage> nota = nullptr);
  HostCtlException(const HostCtlException&);
  HostCtlException& operator=(const HostCtlException&);
  ~HostCtlException() override;

  /// The message.
  const char* what() const noexcept override;

  /// The message, followed by the rendering of the attached records, if any.
  std::string GetDetailedMessage() const;

 private:
  std::string message_;
  std::shared_ptr<const NotaMessage> nota_;
};

}  // namespace HostCtl::Lib

namespace TarnConfigStore {

/// One problem found by a validation.
struct ErrorInfo {
  std::string
      field;  ///< where: an RFC 6901 JSON Pointer ("/" is the whole object), or an identifier
  std::string error;  ///< what was expected and what was found

  friend bool operator==(const ErrorInfo& a, const ErrorInfo& b) {
    return a.field == b.field && a.error == b.error;
  }
};

/// A failure of the library. Building one logs "[code] message" at priority 0 and a backtrace, so
/// that a failure is in the log even where the caller swallows it.
class TARN_CONFIG_STORE_EXPORT ConfigStoreException : public HostCtl::Lib::HostCtlException {
 public:
  ConfigStoreException(int code, const char* message);
  ConfigStoreException(const ConfigStoreException&);
  ConfigStoreException& operator=(const ConfigStoreException&);
  ~ConfigStoreException() override;

  /// A CSErrorCodes value.
  int GetErrorCode() const { return code_; }

  /// "Error Code: N\nMessage: M\n".
  std::string toString() const;

 private:
  int code_;
  std::vector<std::string> arguments_;  // part of the layout that callers know; always empty
};

/// Configuration that does not fit its type, or an operation that the state of the host forbids.
class TARN_CONFIG_STORE_EXPORT ValidationException : public ConfigStoreException {
 public:
  ValidationException(int code, const char* message, std::vector<ErrorInfo>& errors);
  ValidationException(const ValidationException&);
  ValidationException& operator=(const ValidationException&);
  ~ValidationException() override;

  /// Everything that was found, in document order; empty where the message says it all.
  const std::vector<ErrorInfo>& GetErrors() const { return errors_; }

  /// The base text and, where there are errors, "Details: \n" and a line "field: error" for each.
  std::string toString() const;

 private:
  std::vector<ErrorInfo> errors_;
};

/// An argument that the operation cannot work with.
class TARN_CONFIG_STORE_EXPORT InvalidArgumentException : public ConfigStoreException {
 public:
  InvalidArgumentException(int code, const char* message);
  InvalidArgumentException(const InvalidArgumentException&);
  InvalidArgumentException& operator=(const InvalidArgumentException&);
  ~InvalidArgumentException() override;
};

/// A typed read or write that met a value of another JSON type.
class TARN_CONFIG_STORE_EXPORT InvalidTypeException : public ConfigStoreException {
 public:
  InvalidTypeException(int code, const char* message);
  InvalidTypeException(const InvalidTypeException&);
  InvalidTypeException& operator=(const InvalidTypeException&);
  ~InvalidTypeException() override;
};

}  // namespace TarnConfigStore
