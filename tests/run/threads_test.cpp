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
#include "components/interfaces/job.hpp"
#include "components/interfaces/load_xsls.hpp"
#include "host/commands.hpp"
#include "platform/msxml2/dom_document.hpp"
#include "suite/composition/composition.hpp"
#include "tests/support/archive_files.hpp"
#include "tests/support/temporary_folder.hpp"

namespace {

namespace fs = std::filesystem;

struct DemoSuite {
  DemoSuite() {
    orvane::host::Arguments arguments;
    arguments.home = home;
    arguments.demo = true;
    EXPECT_EQ(orvane::host::InitSuite(arguments, {output, output}), 0) << output.str();
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

// All run logs, one after the other, with "<home>" for the installation.
std::string RunLogs(const fs::path& home) {
  std::vector<fs::path> files;
  for (const fs::directory_entry& entry : fs::directory_iterator(home.parent_path() / "OrvLog")) {
    if (entry.path().filename().string().starts_with("Orv")) files.push_back(entry.path());
  }
  std::sort(files.begin(), files.end());
  std::string text;
  for (const fs::path& file : files) text += orvane_test::TemporaryFolder::Read(file);
  const std::string path = home.string();
  for (std::size_t at = 0; (at = text.find(path, at)) != std::string::npos;) {
    text.replace(at, path.size(), "<home>");
  }
  return text;
}

// All four jobs, at one moment: a page of a mail that is refused stays or not as the next one gets its name,
// which is made of the second.
void RunAllJobs(const DemoSuite& suite, automation::DateTime moment) {
  const orvane::SuiteHome home(suite.home);
  for (const char* job : {"DormantUserExpiry", "CleanUp", "Archive", "SolveOnNoResponse"}) {
    automation::Runtime runtime;
    orvane::RegisterSuite(runtime, home, Vantrel::SiteFile::Read(home.SiteConfiguration()));
    runtime.clock = [moment] { return moment; };
    const automation::RuntimeScope scope(runtime);
    automation::CreateObject<OrvaneProcess::Job>(std::string("OrvaneProcess.") + job)->Run();
  }
}

TEST(ThreadsTest, SuitesServedSideBySideComeOutAsTheyWouldOneByOne) {
  std::array<DemoSuite, 3> suites;
  // Far from every limit that the suites' own dates, a few seconds apart, are near to.
  const automation::DateTime moment = automation::AddMinutes(automation::SystemClock().WithoutFraction(), 30);
  RunAllJobs(suites[0], moment);
  std::thread other(RunAllJobs, std::cref(suites[1]), moment);
  RunAllJobs(suites[2], moment);
  other.join();

  const std::vector<std::string> expected = Files(suites[0].home);
  const std::string log = RunLogs(suites[0].home);
  EXPECT_THAT(log, testing::HasSubstr("Archiving Process ended."));
  EXPECT_THAT(log, testing::HasSubstr(" Solve On No Response -NTService Stopped at : "));
  for (const DemoSuite& suite : suites) {
    EXPECT_THAT(Files(suite.home), testing::ElementsAreArray(expected));
    EXPECT_EQ(RunLogs(suite.home), log);
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
  const orvane::SuiteHome home(suite.home);
  orvane::RegisterSuite(first, home, Vantrel::SiteFile::Read(home.SiteConfiguration()));
  automation::Runtime second;
  second.classes = first.classes;
  second.locale = first.locale;
  const std::string sheet = (suite.home / "Orvane/Mail/Sheets" / "reminder.xsl").string();

  const std::string otherCase = (suite.home / "Orvane/Mail/SHEETS" / "Reminder.XSL").string();

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
      // Both look for names whose case is another than on the disk.
      const auto document = automation::CreateObject<MSXML2::DOMDocument>("MSXML2.DOMDocument");
      EXPECT_TRUE(document->load(otherCase));
      EXPECT_FALSE(document->load(otherCase + mark));
    }
  };
  std::thread other([&] { use(second, "b"); });
  use(first, "a");
  other.join();
}

}  // namespace
