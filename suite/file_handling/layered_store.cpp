#include "suite/file_handling/layered_store.hpp"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <system_error>
#include <utility>
#include <vector>

#include "platform/base/text.hpp"
#include "suite/paths/native_path.hpp"

namespace OrvCommonMTS {
namespace {

namespace fs = std::filesystem;

bool IsMissing(int code) {
  return code == ENOENT || code == ENOTDIR;
}

std::string Message(const fs::path& path, int code) {
  return path.string() + ": " + std::generic_category().message(code);
}

[[noreturn]] void Fail(const fs::path& path, int code) {
  throw automation::Error(automation::ErrorNumber::PathFileAccess, kErrorSource, Message(path, code));
}

void RequireNone(const fs::path& path, int code) {
  if (code != 0) Fail(path, code);
}

class LayeredFolderStore final : public SharedStore {
 public:
  LayeredFolderStore(fs::path root, std::shared_ptr<base::FileLayer> layer)
      : root_(std::move(root)), layer_(std::move(layer)) {}

  std::vector<StoredFile> Files(std::string_view folder) override {
    const fs::path path = FolderPath(folder);
    std::vector<base::FileLayer::Child> children;
    const int failure = layer_->List(path, children);
    if (failure == ENOENT) return {};
    RequireNone(path, failure);
    std::vector<StoredFile> files;
    for (base::FileLayer::Child& child : children) {
      struct stat status {};
      if (layer_->Lstat(path / child.name, status) != 0 || !S_ISREG(status.st_mode)) continue;
      const std::time_t lastUsed = std::max(status.st_mtim.tv_sec, status.st_atim.tv_sec);
      files.push_back({std::move(child.name), std::chrono::sys_seconds(std::chrono::seconds(lastUsed))});
    }
    return files;
  }

  bool DeleteFile(std::string_view folder, const std::vector<std::string>& parts) override {
    fs::path path = FolderPath(folder) / parts.front();
    struct stat status {};
    bool there = Look(path, status);
    for (std::size_t i = 1; i < parts.size(); ++i) {
      if (there && S_ISLNK(status.st_mode)) throw ItemFailure(path.string() + " is a link");
      path /= parts[i];
      there = Look(path, status);
    }
    if (!there) return false;
    if (S_ISDIR(status.st_mode)) throw ItemFailure(path.string() + " is a folder");
    Check(path, layer_->RemoveFile(path));
    return true;
  }

  bool DeleteTree(std::string_view folder, const std::string& name) override {
    const fs::path path = FolderPath(folder) / name;
    struct stat status {};
    if (!Look(path, status)) return false;
    Check(path, RemoveAll(path));
    return true;
  }

  bool FileExists(std::string_view folder, const std::string& name) override {
    const fs::path path = FolderPath(folder) / name;
    struct stat status {};
    const int failure = layer_->Stat(path, status);
    if (IsMissing(failure)) return false;
    RequireNone(path, failure);
    return S_ISREG(status.st_mode);
  }

  bool Fetch(std::string_view folder, const std::string& name, const fs::path& target) override {
    if (!FileExists(folder, name)) return false;
    Copy(FolderPath(folder) / name, target);
    return true;
  }

  void Store(const fs::path& source, std::string_view folder, const std::string& name) override {
    const fs::path path = FolderPath(folder);
    struct stat status {};
    if (layer_->Stat(path, status) != 0) RequireNone(path, layer_->MakeFolder(path));
    Copy(source, path / name);
  }

 private:
  fs::path FolderPath(std::string_view folder) const {
    return EntryInLayer(*layer_, root_, std::string(folder),
                        [](const std::string& in, const std::string& name) {
                          return std::optional(suite::NativePath(name, in).filename().string());
                        });
  }

  bool Look(const fs::path& path, struct stat& status) const {
    const int failure = layer_->Lstat(path, status);
    if (IsMissing(failure)) return false;
    Check(path, failure);
    return true;
  }

  static void Check(const fs::path& path, int failure) {
    if (failure != 0) throw ItemFailure(Message(path, failure));
  }

  int RemoveAll(const fs::path& path) {
    struct stat status {};
    if (const int failure = layer_->Lstat(path, status)) return failure;
    if (!S_ISDIR(status.st_mode)) return layer_->RemoveFile(path);
    std::vector<base::FileLayer::Child> children;
    if (const int failure = layer_->List(path, children)) return failure;
    for (const base::FileLayer::Child& child : children) {
      if (const int failure = RemoveAll(path / child.name)) return failure;
    }
    return layer_->RemoveFolder(path);
  }

  void Copy(const fs::path& source, const fs::path& target) {
    std::string bytes;
    RequireNone(target, layer_->Read(source, bytes));
    RequireNone(target, layer_->Replace(target, bytes));
  }

  const fs::path root_;
  const std::shared_ptr<base::FileLayer> layer_;
};

// Whether an item that is deleted was there is not asked of the server: nobody goes by it.
class ReadOnlyStore final : public SharedStore {
 public:
  ReadOnlyStore(std::unique_ptr<SharedStore> real, std::string place, std::shared_ptr<SharedChanges> changes)
      : real_(std::move(real)), place_(std::move(place)), changes_(std::move(changes)) {}

  std::vector<StoredFile> Files(std::string_view folder) override {
    std::vector<StoredFile> files = real_->Files(folder);
    std::erase_if(files, [&](const StoredFile& file) { return IsGone(Key(folder, file.name)); });
    return files;
  }

  bool DeleteFile(std::string_view folder, const std::vector<std::string>& parts) override {
    std::string name;
    for (const std::string& part : parts) name += (name.empty() ? "" : "/") + part;
    return Remove(Key(folder, name));
  }

  bool DeleteTree(std::string_view folder, const std::string& name) override {
    return Remove(Key(folder, name));
  }

  bool FileExists(std::string_view folder, const std::string& name) override {
    const std::string key = Key(folder, name);
    if (changes_->stored.contains(key)) return true;
    return !IsGone(key) && real_->FileExists(folder, name);
  }

  bool Fetch(std::string_view folder, const std::string& name, const fs::path& target) override {
    const std::string key = Key(folder, name);
    std::string bytes;
    if (const auto stored = changes_->stored.find(key); stored != changes_->stored.end()) {
      RequireNone(target, changes_->layer->Read(stored->second, bytes));
    } else {
      if (IsGone(key)) return false;
      const fs::path copy = changes_->ownFolder / "fetched";
      if (!real_->Fetch(folder, name, copy)) return false;
      const int failure = changes_->layer->Read(copy, bytes);
      std::error_code ignored;
      fs::remove(copy, ignored);
      RequireNone(target, failure);
    }
    RequireNone(target, changes_->layer->Replace(target, bytes));
    return true;
  }

  void Store(const fs::path& source, std::string_view folder, const std::string& name) override {
    const std::string key = Key(folder, name);
    std::string bytes;
    RequireNone(source, changes_->layer->Read(source, bytes));
    const std::string path =
        (changes_->ownFolder / ("stored-" + std::to_string(changes_->stored.size()))).string();
    const auto [stored, isNew] = changes_->stored.emplace(key, path);
    RequireNone(source, changes_->layer->Replace(stored->second, bytes));
    changes_->gone.erase(key);
  }

 private:
  std::string Key(std::string_view folder, std::string_view name) const {
    return base::ToAsciiLower(place_ + "/" + std::string(folder) + "/" + std::string(name));
  }

  bool IsGone(const std::string& key) const {
    if (changes_->gone.contains(key)) return true;
    const std::size_t slash = key.rfind('/');
    return slash > place_.size() && changes_->gone.contains(key.substr(0, slash));
  }

  bool Remove(const std::string& key) {
    if (IsGone(key)) return false;
    changes_->stored.erase(key);
    changes_->gone.insert(key);
    return true;
  }

  const std::unique_ptr<SharedStore> real_;
  const std::string place_;
  const std::shared_ptr<SharedChanges> changes_;
};

}  // namespace

std::unique_ptr<SharedStore> MakeLayeredFolderStore(fs::path root, std::shared_ptr<base::FileLayer> layer) {
  return std::make_unique<LayeredFolderStore>(std::move(root), std::move(layer));
}

std::unique_ptr<SharedStore> MakeReadOnlyStore(std::unique_ptr<SharedStore> real, std::string place,
                                               std::shared_ptr<SharedChanges> changes) {
  return std::make_unique<ReadOnlyStore>(std::move(real), std::move(place), std::move(changes));
}

fs::path EntryInLayer(const base::FileLayer& layer, const fs::path& folder, const std::string& name,
                      const std::function<std::optional<std::string>(const std::string& folder,
                                                                     const std::string& name)>& below) {
  fs::path exact = folder / name;
  struct stat status {};
  if (layer.Lstat(exact, status) == 0) return exact;
  for (const std::string& own : layer.OwnNamesLike(folder, name)) {
    if (base::EqualsIgnoringAsciiCase(own, name)) return folder / own;
  }
  const std::optional<std::string> found = below(folder.string(), name);
  return found && !layer.Hides(folder, *found) ? folder / *found : exact;
}

}  // namespace OrvCommonMTS
