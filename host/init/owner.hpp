// The account that a new suite is made for.
#pragma once

#include <sys/types.h>

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "suite/composition/suite_home.hpp"

namespace orvane::host {

struct Owner {
  std::string name;
  uid_t user = 0;
  gid_t group = 0;  // its own one
};

// Nothing when this machine knows no such account.
std::optional<Owner> FindOwner(const std::string& name);

// The folders that an account needs before it can make a suite for itself.
class PlaceForOwner {
 public:
  // Makes the installation's folder, the one of the logs beside it and all on the way to them, where they are
  // missing, and gives what was made, and an installation's folder that was there, to the account. Other
  // folders stay as they are. FAILS: std::filesystem::filesystem_error, without the right to give files away,
  // for example, or for a symbolic link in the installation's place: whoever may write beside it could have
  // put it there.
  void Make(const Owner& owner, const SuiteHome& home);
  // Removes what was made, as far as it is empty.
  void Remove() noexcept;

 private:
  std::vector<std::filesystem::path> made_;
};

// While it lives, root does what it does as the account, so that the account has what is made, and nobody
// else's files can be put in the way of it. For another user than root, or nobody, it changes nothing.
class ActsAs {
 public:
  // FAILS: std::system_error.
  explicit ActsAs(const std::optional<Owner>& owner);
  ~ActsAs();
  ActsAs(const ActsAs&) = delete;
  ActsAs& operator=(const ActsAs&) = delete;

 private:
  bool changed_ = false;
  gid_t group_ = 0;
  std::vector<gid_t> groups_;
};

}  // namespace orvane::host
