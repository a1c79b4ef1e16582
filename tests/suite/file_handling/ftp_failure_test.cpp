// FTP servers that refuse, vanish, hang up and stay silent.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <initializer_list>

#include "platform/automation/error.hpp"
#include "tests/servers/server_state.hpp"
#include "tests/suite/file_handling/shared_place.hpp"
#include "tests/support/raised_error.hpp"

namespace orvane_test {
namespace {

namespace fs = std::filesystem;
using OrvCommonMTS::FolderKind;
using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

constexpr std::int32_t kCurlNumbers = -2147220992;  // plus libcurl's own number

automation::Error Failure(const Farm& farm, const std::string& path,
                          const std::vector<std::string>& names = {"x"}, FolderKind kind = FolderKind::Chat) {
  try {
    farm.Handling()->DeleteListedItems(path, automation::VariantArray(names.begin(), names.end()), kind);
  } catch (const automation::Error& error) {
    EXPECT_EQ(error.Source(), "OrvCommonMTS.FileHandling");
    EXPECT_THAT(error.Description(), Not(HasSubstr("shared-secret")));
    EXPECT_THAT(error.Description(), Not(HasSubstr("p@ss")));
    EXPECT_THAT(error.Description(), Not(HasSubstr("%40")));
    return error;
  }
  return {0, "", "no error"};
}

std::string Replaced(std::string text, const std::string& what, const std::string& with) {
  const std::size_t at = text.find(what);
  if (at == std::string::npos) throw std::runtime_error(what + " is not in the text");
  return text.replace(at, what.size(), with);
}

TEST(FtpFailureTest, AWrongPasswordIsToldByTheServersAnswer) {
  for (const auto& [server, password] :
       {std::pair{"vsftpd", "shared-secret"}, {"pyftpd", "p%40ss%3Aw%2Frd"}}) {
    Farm farm(server);
    farm.place.AddFile("CHAT/x");
    const automation::Error error = Failure(farm, Replaced(farm.place.FtpPath(), password, "wrong-one"));
    EXPECT_EQ(error.Number(), kCurlNumbers + 67) << server;
    EXPECT_THAT(error.Description(), StartsWith("FTP server 127.0.0.1:"));
    EXPECT_THAT(error.Description(), HasSubstr("Access denied: 530"));
    EXPECT_THAT(error.Description(), Not(HasSubstr("wrong-one")));
    EXPECT_THAT(farm.place.Contents(), ElementsAre("CHAT/", "CHAT/x"));
  }
}

TEST(FtpFailureTest, AServerThatIsDownIsToldByName) {
  Farm farm("vsftpd");
  std::string down;
  {
    const Server server = Server::StartOwn("vsftpd");
    down = server.Setting("url");
  }
  const automation::Error error = Failure(farm, down);
  EXPECT_EQ(error.Number(), kCurlNumbers + 7);
  EXPECT_THAT(error.Description(), HasSubstr("Failed to connect"));
}

TEST(FtpFailureTest, AConnectionThatIsCutOffEndsTheCallAtOnce) {
  Farm farm("pyftpd");
  farm.place.AddFile("CHAT/first");
  farm.place.AddFile("CHAT/hang-up");
  farm.place.AddFile("CHAT/last");
  const automation::Error error = Failure(farm, farm.place.FtpPath(), {"first", "hang-up", "last"});
  EXPECT_EQ(error.Number(), kCurlNumbers + 56) << error.Description();
  EXPECT_THAT(error.Description(), StartsWith("FTP server 127.0.0.1:"));
  EXPECT_THAT(farm.place.Contents(), ElementsAre("CHAT/", "CHAT/hang-up", "CHAT/last"));
}

TEST(FtpFailureTest, AServerThatStaysSilentIsGivenUp) {
  Farm farm("pyftpd", {.connect = std::chrono::seconds(5), .reply = std::chrono::seconds(2)});
  farm.place.AddFile("CHAT/stay-silent");
  const auto start = std::chrono::steady_clock::now();
  const automation::Error error = Failure(farm, farm.place.FtpPath(), {"stay-silent"});
  EXPECT_EQ(error.Number(), kCurlNumbers + 28);
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(20));
}

TEST(FtpFailureTest, ADownloadThatBreaksOffLeavesTheOldCopy) {
  Farm farm("pyftpd");
  farm.place.AddFile("Archives/break-off.xml", std::string(100000, 'n'));
  const fs::path target = farm.data.Write("Archives/break-off.xml", "old");
  const automation::Error error = ErrorOf([&] {
    farm.Handling()->FetchFile(farm.place.FtpPath(), "break-off.xml", target.string(), FolderKind::Archives,
                               10);
  });
  EXPECT_EQ(error.Number(), kCurlNumbers + 18) << error.Description();
  EXPECT_EQ(TemporaryFolder::Read(target), "old");
  EXPECT_FALSE(fs::exists(target.parent_path() / ".break-off.xml.saving"));
}

// The upload went well, so the other servers' copy is all that may be left.
TEST(FtpFailureTest, AFileThatCannotBeGivenItsNameLeavesTheOldCopyAlone) {
  Farm farm("pyftpd");
  farm.place.AddFile("Archives/keep-name.xml", "theirs");
  const fs::path source = farm.data.Write("Archives/keep-name.xml", "mine");
  const automation::Error error =
      ErrorOf([&] { farm.Handling()->StoreFile(source.string(), FolderKind::Archives); });
  EXPECT_EQ(error.Number(), 75);
  EXPECT_EQ(error.Description(), "The FTP server does not take keep-name.xml: 553 Not that name.");
  EXPECT_THAT(farm.place.Contents(), ElementsAre("Archives/", "Archives/keep-name.xml"));
  EXPECT_EQ(TemporaryFolder::Read(farm.place.Root() / "Archives/keep-name.xml"), "theirs");
}

TEST(FtpFailureTest, AnUploadThatFailsLeavesNothingBehind) {
  Farm farm("pyftpd");
  farm.place.AddFile("Archives/disk-full.xml", "theirs");
  const fs::path source = farm.data.Write("Archives/disk-full.xml", "mine");
  const automation::Error error =
      ErrorOf([&] { farm.Handling()->StoreFile(source.string(), FolderKind::Archives); });
  EXPECT_EQ(error.Number(), kCurlNumbers + 25);
  EXPECT_THAT(farm.place.Contents(), ElementsAre("Archives/", "Archives/disk-full.xml"));
  EXPECT_EQ(TemporaryFolder::Read(farm.place.Root() / "Archives/disk-full.xml"), "theirs");
}

// Its files are not gone: whoever took it for missing would make them anew.
TEST(FtpFailureTest, AFolderThatIsNotListedForTheMomentIsNotTakenForAMissingOne) {
  Farm farm("pyftpd");
  farm.place.AddFile("Archives/busy");
  farm.place.AddFile("CHAT/busy", "x", 600);
  for (const std::function<void()>& call : std::initializer_list<std::function<void()>>{
           [&] { farm.Handling()->FileExists("a.xml", automation::VariantArray{std::int16_t{13}}); },
           [&] {
             farm.Handling()->DeleteListedItems(farm.place.FtpPath(), automation::VariantArray{"stubborn"},
                                                FolderKind::Chat);
           }}) {
    const automation::Error error = ErrorOf(call);
    EXPECT_EQ(error.Number(), kCurlNumbers + 19);
    EXPECT_THAT(error.Description(), StartsWith("FTP server 127.0.0.1:"));
    EXPECT_THAT(error.Description(), EndsWith(": 450 Busy, come back later."));
  }
}

TEST(FtpFailureTest, AFileThatTheServerKeepsBackIsNotTakenForAMissingOne) {
  Farm farm("vsftpd");
  farm.place.AddFile("Archives/secret.xml");
  fs::permissions(farm.place.Root() / "Archives/secret.xml", fs::perms::none);
  const fs::path target = farm.data.Write("Archives/secret.xml", "old");
  const automation::Error error = ErrorOf([&] {
    farm.Handling()->FetchFile(farm.place.FtpPath(), "secret.xml", target.string(), FolderKind::Archives, 10);
  });
  EXPECT_EQ(error.Description(), "The FTP server does not give out secret.xml.");
  EXPECT_EQ(TemporaryFolder::Read(target), "old");
}

// A folder that may be entered but not read, and one that may not even be entered.
TEST(FtpFailureTest, AFolderThatGivesOutNoListingIsNotTakenForAnEmptyOne) {
  for (const char* server : {"vsftpd", "pyftpd"}) {
    for (const int mode : {0311, 0000}) {
      Farm farm(server);
      farm.place.AddFile("archives/there.xml");
      farm.place.AddFile("CHAT/old", "x", 600);
      for (const char* folder : {"archives", "CHAT"}) {
        fs::permissions(farm.place.Root() / folder, static_cast<fs::perms>(mode));
      }
      const OrvCommonMTS::FileHandlingPtr handling = farm.Handling();
      const auto refused = [&](const std::string& folder, const std::function<void()>& action) {
        try {
          action();
          ADD_FAILURE() << server << " " << mode << " " << folder;
        } catch (const automation::Error& error) {
          EXPECT_EQ(error.Number(), 75);
          EXPECT_THAT(error.Description(), StartsWith("The FTP server does not list "));
          EXPECT_THAT(error.Description(), EndsWith("/" + folder + ", which exists."));
        }
      };
      refused("archives",
              [&] { handling->FileExists("there.xml", automation::VariantArray{std::int16_t{13}}); });
      const fs::path target = farm.data.Write("Archives/there.xml", "mine");
      refused("archives", [&] {
        handling->FetchFile(farm.place.FtpPath(), "there.xml", target.string(), FolderKind::Archives, 10);
      });
      refused("CHAT", [&] { handling->DeleteAgedFiles(farm.place.FtpPath(), 60, FolderKind::Chat); });
      EXPECT_EQ(TemporaryFolder::Read(target), "mine");
    }
  }
}

TEST(FtpFailureTest, AnAttachmentFolderThatGivesOutNoListingIsReportedAndTheOthersFollow) {
  for (const char* server : {"vsftpd", "pyftpd"}) {
    Farm farm(server);
    farm.place.AddFile("SRATTACHMENTS/17A/kept.txt");
    farm.place.AddFile("SRATTACHMENTS/18A/gone.txt");
    const fs::path barred = farm.place.Root() / "SRATTACHMENTS/17A";
    fs::permissions(barred, fs::perms::none);
    const automation::Error error = Failure(farm, farm.place.FtpPath(), {"17A\\kept.txt", "18A\\gone.txt"},
                                            FolderKind::OldAttachmentFiles);
    EXPECT_EQ(error.Number(), 75) << server;
    EXPECT_THAT(
        error.Description(),
        StartsWith("1 of 2 items could not be deleted: 17A\\kept.txt: The FTP server does not list "));
    fs::permissions(barred, fs::perms::all);
    EXPECT_TRUE(fs::exists(barred / "kept.txt"));
    EXPECT_FALSE(fs::exists(farm.place.Root() / "SRATTACHMENTS/18A/gone.txt"));
  }
}

TEST(FtpFailureTest, ARootThatGivesOutNoListingIsAnError) {
  Farm farm("vsftpd");
  farm.place.AddFile("CHAT/x");
  fs::permissions(farm.place.Root(), static_cast<fs::perms>(0311));
  const automation::Error error = Failure(farm, farm.place.FtpPath());
  EXPECT_EQ(error.Number(), 76);
  EXPECT_THAT(error.Description(), EndsWith(" does not exist or may not be entered."));
}

TEST(FtpFailureTest, WhatTheServerRefusesToDeleteIsReportedWithItsAnswer) {
  for (const char* server : {"vsftpd", "pyftpd"}) {
    Farm farm(server);
    farm.place.AddFile("SRATTACHMENTS/17A/kept.txt");
    farm.place.AddFile("SRATTACHMENTS/18A/gone.txt");
    const fs::path barred = farm.place.Root() / "SRATTACHMENTS/17A";
    fs::permissions(barred, static_cast<fs::perms>(0555));
    const automation::Error error = Failure(farm, farm.place.FtpPath(), {"17A\\kept.txt", "18A\\gone.txt"},
                                            FolderKind::OldAttachmentFiles);
    EXPECT_EQ(error.Number(), 75);
    EXPECT_THAT(error.Description(), HasSubstr("1 of 2 items could not be deleted: 17A\\kept.txt: 550 "));
    EXPECT_FALSE(fs::exists(farm.place.Root() / "SRATTACHMENTS/18A/gone.txt"));
    fs::permissions(barred, fs::perms::all);
  }
}

TEST(FtpFailureTest, ACommandCannotBeSmuggledInByAName) {
  Farm farm("vsftpd");
  farm.place.AddFile("Archives/precious.xml");
  farm.place.AddFile("CHAT/x");
  const std::string name = "x\r\nDELE " + (farm.place.Root() / "Archives/precious.xml").string();
  EXPECT_EQ(farm.Handling()->DeleteListedItems(farm.place.FtpPath(), automation::VariantArray{name},
                                               FolderKind::Chat),
            automation::Variant(0));
  EXPECT_THAT(farm.place.Contents(), ElementsAre("Archives/", "Archives/precious.xml", "CHAT/", "CHAT/x"));
  ASSERT_EQ(farm.runtime.log->size(), 1u);
  EXPECT_THAT(farm.runtime.log->front().message, HasSubstr("it holds a control character"));
}

TEST(FtpFailureTest, AServerWhoseCertificateIsSignedByAStrangerGetsNoPassword) {
  for (const auto& [server, stranger] : {std::pair{"ftpes", "ftps"}, {"ftps", "ftpes"}}) {
    Farm farm(server, {}, SharedPlace(stranger).CertificateFile());
    farm.place.AddFile("CHAT/x");
    const automation::Error error = Failure(farm, farm.place.FtpPath());
    EXPECT_EQ(error.Number(), kCurlNumbers + 60) << server;
    EXPECT_THAT(error.Description(), HasSubstr("certificate"));
    EXPECT_THAT(farm.place.Contents(), ElementsAre("CHAT/", "CHAT/x"));
  }
}

TEST(FtpFailureTest, AServerWithTheCertificateOfAnotherNameGetsNoPassword) {
  for (const char* server : {"ftpes", "ftps"}) {
    Farm farm(server);
    farm.place.AddFile("CHAT/x");
    const automation::Error error =
        Failure(farm, Replaced(farm.place.FtpPath(), "@127.0.0.1:", "@localhost:"));
    EXPECT_EQ(error.Number(), kCurlNumbers + 60) << server;
    EXPECT_THAT(farm.place.Contents(), ElementsAre("CHAT/", "CHAT/x"));
  }
}

TEST(FtpFailureTest, AServerThatOffersNoTlsIsNotSpokenToInPlainText) {
  Farm farm("vsftpd", {}, SharedPlace("ftpes").CertificateFile());
  farm.place.AddFile("CHAT/x");
  const automation::Error demanded = Failure(farm, Replaced(farm.place.FtpPath(), "ftp://", "ftpes://"));
  EXPECT_EQ(demanded.Number(), kCurlNumbers + 64);
  EXPECT_THAT(demanded.Description(), HasSubstr("Requested SSL level failed"));
  const automation::Error throughout = Failure(farm, Replaced(farm.place.FtpPath(), "ftp://", "ftps://"));
  EXPECT_EQ(throughout.Number(), kCurlNumbers + 35);
  EXPECT_THAT(farm.place.Contents(), ElementsAre("CHAT/", "CHAT/x"));
}

TEST(FtpFailureTest, AServerThatDemandsTlsIsNotEnteredWithoutIt) {
  Farm farm("ftpes");
  farm.place.AddFile("CHAT/x");
  const automation::Error error = Failure(farm, Replaced(farm.place.FtpPath(), "ftpes://", "ftp://"));
  EXPECT_EQ(error.Number(), kCurlNumbers + 67);
  EXPECT_THAT(farm.place.Contents(), ElementsAre("CHAT/", "CHAT/x"));
}

TEST(FtpFailureTest, AnEmptyPathIsAnError) {
  Farm farm("vsftpd");
  const automation::Error error = Failure(farm, "");
  EXPECT_EQ(error.Number(), 76);
  EXPECT_EQ(error.Description(), "The path of the shared folders is empty.");
}

}  // namespace
}  // namespace orvane_test
