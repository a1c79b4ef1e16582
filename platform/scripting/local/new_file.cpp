#include "platform/scripting/local/new_file.hpp"

#include <memory>
#include <system_error>
#include <utility>

#include "platform/base/content_digest.hpp"
#include "platform/base/file_replacement.hpp"
#include "platform/scripting/local/buffered_stream.hpp"
#include "platform/scripting/local/system_error.hpp"

namespace Scripting::local {
namespace {

using automation::ErrorNumber;
using base::FileReplacement;

class NewFileStream final : public BufferedStream {
 public:
  NewFileStream(std::string native, const std::optional<struct stat>& existing,
                std::shared_ptr<base::CreatedFiles> created, std::shared_ptr<base::PendingFiles> pending,
                LocalePtr locale)
      : BufferedStream(IOMode::ForWriting, std::move(locale)),
        native_(std::move(native)),
        file_(std::make_unique<FileReplacement>(native_, existing)),
        created_(std::move(created)),
        pending_(existing ? nullptr : std::move(pending)) {}

 private:
  int WriteBytes(std::string_view bytes) override {
    content_.Add(bytes);
    try {
      file_->Write(bytes);
      return 0;
    } catch (const std::system_error& error) {
      file_.reset();
      End();
      return error.code().value();
    }
  }

  // Only the content is synced before it gets its name: a power cut leaves the whole file or none.
  void CloseFile(bool complete) override {
    std::unique_ptr<FileReplacement> file = std::move(file_);
    if (!complete) return;
    try {
      const struct stat status =
          pending_ ? file->Status() : file->Commit(FileReplacement::Durability::Content);
      if (pending_) pending_->Keep(std::move(file));
      if (created_) created_->Add(native_, status, content_.Get());
    } catch (const std::system_error& error) {
      RaiseSystemError(error.code().value(), ErrorNumber::PathNotFound);
    }
  }

  std::string native_;
  std::unique_ptr<FileReplacement> file_;  // null once it is closed
  std::shared_ptr<base::CreatedFiles> created_;
  std::shared_ptr<base::PendingFiles> pending_;  // null: the file gets its name at once
  base::ContentDigest content_;
};

}  // namespace

TextStreamPtr OpenNewFile(const std::string& native, const std::optional<struct stat>& existing,
                          std::shared_ptr<base::CreatedFiles> created,
                          std::shared_ptr<base::PendingFiles> pending) {
  LocalePtr locale = RequiredLocale();
  try {
    return std::make_shared<NewFileStream>(native, existing, std::move(created), std::move(pending),
                                           std::move(locale));
  } catch (const std::system_error& error) {
    RaiseSystemError(error.code().value(), ErrorNumber::PathNotFound);
  }
}

}  // namespace Scripting::local
