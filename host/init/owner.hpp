// The account that a new suite is made for.
#pragma once

#include <sys/types.h>

#include <optional>
#include <string>

#include "suite/composition/suite_home.hpp"

namespace orvane::host {

struct Owner {
  uid_t user = 0;
  gid_t group = 0;  // its own one
};

// Nothing when this machine knows no such account.
std::optional<Owner> FindOwner(const std::string& name);

// Makes the folder of the logs beside the installation where there is none, and gives both to the account. A
// folder of logs that was there stays as it is, and so does where a symbolic link leads.
// FAILS: std::filesystem::filesystem_error; without the right to give files away, for example.
void GiveTo(const Owner& owner, const SuiteHome& home);

}  // namespace orvane::host
