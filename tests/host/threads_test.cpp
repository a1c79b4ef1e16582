// Hosts that run jobs on several threads of one process, each with a runtime of its own: no job may see
// another, and what the libraries keep for the whole process must stand it. Most telling under the thread
// sanitizer.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <memory>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "components/interfaces/configuration.hpp"
#include "components/interfaces/file_handling.hpp"
#include "components/interfaces/load_xsls.hpp"
#include "host/commands.hpp"
#include "host/composition.hpp"
#include "tests/support/archive_files.hpp"
#include "tests/support/temporary_folder.hpp"

namespace {

namespace fs = std::filesystem;

struct DemoSuite {
  DemoSuite() {
    orvane_host::Arguments arguments;
    arguments.home = home;
    arguments.demo = true;
    EXPECT_EQ(orvane_host::InitSuite(arguments, {output, output}), 0) << output.str();
  }

  orvane_test::TemporaryFolder folder;
  fs::path home = folder.Path() / "home";
  std::ostringstream output;
};

// The files below a suite, but for its databases and logs.
std::vector<std::string> Files(const fs::path& home) {
  std::vector<std::string> names;
  for (const fs::directory_entry& entry : fs::recursive_directory_iterator(home / "Data")) {
    if (entry.is_regular_file()) names.push_back(fs::relative(entry.path(), home).string());
  }
  std::sort(names.begin(), names.end());
  return names;
}

TEST(ThreadsTest, SuitesServedSideBySideComeOutAsTheyWouldOneByOne) {
  std::array<DemoSuite, 3> suites;
  const auto run = [](DemoSuite& suite) {
    suite.output.str({});
    orvane_host::Arguments arguments;
    arguments.home = suite.home;
    arguments.jobs = {"DormantUserExpiry", "CleanUp", "Archive", "SolveOnNoResponse"};
    orvane_host::RunJobs(arguments, {suite.output, suite.output});
  };
  run(suites[0]);
  std::thread other(run, std::ref(suites[1]));
  run(suites[2]);
  other.join();

  const auto finished = [](const std::string& output) {
    std::size_t count = 0;
    for (std::size_t at = output.find("finished in"); at != std::string::npos;
         at = output.find("finished in", at + 1)) {
      ++count;
    }
    return count;
  };
  for (const DemoSuite& suite : suites) {
    EXPECT_EQ(finished(suite.output.str()), 4U) << suite.output.str();
    EXPECT_EQ(Files(suite.home), Files(suites[0].home));
    for (const std::string& name : Files(suite.home)) {
      if (!name.ends_with("_SR.xml") && !name.ends_with("_trans.xml")) continue;
      EXPECT_EQ(orvane_test::ArchiveFileProblem(suite.home / name), "");
    }
  }
  EXPECT_THAT(Files(suites[0].home), testing::Not(testing::IsEmpty()));
}

TEST(ThreadsTest, RuntimesMadeFromOneClassTableShareItsComponents) {
  const DemoSuite suite;
  automation::Runtime first;
  const orvane_host::SuiteHome home(suite.home);
  orvane_host::RegisterSuite(first, home, Vantrel::SiteFile::Read(home.SiteConfiguration()), nullptr);
  automation::Runtime second;
  second.classes = first.classes;
  second.locale = first.locale;
  const std::string sheet = (suite.home / "Orvane/Mail/Sheets" / "reminder.xsl").string();

  const auto use = [&](automation::Runtime& runtime, const std::string& mark) {
    const automation::RuntimeScope scope(runtime);
    for (int i = 0; i < 20; ++i) {
      const auto configuration =
          automation::CreateObject<Vantrel::Configuration>(Vantrel::kConfigurationProgId);
      configuration->SelectProduct("Orvane", 0);
      EXPECT_NE(configuration->GetConnectionString("Orvane"), "");
      const auto files =
          automation::CreateObject<OrvCommonMTS::FileHandling>(OrvCommonMTS::kFileHandlingProgId);
      files->SetInUse(mark, -1);
      EXPECT_TRUE(files->IsInUse(mark));
      files->SetInUse(mark, 0);
      const auto sheets = automation::CreateObject<OrvCommon::LoadXSLs>(OrvCommon::kLoadXSLsProgId);
      EXPECT_NE(sheets->LoadOrvaneTemplate(sheet, "mail"), nullptr);
    }
  };
  std::thread other([&] { use(second, "b"); });
  use(first, "a");
  other.join();
}

}  // namespace
