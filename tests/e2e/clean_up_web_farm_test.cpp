// OrvaneProcess.CleanUp on a web farm, through the real program and real FTP servers.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/e2e/clean_up_suite.hpp"
#include "tests/servers/server_state.hpp"
#include "tests/suite/file_handling/shared_place.hpp"

std::vector<std::string> orvane_test::KindsOfPlace() {
  return {"vsftpd", "ftpes", "pyftpd"};
}

namespace orvane_test {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

constexpr int kWeek = 7 * 24 * 60;

class CleanUpWebFarmTest : public testing::TestWithParam<std::string> {
 protected:
  CleanUpWebFarmTest() {
    suite_.SetParameter("Webfarm Implemented", "true");
    suite_.SetParameter("FTPPath", place_.FtpPath());
    if (!place_.CertificateFile().empty()) TrustTheServer();
  }

  void TrustTheServer() const {
    const fs::path file = suite_.suite.Home() / "config/siteConfiguration.xml";
    std::string site = TemporaryFolder::Read(file);
    const std::string end = "</siteConfiguration>";
    site.insert(site.rfind(end), "<section name=\"FTP\"><key name=\"certificatefile\">" +
                                     place_.CertificateFile() + "</key></section>\n");
    suite_.suite.Folder().Write("home/config/siteConfiguration.xml", site);
  }

  CleanUpSuite suite_;
  SharedPlace place_{GetParam()};
};

INSTANTIATE_TEST_SUITE_P(Servers, CleanUpWebFarmTest, testing::ValuesIn(KindsOfPlace()),
                         [](const auto& server) { return server.param; });

TEST_P(CleanUpWebFarmTest, WhatMustBeGoneIsGoneOnTheServerAndTheRowsStay) {
  const std::string old = DateText(-30 * kHour), young = DateText(-20 * kHour);
  suite_.database.Execute(
      "INSERT INTO CHATSESSIONS VALUES ('live.txt');"
      "INSERT INTO PREVIEW VALUES (1, 'draft');"
      "INSERT INTO QUESTIONS VALUES (17, 0, '" +
      old + "', ''), (20, 0, '" + young +
      "', '');"
      "INSERT INTO DATAFILES VALUES (17, 'a.txt', 1, '" +
      young + "'), (18, 'alt.txt', 1, '" + old + "');");
  suite_.AddFile("SRATTACHMENTS/17Q/a.txt");
  suite_.AddFile("SRATTACHMENTS/18Q/alt.txt");
  suite_.AddFile("CHAT/live.txt");
  suite_.AddFile("CHAT/orphan.txt");
  for (const char* name :
       {"SRATTACHMENTS/17Q/a.txt", "SRATTACHMENTS/17Q/deep/b.txt", "SRATTACHMENTS/18Q/alt.txt",
        "SRATTACHMENTS/18Q/other.txt", "SRATTACHMENTS/20Q/c.txt", "CHAT/live.txt", "CHAT/orphan.txt",
        "CHAT/elsewhere.txt", "HTML/x.htm"}) {
    place_.AddFile(name);
  }
  place_.AddFile("DispatchFiles/old.xml", "x", kWeek);
  place_.AddFile("DispatchFiles/new.xml", "x", 60);
  place_.AddFile("tempAttachments/old.xml", "x", kWeek);

  const Outcome outcome = suite_.Run();

  EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
  EXPECT_THAT(place_.Contents(),
              ElementsAre("CHAT/", "CHAT/elsewhere.txt", "CHAT/live.txt", "DispatchFiles/",
                          "DispatchFiles/new.xml", "HTML/", "HTML/x.htm", "SRATTACHMENTS/",
                          "SRATTACHMENTS/18Q/", "SRATTACHMENTS/18Q/other.txt", "SRATTACHMENTS/20Q/",
                          "SRATTACHMENTS/20Q/c.txt", "tempAttachments/"));
  EXPECT_THAT(suite_.Files(), ElementsAre("CHAT/live.txt"));
  EXPECT_THAT(suite_.database.Rows("SELECT Q_ID FROM QUESTIONS ORDER BY Q_ID"), ElementsAre("17", "20"));
  EXPECT_THAT(suite_.database.Rows("SELECT FILENAME FROM DATAFILES ORDER BY ID1"),
              ElementsAre("a.txt", "alt.txt"));
  EXPECT_THAT(suite_.database.Rows("SELECT * FROM PREVIEW"), IsEmpty());
  EXPECT_THAT(suite_.suite.ErrorLog(),
              ElementsAre(ObjectRequiredEntry("Orvprocess.cleanup.DeleteChatSession")));
  EXPECT_EQ(WithoutTimes(suite_.suite.RunLog(kCleanUpLog)), CleanUpSuite::FinishedRun());
}

TEST_P(CleanUpWebFarmTest, ANameThatPointsOutOfItsFolderIsRefusedAndSaidSo) {
  suite_.database.Execute("INSERT INTO DATAFILES VALUES (18, '..\\..\\precious.txt', 1, '" +
                          DateText(-30 * kHour) + "')");
  suite_.AddFile("SRATTACHMENTS/18Q/other.txt");
  place_.AddFile("precious.txt");
  place_.AddFile("SRATTACHMENTS/18Q/other.txt");

  EXPECT_EQ(suite_.Run().exitCode, 0);

  EXPECT_THAT(place_.Contents(), testing::Contains("precious.txt"));
  EXPECT_THAT(suite_.suite.ErrorLog(),
              testing::Contains(
                  "0 | OrvCommonMTS.FileHandling | OrvCommonMTS.FileHandling.DeleteListedItems refused "
                  "the name \"18Q\\..\\..\\precious.txt\" in SRATTACHMENTS: it would leave its folder."));
}

TEST_P(CleanUpWebFarmTest, AWrongPasswordIsReportedBySweepAndTheOthersGoOn) {
  std::string path = place_.FtpPath();
  const std::size_t password = path.find(':', 6) + 1;
  path.replace(password, path.find('@') - password, "wrong-one");
  suite_.SetParameter("FTPPath", path);
  suite_.AddFile("HTML/a.htm");
  suite_.database.Execute("INSERT INTO QUESTIONS VALUES (17, 0, '" + DateText(-30 * kHour) + "', '')");
  place_.AddFile("SRATTACHMENTS/17Q/a.txt");

  EXPECT_EQ(suite_.Run().exitCode, 0);

  const auto denied = [](const std::string& source) {
    return testing::AllOf(
        testing::StartsWith("0 | OrvCommonMTS.FileHandling | " + source + " caught: FTP server "),
        HasSubstr("Access denied: 530"), Not(HasSubstr("wrong-one")));
  };
  EXPECT_THAT(suite_.suite.ErrorLog(),
              ElementsAre(denied("ORVProcess.cleanup.DeleteChatFileswithoutcomparingDatabase"),
                          denied("ORVProcess.cleanup.DeletedispatchXmlFiles"),
                          denied("ORVProcess.cleanup.DeleteSRAttchmentsFilesWithzerostatus"),
                          denied("ORVProcess.cleanup.DeleteTempAttachmentsXMLFiles")));
  EXPECT_THAT(suite_.Files(), IsEmpty());
  EXPECT_EQ(WithoutTimes(suite_.suite.RunLog(kCleanUpLog)), CleanUpSuite::FinishedRun());
  EXPECT_THAT(place_.Contents(), testing::Contains("SRATTACHMENTS/17Q/a.txt"));
}

class CleanUpFtpFailureTest : public testing::Test {
 protected:
  CleanUpSuite suite_;
};

TEST_F(CleanUpFtpFailureTest, AServerThatIsDownIsReportedAndTheLocalSweepsRun) {
  {
    const Server server = Server::StartOwn("vsftpd");
    suite_.SetParameter("FTPPath", server.Setting("url"));
  }
  suite_.SetParameter("Webfarm Implemented", "1");
  suite_.AddFile("HTML/a.htm");

  EXPECT_EQ(suite_.Run().exitCode, 0);

  EXPECT_THAT(suite_.Files(), IsEmpty());
  const std::vector<std::string> entries = suite_.suite.ErrorLog();
  EXPECT_EQ(entries.size(), 3u);
  for (const std::string& entry : entries) {
    EXPECT_THAT(entry, HasSubstr("Failed to connect"));
    EXPECT_THAT(entry, Not(HasSubstr("shared-secret")));
  }
  EXPECT_EQ(WithoutTimes(suite_.suite.RunLog(kCleanUpLog)), CleanUpSuite::FinishedRun());
}

TEST_F(CleanUpFtpFailureTest, AConnectionThatIsCutOffInTheMiddleIsReportedAndTheNextSweepRuns) {
  const SharedPlace place("pyftpd");
  suite_.SetParameter("FTPPath", place.FtpPath());
  suite_.SetParameter("Webfarm Implemented", "1");
  suite_.database.Execute("INSERT INTO CHATSESSIONS VALUES ('live.txt')");
  for (const char* name : {"CHAT/a-orphan.txt", "CHAT/hang-up.txt", "CHAT/z-orphan.txt"}) {
    suite_.AddFile(name);
    place.AddFile(name);
  }
  place.AddFile("DispatchFiles/old.xml", "x", kWeek);

  EXPECT_EQ(suite_.Run().exitCode, 0);

  EXPECT_THAT(place.Contents(),
              ElementsAre("CHAT/", "CHAT/hang-up.txt", "CHAT/z-orphan.txt", "DispatchFiles/"));
  EXPECT_THAT(suite_.Files(), IsEmpty());
  EXPECT_THAT(suite_.suite.ErrorLog(),
              ElementsAre(HasSubstr(" | Orvprocess.cleanup.DeleteChatSession caught: FTP "
                                    "server 127.0.0.1:")));
}

}  // namespace
}  // namespace orvane_test
