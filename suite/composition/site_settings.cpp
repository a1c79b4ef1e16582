#include "suite/composition/site_settings.hpp"

#include <charconv>
#include <string_view>
#include <system_error>

#include "platform/automation/error.hpp"
#include "suite/paths/native_path.hpp"

namespace orvane {
namespace {

[[noreturn]] void Refuse(const Vantrel::SiteFile& site, std::string_view section, std::string_view key,
                         std::string_view found, std::string_view expected) {
  throw automation::Error(Vantrel::kUnreadableFile, "Vantrel.Configuration",
                          site.Path().string() + ": section \"" + std::string(section) + "\", key \"" +
                              std::string(key) + "\": found \"" + std::string(found) + "\"; expected " +
                              std::string(expected));
}

constexpr std::string_view kMail = "CDO";

// The value of a key, or `otherwise` when it is missing.
std::string MailValue(const Vantrel::SiteFile& site, std::string_view key, std::string_view otherwise) {
  return site.FindValue(kMail, key).value_or(std::string(otherwise));
}

int MailPort(const Vantrel::SiteFile& site) {
  const std::string text = MailValue(site, "smtpserverport", "25");
  int port = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), port);
  if (error != std::errc{} || end != text.data() + text.size() || port < 1 || port > 65535) {
    Refuse(site, kMail, "smtpserverport", text, "a port number, 1 to 65535");
  }
  return port;
}

CDO::Tls MailTls(const Vantrel::SiteFile& site) {
  const std::string text = MailValue(site, "smtptls", "none");
  if (text == "none") return CDO::Tls::None;
  if (text == "starttls") return CDO::Tls::StartTls;
  if (text == "smtps") return CDO::Tls::Smtps;
  Refuse(site, kMail, "smtptls", text, "none, starttls or smtps");
}

CDO::SendUsing MailWay(const Vantrel::SiteFile& site) {
  const std::string text = MailValue(site, "sendusing", "1");
  if (text == "1") return CDO::SendUsing::Pickup;
  if (text == "2") return CDO::SendUsing::Port;
  Refuse(site, kMail, "sendusing", text, "1 for the pickup folder or 2 for SMTP");
}

// The path of a file of trusted authorities; empty when none is named.
std::string Authorities(const Vantrel::SiteFile& site, std::string_view section, std::string_view key,
                        const SuiteHome& home) {
  const std::string file = site.FindValue(section, key).value_or("");
  return file.empty() ? file : suite::NativePath(file, home.Path()).string();
}

int HostNumber(const Vantrel::SiteFile& site, std::string_view key, int usual, int most,
               const std::string& unit) {
  const std::string text = site.FindValue("HOST", key).value_or(std::to_string(usual));
  int number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc{} || end != text.data() + text.size() || number < 1 || number > most) {
    Refuse(site, "HOST", key, text, "a number of " + unit + ", 1 to " + std::to_string(most));
  }
  return number;
}

}  // namespace

std::map<char, std::string> Drives(const Vantrel::SiteFile& site) {
  std::map<char, std::string> drives;
  for (const auto& [key, folder] : site.Values("DRIVES")) {
    if (key.size() != 1 || key[0] < 'A' || key[0] > 'Z') {
      Refuse(site, "DRIVES", key, folder, "a key of one letter, A to Z");
    }
    if (folder.empty() || folder[0] != '/') Refuse(site, "DRIVES", key, folder, "an absolute path");
    drives.emplace(key[0], folder);
  }
  return drives;
}

CDO::Settings MailSettings(const Vantrel::SiteFile& site, const SuiteHome& home) {
  CDO::Settings settings;
  settings.sendUsing = MailWay(site);
  settings.port = MailPort(site);
  settings.tls = MailTls(site);
  settings.pickupDirectory =
      suite::NativePath(MailValue(site, "smtpserverpickupdirectory", "mail\\pickup"), home.Path()).string();
  settings.server = MailValue(site, "smtpserver", "");
  settings.certificateFile = Authorities(site, kMail, "smtpcertificatefile", home);
  settings.userName = MailValue(site, "sendusername", "");
  settings.password = MailValue(site, "sendpassword", "");
  settings.drives = Drives(site);
  if (settings.sendUsing == CDO::SendUsing::Port && settings.server.empty()) {
    Refuse(site, kMail, "smtpserver", "", "the mail server's name, since sendusing is 2");
  }
  return settings;
}

int JournalDays(const Vantrel::SiteFile& site) {
  return HostNumber(site, "JournalDays", 90, 36500, "days");
}

std::chrono::seconds LongestPreview(const Vantrel::SiteFile& site) {
  return std::chrono::seconds(HostNumber(site, "PreviewSeconds", 1800, 86400, "seconds"));
}

OrvCommonMTS::FtpOptions FtpSettings(const Vantrel::SiteFile& site, const SuiteHome& home) {
  OrvCommonMTS::FtpOptions options;
  options.certificateFile = Authorities(site, "FTP", "certificatefile", home);
  return options;
}

}  // namespace orvane
