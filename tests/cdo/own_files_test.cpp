// A mail takes along only what its own run has made, however many runs use the same names.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <filesystem>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "platform/base/created_files.hpp"
#include "platform/base/pending_files.hpp"
#include "platform/cdo/curl/encoding.hpp"
#include "platform/cdo/message.hpp"
#include "platform/cdo/registration.hpp"
#include "platform/scripting/file_system_object.hpp"
#include "platform/scripting/local/registration.hpp"
#include "tests/cdo/watched_calls.hpp"
#include "tests/support/raised_error.hpp"
#include "tests/support/temporary_folder.hpp"
#include "tests/support/test_runtime.hpp"

namespace orvane_test {
namespace {

namespace fs = std::filesystem;

// A run of its own, with a pickup folder of its own beside the shared page folder.
class RunningJob {
 public:
  RunningJob(const TemporaryFolder& folder, const std::string& name,
             const std::shared_ptr<base::PendingFiles>& pending = nullptr)
      : page_((folder.Path() / "26953.htm").string()), pickup_(folder.Path() / name) {
    fs::create_directory(pickup_);
    const auto created = std::make_shared<base::CreatedFiles>();
    Scripting::local::RegisterClasses(runtime_.runtime.classes, {}, created, nullptr, pending);
    CDO::RegisterClasses(runtime_.runtime.classes,
                         {.pickupDirectory = pickup_.string(), .ownFiles = created, .pending = pending});
    files_ = automation::CreateObject<Scripting::FileSystemObject>("Scripting.FileSystemObject");
  }

  void MakePage(const std::string& content) {
    const Scripting::TextStreamPtr page = files_->CreateTextFile(page_, true);
    page->Write(content);
    page->Close();
  }
  CDO::MessagePtr AttachPage() {
    auto message = automation::CreateObject<CDO::Message>("CDO.Message");
    message->setFrom("support@example.com");
    message->setTo("customer@example.org");
    message->AddAttachment(page_);
    return message;
  }
  void DeletePage() { files_->DeleteFile(page_, true); }

  // What the job does for one mail.
  void Mail(const std::string& content) {
    if (files_->FileExists(page_)) files_->DeleteFile(page_, true);
    MakePage(content);
    AttachPage()->send();
    DeletePage();
  }

  std::vector<std::string> Mails() const {
    std::vector<std::string> mails;
    for (const fs::directory_entry& mail : fs::directory_iterator(pickup_)) {
      mails.push_back(TemporaryFolder::Read(mail.path()));
    }
    return mails;
  }

 private:
  std::string page_;
  fs::path pickup_;
  TestRuntime runtime_;
  Scripting::FileSystemObjectPtr files_;
};

class OwnFilesTest : public testing::Test {
 protected:
  fs::path Page() const { return folder_.Path() / "26953.htm"; }
  TemporaryFolder folder_;
};

TEST_F(OwnFilesTest, APageOfTheRunTravels) {
  RunningJob job(folder_, "one");
  job.Mail("page of 26");
  ASSERT_EQ(job.Mails().size(), 1U);
  EXPECT_THAT(job.Mails().front(), testing::HasSubstr(CDO::curl::Base64Lines("page of 26")));
  EXPECT_FALSE(fs::exists(Page()));
}

TEST_F(OwnFilesTest, APageThatWaitsForItsNameTravelsAndGoesWithoutOne) {
  const auto pending = std::make_shared<base::PendingFiles>();
  RunningJob job(folder_, "one", pending);
  job.MakePage("page of 26");
  job.AttachPage()->send();
  EXPECT_FALSE(fs::exists(Page()));
  EXPECT_TRUE(pending->Holds(Page()));
  job.DeletePage();
  EXPECT_FALSE(pending->Publish());
  EXPECT_FALSE(fs::exists(Page()));
  ASSERT_EQ(job.Mails().size(), 1U);
  EXPECT_THAT(job.Mails().front(), testing::HasSubstr(CDO::curl::Base64Lines("page of 26")));
  EXPECT_EQ(std::distance(fs::directory_iterator(folder_.Path()), {}), 1) << "more than the pickup folder";
}

TEST_F(OwnFilesTest, APageThatWaitsForItsNameCostsItsMailNoSync) {
  RunningJob job(folder_, "one", std::make_shared<base::PendingFiles>());
  const WatchedCalls calls;
  job.Mail("page of 26");
  EXPECT_THAT(calls.Seen(), testing::SizeIs(3)) << "the mail, its name, and the folder";
  EXPECT_THAT(calls.Seen(), testing::Each(testing::HasSubstr((folder_.Path() / "one").string())));
}

TEST_F(OwnFilesTest, APageOfAnUnsentMailGetsItsNameWithTheOthers) {
  const auto pending = std::make_shared<base::PendingFiles>();
  RunningJob job(folder_, "one", pending);
  job.MakePage("page of 26");
  job.AttachPage();
  pending->MakeDurable();
  EXPECT_EQ(TemporaryFolder::Read(Page()), "page of 26");
  job.AttachPage()->send();
  job.DeletePage();
  EXPECT_FALSE(fs::exists(Page()));
}

TEST_F(OwnFilesTest, AnotherPageUnderTheNameOfOneThatWaitsIsRefusedAndHoldsUpNothing) {
  const auto pending = std::make_shared<base::PendingFiles>();
  RunningJob job(folder_, "one", pending);
  job.MakePage("page of 26");
  folder_.Write("26953.htm", "page of 27");
  EXPECT_EQ(ErrorOf([&] { job.AttachPage(); }).Description(),
            "Permission denied: " + Page().string() + " was not made by this run");
  EXPECT_EQ(ErrorOf([&] { job.DeletePage(); }).Number(), 70);
  pending->MakeDurable();  // rows can be changed
  EXPECT_EQ(TemporaryFolder::Read(Page()), "page of 27");
}

TEST_F(OwnFilesTest, APageThatAnotherPutInItsPlaceIsRefusedAndStays) {
  RunningJob job(folder_, "one");
  job.MakePage("page of 26");
  fs::remove(Page());
  folder_.Write("26953.htm", "page of 27");
  const automation::Error error = ErrorOf([&] { job.AttachPage(); });
  EXPECT_EQ(error.Number(), 70);
  EXPECT_EQ(error.Source(), "CDO.Message");
  EXPECT_EQ(error.Description(), "Permission denied: " + Page().string() + " was not made by this run");
  EXPECT_EQ(ErrorOf([&] { job.DeletePage(); }).Number(), 70);
  EXPECT_EQ(TemporaryFolder::Read(Page()), "page of 27");
}

TEST_F(OwnFilesTest, APageThatAnotherWroteInIsRefused) {
  RunningJob job(folder_, "one");
  job.MakePage("page of 26");
  folder_.Write("26953.htm", "page of 27");
  EXPECT_EQ(ErrorOf([&] { job.AttachPage(); }).Number(), 70);
}

TEST_F(OwnFilesTest, AFileThatTheRunHasNotMadeIsRefusedButMayBeDeleted) {
  RunningJob job(folder_, "one");
  folder_.Write("26953.htm", "left by another run");
  EXPECT_EQ(ErrorOf([&] { job.AttachPage(); }).Number(), 70);
  job.DeletePage();
  EXPECT_FALSE(fs::exists(Page()));
}

TEST_F(OwnFilesTest, ADeletedPageIsForgotten) {
  RunningJob job(folder_, "one");
  job.MakePage("page of 26");
  job.DeletePage();
  folder_.Write("26953.htm", "page of 26 ");
  EXPECT_EQ(ErrorOf([&] { job.AttachPage(); }).Number(), 70);
  job.DeletePage();
  EXPECT_FALSE(fs::exists(Page())) << "no longer the run's own name";
}

TEST_F(OwnFilesTest, APageThatABackupLinkedOrWhoseRightsChangedIsStillTheRunsOwn) {
  RunningJob job(folder_, "one");
  job.MakePage("page of 26");
  fs::create_hard_link(Page(), folder_.Path() / "backup");
  fs::permissions(Page(), fs::perms::group_write, fs::perm_options::add);
  job.AttachPage();
  job.DeletePage();
  EXPECT_FALSE(fs::exists(Page()));
  EXPECT_EQ(TemporaryFolder::Read(folder_.Path() / "backup"), "page of 26");
}

TEST_F(OwnFilesTest, APageThatAnotherWroteInIsNotDeletedAsTheRunsOwn) {
  RunningJob job(folder_, "one");
  job.MakePage("page of 26");
  folder_.Write("26953.htm", "page of 27");
  EXPECT_EQ(ErrorOf([&] { job.DeletePage(); }).Number(), 70);
  EXPECT_EQ(TemporaryFolder::Read(Page()), "page of 27");
}

TEST_F(OwnFilesTest, ManyPagesOfOneNameDoNotMakeTheLastOneAStranger) {
  RunningJob job(folder_, "one");
  for (int page = 0; page < 1000; ++page) {
    job.MakePage("page of 26");
    job.DeletePage();
  }
  job.MakePage("page of 27");
  job.AttachPage();
}

// Two runs in the same second, and a sweep of the page folder beside them. They go on until they have met.
TEST_F(OwnFilesTest, NoMailTakesThePageOfAnotherRun) {
  constexpr int kMails = 300;
  const auto longest = std::chrono::steady_clock::now() + std::chrono::minutes(1);
  std::atomic<bool> done = false;
  std::atomic<int> refused = 0;
  const auto run = [&](const std::string& name) {
    RunningJob job(folder_, name);
    int sent = 0;
    for (int mail = 0; mail < kMails || (refused == 0 && std::chrono::steady_clock::now() < longest);
         ++mail) {
      try {
        job.Mail("page of " + name);
        ++sent;
      } catch (const automation::Error& error) {
        ++refused;
        EXPECT_THAT(error.Number(), testing::AnyOf(53, 58, 70, 76)) << error.Description();
      }
    }
    for (const std::string& mail : job.Mails()) {
      EXPECT_THAT(mail, testing::HasSubstr(CDO::curl::Base64Lines("page of " + name)));
    }
    EXPECT_GE(job.Mails().size(), static_cast<std::size_t>(sent));
  };
  std::thread sweep([&] {
    while (!done) {
      for (const fs::directory_entry& entry : fs::directory_iterator(folder_.Path())) {
        std::error_code gone;
        if (entry.is_regular_file(gone)) fs::remove(entry.path(), gone);
      }
    }
  });
  std::thread other([&] { run("two"); });
  run("one");
  other.join();
  done = true;
  sweep.join();
  EXPECT_GT(refused, 0) << "the runs never met";
}

}  // namespace
}  // namespace orvane_test
