#include "host/check/site_check.hpp"

#include <algorithm>
#include <string>

#include "host/near_name.hpp"
#include "platform/automation/error.hpp"
#include "platform/automation/variant.hpp"
#include "suite/composition/composition.hpp"

namespace orvane::host {
namespace {

class SiteCheck {
 public:
  SiteCheck(const Vantrel::SiteFile& site, Findings& findings)
      : site_(site), file_(site.Path().string()), findings_(findings) {}

  void Run() {
    CheckNames();
    CheckMembership();
    CheckLanguage();
    if (!site_.FindConnection("VnServer", "ECatalog")) {
      findings_.Fail("site.connection", file_, "product \"VnServer\" has no connection \"ECatalog\"",
                     "name the catalogue's database");
    }
  }

 private:
  std::string At(std::string_view section, std::string_view key) const {
    return file_ + ", section \"" + std::string(section) + "\", key \"" + std::string(key) + "\"";
  }

  void CheckNames() {
    std::vector<std::string_view> sections = {"DRIVES"};
    for (const KnownSection& known : KnownSections()) sections.push_back(known.name);
    for (const std::string& section : site_.Sections()) {
      if (std::find(sections.begin(), sections.end(), section) == sections.end()) {
        CheckForeignSection(section, sections);
        continue;
      }
      for (const KnownSection& known : KnownSections()) {
        if (known.name == section) CheckKeys(known);
      }
    }
  }

  void CheckForeignSection(const std::string& section, const std::vector<std::string_view>& sections) {
    const std::string where = file_ + ", section \"" + section + "\"";
    if (const auto near = NearName(section, sections)) {
      findings_.Fail("site.section", where, "is read by no job",
                     "if \"" + std::string(*near) + "\" is meant, write it so");
    } else {
      findings_.Note("site.other-section", where, "belongs to the rest of the suite");
    }
  }

  void CheckKeys(const KnownSection& known) {
    for (const auto& [key, value] : site_.Values(known.name)) {
      if (std::find(known.keys.begin(), known.keys.end(), key) != known.keys.end()) continue;
      if (const auto near = NearName(key, known.keys)) {
        findings_.Fail("site.key", At(known.name, key), "is read by no job",
                       "if \"" + std::string(*near) + "\" is meant, write it so");
      } else {
        findings_.Note("site.other-key", At(known.name, key), "belongs to the rest of the suite");
      }
    }
  }

  void CheckMembership() {
    for (const std::string_view key : {"MemScriptUser", "MemScriptCode", "LDAPRoot"}) {
      if (!site_.FindValue("MEMBERSHIP", key)) {
        findings_.Fail("site.membership", At("MEMBERSHIP", key),
                       "is missing: nobody is found in the directory",
                       key == "LDAPRoot" ? "add it; it may be empty" : "name the technical account");
      }
    }
  }

  void CheckLanguage() {
    const std::string language = site_.FindValue("COMMONPARAMETERS", "DEFAULTLANGUAGE").value_or("");
    try {
      if (!language.empty() && automation::ToInt32(language) > 0) return;
    } catch (const automation::Error&) {
    }
    findings_.Warn("site.language", At("COMMONPARAMETERS", "DEFAULTLANGUAGE"),
                   language.empty() ? "is missing: mails to prospects go out incomplete"
                                    : "is \"" + language + "\", no Windows locale id",
                   "set it to one, such as 1033 for English");
  }

  const Vantrel::SiteFile& site_;
  const std::string file_;
  Findings& findings_;
};

}  // namespace

const std::vector<KnownSection>& KnownSections() {
  static const std::vector<KnownSection> sections = {
      {"COMMONPARAMETERS", {"DEFAULTLANGUAGE"}},
      {"MEMBERSHIP",
       {"MemScriptUser", "MemScriptCode", "LDAPRoot", "LDAPServer", "LDAPStartTLS", "LDAPCertificateFile",
        "LDAPTimeout"}},
      {"CDO",
       {"sendusing", "smtpserverpickupdirectory", "smtpserver", "smtpserverport", "smtptls",
        "smtpcertificatefile", "sendusername", "sendpassword"}},
      {"FTP", {"certificatefile"}},
      {"HOST", {"JournalDays", "PreviewSeconds"}},
  };
  return sections;
}

std::optional<Vantrel::SiteFile> CheckSite(const SuiteHome& home, Findings& findings) {
  try {
    Vantrel::SiteFile site = Vantrel::SiteFile::Read(home.SiteConfiguration());
    SiteCheck(site, findings).Run();
    site.Connection("Orvane", "Orvane");
    CheckSettings(home, site);
    return site;
  } catch (const automation::Error& error) {
    findings.Fail("site.unreadable", home.SiteConfiguration().string(), error.Description(),
                  "set it right; no job runs until then");
    return std::nullopt;
  }
}

}  // namespace orvane::host
