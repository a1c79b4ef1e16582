#include "platform/scripting/local/layer_stream.hpp"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <utility>

#include "platform/base/content_digest.hpp"
#include "platform/scripting/local/buffered_stream.hpp"
#include "platform/scripting/local/system_error.hpp"

namespace Scripting::local {
namespace {

using automation::ErrorNumber;

void RequireNone(int failure, ErrorNumber missing) {
  if (failure != 0) RaiseSystemError(failure, missing);
}

class LayerStream final : public BufferedStream {
 public:
  LayerStream(LayerPtr layer, std::string native, IOMode mode, LocalePtr locale)
      : BufferedStream(mode, std::move(locale)), layer_(std::move(layer)), native_(std::move(native)) {}
  ~LayerStream() override {
    if (IsOpen()) WriteOut();
  }

 private:
  int WriteBytes(std::string_view bytes) override { return layer_->Append(native_, bytes); }
  std::string ReadBytes() override {
    std::string bytes;
    RequireNone(layer_->Read(native_, bytes), ErrorNumber::FileNotFound);
    return std::exchange(wasRead_, true) ? std::string() : bytes;
  }
  void CloseFile(bool /*complete*/) override {}

  const LayerPtr layer_;
  const std::string native_;
  bool wasRead_ = false;
};

// Shows under its name when it is closed.
class NewLayerStream final : public BufferedStream {
 public:
  NewLayerStream(LayerPtr layer, std::string native, bool replaces,
                 std::shared_ptr<base::CreatedFiles> created, LocalePtr locale)
      : BufferedStream(IOMode::ForWriting, std::move(locale)),
        layer_(std::move(layer)),
        native_(std::move(native)),
        replaces_(replaces),
        created_(std::move(created)) {}

 private:
  int WriteBytes(std::string_view bytes) override {
    bytes_ += bytes;
    return 0;
  }
  void CloseFile(bool /*complete*/) override {
    struct stat status {};
    if (!replaces_ && layer_->Lstat(native_, status) == 0) Raise(ErrorNumber::FileAlreadyExists);
    RequireNone(layer_->Replace(native_, bytes_), ErrorNumber::PathNotFound);
    if (!created_) return;
    RequireNone(layer_->Lstat(native_, status), ErrorNumber::PathNotFound);
    created_->Add(native_, status, base::DigestOf(bytes_));
  }

  const LayerPtr layer_;
  const std::string native_;
  const bool replaces_;
  const std::shared_ptr<base::CreatedFiles> created_;
  std::string bytes_;
};

}  // namespace

TextStreamPtr OpenInLayer(LayerPtr layer, const std::string& native, IOMode mode, int flags) {
  LocalePtr locale = RequiredLocale();
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
  LocalePtr locale = RequiredLocale();
  RequireNone(layer->CanReplace(native), ErrorNumber::PathNotFound);
  return std::make_shared<NewLayerStream>(std::move(layer), native, replaces, std::move(created),
                                          std::move(locale));
}

}  // namespace Scripting::local
