#include "host/init/owner.hpp"

#include <fcntl.h>
#include <grp.h>
#include <pwd.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <system_error>

#include "platform/base/descriptor.hpp"

namespace orvane::host {
namespace {

namespace fs = std::filesystem;

void Give(const fs::path& folder, const Owner& owner) {
  const base::Descriptor opened(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
  if (opened.IsOpen() && fchown(opened.Get(), owner.user, owner.group) == 0) return;
  throw fs::filesystem_error("cannot be given to the account", folder,
                             std::error_code(errno, std::generic_category()));
}

bool IsMissing(const fs::path& path) {
  return !fs::exists(fs::symlink_status(path));
}

void Require(int result) {
  if (result != 0) throw std::system_error(errno, std::generic_category(), "acting as the account");
}

}  // namespace

std::optional<Owner> FindOwner(const std::string& name) {
  std::vector<char> texts(std::size_t{1} << 16);
  passwd entry{};
  passwd* found = nullptr;
  if (getpwnam_r(name.c_str(), &entry, texts.data(), texts.size(), &found) != 0 || found == nullptr) {
    return std::nullopt;
  }
  return Owner{name, entry.pw_uid, entry.pw_gid};
}

void PlaceForOwner::Make(const Owner& owner, const SuiteHome& home) {
  const bool wasThere = !IsMissing(home.Path());
  std::vector<fs::path> missing;
  for (fs::path folder = home.Path(); IsMissing(folder); folder = folder.parent_path()) {
    missing.push_back(folder);
  }
  if (IsMissing(home.Logs())) missing.insert(missing.begin(), home.Logs());
  for (auto folder = missing.rbegin(); folder != missing.rend(); ++folder) {
    fs::create_directory(*folder);
    made_.push_back(*folder);
    Give(*folder, owner);
  }
  if (wasThere) Give(home.Path(), owner);
}

void PlaceForOwner::Remove() noexcept {
  for (auto folder = made_.rbegin(); folder != made_.rend(); ++folder) rmdir(folder->c_str());
}

ActsAs::ActsAs(const std::optional<Owner>& owner) {
  if (!owner || geteuid() != 0) return;
  group_ = getegid();
  groups_.resize(static_cast<std::size_t>(getgroups(0, nullptr)));
  Require(getgroups(static_cast<int>(groups_.size()), groups_.data()) < 0 ? -1 : 0);
  Require(initgroups(owner->name.c_str(), owner->group));
  changed_ = true;
  Require(setegid(owner->group));
  Require(seteuid(owner->user));
}

ActsAs::~ActsAs() {
  if (!changed_) return;
  // Root that cannot become root again must not go on with half of its rights.
  if (seteuid(0) != 0 || setegid(group_) != 0 || setgroups(groups_.size(), groups_.data()) != 0) std::abort();
}

}  // namespace orvane::host
