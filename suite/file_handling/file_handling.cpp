#include "suite/file_handling/file_handling.hpp"

#include <sys/stat.h>

#include <cerrno>
#include <chrono>
#include <filesystem>
#include <memory>
#include <mutex>
#include <set>
#include <system_error>
#include <utility>

#include "components/interfaces/file_handling.hpp"
#include "components/interfaces/log.hpp"
#include "platform/automation/error.hpp"
#include "platform/automation/runtime.hpp"
#include "platform/base/text.hpp"
#include "suite/file_handling/folder_store.hpp"
#include "suite/file_handling/ftp_store.hpp"
#include "suite/file_handling/item_name.hpp"
#include "suite/file_handling/layered_store.hpp"
#include "suite/paths/native_path.hpp"

namespace OrvCommonMTS {
namespace {

constexpr std::size_t kFailuresNamed = 3;

std::string_view FolderOf(FolderKind kind) {
  const std::string_view name = FolderName(kind);
  if (name.empty()) throw automation::Error(automation::ErrorNumber::InvalidProcedureCall, kErrorSource);
  return name;
}

// The files that this process is working on. Kept in memory: a process that dies leaves no mark behind that
// would keep the next one from fetching the newest copy.
class InUseMarks {
 public:
  void Set(std::string_view name, bool inUse) {
    const std::lock_guard lock(mutex_);
    if (inUse) {
      names_.emplace(name);
    } else {
      names_.erase(std::string(name));
    }
  }
  bool IsSet(std::string_view name) const {
    const std::lock_guard lock(mutex_);
    return names_.count(std::string(name)) > 0;
  }

 private:
  mutable std::mutex mutex_;
  std::set<std::string> names_;
};

// Collects the items of a list that could not be deleted, for one error.
class Failures {
 public:
  void Add(const std::string& name, const automation::Error& error) {
    if (count_++ < kFailuresNamed) texts_ += (texts_.empty() ? "" : "; ") + name + ": " + error.Description();
  }
  void RaiseIfAny(std::size_t items) const {
    if (count_ == 0) return;
    throw ItemFailure(std::to_string(count_) + " of " + std::to_string(items) +
                      " items could not be deleted: " + texts_ + (count_ > kFailuresNamed ? "; ..." : ""));
  }

 private:
  std::size_t count_ = 0;
  std::string texts_;
};

class SharedFiles : public FileHandling {
 public:
  SharedFiles(FileHandlingOptions options, std::shared_ptr<InUseMarks> marks,
              std::shared_ptr<SharedChanges> changes)
      : options_(std::move(options)), marks_(std::move(marks)), changes_(std::move(changes)) {}

  bool FileExists(std::string_view name, const automation::VariantArray& kinds) override {
    RequireBareName(name);
    if (options_.beforeLooking) options_.beforeLooking();
    const Places& places = FindPlaces();
    std::unique_ptr<SharedStore> store;
    for (const automation::Variant& number : kinds) {
      const std::string_view folder = FolderOf(static_cast<FolderKind>(automation::ToInt16(number)));
      if (ExistsHere(places.dataRoot, folder, name)) return true;
      if (!places.shared) continue;
      if (!store) store = OpenStore(*places.shared);
      if (store->FileExists(folder, std::string(name))) return true;
    }
    return false;
  }

  void SetInUse(std::string_view name, std::int16_t state) override { marks_->Set(name, state != 0); }

  void FetchFile(std::string_view ftpPath, std::string_view name, std::string_view fullPath, FolderKind kind,
                 std::int16_t) override {
    RequireBareName(name);
    RequirePath(fullPath);
    if (options_.beforeLooking) options_.beforeLooking();
    // A file that only this server has stays as it is.
    OpenStore(ftpPath)->Fetch(FolderOf(kind), std::string(name), suite::NativePath(fullPath, "/"));
  }

  bool IsInUse(std::string_view name) override { return marks_->IsSet(name); }

  void StoreFile(std::string_view fullPath, FolderKind kind) override {
    const std::optional<std::string>& shared = FindPlaces().shared;
    if (!shared) return;
    RequirePath(fullPath);
    const std::string name = NameParts(fullPath).back();
    RequireBareName(name);
    if (options_.beforeLooking) options_.beforeLooking();
    OpenStore(*shared)->Store(suite::NativePath(fullPath, "/"), FolderOf(kind), name);
  }

  automation::Variant DeleteAgedFiles(std::string_view path, std::int32_t keepMinutes,
                                      FolderKind kind) override {
    if (kind != FolderKind::Dispatch && kind != FolderKind::TempAttachments && kind != FolderKind::Chat) {
      throw automation::Error(automation::ErrorNumber::InvalidProcedureCall, kErrorSource);
    }
    std::int32_t deleted = 0;
    // No keep period is no licence to delete what the other servers are working with.
    if (keepMinutes <= 0) return deleted;

    const std::unique_ptr<SharedStore> store = OpenStore(path);
    // In whole seconds: the longest keep period there is reaches back four thousand years.
    const std::chrono::sys_seconds keptSince =
        std::chrono::floor<std::chrono::seconds>(options_.clock()) - std::chrono::minutes(keepMinutes);
    const std::vector<StoredFile> files = store->Files(FolderOf(kind));
    if (options_.counted) options_.counted(FolderOf(kind), files.size());
    Failures failures;
    for (const StoredFile& file : files) {
      if (file.lastUsed >= keptSince) continue;
      try {
        if (store->DeleteFile(FolderOf(kind), {file.name})) ++deleted;
      } catch (const ItemFailure& failure) {
        failures.Add(file.name, failure);
      }
    }
    failures.RaiseIfAny(files.size());
    return deleted;
  }

  automation::Variant DeleteListedItems(std::string_view path, const automation::Variant& names,
                                        FolderKind kind) override {
    const bool wholeFolders = kind == FolderKind::QuestionFolders;
    if (!wholeFolders && kind != FolderKind::Chat && kind != FolderKind::OldAttachmentFiles) {
      throw automation::Error(automation::ErrorNumber::InvalidProcedureCall, kErrorSource);
    }
    const auto* list = std::get_if<std::shared_ptr<const automation::VariantArray>>(&names.Get());
    if (list == nullptr) throw automation::Error(automation::ErrorNumber::TypeMismatch, kErrorSource);

    std::int32_t deleted = 0;
    std::unique_ptr<SharedStore> store;
    Failures failures;
    for (const automation::Variant& item : **list) {
      const std::string name = automation::ToTextOrEmpty(item);
      if (name.empty()) continue;  // callers size their arrays before they know what they will hold
      const std::size_t parts = kind == FolderKind::OldAttachmentFiles ? 2 : 1;
      if (const std::optional<std::string> problem = NameProblem(name, parts)) {
        WriteRefusal(name, *problem, kind);
        continue;
      }
      if (!store) store = OpenStore(path);
      try {
        const bool gone = wholeFolders ? store->DeleteTree(FolderOf(kind), name)
                                       : store->DeleteFile(FolderOf(kind), NameParts(name));
        if (gone) ++deleted;
      } catch (const ItemFailure& failure) {
        failures.Add(name, failure);
      }
    }
    failures.RaiseIfAny((*list)->size());
    return deleted;
  }

 private:
  const Places& FindPlaces() {
    if (!places_) places_ = options_.places();
    return *places_;
  }

  std::unique_ptr<SharedStore> OpenStore(std::string_view path) const {
    // Spaces around it come from the row of PARAMETERS, whose values nobody trims.
    path = base::Trimmed(path, " ");
    if (path.empty()) {
      throw automation::Error(automation::ErrorNumber::PathNotFound, kErrorSource,
                              "The path of the shared folders is empty.");
    }
    if (!IsFtpAddress(path)) return OpenFolderStore(path, options_.layer);
    auto store = OpenFtpStore(ParseFtpAddress(path), options_.ftp);
    return changes_ ? MakeReadOnlyStore(std::move(store), std::string(path), changes_) : std::move(store);
  }

  bool ExistsHere(const std::string& dataRoot, std::string_view folder, std::string_view name) const {
    RequirePath(dataRoot);
    const std::filesystem::path root = suite::NativePath(dataRoot, "/");
    if (options_.layer) return ExistsInLayer(root, folder, name);
    const std::filesystem::path parent = suite::NativePath(folder, root);
    std::filesystem::path path = parent / name;
    std::error_code failed;
    std::filesystem::file_status status = std::filesystem::status(path, failed);
    if (status.type() == std::filesystem::file_type::not_found) {
      if (const auto other = OtherSpelling(parent, std::string(name))) {
        path = parent / *other;
        status = std::filesystem::status(path, failed);
      }
    }
    // What cannot be looked at must not be taken for missing: the caller would make it anew.
    if (status.type() == std::filesystem::file_type::none) {
      throw automation::Error(automation::ErrorNumber::PathFileAccess, kErrorSource,
                              path.string() + ": " + failed.message());
    }
    return std::filesystem::is_regular_file(status);
  }

  bool ExistsInLayer(const std::filesystem::path& root, std::string_view folder,
                     std::string_view name) const {
    const auto below = [this](const std::string& in, const std::string& wanted) {
      return OtherSpelling(in, wanted);
    };
    const std::filesystem::path path =
        EntryInLayer(*options_.layer, EntryInLayer(*options_.layer, root, std::string(folder), below),
                     std::string(name), below);
    struct stat status {};
    const int failure = options_.layer->Stat(path, status);
    if (failure == ENOENT || failure == ENOTDIR) return false;
    if (failure != 0) {
      throw automation::Error(automation::ErrorNumber::PathFileAccess, kErrorSource,
                              path.string() + ": " + std::generic_category().message(failure));
    }
    return S_ISREG(status.st_mode);
  }

  std::optional<std::string> OtherSpelling(const std::filesystem::path& folder,
                                           const std::string& name) const {
    if (options_.otherSpelling) return options_.otherSpelling(folder.string(), name);
    return suite::NativePath(name, folder).filename().string();
  }

  // A caller that goes on as if the file did not exist would make it anew, over the shared one.
  static void RequireBareName(std::string_view name) {
    if (const std::optional<std::string> problem = NameProblem(name, 1)) Refuse("name", name, *problem);
  }

  static void RequirePath(std::string_view path) {
    if (const std::optional<std::string> problem = PathProblem(path)) Refuse("path", path, *problem);
  }

  [[noreturn]] static void Refuse(const std::string& what, std::string_view text,
                                  const std::string& problem) {
    throw automation::Error(
        automation::ErrorNumber::BadFileName, kErrorSource,
        "The " + what + " \"" + base::WithControlsShown(text) + "\" is refused: " + problem + ".");
  }

  static void WriteRefusal(const std::string& name, const std::string& problem, FolderKind kind) {
    automation::Variant ignored;
    automation::CreateObject<Vantrel::Log>(Vantrel::kLogProgId)
        ->WriteLogEntry(kErrorSource,
                        std::string(kErrorSource) + ".DeleteListedItems refused the name \"" +
                            base::WithControlsShown(name) + "\" in " + std::string(FolderOf(kind)) + ": " +
                            problem + ".",
                        0, ignored);
  }

  FileHandlingOptions options_;
  std::optional<Places> places_;
  std::shared_ptr<InUseMarks> marks_;
  std::shared_ptr<SharedChanges> changes_;  // null where changes are made
};

}  // namespace

void RegisterFileHandling(automation::ClassTable& classes, FileHandlingOptions options) {
  std::shared_ptr<SharedChanges> changes;
  if (options.layer)
    changes = std::make_shared<SharedChanges>(SharedChanges{options.layer, options.ownFolder, {}, {}});
  classes.Register(kFileHandlingProgId,
                   [options = std::move(options), marks = std::make_shared<InUseMarks>(), changes] {
                     return std::make_shared<SharedFiles>(options, marks, changes);
                   });
}

}  // namespace OrvCommonMTS
