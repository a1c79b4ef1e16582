// The archive job on a web farm, through the real program: two servers with folders of their own, one
// database, and a place that they share behind a real FTP server or in a folder.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/e2e/archive_installation.hpp"
#include "tests/servers/server_state.hpp"
#include "tests/suite/file_handling/shared_place.hpp"
#include "tests/support/archive_files.hpp"

std::vector<std::string> orvane_test::KindsOfPlace() {
  return {"folder", "vsftpd", "pyftpd"};
}

namespace orvane_test {
namespace {

namespace fs = std::filesystem;
using testing::Contains;
using testing::Each;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using Strings = std::vector<std::string>;

class ArchiveWebFarmTest : public testing::TestWithParam<std::string> {
 protected:
  ArchiveWebFarmTest() : engine_(MakeEngine("sqlite", here_.suite)) {
    here_.Configure(engine_->ConnectionString(), ThreeCustomers());
    there_.Configure(engine_->ConnectionString(), ThreeCustomers());
    Fill();
  }

  // Rows to archive: each call the same again.
  void Fill() {
    engine_->ExecuteAll(RowsOfThreeCustomers());
    engine_->Execute("insert into PARAMETERS values ('Webfarm Implemented', 'True')");
    engine_->Execute("insert into PARAMETERS values ('FTPPath', '" + place_.FtpPath() + "')");
  }

  Strings CustomersLeft() {
    return engine_->Column("select distinct Q_ORIGINATOR from QUESTIONHISTORY order by Q_ORIGINATOR");
  }

  fs::path Shared() const { return place_.Root() / "Archives"; }

  // Both kinds of file of the three customers, here and on the shared place, are the same.
  void ExpectTheSharedPlaceHolds(const ArchiveInstallation& server) {
    for (const Person& customer : ThreeCustomers()) {
      for (const char* kind : {"_SR.xml", "_trans.xml"}) {
        const std::string name = "BP7_" + customer.id + kind;
        ASSERT_TRUE(fs::exists(Shared() / name)) << name;
        EXPECT_EQ(TemporaryFolder::Read(Shared() / name), TemporaryFolder::Read(server.Archives() / name))
            << name;
      }
    }
    ExpectArchiveFiles(Shared());
    ExpectArchiveFiles(server.Archives());
    EXPECT_EQ(std::distance(fs::directory_iterator(Shared()), fs::directory_iterator()), 6)
        << "nothing is left beside the files";
  }

  static long Count(const std::string& text, const std::string& part) {
    long count = 0;
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++count;
    return count;
  }

  ArchiveInstallation here_;
  ArchiveInstallation there_;
  std::unique_ptr<Engine> engine_;
  SharedPlace place_{GetParam()};
};

INSTANTIATE_TEST_SUITE_P(Places, ArchiveWebFarmTest, testing::ValuesIn(KindsOfPlace()),
                         [](const auto& place) { return place.param; });

TEST_P(ArchiveWebFarmTest, NewFilesAreHandedToTheOtherServers) {
  EXPECT_EQ(here_.Run().exitCode, 0);

  EXPECT_THAT(CustomersLeft(), IsEmpty());
  EXPECT_THAT(here_.suite.ErrorLog(), IsEmpty());
  ExpectTheSharedPlaceHolds(here_);
}

TEST_P(ArchiveWebFarmTest, AnotherServerNumbersOnInTheSharedFiles) {
  here_.Run();
  Fill();

  EXPECT_EQ(there_.Run().exitCode, 0);

  EXPECT_THAT(CustomersLeft(), IsEmpty());
  ExpectTheSharedPlaceHolds(there_);
  const std::string file = TemporaryFolder::Read(Shared() / "BP7_ann_SR.xml");
  EXPECT_EQ(Count(file, "ArchiveID=\"1\""), 3) << "two requests and an entry";
  EXPECT_EQ(Count(file, "ArchiveID=\"2\""), 3);
}

TEST_P(ArchiveWebFarmTest, AnOldCopyOfThisServersIsReplacedByTheSharedOne) {
  here_.Run();
  Fill();
  there_.Run();
  Fill();

  here_.Run();

  ExpectTheSharedPlaceHolds(here_);
  const std::string file = TemporaryFolder::Read(Shared() / "BP7_ann_SR.xml");
  EXPECT_EQ(Count(file, "ArchiveID=\"2\""), 3) << "what the other server archived is still there";
  EXPECT_EQ(Count(file, "ArchiveID=\"3\""), 3);
}

TEST_P(ArchiveWebFarmTest, WhatIsUndoneIsUndoneOnTheSharedPlaceToo) {
  here_.Run();
  const std::string before = TemporaryFolder::Read(Shared() / "BP7_bob_SR.xml");
  const std::string transactionsBefore = TemporaryFolder::Read(Shared() / "BP7_bob_trans.xml");
  Fill();
  engine_->Execute(
      "create trigger refuse before delete on QUESTIONHISTORY when old.Q_ORIGINATOR = 'bob' begin select "
      "raise(abort, 'not now'); end");

  EXPECT_EQ(here_.Run().exitCode, 0);

  EXPECT_THAT(CustomersLeft(), ElementsAre("bob"));
  EXPECT_THAT(here_.Messages(), Contains("Changes to XML files undone" + here_.Path("BP7_bob_SR.xml") +
                                         here_.Path("BP7_bob_trans.xml") + " undone"));
  ExpectTheSharedPlaceHolds(here_);
  EXPECT_EQ(TemporaryFolder::Read(Shared() / "BP7_bob_SR.xml"), before);
  EXPECT_EQ(TemporaryFolder::Read(Shared() / "BP7_bob_trans.xml"), transactionsBefore);

  engine_->Execute("drop trigger refuse");
  EXPECT_EQ(there_.Run().exitCode, 0);
  EXPECT_THAT(CustomersLeft(), IsEmpty());
  EXPECT_EQ(Count(TemporaryFolder::Read(Shared() / "BP7_bob_SR.xml"), "<SR "), 4) << "each run's once";
}

TEST_P(ArchiveWebFarmTest, ASharedFileThatCannotBeReplacedKeepsTheRows) {
  here_.Run();
  Fill();
  // In a folder a file that may not be written is not replaced; an FTP server replaces it, but cannot make
  // the hand-out under its temporary name where something else has that name.
  fs::permissions(Shared() / "BP7_bob_trans.xml", fs::perms::owner_read);
  fs::create_directories(Shared() / "BP7_bob_trans.xml.part" / "in the way");

  EXPECT_EQ(here_.Run().exitCode, 0);

  EXPECT_THAT(CustomersLeft(), ElementsAre("bob"));
  EXPECT_THAT(here_.Messages(),
              Contains("Editing of Archive file " + here_.Path("BP7_bob_trans.xml") + " failed2"));
  fs::permissions(Shared() / "BP7_bob_trans.xml", fs::perms::owner_all);
  fs::remove_all(Shared() / "BP7_bob_trans.xml.part");
  there_.Run();
  EXPECT_THAT(CustomersLeft(), IsEmpty());
  EXPECT_EQ(Count(TemporaryFolder::Read(Shared() / "BP7_bob_SR.xml"), "<SR "), 4);
  EXPECT_EQ(Count(TemporaryFolder::Read(Shared() / "BP7_bob_trans.xml"), "<SR "), 4);
}

TEST_P(ArchiveWebFarmTest, ASharedPlaceThatIsGoneKeepsEverything) {
  here_.Run();
  const std::map<std::string, std::string> before = here_.Files();
  Fill();
  fs::rename(place_.Root(), place_.Root().string() + "-away");

  EXPECT_EQ(here_.Run().exitCode, 0);

  fs::rename(place_.Root().string() + "-away", place_.Root());
  EXPECT_THAT(CustomersLeft(), ElementsAre("ann", "bob", "eve"));
  EXPECT_EQ(here_.Files(), before);
  for (const Person& customer : ThreeCustomers()) {
    EXPECT_THAT(here_.Messages(),
                Contains("Questions XML file " + here_.Path("BP7_" + customer.id + "_SR.xml") +
                         " could not be created/loaded"));
  }
  here_.Run();
  EXPECT_THAT(CustomersLeft(), IsEmpty());
  ExpectTheSharedPlaceHolds(here_);
}

TEST_P(ArchiveWebFarmTest, ASharedFileThatWasDamagedIsLeftAsItIs) {
  here_.Run();
  Fill();
  place_.AddFile("Archives/BP7_bob_SR.xml", "<QuestionsArchive><SRs>damaged by hand");

  here_.Run();

  EXPECT_THAT(CustomersLeft(), ElementsAre("bob"));
  EXPECT_EQ(TemporaryFolder::Read(Shared() / "BP7_bob_SR.xml"), "<QuestionsArchive><SRs>damaged by hand");
  EXPECT_THAT(here_.Messages(), Contains("Questions XML file " + here_.Path("BP7_bob_SR.xml") +
                                         " could not be created/loaded"));
}

class ArchiveFtpFailureTest : public testing::Test {
 protected:
  ArchiveFtpFailureTest() : engine_(MakeEngine("sqlite", here_.suite)) {
    here_.Configure(engine_->ConnectionString(), ThreeCustomers());
    engine_->ExecuteAll(RowsOfThreeCustomers());
    engine_->Execute("insert into PARAMETERS values ('Webfarm Implemented', 'True')");
  }
  ArchiveInstallation here_;
  std::unique_ptr<Engine> engine_;
};

TEST_F(ArchiveFtpFailureTest, AServerThatIsDownKeepsAllRows) {
  {
    const Server server = Server::StartOwn("vsftpd");
    engine_->Execute("insert into PARAMETERS values ('FTPPath', '" + server.Setting("url") + "')");
  }

  EXPECT_EQ(here_.Run().exitCode, 0);

  EXPECT_THAT(Copies(*engine_, here_), Each(1));
  EXPECT_EQ(engine_->Column("select Q_ID from QUESTIONHISTORY").size(), static_cast<std::size_t>(kRequests));
  EXPECT_THAT(here_.Files(), IsEmpty());
  Strings expected = {"Archiving Process started by NTService"};
  for (const Person& customer : ThreeCustomers()) {
    expected.push_back("Questions XML file " + here_.Path("BP7_" + customer.id + "_SR.xml") +
                       " could not be created/loaded");
  }
  expected.push_back("Archiving Process ended.");
  EXPECT_THAT(here_.Messages(), testing::UnorderedElementsAreArray(expected));
}

}  // namespace
}  // namespace orvane_test
