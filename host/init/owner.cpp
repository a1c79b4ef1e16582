#include "host/init/owner.hpp"

#include <pwd.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <system_error>
#include <vector>

namespace orvane::host {
namespace {

namespace fs = std::filesystem;

void Give(const fs::path& path, const Owner& owner) {
  if (lchown(path.c_str(), owner.user, owner.group) == 0) return;
  throw fs::filesystem_error("cannot be given to the account", path,
                             std::error_code(errno, std::generic_category()));
}

}  // namespace

std::optional<Owner> FindOwner(const std::string& name) {
  std::vector<char> texts(std::size_t{1} << 16);
  passwd entry{};
  passwd* found = nullptr;
  if (getpwnam_r(name.c_str(), &entry, texts.data(), texts.size(), &found) != 0 || found == nullptr) {
    return std::nullopt;
  }
  return Owner{entry.pw_uid, entry.pw_gid};
}

void GiveTo(const Owner& owner, const SuiteHome& home) {
  // A folder after what is in it: nobody else can change there what is still to be given away.
  std::vector<fs::path> paths{home.Path()};
  for (const fs::directory_entry& entry : fs::recursive_directory_iterator(home.Path())) {
    paths.push_back(entry.path());
  }
  for (auto path = paths.rbegin(); path != paths.rend(); ++path) Give(*path, owner);
  if (fs::create_directory(home.Logs())) Give(home.Logs(), owner);
}

}  // namespace orvane::host
