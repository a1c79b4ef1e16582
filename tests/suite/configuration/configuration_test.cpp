#include "suite/configuration/configuration.hpp"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <chrono>
#include <string>
#include <thread>

#include "components/interfaces/configuration.hpp"
#include "platform/automation/runtime.hpp"
#include "platform/base/file_stamp.hpp"
#include "suite/configuration/site_file.hpp"
#include "tests/support/raised_error.hpp"
#include "tests/support/temporary_folder.hpp"

namespace {

std::string SiteXml(std::string_view database, std::string_view language) {
  return "<siteConfiguration>\n<product name=\"Orvane\"><connection name=\"Orvane\">" +
         std::string(database) +
         "</connection></product>\n<section name=\"COMMONPARAMETERS\"><key name=\"DEFAULTLANGUAGE\">" +
         std::string(language) + "</key></section>\n</siteConfiguration>\n";
}

using orvane_test::ErrorOf;

class ConfigurationTest : public testing::Test {
 protected:
  ConfigurationTest() : scope_(runtime_) {
    folder_.Write("home/config/siteConfiguration.xml", SiteXml("first", "1033"));
    Vantrel::RegisterConfiguration(runtime_.classes, home_);
  }

  Vantrel::ConfigurationPtr Create() {
    return automation::CreateObject<Vantrel::Configuration>("Vantrel.Configuration");
  }

  // The description of the component's error with this number, which the action must raise.
  template <class Action>
  static std::string Failure(int number, Action action) {
    const automation::Error error = ErrorOf(action);
    EXPECT_EQ(error.Number(), number);
    EXPECT_EQ(error.Source(), "Vantrel.Configuration");
    return error.Description();
  }

  // Of a file that ends behind the start of its root element.
  std::string WhyBroken() const {
    return file_ + ":1: Premature end of data in tag siteConfiguration line 1; expected well-formed XML";
  }

  orvane_test::TemporaryFolder folder_;
  const std::filesystem::path home_ = folder_.Path() / "home";
  const std::string file_ = (home_ / "config/siteConfiguration.xml").string();
  automation::Runtime runtime_;
  automation::RuntimeScope scope_;
};

TEST_F(ConfigurationTest, RootPathAndInstallDirectoryAreTheHome) {
  EXPECT_EQ(Create()->RootPath(), home_.string());
  EXPECT_EQ(Create()->getInstallDir(), home_.string());
}

TEST_F(ConfigurationTest, TheHomeIsAbsoluteAndPlain) {
  EXPECT_EQ(Vantrel::AbsoluteHome("/a/b/../c/./"), "/a/c");
  EXPECT_EQ(Vantrel::AbsoluteHome("/"), "/");
  EXPECT_EQ(Vantrel::AbsoluteHome("x"), std::filesystem::current_path() / "x");
}

TEST_F(ConfigurationTest, AnswersTheConnectionOfTheSelectedProduct) {
  const auto configuration = Create();
  configuration->SelectProduct("Orvane", 0);
  EXPECT_EQ(configuration->GetConnectionString("Orvane"), "first");
  configuration->SelectProduct("VnServer", 0);
  EXPECT_EQ(Failure(Vantrel::kMissingValue, [&] { configuration->GetConnectionString("Orvane"); }),
            file_ + ": product \"VnServer\" has no connection \"Orvane\"");
}

TEST_F(ConfigurationTest, ChangesOfTheFileCountAtOnce) {
  const auto configuration = Create();
  configuration->SelectProduct("Orvane", 0);
  ASSERT_EQ(configuration->GetConnectionString("Orvane"), "first");
  folder_.Write("home/config/siteConfiguration.xml", SiteXml("the second one", "1033"));
  EXPECT_EQ(configuration->GetConnectionString("Orvane"), "the second one");
}

// With the file as it was settled, so that its times tell about any change.
class SettledConfigurationTest : public ConfigurationTest {
 protected:
  SettledConfigurationTest() {
    WaitUntilSettled(File());
    configuration_ = Create();
    configuration_->SelectProduct("Orvane", 0);
    EXPECT_EQ(Connection(), "first");
    EXPECT_EQ(Connection(), "first");
  }

  static struct stat StatusOf(const std::filesystem::path& file) {
    struct stat status {};
    EXPECT_EQ(stat(file.c_str(), &status), 0);
    return status;
  }
  static void WaitUntilSettled(const std::filesystem::path& file) {
    const base::FileStamp stamp(StatusOf(file));
    while (!stamp.HasSettledFor(std::chrono::milliseconds(20))) std::this_thread::yield();
  }
  std::string Connection() { return configuration_->GetConnectionString("Orvane"); }
  std::filesystem::path File() const { return home_ / "config/siteConfiguration.xml"; }

  Vantrel::ConfigurationPtr configuration_;
};

TEST_F(SettledConfigurationTest, AFileOfTheSameSizeWrittenInPlaceCountsAtOnce) {
  const auto time = std::filesystem::last_write_time(File());
  folder_.Write("home/config/siteConfiguration.xml", SiteXml("other", "1033"));
  std::filesystem::last_write_time(File(), time);
  EXPECT_EQ(Connection(), "other");
}

TEST_F(SettledConfigurationTest, AFileThatIsMovedIntoItsPlaceCountsAtOnce) {
  folder_.Write("home/config/new", SiteXml("moved", "1033"));
  std::filesystem::rename(home_ / "config/new", File());
  EXPECT_EQ(Connection(), "moved");
}

TEST_F(SettledConfigurationTest, AFileThatIsMovedAwayIsMissedAtOnce) {
  std::filesystem::rename(File(), home_ / "config/old");
  EXPECT_EQ(
      Failure(Vantrel::kUnreadableFile, [&] { Connection(); }),
      file_ + ": cannot be read: No such file or directory; expected the site configuration of a suite");
}

TEST_F(SettledConfigurationTest, ALinkThatIsTurnedToAnotherFileCountsAtOnce) {
  folder_.Write("one", SiteXml("one", "1033"));
  folder_.Write("two", SiteXml("two", "1033"));
  WaitUntilSettled(folder_.Path() / "two");
  std::filesystem::remove(File());
  std::filesystem::create_symlink(folder_.Path() / "one", File());
  ASSERT_EQ(Connection(), "one");
  ASSERT_EQ(Connection(), "one");
  std::filesystem::create_symlink(folder_.Path() / "two", home_ / "config/new");
  std::filesystem::rename(home_ / "config/new", File());
  EXPECT_EQ(Connection(), "two");
}

TEST_F(SettledConfigurationTest, AFolderThatIsExchangedCountsWithinASecond) {
  folder_.Write("home/new/siteConfiguration.xml", SiteXml("exchanged", "1033"));
  std::filesystem::rename(home_ / "config", home_ / "old");
  std::filesystem::rename(home_ / "new", home_ / "config");
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(1100);
  while (Connection() != "exchanged" && std::chrono::steady_clock::now() < deadline) {
    std::this_thread::yield();
  }
  EXPECT_EQ(Connection(), "exchanged");
}

TEST_F(ConfigurationTest, AFileThatBreaksWhileRunningIsReportedAndNotRemembered) {
  const auto configuration = Create();
  configuration->SelectProduct("Orvane", 0);
  ASSERT_EQ(configuration->GetConnectionString("Orvane"), "first");
  folder_.Write("home/config/siteConfiguration.xml", "<siteConfiguration>");
  const auto read = [&] { configuration->GetConnectionString("Orvane"); };
  EXPECT_EQ(Failure(Vantrel::kUnreadableFile, read), WhyBroken());
  EXPECT_EQ(Failure(Vantrel::kUnreadableFile, read), WhyBroken()) << "and again";
  folder_.Write("home/config/siteConfiguration.xml", SiteXml("mended", "1033"));
  EXPECT_EQ(configuration->GetConnectionString("Orvane"), "mended");
}

TEST_F(ConfigurationTest, ValuesAreReadAfterLoading) {
  const auto configuration = Create();
  EXPECT_EQ(ErrorOf([&] { configuration->GetValue("COMMONPARAMETERS", "DEFAULTLANGUAGE"); }).Number(),
            Vantrel::kNotLoaded);
  configuration->Load();
  EXPECT_EQ(configuration->GetValue("COMMONPARAMETERS", "DEFAULTLANGUAGE"), automation::Variant("1033"));
}

TEST_F(ConfigurationTest, LoadsAFileByThePathThatJobsBuild) {
  folder_.Write("home/config/siteConfiguration.xml", SiteXml("first", "1043"));
  const auto configuration = Create();
  configuration->LoadFile(home_.string() + "\\config\\SiteConfiguration.xml");
  EXPECT_EQ(configuration->GetValue("COMMONPARAMETERS", "DEFAULTLANGUAGE"), automation::Variant("1043"));
}

TEST_F(ConfigurationTest, LoadReadsTheFileAnewEachTime) {
  const auto configuration = Create();
  configuration->Load();
  folder_.Write("home/config/siteConfiguration.xml", SiteXml("first", "1041"));
  EXPECT_EQ(configuration->GetValue("COMMONPARAMETERS", "DEFAULTLANGUAGE"), automation::Variant("1033"));
  configuration->Load();
  EXPECT_EQ(configuration->GetValue("COMMONPARAMETERS", "DEFAULTLANGUAGE"), automation::Variant("1041"));
}

TEST_F(ConfigurationTest, LoadReportsABrokenFileUntilItIsMended) {
  const auto configuration = Create();
  configuration->Load();
  folder_.Write("home/config/siteConfiguration.xml", "<siteConfiguration>");
  EXPECT_EQ(Failure(Vantrel::kUnreadableFile, [&] { configuration->Load(); }), WhyBroken());
  EXPECT_EQ(Failure(Vantrel::kUnreadableFile, [&] { Create()->Load(); }), WhyBroken());
  folder_.Write("home/config/siteConfiguration.xml", SiteXml("first", "1043"));
  configuration->Load();
  EXPECT_EQ(configuration->GetValue("COMMONPARAMETERS", "DEFAULTLANGUAGE"), automation::Variant("1043"));
}

}  // namespace
