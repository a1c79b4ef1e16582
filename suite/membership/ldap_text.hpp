// Strings that libldap hands out.
#pragma once

#include <ldap.h>

#include <memory>

namespace VnMembership {

struct FreeLdapText {
  void operator()(char* text) const { ldap_memfree(text); }
};
using LdapText = std::unique_ptr<char, FreeLdapText>;

}  // namespace VnMembership
