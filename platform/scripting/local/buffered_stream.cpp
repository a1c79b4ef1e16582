#include "platform/scripting/local/buffered_stream.hpp"

#include <cstddef>
#include <utility>

#include "platform/automation/runtime.hpp"
#include "platform/scripting/local/system_error.hpp"

namespace Scripting::local {
namespace {

using automation::ErrorNumber;

constexpr std::size_t kBufferSize = 65'536;

}  // namespace

LocalePtr RequiredLocale() {
  automation::CurrentLocale();  // raises
  return automation::CurrentRuntime().locale;
}

void BufferedStream::RequireMode(bool isRight) const {
  if (!isOpen_) Raise(ErrorNumber::ObjectNotSet);
  if (!isRight) Raise(ErrorNumber::BadFileMode);
}

void BufferedStream::Write(std::string_view text) {
  RequireMode(mode_ != IOMode::ForReading);
  buffer_ += locale_->ToCodePage(text);
  if (buffer_.size() < kBufferSize) return;
  if (const int code = WriteOut(); code != 0) RaiseWriteError(code);
}

void BufferedStream::WriteLine(std::string_view text) {
  Write(text);
  Write("\r\n");
}

std::string BufferedStream::ReadAll() {
  RequireMode(mode_ == IOMode::ForReading);
  const std::string bytes = ReadBytes();
  if (bytes.empty()) Raise(ErrorNumber::InputPastEnd);
  return locale_->FromCodePage(bytes);
}

void BufferedStream::Close() {
  if (!isOpen_) return;
  const int code = WriteOut();
  End();
  CloseFile(code == 0);
  if (code != 0) RaiseWriteError(code);
}

int BufferedStream::WriteOut() {
  const std::string bytes = std::exchange(buffer_, {});
  return bytes.empty() ? 0 : WriteBytes(bytes);
}

}  // namespace Scripting::local
