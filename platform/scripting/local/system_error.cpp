#include "platform/scripting/local/system_error.hpp"

#include <cerrno>

namespace Scripting::local {

using automation::ErrorNumber;

void Raise(ErrorNumber number) {
  throw automation::Error(number, kErrorSource);
}

ErrorNumber NumberOf(int code, ErrorNumber missing) {
  switch (code) {
    case ENOENT:
    case ENOTDIR:
      return missing;
    case EACCES:
    case EPERM:
    case EROFS:
    case EBUSY:
    case ETXTBSY:
    case ENOTEMPTY:  // somebody put a file into a folder while it was being removed
    case EISDIR:
    case ENXIO:  // a pipe or socket where a file should be
    case ELOOP:
      return ErrorNumber::PermissionDenied;
    case EEXIST:
      return ErrorNumber::FileAlreadyExists;
    case ENAMETOOLONG:
    case EILSEQ:
    case EINVAL:
      return ErrorNumber::BadFileName;
    case ENOSPC:
    case EDQUOT:
    case EFBIG:
      return ErrorNumber::DiskFull;
    case EMFILE:
    case ENFILE:
      return ErrorNumber::TooManyFiles;
    case EIO:
      return ErrorNumber::DeviceIoError;
    case ENOMEM:
      return ErrorNumber::OutOfMemory;
    default:
      return ErrorNumber::PathFileAccess;
  }
}

void RaiseSystemError(int code, ErrorNumber missing) {
  Raise(NumberOf(code, missing));
}

void RaiseWriteError(int code) {
  const bool full = code == ENOSPC || code == EDQUOT || code == EFBIG;
  Raise(full ? ErrorNumber::DiskFull : ErrorNumber::DeviceIoError);
}

}  // namespace Scripting::local
