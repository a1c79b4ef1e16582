#include "suite/composition/composition.hpp"

#include <gtest/gtest.h>

#include <optional>
#include <string>

#include "components/interfaces/file_handling.hpp"
#include "host/init/suite_files.hpp"
#include "platform/automation/runtime.hpp"
#include "platform/msxml2/dom_document.hpp"
#include "platform/scripting/file_system_object.hpp"
#include "run/preview_world.hpp"
#include "tests/support/temporary_folder.hpp"

namespace {

TEST(CompositionTest, KnowsEverythingThatTheJobsCreate) {
  orvane_test::TemporaryFolder folder;
  const orvane::SuiteHome home(folder.Path() / "home");
  orvane::host::MakeSuiteFiles(home, "Provider=SQLite;Data Source=db\\x",
                               "Provider=SQLite;Data Source=db\\y");
  automation::Runtime runtime;
  orvane::RegisterSuite(runtime, home, Vantrel::SiteFile::Read(home.SiteConfiguration()));
  ASSERT_NE(runtime.locale, nullptr);
  const automation::RuntimeScope scope(runtime);
  for (const char* progId : {"OrvaneProcess.Archive",
                             "OrvaneProcess.CleanUp",
                             "OrvaneProcess.DormantUserExpiry",
                             "OrvaneProcess.SolveOnNoResponse",
                             "ADODB.Connection",
                             "ADODB.Recordset",
                             "ADODB.Command",
                             "MSXML2.DOMDocument",
                             "CDO.Message",
                             "ECatalog.ProductCategory",
                             "ECatalog.Product",
                             "ECatalog.FAQCategory",
                             "VnMembership.User",
                             "OrvCommon.LoadXSLs",
                             "Scripting.FileSystemObject",
                             "Scripting.Dictionary",
                             "Vantrel.Configuration",
                             "Vantrel.Log",
                             "OrvCommonMTS.FileHandling",
                             "OrvCommon.SqlConversion",
                             "OrvaneProcessMTS.SolveOnNoResponse",
                             "OrvaneBackendA.Calls",
                             "OrvaneBackendB.Calls",
                             "OrvServiceRequest.Question",
                             "OrvServiceRequest.Prospect",
                             "{358D4659-648D-403F-8807-B3C2A7F9BFD4}",
                             "{79AC3288-D049-4571-B8E0-58D199F42F54}"}) {
    EXPECT_TRUE(runtime.classes.Contains(progId)) << progId;
    if (runtime.classes.Contains(progId)) {
      EXPECT_NE(automation::CreateObject(progId), nullptr) << progId;
    }
  }
}

TEST(CompositionTest, ADriveOfTheSiteReachesFilesAndDocuments) {
  orvane_test::TemporaryFolder folder;
  const orvane::SuiteHome home(folder.Path() / "home");
  orvane::host::MakeSuiteFiles(home, "Provider=SQLite;Data Source=db\\x",
                               "Provider=SQLite;Data Source=db\\y");
  std::string site = orvane_test::TemporaryFolder::Read(home.SiteConfiguration());
  const std::string end = "</siteConfiguration>";
  site.insert(site.find(end), "<section name=\"DRIVES\"><key name=\"Q\">" +
                                  (folder.Path() / "share").string() + "</key></section>");
  orvane::host::WriteFile(home.SiteConfiguration(), site);
  folder.Write("share/archive.xml", "<a>here</a>");
  automation::Runtime runtime;
  orvane::RegisterSuite(runtime, home, Vantrel::SiteFile::Read(home.SiteConfiguration()));
  const automation::RuntimeScope scope(runtime);
  EXPECT_TRUE(automation::CreateObject<Scripting::FileSystemObject>("Scripting.FileSystemObject")
                  ->FileExists("Q:\\archive.xml"));
  const auto document = automation::CreateObject<MSXML2::DOMDocument>("MSXML2.DOMDocument");
  ASSERT_TRUE(document->load("Q:\\archive.xml")) << document->parseErrorReason();
  EXPECT_EQ(document->documentElement()->text(), "here");
  document->save("q:\\copy.xml");
  // A document that was saved appears when somebody looks, or a row is changed.
  EXPECT_TRUE(automation::CreateObject<Scripting::FileSystemObject>("Scripting.FileSystemObject")
                  ->FileExists("Q:\\copy.xml"));
  EXPECT_TRUE(std::filesystem::exists(folder.Path() / "share" / "copy.xml"));
}

TEST(CompositionTest, SharedFilesAreAsOldAsTheMomentOfAPreviewMakesThem) {
  orvane_test::TemporaryFolder folder;
  const orvane::SuiteHome home(folder.Path() / "home");
  orvane::host::MakeSuiteFiles(home, "Provider=SQLite;Data Source=db\\x",
                               "Provider=SQLite;Data Source=db\\y");
  folder.Write("farm/CHAT/transcript.txt", "said");
  const orvane::PreviewWorld world(home, [](const std::string& why, int) { ADD_FAILURE() << why; });
  const auto deleted = [&](std::optional<automation::DateTime> at) {
    automation::Runtime runtime;
    orvane::RegisterSuite(runtime, home, Vantrel::SiteFile::Read(home.SiteConfiguration()),
                          {.world = &world.Parts(), .at = at});
    const automation::RuntimeScope scope(runtime);
    return automation::CreateObject<OrvCommonMTS::FileHandling>(OrvCommonMTS::kFileHandlingProgId)
        ->DeleteAgedFiles((folder.Path() / "farm").string(), 60, OrvCommonMTS::FolderKind::Chat);
  };
  const automation::DateTime now = automation::SystemClock();
  EXPECT_EQ(deleted(std::nullopt), automation::Variant(0));
  EXPECT_EQ(deleted(automation::AddMinutes(now, 55)), automation::Variant(0));
  EXPECT_EQ(deleted(automation::AddMinutes(now, 65)), automation::Variant(1));
  EXPECT_TRUE(std::filesystem::exists(folder.Path() / "farm/CHAT/transcript.txt"));
}

}  // namespace
