// Documents whose file another program changes as well: nobody's work is lost.
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <system_error>
#include <thread>
#include <vector>

#include "platform/base/content_digest.hpp"
#include "platform/base/descriptor.hpp"
#include "platform/base/file_replacement.hpp"
#include "tests/msxml2/xml_fixture.hpp"

using MSXML2::DOMDocumentPtr;
using orvane_test::ErrorOf;

namespace {

class ChangedFileTest : public orvane_test::XmlTest {
 protected:
  DOMDocumentPtr Loaded(const std::string& name) {
    const DOMDocumentPtr document = NewDocument();
    EXPECT_TRUE(document->load(Path(name))) << document->parseErrorReason();
    return document;
  }
  void ExpectRefused(const DOMDocumentPtr& document, const std::string& name) {
    const automation::Error error = ErrorOf([&] { document->save(Path(name)); });
    EXPECT_EQ(error.Number(), MSXML2::kFileChanged);
    EXPECT_EQ(error.Description(), Path(name) + " has been changed by another program.");
  }
};

TEST_F(ChangedFileTest, AFileThatWasChangedInPlaceAtTheSameSizeIsNotReplaced) {
  WriteFile("a.xml", "<a>1</a>");
  const DOMDocumentPtr document = Loaded("a.xml");
  document->documentElement()->setText("mine");
  WriteFile("a.xml", "<a>2</a>");
  ExpectRefused(document, "a.xml");
  EXPECT_EQ(ReadFile("a.xml"), "<a>2</a>");
  EXPECT_EQ(FilesInFolder(), 1U);
}

TEST_F(ChangedFileTest, AFileThatWasReplacedOrIsGoneIsNotReplaced) {
  WriteFile("a.xml", "<a>1</a>");
  const DOMDocumentPtr mine = Loaded("a.xml");
  const DOMDocumentPtr theirs = Loaded("a.xml");
  theirs->documentElement()->setText("theirs");
  theirs->save(Path("a.xml"));
  mine->documentElement()->setText("mine");
  ExpectRefused(mine, "a.xml");
  EXPECT_EQ(ReadFile("a.xml"), "<a>theirs</a>\n");
  unlink(NativePath("a.xml").c_str());
  ExpectRefused(mine, "a.xml");
  EXPECT_EQ(FilesInFolder(), 0U) << "it is not made again either";
}

TEST_F(ChangedFileTest, AFileWithTheSameContentIsTheSameWhoeverWroteIt) {
  WriteFile("a.xml", "<a>1</a>");
  const DOMDocumentPtr document = Loaded("a.xml");
  WriteFile("b.xml", "<a>1</a>");
  ASSERT_EQ(rename(NativePath("b.xml").c_str(), NativePath("a.xml").c_str()), 0);
  document->documentElement()->setText("2");
  document->save(Path("a.xml"));
  EXPECT_EQ(ReadFile("a.xml"), "<a>2</a>\n");
}

TEST_F(ChangedFileTest, ADocumentGoesByWhatItSavedLast) {
  WriteFile("a.xml", "<a>1</a>");
  const DOMDocumentPtr document = Loaded("a.xml");
  for (const char* text : {"2", "3"}) {
    document->documentElement()->setText(text);
    document->save(Path("a.xml"));
  }
  EXPECT_EQ(ReadFile("a.xml"), "<a>3</a>\n");
  WriteFile("a.xml", "<a>4</a>");
  ExpectRefused(document, "a.xml");
}

TEST_F(ChangedFileTest, ADocumentThatTakesOverTheStateReplacesWhatTheOtherSaved) {
  WriteFile("a.xml", "<a>1</a>");
  const DOMDocumentPtr working = Loaded("a.xml");
  const DOMDocumentPtr snapshot = Loaded("a.xml");
  working->documentElement()->setText("2");
  working->save(Path("a.xml"));
  ExpectRefused(snapshot, "a.xml");
  snapshot->setFileState(working->fileState());
  snapshot->save(Path("a.xml"));
  EXPECT_EQ(ReadFile("a.xml"), "<a>1</a>") << "byte for byte";
}

TEST_F(ChangedFileTest, AFileThatTookTheNameOverIsNotReplaced) {
  WriteFile("A.xml", "<a>1</a>");
  const DOMDocumentPtr document = Loaded("a.xml");
  document->documentElement()->setText("mine");
  WriteFile("a.xml", "<a>theirs</a>");
  ExpectRefused(document, "a.xml");
  EXPECT_EQ(ReadFile("a.xml"), "<a>theirs</a>");
  EXPECT_EQ(ReadFile("A.xml"), "<a>1</a>");
  document->save(Path("A.xml"));
  EXPECT_EQ(ReadFile("A.xml"), "<a>mine</a>\n");
}

TEST_F(ChangedFileTest, AFileThatWasRenamedWithinItsNameIsNotMadeAnew) {
  WriteFile("A.xml", "<a>1</a>");
  const DOMDocumentPtr document = Loaded("a.xml");
  unlink(NativePath("A.xml").c_str());
  ExpectRefused(document, "a.xml");
  EXPECT_EQ(FilesInFolder(), 0U);
}

TEST_F(ChangedFileTest, ADocumentThatKnowsNothingOfAFileReplacesIt) {
  WriteFile("a.xml", "<a>1</a>");
  Parsed("<b/>")->save(Path("a.xml"));
  EXPECT_EQ(ReadFile("a.xml"), "<b/>\n");
}

TEST_F(ChangedFileTest, WritersThatBeginAnewWhenTheyAreRefusedLoseNothing) {
  WriteFile("a.xml", "<a/>");
  constexpr int kWriters = 4;
  constexpr int kEntries = 15;
  std::atomic<int> refused{0};
  std::vector<std::thread> writers;
  for (int writer = 0; writer < kWriters; ++writer) {
    writers.emplace_back([&] {
      orvane_test::TestRuntime runtime;
      MSXML2::RegisterClasses(runtime.runtime.classes);
      for (int entry = 0; entry < kEntries;) {
        const auto document = automation::CreateObject<MSXML2::DOMDocument>("MSXML2.DOMDocument");
        ASSERT_TRUE(document->load(Path("a.xml")));
        AddElement(document, document->documentElement(), "e", "");
        try {
          document->save(Path("a.xml"));
          ++entry;
        } catch (const automation::Error& error) {
          ASSERT_EQ(error.Number(), MSXML2::kFileChanged);
          ++refused;
        }
      }
    });
  }
  for (std::thread& writer : writers) writer.join();
  EXPECT_EQ(Loaded("a.xml")->selectNodes("//e")->length(), std::size_t{kWriters * kEntries});
  EXPECT_EQ(FilesInFolder(), 1U);
}

// --- The lock ---

TEST_F(ChangedFileTest, ALockThatIsNeverGivenUpIsNotWaitedForForEver) {
  WriteFile("a.xml", "<a/>");
  const base::Descriptor held(open(NativePath("a.xml").c_str(), O_RDONLY | O_CLOEXEC));
  ASSERT_EQ(flock(held.Get(), LOCK_EX), 0);
  struct stat status {};
  ASSERT_EQ(stat(NativePath("a.xml").c_str(), &status), 0);
  base::FileReplacement file(NativePath("a.xml"), status);
  file.Write("<b/>");
  try {
    file.CommitOver([](int) { return true; }, base::FileReplacement::Durability::Content,
                    std::chrono::milliseconds(30));
    ADD_FAILURE() << "not refused";
  } catch (const std::system_error& error) {
    EXPECT_EQ(error.code().value(), EBUSY);
  }
  EXPECT_EQ(ReadFile("a.xml"), "<a/>");
}

TEST_F(ChangedFileTest, WhoWaitedForTheLockOfAFileThatWasReplacedLooksAtTheNewOne) {
  WriteFile("a.xml", "<a/>");
  const base::Descriptor held(open(NativePath("a.xml").c_str(), O_RDONLY | O_CLOEXEC));
  ASSERT_EQ(flock(held.Get(), LOCK_EX), 0);
  struct stat status {};
  ASSERT_EQ(stat(NativePath("a.xml").c_str(), &status), 0);
  base::FileReplacement file(NativePath("a.xml"), status);
  file.Write("<b/>");
  std::thread holder([&] {
    WriteFile("new.xml", "<c/>");
    EXPECT_EQ(rename(NativePath("new.xml").c_str(), NativePath("a.xml").c_str()), 0);
    flock(held.Get(), LOCK_UN);
  });
  std::string seen(4, '\0');
  file.CommitOver([&](int descriptor) { return read(descriptor, seen.data(), seen.size()) == 4; },
                  base::FileReplacement::Durability::Content);
  holder.join();
  EXPECT_EQ(seen, "<c/>");
}

TEST(ContentDigestTest, TellsContentsApartAndNotTheirPieces) {
  const auto digest = [](const std::vector<std::string>& pieces) {
    base::ContentDigest content;
    for (const std::string& piece : pieces) content.Add(piece);
    return content.Get();
  };
  const std::string text = "0123456789abcdefghijklmnopq";
  for (std::size_t first = 0; first <= text.size(); ++first) {
    for (std::size_t second = first; second <= text.size(); ++second) {
      EXPECT_EQ(digest({text.substr(0, first), text.substr(first, second - first), text.substr(second)}),
                digest({text}));
    }
    EXPECT_NE(digest({text.substr(0, first) + "!" + text.substr(first)}), digest({text})) << first;
  }
  EXPECT_NE(digest({"0123456789!bcdefgh"}), digest({"0123456789abcdefgh"}));
  EXPECT_NE(digest({std::string(1, '\0')}), digest({std::string(2, '\0')}));
  EXPECT_NE(digest({""}), digest({std::string(1, '\0')}));
  EXPECT_NE(digest({"aaaaaaaabbbbbbbb"}), digest({"bbbbbbbbaaaaaaaa"}));
}

}  // namespace
