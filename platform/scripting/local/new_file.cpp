#include "platform/scripting/local/new_file.hpp"

#include <cstddef>
#include <memory>
#include <system_error>
#include <utility>

#include "platform/automation/runtime.hpp"
#include "platform/base/file_replacement.hpp"
#include "platform/scripting/local/system_error.hpp"

namespace Scripting::local {
namespace {

using automation::ErrorNumber;
using base::FileReplacement;

constexpr std::size_t kBufferSize = 65'536;

class NewFileStream : public TextStream {
 public:
  NewFileStream(std::unique_ptr<FileReplacement> file, std::shared_ptr<const automation::Locale> locale)
      : file_(std::move(file)), locale_(std::move(locale)) {}

  void Write(std::string_view text) override {
    RequireOpen();
    buffer_ += locale_->ToCodePage(text);
    if (buffer_.size() >= kBufferSize) Flush();
  }

  void WriteLine(std::string_view text) override {
    Write(text);
    Write("\r\n");
  }

  std::string ReadAll() override {
    RequireOpen();
    Raise(ErrorNumber::BadFileMode);
  }

  // Only the content is synced before it gets its name: a power cut leaves the whole file or none.
  void Close() override {
    if (!file_) return;
    Flush();
    const std::unique_ptr<FileReplacement> file = std::move(file_);
    try {
      file->Commit(FileReplacement::Durability::Content);
    } catch (const std::system_error& error) {
      RaiseSystemError(error.code().value(), ErrorNumber::PathNotFound);
    }
  }

 private:
  void RequireOpen() const {
    if (!file_) Raise(ErrorNumber::ObjectNotSet);
  }

  void Flush() {
    try {
      file_->Write(std::exchange(buffer_, {}));
    } catch (const std::system_error& error) {
      file_.reset();
      RaiseWriteError(error.code().value());
    }
  }

  std::unique_ptr<FileReplacement> file_;  // null once it is closed
  std::shared_ptr<const automation::Locale> locale_;
  std::string buffer_;
};

}  // namespace

TextStreamPtr OpenNewFile(const std::string& native, const std::optional<struct stat>& existing) {
  automation::CurrentLocale();  // raises before anything is made
  std::shared_ptr<const automation::Locale> locale = automation::CurrentRuntime().locale;
  try {
    return std::make_shared<NewFileStream>(std::make_unique<FileReplacement>(native, existing),
                                           std::move(locale));
  } catch (const std::system_error& error) {
    RaiseSystemError(error.code().value(), ErrorNumber::PathNotFound);
  }
}

}  // namespace Scripting::local
