#include "host/init/suite_files.hpp"

#include <sys/stat.h>

#include <cerrno>
#include <fstream>
#include <system_error>

#include "host/init/embedded.hpp"
#include "host/markup.hpp"

namespace orvane::host {
namespace {

namespace fs = std::filesystem;

constexpr const char* kFolders[] = {
    "config",
    "db",
    "mail/pickup",
    "Orvane/Mail/Sheets",
    "Data/ANALYSIS",
    "Data/Archives",
    "Data/CHAT",
    "Data/DispatchFiles",
    "Data/HTML",
    "Data/SRATTACHMENTS",
    "Data/tempAttachments",
    "Data/TS/EndUser/Templates",
    "Data/TS/EndUser/Trees",
    "Data/TS/Manager/Templates",
    "Data/TS/Manager/Trees",
};

constexpr std::string_view kDirectory =
    R"(# The embedded membership directory, used while LDAPServer in siteConfiguration.xml is empty.
# The first entry is the technical account that the jobs enter with; people follow as inetOrgPerson entries.
dn: cn=orvane
objectClass: organizationalRole
objectClass: simpleSecurityObject
cn: orvane
userPassword: secret
)";

}  // namespace

bool IsFree(const SuiteHome& home) {
  if (!fs::exists(fs::symlink_status(home.Path()))) return true;
  return fs::is_directory(home.Path()) && fs::is_empty(home.Path());
}

std::string SiteConfigurationText(std::string_view database, std::string_view catalogue) {
  return R"(<?xml version="1.0" encoding="UTF-8"?>
<siteConfiguration>
  <product name="Orvane">
    <connection name="Orvane">)" +
         MarkupText(database) + R"(</connection>
  </product>
  <product name="VnServer">
    <connection name="ECatalog">)" +
         MarkupText(catalogue) + R"(</connection>
  </product>

  <section name="COMMONPARAMETERS">
    <!-- Windows locale id of the language for prospects: 1033 English, 1043 Dutch, 1031 German, 1041 Japanese -->
    <key name="DEFAULTLANGUAGE">1033</key>
  </section>

  <section name="MEMBERSHIP">
    <key name="MemScriptUser">cn=orvane</key>
    <key name="MemScriptCode">secret</key>
    <key name="LDAPRoot"></key>
    <!-- ldap://host:port; empty: the file directory.ldif beside this one -->
    <key name="LDAPServer"></key>
  </section>

  <!-- How mail leaves this machine. -->
  <section name="CDO">
    <!-- 1: one .eml file a mail in the pickup folder; 2: SMTP -->
    <key name="sendusing">1</key>
    <key name="smtpserverpickupdirectory">mail\pickup</key>
    <key name="smtpserver"></key>
    <key name="smtpserverport">25</key>
  </section>
</siteConfiguration>
)";
}

void WriteFile(const fs::path& file, std::string_view content, unsigned mode) {
  std::ofstream stream(file, std::ios::binary | std::ios::trunc);
  // Before anything is in it.
  if (mode != 0 && chmod(file.c_str(), mode) != 0) stream.setstate(std::ios::failbit);
  stream << content;
  stream.close();
  if (!stream)
    throw fs::filesystem_error("cannot write", file, std::error_code(errno, std::generic_category()));
}

void MakeSuiteFiles(const SuiteHome& home, std::string_view database, std::string_view catalogue) {
  for (const char* folder : kFolders) fs::create_directories(home.Path() / folder);
  // It holds the passwords of the databases and of the technical account.
  WriteFile(home.Path() / "config" / "siteConfiguration.xml", SiteConfigurationText(database, catalogue),
            0600);
  WriteFile(home.Directory(), kDirectory);
  chmod((home.Path() / "config").c_str(), 0750);
  for (const char* sheet : {"reminder.xsl", "conclusion.xsl", "mail_page.xsl"}) {
    WriteFile(home.Path() / "Orvane" / "Mail" / "Sheets" / sheet,
              EmbeddedFile("demo/sheets/" + std::string(sheet)));
  }
}

void RemoveSuiteFiles(const SuiteHome& home, bool madeHome) {
  std::error_code ignored;
  if (madeHome) {
    fs::remove_all(home.Path(), ignored);
    return;
  }
  for (const char* item : {"config", "db", "mail", "Orvane", "Data"})
    fs::remove_all(home.Path() / item, ignored);
}

}  // namespace orvane::host
