#include "suite/paths/reread_file.hpp"

#include <gtest/gtest.h>

#include <string>
#include <system_error>

#include "tests/support/temporary_folder.hpp"

namespace {

using suite::RereadFile;
using Outcome = suite::RereadFile::Outcome;

class RereadFileTest : public testing::Test {
 protected:
  Outcome Read(const std::string& content, const char* name = "f") {
    return file_.Read(folder_.Write(name, content), 100'000);
  }

  orvane_test::TemporaryFolder folder_;
  RereadFile file_;
};

TEST_F(RereadFileTest, TellsWhetherTheBytesAreThoseOfTheTimeBefore) {
  EXPECT_EQ(Read("one"), Outcome::Other);
  EXPECT_EQ(Read("one"), Outcome::Same);
  EXPECT_EQ(Read("two"), Outcome::Other);
  EXPECT_EQ(file_.Content(), "two");
  EXPECT_EQ(Read("two and more"), Outcome::Other);
  EXPECT_EQ(file_.Content(), "two and more");
  EXPECT_EQ(Read("two"), Outcome::Other);
  EXPECT_EQ(file_.Content(), "two");
  EXPECT_EQ(Read(""), Outcome::Other);
  EXPECT_EQ(file_.Content(), "");
  EXPECT_EQ(Read(""), Outcome::Same);
}

TEST_F(RereadFileTest, FindsASingleChangedByteAnywhereInALargeFile) {
  std::string content(70'000, 'a');
  Read(content);
  for (const std::size_t place : {0u, 16'383u, 16'384u, 40'000u, 69'999u}) {
    content[place] = content[place] == 'a' ? 'b' : 'a';
    EXPECT_EQ(Read(content), Outcome::Other) << place;
    EXPECT_EQ(file_.Content(), content) << place;
    EXPECT_EQ(Read(content), Outcome::Same) << place;
  }
}

TEST_F(RereadFileTest, TakesAnotherFileWithTheSameContentForAnother) {
  Read("one", "f");
  EXPECT_EQ(Read("one", "g"), Outcome::Other);
}

TEST_F(RereadFileTest, RefusesAFileThatIsTooLargeAndReadsItAgainWhenItIsNot) {
  Read("one");
  EXPECT_EQ(Read(std::string(100'001, 'x')), Outcome::TooLarge);
  EXPECT_EQ(Read(std::string(100'000, 'x')), Outcome::Other);
  EXPECT_EQ(Read("one"), Outcome::Other);
}

TEST_F(RereadFileTest, ForgetsWhatItReadWhenTheFileCannotBeRead) {
  Read("one");
  const auto path = folder_.Path() / "f";
  std::filesystem::remove(path);
  try {
    file_.Read(path, 10);
    FAIL() << "read a file that is not there";
  } catch (const std::system_error& error) {
    EXPECT_EQ(error.code(), std::errc::no_such_file_or_directory);
  }
  EXPECT_EQ(Read("one"), Outcome::Other);
  EXPECT_THROW(file_.Read(folder_.Path(), 10), std::system_error);
}

}  // namespace
