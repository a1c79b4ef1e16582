#include "platform/automation/error.hpp"

#include <new>
#include <utility>

namespace automation {

std::string_view StandardDescription(std::int32_t number) {
  switch (static_cast<ErrorNumber>(number)) {
    case ErrorNumber::InvalidProcedureCall:
      return "Invalid procedure call or argument";
    case ErrorNumber::Overflow:
      return "Overflow";
    case ErrorNumber::OutOfMemory:
      return "Out of memory";
    case ErrorNumber::SubscriptOutOfRange:
      return "Subscript out of range";
    case ErrorNumber::TypeMismatch:
      return "Type mismatch";
    case ErrorNumber::InternalError:
      return "Internal error";
    case ErrorNumber::BadFileName:
      return "Bad file name or number";
    case ErrorNumber::FileNotFound:
      return "File not found";
    case ErrorNumber::BadFileMode:
      return "Bad file mode";
    case ErrorNumber::DeviceIoError:
      return "Device I/O error";
    case ErrorNumber::FileAlreadyExists:
      return "File already exists";
    case ErrorNumber::DiskFull:
      return "Disk full";
    case ErrorNumber::InputPastEnd:
      return "Input past end of file";
    case ErrorNumber::TooManyFiles:
      return "Too many files";
    case ErrorNumber::PermissionDenied:
      return "Permission denied";
    case ErrorNumber::PathFileAccess:
      return "Path/File access error";
    case ErrorNumber::PathNotFound:
      return "Path not found";
    case ErrorNumber::ObjectNotSet:
      return "Object variable or With block variable not set";
    case ErrorNumber::InvalidUseOfNull:
      return "Invalid use of Null";
    case ErrorNumber::ObjectRequired:
      return "Object required";
    case ErrorNumber::CannotCreateObject:
      return "ActiveX component can't create object";
    case ErrorNumber::InterfaceNotSupported:
      return "Class does not support Automation or does not support expected interface";
    case ErrorNumber::MemberNotSupported:
      return "Object doesn't support this property or method";
    case ErrorNumber::DuplicateKey:
      return "This key is already associated with an element of this collection";
    case ErrorNumber::ArgumentsInvalid:
      return "Arguments are of the wrong type, are out of acceptable range, or are in conflict with one "
             "another.";
    case ErrorNumber::NoCurrentRecord:
      return "Either BOF or EOF is True, or the current record has been deleted. Requested operation "
             "requires a current record.";
    case ErrorNumber::FeatureNotAvailable:
      return "Current Recordset does not support updating. This may be a limitation of the provider, or of "
             "the selected locktype.";
    case ErrorNumber::ItemNotFound:
      return "Item cannot be found in the collection corresponding to the requested name or ordinal.";
    case ErrorNumber::ObjectClosed:
      return "Operation is not allowed when the object is closed.";
    case ErrorNumber::ObjectOpen:
      return "Operation is not allowed when the object is open.";
  }
  return {};
}

Error::Error(ErrorNumber number, std::string source)
    : Error(number, std::move(source), std::string(StandardDescription(static_cast<std::int32_t>(number)))) {}

Error::Error(ErrorNumber number, std::string source, std::string description)
    : Error(static_cast<std::int32_t>(number), std::move(source), std::move(description)) {}

Error::Error(std::int32_t number, std::string source, std::string description)
    : number_(number), source_(std::move(source)), description_(std::move(description)) {}

Error& Error::WithEngineCodes(std::string sqlState, std::int32_t nativeCode) {
  sqlState_ = std::move(sqlState);
  nativeCode_ = nativeCode;
  return *this;
}

Error& Error::WithOutcome(automation::Outcome outcome) {
  outcome_ = outcome;
  return *this;
}

Error ErrorAbout(ErrorNumber number, std::string source, std::string_view what) {
  const Error usual(number);
  return {number, std::move(source), usual.Description() + ": " + std::string(what)};
}

Error PendingError() {
  const std::exception_ptr pending = std::current_exception();
  if (!pending) return Error(0, {}, {});
  try {
    std::rethrow_exception(pending);
  } catch (const Error& error) {
    return error;
  } catch (const std::bad_alloc&) {
    return Error(ErrorNumber::OutOfMemory);
  } catch (const std::exception& other) {
    return Error(ErrorNumber::InternalError, std::string(kLibraryName), other.what());
  } catch (...) {
    return Error(ErrorNumber::InternalError);
  }
}

}  // namespace automation
