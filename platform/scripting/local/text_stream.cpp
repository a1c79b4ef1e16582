#include "platform/scripting/local/text_stream.hpp"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <memory>
#include <utility>

#include "platform/base/descriptor.hpp"
#include "platform/scripting/local/buffered_stream.hpp"
#include "platform/scripting/local/system_error.hpp"

namespace Scripting::local {
namespace {

using automation::ErrorNumber;

class FileStream final : public BufferedStream {
 public:
  FileStream(base::Descriptor file, IOMode mode, LocalePtr locale)
      : BufferedStream(mode, std::move(locale)), file_(std::move(file)) {}

  // A destructor has nobody to tell of a failure; callers who want to know call Close.
  ~FileStream() override {
    if (IsOpen()) WriteOut();
  }

 private:
  int WriteBytes(std::string_view bytes) override { return base::WriteAll(file_.Get(), bytes); }
  std::string ReadBytes() override {
    std::string bytes;
    if (const int code = base::ReadAll(file_.Get(), bytes); code != 0) {
      RaiseSystemError(code, ErrorNumber::FileNotFound);
    }
    return bytes;
  }
  void CloseFile(bool complete) override {
    if (const int code = file_.Close(); complete && code != 0) RaiseWriteError(code);
  }

  base::Descriptor file_;
};

int AccessFlags(IOMode mode) {
  switch (mode) {
    case IOMode::ForReading:
      return O_RDONLY;
    case IOMode::ForWriting:
      return O_WRONLY;
    case IOMode::ForAppending:
      return O_WRONLY | O_APPEND;
  }
  Raise(ErrorNumber::InvalidProcedureCall);
}

}  // namespace

TextStreamPtr OpenStream(const std::string& native, IOMode mode, int flags) {
  LocalePtr locale = RequiredLocale();
  // Without O_NONBLOCK, opening a pipe would wait for its other end.
  base::Descriptor file(open(native.c_str(), AccessFlags(mode) | flags | O_CLOEXEC | O_NONBLOCK, 0640));
  if (!file.IsOpen()) RaiseSystemError(errno, ErrorNumber::FileNotFound);
  struct stat status {};
  if (fstat(file.Get(), &status) != 0 || !(S_ISREG(status.st_mode) || S_ISCHR(status.st_mode))) {
    Raise(ErrorNumber::PermissionDenied);
  }
  return std::make_shared<FileStream>(std::move(file), mode, std::move(locale));
}

}  // namespace Scripting::local
