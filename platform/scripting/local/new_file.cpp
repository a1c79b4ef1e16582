#include "platform/scripting/local/new_file.hpp"

#include <cstddef>
#include <memory>
#include <system_error>
#include <utility>

#include "platform/automation/runtime.hpp"
#include "platform/base/content_digest.hpp"
#include "platform/base/file_replacement.hpp"
#include "platform/scripting/local/system_error.hpp"

namespace Scripting::local {
namespace {

using automation::ErrorNumber;
using base::FileReplacement;

constexpr std::size_t kBufferSize = 65'536;

class NewFileStream : public TextStream {
 public:
  NewFileStream(std::string native, const std::optional<struct stat>& existing,
                std::shared_ptr<base::CreatedFiles> created, std::shared_ptr<base::PendingFiles> pending,
                std::shared_ptr<const automation::Locale> locale)
      : native_(std::move(native)),
        file_(std::make_unique<FileReplacement>(native_, existing)),
        created_(std::move(created)),
        pending_(existing ? nullptr : std::move(pending)),
        locale_(std::move(locale)) {}

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
    std::unique_ptr<FileReplacement> file = std::move(file_);
    try {
      const struct stat status =
          pending_ ? file->Status() : file->Commit(FileReplacement::Durability::Content);
      if (pending_) pending_->Keep(std::move(file));
      if (created_) created_->Add(native_, status, content_.Get());
    } catch (const std::system_error& error) {
      RaiseSystemError(error.code().value(), ErrorNumber::PathNotFound);
    }
  }

 private:
  void RequireOpen() const {
    if (!file_) Raise(ErrorNumber::ObjectNotSet);
  }

  void Flush() {
    const std::string bytes = std::exchange(buffer_, {});
    content_.Add(bytes);
    try {
      file_->Write(bytes);
    } catch (const std::system_error& error) {
      file_.reset();
      RaiseWriteError(error.code().value());
    }
  }

  std::string native_;
  std::unique_ptr<FileReplacement> file_;  // null once it is closed
  std::shared_ptr<base::CreatedFiles> created_;
  std::shared_ptr<base::PendingFiles> pending_;  // null: the file gets its name at once
  base::ContentDigest content_;
  std::shared_ptr<const automation::Locale> locale_;
  std::string buffer_;
};

}  // namespace

TextStreamPtr OpenNewFile(const std::string& native, const std::optional<struct stat>& existing,
                          std::shared_ptr<base::CreatedFiles> created,
                          std::shared_ptr<base::PendingFiles> pending) {
  automation::CurrentLocale();  // raises before anything is made
  std::shared_ptr<const automation::Locale> locale = automation::CurrentRuntime().locale;
  try {
    return std::make_shared<NewFileStream>(native, existing, std::move(created), std::move(pending),
                                           std::move(locale));
  } catch (const std::system_error& error) {
    RaiseSystemError(error.code().value(), ErrorNumber::PathNotFound);
  }
}

}  // namespace Scripting::local
