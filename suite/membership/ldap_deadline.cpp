#include "suite/membership/ldap_deadline.hpp"

#include <poll.h>

#include <algorithm>
#include <cerrno>

namespace VnMembership {
namespace {

int SetUp(Sockbuf_IO_Desc* layer, void* deadline) {
  layer->sbiod_pvt = deadline;
  return 0;
}

int Remove(Sockbuf_IO_Desc*) {
  return 0;
}

int Control(Sockbuf_IO_Desc* layer, int option, void* argument) {
  return LBER_SBIOD_CTRL_NEXT(layer, option, argument);
}

bool WaitFor(Sockbuf_IO_Desc* layer, short events) {
  ber_socket_t socket = -1;
  ber_sockbuf_ctrl(layer->sbiod_sb, LBER_SB_OPT_GET_FD, &socket);
  return static_cast<const LdapDeadline*>(layer->sbiod_pvt)->WaitFor(socket, events);
}

ber_slen_t Read(Sockbuf_IO_Desc* layer, void* buffer, ber_len_t length) {
  return WaitFor(layer, POLLIN) ? LBER_SBIOD_READ_NEXT(layer, buffer, length) : -1;
}

ber_slen_t Write(Sockbuf_IO_Desc* layer, void* buffer, ber_len_t length) {
  return WaitFor(layer, POLLOUT) ? LBER_SBIOD_WRITE_NEXT(layer, buffer, length) : -1;
}

int Close(Sockbuf_IO_Desc*) {
  return 0;
}

int Added(LDAP*, Sockbuf* buffer, LDAPURLDesc*, sockaddr*, ldap_conncb* callback) {
  // libldap takes the table without const and does not change it.
  static const Sockbuf_IO kLayer = {&SetUp, &Remove, &Control, &Read, &Write, &Close};
  constexpr int kBetweenSocketAndTls = (LBER_SBIOD_LEVEL_PROVIDER + LBER_SBIOD_LEVEL_TRANSPORT) / 2;
  return ber_sockbuf_add_io(buffer, const_cast<Sockbuf_IO*>(&kLayer), kBetweenSocketAndTls, callback->lc_arg);
}

void Deleted(LDAP*, Sockbuf*, ldap_conncb*) {}

}  // namespace

LdapDeadline::LdapDeadline(std::chrono::seconds step, std::chrono::seconds whole)
    : step_(step), end_(std::chrono::steady_clock::now() + whole), onConnect_{&Added, &Deleted, this} {}

int LdapDeadline::Attach(LDAP* session) {
  return ldap_set_option(session, LDAP_OPT_CONNECT_CB, &onConnect_);
}

bool LdapDeadline::WaitFor(int socket, short events) const {
  const auto now = std::chrono::steady_clock::now();
  const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(end_ - now);
  const auto wait = std::clamp(left, std::chrono::milliseconds(0), step_);
  pollfd watched{socket, events, 0};
  if (poll(&watched, 1, static_cast<int>(wait.count())) > 0) return true;
  errno = ETIMEDOUT;
  return false;
}

}  // namespace VnMembership
