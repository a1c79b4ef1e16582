#include "platform/scripting/local/system_error.hpp"

#include <cerrno>

namespace Scripting::local {

using automation::ErrorNumber;

void Raise(ErrorNumber number) {
  throw automation::Error(number, kErrorSource);
}

void RaiseSystemError(int code, ErrorNumber missing) {
  switch (code) {
    case ENOENT:
    case ENOTDIR:
      Raise(missing);
    case EACCES:
    case EPERM:
    case EROFS:
    case EBUSY:
    case ETXTBSY:
    case ENOTEMPTY:  // somebody put a file into a folder while it was being removed
    case EISDIR:
    case ENXIO:  // a pipe or socket where a file should be
    case ELOOP:
      Raise(ErrorNumber::PermissionDenied);
    case EEXIST:
      Raise(ErrorNumber::FileAlreadyExists);
    case ENAMETOOLONG:
    case EILSEQ:
    case EINVAL:
      Raise(ErrorNumber::BadFileName);
    case ENOSPC:
    case EDQUOT:
    case EFBIG:
      Raise(ErrorNumber::DiskFull);
    case EMFILE:
    case ENFILE:
      Raise(ErrorNumber::TooManyFiles);
    case EIO:
      Raise(ErrorNumber::DeviceIoError);
    case ENOMEM:
      Raise(ErrorNumber::OutOfMemory);
    default:
      Raise(ErrorNumber::PathFileAccess);
  }
}

void RaiseWriteError(int code) {
  const bool full = code == ENOSPC || code == EDQUOT || code == EFBIG;
  Raise(full ? ErrorNumber::DiskFull : ErrorNumber::DeviceIoError);
}

}  // namespace Scripting::local
