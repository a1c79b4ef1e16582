#include <fcntl.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <chrono>
#include <csignal>
#include <set>

#include "platform/base/descriptor.hpp"
#include "platform/cdo/curl/transport.hpp"
#include "tests/cdo/mail_fixture.hpp"
#include "tests/cdo/watched_calls.hpp"

namespace {

using orvane_test::ErrorOf;

class PickupTest : public orvane_test::MailTest {
 protected:
  PickupTest() {
    pickup_ = PathOf("pickup");
    std::filesystem::create_directory(pickup_);
    std::string path = pickup_;
    for (char& c : path) c = c == '/' ? '\\' : c;
    Use({.sendUsing = CDO::SendUsing::Pickup, .pickupDirectory = path});
  }
  std::string pickup_;
};

TEST_F(PickupTest, EveryMailIsAFileOfItsOwn) {
  std::set<std::string> names;
  for (int i = 0; i < 50; ++i) NewMessage()->send();
  for (const std::string& name : FilesIn(pickup_)) {
    EXPECT_THAT(name, testing::EndsWith(".eml"));
    EXPECT_THAT(ReadFile("pickup/" + name), testing::HasSubstr("\r\nSubject: Reminder (26) \r\n"));
    names.insert(name);
  }
  EXPECT_EQ(names.size(), 50u);
}

TEST_F(PickupTest, AttachmentsAreReadWhenTheyAreAdded) {
  WriteFile("Page.htm", "<p>first</p>");
  const CDO::MessagePtr message = NewMessage();
  message->AddAttachment(folder_ + "\\PAGE.HTM");
  std::filesystem::remove(PathOf("Page.htm"));
  message->send();
  const std::string mail = ReadFile("pickup/" + FilesIn(pickup_).front());
  EXPECT_THAT(mail, testing::HasSubstr("filename=\"Page.htm\"\r\n\r\nPHA+Zmlyc3Q8L3A+\r\n"));
}

TEST_F(PickupTest, AnEmptyAttachmentTravelsToo) {
  WriteFile("empty.txt", "");
  const CDO::MessagePtr message = NewMessage();
  message->AddAttachment(PathOf("empty.txt"));
  message->send();
  EXPECT_THAT(ReadFile("pickup/" + FilesIn(pickup_).front()),
              testing::HasSubstr("filename=\"empty.txt\"\r\n\r\n\r\n--"));
}

TEST_F(PickupTest, AMissingAttachmentIs53) {
  EXPECT_EQ(ErrorOf([&] { NewMessage()->AddAttachment(PathOf("none.htm")); }).Number(), 53);
  EXPECT_EQ(ErrorOf([&] { NewMessage()->AddAttachment(folder_); }).Number(), 70);
}

TEST_F(PickupTest, AnAttachmentsPathWithAControlCharacterIs52) {
  WriteFile("a", "another file");
  struct Case {
    std::string path;
    std::string shown;
  };
  for (const auto& [path, shown] : {Case{PathOf("a") + std::string("\0b", 2), PathOf("a\\x00b")},
                                    Case{PathOf("a\nb"), PathOf("a\\x0Ab")}}) {
    const automation::Error error = ErrorOf([&] { NewMessage()->AddAttachment(path); });
    EXPECT_EQ(error.Number(), 52);
    EXPECT_EQ(error.Description(), "Bad file name or number: " + shown);
  }
}

TEST_F(PickupTest, AMailThatIsRefusedLeavesNoFile) {
  EXPECT_EQ(ErrorOf([&] { NewMessage("")->send(); }).Number(), -2147220980);
  EXPECT_EQ(ErrorOf([&] { NewMessage("a@example.org\r\nBcc: b@example.org")->send(); }).Number(), 5);
  EXPECT_TRUE(FilesIn(pickup_).empty());
}

TEST_F(PickupTest, AMissingFolderIs76) {
  std::filesystem::remove(pickup_);
  const automation::Error error = ErrorOf([&] { NewMessage()->send(); });
  EXPECT_EQ(error.Number(), 76);
  EXPECT_EQ(error.Source(), "CDO.Message");
}

TEST_F(PickupTest, ANameThatIsTakenIsRefusedAndTheOldMailStays) {
  WriteFile("pickup/name.eml", "the old mail");
  const auto transport = CDO::curl::MakePickupTransport({.pickupDirectory = pickup_});
  const automation::Error error =
      ErrorOf([&] { transport->Deliver("a@example.org", {"b@example.org"}, "the new mail", "name"); });
  EXPECT_EQ(error.Number(), 58);
  EXPECT_EQ(error.Description(), "File already exists: the pickup folder " + pickup_);
  EXPECT_EQ(ReadFile("pickup/name.eml"), "the old mail");
  EXPECT_THAT(FilesIn(pickup_), testing::ElementsAre("name.eml"));
}

TEST_F(PickupTest, AMailIsOnTheDiskBeforeItHasItsNameAndItsNameBeforeItCountsAsSent) {
  const auto transport = CDO::curl::MakePickupTransport({.pickupDirectory = pickup_});
  const orvane_test::WatchedCalls calls;
  transport->Deliver("a@example.org", {"b@example.org"}, "mail", "name");
  EXPECT_THAT(calls.Seen(),
              testing::ElementsAre("fsync " + pickup_ + "/.name.eml.saving",
                                   "rename " + pickup_ + "/.name.eml.saving " + pickup_ + "/name.eml",
                                   "fsync " + pickup_));
}

TEST_F(PickupTest, WhatKilledRunsLeftIsRemovedByTheNextButNotWhatAnotherIsWriting) {
  WriteFile("pickup/.17.eml.saving", "half a mail");
  WriteFile("pickup/.18.eml.saving2", "half a mail");
  WriteFile("pickup/.19.eml.saving", "another run's");
  WriteFile("pickup/.keep", "");
  WriteFile("pickup/20.eml", "whole");
  const base::Descriptor other(open(PathOf("pickup/.19.eml.saving").c_str(), O_WRONLY | O_CLOEXEC));
  ASSERT_EQ(flock(other.Get(), LOCK_EX), 0);
  NewMessage()->send();
  EXPECT_THAT(FilesIn(pickup_),
              testing::UnorderedElementsAre(".19.eml.saving", ".keep", "20.eml",
                                            testing::ContainsRegex("^[0-9a-f]{24,}\\.eml$")));
}

// Files of a former version bear another ending and no lock.
TEST_F(PickupTest, WhatAFormerVersionLeftADayAgoIsRemoved) {
  WriteFile("pickup/.17.writing", "half a mail");
  WriteFile("pickup/.18.writing", "half a mail, perhaps of a run that still writes");
  WriteFile("pickup/19.writing", "somebody else's");
  for (const char* name : {".17.writing", "19.writing"}) {
    const std::filesystem::path file = PathOf(std::string("pickup/") + name);
    std::filesystem::last_write_time(file, std::filesystem::last_write_time(file) - std::chrono::hours(25));
  }
  NewMessage()->send();
  EXPECT_THAT(FilesIn(pickup_),
              testing::UnorderedElementsAre(".18.writing", "19.writing",
                                            testing::ContainsRegex("^[0-9a-f]{24,}\\.eml$")));
}

TEST_F(PickupTest, AMailIsForItsOwnerAndGroupOnly) {
  NewMessage()->send();
  struct stat status {};
  ASSERT_EQ(stat((pickup_ + "/" + FilesIn(pickup_).front()).c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777U & ~0640U, 0U);
}

TEST_F(PickupTest, APipeIsNoAttachmentAndHoldsNothingUp) {
  ASSERT_EQ(mkfifo(PathOf("pipe.htm").c_str(), 0600), 0);
  EXPECT_EQ(ErrorOf([&] { NewMessage()->AddAttachment(PathOf("pipe.htm")); }).Number(), 70);
}

TEST_F(PickupTest, AFullDiskLeavesNoHalfMail) {
  const CDO::MessagePtr message = NewMessage();
  message->setTextBody(std::string(300'000, 'x'));
  rlimit old{};
  ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &old), 0);
  const auto handler = std::signal(SIGXFSZ, SIG_IGN);
  const rlimit limited{100'000, old.rlim_max};
  ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &limited), 0);
  const automation::Error error = ErrorOf([&] { message->send(); });
  setrlimit(RLIMIT_FSIZE, &old);
  std::signal(SIGXFSZ, handler);
  EXPECT_EQ(error.Number(), 61);
  EXPECT_TRUE(FilesIn(pickup_).empty());
}

}  // namespace
