// The parts of "check" that need no suite: each finds the fault that it is for, and nothing where there is
// none.
#include <gmock/gmock.h>
#include <sys/stat.h>

#include <regex>

#include "components/registration/register_jobs.hpp"
#include "host/check/folder_check.hpp"
#include "host/check/locale_check.hpp"
#include "host/check/parameter_check.hpp"
#include "host/check/site_check.hpp"
#include "tests/support/temporary_folder.hpp"
#include "tests/support/test_runtime.hpp"

namespace {

using orvane::host::Finding;
using orvane::host::Findings;
using orvane::host::Parameters;
using orvane::host::Severity;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::UnorderedElementsAre;
using Strings = std::vector<std::string>;

// Each as "severity id".
Strings Told(const Findings& findings) {
  Strings told;
  for (const Finding& finding : findings.All()) {
    const std::string line = orvane::host::TextLine(finding);
    told.push_back(line.substr(0, line.find(':')) + " " + std::string(finding.id));
  }
  return told;
}

class SiteCheckTest : public testing::Test {
 protected:
  static std::string Key(const std::string& name, const std::string& value) {
    return "<key name=\"" + name + "\">" + value + "</key>";
  }
  static std::string Section(const std::string& name, const std::string& keys) {
    return "<section name=\"" + name + "\">" + keys + "</section>";
  }
  static inline const std::string kDatabases =
      "<product name=\"Orvane\"><connection name=\"Orvane\">x</connection></product>"
      "<product name=\"VnServer\"><connection name=\"ECatalog\">x</connection></product>";
  static inline const std::string kPeople = Section(
      "MEMBERSHIP", Key("MemScriptUser", "cn=orvane") + Key("MemScriptCode", "x") + Key("LDAPRoot", ""));
  static inline const std::string kLanguage = Section("COMMONPARAMETERS", Key("DEFAULTLANGUAGE", "1033"));

  Findings Check(const std::string& content) {
    folder_.Write("home/config/siteConfiguration.xml",
                  "<siteConfiguration>" + content + "</siteConfiguration>");
    Findings findings;
    orvane::host::CheckSite(orvane::SuiteHome(folder_.Path() / "home"), findings);
    return findings;
  }

  orvane_test::TemporaryFolder folder_;
};

TEST_F(SiteCheckTest, FindsNothingWhereAllIsWell) {
  EXPECT_THAT(Told(Check(kDatabases + kPeople + kLanguage)), IsEmpty());
}

TEST_F(SiteCheckTest, AKeyNearAKnownOneIsAnErrorThatNamesIt) {
  const std::string mail = Section("CDO", Key("sendusing", "1") + Key("smtpservr", "mail.example"));
  const Findings findings = Check(kDatabases + kPeople + kLanguage + mail);
  ASSERT_THAT(Told(findings), ElementsAre("error site.key"));
  EXPECT_THAT(orvane::host::TextLine(findings.All()[0]),
              HasSubstr("section \"CDO\", key \"smtpservr\": is read by no job; if \"smtpserver\" is meant, "
                        "write it so\n"));
  EXPECT_FALSE(findings.All()[0].unavailable);
}

TEST_F(SiteCheckTest, AMistypedAccountIsToldTwice) {
  const std::string people = Section(
      "MEMBERSHIP", Key("MemScriptUsr", "cn=orvane") + Key("MemScriptCode", "x") + Key("LDAPRoot", ""));
  EXPECT_THAT(Told(Check(kDatabases + people + kLanguage)),
              UnorderedElementsAre("error site.key", "error site.membership"));
}

TEST_F(SiteCheckTest, KeysOfFtpAndHostAreLookedAtAsWell) {
  EXPECT_THAT(Told(Check(kDatabases + kPeople + kLanguage + Section("FTP", Key("CertificateFile", "x")) +
                         Section("HOST", Key("JournalDay", "9")))),
              ElementsAre("error site.key", "error site.key"));
}

TEST_F(SiteCheckTest, AMistypedSectionIsAnError) {
  EXPECT_THAT(Told(Check(kDatabases + kPeople + kLanguage + Section("Cdo", Key("sendusing", "1")))),
              ElementsAre("error site.section"));
}

TEST_F(SiteCheckTest, WhatBelongsToTheRestOfTheSuiteIsANote) {
  EXPECT_THAT(Told(Check(kDatabases + kPeople + kLanguage + Section("WEBFRONT", Key("theme", "dark")) +
                         Section("CDO", Key("smtpusessl", "1")))),
              UnorderedElementsAre("note site.other-section", "note site.other-key"));
}

TEST_F(SiteCheckTest, NamesWhatIsMissing) {
  EXPECT_THAT(Told(Check("<product name=\"Orvane\"><connection name=\"Orvane\">x</connection></product>")),
              UnorderedElementsAre("error site.membership", "error site.membership", "error site.membership",
                                   "warning site.language", "error site.connection"));
  EXPECT_THAT(Told(Check(kPeople + kLanguage)),
              UnorderedElementsAre("error site.connection", "error site.unreadable"));
}

TEST_F(SiteCheckTest, ALanguageIsANumber) {
  EXPECT_THAT(
      Told(Check(kDatabases + kPeople + Section("COMMONPARAMETERS", Key("DEFAULTLANGUAGE", "English")))),
      ElementsAre("warning site.language"));
}

TEST_F(SiteCheckTest, AValueThatMeansNothingIsAnError) {
  const Findings findings =
      Check(kDatabases + kPeople + kLanguage + Section("CDO", Key("smtpserverport", "smtp")));
  ASSERT_THAT(Told(findings), ElementsAre("error site.unreadable"));
  EXPECT_THAT(findings.All()[0].what, HasSubstr("expected a port number"));
}

TEST(SiteKeysTest, AreTheDocumentedOnes) {
  const std::string text = orvane_test::TemporaryFolder::Read(std::filesystem::path(ORVANE_SOURCE_FOLDER) /
                                                              "docs" / "configuration.md");
  static const std::regex kRow(R"(\n\| (?:`(\w+)`)? *\| ([^|]*) \|)");
  static const std::regex kKey("`(\\w+)`");
  std::set<std::string> documented;
  std::string section;
  for (std::sregex_iterator row(text.begin(), text.end(), kRow), end; row != end; ++row) {
    if ((*row)[1].matched) section = row->str(1);
    if (section == "DRIVES") continue;
    const std::string keys = row->str(2);
    for (std::sregex_iterator key(keys.begin(), keys.end(), kKey); key != end; ++key) {
      documented.insert(section + "." + key->str(1));
    }
  }
  std::set<std::string> known;
  for (const auto& [name, keys] : orvane::host::KnownSections()) {
    for (const std::string_view key : keys) known.insert(std::string(name) + "." + std::string(key));
  }
  EXPECT_EQ(known, documented);
}

class ParameterCheckTest : public testing::Test {
 protected:
  Findings Check(std::string_view progId) {
    Findings findings;
    orvane::host::CheckParameters(parameters_, std::span(&progId, 1), findings);
    return findings;
  }
  void Set(const std::string& name, const std::string& value) {
    parameters_.erase(name);
    parameters_.emplace(name, value);
  }

  orvane_test::TestRuntime runtime_;
  Parameters parameters_ = {{"DataFileRelativePath", "Data"}, {"MAXDORMANCYTIME", "730"},
                            {"KeepTemporaryFiles", "8760"},   {"ArchiveAfter", "365"},
                            {"Reminder_Time", "72"},          {"Conclusion_Time", "168"},
                            {"Webfarm Implemented", "false"}, {"FTPPath", ""},
                            {"BackOfficeApplication", "0"},   {"a key of the suite", "x"}};
};

TEST_F(ParameterCheckTest, FindsNothingWhereAllIsWell) {
  for (const std::string_view job :
       {OrvaneProcess::kArchiveProgId, OrvaneProcess::kCleanUpProgId, OrvaneProcess::kDormantUserExpiryProgId,
        OrvaneProcess::kSolveOnNoResponseProgId}) {
    EXPECT_THAT(Told(Check(job)), IsEmpty()) << job;
  }
}

TEST_F(ParameterCheckTest, TellsThatNoLimitDeletesEverybody) {
  for (const char* days : {"0", "-1"}) {
    Set("MAXDORMANCYTIME", days);
    const Findings findings = Check(OrvaneProcess::kDormantUserExpiryProgId);
    ASSERT_THAT(Told(findings), ElementsAre("warning parameter.everybody"));
    EXPECT_THAT(findings.All()[0].what, HasSubstr("every customer without an open question is deleted"));
  }
  Set("KeepTemporaryFiles", "0");
  EXPECT_THAT(Told(Check(OrvaneProcess::kCleanUpProgId)), ElementsAre("warning parameter.everybody"));
  Set("ArchiveAfter", "0");
  EXPECT_THAT(Told(Check(OrvaneProcess::kArchiveProgId)), ElementsAre("warning parameter.everybody"));
}

TEST_F(ParameterCheckTest, TellsOfALimitOfDaysThatWasMeantOtherwise) {
  Set("MAXDORMANCYTIME", "2");
  EXPECT_THAT(Told(Check(OrvaneProcess::kDormantUserExpiryProgId)), ElementsAre("warning parameter.short"));
}

TEST_F(ParameterCheckTest, NumbersAreNumbers) {
  Set("MAXDORMANCYTIME", "two years");
  EXPECT_THAT(Told(Check(OrvaneProcess::kDormantUserExpiryProgId)), ElementsAre("error parameter.number"));
  Set("ArchiveAfter", "99999999999");
  EXPECT_THAT(Told(Check(OrvaneProcess::kArchiveProgId)), ElementsAre("error parameter.number"));
  Set("KeepTemporaryFiles", "35791395");
  EXPECT_THAT(Told(Check(OrvaneProcess::kCleanUpProgId)), ElementsAre("error parameter.range"));
  Set("Webfarm Implemented", "perhaps");
  Set("KeepTemporaryFiles", "24");
  EXPECT_THAT(Told(Check(OrvaneProcess::kCleanUpProgId)), ElementsAre("error parameter.web-farm"));
}

TEST_F(ParameterCheckTest, NamesWhatIsMissing) {
  parameters_.clear();
  EXPECT_THAT(Told(Check(OrvaneProcess::kDormantUserExpiryProgId)), ElementsAre("error parameter.missing"));
  EXPECT_THAT(Told(Check(OrvaneProcess::kArchiveProgId)),
              ElementsAre("warning parameter.data-folder", "error parameter.missing"));
  EXPECT_THAT(Told(Check(OrvaneProcess::kCleanUpProgId)),
              ElementsAre("warning parameter.data-folder", "warning parameter.missing"));
  EXPECT_THAT(Told(Check(OrvaneProcess::kSolveOnNoResponseProgId)),
              ElementsAre("warning parameter.data-folder", "error parameter.missing",
                          "error parameter.missing", "error parameter.missing"));
}

TEST_F(ParameterCheckTest, AMistypedOrDoubledNameIsAnError) {
  Set("maxdormancytime", "30");
  EXPECT_THAT(Told(Check(OrvaneProcess::kDormantUserExpiryProgId)), ElementsAre("error parameter.name"));
  parameters_.erase("maxdormancytime");
  parameters_.emplace("FTPPath", "twice");
  EXPECT_THAT(Told(Check(OrvaneProcess::kDormantUserExpiryProgId)), ElementsAre("error parameter.twice"));
}

TEST_F(ParameterCheckTest, AWebFarmNeedsItsSharedPlace) {
  Set("Webfarm Implemented", "True");
  Set("FTPPath", " ");
  EXPECT_THAT(Told(Check(OrvaneProcess::kArchiveProgId)), ElementsAre("error parameter.shared-place"));
}

TEST_F(ParameterCheckTest, AConclusionComesAfterItsReminder) {
  Set("Conclusion_Time", "72");
  EXPECT_THAT(Told(Check(OrvaneProcess::kSolveOnNoResponseProgId)), ElementsAre("warning parameter.order"));
}

TEST_F(ParameterCheckTest, AnErpIsOneThatTheJobKnowsAndHasItsValues) {
  Set("BackOfficeApplication", "4");
  EXPECT_THAT(Told(Check(OrvaneProcess::kSolveOnNoResponseProgId)),
              ElementsAre("warning parameter.back-office"));
  Set("BackOfficeApplication", "3");
  Set("ERP02_Activity", "CLOSE");
  EXPECT_THAT(Told(Check(OrvaneProcess::kSolveOnNoResponseProgId)),
              ElementsAre("warning parameter.erp", "warning parameter.erp", "warning parameter.erp"));
}

TEST(FolderCheckTest, NamesAFolderThatIsMissing) {
  orvane_test::TemporaryFolder folder;
  Findings findings;
  EXPECT_TRUE(CheckFolder(folder.Path(), orvane::host::Access::Write, "a test", findings));
  EXPECT_TRUE(CheckFolderToMake(folder.Path() / "a" / "b", "a test", findings));
  EXPECT_THAT(Told(findings), IsEmpty());
  EXPECT_FALSE(CheckFolder(folder.Path() / "a", orvane::host::Access::Write, "a test", findings));
  folder.Write("file", "x");
  EXPECT_FALSE(CheckFolderToMake(folder.Path() / "file" / "b", "a test", findings));
  EXPECT_THAT(Told(findings), ElementsAre("error folder.missing", "error folder.missing"));
}

TEST(FolderCheckTest, TellsOfWhatEverybodyCanGetAt) {
  orvane_test::TemporaryFolder folder;
  const auto file = folder.Write("file", "x");
  Findings findings;
  chmod(file.c_str(), 0640);
  orvane::host::CheckPrivate(file, "passwords", findings);
  orvane::host::CheckPrivate(folder.Path() / "none", "passwords", findings);
  EXPECT_THAT(Told(findings), IsEmpty());
  chmod(file.c_str(), 0644);
  orvane::host::CheckPrivate(file, "passwords", findings);
  EXPECT_THAT(Told(findings), ElementsAre("warning folder.private"));
}

TEST(FolderCheckTest, TellsOfLittleRoom) {
  Findings findings;
  orvane::host::JudgeRoom("/data", std::uint64_t{200} << 20, findings);
  EXPECT_THAT(Told(findings), IsEmpty());
  orvane::host::JudgeRoom("/data", (std::uint64_t{200} << 20) - 1, findings);
  ASSERT_THAT(Told(findings), ElementsAre("warning folder.room"));
  EXPECT_THAT(findings.All()[0].what, HasSubstr("only 199 MiB are free"));
}

class OtherYearLocale : public orvane_test::FakeLocale {
 public:
  automation::DateTime ParseDateTime(std::string_view text) const override {
    return automation::AddDays(FakeLocale::ParseDateTime(text), 365);
  }
};

TEST(LocaleCheckTest, ShowsADateAndReadsItBack) {
  orvane_test::TestRuntime test;
  Findings findings;
  orvane::host::CheckLocale("C", findings);
  ASSERT_THAT(Told(findings), ElementsAre("note locale.dates"));
  EXPECT_THAT(findings.All()[0].what, HasSubstr("7-26-2004 09:05:03"));
}

TEST(LocaleCheckTest, ALocaleThatReadsItsDatesAsOthersIsAnError) {
  orvane_test::TestRuntime test;
  test.runtime.locale = std::make_shared<OtherYearLocale>();
  Findings findings;
  orvane::host::CheckLocale("xx", findings);
  EXPECT_THAT(Told(findings), ElementsAre("error locale.dates"));
}

TEST(FindingTest, IsOneLineWhateverIsInIt) {
  Findings findings;
  findings.FailService("service.refused", "where", "said \"no\"\nand \x1b[31mleft", "ask \xFF again");
  EXPECT_EQ(orvane::host::TextLine(findings.All()[0]),
            "error: where: said \"no\" and  [31mleft; ask \xFF again\n");
  EXPECT_EQ(orvane::host::JsonLine(findings.All()[0]),
            "{\"v\":1,\"severity\":\"error\",\"id\":\"service.refused\",\"where\":\"where\",\"what\":\"said "
            "\\\"no\\\"\\nand \\u001b[31mleft\",\"do\":\"ask \xEF\xBF\xBD again\",\"unavailable\":true}\n");
}

TEST(FindingTest, ShowsTheFirstOfMany) {
  EXPECT_EQ(orvane::host::FirstOf({"1"}), "1");
  EXPECT_EQ(orvane::host::FirstOf({"1", "2", "3", "4", "5", "6", "7"}), "1, 2, 3, 4, 5 and 2 more");
}

}  // namespace
