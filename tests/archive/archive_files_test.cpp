// Where the files lie, what they are called, and what happens when the folder cannot be made.
#include <gmock/gmock.h>

#include <algorithm>

#include "tests/archive/archive_fixture.hpp"

namespace orvane_test {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

using ArchiveFilesTest = ArchiveTest;

TEST_F(ArchiveFilesTest, ACustomerWithAPartnerNumberHasItInTheNames) {
  suite.directory->people["jdoe"].businessPartner = 1042;
  suite.AddRequest(1, "jdoe");

  suite.Run();

  EXPECT_TRUE(std::filesystem::exists(suite.archives / "BP1042_jdoe_SR.xml"));
  EXPECT_TRUE(std::filesystem::exists(suite.archives / "BP1042_jdoe_trans.xml"));
}

TEST_F(ArchiveFilesTest, PartnerNumberZeroMeansNone) {
  suite.AddRequest(1, "jdoe");

  suite.Run();

  EXPECT_TRUE(std::filesystem::exists(suite.archives / "NoBP_jdoe_SR.xml"));
  EXPECT_TRUE(std::filesystem::exists(suite.archives / "NoBP_jdoe_trans.xml"));
}

TEST_F(ArchiveFilesTest, ACustomerWhomTheDirectoryDoesNotKnowHasNoPartnerNumber) {
  suite.directory->people.clear();
  suite.AddRequest(1, "gone");

  suite.Run();

  EXPECT_TRUE(std::filesystem::exists(suite.archives / "NoBP_gone_SR.xml"));
  EXPECT_EQ(suite.test.log->front().message,
            "OrvaneProcess.OrvaneUtilities.getUserFromID caught: no such user(1010).");
}

TEST_F(ArchiveFilesTest, AProspectCarriesThePartnerNumberOfTheCustomerBefore) {
  suite.directory->people["jdoe"].businessPartner = 1042;
  suite.AddRequest(1, "jdoe");
  suite.AddProspectRequest(2, "zoe@example.org");  // sorts after jdoe in the selection

  suite.Run();

  EXPECT_TRUE(std::filesystem::exists(suite.archives / "BP1042_zoe@example.org_SR.xml"));
}

TEST_F(ArchiveFilesTest, ACustomerWhomTheDirectoryDoesNotKnowTakesNoNumberOverAndHandsNoneOn) {
  suite.directory->people["jdoe"].businessPartner = 1042;
  suite.AddRequest(1, "jdoe");
  suite.AddRequest(2, "unknown");
  suite.AddProspectRequest(3, "zoe@example.org");

  suite.Run();

  EXPECT_TRUE(std::filesystem::exists(suite.archives / "BP1042_jdoe_SR.xml"));
  EXPECT_TRUE(std::filesystem::exists(suite.archives / "NoBP_unknown_SR.xml"));
  EXPECT_TRUE(std::filesystem::exists(suite.archives / "NoBP_zoe@example.org_SR.xml"));
}

TEST_F(ArchiveFilesTest, ANegativePartnerNumberIsANumber) {
  suite.directory->people["jdoe"].businessPartner = -7;
  suite.AddRequest(1, "jdoe");

  suite.Run();

  EXPECT_TRUE(std::filesystem::exists(suite.archives / "BP-7_jdoe_trans.xml"));
}

TEST_F(ArchiveFilesTest, ThePartnerNumberCarriesOverToTheNextRunOfTheSameObject) {
  suite.directory->people["jdoe"].businessPartner = 1042;
  suite.AddRequest(1, "jdoe");
  OrvaneProcess::Archive archive;
  archive.Run();
  suite.AddProspectRequest(2, "ann@example.org");

  archive.Run();

  EXPECT_TRUE(std::filesystem::exists(suite.archives / "BP1042_ann@example.org_SR.xml"));
}

TEST_F(ArchiveFilesTest, AProspectOfAFreshObjectHasNone) {
  suite.AddProspectRequest(2, "ann@example.org");

  suite.Run();

  EXPECT_TRUE(std::filesystem::exists(suite.archives / "NoBP_ann@example.org_SR.xml"));
}

TEST_F(ArchiveFilesTest, AProspectIsNotLookedUpAsAnOwner) {
  suite.AddProspectRequest(2, "ann@example.org");
  suite.Execute("update QUESTIONHISTORY set REGISTEREDDATE = null");

  suite.Run();

  EXPECT_THAT(suite.directory->calls, IsEmpty());
}

TEST_F(ArchiveFilesTest, MembershipIsReadFromTheSiteConfigurationBelowTheRoot) {
  suite.AddRequest(1, "jdoe");

  suite.Run();

  EXPECT_THAT(suite.test.configuration->loadedFiles,
              Contains(suite.home.string() + "\\config\\SiteConfiguration.xml"));
}

TEST_F(ArchiveFilesTest, ArchivesAndTheOwnersAccountLieBelowTheRootAndNotTheInstallation) {
  suite.test.configuration->installDir = "/elsewhere";
  suite.AddRequest(1, "jdoe");
  suite.Execute("update QUESTIONHISTORY set REGISTEREDDATE = '2003-12-24 18:30:00'");

  suite.Run();

  EXPECT_THAT(suite.Texts("NoBP_jdoe_SR.xml", "//SR/@Q_ID"), ElementsAre("1"));
  EXPECT_THAT(suite.test.configuration->loadedFiles,
              ElementsAre(suite.home.string() + "\\config\\SiteConfiguration.xml",
                          "/elsewhere\\config\\siteConfiguration.xml"))
      << "the owner, then the originator of a date";
}

TEST_F(ArchiveFilesTest, MissingLevelsOfTheFolderAreMadeOneByOne) {
  suite.SetParameter("DataFileRelativePath", "deep/er/Data/");
  suite.AddRequest(1, "jdoe");

  suite.Run();

  EXPECT_TRUE(std::filesystem::exists(suite.home / "deep" / "er" / "Data" / "Archives" / "NoBP_jdoe_SR.xml"));
  const std::string folder = suite.home.string() + "\\deep\\er\\Data\\Archives\\";
  EXPECT_THAT(suite.LogMessages(), Contains("Archive Files " + folder + "NoBP_jdoe_SR.xml and " + folder +
                                            "NoBP_jdoe_trans.xml edited"));
}

TEST_F(ArchiveFilesTest, TheFolderIsLookedForOnceACustomerAndLevelByLevelWhenItIsMissing) {
  suite.AddRequest(1, "jdoe");
  suite.AddRequest(2, "zoe");
  std::vector<std::string> asked;
  suite.faults->onFolderExists = [&](const std::string& path) {
    if (path.find("OrvLog") == std::string::npos) asked.push_back(path);
  };

  suite.Run();

  const std::string location = suite.home.string() + "\\Data\\Archives";
  std::vector<std::string> expected = {location};
  for (std::string level, rest = suite.home.string() + "/Data/Archives/"; !rest.empty();) {
    const std::size_t end = rest.find('/') + 1;
    level += rest.substr(0, end);
    rest.erase(0, end);
    expected.push_back(level);
  }
  expected.push_back(location);
  EXPECT_EQ(asked, expected) << "jdoe's look, the levels from the root on, zoe's look";
}

TEST_F(ArchiveFilesTest, TheDriveOfAFolderThatIsThereIsNotAskedFor) {
  std::filesystem::create_directories(suite.archives);
  suite.faults->driveExists = [](const std::string&) { return false; };
  suite.AddRequest(1, "jdoe");

  suite.Run();

  EXPECT_THAT(suite.Rows("select Q_ID from QUESTIONHISTORY"), IsEmpty());
}

TEST_F(ArchiveFilesTest, AMissingDriveSkipsAllCustomersWithOneReason) {
  suite.faults->driveExists = [](const std::string&) { return false; };
  suite.AddRequest(1, "jdoe");
  suite.AddRequest(2, "zoe");

  suite.Run();

  EXPECT_THAT(suite.LogMessages(),
              ElementsAre("Archiving Process started by NTService",
                          "Creation of Archive Folder " + suite.home.string() + "\\Data\\Archives" +
                              " or questions and transactions folder under this folder failed .",
                          "Reason : Invalid drive mentioned", "Archiving Process ended."));
  EXPECT_THAT(suite.Rows("select Q_ID from QUESTIONHISTORY order by Q_ID"), ElementsAre("1", "2"));
}

TEST_F(ArchiveFilesTest, TheDriveIsThePartBeforeTheFirstColon) {
  std::string asked;
  suite.faults->driveExists = [&](const std::string& drive) {
    asked = drive;
    return false;
  };
  suite.SetParameter("DataFileRelativePath", "a:b");
  suite.AddRequest(1, "jdoe");

  suite.Run();

  EXPECT_EQ(asked, suite.home.string() + "\\a");
}

TEST_F(ArchiveFilesTest, AFailedCreationRemovesWhatIsThereOfTheFolder) {
  suite.faults->onCreateFolder = [this](const std::string& path) {
    if (path.find("Archives") == std::string::npos) return;
    std::filesystem::create_directories(suite.archives / "questions");
    std::filesystem::create_directories(suite.archives / "transactions");
    throw automation::Error(automation::ErrorNumber::PermissionDenied);
  };
  suite.AddRequest(1, "jdoe");

  suite.Run();

  EXPECT_FALSE(std::filesystem::exists(suite.archives));
  EXPECT_THAT(suite.LogMessages(), Contains("Reason : Permission denied"));
}

TEST_F(ArchiveFilesTest, AFailedCreationRemovesTheFoldersInTheirOrderAndForcesNothing) {
  suite.faults->onCreateFolder = [this](const std::string& path) {
    if (path.find("Archives") == std::string::npos) return;
    std::filesystem::create_directories(suite.archives / "questions");
    std::filesystem::create_directories(suite.archives / "transactions");
    throw automation::Error(automation::ErrorNumber::PermissionDenied);
  };
  std::vector<std::string> deleted;
  suite.faults->onDeleteFolder = [&](const std::string& path, bool force) {
    deleted.push_back(path.substr(path.find("\\Data")));
    EXPECT_FALSE(force);
    // One that stays does not keep the next from going.
    if (path.ends_with("questions")) throw automation::Error(automation::ErrorNumber::PermissionDenied);
  };
  suite.AddRequest(1, "jdoe");

  suite.Run();

  EXPECT_THAT(deleted, ElementsAre("\\Data\\Archives\\questions", "\\Data\\Archives\\transactions",
                                   "\\Data\\Archives"));
  EXPECT_THAT(suite.LogMessages(),
              ElementsAre("Archiving Process started by NTService",
                          "Creation of Archive Folder " + suite.home.string() + "\\Data\\Archives" +
                              " or questions and transactions folder under this folder failed .",
                          "Reason : Permission denied", "Archiving Process ended."));
}

TEST_F(ArchiveFilesTest, AShareThatComesBackAfterTheFailedCreationKeepsItsArchives) {
  suite.faults->onCreateFolder = [this](const std::string& path) {
    if (path.find("Archives") == std::string::npos) return;
    suite.folder.Write("suite/home/Data/Archives/BP7_old_SR.xml", "the only copy");
    suite.folder.Write("suite/home/Data/Archives/questions/deep/er.xml", "another");
    std::filesystem::create_directories(suite.archives / "transactions" / "deep");
    throw automation::Error(automation::ErrorNumber::FileAlreadyExists);
  };
  suite.undescribed = {"BP7_old_SR.xml"};
  suite.AddRequest(1, "jdoe");

  suite.Run();

  EXPECT_EQ(suite.Archive("BP7_old_SR.xml"), "the only copy");
  EXPECT_EQ(suite.Archive("questions/deep/er.xml"), "another");
  EXPECT_FALSE(std::filesystem::exists(suite.archives / "transactions")) << "it held no file";
  EXPECT_THAT(suite.LogMessages(),
              ElementsAre("Archiving Process started by NTService",
                          "Creation of Archive Folder " + suite.home.string() + "\\Data\\Archives" +
                              " or questions and transactions folder under this folder failed .",
                          "Reason : File already exists", "Archiving Process ended."));
}

TEST_F(ArchiveFilesTest, AFailedCreationTakesTheEmptyFolderOfRequestsFromAShareThatComesBack) {
  suite.faults->onCreateFolder = [this](const std::string& path) {
    if (path.find("Archives") == std::string::npos) return;
    suite.folder.Write("suite/home/Data/Archives/transactions/old.xml", "the only copy");
    std::filesystem::create_directories(suite.archives / "questions");
    throw automation::Error(automation::ErrorNumber::FileAlreadyExists);
  };
  suite.AddRequest(1, "jdoe");

  suite.Run();

  EXPECT_FALSE(std::filesystem::exists(suite.archives / "questions"));
  EXPECT_EQ(suite.Archive("transactions/old.xml"), "the only copy");
}

TEST_F(ArchiveFilesTest, AFolderThatComesIntoExistenceBetweenTwoCustomersIsUsedWithoutACreation) {
  suite.AddRequest(1, "jdoe");
  suite.AddRequest(2, "zoe");
  std::vector<std::string> created;
  suite.faults->onCreateFolder = [&](const std::string& path) { created.push_back(path); };
  suite.faults->onSave = [this](const std::string& path) {
    // Gone with jdoe's files, and back, before zoe's turn.
    if (path.find("NoBP_jdoe_trans") == std::string::npos) return;
    std::filesystem::rename(suite.archives, suite.home / "Data" / "elsewhere");
    std::filesystem::create_directories(suite.archives);
  };

  suite.Run();

  std::string logFolder = suite.home.parent_path().string() + "\\OrvLog";
  std::replace(logFolder.begin(), logFolder.end(), '/', '\\');
  EXPECT_THAT(created, ElementsAre(logFolder, suite.home.string() + "/Data/",
                                   suite.home.string() + "/Data/Archives/"));
  EXPECT_THAT(suite.Texts("NoBP_zoe_SR.xml", "//SR/@Q_ID"), ElementsAre("2"));
}

TEST_F(ArchiveFilesTest, AFolderThatGoesBetweenTwoCustomersIsMadeAgain) {
  suite.AddRequest(1, "jdoe");
  suite.AddRequest(2, "zoe");
  bool moved = false;
  suite.journal->beforeStatement = [&](const std::string& sql) {
    if (moved || sql.find("Delete from QUESTIONHISTORY") == std::string::npos) return;
    std::filesystem::rename(suite.archives, suite.home / "Data" / "elsewhere");
    moved = true;
  };

  suite.Run();

  EXPECT_THAT(suite.Rows("select Q_ID from QUESTIONHISTORY"), IsEmpty());
  EXPECT_TRUE(std::filesystem::exists(suite.home / "Data" / "elsewhere" / "NoBP_jdoe_SR.xml"));
  EXPECT_THAT(suite.Texts("NoBP_zoe_SR.xml", "//SR/@Q_ID"), ElementsAre("2"));
}

TEST_F(ArchiveFilesTest, ALevelThatIsAFileFailsTheCreation) {
  suite.folder.Write("suite/home/Data", "not a folder");
  suite.AddRequest(1, "jdoe");

  suite.Run();

  EXPECT_EQ(TemporaryFolder::Read(suite.home / "Data"), "not a folder");
  EXPECT_THAT(suite.Rows("select Q_ID from QUESTIONHISTORY"), ElementsAre("1"));
  EXPECT_THAT(suite.LogMessages(),
              Contains("Creation of Archive Folder " + suite.home.string() + "\\Data\\Archives" +
                       " or questions and transactions folder under this folder failed ."));
}

TEST_F(ArchiveFilesTest, ALineAboutACustomerNeverNamesTheFilesOfTheOneBefore) {
  suite.directory->people["jdoe"].businessPartner = 1042;
  suite.AddRequest(1, "jdoe");
  suite.AddRequest(2, "zoe");
  int reads = 0;
  suite.journal->beforeStatement = [&](const std::string& sql) {
    if (sql.find("Webfarm Implemented") != std::string::npos && ++reads == 2) {
      throw automation::Error(-2147467259, "engine", "gone");
    }
  };

  suite.Run();

  EXPECT_THAT(suite.LogMessages(), Contains("Questions XML file " + suite.ArchivePath("BP1042_zoe_SR.xml") +
                                            " could not be created/loaded"));
  EXPECT_THAT(suite.Rows("select Q_ID from QUESTIONHISTORY"), ElementsAre("2"));
}

TEST_F(ArchiveFilesTest, ALineAboutAProspectNamesTheFileOfItsAddress) {
  suite.AddProspectRequest(1, "ann@example.org");
  suite.journal->beforeStatement = [](const std::string& sql) {
    if (sql.find("Webfarm Implemented") != std::string::npos)
      throw automation::Error(-2147467259, "engine", "gone");
  };

  suite.Run();

  EXPECT_THAT(suite.LogMessages(),
              Contains("Questions XML file " + suite.ArchivePath("NoBP_ann@example.org_SR.xml") +
                       " could not be created/loaded"));
}

TEST_F(ArchiveFilesTest, TheOwnerIsLookedUpBeforeTheFolderIsMade) {
  suite.faults->driveExists = [this](const std::string&) {
    EXPECT_THAT(suite.directory->calls, Contains("BindAs(jdoe|cn=orvane|secret)"));
    return false;
  };
  suite.AddRequest(1, "jdoe");

  suite.Run();

  EXPECT_THAT(suite.LogMessages(), Contains("Reason : Invalid drive mentioned"));
}

TEST_F(ArchiveFilesTest, TheNextRunTriesTheFolderAgain) {
  suite.faults->driveExists = [](const std::string&) { return false; };
  suite.AddRequest(1, "jdoe");
  OrvaneProcess::Archive archive;
  archive.Run();
  suite.faults->driveExists = nullptr;

  archive.Run();

  EXPECT_THAT(suite.Rows("select Q_ID from QUESTIONHISTORY"), IsEmpty());
}

TEST_F(ArchiveFilesTest, AnOwnerThatWouldLeaveTheFolderKeepsItsRows) {
  // Folders through which such a name would lead out.
  for (const char* folder : {"NoBP_a", "NoBP_x"})
    std::filesystem::create_directories(suite.archives / folder);
  const std::vector<std::string> owners = {"x/../../evil@example.org",
                                           "x\\..\\..\\evil@example.org",
                                           "../../evil@example.org",
                                           "..\\..\\evil@example.org",
                                           "a/b@example.org",
                                           "tab\there@example.org",
                                           "unit\x1fseparator@example.org",
                                           "rub\x7fout@example.org"};
  int id = 0;
  for (const std::string& owner : owners) suite.AddProspectRequest(++id, owner);

  suite.Run();

  EXPECT_EQ(suite.Rows("select Q_ID from QUESTIONHISTORY").size(), owners.size());
  for (std::string owner : owners) {
    for (char& c : owner) c = static_cast<unsigned char>(c) < 0x20 || c == 0x7F ? '?' : c;
    EXPECT_THAT(suite.LogMessages(),
                Contains("Questions XML file " + suite.ArchivePath("NoBP_" + owner + "_SR.xml") +
                         " could not be created/loaded"));
  }
  for (const auto& entry : std::filesystem::recursive_directory_iterator(suite.folder.Path())) {
    EXPECT_EQ(entry.path().filename().string().find("evil"), std::string::npos) << entry.path();
  }
  for (const auto& entry : std::filesystem::recursive_directory_iterator(suite.home / "Data")) {
    EXPECT_TRUE(entry.is_directory()) << entry.path();
  }
  EXPECT_THAT(suite.test.log->size(), 0U);
}

TEST_F(ArchiveFilesTest, AnOwnerWithAnApostropheKeepsItsRows) {
  suite.AddProspectRequest(1, "o''hara@example.org");  // doubled for the insert only

  suite.Run();

  EXPECT_THAT(suite.Rows("select Q_ID from QUESTIONHISTORY"), ElementsAre("1"));
  EXPECT_THAT(suite.LogMessages(),
              Contains("Editing of Archive file " + suite.ArchivePath("NoBP_o'hara@example.org_SR.xml") +
                       " failed1"));
}

TEST_F(ArchiveFilesTest, ANameTooLongForTheDiskKeepsItsRows) {
  const std::string owner = std::string(240, 'x') + "@example.org";  // fits its column, but not a file's name
  suite.AddProspectRequest(1, owner);

  suite.Run();

  EXPECT_THAT(suite.Rows("select Q_ID from QUESTIONHISTORY"), ElementsAre("1"));
  EXPECT_THAT(suite.LogMessages(),
              Contains("Questions XML file " + suite.ArchivePath("NoBP_" + owner + "_SR.xml") +
                       " could not be created/loaded"));
}

TEST_F(ArchiveFilesTest, DotsAndNonAsciiLettersAreOrdinaryNames) {
  suite.AddProspectRequest(1, "..");
  suite.AddProspectRequest(2, "müller@example.org");

  suite.Run();

  EXPECT_THAT(suite.Rows("select Q_ID from QUESTIONHISTORY"), IsEmpty());
  EXPECT_TRUE(std::filesystem::exists(suite.archives / "NoBP_.._SR.xml"));
  EXPECT_TRUE(std::filesystem::exists(suite.archives / "NoBP_müller@example.org_SR.xml"));
  EXPECT_THAT(suite.LogMessages(),
              Contains("Archive Files " + suite.ArchivePath("NoBP_m?ller@example.org_SR.xml") + " and " +
                       suite.ArchivePath("NoBP_m?ller@example.org_trans.xml") + " edited"))
      << "the run log is in the code page";
}

}  // namespace
}  // namespace orvane_test
