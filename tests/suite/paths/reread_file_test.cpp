#include "suite/paths/reread_file.hpp"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <string>
#include <system_error>
#include <thread>

#include "platform/base/file_stamp.hpp"
#include "tests/support/temporary_folder.hpp"

namespace {

using suite::RereadFile;
using Outcome = suite::RereadFile::Outcome;

// No error when nothing is raised.
template <class Action>
std::error_code CodeOf(Action action) {
  try {
    action();
  } catch (const std::system_error& error) {
    return error.code();
  }
  return {};
}

class RereadFileTest : public testing::Test {
 protected:
  Outcome Read(const std::string& content, const char* name = "f") {
    return file_.Read(folder_.Write(name, content), 100'000);
  }

  orvane_test::TemporaryFolder folder_;
  RereadFile file_;
};

TEST_F(RereadFileTest, TellsWhetherTheBytesAreThoseOfTheTimeBefore) {
  EXPECT_EQ(Read("one"), Outcome::Changed);
  EXPECT_EQ(Read("one"), Outcome::Unchanged);
  EXPECT_EQ(Read("two"), Outcome::Changed);
  EXPECT_EQ(file_.Content(), "two");
  EXPECT_EQ(Read("two and more"), Outcome::Changed);
  EXPECT_EQ(file_.Content(), "two and more");
  EXPECT_EQ(Read("two"), Outcome::Changed);
  EXPECT_EQ(file_.Content(), "two");
  EXPECT_EQ(Read(""), Outcome::Changed);
  EXPECT_EQ(file_.Content(), "");
  EXPECT_EQ(Read(""), Outcome::Unchanged);
}

TEST_F(RereadFileTest, FindsASingleChangedByteAnywhereInALargeFile) {
  std::string content(70'000, 'a');
  Read(content);
  for (const std::size_t place : {0u, 16'383u, 16'384u, 40'000u, 69'999u}) {
    content[place] = content[place] == 'a' ? 'b' : 'a';
    EXPECT_EQ(Read(content), Outcome::Changed) << place;
    EXPECT_EQ(file_.Content(), content) << place;
    EXPECT_EQ(Read(content), Outcome::Unchanged) << place;
  }
}

TEST_F(RereadFileTest, TakesAnotherFileWithTheSameContentForAnother) {
  Read("one", "f");
  EXPECT_EQ(Read("one", "g"), Outcome::Changed);
}

TEST_F(RereadFileTest, RefusesAFileThatIsTooLargeAndReadsItAgainWhenItIsNot) {
  Read("one");
  EXPECT_EQ(Read(std::string(100'001, 'x')), Outcome::TooLarge);
  EXPECT_EQ(Read(std::string(100'000, 'x')), Outcome::Changed);
  EXPECT_EQ(Read("one"), Outcome::Changed);
}

TEST_F(RereadFileTest, ForgetsWhatItReadWhenTheFileCannotBeRead) {
  Read("one");
  const auto path = folder_.Path() / "f";
  std::filesystem::remove(path);
  EXPECT_EQ(CodeOf([&] { file_.Read(path, 10); }), std::errc::no_such_file_or_directory);
  EXPECT_EQ(Read("one"), Outcome::Changed);
  EXPECT_EQ(CodeOf([&] { file_.Read(folder_.Path(), 10); }), std::errc::is_a_directory);
}

// A file that has settled as soon as the file system's clock has moved on.
class SettledFileTest : public testing::Test {
 protected:
  static constexpr std::chrono::milliseconds kStep{20};

  Outcome Read() { return file_.Read(path_, 1'000'000); }

  // Writes the file and gives it the times of a day long ago, as a copying program does.
  void Write(const std::string& content, const char* name = "f") {
    folder_.Write(name, content);
    const timespec times[2] = {{1'000'000'000, 0}, {1'000'000'000, 0}};
    ASSERT_EQ(utimensat(AT_FDCWD, (folder_.Path() / name).c_str(), times, 0), 0);
    struct stat status {};
    ASSERT_EQ(stat((folder_.Path() / name).c_str(), &status), 0);
    const base::FileStamp stamp(status);
    while (!stamp.HasSettledFor(kStep)) std::this_thread::yield();
  }

  // How many bytes this process has read from files so far, this question included.
  static long long BytesRead() {
    std::ifstream counters("/proc/self/io");
    std::string name;
    long long value = 0;
    counters >> name >> value;
    EXPECT_EQ(name, "rchar:");
    return value;
  }

  orvane_test::TemporaryFolder folder_;
  const std::filesystem::path path_ = folder_.Path() / "f";
  RereadFile file_{kStep};
};

TEST_F(SettledFileTest, IsReadOnceAsLongAsItStaysAsItIs) {
  const std::string content(200'000, 'a');
  Write(content);
  const long long before = BytesRead();
  EXPECT_EQ(Read(), Outcome::Changed);
  const long long between = BytesRead();
  EXPECT_GE(between - before, 200'000);
  EXPECT_EQ(Read(), Outcome::Unchanged);
  EXPECT_LT(BytesRead() - between, 200'000);
  EXPECT_EQ(file_.Content(), content);
}

TEST_F(SettledFileTest, IsFoundInOtherSpellingsUntilOneOfItsOwnComes) {
  const auto read = [&] { return file_.Read("F.TXT", folder_.Path().native(), 1'000); };
  Write("one", "f.txt");
  EXPECT_EQ(read(), Outcome::Changed);
  EXPECT_EQ(file_.File(), (folder_.Path() / "f.txt").string());
  EXPECT_EQ(read(), Outcome::Unchanged);
  Write("two", "F.TXT");
  EXPECT_EQ(read(), Outcome::Changed);
  EXPECT_EQ(read(), Outcome::Unchanged);
  EXPECT_EQ(file_.File(), (folder_.Path() / "F.TXT").string());
  EXPECT_EQ(file_.Content(), "two");
  std::filesystem::remove(folder_.Path() / "F.TXT");
  EXPECT_EQ(read(), Outcome::Changed);
  EXPECT_EQ(file_.Content(), "one");
  std::filesystem::remove(folder_.Path() / "f.txt");
  EXPECT_EQ(CodeOf(read), std::errc::no_such_file_or_directory);
  EXPECT_EQ(file_.File(), (folder_.Path() / "F.TXT").string());
}

TEST_F(SettledFileTest, IsReadEachTimeWhileItMightChangeWithoutATrace) {
  RereadFile patient(std::chrono::hours(1));
  Write(std::string(200'000, 'a'));
  patient.Read(path_, 1'000'000);
  const long long before = BytesRead();
  EXPECT_EQ(patient.Read(path_, 1'000'000), Outcome::Unchanged);
  EXPECT_GE(BytesRead() - before, 200'000);
}

TEST_F(SettledFileTest, IsReadAgainWhenItWasWrittenInPlaceWithTheSameSizeAndTime) {
  Write("one");
  Read();
  Write("two");
  EXPECT_EQ(Read(), Outcome::Changed);
  EXPECT_EQ(file_.Content(), "two");
}

TEST_F(SettledFileTest, IsReadAgainWhenAnotherFileOfTheSameSizeAndTimeTookItsPlace) {
  Write("one");
  Write("two", "g");
  Read();
  std::filesystem::rename(folder_.Path() / "g", path_);
  EXPECT_EQ(Read(), Outcome::Changed);
  EXPECT_EQ(file_.Content(), "two");
}

TEST_F(SettledFileTest, IsReadAgainWhenItsFolderWasExchanged) {
  std::filesystem::create_directories(folder_.Path() / "a");
  std::filesystem::create_directories(folder_.Path() / "b");
  Write("one", "a/f");
  Write("two", "b/f");
  const auto read = [this] { return file_.Read(folder_.Path() / "a" / "f", 10); };
  EXPECT_EQ(read(), Outcome::Changed);
  std::filesystem::rename(folder_.Path() / "a", folder_.Path() / "c");
  std::filesystem::rename(folder_.Path() / "b", folder_.Path() / "a");
  EXPECT_EQ(read(), Outcome::Changed);
  EXPECT_EQ(file_.Content(), "two");
}

TEST_F(SettledFileTest, IsReadAgainWhenALinkToItLeadsElsewhere) {
  Write("one", "a");
  Write("two", "b");
  std::filesystem::create_symlink("a", path_);
  Read();
  std::filesystem::remove(path_);
  std::filesystem::create_symlink("b", path_);
  EXPECT_EQ(Read(), Outcome::Changed);
  EXPECT_EQ(file_.Content(), "two");
}

TEST_F(SettledFileTest, RaisesOnceItIsGone) {
  Write("one");
  Read();
  std::filesystem::remove(path_);
  EXPECT_EQ(CodeOf([&] { Read(); }), std::errc::no_such_file_or_directory);
}

TEST_F(SettledFileTest, IsRefusedWhenLessIsAskedForThanWasRead) {
  Write("more than two");
  Read();
  EXPECT_EQ(file_.Read(path_, 2), Outcome::TooLarge);
}

}  // namespace
