#include <sys/resource.h>
#include <sys/stat.h>

#include <csignal>
#include <set>

#include "tests/cdo/mail_fixture.hpp"

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
