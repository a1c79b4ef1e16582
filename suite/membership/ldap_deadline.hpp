// Ends a session with a directory server that no longer answers.
//
// libldap's own limits cover connecting and waiting for answers, but not the TLS handshake, which polls
// the socket forever. This sits between the socket and TLS and lets every read and write fail in
// time.
#pragma once

#include <ldap.h>

#include <chrono>

namespace VnMembership {

class LdapDeadline {
 public:
  // No single wait is longer than `step`, and nothing is waited for after `whole`.
  LdapDeadline(std::chrono::seconds step, std::chrono::seconds whole);
  LdapDeadline(const LdapDeadline&) = delete;
  LdapDeadline& operator=(const LdapDeadline&) = delete;

  // Limits every connection that the session makes from now on; must outlive the session.
  // Returns libldap's code.
  int Attach(LDAP* session);

  // Waits until the socket can be read (POLLIN) or written (POLLOUT); false, with errno set, when time is up.
  bool WaitFor(int socket, short events) const;

 private:
  std::chrono::milliseconds step_;
  std::chrono::steady_clock::time_point end_;
  ldap_conncb onConnect_;
};

}  // namespace VnMembership
