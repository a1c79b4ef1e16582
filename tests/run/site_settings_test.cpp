#include "suite/composition/site_settings.hpp"

#include <gtest/gtest.h>

#include "platform/automation/error.hpp"
#include "tests/support/temporary_folder.hpp"

namespace {

class SiteSettingsTest : public testing::Test {
 protected:
  Vantrel::SiteFile Site(const std::string& sections) {
    return Vantrel::SiteFile::Read(folder_.Write("home/config/siteConfiguration.xml",
                                                 "<siteConfiguration>" + sections + "</siteConfiguration>"));
  }
  static std::string Mail(const std::string& keys) { return "<section name=\"CDO\">" + keys + "</section>"; }
  static std::string Key(const std::string& name, const std::string& value) {
    return "<key name=\"" + name + "\">" + value + "</key>";
  }
  CDO::Settings Settings(const std::string& keys) { return orvane::MailSettings(Site(Mail(keys)), home_); }

  std::string Refusal(const std::string& sections) {
    try {
      const auto site = Site(sections);
      orvane::Drives(site);
      orvane::MailSettings(site, home_);
    } catch (const automation::Error& error) {
      EXPECT_EQ(error.Number(), Vantrel::kUnreadableFile);
      const std::string file = home_.SiteConfiguration().string() + ": ";
      EXPECT_EQ(error.Description().compare(0, file.size(), file), 0) << error.Description();
      return error.Description().substr(file.size());
    }
    return "accepted";
  }

  orvane_test::TemporaryFolder folder_;
  const orvane::SuiteHome home_{folder_.Path() / "home"};
};

TEST_F(SiteSettingsTest, MailGoesToThePickupFolderUnlessSaidOtherwise) {
  const CDO::Settings settings = orvane::MailSettings(Site(""), home_);
  EXPECT_EQ(settings.sendUsing, CDO::SendUsing::Pickup);
  EXPECT_EQ(settings.pickupDirectory, (home_.Path() / "mail/pickup").string());
}

TEST_F(SiteSettingsTest, APickupFolderMayBeElsewhere) {
  EXPECT_EQ(Settings(Key("smtpserverpickupdirectory", "/var/spool/pickup")).pickupDirectory,
            "/var/spool/pickup");
  EXPECT_EQ(Settings(Key("smtpserverpickupdirectory", "out\\mails")).pickupDirectory,
            (home_.Path() / "out/mails").string());
}

TEST_F(SiteSettingsTest, ReadsTheMailServer) {
  const CDO::Settings settings =
      Settings(Key("sendusing", "2") + Key("smtpserver", "mail.example") + Key("smtpserverport", "587") +
               Key("smtptls", "starttls") + Key("smtpcertificatefile", "/etc/ca.pem") +
               Key("sendusername", "orvane") + Key("sendpassword", "x y"));
  EXPECT_EQ(settings.sendUsing, CDO::SendUsing::Port);
  EXPECT_EQ(settings.server, "mail.example");
  EXPECT_EQ(settings.port, 587);
  EXPECT_EQ(settings.tls, CDO::Tls::StartTls);
  EXPECT_EQ(settings.certificateFile, "/etc/ca.pem");
  EXPECT_EQ(settings.userName, "orvane");
  EXPECT_EQ(settings.password, "x y");
}

TEST_F(SiteSettingsTest, TheFarmsAuthorityIsTheMachinesUnlessAFileIsNamed) {
  const auto certificates = [this](const std::string& value) {
    return orvane::FtpSettings(Site("<section name=\"FTP\">" + Key("certificatefile", value) + "</section>"),
                               home_)
        .certificateFile;
  };
  EXPECT_EQ(orvane::FtpSettings(Site(""), home_).certificateFile, "");
  EXPECT_EQ(certificates(""), "");
  EXPECT_EQ(certificates("/etc/ca.pem"), "/etc/ca.pem");
  EXPECT_EQ(certificates("config\\farm.pem"), (home_.Path() / "config/farm.pem").string());
}

TEST_F(SiteSettingsTest, AuthoritiesOfTheMailServerMayLieInTheInstallation) {
  EXPECT_EQ(Settings(Key("smtpcertificatefile", "config\\mail.pem")).certificateFile,
            (home_.Path() / "config/mail.pem").string());
  EXPECT_EQ(Settings(Key("smtpcertificatefile", "")).certificateFile, "");
}

TEST_F(SiteSettingsTest, RefusesMailSettingsThatMeanNothing) {
  EXPECT_EQ(
      Refusal(Mail(Key("sendusing", "3"))),
      "section \"CDO\", key \"sendusing\": found \"3\"; expected 1 for the pickup folder or 2 for SMTP");
  EXPECT_EQ(Refusal(Mail(Key("smtpserverport", "25x"))),
            "section \"CDO\", key \"smtpserverport\": found \"25x\"; expected a port number, 1 to 65535");
  EXPECT_EQ(Refusal(Mail(Key("smtpserverport", "0"))),
            "section \"CDO\", key \"smtpserverport\": found \"0\"; expected a port number, 1 to 65535");
  EXPECT_EQ(Refusal(Mail(Key("smtptls", "yes"))),
            "section \"CDO\", key \"smtptls\": found \"yes\"; expected none, starttls or smtps");
  EXPECT_EQ(Refusal(Mail(Key("sendusing", "2") + Key("smtpserver", ""))),
            "section \"CDO\", key \"smtpserver\": found \"\"; expected the mail server's name, since "
            "sendusing is 2");
}

TEST_F(SiteSettingsTest, DriveLettersStandForFolders) {
  EXPECT_EQ(orvane::Drives(Site("<section name=\"DRIVES\">" + Key("D", "/mnt/d") + "</section>")),
            (std::map<char, std::string>{{'D', "/mnt/d"}}));
  EXPECT_TRUE(orvane::Drives(Site("")).empty());
  EXPECT_EQ(Refusal("<section name=\"DRIVES\">" + Key("DD", "/mnt") + "</section>"),
            "section \"DRIVES\", key \"DD\": found \"/mnt\"; expected a key of one letter, A to Z");
  EXPECT_EQ(Refusal("<section name=\"DRIVES\">" + Key("D", "mnt") + "</section>"),
            "section \"DRIVES\", key \"D\": found \"mnt\"; expected an absolute path");
}

}  // namespace
