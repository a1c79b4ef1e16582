#include <memory>
#include <utility>

#include "components/interfaces/file_handling.hpp"
#include "effects/wrappers.hpp"
#include "platform/automation/runtime.hpp"

namespace effects {
namespace {

using OrvCommonMTS::FileHandling;
using OrvCommonMTS::FolderKind;
using Kind = SharedChange::Kind;

// An address may hold the account that opens it.
std::string WithoutAccount(std::string_view address) {
  const std::size_t scheme = address.find("://");
  if (scheme == std::string_view::npos) return std::string(address);
  const std::size_t begin = scheme + 3;
  const std::size_t slash = address.find('/', begin);
  const std::size_t at = address.rfind('@', slash);
  if (at == std::string_view::npos || at < begin) return std::string(address);
  return std::string(address.substr(0, begin)) + std::string(address.substr(at + 1));
}

class RecordedSharedFiles final : public FileHandling {
 public:
  RecordedSharedFiles(OrvCommonMTS::FileHandlingPtr real, Recorder& recorder, Places places)
      : real_(std::move(real)), recorder_(recorder), places_(std::move(places)) {}

  bool FileExists(std::string_view name, const automation::VariantArray& kinds) override {
    return real_->FileExists(name, kinds);
  }
  bool IsInUse(std::string_view name) override { return real_->IsInUse(name); }

  void SetInUse(std::string_view name, std::int16_t state) override {
    recorder_.Do(SharedChange{Kind::Mark, std::string(name), {}, {}}, [&] { real_->SetInUse(name, state); });
  }

  void FetchFile(std::string_view ftpPath, std::string_view name, std::string_view fullPath, FolderKind kind,
                 std::int16_t mode) override {
    recorder_.Do(SharedChange{Kind::Fetch, {}, places_.native(fullPath, true), std::string(FolderName(kind))},
                 [&] { real_->FetchFile(ftpPath, name, fullPath, kind, mode); });
  }

  void StoreFile(std::string_view fullPath, FolderKind kind) override {
    recorder_.Do(SharedChange{Kind::Store, {}, places_.native(fullPath, true), std::string(FolderName(kind))},
                 [&] { real_->StoreFile(fullPath, kind); });
  }

  automation::Variant DeleteAgedFiles(std::string_view path, std::int32_t keepMinutes,
                                      FolderKind kind) override {
    const EntryPtr told =
        recorder_.Record(SharedChange{Kind::Delete, {}, WithoutAccount(path), std::string(FolderName(kind))});
    try {
      automation::Variant deleted = real_->DeleteAgedFiles(path, keepMinutes, kind);
      if (const auto* files = std::get_if<std::int32_t>(&deleted.Get()); files != nullptr && *files >= 0) {
        recorder_.Recount(told, static_cast<std::uint64_t>(*files));
      }
      return deleted;
    } catch (...) {
      automation::Error error = automation::PendingError();
      error.WithOutcome(automation::Outcome::Unknown);  // some may be gone
      recorder_.RecordFailure(told, error);
      throw;
    }
  }

  // The whole list is one call: when it fails, nobody knows of which items.
  automation::Variant DeleteListedItems(std::string_view path, const automation::Variant& names,
                                        FolderKind kind) override {
    std::vector<EntryPtr> told;
    try {
      const auto* list = std::get_if<std::shared_ptr<const automation::VariantArray>>(&names.Get());
      if (list != nullptr) {
        for (const automation::Variant& item : **list) {
          std::string name = automation::ToTextOrEmpty(item);
          if (name.empty()) continue;
          told.push_back(recorder_.Record(
              SharedChange{Kind::Delete, std::move(name), {}, std::string(FolderName(kind))}));
        }
      }
      return real_->DeleteListedItems(path, names, kind);
    } catch (...) {
      automation::Error error = automation::PendingError();
      error.WithOutcome(automation::Outcome::Unknown);
      for (const EntryPtr& entry : told) recorder_.RecordFailure(entry, error);
      throw;
    }
  }

 private:
  const OrvCommonMTS::FileHandlingPtr real_;
  Recorder& recorder_;
  const Places places_;
};

}  // namespace

void RecordSharedFiles(automation::ClassTable& classes, const automation::ClassTable& real,
                       Recorder& recorder, const Places& places) {
  if (!real.Contains(OrvCommonMTS::kFileHandlingProgId)) return;
  classes.Register(OrvCommonMTS::kFileHandlingProgId, [real, &recorder, places] {
    return std::make_shared<RecordedSharedFiles>(
        automation::As<FileHandling>(real.Create(OrvCommonMTS::kFileHandlingProgId)), recorder, places);
  });
}

}  // namespace effects
