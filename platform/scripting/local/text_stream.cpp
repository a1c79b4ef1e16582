#include "platform/scripting/local/text_stream.hpp"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstddef>
#include <memory>
#include <utility>

#include "platform/automation/runtime.hpp"
#include "platform/base/descriptor.hpp"
#include "platform/scripting/local/system_error.hpp"

namespace Scripting::local {
namespace {

using automation::ErrorNumber;

constexpr std::size_t kBufferSize = 65'536;

class FileStream : public TextStream {
 public:
  FileStream(base::Descriptor file, IOMode mode, std::shared_ptr<const automation::Locale> locale)
      : file_(std::move(file)), mode_(mode), locale_(std::move(locale)) {}

  // A destructor has nobody to tell of a failure; callers who want to know call Close.
  ~FileStream() override {
    if (file_.IsOpen()) WriteOut();
  }

  void Write(std::string_view text) override {
    RequireMode(mode_ != IOMode::ForReading);
    buffer_ += locale_->ToCodePage(text);
    if (buffer_.size() < kBufferSize) return;
    if (const int code = WriteOut(); code != 0) RaiseWriteError(code);
  }

  void WriteLine(std::string_view text) override {
    Write(text);
    Write("\r\n");
  }

  std::string ReadAll() override {
    RequireMode(mode_ == IOMode::ForReading);
    std::string bytes;
    if (const int code = base::ReadAll(file_.Get(), bytes); code != 0) {
      RaiseSystemError(code, ErrorNumber::FileNotFound);
    }
    if (bytes.empty()) Raise(ErrorNumber::InputPastEnd);
    return locale_->FromCodePage(bytes);
  }

  void Close() override {
    if (!file_.IsOpen()) return;
    const int written = WriteOut();
    const int closed = file_.Close();
    if (written != 0) RaiseWriteError(written);
    if (closed != 0) RaiseWriteError(closed);
  }

 private:
  void RequireMode(bool right) const {
    if (!file_.IsOpen()) Raise(ErrorNumber::ObjectNotSet);
    if (!right) Raise(ErrorNumber::BadFileMode);
  }

  // 0, or the errno of the write that failed; what could not be written is dropped.
  int WriteOut() { return base::WriteAll(file_.Get(), std::exchange(buffer_, {})); }

  base::Descriptor file_;
  IOMode mode_;
  std::shared_ptr<const automation::Locale> locale_;
  std::string buffer_;
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
  automation::CurrentLocale();  // raises before anything is made or emptied
  std::shared_ptr<const automation::Locale> locale = automation::CurrentRuntime().locale;
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
