#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

#include "tests/msxml2/xml_fixture.hpp"

using MSXML2::DOMDocumentPtr;
using orvane_test::ErrorOf;

namespace {

class XmlFileTest : public orvane_test::XmlTest {};

TEST_F(XmlFileTest, LoadsAndSavesByBackslashPathsWithoutRegardToCase) {
  WriteFile("Jdoe_SR.xml", "<a/>");
  const DOMDocumentPtr document = NewDocument();
  ASSERT_TRUE(document->load(Path("JDOE_sr.XML")));
  document->documentElement()->setText("x");
  document->save(Path("jdoe_sr.xml"));
  EXPECT_EQ(ReadFile("Jdoe_SR.xml"), "<a>x</a>\n");
  EXPECT_EQ(FilesInFolder(), 1u);
}

TEST_F(XmlFileTest, ADocumentThatWasNotChangedIsSavedByteForByte) {
  const std::string odd =
      "<?xml version='1.0' encoding='ISO-8859-1'?>\r\n<a  k='1' >\xE9\r\n<b></b></a>\r\n<!-- end -->";
  WriteFile("a.xml", odd);
  const DOMDocumentPtr document = NewDocument();
  ASSERT_TRUE(document->load(Path("a.xml")));
  EXPECT_EQ(document->selectNodes("//b")->length(), 1u);
  EXPECT_EQ(document->documentElement()->text(), "\xC3\xA9\n");
  document->save(Path("copy.xml"));
  EXPECT_EQ(ReadFile("copy.xml"), odd);
  document->documentElement()->setText("\xC3\xA9");
  document->save(Path("copy.xml"));
  EXPECT_EQ(ReadFile("copy.xml"),
            "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<a k=\"1\">\xC3\xA9</a>\n<!-- end -->\n");
}

TEST_F(XmlFileTest, EveryKindOfChangeIsSaved) {
  WriteFile("a.xml", "<a k='1'><b/><c/></a>");
  const auto changed = [&](auto&& change) {
    const DOMDocumentPtr document = NewDocument();
    EXPECT_TRUE(document->load(Path("a.xml")));
    change(document);
    document->save(Path("copy.xml"));
    return ReadFile("copy.xml");
  };
  EXPECT_EQ(changed([&](auto& d) { AddElement(d, d->documentElement(), "x", ""); }),
            "<a k=\"1\"><b/><c/><x/></a>\n");
  EXPECT_EQ(changed([&](auto& d) { AddAttribute(d, d->documentElement(), "l", "2"); }),
            "<a k=\"1\" l=\"2\"><b/><c/></a>\n");
  EXPECT_EQ(changed([&](auto& d) { d->selectSingleNode("//a/@k")->setText("3"); }),
            "<a k=\"3\"><b/><c/></a>\n");
  EXPECT_EQ(changed([&](auto& d) { d->selectSingleNode("//c")->appendChild(d->selectSingleNode("//b")); }),
            "<a k=\"1\"><c><b/></c></a>\n");
  EXPECT_EQ(changed([&](auto& d) {
              d->createNode(MSXML2::NodeType::Element, "b", "")->appendChild(d->selectSingleNode("//b"));
            }),
            "<a k=\"1\"><c/></a>\n");
  EXPECT_EQ(
      changed([&](auto& d) { AddElement(d, d->createNode(MSXML2::NodeType::Element, "e", ""), "f", "1"); }),
      "<a k='1'><b/><c/></a>")
      << "what was not appended changes nothing";
}

TEST_F(XmlFileTest, AMissingOrUnreadableFileIsNotLoaded) {
  const DOMDocumentPtr document = Parsed("<old/>");
  EXPECT_FALSE(document->load(Path("none.xml")));
  EXPECT_EQ(document->parseErrorReason(), Path("none.xml") + ": No such file or directory");
  EXPECT_EQ(document->documentElement(), nullptr);
  EXPECT_FALSE(document->load(folder_));
  EXPECT_FALSE(document->load(""));
}

TEST_F(XmlFileTest, SavingKeepsThePermissionsAndFollowsLinks) {
  WriteFile("real.xml", "<a/>");
  chmod(NativePath("real.xml").c_str(), 0640);
  ASSERT_EQ(symlink("real.xml", NativePath("link.xml").c_str()), 0);
  Parsed("<b/>")->save(Path("link.xml"));
  EXPECT_EQ(ReadFile("real.xml"), "<b/>\n");
  EXPECT_TRUE(std::filesystem::is_symlink(NativePath("link.xml")));
  struct stat status {};
  ASSERT_EQ(stat(NativePath("real.xml").c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 07777U, 0640U);
}

TEST_F(XmlFileTest, AReadOnlyFileIsRefusedAndStays) {
  WriteFile("a.xml", "<old/>");
  chmod(NativePath("a.xml").c_str(), 0444);
  const automation::Error error = ErrorOf([&] { Parsed("<new/>")->save(Path("a.xml")); });
  EXPECT_EQ(error.Number(), 70);
  EXPECT_EQ(error.Description(), "Permission denied");
  EXPECT_EQ(ReadFile("a.xml"), "<old/>");
  EXPECT_EQ(FilesInFolder(), 1u);
}

TEST_F(XmlFileTest, AMissingFolderIs76AndAFolderInTheWay70) {
  EXPECT_EQ(ErrorOf([&] { Parsed("<a/>")->save(Path("none\\a.xml")); }).Number(), 76);
  std::filesystem::create_directory(NativePath("folder"));
  EXPECT_EQ(ErrorOf([&] { Parsed("<a/>")->save(Path("folder")); }).Number(), 70);
}

TEST_F(XmlFileTest, ANameTooLongIsRefused) {
  EXPECT_EQ(ErrorOf([&] { Parsed("<a/>")->save(Path(std::string(300, 'x'))); }).Number(), 52);
  EXPECT_EQ(FilesInFolder(), 0u);
  const std::string longest(255, 'y');
  Parsed("<a/>")->save(Path(longest));
  EXPECT_EQ(ReadFile(longest), "<a/>\n");
  EXPECT_EQ(FilesInFolder(), 1u);
}

TEST_F(XmlFileTest, APathWithAControlCharacterIsNeitherLoadedNorSaved) {
  WriteFile("a", "<old/>");
  struct Case {
    std::string name;
    std::string shown;
  };
  for (const auto& [name, shown] : {Case{std::string("a\0b", 3), "a\\x00b"}, Case{"a\nb", "a\\x0Ab"}}) {
    const DOMDocumentPtr document = Parsed("<new/>");
    const automation::Error error = ErrorOf([&] { document->save(Path(name)); });
    EXPECT_EQ(error.Number(), 52);
    EXPECT_EQ(error.Description(), "Bad file name or number: " + Path(shown));
    EXPECT_FALSE(document->load(Path(name)));
    EXPECT_EQ(document->parseErrorReason(), Path(shown) + ": Bad file name or number: " + Path(shown));
  }
  EXPECT_EQ(ReadFile("a"), "<old/>");
  EXPECT_EQ(FilesInFolder(), 1u);
}

TEST_F(XmlFileTest, WhatAKilledProcessLeftBehindIsTakenOver) {
  WriteFile(".a.xml.saving", "<half");
  Parsed("<a/>")->save(Path("a.xml"));
  EXPECT_EQ(ReadFile("a.xml"), "<a/>\n");
  EXPECT_EQ(FilesInFolder(), 1u);
}

// Runs `action` in a child process and answers the number of the error that it raised; 0 for none.
template <class Prepare, class Action>
int ErrorInChild(Prepare&& prepare, Action&& action) {
  const pid_t child = fork();
  if (child == 0) {
    if (!prepare()) _exit(255);
    try {
      action();
    } catch (const automation::Error& error) {
      _exit(error.Number() & 0x7F);
    } catch (...) {
      _exit(254);
    }
    _exit(0);
  }
  int status = 0;
  waitpid(child, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

TEST_F(XmlFileTest, AFullDiskIs61AndLeavesTheOldFileAndNoLitter) {
  WriteFile("a.xml", "<old/>");
  const DOMDocumentPtr document = Parsed("<a/>");
  document->documentElement()->setText(std::string(1'000'000, 'x'));
  const auto limitFileSize = [] {
    std::signal(SIGXFSZ, SIG_IGN);
    const rlimit limit{300'000, 300'000};
    return setrlimit(RLIMIT_FSIZE, &limit) == 0;
  };
  EXPECT_EQ(ErrorInChild(limitFileSize, [&] { document->save(Path("a.xml")); }), 61);
  EXPECT_EQ(ReadFile("a.xml"), "<old/>");
  EXPECT_EQ(FilesInFolder(), 1u);
}

TEST_F(XmlFileTest, AFolderOrFileOfSomebodyElseIs70) {
  if (geteuid() != 0) GTEST_SKIP() << "needs the right to become another user";
  WriteFile("a.xml", "<old/>");
  chmod(folder_.c_str(), 0755);
  const auto becomeNobody = [] { return setgid(65534) == 0 && setuid(65534) == 0; };
  EXPECT_EQ(ErrorInChild(becomeNobody, [&] { Parsed("<a/>")->save(Path("a.xml")); }), 70);
  EXPECT_EQ(ErrorInChild(becomeNobody, [&] { Parsed("<a/>")->save(Path("b.xml")); }), 70);
  chmod(folder_.c_str(), 0777);
  EXPECT_EQ(ErrorInChild(becomeNobody, [&] { Parsed("<a/>")->save(Path("a.xml")); }), 70);
  EXPECT_EQ(ReadFile("a.xml"), "<old/>");
  EXPECT_EQ(FilesInFolder(), 1u);
}

}  // namespace
