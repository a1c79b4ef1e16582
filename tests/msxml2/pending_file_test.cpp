// Files that are made, loaded and saved before anybody relies on them: they get their names, and are synced,
// when somebody does.
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <memory>
#include <system_error>

#include "platform/base/pending_files.hpp"
#include "platform/scripting/file_system_object.hpp"
#include "platform/scripting/local/pending.hpp"
#include "platform/scripting/local/registration.hpp"
#include "tests/msxml2/xml_fixture.hpp"

using MSXML2::DOMDocumentPtr;
using orvane_test::ErrorOf;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

namespace {

class PendingFileTest : public orvane_test::XmlTest {
 protected:
  PendingFileTest() {
    automation::ClassTable classes;
    MSXML2::RegisterClasses(classes, {.pending = pending_});
    Scripting::local::RegisterClasses(classes, {}, nullptr, nullptr, pending_);
    runtime_.runtime.classes = std::move(classes);
    files_ = automation::CreateObject<Scripting::FileSystemObject>("Scripting.FileSystemObject");
  }

  void CreateBare(std::string_view name) {
    const Scripting::TextStreamPtr stream = files_->CreateTextFile(Path(name), false);
    stream->Write("<a></a>");
    stream->Close();
  }
  DOMDocumentPtr Loaded(std::string_view name) {
    const DOMDocumentPtr document = NewDocument();
    EXPECT_TRUE(document->load(Path(name))) << document->parseErrorReason();
    return document;
  }
  void Save(const DOMDocumentPtr& document, std::string_view name, std::string_view text) {
    document->documentElement()->setText(text);
    document->save(Path(name));
  }
  std::vector<std::string> Visible() const {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(NativePath(""))) {
      const std::string name = entry.path().filename();
      if (!name.starts_with('.')) names.push_back(name);
    }
    return names;
  }
  int FailureToMakeDurable() {
    try {
      pending_->MakeDurable();
      return 0;
    } catch (const std::system_error& error) {
      return error.code().value();
    }
  }

  const std::shared_ptr<base::PendingFiles> pending_ = std::make_shared<base::PendingFiles>();
  Scripting::FileSystemObjectPtr files_;
};

TEST_F(PendingFileTest, ANewFileIsMadeLoadedAndSavedBeforeItHasItsName) {
  CreateBare("a.xml");
  const DOMDocumentPtr document = Loaded("a.xml");
  Save(document, "a.xml", "one");
  EXPECT_EQ(Loaded("a.xml")->documentElement()->text(), "one");
  Save(document, "a.xml", "two");
  EXPECT_THAT(Visible(), IsEmpty());
  pending_->MakeDurable();
  EXPECT_EQ(ReadFile("a.xml"), "<a>two</a>\n");
  EXPECT_EQ(FilesInFolder(), 1U) << "nothing stays beside it";
  Save(document, "a.xml", "three");
  EXPECT_EQ(ReadFile("a.xml"), "<a>three</a>\n") << "it is no new file any more";
}

TEST_F(PendingFileTest, AFormerStateCanBePutBack) {
  CreateBare("a.xml");
  const DOMDocumentPtr document = Loaded("a.xml");
  const DOMDocumentPtr snapshot = Loaded("a.xml");
  Save(document, "a.xml", "one");
  snapshot->setFileState(document->fileState());
  snapshot->save(Path("a.xml"));
  pending_->MakeDurable();
  EXPECT_EQ(ReadFile("a.xml"), "<a></a>");
}

TEST_F(PendingFileTest, AFileOfWhichAnOlderStateIsKnownIsNotReplaced) {
  CreateBare("a.xml");
  const DOMDocumentPtr older = Loaded("a.xml");
  Save(Loaded("a.xml"), "a.xml", "newer");
  const automation::Error error = ErrorOf([&] { Save(older, "a.xml", "older"); });
  EXPECT_EQ(error.Number(), MSXML2::kFileChanged);
  pending_->MakeDurable();
  EXPECT_EQ(ReadFile("a.xml"), "<a>newer</a>\n");
}

TEST_F(PendingFileTest, AFileThatIsThereIsReplacedAtOnce) {
  WriteFile("a.xml", "<a>0</a>");
  Save(Loaded("a.xml"), "a.xml", "1");
  EXPECT_EQ(ReadFile("a.xml"), "<a>1</a>\n");
}

TEST_F(PendingFileTest, WhoeverLooksForAFileFindsIt) {
  CreateBare("a.xml");
  EXPECT_TRUE(files_->FileExists(Path("A.XML")));
  EXPECT_THAT(Visible(), ElementsAre("a.xml"));
  CreateBare("b.xml");
  EXPECT_EQ(files_->GetFolder(Path("."))->Files().size(), 2U);
  CreateBare("c.xml");
  EXPECT_EQ(files_->OpenTextFile(Path("c.xml"), Scripting::IOMode::ForReading, false)->ReadAll(), "<a></a>");
  CreateBare("d.xml");
  files_->DeleteFile(Path("d.xml"), false);
  EXPECT_THAT(Visible(), UnorderedElementsAre("a.xml", "b.xml", "c.xml"));
}

TEST_F(PendingFileTest, AnotherProgramsFileStaysAndNobodyReliesOnOurs) {
  CreateBare("a.xml");
  const DOMDocumentPtr document = Loaded("a.xml");
  WriteFile("a.xml", "<theirs/>");
  EXPECT_EQ(FailureToMakeDurable(), EEXIST);
  EXPECT_EQ(ErrorOf([&] { Scripting::local::MakeDurable(*pending_); }).Number(), 58) << "again";
  const automation::Error error = ErrorOf([&] { Save(document, "a.xml", "ours"); });
  EXPECT_EQ(error.Number(), MSXML2::kFileChanged);
  EXPECT_EQ(FailureToMakeDurable(), 0) << "it has been dealt with";
  EXPECT_EQ(ReadFile("a.xml"), "<theirs/>");
  EXPECT_EQ(FilesInFolder(), 1U);
}

TEST_F(PendingFileTest, AFailureThatALookHasMetIsMetAgainByWhoeverRelies) {
  CreateBare("a.xml");
  WriteFile("a.xml", "<theirs/>");
  EXPECT_FALSE(files_->FileExists(Path("c.xml")));
  EXPECT_EQ(FailureToMakeDurable(), EEXIST);
}

TEST_F(PendingFileTest, WhatIsLeftGetsItsNameAtTheEnd) {
  CreateBare("a.xml");
  files_.reset();
  runtime_.runtime.classes = automation::ClassTable();
  const_cast<std::shared_ptr<base::PendingFiles>&>(pending_).reset();
  EXPECT_EQ(ReadFile("a.xml"), "<a></a>");
}

TEST_F(PendingFileTest, AFolderThatIsGoneKeepsNobodyFromGoingOn) {
  std::filesystem::create_directory(NativePath("sub"));
  CreateBare("sub\\a.xml");
  pending_->Publish();
  std::filesystem::remove_all(NativePath("sub"));
  EXPECT_EQ(FailureToMakeDurable(), 0);
}

}  // namespace
