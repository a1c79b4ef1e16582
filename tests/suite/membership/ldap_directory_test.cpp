// The conformance tests against a real directory server, and what only a server can get wrong.
#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>
#include <stdexcept>

#include "tests/servers/server_state.hpp"
#include "tests/suite/membership/directory_conformance.hpp"
#include "tests/suite/membership/failure.hpp"

namespace orvane_test {
namespace {

using VnMembership::kDirectoryUnavailable;

std::string Key(const std::string& name, const std::string& value) {
  return "<key name=\"" + name + "\">" + value + "</key>";
}

std::string Plain(const TemporaryFolder&) {
  return Key("LDAPServer", Server::Shared("slapd").Setting("url"));
}

std::string StartTls(const TemporaryFolder& folder) {
  return Plain(folder) + Key("LDAPStartTLS", "TRUE") +
         Key("LDAPCertificateFile", Server::Shared("slapd").Setting("ca"));
}

std::string Tls(const TemporaryFolder&) {
  const Server server = Server::Shared("slapd");
  return Key("LDAPServer", server.Setting("tls_url")) + Key("LDAPCertificateFile", server.Setting("ca"));
}

INSTANTIATE_TEST_SUITE_P(Server, DirectoryConformanceTest,
                         testing::Values(DirectoryKind{"Ldap", &Plain}, DirectoryKind{"StartTls", &StartTls},
                                         DirectoryKind{"Ldaps", &Tls}),
                         [](const auto& kind) { return kind.param.name; });

// A port of this machine that takes connections and never says a word.
class SilentServer {
 public:
  SilentServer() : socket_(socket(AF_INET, SOCK_STREAM, 0)) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    auto* generic = reinterpret_cast<sockaddr*>(&address);
    if (bind(socket_, generic, size) != 0 || listen(socket_, 8) != 0 ||
        getsockname(socket_, generic, &size) != 0) {
      throw std::runtime_error("no port to listen on");
    }
    port_ = ntohs(address.sin_port);
  }
  ~SilentServer() { close(socket_); }
  SilentServer(const SilentServer&) = delete;
  SilentServer& operator=(const SilentServer&) = delete;

  std::string Url(const std::string& scheme) const {
    return scheme + "://127.0.0.1:" + std::to_string(port_);
  }

 private:
  int socket_;
  int port_ = 0;
};

class LdapFailureTest : public testing::Test {
 protected:
  LdapFailureTest() : scope_(runtime_) { VnMembership::RegisterUser(runtime_.classes); }

  VnMembership::UserPtr Bind(const std::string& keys) const {
    folder_.Write("config/siteConfiguration.xml", "<siteConfiguration><section name=\"MEMBERSHIP\">" +
                                                      Key("LDAPRoot", "dc=site") + keys +
                                                      "</section></siteConfiguration>");
    auto user = automation::CreateObject<VnMembership::User>("VnMembership.User");
    user->setServerInfo((folder_.Path() / "config/siteConfiguration.xml").string());
    user->BindAs("jdoe", "cn=orvane,dc=site", "secret");
    return user;
  }

  // The description of the failure, which is always that the directory cannot be reached.
  std::string Failure(const std::string& keys) const {
    return orvane_test::Failure(kDirectoryUnavailable, [&] { Bind(keys); });
  }

  TemporaryFolder folder_;
  automation::Runtime runtime_;
  automation::RuntimeScope scope_;
};

TEST_F(LdapFailureTest, SaysThatAServerIsDownAndComesBackWithIt) {
  const Server server = Server::StartOwn("slapd");
  const std::string keys = Key("LDAPServer", server.Setting("url"));
  EXPECT_EQ(Bind(keys)->FirstName(), "Jane");
  server.Halt();
  EXPECT_EQ(Failure(keys), server.Setting("url") + ": bind: Can't contact LDAP server");
  server.Resume();
  EXPECT_EQ(Bind(keys)->FirstName(), "Jane");
}

TEST_F(LdapFailureTest, GivesUpOnAServerThatDoesNotAnswer) {
  const SilentServer server;
  for (const char* scheme : {"ldap", "ldaps"}) {
    const auto start = std::chrono::steady_clock::now();
    const std::string text = Failure(Key("LDAPServer", server.Url(scheme)) + Key("LDAPTimeout", "1"));
    EXPECT_EQ(text.rfind(server.Url(scheme) + ": ", 0), 0U) << text;
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(20)) << scheme;
  }
}

TEST_F(LdapFailureTest, TrustsNoServerWhoseCertificateItCannotCheck) {
  const Server server = Server::Shared("slapd");
  const std::string other = folder_.Write("config/other.pem", "no certificate").string();
  EXPECT_NE(Failure(Key("LDAPServer", server.Setting("tls_url"))), "no failure");
  EXPECT_NE(Failure(Key("LDAPServer", server.Setting("tls_url")) + Key("LDAPCertificateFile", "other.pem")),
            "no failure");
  EXPECT_NE(Failure(Key("LDAPServer", server.Setting("url")) + Key("LDAPStartTLS", "TRUE")), "no failure");
  EXPECT_EQ(Bind(Tls(folder_))->FirstName(), "Jane");
}

TEST_F(LdapFailureTest, RefusesSettingsThatItDoesNotUnderstand) {
  const std::string place =
      (folder_.Path() / "config/siteConfiguration.xml").string() + ": section \"MEMBERSHIP\", key ";
  const std::string server = Key("LDAPServer", "ldap://127.0.0.1");
  EXPECT_EQ(Failure(server + Key("LDAPStartTLS", "yes")),
            place + "\"LDAPStartTLS\": found \"yes\"; expected TRUE or FALSE");
  for (const char* limit : {"0", "-1", "3601", "ten", "5s"}) {
    EXPECT_EQ(Failure(server + Key("LDAPTimeout", limit)),
              place + "\"LDAPTimeout\": found \"" + std::string(limit) + "\"; expected 1 to 3600 seconds");
  }
}

}  // namespace
}  // namespace orvane_test
