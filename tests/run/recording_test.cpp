#include "run/recording.hpp"

#include <gtest/gtest.h>

#include "run/job_runner.hpp"
#include "tests/support/temporary_folder.hpp"

namespace {

// A run's own deletions have to be counted for its limit, whoever else wants to hear of them.
TEST(RecordingTest, RowsAreRecordedForALimit) {
  const orvane_test::TemporaryFolder folder;
  const orvane::SuiteHome home(folder.Path());
  orvane::RunOptions options;
  options.journal = orvane::JournalLevel::Off;
  const auto recordsRows = [&] {
    orvane::JobRunner runner(home, options);
    return orvane::Recording(home, orvane::Jobs().front(), options, nullptr, runner).GetWiring().recordsRows;
  };
  EXPECT_FALSE(recordsRows());
  options.limit = "5";
  EXPECT_TRUE(recordsRows());
}

}  // namespace
