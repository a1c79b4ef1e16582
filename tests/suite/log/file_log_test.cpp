#include "suite/log/file_log.hpp"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "components/interfaces/log.hpp"
#include "platform/automation/runtime.hpp"
#include "platform/base/descriptor.hpp"
#include "tests/support/temporary_folder.hpp"

namespace {

using orvane_test::TemporaryFolder;

class FileLogTest : public testing::Test {
 protected:
  FileLogTest() : scope_(runtime_) {
    runtime_.clock = [] {
      return automation::DateTime::FromParts(
          {.year = 2004, .month = 7, .day = 6, .hour = 9, .minute = 5, .second = 3, .microsecond = 999999});
    };
  }

  automation::Variant Write(std::string_view source, std::string_view message, std::int32_t code = 0) {
    if (!runtime_.classes.Contains("Vantrel.Log")) {
      Vantrel::RegisterLog(runtime_.classes, file_);
    }
    automation::Variant result;
    automation::CreateObject<Vantrel::Log>("Vantrel.Log")->WriteLogEntry(source, message, code, result);
    return result;
  }

  TemporaryFolder folder_;
  std::filesystem::path file_ = folder_.Path() / "OrvLog" / "Vantrel.log";
  automation::Runtime runtime_;
  automation::RuntimeScope scope_;
};

TEST_F(FileLogTest, WritesOneLineAnEntryAndMakesTheFolder) {
  EXPECT_EQ(Write("Scripting.FileSystemObject",
                  "ORVProcess.cleanup.DeletedispatchXmlFiles caught: Permission denied (70). Additional "
                  "information: Permission denied"),
            automation::Variant(true));
  EXPECT_EQ(Write("", "x", -7), automation::Variant(true));
  EXPECT_EQ(
      TemporaryFolder::Read(file_),
      "2004-07-06 09:05:03 | 0 | Scripting.FileSystemObject | ORVProcess.cleanup.DeletedispatchXmlFiles "
      "caught: Permission denied (70). Additional information: Permission denied\n"
      "2004-07-06 09:05:03 | -7 |  | x\n");
}

TEST_F(FileLogTest, KeepsAMessageLetterForLetter) {
  const std::string message = "  \"C:\\reports\\new\" |\tcaf\xC3\xA9 <b>&amp; %s {0} '' \\r\\n ";
  Write("source", message);
  EXPECT_EQ(TemporaryFolder::Read(file_), "2004-07-06 09:05:03 | 0 | source | " + message + "\n");
}

TEST_F(FileLogTest, ShowsLineBreaksAndControlCharactersAsPictures) {
  Write("a\nb", std::string("METHOD: x\r\ny\x1B[2J\x7F\0z", 19));
  EXPECT_EQ(TemporaryFolder::Read(file_),
            "2004-07-06 09:05:03 | 0 | a\u240Ab | METHOD: x\u240D\u240Ay\u241B[2J\u2421\u2400z\n");
}

TEST_F(FileLogTest, AnEntryThatCannotBeWrittenGoesToStandardErrorAndRaisesNothing) {
  folder_.Write("OrvLog", "a file where the folder should be");
  testing::internal::CaptureStderr();
  EXPECT_EQ(Write("ADODB.Connection", "the message"), automation::Variant(false));
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            file_.string() + ": cannot be written: Not a directory; the entry was:\n" +
                "2004-07-06 09:05:03 | 0 | ADODB.Connection | the message\n");
}

// A job must not wait for somebody to read, nor lose entries to whoever reads.
TEST_F(FileLogTest, APipeInItsPlaceIsRefusedWhetherAnybodyReadsItOrNot) {
  std::filesystem::create_directory(file_.parent_path());
  ASSERT_EQ(mkfifo(file_.c_str(), 0600), 0);
  const std::string refusal = file_.string() +
                              ": cannot be written: it is neither a file nor a character device; the entry "
                              "was:\n2004-07-06 09:05:03 | 0 | source | the message\n";
  testing::internal::CaptureStderr();
  EXPECT_EQ(Write("source", "the message"), automation::Variant(false));
  EXPECT_EQ(testing::internal::GetCapturedStderr(), refusal);
  const base::Descriptor reader(open(file_.c_str(), O_RDONLY | O_NONBLOCK));
  testing::internal::CaptureStderr();
  EXPECT_EQ(Write("source", "the message"), automation::Variant(false));
  EXPECT_EQ(testing::internal::GetCapturedStderr(), refusal);
}

TEST_F(FileLogTest, ADeviceInItsPlaceTakesTheEntries) {
  std::filesystem::create_directory(file_.parent_path());
  std::filesystem::create_symlink("/dev/null", file_);
  EXPECT_EQ(Write("source", "the message"), automation::Variant(true));
}

TEST_F(FileLogTest, EntriesWrittenSideBySideDoNotMix) {
  Vantrel::RegisterLog(runtime_.classes, file_);
  const auto write = [this](char letter) {
    automation::RuntimeScope scope(runtime_);
    for (int i = 0; i < 200; ++i) {
      automation::Variant result;
      automation::CreateObject<Vantrel::Log>("Vantrel.Log")
          ->WriteLogEntry("s", std::string(3000, letter), 0, result);
    }
  };
  std::thread first(write, 'a');
  std::thread second(write, 'b');
  first.join();
  second.join();

  const std::string content = TemporaryFolder::Read(file_);
  const std::string head = "2004-07-06 09:05:03 | 0 | s | ";
  std::size_t lines = 0;
  for (std::size_t start = 0; start < content.size(); ++lines) {
    const std::size_t end = content.find('\n', start);
    ASSERT_NE(end, std::string::npos);
    const std::string line = content.substr(start, end - start);
    ASSERT_TRUE(line == head + std::string(3000, 'a') || line == head + std::string(3000, 'b'));
    start = end + 1;
  }
  EXPECT_EQ(lines, 400U);
}

}  // namespace
