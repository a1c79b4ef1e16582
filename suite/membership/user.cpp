#include "suite/membership/user.hpp"

#include <charconv>
#include <filesystem>
#include <memory>
#include <string>
#include <system_error>
#include <utility>

#include "components/interfaces/user.hpp"
#include "platform/automation/error.hpp"
#include "suite/configuration/site_file.hpp"
#include "suite/membership/directory.hpp"
#include "suite/membership/ldap_directory.hpp"
#include "suite/paths/native_path.hpp"

namespace VnMembership {
namespace {

bool StartsWith(std::string_view text, std::string_view head) {
  return text.substr(0, head.size()) == head;
}

LdapServer ServerSettings(const Vantrel::SiteFile& site, const std::string& url) {
  if (!StartsWith(url, "ldap://") && !StartsWith(url, "ldaps://")) {
    Raise(kDirectoryUnavailable, site.Path().string() +
                                     ": section \"MEMBERSHIP\", key \"LDAPServer\": found \"" + url +
                                     "\"; expected ldap://host:port, ldaps://host:port or nothing");
  }
  const std::string startTls = site.FindValue("MEMBERSHIP", "LDAPStartTLS").value_or("FALSE");
  if (startTls != "TRUE" && startTls != "FALSE") {
    Raise(kDirectoryUnavailable, site.Path().string() +
                                     ": section \"MEMBERSHIP\", key \"LDAPStartTLS\": found \"" + startTls +
                                     "\"; expected TRUE or FALSE");
  }
  LdapServer server;
  server.url = url;
  server.startTls = startTls == "TRUE";
  const std::string certificates = site.FindValue("MEMBERSHIP", "LDAPCertificateFile").value_or("");
  if (!certificates.empty()) {
    server.certificateFile = suite::NativePath(certificates, site.Path().parent_path()).string();
  }
  if (const std::string limit = site.FindValue("MEMBERSHIP", "LDAPTimeout").value_or(""); !limit.empty()) {
    int seconds = 0;
    const auto [end, error] = std::from_chars(limit.data(), limit.data() + limit.size(), seconds);
    if (error != std::errc{} || end != limit.data() + limit.size() || seconds < 1 || seconds > 3600) {
      Raise(kDirectoryUnavailable, site.Path().string() +
                                       ": section \"MEMBERSHIP\", key \"LDAPTimeout\": found \"" + limit +
                                       "\"; expected 1 to 3600 seconds");
    }
    server.connectSeconds = server.answerSeconds = seconds;
  }
  return server;
}

// What the user objects of one installation share: how the two files read that each of them reads anew.
struct Files {
  Vantrel::RereadSiteFile site;
  std::shared_ptr<LdifPeople> people = MakeLdifPeople();
};

class DirectoryUser : public User {
 public:
  explicit DirectoryUser(std::shared_ptr<Files> files) : files_(std::move(files)) {}

  void setServerInfo(std::string_view configurationFile) override {
    const bool absolute = StartsWith(configurationFile, "/") || StartsWith(configurationFile, "\\");
    const std::shared_ptr<const Vantrel::SiteFile> current = files_->site.Read(
        configurationFile, absolute ? std::string() : std::filesystem::current_path().string());
    const Vantrel::SiteFile& site = *current;
    root_ = site.FindValue("MEMBERSHIP", "LDAPRoot").value_or("");
    const std::string server = site.FindValue("MEMBERSHIP", "LDAPServer").value_or("");
    directory_ = server.empty() ? OpenLdifDirectory(site.Folder(), files_->people)
                                : OpenLdapDirectory(ServerSettings(site, server));
  }

  void BindAs(std::string_view userId, std::string_view bindName, std::string_view credential) override {
    if (!directory_) Raise(kNotBound, "setServerInfo must be called before BindAs");
    entry_ = directory_->Find(userId, bindName, credential, root_);
  }

  std::int32_t LanguageID() const override { return Number("orvaneLanguageID"); }
  std::int32_t Locale() const override { return Number("orvaneLocale"); }
  std::string EMailAddress() const override { return Text("mail"); }
  std::string FirstName() const override { return Text("givenName"); }
  std::string LastName() const override { return Text("sn"); }
  std::string CompanyName() const override { return Text("o"); }
  std::string PhoneNumber() const override { return Text("telephoneNumber"); }
  std::string Modem() const override { return Text("orvaneModem"); }
  std::string Country() const override { return Text("orvaneCountry"); }
  std::string Position() const override { return Text("title"); }
  std::string Fax() const override { return Text("facsimileTelephoneNumber"); }
  std::int32_t BusinessPartnerNumber() const override { return Number("orvaneBusinessPartner"); }
  std::string EngineerCode() const override { return Text("orvaneEngineerCode"); }
  bool SalutationFlag() const override {
    const std::string text = Text("orvaneSalutationFlag");
    if (text.empty() || text == "FALSE") return false;
    if (text == "TRUE") return true;
    Raise(kBadAttribute, entry_->dn + ": orvaneSalutationFlag is \"" + text + "\", neither TRUE nor FALSE");
  }

 private:
  std::string Text(std::string_view attribute) const {
    if (!entry_) Raise(kNotBound, "BindAs must be called before an attribute is read");
    return entry_->Value(attribute);
  }

  std::int32_t Number(std::string_view attribute) const {
    const std::string text = Text(attribute);
    if (text.empty()) return 0;
    std::int32_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc{} || end != text.data() + text.size()) {
      Raise(kBadAttribute,
            entry_->dn + ": " + std::string(attribute) + " is \"" + text + "\", no 32-bit number");
    }
    return number;
  }

  const std::shared_ptr<Files> files_;
  std::unique_ptr<Directory> directory_;
  std::string root_;
  std::shared_ptr<const Entry> entry_;
};

}  // namespace

void RegisterUser(automation::ClassTable& classes) {
  auto files = std::make_shared<Files>();
  classes.Register(kUserProgId, [files] { return std::make_shared<DirectoryUser>(files); });
}

}  // namespace VnMembership
