#include "platform/scripting/local/layer_stream.hpp"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstddef>
#include <utility>

#include "platform/automation/runtime.hpp"
#include "platform/base/content_digest.hpp"
#include "platform/scripting/local/system_error.hpp"

namespace Scripting::local {
namespace {

using automation::ErrorNumber;

constexpr std::size_t kBufferSize = 65'536;

void RequireNone(int failure, ErrorNumber missing) {
  if (failure != 0) RaiseSystemError(failure, missing);
}

class LayerStream : public TextStream {
 public:
  LayerStream(LayerPtr layer, std::string native, IOMode mode,
              std::shared_ptr<const automation::Locale> locale)
      : layer_(std::move(layer)), native_(std::move(native)), mode_(mode), locale_(std::move(locale)) {}

  ~LayerStream() override {
    if (isOpen_) WriteOut();
  }

  void Write(std::string_view text) override {
    RequireMode(mode_ != IOMode::ForReading);
    buffer_ += locale_->ToCodePage(text);
    if (buffer_.size() >= kBufferSize) Flush();
  }

  void WriteLine(std::string_view text) override {
    Write(text);
    buffer_ += "\r\n";
  }

  std::string ReadAll() override {
    RequireMode(mode_ == IOMode::ForReading);
    std::string bytes;
    RequireNone(layer_->Read(native_, bytes), ErrorNumber::FileNotFound);
    if (std::exchange(wasRead_, true) || bytes.empty()) Raise(ErrorNumber::InputPastEnd);
    return locale_->FromCodePage(bytes);
  }

  void Close() override {
    if (!std::exchange(isOpen_, false)) return;
    Flush();
  }

 private:
  void RequireMode(bool right) const {
    if (!isOpen_) Raise(ErrorNumber::ObjectNotSet);
    if (!right) Raise(ErrorNumber::BadFileMode);
  }

  void Flush() {
    if (const int problem = WriteOut(); problem != 0) RaiseWriteError(problem);
  }

  int WriteOut() {
    const std::string bytes = std::exchange(buffer_, {});
    return bytes.empty() ? 0 : layer_->Append(native_, bytes);
  }

  const LayerPtr layer_;
  const std::string native_;
  const IOMode mode_;
  const std::shared_ptr<const automation::Locale> locale_;
  std::string buffer_;
  bool isOpen_ = true;
  bool wasRead_ = false;
};

// Shows under its name when it is closed.
class NewLayerStream : public TextStream {
 public:
  NewLayerStream(LayerPtr layer, std::string native, bool replaces,
                 std::shared_ptr<base::CreatedFiles> created,
                 std::shared_ptr<const automation::Locale> locale)
      : layer_(std::move(layer)),
        native_(std::move(native)),
        replaces_(replaces),
        created_(std::move(created)),
        locale_(std::move(locale)) {}

  void Write(std::string_view text) override {
    if (!isOpen_) Raise(ErrorNumber::ObjectNotSet);
    bytes_ += locale_->ToCodePage(text);
  }

  void WriteLine(std::string_view text) override {
    Write(text);
    Write("\r\n");
  }

  std::string ReadAll() override { Raise(isOpen_ ? ErrorNumber::BadFileMode : ErrorNumber::ObjectNotSet); }

  void Close() override {
    if (!std::exchange(isOpen_, false)) return;
    struct stat status {};
    if (!replaces_ && layer_->Lstat(native_, status) == 0) Raise(ErrorNumber::FileAlreadyExists);
    RequireNone(layer_->Replace(native_, bytes_), ErrorNumber::PathNotFound);
    if (!created_) return;
    base::ContentDigest content;
    content.Add(bytes_);
    RequireNone(layer_->Lstat(native_, status), ErrorNumber::PathNotFound);
    created_->Add(native_, status, content.Get());
  }

 private:
  const LayerPtr layer_;
  const std::string native_;
  const bool replaces_;
  const std::shared_ptr<base::CreatedFiles> created_;
  const std::shared_ptr<const automation::Locale> locale_;
  std::string bytes_;
  bool isOpen_ = true;
};

std::shared_ptr<const automation::Locale> Locale() {
  automation::CurrentLocale();  // raises before anything is made or emptied
  return automation::CurrentRuntime().locale;
}

}  // namespace

TextStreamPtr OpenInLayer(LayerPtr layer, const std::string& native, IOMode mode, int flags) {
  auto locale = Locale();
  struct stat status {};
  const int missing = layer->Stat(native, status);
  if (missing != 0 && (missing != ENOENT || (flags & O_CREAT) == 0)) {
    RaiseSystemError(missing, ErrorNumber::FileNotFound);
  }
  if (missing == 0 && !S_ISREG(status.st_mode) && !S_ISCHR(status.st_mode))
    Raise(ErrorNumber::PermissionDenied);
  const bool empties = missing != 0 || (flags & O_TRUNC) != 0;
  if (empties) {
    RequireNone(layer->Replace(native, {}), ErrorNumber::FileNotFound);
  } else if (mode != IOMode::ForReading) {
    RequireNone(layer->Append(native, {}), ErrorNumber::FileNotFound);
  } else {
    std::string bytes;
    RequireNone(layer->Read(native, bytes), ErrorNumber::FileNotFound);
  }
  return std::make_shared<LayerStream>(std::move(layer), native, mode, std::move(locale));
}

TextStreamPtr OpenNewInLayer(LayerPtr layer, const std::string& native, bool replaces,
                             std::shared_ptr<base::CreatedFiles> created) {
  auto locale = Locale();
  RequireNone(layer->CanReplace(native), ErrorNumber::PathNotFound);
  return std::make_shared<NewLayerStream>(std::move(layer), native, replaces, std::move(created),
                                          std::move(locale));
}

}  // namespace Scripting::local
