#include "suite/file_handling/ftp_listing.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>

namespace OrvCommonMTS {

static bool operator==(const ListedItem& left, const ListedItem& right) {
  return left.name == right.name && left.kind == right.kind && left.modified == right.modified;
}

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

ListedItem Item(std::string name, ListedKind kind) {
  return {std::move(name), kind, std::nullopt};
}

TEST(FtpListingTest, ReadsTheListingOfAUnixServer) {
  const auto items = ParseList(
      "total 20\r\n"
      "drwxr-xr-x    3 65534    65534        4096 Nov 21 00:40 .\r\n"
      "drwxr-xr-x    3 65534    65534        4096 Nov 21 00:40 ..\r\n"
      "-rw-r--r--    1 65534    65534           2 Nov 21 00:40 .hid\r\n"
      "-rw-r--r--+   1 ftp      ftp    1234567890 Jan  1  2024 two  blanks.txt\r\n"
      "lrwxrwxrwx    1 65534    65534          15 Nov 21 00:40 lnk -> ../../../secret\r\n"
      "drwxr-xr-x    2 65534    65534        4096 Nov 21 00:40 sub\r\n"
      "prw-r--r--    1 65534    65534           0 Nov 21 00:40 pipe\r\n");
  ASSERT_TRUE(items);
  EXPECT_THAT(*items, ElementsAre(Item(".hid", ListedKind::File), Item("two  blanks.txt", ListedKind::File),
                                  Item("lnk", ListedKind::Link), Item("sub", ListedKind::Folder),
                                  Item("pipe", ListedKind::Other)));
}

TEST(FtpListingTest, KeepsBlanksThatBelongToTheName) {
  const auto items =
      ParseList("-rw-r--r-- 1 u g 2 Nov 21 00:40   leading\n-rw-r--r-- 1 u g 2 Nov 21 00:40 end \n");
  ASSERT_TRUE(items);
  EXPECT_THAT(*items, ElementsAre(Item("  leading", ListedKind::File), Item("end ", ListedKind::File)));
}

TEST(FtpListingTest, ANameThatLooksLikeADateIsKeptWhole) {
  const auto items = ParseList("-rw-r--r-- 1 May Dec 2 Nov 21 00:40 12 Jan 5 10:00 x\n");
  ASSERT_TRUE(items);
  EXPECT_THAT(*items, ElementsAre(Item("12 Jan 5 10:00 x", ListedKind::File)));
}

TEST(FtpListingTest, UnderstandsListingsWithoutAGroupAndWithIsoDates) {
  const auto items = ParseList(
      "-rw-r--r-- 1 owner 2 Nov 21 00:40 no group\n"
      "-rw-r--r-- 1 owner group 2 2026-11-21 00:40 iso\n");
  ASSERT_TRUE(items);
  EXPECT_THAT(*items, ElementsAre(Item("no group", ListedKind::File), Item("iso", ListedKind::File)));
}

TEST(FtpListingTest, ReadsTheListingOfAWindowsServer) {
  const auto items = ParseList(
      "11-21-26  12:30AM       <DIR>          My Folder\r\n"
      "11-21-2026  09:05PM               1234 a file.txt\r\n"
      "11-21-26  12:30AM       <SYMLINKD>     link [C:\\secret]\r\n");
  ASSERT_TRUE(items);
  EXPECT_THAT(*items, ElementsAre(Item("My Folder", ListedKind::Folder), Item("a file.txt", ListedKind::File),
                                  Item("link", ListedKind::Link)));
}

TEST(FtpListingTest, AnEmptyFolderHasNoItems) {
  ASSERT_TRUE(ParseList(""));
  EXPECT_THAT(*ParseList(""), IsEmpty());
  EXPECT_THAT(*ParseList("total 0\r\n"), IsEmpty());
  EXPECT_THAT(*ParseMachineList(""), IsEmpty());
}

TEST(FtpListingTest, ALineThatIsNotUnderstoodSpoilsTheListing) {
  EXPECT_FALSE(ParseList("-rw-r--r-- 1 u g 2 Nov 21 00:40 fine\nsomething else\n"));
  EXPECT_FALSE(ParseList("-rw-r--r-- 1 u g 2 Nov 21 00:40\n"));
  EXPECT_FALSE(ParseList("-rw-r--r-- 1 u g 2 21 Nov 00:40 day first\n"));
  EXPECT_FALSE(ParseList("11-21-26  12:30AM  <ODD>  x\n"));
  EXPECT_FALSE(ParseMachineList("no facts\n"));
  EXPECT_FALSE(ParseMachineList("type=file\n"));
  EXPECT_FALSE(ParseMachineList("size=3; x\n"));
}

TEST(FtpListingTest, ReadsAMachineListing) {
  const auto items = ParseMachineList(
      "type=cdir;modify=20261121004000; .\r\n"
      "type=pdir;modify=20261121004000; ..\r\n"
      "modify=20261121004001;perm=r;size=3;type=file;unique=1; a  b.txt\r\n"
      "Type=dir;Modify=20261121004000.123; sub\r\n"
      "type=OS.unix=slink:/secret; lnk\r\n"
      "type=file; undated\r\n");
  ASSERT_TRUE(items);
  using namespace std::chrono;
  const sys_seconds time = sys_days{year{2026} / 11 / 21} + minutes{40};
  EXPECT_THAT(*items, ElementsAre(ListedItem{"a  b.txt", ListedKind::File, time + seconds{1}},
                                  ListedItem{"sub", ListedKind::Folder, time}, Item("lnk", ListedKind::Link),
                                  Item("undated", ListedKind::File)));
}

TEST(FtpListingTest, ReadsTimesAndRefusesWhatIsNone) {
  EXPECT_EQ(ParseFtpTime("19700101000001"), std::chrono::sys_seconds(std::chrono::seconds(1)));
  EXPECT_EQ(ParseFtpTime("19700101000001.5"), std::chrono::sys_seconds(std::chrono::seconds(1)));
  for (const char* text : {"", "1970010100000", "197001010000011", "19701301000000", "19700230000000",
                           "19700101240000", "19700101006000", "1970-1-1 00:00", "abcdefghijklmn"}) {
    EXPECT_FALSE(ParseFtpTime(text)) << text;
  }
}

TEST(FtpListingTest, SurvivesListingsThatWereTamperedWith) {
  const std::string good =
      "-rw-r--r--    1 65534    65534           2 Nov 21 00:40 a.txt\r\n"
      "lrwxrwxrwx    1 65534    65534          15 Nov 21 00:40 l -> m\r\n"
      "11-21-26  12:30AM       <SYMLINKD>     link [C:\\x]\r\n"
      "modify=20261121004001;type=file; b\r\n";
  std::mt19937 random(20040726);
  for (int round = 0; round < 20000; ++round) {
    std::string text = good;
    const std::size_t changes = 1 + random() % 8;
    for (std::size_t i = 0; i < changes && !text.empty(); ++i) {
      const std::size_t at = random() % text.size();
      if (random() % 3 == 0) {
        text.erase(at, 1 + random() % 20);
      } else {
        text[at] = static_cast<char>(random());
      }
    }
    for (const auto& items : {ParseList(text), ParseMachineList(text)}) {
      if (!items) continue;
      for (const ListedItem& item : *items) {
        EXPECT_NE(item.name, ".");
        EXPECT_NE(item.name, "..");
        EXPECT_EQ(item.name.find('\n'), std::string::npos);
      }
    }
  }
}

}  // namespace
}  // namespace OrvCommonMTS
