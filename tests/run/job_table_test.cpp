#include "run/job_table.hpp"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "components/registration/register_jobs.hpp"
#include "platform/automation/class_table.hpp"

namespace {

using orvane::Failure;
using orvane::FindJob;
using orvane::JobInfo;
using orvane::StartTime;
using orvane::StopTime;

TEST(JobTableTest, FindsAJobByProgIdOrClassNameInAnyCase) {
  for (const char* name : {"OrvaneProcess.Archive", "Archive", "ARCHIVE", "orvaneprocess.archive"}) {
    const JobInfo* job = FindJob(name);
    ASSERT_NE(job, nullptr) << name;
    EXPECT_EQ(job->progId, "OrvaneProcess.Archive");
  }
}

TEST(JobTableTest, KnowsNothingElse) {
  for (const char* name :
       {"", "Archiv", "OrvaneProcess.", "OrvaneProcess.Archive ", "Vantrel.Log", "OrvaneProcess"}) {
    EXPECT_EQ(FindJob(name), nullptr) << name;
  }
}

TEST(JobTableTest, HoldsExactlyTheRegisteredJobs) {
  automation::ClassTable classes;
  OrvaneProcess::RegisterJobs(classes);
  std::vector<std::string> known;
  for (const JobInfo& job : orvane::Jobs()) known.emplace_back(job.progId);
  EXPECT_EQ(known, classes.ProgIds());
}

TEST(JobTableTest, ReadsTheTimesOfBannerLines) {
  const JobInfo& cleanUp = *FindJob("CleanUp");
  EXPECT_EQ(StartTime(cleanUp, "Clean Up - NTService Started at : 7-26-2004 09:05:03"), "7-26-2004 09:05:03");
  EXPECT_EQ(StopTime(cleanUp, " NTService Stopped at : 7-26-2004 09:05:04"), "7-26-2004 09:05:04");
  EXPECT_EQ(StopTime(cleanUp, "NTService Stopped at : 7-26-2004 09:05:04"), std::nullopt);
  EXPECT_EQ(StartTime(cleanUp, "*****************************************************"), std::nullopt);

  const JobInfo& solve = *FindJob("SolveOnNoResponse");
  EXPECT_EQ(StopTime(solve, " Solve On No Response -NTService Stopped at : x"), "x");
  EXPECT_EQ(StopTime(solve, " NTService Stopped at : x"), std::nullopt);
}

TEST(JobTableTest, ReadsTheTimesOfMessageLines) {
  const JobInfo& archive = *FindJob("Archive");
  EXPECT_EQ(StartTime(archive, "7-26-2004 09:05:03  : Archiving Process started by NTService"),
            "7-26-2004 09:05:03");
  EXPECT_EQ(StopTime(archive, "7-26-2004 09:05:04  : Archiving Process ended."), "7-26-2004 09:05:04");
  EXPECT_EQ(StopTime(archive, "7-26-2004 09:05:04  : Archiving process failed"), std::nullopt);
  EXPECT_EQ(StopTime(archive, "Archiving Process ended."), std::nullopt);
}

TEST(JobTableTest, KnowsTheFailuresOfTheArchiveJob) {
  const JobInfo& archive = *FindJob("Archive");
  EXPECT_EQ(Failure(archive, "7-26-2004 09:05:04  : Archiving process failed"), "Archiving process failed");
  EXPECT_EQ(Failure(archive, "7-26-2004 09:05:04  : Archiving Process ended."), std::nullopt);
  EXPECT_EQ(Failure(archive, "Archiving process failed"), std::nullopt);
  EXPECT_EQ(Failure(*FindJob("CleanUp"), "7-26-2004 09:05:04  : Archiving process failed"), std::nullopt);
}

TEST(JobTableTest, TellsTheEntriesOfTheSweepsByAgeFromOthers) {
  const JobInfo& cleanUp = *FindJob("CleanUp");
  const std::string known =
      "ORVProcess.cleanup.DeleteAnalysisFiles caught: Object required (424). Additional information: Object "
      "required";
  EXPECT_TRUE(cleanUp.isKnownEntry(known));
  EXPECT_FALSE(
      cleanUp.isKnownEntry("ORVProcess.cleanup.DeleteAnalysisFiles caught: Permission denied (70). "
                           "Additional information: Permission denied"));
  EXPECT_TRUE(cleanUp.isKnownEntry(
      "Orvprocess.cleanup.DeleteChatSession caught: Object required (424). Additional information: Object "
      "required"));
  EXPECT_FALSE(cleanUp.isKnownEntry("another " + known));
  EXPECT_EQ(FindJob("Archive")->isKnownEntry, nullptr);

  const std::string stuck =
      "ORVProcess.cleanup.DeleteSRAttchmentsFilesWithotherstatus caught: Path not found (76). Additional "
      "information: Path not found";
  EXPECT_TRUE(cleanUp.needsHands(stuck));
  EXPECT_FALSE(cleanUp.needsHands(known));
}

}  // namespace
