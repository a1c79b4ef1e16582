// A directory on an LDAP server, through libldap.
#pragma once

#include <memory>
#include <string>

#include "suite/membership/directory.hpp"

namespace VnMembership {

struct LdapServer {
  std::string url;              // "ldap://host:port" or "ldaps://host:port"
  bool startTls = false;        // demanded, not merely tried
  std::string certificateFile;  // trusted authorities in PEM form; empty: the machine's own
  int connectSeconds = 10;
  int answerSeconds = 30;  // for each of its answers
};

// Nothing is sent before Find; each Find is a connection of its own. Referrals to other servers are not
// followed.
std::unique_ptr<Directory> OpenLdapDirectory(LdapServer server);

// The value as it stands in a search filter: whatever has a meaning there is escaped.
std::string FilterValue(std::string_view value);

}  // namespace VnMembership
