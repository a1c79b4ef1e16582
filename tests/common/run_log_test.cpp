#include "common/run_log.hpp"

#include <gtest/gtest.h>

#include <utility>

#include "platform/automation/error.hpp"
#include "tests/support/raised_error.hpp"

namespace OrvaneUtilities {
namespace {

TEST(RunLogTest, RulerIsFiftyThreeAsterisks) {
  EXPECT_EQ(RunLogRuler(), std::string(53, '*'));
}

TEST(RunLogTest, DatePartHasNoLeadingZeros) {
  EXPECT_EQ(RunLogDatePart(automation::DateTime::FromDate(2004, 7, 26)), "2004_7_26");
  EXPECT_EQ(RunLogDatePart(automation::DateTime::FromDate(2004, 7, 3)), "2004_7_3");
  EXPECT_EQ(RunLogDatePart(automation::DateTime::FromDate(2010, 12, 31)), "2010_12_31");
}

}  // namespace
// The folder appears between the look and the attempt, made by another job.
class RacingFiles : public Scripting::FileSystemObject {
 public:
  explicit RacingFiles(bool appears) : appears_(appears) {}
  bool FolderExists(std::string_view) const override { return std::exchange(asked_, true) && appears_; }
  Scripting::FolderPtr CreateFolder(std::string_view) override {
    throw automation::Error(automation::ErrorNumber::FileAlreadyExists);
  }
  bool FileExists(std::string_view) const override { return false; }
  bool DriveExists(std::string_view) const override { return false; }
  Scripting::FilePtr GetFile(std::string_view) const override { return nullptr; }
  Scripting::FolderPtr GetFolder(std::string_view) const override { return nullptr; }
  Scripting::TextStreamPtr CreateTextFile(std::string_view, bool) override { return nullptr; }
  Scripting::TextStreamPtr OpenTextFile(std::string_view, Scripting::IOMode, bool) override {
    return nullptr;
  }
  void DeleteFile(std::string_view, bool) override {}
  void DeleteFolder(std::string_view, bool) override {}
  std::string GetParentFolderName(std::string_view) const override { return {}; }

 private:
  const bool appears_;
  mutable bool asked_ = false;
};

TEST(RunLogTest, AFolderThatAnotherJobMakesAtTheSameMomentIsAsGood) {
  RacingFiles racing(true);
  OrvaneUtilities::MakeRunLogFolder(racing, "OrvLog");
  RacingFiles refusing(false);
  EXPECT_EQ(orvane_test::ErrorOf([&] { OrvaneUtilities::MakeRunLogFolder(refusing, "OrvLog"); }).Number(),
            58);
}

}  // namespace OrvaneUtilities
