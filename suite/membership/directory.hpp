// A directory that people are looked up in: an LDIF file, or an LDAP server.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "components/interfaces/user.hpp"
#include "platform/automation/error.hpp"
#include "suite/membership/entry.hpp"

namespace VnMembership {

// Numbers of the errors beside those of the interface, all with the source "VnMembership.User".
constexpr int kDirectoryUnavailable = 1103;  // cannot be reached or read
constexpr int kNotBound = 1104;              // an attribute is read before BindAs
constexpr int kBadAttribute = 1105;          // a number or truth value that is none

[[noreturn]] inline void Raise(int number, const std::string& description) {
  throw automation::Error(number, "VnMembership.User", description);
}

class Directory {
 public:
  virtual ~Directory() = default;
  // Enters with the account and returns the one person whose uid is `userId`, below `root` (everywhere when
  // it is empty). The id is a value, never a pattern. An empty credential is refused. Raises the errors
  // above.
  virtual std::shared_ptr<const Entry> Find(std::string_view userId, std::string_view bindName,
                                            std::string_view credential, std::string_view root) = 0;
};

// The people of an LDIF file. Every look-up checks the file, and parses it again only when it has changed.
class LdifPeople;
std::shared_ptr<LdifPeople> MakeLdifPeople();

// The file "directory.ldif" in `folder`.
std::unique_ptr<Directory> OpenLdifDirectory(std::string folder, std::shared_ptr<LdifPeople> people);

}  // namespace VnMembership
