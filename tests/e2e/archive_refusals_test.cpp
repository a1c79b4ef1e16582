// The archive job through the real program, as an unprivileged user who is refused folders and files.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fstream>

#include "tests/e2e/archive_installation.hpp"
#include "tests/support/archive_files.hpp"

namespace orvane_test {
namespace {

namespace fs = std::filesystem;
using testing::Contains;
using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;
using Strings = std::vector<std::string>;

class ArchiveRefusalsTest : public testing::Test {
 protected:
  ArchiveRefusalsTest() : engine_(MakeEngine("sqlite", installation_.suite)) {
    installation_.Configure("Provider=SQLite;Data Source=db\\orvane.sqlite", ThreeCustomers());
    Fill();
  }
  void TearDown() override { ExpectArchiveFiles(installation_.Archives(), undescribed_); }

  void Fill() { engine_->ExecuteAll(RowsOfThreeCustomers()); }

  // The first run makes the files; what `then` does is there before the second.
  template <class Then>
  void RunTwice(Then then) {
    installation_.suite.GiveAway();
    EXPECT_EQ(Run().exitCode, 0);
    ASSERT_THAT(CustomersLeft(*engine_), IsEmpty());
    before_ = installation_.Files();
    Fill();
    then();
    EXPECT_EQ(Run().exitCode, 0);
  }
  Outcome Run() {
    return RunHostUnprivileged({"run", "--home", installation_.Home().string(), "OrvaneProcess.Archive"});
  }

  void ExpectTheNextRunGoesThrough() {
    EXPECT_EQ(Run().exitCode, 0);
    EXPECT_THAT(CustomersLeft(*engine_), IsEmpty());
    EXPECT_THAT(engine_->Column("select T_ID from TRANSACTIONS"), IsEmpty());
  }
  void ExpectBobKeepsRowsAndFiles() {
    EXPECT_THAT(CustomersLeft(*engine_), ElementsAre("bob"));
    EXPECT_EQ(installation_.Files().at("BP7_bob_SR.xml"), before_.at("BP7_bob_SR.xml"));
    EXPECT_EQ(installation_.Files().at("BP7_bob_trans.xml"), before_.at("BP7_bob_trans.xml"));
  }
  fs::path Bobs(const std::string& kind) const { return installation_.Archives() / ("BP7_bob" + kind); }

  ArchiveInstallation installation_;
  std::unique_ptr<Engine> engine_;
  std::map<std::string, std::string> before_;
  std::set<std::string> undescribed_;
};

TEST_F(ArchiveRefusalsTest, AFolderThatMayNotBeWrittenKeepsAllRowsAndFiles) {
  RunTwice([this] { fs::permissions(installation_.Archives(), static_cast<fs::perms>(0555)); });

  EXPECT_THAT(CustomersLeft(*engine_), ElementsAre("ann", "bob", "eve"));
  EXPECT_EQ(installation_.Files(), before_);
  for (const Person& customer : ThreeCustomers()) {
    EXPECT_THAT(installation_.Messages(),
                Contains("Editing of Archive file " + installation_.Path("BP7_" + customer.id + "_SR.xml") +
                         " failed1"));
  }
  fs::permissions(installation_.Archives(), static_cast<fs::perms>(0755));
  ExpectTheNextRunGoesThrough();
}

TEST_F(ArchiveRefusalsTest, NewFilesInAFolderThatMayNotBeWrittenKeepAllRows) {
  fs::create_directories(installation_.Archives());
  installation_.suite.GiveAway();
  fs::permissions(installation_.Archives(), static_cast<fs::perms>(0555));

  EXPECT_EQ(Run().exitCode, 0);

  EXPECT_THAT(Copies(*engine_, installation_), Each(1));
  EXPECT_THAT(CustomersLeft(*engine_), ElementsAre("ann", "bob", "eve"));
  EXPECT_THAT(installation_.Messages(),
              Contains("Questions XML file " + installation_.Path("BP7_bob_SR.xml") +
                       " could not be created/loaded"));
  fs::permissions(installation_.Archives(), static_cast<fs::perms>(0755));
  ExpectTheNextRunGoesThrough();
}

TEST_F(ArchiveRefusalsTest, AFolderThatMayNotBeMadeIsSaidOnceAndKeepsAllRows) {
  fs::create_directories(installation_.Home() / "Data");
  installation_.suite.GiveAway();
  fs::permissions(installation_.Home() / "Data", static_cast<fs::perms>(0555));

  EXPECT_EQ(Run().exitCode, 0);

  EXPECT_THAT(CustomersLeft(*engine_), ElementsAre("ann", "bob", "eve"));
  EXPECT_THAT(
      installation_.Messages(),
      ElementsAre("Archiving Process started by NTService",
                  "Creation of Archive Folder <home>\\Data\\Archives or questions and transactions folder "
                  "under this folder failed .",
                  "Reason : Permission denied", "Archiving Process ended."));
  fs::permissions(installation_.Home() / "Data", static_cast<fs::perms>(0755));
  ExpectTheNextRunGoesThrough();
}

TEST_F(ArchiveRefusalsTest, AFileMarkedAsReadOnlyKeepsItsCustomersRows) {
  RunTwice([this] { fs::permissions(Bobs("_trans.xml"), static_cast<fs::perms>(0444)); });

  ExpectBobKeepsRowsAndFiles();
  EXPECT_THAT(installation_.Messages(),
              Contains("Editing of Archive file " + installation_.Path("BP7_bob_trans.xml") + " failed2"));
  fs::permissions(Bobs("_trans.xml"), static_cast<fs::perms>(0644));
  ExpectTheNextRunGoesThrough();
}

// What only the superuser can set up: files of somebody else.
class ArchiveForeignFilesTest : public ArchiveRefusalsTest {
 protected:
  void SetUp() override {
    if (geteuid() != 0) GTEST_SKIP() << "only root can give files away";
  }
  static void HoldByRoot(const fs::path& file, mode_t mode) {
    ASSERT_EQ(chown(file.c_str(), 0, 0), 0);
    ASSERT_EQ(chmod(file.c_str(), mode), 0);
  }
};

TEST_F(ArchiveForeignFilesTest, AFileThatMayNotBeReadKeepsItsCustomersRows) {
  RunTwice([this] { HoldByRoot(Bobs("_SR.xml"), 0600); });

  ExpectBobKeepsRowsAndFiles();
  EXPECT_THAT(installation_.Messages(),
              Contains("Questions XML file " + installation_.Path("BP7_bob_SR.xml") +
                       " could not be created/loaded"));
  installation_.suite.GiveAway();
  ExpectTheNextRunGoesThrough();
}

TEST_F(ArchiveForeignFilesTest, ATransactionsFileThatMayNotBeReadGivesTheRequestsFileItsContentBack) {
  RunTwice([this] { HoldByRoot(Bobs("_trans.xml"), 0600); });

  ExpectBobKeepsRowsAndFiles();
  EXPECT_THAT(installation_.Messages(),
              Contains("Transactions XML file " + installation_.Path("BP7_bob_trans.xml") +
                       " could not be created/loaded "));
  installation_.suite.GiveAway();
  ExpectTheNextRunGoesThrough();
}

TEST_F(ArchiveForeignFilesTest, AFileThatMayNotBeReplacedKeepsItsCustomersRows) {
  RunTwice([this] { HoldByRoot(Bobs("_SR.xml"), 0644); });

  ExpectBobKeepsRowsAndFiles();
  EXPECT_EQ(installation_.Files().size(), before_.size()) << "nothing is left beside the files";
  EXPECT_THAT(installation_.Messages(),
              Contains("Editing of Archive file " + installation_.Path("BP7_bob_SR.xml") + " failed1"));
  installation_.suite.GiveAway();
  ExpectTheNextRunGoesThrough();
}

// In a folder where everybody may only remove what is theirs, the file can be written but not replaced.
TEST_F(ArchiveForeignFilesTest, AFileThatMayNotBeMovedKeepsItsCustomersRowsAndNothingBesideIt) {
  RunTwice([this] {
    HoldByRoot(Bobs("_SR.xml"), 0666);
    HoldByRoot(installation_.Archives(), 01777);
  });

  ExpectBobKeepsRowsAndFiles();
  EXPECT_EQ(installation_.Files().size(), before_.size()) << "nothing is left beside the files";
  EXPECT_THAT(installation_.Messages(),
              Contains("Editing of Archive file " + installation_.Path("BP7_bob_SR.xml") + " failed1"));
  installation_.suite.GiveAway();
  ExpectTheNextRunGoesThrough();
}

TEST_F(ArchiveRefusalsTest, AFileThatWasDamagedByHandIsLeftAsItIs) {
  const std::string damaged = "<TransactionsArchive><Transactions><SR Q_ID=\"1\"";
  RunTwice([&] { std::ofstream(Bobs("_trans.xml"), std::ios::binary) << damaged; });
  undescribed_ = {"BP7_bob_trans.xml"};

  EXPECT_THAT(CustomersLeft(*engine_), ElementsAre("bob"));
  EXPECT_EQ(installation_.Files().at("BP7_bob_SR.xml"), before_.at("BP7_bob_SR.xml"));
  EXPECT_EQ(installation_.Files().at("BP7_bob_trans.xml"), damaged);
  EXPECT_THAT(installation_.Messages(),
              Contains("Transactions XML file " + installation_.Path("BP7_bob_trans.xml") +
                       " could not be created/loaded "));
}

TEST_F(ArchiveRefusalsTest, WithoutItsDirectoryServerTheJobArchivesUnderNoPartnerNumberIfItMust) {
  const fs::path site = installation_.Home() / "config" / "siteConfiguration.xml";
  std::string text = TemporaryFolder::Read(site);
  const std::string key = "<key name=\"LDAPServer\">";
  text.insert(text.find(key) + key.size(), "ldap://127.0.0.1:1");
  std::ofstream(site, std::ios::binary) << text;

  EXPECT_EQ(installation_.Run().exitCode, 69);
  EXPECT_THAT(CustomersLeft(*engine_), ElementsAre("ann", "bob", "eve"));

  const Strings words{"run", "--no-preflight", "--home", installation_.Home().string(), "Archive"};
  EXPECT_EQ(RunHost(words).exitCode, 0);

  EXPECT_THAT(CustomersLeft(*engine_), IsEmpty());
  EXPECT_THAT(Copies(*engine_, installation_), Each(1));
  Strings names;
  for (const auto& [name, content] : installation_.Files()) names.push_back(name);
  EXPECT_THAT(names, ElementsAre("NoBP_ann_SR.xml", "NoBP_ann_trans.xml", "NoBP_bob_SR.xml",
                                 "NoBP_bob_trans.xml", "NoBP_eve_SR.xml", "NoBP_eve_trans.xml"));
  EXPECT_THAT(installation_.suite.ErrorLog(),
              testing::AllOf(testing::SizeIs(3), Each(testing::HasSubstr("getUserFromID caught: "))));
}

}  // namespace
}  // namespace orvane_test
