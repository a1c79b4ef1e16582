#include "suite/file_handling/folder_store.hpp"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <ctime>
#include <string>
#include <system_error>

#include "platform/base/descriptor.hpp"
#include "platform/base/file_replacement.hpp"
#include "platform/base/text.hpp"
#include "suite/file_handling/item_name.hpp"
#include "suite/file_handling/layered_store.hpp"
#include "suite/paths/native_path.hpp"

namespace OrvCommonMTS {
namespace {

namespace fs = std::filesystem;

class FolderStore : public SharedStore {
 public:
  explicit FolderStore(fs::path root) : root_(std::move(root)) {}

  std::vector<StoredFile> Files(std::string_view folder) override {
    std::vector<StoredFile> files;
    const fs::path path = FolderPath(folder);
    std::error_code failed;
    fs::directory_iterator entry(path, failed);
    if (failed == std::errc::no_such_file_or_directory) return files;
    for (const fs::directory_iterator end; !failed && entry != end; entry.increment(failed)) {
      struct stat status {};
      if (lstat(entry->path().c_str(), &status) != 0 || !S_ISREG(status.st_mode)) continue;
      const std::time_t lastUsed = std::max(status.st_mtim.tv_sec, status.st_atim.tv_sec);
      files.push_back(
          {entry->path().filename().string(), std::chrono::sys_seconds(std::chrono::seconds(lastUsed))});
    }
    if (failed) throw Failure(path, failed);
    return files;
  }

  bool DeleteFile(std::string_view folder, const std::vector<std::string>& parts) override {
    fs::path path = FolderPath(folder) / parts.front();
    for (std::size_t i = 1; i < parts.size(); ++i) {
      // What lies behind a link is not this folder's.
      if (fs::is_symlink(Status(path))) throw ItemFailure(path.string() + " is a link");
      path /= parts[i];
    }
    const fs::file_status status = Status(path);
    if (!fs::exists(status)) return false;
    if (fs::is_directory(status)) throw ItemFailure(path.string() + " is a folder");
    return Remove(path);
  }

  bool DeleteTree(std::string_view folder, const std::string& name) override {
    const fs::path path = FolderPath(folder) / name;
    if (!fs::exists(Status(path))) return false;
    std::error_code failed;
    fs::remove_all(path, failed);  // removes links as links
    if (failed) throw ItemFailure(path.string() + ": " + failed.message());
    return true;
  }

  bool FileExists(std::string_view folder, const std::string& name) override {
    const fs::path path = FolderPath(folder) / name;
    std::error_code failed;
    const fs::file_status status = fs::status(path, failed);
    // What cannot be looked at must not be taken for missing: the caller would make it anew.
    if (status.type() == fs::file_type::none) throw Failure(path, failed);
    return fs::is_regular_file(status);
  }

  bool Fetch(std::string_view folder, const std::string& name, const fs::path& target) override {
    if (!FileExists(folder, name)) return false;
    Replace(FolderPath(folder) / name, target);
    return true;
  }

  void Store(const fs::path& source, std::string_view folder, const std::string& name) override {
    const fs::path path = FolderPath(folder);
    try {
      // A power cut that takes the folder's name takes what is synced inside it.
      if (fs::create_directory(path)) SyncNames(path.parent_path());
    } catch (const std::system_error& error) {
      throw Failure(path, error.code());
    }
    Replace(source, path / name);
  }

 private:
  static fs::file_status Status(const fs::path& path) {
    std::error_code failed;
    const fs::file_status status = fs::symlink_status(path, failed);
    if (status.type() == fs::file_type::none) throw ItemFailure(path.string() + ": " + failed.message());
    return status;
  }

  static bool Remove(const fs::path& path) {
    std::error_code failed;
    const bool removed = fs::remove(path, failed);
    if (failed) throw ItemFailure(path.string() + ": " + failed.message());
    return removed;
  }

  static automation::Error Failure(const fs::path& path, const std::error_code& code) {
    return {automation::ErrorNumber::PathFileAccess, kErrorSource, path.string() + ": " + code.message()};
  }

  // A reader of `target` sees the old file or the new one, never a half, and neither does one that comes
  // after a power cut: callers delete rows once their file is here.
  static void Replace(const fs::path& source, const fs::path& target) try {
    const base::Descriptor from(open(source.c_str(), O_RDONLY | O_CLOEXEC));
    if (!from.IsOpen()) Check(errno);
    base::FileReplacement file(target);
    std::vector<char> piece(std::size_t{1} << 18);
    ssize_t count = 0;
    while ((count = base::ReadSome(from.Get(), piece.data(), piece.size())) > 0) {
      file.Write({piece.data(), static_cast<std::size_t>(count)});
    }
    if (count < 0) Check(errno);
    file.Commit(base::FileReplacement::Durability::Content);
    SyncNames(target.parent_path());
  } catch (const std::system_error& error) {
    throw Failure(target, error.code());
  }

  // Puts a folder's names on the disk. A folder that may not be listed cannot be synced.
  static void SyncNames(const fs::path& folder) {
    if (const int code = base::SyncFolder(folder); code != EACCES) Check(code);
  }

  static void Check(int code) {
    if (code != 0) throw std::system_error(code, std::generic_category());
  }

  fs::path FolderPath(std::string_view folder) const { return suite::NativePath(folder, root_); }

  fs::path root_;
};

}  // namespace

std::unique_ptr<SharedStore> OpenFolderStore(std::string_view path,
                                             const std::shared_ptr<base::FileLayer>& layer) {
  const auto refuse = [](const std::string& description) {
    throw automation::Error(automation::ErrorNumber::PathNotFound, kErrorSource, description);
  };
  // An address of a kind that is not known could hold a password.
  if (path.find("://") != std::string_view::npos) {
    refuse("The path of the shared folders is neither an FTP address nor a folder.");
  }
  if (const std::optional<std::string> problem = RootProblem(path)) {
    refuse("The shared folder " + base::WithControlsShown(path) + " cannot be used: " + *problem + ".");
  }
  const fs::path root = suite::NativePath(path, "/");
  std::error_code failed;
  const bool absolute = !path.empty() && (path.front() == '/' || path.front() == '\\');
  if (!absolute || !fs::is_directory(root, failed)) {
    refuse("The shared folder " + std::string(path) + " does not exist.");
  }
  if (layer) return MakeLayeredFolderStore(root, layer);
  return std::make_unique<FolderStore>(root);
}

}  // namespace OrvCommonMTS
