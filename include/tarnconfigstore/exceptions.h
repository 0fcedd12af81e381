// Every failure that the library reports is an exception of this tree:
//
//     HostCtl::Lib::HostCtlException          a std::exception
//       ConfigStoreException                  carries a code
//         ValidationException                 carries findings
//         InvalidArgumentException
//         InvalidTypeException
//
// All of them are values: they can be copied, and used by one thread at a time.
//
// Outside of this tree are std::logic_error, for a null text where a function says so, and
// std::bad_alloc, when memory is used up. Operations that run in a transaction of their own throw
// ConfigStoreException 2000 "Operation failed: TEXT" in its place.
#pragma once

#include "tarnconfigstore/error_codes.h"
#include "tarnconfigstore/export.h"

#include <exception>
#include <memory>
#include <string>
#include <vector>

namespace HostCtl::Lib {

/// A chain of message records that programs of the host attach to failures. This library adds no
/// records; it renders those that it is given. Immutable; safe from several threads.
class TARN_CONFIG_STORE_EXPORT NotaMessage {
 public:
  /// \param id         the name of the record
  /// \param format     a printf format whose conversions are all "%s"
  /// \param arguments  texts for the conversions; a missing one prints as nothing, one too many is
  ///                   ignored
  /// \param next       the record that this one precedes, or an empty pointer
  NotaMessage(std::string id, std::string format, std::vector<std::string> arguments,
              std::shared_ptr<const NotaMessage> next = nullptr);

  /// \return "\nNota Stack: \n" and "[id]: message" for each record, the last one first
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
  /// \param message  a NUL-terminated text, which is copied
  /// \param nota     the attached records, or an empty pointer
  explicit HostCtlException(const char* message, std::shared_ptr<const NotaMessage> nota = nullptr);
  HostCtlException(const HostCtlException&);
  HostCtlException& operator=(const HostCtlException&);
  ~HostCtlException() override;

  /// \return the message, valid as long as the exception
  const char* what() const noexcept override;

  /// \return the message, followed by the attached records as NotaMessage::ToString renders them
  std::string GetDetailedMessage() const;

 private:
  std::string message_;
  std::shared_ptr<const NotaMessage> nota_;
};

}  // namespace HostCtl::Lib

namespace TarnConfigStore {

/// One finding of a validation.
struct ErrorInfo {
  /// Where: a JSON Pointer (RFC 6901) into the data, "/" for the object as a whole. Other forms are
  /// named by the functions that use them. Names in it are as they are given, control characters
  /// included: to be escaped where they are shown.
  std::string field;
  /// What was expected and what was found; control characters escaped.
  std::string error;

  friend bool operator==(const ErrorInfo& a, const ErrorInfo& b) {
    return a.field == b.field && a.error == b.error;
  }
};

/// A failure of the library.
///
/// The constructor logs "[code] message" at priority 0, and a backtrace: a failure is in the log
/// even where the caller drops it. The same holds for the classes below.
class TARN_CONFIG_STORE_EXPORT ConfigStoreException : public HostCtl::Lib::HostCtlException {
 public:
  ConfigStoreException(int code, const char* message);
  ConfigStoreException(const ConfigStoreException&);
  ConfigStoreException& operator=(const ConfigStoreException&);
  ~ConfigStoreException() override;

  /// \return a value of CSErrorCodes
  int GetErrorCode() const { return code_; }

  /// \return "Error Code: CODE\nMessage: MESSAGE\n". Not virtual
  std::string toString() const;

 private:
  int code_;
  std::vector<std::string> arguments_;  // part of the layout that callers know; always empty
};

/// Configuration that does not fit its type, or an operation that the state of the host forbids.
class TARN_CONFIG_STORE_EXPORT ValidationException : public ConfigStoreException {
 public:
  /// \param errors  the findings, which are copied
  ValidationException(int code, const char* message, std::vector<ErrorInfo>& errors);
  ValidationException(const ValidationException&);
  ValidationException& operator=(const ValidationException&);
  ~ValidationException() override;

  /// \return every finding, in document order; empty where the message says it all. Valid as long
  ///         as the exception
  const std::vector<ErrorInfo>& GetErrors() const { return errors_; }

  /// \return the text of ConfigStoreException::toString and, where there are findings,
  ///         "Details: \n" and a line "field: error" for each. Not virtual
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
