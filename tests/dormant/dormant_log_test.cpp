// The run log, byte for byte.
#include "components/registration/register_jobs.hpp"
#include "platform/scripting/file_system_object.hpp"
#include "tests/dormant/dormant_fixture.hpp"
#include "tests/support/private_member.hpp"

namespace orvane_test {

struct WriteJobLog {
  using Member = void (OrvaneProcess::DormantUserExpiry::*)(std::int16_t);
  friend Member MemberOf(WriteJobLog);
};
template struct PrivateMember<WriteJobLog, &OrvaneProcess::DormantUserExpiry::WriteJobLog>;

namespace {

TEST_F(DormantUserExpiryTest, WritesStartBannerAndStopLine) {
  SetLimit("'30'");
  EXPECT_EQ(Expire(), 0);
  EXPECT_EQ(Log(),
            "*****************************************************\r\n"
            "Orvane NTService Log \r\n"
            "*****************************************************\r\n"
            "Dormant User Expiry - NTService Started at : 7-26-2004 09:05:03\r\n"
            " NTService Stopped at : 7-26-2004 09:05:03\r\n"
            "*****************************************************\r\n");
}

TEST_F(DormantUserExpiryTest, MakesTheLogFolderBesideTheInstallation) {
  SetLimit("'30'");
  EXPECT_FALSE(disk_->Exists("/suite/OrvLog"));
  EXPECT_EQ(Expire(), 0);
  EXPECT_TRUE(disk_->Exists("/suite/OrvLog"));
}

TEST_F(DormantUserExpiryTest, SecondRunOfADayAppends) {
  SetLimit("'30'");
  EXPECT_EQ(Expire(), 0);
  const std::string once = Log();
  EXPECT_EQ(Expire(), 0);
  EXPECT_EQ(Log(), once + once);
}

TEST_F(DormantUserExpiryTest, RunAcrossMidnightStopsInTheNextDaysFile) {
  SetLimit("'30'");
  environment_.now = automation::DateTime::FromParts(
      {.year = 2004, .month = 7, .day = 3, .hour = 23, .minute = 59, .second = 59});
  adodb_->before = [this](std::string_view step) {
    if (step == "Recordset.Close") environment_.now = automation::DateTime::FromDate(2004, 7, 4);
  };
  EXPECT_EQ(Expire(), 0);
  EXPECT_EQ(disk_->Bytes("/suite/OrvLog/OrvDormantUserExpirySvc_log_2004_7_3.txt"),
            "*****************************************************\r\n"
            "Orvane NTService Log \r\n"
            "*****************************************************\r\n"
            "Dormant User Expiry - NTService Started at : 7-3-2004 23:59:59\r\n");
  EXPECT_EQ(disk_->Bytes("/suite/OrvLog/OrvDormantUserExpirySvc_log_2004_7_4.txt"),
            " NTService Stopped at : 7-4-2004 00:00:00\r\n"
            "*****************************************************\r\n");
}

TEST_F(DormantUserExpiryTest, StopLineMakesTheLogFolderAnewWhenItWentAwayDuringTheRun) {
  SetLimit("'30'");
  adodb_->before = [](std::string_view step) {
    const auto files = automation::CreateObject<Scripting::FileSystemObject>("Scripting.FileSystemObject");
    if (step == "Recordset.Close" && files->FolderExists("/suite/OrvLog")) {
      files->DeleteFolder("/suite/OrvLog", true);
    }
  };
  EXPECT_EQ(Expire(), 0);
  EXPECT_EQ(Log(), kStopLine);
}

// The folder is looked after for any kind, the file is not.
TEST_F(DormantUserExpiryTest, LineOfAnotherKindIsNotWritten) {
  for (const int kind : {0, 3, -1}) (job_.*MemberOf(WriteJobLog()))(static_cast<std::int16_t>(kind));
  EXPECT_TRUE(disk_->Exists("/suite/OrvLog"));
  EXPECT_FALSE(disk_->Exists(kLogFile));
  (job_.*MemberOf(WriteJobLog()))(1);
  EXPECT_EQ(Log(), kStartBanner);
}

TEST_F(DormantUserExpiryTest, LogFollowsTheConfiguredPathNotTheInstallDirectory) {
  disk_->AddFolder("/elsewhere/product");
  environment_.configuration->rootPath = "/elsewhere/product/config";
  SetLimit("'30'");
  EXPECT_EQ(Expire(), 0);
  EXPECT_TRUE(disk_->Exists("/elsewhere/product/OrvLog/OrvDormantUserExpirySvc_log_2004_7_26.txt"));
}

TEST_F(DormantUserExpiryTest, LogsConfigurationIsNeverCreatedThroughAnObjectContext) {
  SetLimit("'30'");
  const auto context = environment_.EnterObjectContext();
  EXPECT_EQ(Expire(), 0);
  // Once by the connection getter, which joins the caller's context; the log's two are created directly.
  EXPECT_EQ(context->created, std::vector<std::string>{"Vantrel.Configuration"});
  EXPECT_EQ(environment_.configuration->created, 3);
}

TEST_F(DormantUserExpiryTest, IsCreatedByItsProgIdAndRunByTheHost) {
  SetLimit("'30'");
  AddProspect("gone", "'1990-01-01 00:00:00'", "0");
  OrvaneProcess::RegisterJobs(environment_.runtime.classes);
  automation::CreateObject<OrvaneProcess::Job>("orvaneprocess.DORMANTUSEREXPIRY")->Run();
  EXPECT_EQ(Prospects(), std::vector<std::string>{});
  EXPECT_EQ(Log(), std::string(kStartBanner) + std::string(kStopLine));
}

}  // namespace

}  // namespace orvane_test
