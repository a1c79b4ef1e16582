// A site file on a file system that notes times in steps, as most do: files changed within one step bear the
// same times. Whoever asks for a file's state is shown its times in such steps while a test wants it.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <string>

#include "components/interfaces/configuration.hpp"
#include "platform/automation/runtime.hpp"
#include "platform/base/file_stamp.hpp"
#include "suite/configuration/configuration.hpp"
#include "tests/support/temporary_folder.hpp"

namespace {

bool inSteps = false;

int InSteps(int result, struct stat* status) {
  constexpr long kStepNanoseconds = 16'000'000;
  if (inSteps && result == 0) {
    for (timespec* time : {&status->st_mtim, &status->st_ctim})
      time->tv_nsec -= time->tv_nsec % kStepNanoseconds;
  }
  return result;
}

}  // namespace

extern "C" int stat(const char* path, struct stat* status) noexcept {
  return InSteps(fstatat(AT_FDCWD, path, status, 0), status);
}

extern "C" int fstat(int descriptor, struct stat* status) noexcept {
  return InSteps(fstatat(descriptor, "", status, AT_EMPTY_PATH), status);
}

namespace {

class CoarseTimesTest : public testing::Test {
 protected:
  CoarseTimesTest() : scope_(runtime_) {
    Write("begin");
    Vantrel::RegisterConfiguration(runtime_.classes, folder_.Path() / "home");
    inSteps = true;
  }
  ~CoarseTimesTest() override { inSteps = false; }

  void Write(const std::string& connection) {
    folder_.Write("home/config/siteConfiguration.xml",
                  "<siteConfiguration><product name=\"Orvane\"><connection name=\"Orvane\">" + connection +
                      "</connection></product></siteConfiguration>");
  }
  base::FileStamp Stamp() const {
    struct stat status {};
    EXPECT_EQ(stat((folder_.Path() / "home/config/siteConfiguration.xml").c_str(), &status), 0);
    return base::FileStamp(status);
  }

  orvane_test::TemporaryFolder folder_;
  automation::Runtime runtime_;
  automation::RuntimeScope scope_;
};

TEST_F(CoarseTimesTest, AFileWrittenTwiceWithinOneStepCountsAtOnce) {
  const auto configuration = automation::CreateObject<Vantrel::Configuration>("Vantrel.Configuration");
  configuration->SelectProduct("Orvane", 0);
  int withinOneStep = 0;
  for (int i = 0; i < 1000 && withinOneStep < 3; ++i) {
    Write("one");
    const base::FileStamp before = Stamp();
    EXPECT_EQ(configuration->GetConnectionString("Orvane"), "one");
    Write("two");
    if (Stamp() == before) ++withinOneStep;
    ASSERT_EQ(configuration->GetConnectionString("Orvane"), "two");
  }
  EXPECT_EQ(withinOneStep, 3);
}

}  // namespace
