#include "suite/file_handling/ftp_store.hpp"

#include <algorithm>
#include <map>
#include <system_error>
#include <unordered_map>

#include "platform/base/file_replacement.hpp"
#include "platform/base/text.hpp"
#include "suite/file_handling/ftp_listing.hpp"

namespace OrvCommonMTS {
namespace {

namespace fs = std::filesystem;

// Deeper than any attachment; an endless listing ends here.
constexpr int kDeepestFolder = 64;
constexpr int kFolderCreated = 257;
constexpr int kModificationTime = 213;

using Items = std::unordered_map<std::string, ListedKind>;

Items ByName(const std::vector<ListedItem>& items) {
  Items byName;
  for (const ListedItem& item : items) byName.emplace(item.name, item.kind);
  return byName;
}

std::optional<ListedKind> Find(const Items& items, const std::string& name) {
  const auto found = items.find(name);
  return found == items.end() ? std::nullopt : std::optional(found->second);
}

automation::Error Failure(const std::string& description) {
  return {automation::ErrorNumber::PathFileAccess, kErrorSource, description};
}

// Whether a listing with "-a" holds the folder itself, as those of servers that ask "ls" or do as it does.
bool ShowsItself(std::string_view listing) {
  while (!listing.empty()) {
    const std::size_t end = std::min(listing.find('\n'), listing.size());
    std::string_view line = listing.substr(0, end);
    listing.remove_prefix(std::min(end + 1, listing.size()));
    if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
    if (line.size() >= 2 && line.substr(line.size() - 2) == " .") return true;
  }
  return false;
}

class FtpStore : public SharedStore {
 public:
  FtpStore(const FtpAddress& address, const FtpOptions& options) : session_(address, options) {
    const std::optional<std::vector<ListedItem>> items = List(session_.Root());
    if (!items) {
      throw automation::Error(automation::ErrorNumber::PathNotFound, kErrorSource,
                              "FTP server " + address.server + ": the folder " + session_.Root() +
                                  " does not exist or may not be entered.");
    }
    rootItems_ = ByName(*items);
  }

  std::vector<StoredFile> Files(std::string_view folder) override {
    std::vector<StoredFile> files;
    const std::string path = FolderPath(folder);
    const std::optional<std::vector<ListedItem>> items =
        session_.HasMachineListing() ? MachineList(path) : List(path);
    if (!items) {
      RequireMissing(path);
      return files;
    }
    for (const ListedItem& item : *items) {
      if (item.kind != ListedKind::File || base::HasControl(item.name)) continue;
      const std::optional<std::chrono::sys_seconds> modified =
          item.modified ? item.modified : ModificationTime(path + "/" + item.name);
      if (modified) files.push_back({item.name, *modified});
    }
    return files;
  }

  bool DeleteFile(std::string_view folder, const std::vector<std::string>& parts) override {
    std::string parent = FolderPath(folder);
    for (std::size_t i = 0; i + 1 < parts.size(); ++i) {
      const std::optional<ListedKind> kind = Find(Listed(parent), parts[i]);
      if (!kind) return false;
      // What lies behind a link is not this folder's.
      if (kind == ListedKind::Link) throw ItemFailure(parts[i] + " is a link");
      parent += "/" + parts[i];
    }
    const FtpReply reply = session_.Command("DELE " + parent + "/" + parts.back());
    if (reply.Succeeded()) return true;
    // Servers say the same about a file that is not there and one that may not be deleted.
    if (!Find(Listed(parent), parts.back())) return false;
    throw ItemFailure(reply.text);
  }

  bool DeleteTree(std::string_view folder, const std::string& name) override {
    const std::string path = FolderPath(folder);
    const std::optional<ListedKind> kind = Find(Listed(path), name);
    if (!kind) return false;
    DeleteItem(path, {name, *kind, std::nullopt}, 0);
    return true;
  }

  bool FileExists(std::string_view folder, const std::string& name) override {
    const std::optional<ListedKind> kind = Find(Listed(FolderPath(folder)), name);
    return kind == ListedKind::File || kind == ListedKind::Link;
  }

  bool Fetch(std::string_view folder, const std::string& name, const fs::path& target) override {
    // A server says the same about a file that is not there and one that it does not give out; the latter
    // must not be taken for the former.
    if (!FileExists(folder, name)) return false;
    try {
      base::FileReplacement file(target);
      const auto write = [&file](std::string_view piece) { file.Write(piece); };
      if (!session_.Download(FolderPath(folder) + "/" + name, write)) {
        throw Failure("The FTP server does not give out " + name + ".");
      }
      file.Commit(base::FileReplacement::Durability::Content);
    } catch (const std::system_error& error) {
      throw Failure(target.string() + ": " + error.code().message());
    }
    return true;
  }

  void Store(const fs::path& source, std::string_view folder, const std::string& name) override {
    const std::string path = FolderPath(folder);
    if (!Find(rootItems_, path.substr(path.rfind('/') + 1))) {
      const FtpReply made = session_.Command("MKD " + path);
      if (made.code != kFolderCreated) throw Failure("The FTP server cannot make " + path + ": " + made.text);
      rootItems_.emplace(path.substr(path.rfind('/') + 1), ListedKind::Folder);
    }
    // Under a name of its own first: a transfer that is cut off leaves the other servers their copy.
    const std::string part = path + "/" + name + ".part";
    try {
      session_.Upload(source, part);
    } catch (...) {
      Discard(part);
      throw;
    }
    FtpReply reply = session_.Command("RNFR " + part);
    if (reply.Succeeded()) reply = session_.Command("RNTO " + path + "/" + name);
    listed_.clear();
    if (!reply.Succeeded()) {
      Discard(part);
      throw Failure("The FTP server does not take " + name + ": " + reply.text);
    }
  }

 private:
  // Only LIST distinguishes links from folders, so trees are always read that way.
  std::optional<std::vector<ListedItem>> List(const std::string& path) {
    std::optional<std::string> listing = session_.List(path, "LIST -a");  // names that begin with a dot, too
    if (listing && path == session_.Root()) rootShowsItself_ = ShowsItself(*listing);
    // A listing that does not even hold the folder itself was not read from it.
    if (listing && rootShowsItself_ && !ShowsItself(*listing)) return std::nullopt;
    if (!listing) listing = session_.List(path, "LIST");
    if (!listing) return std::nullopt;
    std::optional<std::vector<ListedItem>> items = ParseList(*listing);
    if (!items) throw Failure("The FTP server lists " + path + " in a form that is not understood.");
    return items;
  }

  std::optional<std::vector<ListedItem>> MachineList(const std::string& path) {
    const std::optional<std::string> listing = session_.List(path, "MLSD");
    if (!listing) return std::nullopt;
    std::optional<std::vector<ListedItem>> items = ParseMachineList(*listing);
    if (!items) throw Failure("The FTP server lists " + path + " in a form that is not understood.");
    return items;
  }

  // The listing of a folder, kept for the call that this store serves.
  const Items& Listed(const std::string& path) {
    const auto known = listed_.find(path);
    if (known != listed_.end()) return known->second;
    const std::optional<std::vector<ListedItem>> items = List(path);
    if (!items) RequireMissing(path);
    return listed_.emplace(path, ByName(items.value_or(std::vector<ListedItem>()))).first->second;
  }

  // A folder that is there but gives out no listing must not be taken for an empty one: an archive would be
  // made anew over the one that it holds.
  void RequireMissing(const std::string& path) {
    const std::string& root = session_.Root();
    const std::size_t start = root.back() == '/' ? root.size() : root.size() + 1;
    const std::size_t slash = path.rfind('/');
    const std::string problem = "The FTP server does not list " + path + ", which exists.";
    if (slash < start) {
      if (Find(rootItems_, path.substr(start))) throw Failure(problem);
    } else if (Find(Listed(path.substr(0, slash)), path.substr(slash + 1))) {
      throw ItemFailure(problem);
    }
  }

  std::string FolderPath(std::string_view folder) const {
    std::string name(folder);
    if (!Find(rootItems_, name)) {
      std::string found;
      for (const auto& [candidate, kind] : rootItems_) {
        if (base::EqualsIgnoringAsciiCase(candidate, folder) && (found.empty() || candidate < found))
          found = candidate;
      }
      if (!found.empty()) name = found;
    }
    const std::string& root = session_.Root();
    return root + (root.back() == '/' ? "" : "/") + name;
  }

  // What cannot be removed, over a connection that broke, is replaced by the next upload.
  void Discard(const std::string& part) {
    try {
      session_.Command("DELE " + part);
    } catch (const automation::Error&) {
    }
  }

  std::optional<std::chrono::sys_seconds> ModificationTime(const std::string& path) {
    const FtpReply reply = session_.Command("MDTM " + path);
    if (reply.code >= 500 && reply.code < 505) {
      throw Failure("The FTP server does not tell when files were modified: " + reply.text);
    }
    if (reply.code != kModificationTime || reply.text.size() < 5) return std::nullopt;
    return ParseFtpTime(std::string_view(reply.text).substr(4));
  }

  void DeleteItem(const std::string& parent, const ListedItem& item, int depth) {
    if (base::HasControl(item.name)) throw ItemFailure("a name in " + parent + " holds a control character");
    if (item.name.find('/') != std::string::npos) throw ItemFailure("a name in " + parent + " holds a slash");
    const std::string path = parent + "/" + item.name;
    // First as if it were a file, whatever the listing says: a link that a server shows as the folder it
    // leads to goes this way, and a real folder stays.
    FtpReply reply = session_.Command("DELE " + path);
    if (reply.Succeeded()) return;
    if (item.kind != ListedKind::Folder) throw ItemFailure(reply.text);
    if (depth == kDeepestFolder) throw ItemFailure(path + " holds too many levels of folders");
    const std::optional<std::vector<ListedItem>> children = List(path);
    if (!children) throw ItemFailure(path + " may not be entered");
    for (const ListedItem& child : *children) DeleteItem(path, child, depth + 1);
    reply = session_.Command("RMD " + path);
    if (!reply.Succeeded()) throw ItemFailure(reply.text);
  }

  FtpSession session_;
  Items rootItems_;
  bool rootShowsItself_ = false;
  std::map<std::string, Items> listed_;
};

}  // namespace

std::unique_ptr<SharedStore> OpenFtpStore(const FtpAddress& address, const FtpOptions& options) {
  return std::make_unique<FtpStore>(address, options);
}

}  // namespace OrvCommonMTS
