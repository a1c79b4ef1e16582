#include "suite/membership/ldap_directory.hpp"

#include <ldap.h>
#include <sys/time.h>

#include <array>
#include <chrono>
#include <utility>
#include <vector>

#include "platform/automation/error.hpp"
#include "suite/membership/ldap_deadline.hpp"
#include "suite/membership/ldap_text.hpp"

namespace VnMembership {
namespace {

struct Unbind {
  void operator()(LDAP* session) const { ldap_unbind_ext_s(session, nullptr, nullptr); }
};
struct FreeMessage {
  void operator()(LDAPMessage* message) const { ldap_msgfree(message); }
};
struct FreeValues {
  void operator()(berval** values) const { ldap_value_free_len(values); }
};
using Session = std::unique_ptr<LDAP, Unbind>;

// What a person's entry is read for; a photograph can stay where it is.
constexpr std::array<const char*, 16> kAttributes = {"uid",
                                                     "givenName",
                                                     "sn",
                                                     "cn",
                                                     "mail",
                                                     "o",
                                                     "telephoneNumber",
                                                     "title",
                                                     "facsimileTelephoneNumber",
                                                     "orvaneLanguageID",
                                                     "orvaneLocale",
                                                     "orvaneBusinessPartner",
                                                     "orvaneEngineerCode",
                                                     "orvaneSalutationFlag",
                                                     "orvaneModem",
                                                     "orvaneCountry"};

// Enough to know that several people have an id, and to look past those whose ids are merely similar.
constexpr int kMostEntries = 20;

// A session connects, agrees on TLS, enters and searches.
constexpr int kSteps = 4;

class LdapDirectory : public Directory {
 public:
  explicit LdapDirectory(LdapServer server) : server_(std::move(server)) {}

  std::shared_ptr<const Entry> Find(std::string_view userId, std::string_view bindName,
                                    std::string_view credential, std::string_view root) override {
    // A bind without a name or a password succeeds on many servers, as nobody.
    if (bindName.empty() || credential.empty()) RefuseAccount(bindName);
    const std::chrono::seconds step(server_.answerSeconds);
    LdapDeadline deadline(step, kSteps * step);
    const Session session = Connect(deadline);
    Bind(session.get(), std::string(bindName), std::string(credential));

    std::vector<Entry> found;
    for (const std::string& base : SearchBases(session.get(), std::string(root))) {
      for (Entry& entry : People(session.get(), base, userId)) {
        // Servers take more for equal than the suite does: spaces at the ends of an id, for one.
        if (HasId(entry, userId)) found.push_back(std::move(entry));
      }
    }
    if (found.empty()) Raise(kUnknownUser, "The directory knows no user " + std::string(userId));
    if (found.size() > 1) Raise(kUnknownUser, "The directory knows several users " + std::string(userId));
    return std::make_shared<const Entry>(std::move(found.front()));
  }

 private:
  [[noreturn]] static void RefuseAccount(std::string_view bindName) {
    Raise(kAccountRefused, "The directory refuses the account " + std::string(bindName));
  }

  [[noreturn]] void Fail(LDAP* session, int result, const std::string& action) const {
    std::string text = server_.url + ": " + action + ": " + ldap_err2string(result);
    char* detail = nullptr;
    if (session != nullptr &&
        ldap_get_option(session, LDAP_OPT_DIAGNOSTIC_MESSAGE, &detail) == LDAP_OPT_SUCCESS &&
        detail != nullptr) {
      const LdapText owner(detail);
      if (*detail != '\0') text += std::string(" (") + detail + ")";
    }
    Raise(kDirectoryUnavailable, text);
  }

  Session Connect(LdapDeadline& deadline) const {
    LDAP* raw = nullptr;
    const int result = ldap_initialize(&raw, server_.url.c_str());
    Session session(raw);
    if (result != LDAP_SUCCESS) Fail(raw, result, "not understood");

    const int version = LDAP_VERSION3;
    const timeval connect{server_.connectSeconds, 0};
    const timeval answer{server_.answerSeconds, 0};
    ldap_set_option(raw, LDAP_OPT_PROTOCOL_VERSION, &version);
    ldap_set_option(raw, LDAP_OPT_NETWORK_TIMEOUT, &connect);
    ldap_set_option(raw, LDAP_OPT_TIMEOUT, &answer);
    ldap_set_option(raw, LDAP_OPT_REFERRALS, LDAP_OPT_OFF);
    ldap_set_option(raw, LDAP_OPT_RESTART, LDAP_OPT_ON);
    if (deadline.Attach(raw) != LDAP_OPT_SUCCESS) Fail(raw, LDAP_LOCAL_ERROR, "time limit");

    const int demand = LDAP_OPT_X_TLS_DEMAND;
    const int client = 0;
    ldap_set_option(raw, LDAP_OPT_X_TLS_REQUIRE_CERT, &demand);
    if (!server_.certificateFile.empty()) {
      ldap_set_option(raw, LDAP_OPT_X_TLS_CACERTFILE, server_.certificateFile.c_str());
    }
    const int tls = ldap_set_option(raw, LDAP_OPT_X_TLS_NEWCTX, &client);
    if (tls != LDAP_OPT_SUCCESS) Raise(kDirectoryUnavailable, server_.url + ": TLS cannot be set up");
    if (server_.startTls) {
      const int started = ldap_start_tls_s(raw, nullptr, nullptr);
      if (started != LDAP_SUCCESS) Fail(raw, started, "TLS");
    }
    return session;
  }

  void Bind(LDAP* session, const std::string& name, std::string credential) const {
    berval password{credential.size(), credential.data()};
    const int result =
        ldap_sasl_bind_s(session, name.c_str(), LDAP_SASL_SIMPLE, &password, nullptr, nullptr, nullptr);
    // Servers differ in what they call a name that cannot enter.
    if (result == LDAP_INVALID_CREDENTIALS || result == LDAP_INVALID_DN_SYNTAX ||
        result == LDAP_NO_SUCH_OBJECT || result == LDAP_INAPPROPRIATE_AUTH) {
      RefuseAccount(name);
    }
    if (result != LDAP_SUCCESS) Fail(session, result, "bind");
  }

  // Where to look: below the root, or without one wherever the server has entries.
  std::vector<std::string> SearchBases(LDAP* session, const std::string& root) const {
    if (!root.empty()) return {root};
    constexpr std::array<const char*, 1> kContexts = {"namingContexts"};
    std::vector<Entry> rootEntry = Search(session, "", LDAP_SCOPE_BASE, "(objectClass=*)", kContexts);
    if (rootEntry.empty()) return {};
    return std::move(rootEntry.front().attributes["namingContexts"]);
  }

  std::vector<Entry> People(LDAP* session, const std::string& base, std::string_view userId) const {
    return Search(session, base, LDAP_SCOPE_SUBTREE, "(uid=" + FilterValue(userId) + ")", kAttributes);
  }

  // Nothing when there is no such base, or the account may not see it.
  template <std::size_t count>
  std::vector<Entry> Search(LDAP* session, const std::string& base, int scope, const std::string& filter,
                            const std::array<const char*, count>& attributes) const {
    std::array<char*, count + 1> wanted{};
    std::array<std::string, count> names;
    for (std::size_t i = 0; i < count; ++i) {
      names[i] = attributes[i];
      wanted[i] = names[i].data();
    }
    timeval limit{server_.answerSeconds, 0};
    LDAPMessage* raw = nullptr;
    const int result = ldap_search_ext_s(session, base.c_str(), scope, filter.c_str(), wanted.data(), 0,
                                         nullptr, nullptr, &limit, kMostEntries, &raw);
    const std::unique_ptr<LDAPMessage, FreeMessage> answer(raw);
    if (result == LDAP_NO_SUCH_OBJECT) return {};
    if (result != LDAP_SUCCESS && result != LDAP_SIZELIMIT_EXCEEDED) Fail(session, result, "search");

    std::vector<Entry> entries;
    for (LDAPMessage* entry = raw == nullptr ? nullptr : ldap_first_entry(session, raw); entry != nullptr;
         entry = ldap_next_entry(session, entry)) {
      entries.push_back(Read(session, entry, attributes));
    }
    return entries;
  }

  template <std::size_t count>
  static Entry Read(LDAP* session, LDAPMessage* message, const std::array<const char*, count>& attributes) {
    Entry entry;
    if (const LdapText dn(ldap_get_dn(session, message)); dn) entry.dn = dn.get();
    for (const char* attribute : attributes) {
      const std::unique_ptr<berval*, FreeValues> values(ldap_get_values_len(session, message, attribute));
      for (berval** value = values.get(); value != nullptr && *value != nullptr; ++value) {
        entry.attributes[attribute].emplace_back((*value)->bv_val, (*value)->bv_len);
      }
    }
    return entry;
  }

  const LdapServer server_;
};

}  // namespace

std::string FilterValue(std::string_view value) {
  berval plain{value.size(), const_cast<char*>(value.data())};  // libldap does not change it
  berval escaped{};
  if (ldap_bv2escaped_filter_value(&plain, &escaped) != 0) {
    throw automation::Error(automation::ErrorNumber::OutOfMemory, "VnMembership.User");
  }
  const LdapText owner(escaped.bv_val);
  return {escaped.bv_val, escaped.bv_len};
}

std::unique_ptr<Directory> OpenLdapDirectory(LdapServer server) {
  return std::make_unique<LdapDirectory>(std::move(server));
}

}  // namespace VnMembership
