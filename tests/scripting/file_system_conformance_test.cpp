// The contract of FileSystemObject, on the machine's file tree, on a layer over it and on the tree in memory.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "tests/scripting/file_system_machine.hpp"
#include "tests/support/error_number.hpp"
#include "tests/support/raised_error.hpp"
#include "tests/support/test_runtime.hpp"

namespace orvane_test {
namespace {

using automation::DateTime;
using Scripting::IOMode;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

struct MachineKind {
  std::string name;
  std::function<std::unique_ptr<FileSystemMachine>()> make;
};

class FileSystemConformanceTest : public testing::TestWithParam<MachineKind> {
 protected:
  std::string Full(std::string_view path) const { return machine_->Root() + "\\" + std::string(path); }

  std::vector<std::string> FileNames(std::string_view path) const {
    std::vector<std::string> names;
    for (const Scripting::FilePtr& file : files_->GetFolder(Full(path))->Files())
      names.push_back(file->Name());
    return names;
  }
  std::vector<std::string> FolderNames(std::string_view path) const {
    std::vector<std::string> names;
    for (const Scripting::FolderPtr& folder : files_->GetFolder(Full(path))->SubFolders()) {
      names.push_back(folder->Name());
    }
    return names;
  }

  TestRuntime runtime_;
  std::unique_ptr<FileSystemMachine> machine_ = GetParam().make();
  Scripting::FileSystemObjectPtr files_ = machine_->NewFileSystem();
};

INSTANTIATE_TEST_SUITE_P(Machines, FileSystemConformanceTest,
                         testing::Values(MachineKind{"Local", &NewLocalMachine},
                                         MachineKind{"Layered", &NewLayeredMachine},
                                         MachineKind{"Pending", &NewPendingMachine},
                                         MachineKind{"Memory", &NewMemoryMachine}),
                         [](const auto& machine) { return machine.param.name; });

// Existence
// ------------------------------------------------------------------------------------------------------

TEST_P(FileSystemConformanceTest, TellsFilesFromFolders) {
  machine_->AddFile("Data\\a.txt", "x");
  EXPECT_TRUE(files_->FileExists(Full("Data\\a.txt")));
  EXPECT_FALSE(files_->FolderExists(Full("Data\\a.txt")));
  EXPECT_TRUE(files_->FolderExists(Full("Data")));
  EXPECT_FALSE(files_->FileExists(Full("Data")));
  EXPECT_FALSE(files_->FileExists(Full("Data\\b.txt")));
  EXPECT_FALSE(files_->FolderExists(Full("Nothing\\here")));
}

TEST_P(FileSystemConformanceTest, TakesBothSeparatorsDoubledOnesAndOneAtTheEnd) {
  machine_->AddFile("Data\\HTML\\a.htm", "");
  EXPECT_TRUE(files_->FileExists(Full("Data/HTML\\a.htm")));
  EXPECT_TRUE(files_->FileExists(Full("\\Data\\\\HTML//a.htm")));
  EXPECT_TRUE(files_->FolderExists(Full("Data\\HTML\\")));
  EXPECT_TRUE(files_->FolderExists(Full("Data\\HTML/")));
}

TEST_P(FileSystemConformanceTest, TakesAPathThatEndsInASeparatorForNoFile) {
  machine_->AddFile("a.txt", "");
  EXPECT_FALSE(files_->FileExists(Full("a.txt\\")));
  EXPECT_EQ(ErrorNumberOf([&] { files_->GetFile(Full("a.txt\\")); }), 53);
  EXPECT_EQ(ErrorNumberOf([&] { files_->DeleteFile(Full("a.txt\\"), true); }), 53);
  EXPECT_TRUE(machine_->Exists("a.txt"));
}

TEST_P(FileSystemConformanceTest, AnswersFalseForAnEmptyPathAndRaisesOnItElsewhere) {
  EXPECT_FALSE(files_->FileExists(""));
  EXPECT_FALSE(files_->FolderExists(""));
  EXPECT_FALSE(files_->DriveExists(""));
  EXPECT_EQ(ErrorNumberOf([&] { files_->GetFile(""); }), 5);
  EXPECT_EQ(ErrorNumberOf([&] { files_->GetFolder(""); }), 5);
  EXPECT_EQ(ErrorNumberOf([&] { files_->CreateFolder(""); }), 5);
}

TEST_P(FileSystemConformanceTest, RefusesAPathWithAControlCharacterThatNamesNothing) {
  machine_->AddFile("a", "kept");
  machine_->AddFile("folder\\inside", "kept");
  struct Case {
    std::string character;
    std::string shown;
  };
  for (const auto& [character, shown] : {Case{std::string(1, '\0'), "\\x00"}, Case{"\n", "\\x0A"},
                                         Case{"\x1F", "\\x1F"}, Case{"\x7F", "\\x7F"}}) {
    SCOPED_TRACE(shown);
    for (const std::string& name : {"a" + character + "b", "folder" + character + "\\inside",
                                    "folder\\none\\" + character, "A" + character}) {
      const std::string path = Full(name);
      EXPECT_FALSE(files_->FileExists(path));
      EXPECT_FALSE(files_->FolderExists(path));
      EXPECT_EQ(ErrorNumberOf([&] { files_->GetFile(path); }), 52);
      EXPECT_EQ(ErrorNumberOf([&] { files_->GetFolder(path); }), 52);
      EXPECT_EQ(ErrorNumberOf([&] { files_->CreateFolder(path); }), 52);
      EXPECT_EQ(ErrorNumberOf([&] { files_->CreateTextFile(path, true); }), 52);
      EXPECT_EQ(ErrorNumberOf([&] { files_->OpenTextFile(path, IOMode::ForAppending, true); }), 52);
      EXPECT_EQ(ErrorNumberOf([&] { files_->DeleteFile(path, true); }), 52);
      EXPECT_EQ(ErrorNumberOf([&] { files_->DeleteFolder(path, true); }), 52);
    }
    const std::string path = Full("folder" + character);
    EXPECT_EQ(ErrorOf([&] { files_->DeleteFolder(path, true); }).Description(),
              "Bad file name or number: " + Full("folder" + shown));
  }
  EXPECT_EQ(machine_->Bytes("a"), "kept");
  EXPECT_EQ(machine_->Bytes("folder\\inside"), "kept");
  EXPECT_THAT(FileNames("."), ElementsAre("a"));
  EXPECT_THAT(FolderNames("."), Not(Contains(testing::HasSubstr("\n"))));
}

// Names without regard to case
// -----------------------------------------------------------------------------------

TEST_P(FileSystemConformanceTest, FindsEveryPartOfAPathWithoutRegardToCase) {
  machine_->AddFile("Data\\CHAT\\Session.TXT", "hello");
  EXPECT_TRUE(files_->FileExists(Full("data\\chat\\session.txt")));
  EXPECT_EQ(files_->GetFile(Full("DATA\\Chat\\SESSION.txt"))->Name(), "Session.TXT");
  EXPECT_EQ(files_->GetFolder(Full("data\\chat\\"))->Name(), "CHAT");
}

TEST_P(FileSystemConformanceTest, PrefersTheExactNameToOneOfOtherCase) {
  machine_->AddFile("CHAT\\upper", "");
  machine_->AddFile("chat\\lower", "");
  EXPECT_THAT(FileNames("CHAT"), ElementsAre("upper"));
  EXPECT_THAT(FileNames("chat"), ElementsAre("lower"));
  EXPECT_THAT(FileNames("Chat"), ElementsAre("upper")) << "of several the first in byte order";
}

TEST_P(FileSystemConformanceTest, DeletesAndOverwritesTheFileOfOtherCase) {
  machine_->AddFile("One.txt", "old");
  files_->CreateTextFile(Full("ONE.TXT"), true)->Close();
  EXPECT_EQ(machine_->Bytes("One.txt"), "");
  EXPECT_FALSE(machine_->Exists("ONE.TXT"));
  files_->DeleteFile(Full("one.TXT"), false);
  EXPECT_FALSE(machine_->Exists("One.txt"));
}

TEST_P(FileSystemConformanceTest, KeepsTheCaseOfNewNamesInsideAFolderOfOtherCase) {
  machine_->AddFolder("DATA");
  files_->CreateFolder(Full("data\\Archives"));
  EXPECT_TRUE(machine_->Exists("DATA\\Archives"));
  EXPECT_EQ(ErrorNumberOf([&] { files_->CreateFolder(Full("Data\\ARCHIVES")); }), 58);
}

// Drives
// ---------------------------------------------------------------------------------------------------------

TEST_P(FileSystemConformanceTest, KnowsItsDrivesInEverySpelling) {
  for (const char* drive : {"X", "x", "X:", "x:", "X:\\", "X:/any/where", "X:\\no such folder"}) {
    EXPECT_TRUE(files_->DriveExists(drive)) << drive;
  }
  for (const char* drive : {"Q", "Q:", "Q:\\Data", "suite", "1", ":", " "}) {
    EXPECT_FALSE(files_->DriveExists(drive)) << drive;
  }
}

TEST_P(FileSystemConformanceTest, TakesTheRootOfAnAbsolutePathForADrive) {
  EXPECT_TRUE(files_->DriveExists("/suite/home/Archives"));
  EXPECT_TRUE(files_->DriveExists("\\suite"));
  EXPECT_TRUE(files_->FolderExists("/"));
  EXPECT_TRUE(files_->FolderExists("\\"));
}

TEST_P(FileSystemConformanceTest, WorksOnADriveAsOnItsFolder) {
  machine_->AddFile("drive\\Data\\a.txt", "");
  EXPECT_TRUE(files_->FileExists("X:\\Data\\a.txt"));
  EXPECT_TRUE(files_->FileExists("x:/data/A.TXT"));
  EXPECT_TRUE(files_->FolderExists("X:"));
  EXPECT_TRUE(files_->FolderExists("X:/"));
  EXPECT_EQ(files_->GetFile("x:/data/A.TXT")->Path(), "X:\\Data\\a.txt");
  EXPECT_EQ(files_->GetFolder("X:\\")->Path(), "X:\\");
  files_->CreateFolder("X:\\Logs");
  EXPECT_TRUE(machine_->Exists("drive\\Logs"));
}

TEST_P(FileSystemConformanceTest, NeverLeavesADriveUpwards) {
  machine_->AddFile("secret.txt", "");
  machine_->AddFile("drive\\secret.txt", "");
  files_->DeleteFile("X:\\..\\..\\secret.txt", false);
  EXPECT_TRUE(machine_->Exists("secret.txt"));
  EXPECT_FALSE(machine_->Exists("drive\\secret.txt"));
}

TEST_P(FileSystemConformanceTest, FindsNothingOnAnUnknownDrive) {
  EXPECT_FALSE(files_->FolderExists("Q:\\"));
  EXPECT_FALSE(files_->FileExists("Q:\\a.txt"));
  EXPECT_EQ(ErrorNumberOf([&] { files_->GetFile("Q:\\a.txt"); }), 53);
  EXPECT_EQ(ErrorNumberOf([&] { files_->GetFolder("Q:\\a"); }), 76);
  EXPECT_EQ(ErrorNumberOf([&] { files_->CreateFolder("Q:\\a"); }), 76);
  EXPECT_EQ(ErrorNumberOf([&] { files_->CreateTextFile("Q:\\a.txt", true); }), 76);
}

// Listings
// -------------------------------------------------------------------------------------------------------

TEST_P(FileSystemConformanceTest, ListsDirectChildrenInOrderOfName) {
  for (const char* path : {"f\\b.txt", "f\\a.txt", "f\\Z", "f\\sub\\inner.txt", "f\\other\\x"}) {
    machine_->AddFile(path, "");
  }
  EXPECT_THAT(FileNames("f"), ElementsAre("Z", "a.txt", "b.txt"));
  EXPECT_THAT(FolderNames("f"), ElementsAre("other", "sub"));
  EXPECT_EQ(ErrorNumberOf([&] { files_->GetFolder(Full("g")); }), 76);
  EXPECT_EQ(ErrorNumberOf([&] { files_->GetFolder(Full("f\\Z")); }), 76);
}

TEST_P(FileSystemConformanceTest, AsksTheDiskAtEachListing) {
  machine_->AddFolder("f");
  const Scripting::FolderPtr folder = files_->GetFolder(Full("f"));
  EXPECT_THAT(folder->Files(), IsEmpty());
  machine_->AddFile("f\\new", "");
  EXPECT_EQ(folder->Files().size(), 1U);
  files_->DeleteFolder(Full("f"), false);
  EXPECT_EQ(ErrorNumberOf([&] { folder->Files(); }), 76);
}

TEST_P(FileSystemConformanceTest, TellsWhatItKnowsAboutAFile) {
  const DateTime accessed =
      DateTime::FromParts({.year = 2004, .month = 3, .day = 5, .hour = 7, .minute = 4, .second = 9});
  machine_->AddFile("Data\\a.txt", "12345");
  machine_->SetAccessed("Data\\a.txt", accessed);
  const Scripting::FilePtr file = files_->GetFile(Full("data\\A.TXT"));
  EXPECT_EQ(file->Name(), "a.txt");
  EXPECT_EQ(file->Path(), Full("Data\\a.txt"));
  EXPECT_EQ(file->Size(), 5);
  EXPECT_EQ(file->DateLastAccessed(), accessed);
}

TEST_P(FileSystemConformanceTest, TellsAFoldersLastAccessBeforeListingIt) {
  const DateTime accessed =
      DateTime::FromParts({.year = 2003, .month = 12, .day = 31, .hour = 23, .minute = 59});
  machine_->AddFolder("SRATTACHMENTS\\17Q");
  machine_->SetAccessed("SRATTACHMENTS\\17Q", accessed);
  const Scripting::FolderPtr folder = files_->GetFolder(Full("SRATTACHMENTS"))->SubFolders().at(0);
  EXPECT_EQ(folder->DateLastAccessed(), accessed);
  EXPECT_EQ(folder->Path(), Full("SRATTACHMENTS\\17Q"));
}

TEST_P(FileSystemConformanceTest, RaisesWhenAFileIsGoneSinceTheListing) {
  machine_->AddFile("f\\a", "");
  const Scripting::FilePtr file = files_->GetFolder(Full("f"))->Files()[0];
  files_->DeleteFile(Full("f\\a"), false);
  EXPECT_EQ(file->Name(), "a");
  EXPECT_EQ(ErrorNumberOf([&] { file->DateLastAccessed(); }), 53);
  EXPECT_EQ(ErrorNumberOf([&] { file->Size(); }), 53);
  EXPECT_EQ(ErrorNumberOf([&] { file->OpenAsTextStream(IOMode::ForReading); }), 53);
}

TEST_P(FileSystemConformanceTest, AListOfFilesStaysAsItWasMade) {
  machine_->AddFile("f\\a", "");
  machine_->AddFile("f\\b", "");
  const Scripting::FileList files = files_->GetFolder(Full("f"))->Files();  // all that is kept of the folder
  files_->DeleteFile(Full("f\\a"), false);
  machine_->AddFile("f\\c", "");
  std::vector<std::string> names;
  for (const Scripting::FilePtr& file : files) names.push_back(file->Name());
  EXPECT_THAT(names, ElementsAre("a", "b"));
  EXPECT_EQ(files[1]->Path(), Full("f\\b"));
}

// Folders
// --------------------------------------------------------------------------------------------------------

TEST_P(FileSystemConformanceTest, CreatesOneLevelOnly) {
  EXPECT_EQ(files_->CreateFolder(Full("OrvLog"))->Path(), Full("OrvLog"));
  EXPECT_TRUE(machine_->Exists("OrvLog"));
  EXPECT_EQ(ErrorNumberOf([&] { files_->CreateFolder(Full("a\\b")); }), 76);
  EXPECT_EQ(ErrorNumberOf([&] { files_->CreateFolder(Full("OrvLog")); }), 58);
  files_->CreateFolder(Full("Other\\"));
  EXPECT_TRUE(machine_->Exists("Other"));
}

TEST_P(FileSystemConformanceTest, CreatesNoFolderInPlaceOfAFileOrInsideOne) {
  machine_->AddFile("a", "");
  EXPECT_EQ(ErrorNumberOf([&] { files_->CreateFolder(Full("a")); }), 58);
  EXPECT_EQ(ErrorNumberOf([&] { files_->CreateFolder(Full("a\\b")); }), 76);
}

TEST_P(FileSystemConformanceTest, DeletesAFolderWithEverythingInside) {
  for (const char* path : {"17Q\\a.txt", "17Q\\sub\\deep\\b.txt", "18Q\\c.txt"}) machine_->AddFile(path, "x");
  machine_->AddFolder("17Q\\empty");
  files_->DeleteFolder(Full("17Q"), false);
  EXPECT_FALSE(machine_->Exists("17Q"));
  EXPECT_TRUE(machine_->Exists("18Q\\c.txt"));
  EXPECT_EQ(ErrorNumberOf([&] { files_->DeleteFolder(Full("17Q"), false); }), 76);
  EXPECT_EQ(ErrorNumberOf([&] { files_->DeleteFolder(Full("18Q\\c.txt"), true); }), 76);
  EXPECT_TRUE(machine_->Exists("18Q\\c.txt"));
}

TEST_P(FileSystemConformanceTest, StopsDeletingAFolderAtAReadOnlyFile) {
  for (const char* path : {"f\\a", "f\\b", "f\\c"}) machine_->AddFile(path, "");
  machine_->SetReadOnly("f\\b");
  EXPECT_EQ(ErrorNumberOf([&] { files_->DeleteFolder(Full("f"), false); }), 70);
  EXPECT_FALSE(machine_->Exists("f\\a"));
  EXPECT_TRUE(machine_->Exists("f\\b"));
  EXPECT_TRUE(machine_->Exists("f\\c"));
  files_->DeleteFolder(Full("f"), true);
  EXPECT_FALSE(machine_->Exists("f"));
}

TEST_P(FileSystemConformanceTest, KeepsAReadOnlyFolderUnlessForced) {
  machine_->AddFile("f\\inner\\a", "");
  machine_->SetReadOnly("f\\inner");
  EXPECT_EQ(ErrorNumberOf([&] { files_->DeleteFolder(Full("f\\inner"), false); }), 70);
  EXPECT_EQ(ErrorNumberOf([&] { files_->DeleteFolder(Full("f"), false); }), 70);
  EXPECT_TRUE(machine_->Exists("f\\inner\\a"));
  files_->DeleteFolder(Full("f"), true);
  EXPECT_FALSE(machine_->Exists("f"));
}

// Deleting files
// -------------------------------------------------------------------------------------------------

TEST_P(FileSystemConformanceTest, DeletesOneFile) {
  machine_->AddFile("a", "");
  machine_->AddFile("b", "");
  files_->DeleteFile(Full("a"), false);
  EXPECT_FALSE(machine_->Exists("a"));
  EXPECT_TRUE(machine_->Exists("b"));
  EXPECT_EQ(ErrorNumberOf([&] { files_->DeleteFile(Full("a"), false); }), 53);
  EXPECT_EQ(ErrorNumberOf([&] { files_->DeleteFile(Full("no\\a"), false); }), 53);
}

TEST_P(FileSystemConformanceTest, DeletesNoFolderAsAFile) {
  machine_->AddFolder("HTML");
  EXPECT_EQ(ErrorNumberOf([&] { files_->DeleteFile(Full("HTML"), true); }), 53);
  EXPECT_EQ(ErrorNumberOf([&] { files_->DeleteFile(Full("HTML\\"), true); }), 53);
  EXPECT_TRUE(machine_->Exists("HTML"));
}

TEST_P(FileSystemConformanceTest, RefusesAReadOnlyFileUnlessForced) {
  machine_->AddFile("a", "");
  machine_->SetReadOnly("a");
  EXPECT_EQ(ErrorNumberOf([&] { files_->DeleteFile(Full("a"), false); }), 70);
  EXPECT_TRUE(machine_->Exists("a"));
  files_->DeleteFile(Full("a"), true);
  EXPECT_FALSE(machine_->Exists("a"));
}

TEST_P(FileSystemConformanceTest, TakesWildcardsInNamesLiterally) {
  for (const char* path : {"f\\*", "f\\a", "f\\?", "f\\[ab]"}) machine_->AddFile(path, "");
  files_->DeleteFile(Full("f\\*"), false);
  EXPECT_THAT(FileNames("f"), ElementsAre("?", "[ab]", "a"));
  files_->DeleteFile(Full("f\\?"), false);
  files_->DeleteFile(Full("f\\[ab]"), false);
  EXPECT_THAT(FileNames("f"), ElementsAre("a"));
  EXPECT_EQ(ErrorNumberOf([&] { files_->DeleteFile(Full("f\\*"), false); }), 53);
}

TEST_P(FileSystemConformanceTest, DeletesFilesOfEveryNameThatAListingGives) {
  const std::string longest(255, 'n');
  for (const std::string& name :
       {std::string("it's"), std::string("a b "), std::string(" a"), std::string("gr\xC3\xBC\xC3\x9F"),
        std::string("a:b"), std::string("x:y.txt"), std::string("..."), std::string("\xE6\x97\xA5"),
        longest}) {
    machine_->AddFile("f\\" + name, "");
  }
  const std::vector<std::string> names = FileNames("f");
  EXPECT_EQ(names.size(), 9U);
  for (const std::string& name : names) files_->DeleteFile(Full("f\\" + name), false);
  EXPECT_THAT(FileNames("f"), IsEmpty());
}

TEST_P(FileSystemConformanceTest, WorksOnItemsWhoseFoundNamesHoldControlCharacters) {
  machine_->AddFile("f\\a\nb", "");
  machine_->AddFile("f\\\x01", "");
  machine_->AddFile("f\\d\ne\\g", "");
  machine_->AddFolder("f\\d\ne\\h\x7F");
  EXPECT_TRUE(files_->FileExists(Full("F\\a\nb")));
  EXPECT_FALSE(files_->FileExists(Full("f\\A\nb"))) << "exactly the name that was found";
  for (const std::string& name : FileNames("f")) files_->DeleteFile(Full("F\\" + name), false);
  EXPECT_THAT(FileNames("f"), IsEmpty());
  ASSERT_THAT(FolderNames("f"), ElementsAre("d\ne"));
  EXPECT_EQ(files_->GetFile(Full("f\\d\ne\\G"))->Name(), "g");
  EXPECT_EQ(ErrorNumberOf([&] { files_->GetFile(Full("f\\d\ne\\none")); }), 53);
  files_->CreateTextFile(Full("f\\d\ne\\new"), false)->Close();
  EXPECT_TRUE(machine_->Exists("f\\d\ne\\new"));
  files_->DeleteFolder(Full("f\\d\ne"), false);
  EXPECT_THAT(FolderNames("f"), IsEmpty());
}

TEST_P(FileSystemConformanceTest, KeepsTheBlankAtTheEndOfAName) {
  machine_->AddFile("Data \\a", "");
  EXPECT_TRUE(files_->FolderExists(Full("Data \\")));
  EXPECT_FALSE(files_->FolderExists(Full("Data\\")));
}

// Text files
// -----------------------------------------------------------------------------------------------------

TEST_P(FileSystemConformanceTest, CreatesATextFileAndOverwritesItOnlyWhenTold) {
  Scripting::TextStreamPtr stream = files_->CreateTextFile(Full("a.txt"), false);
  stream->WriteLine("one");
  stream->Write("two");
  stream->Close();
  EXPECT_EQ(machine_->Bytes("a.txt"), "one\r\ntwo");
  EXPECT_EQ(ErrorNumberOf([&] { files_->CreateTextFile(Full("a.txt"), false); }), 58);
  EXPECT_EQ(machine_->Bytes("a.txt"), "one\r\ntwo");
  files_->CreateTextFile(Full("a.txt"), true)->Close();
  EXPECT_EQ(machine_->Bytes("a.txt"), "");
  EXPECT_EQ(ErrorNumberOf([&] { files_->CreateTextFile(Full("no\\a.txt"), true); }), 76);
}

TEST_P(FileSystemConformanceTest, AppendsToAFileOrCreatesIt) {
  for (const char* line : {"first", "second"}) {
    const Scripting::TextStreamPtr stream = files_->OpenTextFile(Full("log.txt"), IOMode::ForAppending, true);
    stream->WriteLine(line);
    stream->Close();
  }
  EXPECT_EQ(machine_->Bytes("log.txt"), "first\r\nsecond\r\n");
  EXPECT_EQ(ErrorNumberOf([&] { files_->OpenTextFile(Full("none.txt"), IOMode::ForAppending, false); }), 53);
  EXPECT_FALSE(machine_->Exists("none.txt"));
  EXPECT_EQ(ErrorNumberOf([&] { files_->OpenTextFile(Full("no\\log.txt"), IOMode::ForAppending, true); }),
            76);
}

TEST_P(FileSystemConformanceTest, AppendsThroughAFileObject) {
  machine_->AddFile("log.txt", "old\r\n");
  const Scripting::TextStreamPtr stream =
      files_->GetFile(Full("LOG.txt"))->OpenAsTextStream(IOMode::ForAppending);
  stream->Write("new\r\n");
  stream->Close();
  EXPECT_EQ(machine_->Bytes("log.txt"), "old\r\nnew\r\n");
  EXPECT_EQ(ErrorNumberOf([&] { files_->GetFile(Full("missing.txt")); }), 53);
}

TEST_P(FileSystemConformanceTest, EmptiesAFileOpenedForWriting) {
  machine_->AddFile("a.txt", "a long old text");
  const Scripting::TextStreamPtr stream = files_->OpenTextFile(Full("a.txt"), IOMode::ForWriting, false);
  stream->Write("new");
  stream->Close();
  EXPECT_EQ(machine_->Bytes("a.txt"), "new");
}

TEST_P(FileSystemConformanceTest, ReadsAWholeFileOnceAndRaisesAtItsEnd) {
  machine_->AddFile("a.txt", "one\r\ntwo");
  const Scripting::TextStreamPtr stream = files_->OpenTextFile(Full("a.txt"), IOMode::ForReading, false);
  EXPECT_EQ(stream->ReadAll(), "one\r\ntwo");
  EXPECT_EQ(ErrorNumberOf([&] { stream->ReadAll(); }), 62);
  machine_->AddFile("empty.txt", "");
  const Scripting::TextStreamPtr empty = files_->OpenTextFile(Full("empty.txt"), IOMode::ForReading, false);
  EXPECT_EQ(ErrorNumberOf([&] { empty->ReadAll(); }), 62);
}

TEST_P(FileSystemConformanceTest, WritesInTheCodePageOfTheLocale) {
  const Scripting::TextStreamPtr stream = files_->CreateTextFile(Full("a.txt"), true);
  stream->WriteLine("M\xC3\xBCller");  // the test locale's page is ASCII
  stream->Close();
  EXPECT_EQ(machine_->Bytes("a.txt"), "M?ller\r\n");
}

TEST_P(FileSystemConformanceTest, RefusesTheWrongDirectionAndAClosedStream) {
  machine_->AddFile("a.txt", "text");
  const Scripting::TextStreamPtr reader = files_->OpenTextFile(Full("a.txt"), IOMode::ForReading, false);
  EXPECT_EQ(ErrorNumberOf([&] { reader->Write("x"); }), 54);
  EXPECT_EQ(ErrorNumberOf([&] { reader->WriteLine("x"); }), 54);
  const Scripting::TextStreamPtr writer = files_->OpenTextFile(Full("a.txt"), IOMode::ForAppending, false);
  EXPECT_EQ(ErrorNumberOf([&] { writer->ReadAll(); }), 54);
  EXPECT_EQ(ErrorNumberOf([&] { files_->CreateTextFile(Full("b.txt"), true)->ReadAll(); }), 54);
  writer->Close();
  writer->Close();
  EXPECT_EQ(ErrorNumberOf([&] { writer->Write("x"); }), 91);
  EXPECT_EQ(machine_->Bytes("a.txt"), "text");
}

TEST_P(FileSystemConformanceTest, WritesWhatIsLeftWhenAStreamIsDropped) {
  files_->OpenTextFile(Full("a.txt"), IOMode::ForAppending, true)->Write("left over");
  EXPECT_EQ(machine_->Bytes("a.txt"), "left over");
}

TEST_P(FileSystemConformanceTest, ShowsANewFileUnderItsNameOnceItIsClosed) {
  const Scripting::TextStreamPtr stream = files_->CreateTextFile(Full("a.txt"), true);
  stream->Write(std::string(200'000, 'x'));
  EXPECT_FALSE(files_->FileExists(Full("a.txt")));
  stream->Close();
  EXPECT_EQ(machine_->Bytes("a.txt"), std::string(200'000, 'x'));
  EXPECT_EQ(ErrorNumberOf([&] { stream->Write("x"); }), 91);
  stream->Close();
  EXPECT_THAT(FileNames(""), ElementsAre("a.txt"));
}

TEST_P(FileSystemConformanceTest, KeepsAnOverwrittenFileUntilTheNewOneIsClosed) {
  machine_->AddFile("a.txt", "old");
  const Scripting::TextStreamPtr stream = files_->CreateTextFile(Full("A.TXT"), true);
  stream->Write(std::string(200'000, 'x'));
  EXPECT_EQ(machine_->Bytes("a.txt"), "old");
  stream->Close();
  EXPECT_EQ(machine_->Bytes("a.txt"), std::string(200'000, 'x'));
  EXPECT_THAT(FileNames(""), ElementsAre("a.txt"));
}

TEST_P(FileSystemConformanceTest, LeavesNothingOfANewFileThatIsNotClosed) {
  machine_->AddFile("old.txt", "old");
  files_->CreateTextFile(Full("old.txt"), true)->Write("half");
  files_->CreateTextFile(Full("new.txt"), false)->Write("half");
  EXPECT_THAT(FileNames(""), ElementsAre("old.txt"));
  EXPECT_EQ(machine_->Bytes("old.txt"), "old");
}

TEST_P(FileSystemConformanceTest, OverwritesNoFileThatCameAfterTheCall) {
  for (const bool overwrite : {false, true}) {
    const std::string name = overwrite ? "b.txt" : "a.txt";
    const Scripting::TextStreamPtr stream = files_->CreateTextFile(Full(name), overwrite);
    stream->Write("mine");
    machine_->AddFile(name, "another's");
    EXPECT_EQ(ErrorNumberOf([&] { stream->Close(); }), 58);
    EXPECT_EQ(machine_->Bytes(name), "another's");
    EXPECT_THAT(FileNames(""), ElementsAre(name));
    files_->DeleteFile(Full(name), true);
  }
}

TEST_P(FileSystemConformanceTest, MakesAnOverwrittenFileAnewThatWasDeletedMeanwhile) {
  machine_->AddFile("a.txt", "old");
  const Scripting::TextStreamPtr stream = files_->CreateTextFile(Full("a.txt"), true);
  stream->Write("new");
  files_->DeleteFile(Full("a.txt"), true);
  stream->Close();
  EXPECT_EQ(machine_->Bytes("a.txt"), "new");
}

TEST_P(FileSystemConformanceTest, MakesNoFileInAFolderThatWentMeanwhile) {
  machine_->AddFolder("f");
  const Scripting::TextStreamPtr stream = files_->CreateTextFile(Full("f\\a.txt"), true);
  files_->DeleteFolder(Full("f"), true);
  EXPECT_EQ(ErrorNumberOf([&] { stream->Close(); }), 76);
  EXPECT_FALSE(machine_->Exists("f"));
}

TEST_P(FileSystemConformanceTest, MakesANewFileWithTheLongestName) {
  const std::string longest(255, 'n');
  files_->CreateTextFile(Full(longest), false)->Close();
  EXPECT_THAT(FileNames(""), ElementsAre(longest));
}

TEST_P(FileSystemConformanceTest, RefusesToWriteAReadOnlyFile) {
  machine_->AddFile("a.txt", "kept");
  machine_->SetReadOnly("a.txt");
  EXPECT_EQ(ErrorNumberOf([&] { files_->CreateTextFile(Full("a.txt"), true); }), 70);
  EXPECT_EQ(ErrorNumberOf([&] { files_->OpenTextFile(Full("a.txt"), IOMode::ForAppending, true); }), 70);
  EXPECT_EQ(ErrorNumberOf([&] { files_->GetFile(Full("a.txt"))->OpenAsTextStream(IOMode::ForWriting); }), 70);
  EXPECT_EQ(machine_->Bytes("a.txt"), "kept");
  EXPECT_EQ(files_->OpenTextFile(Full("a.txt"), IOMode::ForReading, false)->ReadAll(), "kept");
}

TEST_P(FileSystemConformanceTest, OpensNoFolderAsATextFile) {
  machine_->AddFolder("f");
  EXPECT_EQ(ErrorNumberOf([&] { files_->OpenTextFile(Full("f"), IOMode::ForAppending, true); }), 70);
  EXPECT_EQ(ErrorNumberOf([&] { files_->CreateTextFile(Full("f"), true); }), 70);
  EXPECT_EQ(ErrorNumberOf([&] { files_->CreateTextFile(Full("f"), false); }), 58);
}

TEST_P(FileSystemConformanceTest, RefusesANameThatIsTooLongAsABadName) {
  const std::string path = Full(std::string(256, 'n'));
  EXPECT_FALSE(files_->FileExists(path));
  EXPECT_EQ(ErrorNumberOf([&] { files_->GetFile(path); }), 53);
  EXPECT_EQ(ErrorNumberOf([&] { files_->DeleteFile(path, false); }), 53);
  EXPECT_EQ(ErrorNumberOf([&] { files_->CreateTextFile(path, true); }), 52);
  EXPECT_EQ(ErrorNumberOf([&] { files_->CreateFolder(path); }), 52);
}

TEST_P(FileSystemConformanceTest, NeedsALocaleToWriteText) {
  runtime_.runtime.locale = nullptr;
  machine_->AddFile("a.txt", "kept");
  EXPECT_EQ(ErrorNumberOf([&] { files_->CreateTextFile(Full("a.txt"), true); }), 91);
  EXPECT_EQ(machine_->Bytes("a.txt"), "kept");
}

}  // namespace
}  // namespace orvane_test
