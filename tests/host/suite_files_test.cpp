#include "host/init/suite_files.hpp"

#include <gtest/gtest.h>

#include "suite/configuration/site_file.hpp"
#include "tests/support/temporary_folder.hpp"

namespace {

using orvane::SuiteHome;

class SuiteFilesTest : public testing::Test {
 protected:
  orvane_test::TemporaryFolder folder_;
  const SuiteHome home_{folder_.Path() / "home"};
};

TEST_F(SuiteFilesTest, APlaceIsFreeWhenItIsMissingOrEmpty) {
  EXPECT_TRUE(orvane::host::IsFree(home_));
  std::filesystem::create_directory(home_.Path());
  EXPECT_TRUE(orvane::host::IsFree(home_));
  folder_.Write("home/.hidden", "");
  EXPECT_FALSE(orvane::host::IsFree(home_));
  EXPECT_FALSE(orvane::host::IsFree(SuiteHome(home_.Path() / ".hidden")));
}

TEST_F(SuiteFilesTest, TheConfigurationThatIsMadeCanBeRead) {
  orvane::host::MakeSuiteFiles(home_, "Driver={A&B};PWD=<x>", "Provider=SQLite;Data Source=db\\c");
  const auto site = Vantrel::SiteFile::Read(home_.SiteConfiguration());
  EXPECT_EQ(site.Connection("Orvane", "Orvane"), "Driver={A&B};PWD=<x>");
  EXPECT_EQ(site.Connection("VnServer", "ECatalog"), "Provider=SQLite;Data Source=db\\c");
  EXPECT_EQ(site.Value("COMMONPARAMETERS", "DEFAULTLANGUAGE"), "1033");
  EXPECT_EQ(site.Value("MEMBERSHIP", "LDAPRoot"), "");
  EXPECT_EQ(site.Value("MEMBERSHIP", "LDAPServer"), "");
  EXPECT_EQ(site.Value("CDO", "sendusing"), "1");
  EXPECT_EQ(site.Value("CDO", "smtpserverpickupdirectory"), "mail\\pickup");
}

TEST_F(SuiteFilesTest, MakesEveryFolderThatTheJobsUse) {
  orvane::host::MakeSuiteFiles(home_, "x", "y");
  for (const char* folder : {"config", "db", "mail/pickup", "Orvane/Mail/Sheets", "Data/ANALYSIS",
                             "Data/Archives", "Data/CHAT", "Data/DispatchFiles", "Data/HTML",
                             "Data/SRATTACHMENTS", "Data/tempAttachments", "Data/TS/EndUser/Templates",
                             "Data/TS/EndUser/Trees", "Data/TS/Manager/Templates", "Data/TS/Manager/Trees"}) {
    EXPECT_TRUE(std::filesystem::is_directory(home_.Path() / folder)) << folder;
  }
}

TEST_F(SuiteFilesTest, WhatHoldsPasswordsIsNotForEverybody) {
  orvane::host::MakeSuiteFiles(home_, "x", "y");
  const auto permissions = std::filesystem::status(home_.Path() / "config").permissions();
  EXPECT_EQ(permissions & std::filesystem::perms::others_all, std::filesystem::perms::none);
}

TEST_F(SuiteFilesTest, RemovesWhatItMadeAndNothingElse) {
  orvane::host::MakeSuiteFiles(home_, "x", "y");
  orvane::host::RemoveSuiteFiles(home_, false);
  EXPECT_TRUE(orvane::host::IsFree(home_));
  EXPECT_TRUE(std::filesystem::exists(home_.Path()));
  orvane::host::RemoveSuiteFiles(home_, true);
  EXPECT_FALSE(std::filesystem::exists(home_.Path()));
}

}  // namespace
