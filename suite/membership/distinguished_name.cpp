#include "suite/membership/distinguished_name.hpp"

#include <ldap.h>

#include <memory>

#include "platform/base/text.hpp"
#include "suite/membership/ldap_text.hpp"

namespace VnMembership {
namespace {

struct FreeName {
  void operator()(LDAPRDN* name) const { ldap_dnfree(name); }
};

}  // namespace

std::string NormalName(std::string_view dn) {
  LDAPDN parsed = nullptr;
  // libldap would take a NUL for the end.
  const bool readable = dn.find('\0') == std::string_view::npos;
  if (!readable || ldap_str2dn(std::string(dn).c_str(), &parsed, LDAP_DN_FORMAT_LDAP) != LDAP_SUCCESS) {
    return base::ToAsciiLower(base::Trimmed(dn));
  }
  const std::unique_ptr<LDAPRDN, FreeName> owner(parsed);
  char* text = nullptr;
  ldap_dn2str(parsed, &text, LDAP_DN_FORMAT_LDAPV3 | LDAP_DN_PRETTY);
  const LdapText textOwner(text);
  return base::ToAsciiLower(text == nullptr ? "" : text);
}

bool LiesBelow(std::string_view dn, std::string_view root) {
  const std::string top = NormalName(root);
  if (top.empty()) return true;
  const std::string name = NormalName(dn);
  return name == top || name.ends_with("," + top);
}

}  // namespace VnMembership
