// The one exception type of the platform: a run-time error with its number, source and description.
//
// Operators search their logs for these numbers and texts, so both stay exactly as the platform has always
// written them.
#pragma once

#include <cstdint>
#include <exception>
#include <string>
#include <string_view>

#include "platform/automation/export.hpp"

namespace automation {

// Numbers of the run-time errors that the platform raises by itself.
enum class ErrorNumber : std::int32_t {
  InvalidProcedureCall = 5,
  Overflow = 6,
  OutOfMemory = 7,
  SubscriptOutOfRange = 9,
  TypeMismatch = 13,
  InternalError = 51,
  BadFileName = 52,
  FileNotFound = 53,
  BadFileMode = 54,
  DeviceIoError = 57,
  FileAlreadyExists = 58,
  DiskFull = 61,
  InputPastEnd = 62,
  TooManyFiles = 67,
  PermissionDenied = 70,
  PathFileAccess = 75,
  PathNotFound = 76,
  ObjectNotSet = 91,
  InvalidUseOfNull = 94,
  ObjectRequired = 424,
  CannotCreateObject = 429,
  InterfaceNotSupported = 430,
  MemberNotSupported = 438,
  DuplicateKey = 457,
  ArgumentsInvalid = 3001,
  NoCurrentRecord = 3021,
  ItemNotFound = 3265,
  ObjectClosed = 3704,
  ObjectOpen = 3705,
  FeatureNotAvailable = 3251,
};

// The platform's usual text for a number, e.g. "Type mismatch" for 13; empty for a number it does not know.
ORVANE_EXPORT std::string_view StandardDescription(std::int32_t number);

// Whether what failed may have been done all the same.
enum class Outcome {
  NotDone,  // it was refused, or never sent
  Unknown,  // it was sent, and no answer settled it: what was to change may have changed
};

// The source of an error that no component gives its own name to: job code, a conversion, a date, the locale.
inline constexpr std::string_view kLibraryName = "OrvaneProcess";

class ORVANE_EXPORT Error : public std::exception {
 public:
  // An error with the platform's usual description for `number`. `source` names the component that raised it.
  explicit Error(ErrorNumber number, std::string source = std::string(kLibraryName));
  Error(ErrorNumber number, std::string source, std::string description);
  Error(std::int32_t number, std::string source, std::string description);

  std::int32_t Number() const { return number_; }
  const std::string& Source() const { return source_; }
  const std::string& Description() const { return description_; }

  // What a database engine said beside its message; empty and 0 for errors of other origin.
  const std::string& SqlState() const { return sqlState_; }
  std::int32_t NativeCode() const { return nativeCode_; }
  Error& WithEngineCodes(std::string sqlState, std::int32_t nativeCode);

  // Of a commit, or of a statement that commits by itself. NotDone unless the place that sent it says
  // otherwise; without meaning for what changes nothing.
  automation::Outcome Outcome() const { return outcome_; }
  Error& WithOutcome(automation::Outcome outcome);

  const char* what() const noexcept override { return description_.c_str(); }

 private:
  std::int32_t number_;
  std::string source_;
  std::string description_;
  std::string sqlState_;
  std::int32_t nativeCode_ = 0;
  automation::Outcome outcome_ = automation::Outcome::NotDone;
};

// An error with the usual description and what it is about behind it: "Path not found: \suite\Data".
ORVANE_EXPORT Error ErrorAbout(ErrorNumber number, std::string source, std::string_view what);

// The error being handled, seen from inside a catch clause: an Error as it is, any other exception as the
// platform error nearest to it (std::bad_alloc is 7, everything else 51 with its own text; the library is the
// source).
// Outside a catch clause the number is 0 and the texts are empty.
ORVANE_EXPORT Error PendingError();

}  // namespace automation
