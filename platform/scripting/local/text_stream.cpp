#include "platform/scripting/local/text_stream.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <memory>
#include <utility>

#include "platform/automation/runtime.hpp"
#include "platform/scripting/local/system_error.hpp"

namespace Scripting::local {
namespace {

using automation::ErrorNumber;

constexpr std::size_t kBufferSize = 65'536;

class FileStream : public TextStream {
 public:
  FileStream(int descriptor, IOMode mode, std::shared_ptr<const automation::Locale> locale)
      : descriptor_(descriptor), mode_(mode), locale_(std::move(locale)) {}

  ~FileStream() override {
    if (descriptor_ < 0) return;
    try {
      Flush();
    } catch (const automation::Error&) {
      // A destructor has nobody to tell; callers who want to know call Close.
    }
    close(descriptor_);
  }

  void Write(std::string_view text) override {
    RequireMode(mode_ != IOMode::ForReading);
    buffer_ += locale_->ToCodePage(text);
    if (buffer_.size() >= kBufferSize) Flush();
  }

  void WriteLine(std::string_view text) override {
    RequireMode(mode_ != IOMode::ForReading);
    buffer_ += locale_->ToCodePage(text);
    buffer_ += "\r\n";
    if (buffer_.size() >= kBufferSize) Flush();
  }

  std::string ReadAll() override {
    RequireMode(mode_ == IOMode::ForReading);
    std::string bytes;
    std::string chunk(kBufferSize, '\0');
    while (true) {
      const ssize_t count = read(descriptor_, chunk.data(), chunk.size());
      if (count < 0 && errno == EINTR) continue;
      if (count < 0) RaiseSystemError(errno, ErrorNumber::FileNotFound);
      if (count == 0) break;
      bytes.append(chunk, 0, static_cast<std::size_t>(count));
    }
    if (bytes.empty()) Raise(ErrorNumber::InputPastEnd);
    return locale_->FromCodePage(bytes);
  }

  void Close() override {
    if (descriptor_ < 0) return;
    const int descriptor = std::exchange(descriptor_, -1);
    const int flushed = WriteOut(descriptor);
    // Network file systems may report a failed write only here.
    const int closed = close(descriptor) == 0 ? 0 : errno;
    if (flushed != 0) RaiseWriteError(flushed);
    if (closed != 0 && closed != EINTR) RaiseWriteError(closed);
  }

 private:
  void RequireMode(bool right) const {
    if (descriptor_ < 0) Raise(ErrorNumber::ObjectNotSet);
    if (!right) Raise(ErrorNumber::BadFileMode);
  }

  void Flush() {
    if (const int problem = WriteOut(descriptor_); problem != 0) RaiseWriteError(problem);
  }

  // 0, or the errno of the write that failed; what could not be written is dropped.
  int WriteOut(int descriptor) {
    const std::string bytes = std::exchange(buffer_, {});
    std::size_t done = 0;
    while (done < bytes.size()) {
      const ssize_t count = write(descriptor, bytes.data() + done, bytes.size() - done);
      if (count < 0 && errno == EINTR) continue;
      if (count < 0) return errno;
      done += static_cast<std::size_t>(count);
    }
    return 0;
  }

  int descriptor_;
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
  const int descriptor = open(native.c_str(), AccessFlags(mode) | flags | O_CLOEXEC | O_NONBLOCK, 0640);
  if (descriptor < 0) RaiseSystemError(errno, ErrorNumber::FileNotFound);
  struct stat status {};
  if (fstat(descriptor, &status) != 0 || !(S_ISREG(status.st_mode) || S_ISCHR(status.st_mode))) {
    close(descriptor);
    Raise(ErrorNumber::PermissionDenied);
  }
  return std::make_shared<FileStream>(descriptor, mode, std::move(locale));
}

}  // namespace Scripting::local
