#include "effects/wrappers.hpp"

#include <gmock/gmock.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "components/interfaces/backend_calls.hpp"
#include "components/interfaces/escalation.hpp"
#include "components/interfaces/file_handling.hpp"
#include "components/interfaces/log.hpp"
#include "components/interfaces/service_request.hpp"
#include "platform/automation/runtime.hpp"
#include "platform/cdo/message.hpp"
#include "platform/scripting/dictionary/registration.hpp"
#include "platform/scripting/file_system_object.hpp"
#include "tests/doubles/memory/memory_disk.hpp"
#include "tests/doubles/memory/registration.hpp"
#include "tests/effects/heard_lines.hpp"
#include "tests/support/raised_error.hpp"
#include "tests/support/test_runtime.hpp"

namespace {

using orvane_test::ErrorOf;
using testing::ElementsAre;
using testing::IsEmpty;

// Fails in the member of this name.
class FailingMessage : public CDO::Message {
 public:
  explicit FailingMessage(std::string at) : at_(std::move(at)) {}
  void setFrom(std::string_view) override { At("setFrom"); }
  void setTo(std::string_view) override { At("setTo"); }
  void setSubject(std::string_view) override { At("setSubject"); }
  void setMimeFormatted(bool) override {}
  void setTextBody(std::string_view) override {}
  void AddAttachment(std::string_view) override { At("AddAttachment"); }
  void send() override { At("send"); }

 private:
  void At(const char* member) const {
    if (at_ == member) throw automation::Error(automation::ErrorNumber::DiskFull, "CDO.Message");
  }
  const std::string at_;
};

class FailingLog : public Vantrel::Log {
 public:
  void WriteLogEntry(std::string_view, std::string_view message, std::int32_t code,
                     automation::Variant& result) override {
    if (message == "second") throw automation::Error(automation::ErrorNumber::DiskFull);
    result = code == 7;
  }
};

// Takes everything, or fails.
class SharedFiles : public OrvCommonMTS::FileHandling {
 public:
  explicit SharedFiles(bool fails) : fails_(fails) {}
  bool FileExists(std::string_view, const automation::VariantArray&) override { return true; }
  void SetInUse(std::string_view, std::int16_t) override { Work(); }
  void FetchFile(std::string_view, std::string_view, std::string_view, OrvCommonMTS::FolderKind,
                 std::int16_t) override {
    Work();
  }
  bool IsInUse(std::string_view) override { return true; }
  void StoreFile(std::string_view, OrvCommonMTS::FolderKind) override { Work(); }
  automation::Variant DeleteAgedFiles(std::string_view, std::int32_t, OrvCommonMTS::FolderKind) override {
    Work();
    return 3;
  }
  automation::Variant DeleteListedItems(std::string_view, const automation::Variant&,
                                        OrvCommonMTS::FolderKind) override {
    Work();
    return 2;
  }

 private:
  void Work() const {
    if (fails_) throw automation::Error(automation::ErrorNumber::DeviceIoError);
  }
  const bool fails_;
};

struct Calls : OrvaneBackend::Calls {
  void UpdateCall(std::string& message, const Scripting::DictionaryPtr&) override { message = "taken"; }
};
struct Escalation : OrvaneProcessMTS::SolveOnNoResponse {
  void SendingEscalationMails() override { throw automation::Error(automation::ErrorNumber::DiskFull); }
};
struct ProspectState : OrvServiceRequest::ProspectState {
  void QuestionConcluded(std::string_view, std::string_view, bool) override {}
};
struct QuestionState : OrvServiceRequest::QuestionState {
  void Concluded(std::int32_t) override {}
};

class WrappersTest : public testing::Test {
 protected:
  WrappersTest()
      : recorder_({.failureIn = [](std::string_view line) -> std::optional<std::string> {
          if (!line.starts_with("failed: ")) return std::nullopt;
          return std::string(line.substr(8));
        }}) {
    recorder_.Add(heard_);
    runtime_.locale = std::make_shared<orvane_test::FakeLocale>();
  }

  // As the job does it.
  static void Mail() {
    const auto message = automation::CreateObject<CDO::Message>("CDO.Message");
    message->setFrom("service@orvane.example");
    message->setTo("jdoe@x.example");
    message->setSubject("Case 26");
    message->AddAttachment("page");
    message->send();
  }
  void MailsFailAt(const char* member) {
    real_.Register("CDO.Message", [member] { return std::make_shared<FailingMessage>(member); });
    effects::RecordMails(runtime_.classes, real_, recorder_);
  }

  static effects::Places PlacesInMemory() {
    return {.native =
                [](std::string_view path, bool) {
                  std::string text(path);
                  std::replace(text.begin(), text.end(), '\\', '/');
                  return text;
                },
            .folder = [](const std::string& path) { return path.substr(0, path.rfind('/')); },
            .isLog = [](const std::string& path) { return path.starts_with("C:/OrvLog"); }};
  }

  Scripting::FileSystemObjectPtr Files() {
    const auto disk = std::make_shared<Scripting::memory::MemoryDisk>();
    disk->AddDrive('C');
    disk->AddFolder("C:\\a");
    disk->AddFolder("C:\\OrvLog");
    Scripting::memory::RegisterClasses(real_, disk);
    effects::RecordFiles(runtime_.classes, real_, recorder_, PlacesInMemory());
    return automation::CreateObject<Scripting::FileSystemObject>(Scripting::kFileSystemObjectProgId);
  }

  orvane_test::HeardLines heard_;
  effects::Recorder recorder_;
  automation::ClassTable real_;
  automation::Runtime runtime_;
  automation::RuntimeScope scope_{runtime_};
};

constexpr const char* kMailSent = R"j({"op":"mail.send","to":"jdoe@x.example","subject":"Case 26"})j";
constexpr const char* kMailFailed = R"j({"op":"failed","of":1,"error":"Disk full (61)","outcome":"no"})j";

TEST_F(WrappersTest, AMailIsToldBeforeItIsSent) {
  MailsFailAt("nowhere");
  Mail();
  EXPECT_THAT(heard_.all, ElementsAre(kMailSent));
}

TEST_F(WrappersTest, AMailThatIsNotTakenIsToldAsFailed) {
  MailsFailAt("send");
  EXPECT_EQ(ErrorOf(&Mail).Number(), 61);
  EXPECT_THAT(heard_.all, ElementsAre(kMailSent, kMailFailed));
  EXPECT_EQ(recorder_.CountsSoFar().Of("mail.send").failed, 1U);
  EXPECT_EQ(recorder_.CountsSoFar().Of("mail.send").done, 0U);
}

TEST_F(WrappersTest, AnAttachmentThatIsNotTakenIsAMailThatFails) {
  MailsFailAt("AddAttachment");
  EXPECT_EQ(ErrorOf(&Mail).Number(), 61);
  EXPECT_THAT(heard_.all, ElementsAre(kMailSent, kMailFailed));
}

TEST_F(WrappersTest, AMailThatCannotBeMadeIsAMailThatFails) {
  effects::RecordMails(runtime_.classes, real_, recorder_);
  EXPECT_EQ(ErrorOf(&Mail).Number(), 429);
  EXPECT_THAT(heard_.all,
              ElementsAre(R"j({"op":"mail.send","to":"","subject":""})j",
                          R"j({"op":"failed","of":1,"error":"ActiveX component can't create object (429)",)j"
                          R"j("outcome":"no"})j"));
}

TEST_F(WrappersTest, AMailThatCannotBeWrittenDownIsNotSent) {
  MailsFailAt("send");
  heard_.refuses = true;
  EXPECT_EQ(ErrorOf(&Mail).Number(), 61);
  EXPECT_THAT(heard_.all, ElementsAre(kMailSent)) << "told, refused, and never handed on";
}

TEST_F(WrappersTest, EveryEntryInTheErrorLogIsToldAndPassedOn) {
  real_.Register(Vantrel::kLogProgId, [] { return std::make_shared<FailingLog>(); });
  effects::RecordErrors(runtime_.classes, real_, recorder_);
  automation::Variant result;
  const auto log = automation::CreateObject<Vantrel::Log>(Vantrel::kLogProgId);
  log->WriteLogEntry("here", "first", 7, result);
  EXPECT_EQ(result, automation::Variant(true));
  EXPECT_EQ(ErrorOf([&] { log->WriteLogEntry("there", "second", 0, result); }).Number(), 61);
  EXPECT_THAT(heard_.all,
              ElementsAre(R"j({"op":"log","text":"first"})j", R"j({"op":"log","text":"second"})j"));
}

TEST_F(WrappersTest, FilesAndFoldersAreToldByTheirFinalPaths) {
  const auto files = Files();
  files->CreateFolder("C:\\a\\b");
  const auto stream = files->CreateTextFile("C:\\a\\b\\page.htm", false);
  stream->WriteLine("text");
  EXPECT_THAT(heard_.all, ElementsAre(R"j({"op":"folder.create","path":"C:/a/b"})j"))
      << "the file is not there before it is closed";
  stream->Close();
  files->OpenTextFile("C:\\a\\b\\page.htm", Scripting::IOMode::ForAppending, false)->Close();
  EXPECT_EQ(files->OpenTextFile("C:\\a\\b\\page.htm", Scripting::IOMode::ForReading, false)->ReadAll(),
            "text\r\n");
  files->DeleteFile("C:\\a\\b\\page.htm", false);
  files->DeleteFolder("C:\\a\\b", false);
  EXPECT_THAT(heard_.all, ElementsAre(testing::_, R"j({"op":"file.write","path":"C:/a/b/page.htm"})j",
                                      R"j({"op":"file.write","path":"C:/a/b/page.htm"})j",
                                      R"j({"op":"file.delete","path":"C:/a/b/page.htm"})j",
                                      R"j({"op":"folder.delete","path":"C:/a/b"})j"));
  EXPECT_FALSE(files->FolderExists("C:\\a\\b"));
}

TEST_F(WrappersTest, AFileThatIsOpenedForWritingThroughItsFolderIsTold) {
  const auto files = Files();
  files->CreateTextFile("C:\\a\\x", false)->Close();
  heard_.all.clear();
  files->GetFolder("C:\\a")->Files()[0]->OpenAsTextStream(Scripting::IOMode::ForAppending)->Close();
  files->GetFile("C:\\a\\x")->OpenAsTextStream(Scripting::IOMode::ForReading)->Close();
  EXPECT_THAT(heard_.all, ElementsAre(R"j({"op":"file.write","path":"C:/a/x"})j"));
}

TEST_F(WrappersTest, AFolderThatCannotBeRemovedIsToldAsFailed) {
  const auto files = Files();
  EXPECT_EQ(ErrorOf([&] { files->DeleteFolder("C:\\none", false); }).Number(), 76);
  EXPECT_THAT(heard_.all,
              ElementsAre(R"j({"op":"folder.delete","path":"C:/none"})j",
                          R"j({"op":"failed","of":1,"error":"Path not found (76)","outcome":"no"})j"));
}

TEST_F(WrappersTest, WritingARunLogIsNoEffectButItsFailureLinesAreTold) {
  const auto files = Files();
  const auto log = files->CreateTextFile("C:\\OrvLog\\run.txt", false);
  log->WriteLine("started");
  log->WriteLine("failed: the second customer");
  log->Close();
  files->GetFile("C:\\OrvLog\\run.txt")->OpenAsTextStream(Scripting::IOMode::ForAppending)->Close();
  EXPECT_THAT(heard_.all, ElementsAre(R"j({"op":"log","text":"the second customer"})j"));
}

TEST_F(WrappersTest, WhatIsDoneInTheSharedFoldersIsTold) {
  real_.Register(OrvCommonMTS::kFileHandlingProgId, [] { return std::make_shared<SharedFiles>(false); });
  effects::RecordSharedFiles(runtime_.classes, real_, recorder_, PlacesInMemory());
  const auto files = automation::CreateObject<OrvCommonMTS::FileHandling>(OrvCommonMTS::kFileHandlingProgId);
  using OrvCommonMTS::FolderKind;
  EXPECT_TRUE(files->FileExists("x", {}));
  files->SetInUse("BP7_a.xml", -1);
  files->FetchFile("ftp://u:p@shared/x", "BP7_a.xml", "C:\\a\\BP7_a.xml", FolderKind::Archives, 10);
  files->StoreFile("C:\\a\\BP7_a.xml", FolderKind::Archives);
  EXPECT_EQ(files->DeleteAgedFiles("ftp://us@er:p@shared/x", 60, FolderKind::Chat), automation::Variant(3));
  EXPECT_EQ(files->DeleteListedItems("ftp://u:p@shared/x", automation::VariantArray{"1Q", "", "2Q"},
                                     FolderKind::QuestionFolders),
            automation::Variant(2));
  EXPECT_THAT(heard_.all,
              ElementsAre(R"j({"op":"shared.mark","name":"BP7_a.xml","folder":""})j",
                          R"j({"op":"shared.fetch","path":"C:/a/BP7_a.xml","folder":"Archives"})j",
                          R"j({"op":"shared.store","path":"C:/a/BP7_a.xml","folder":"Archives"})j",
                          R"j({"op":"shared.delete","path":"ftp://shared/x","folder":"CHAT"})j",
                          R"j({"op":"shared.delete","name":"1Q","folder":"SRATTACHMENTS"})j",
                          R"j({"op":"shared.delete","name":"2Q","folder":"SRATTACHMENTS"})j"));
}

TEST_F(WrappersTest, OldSharedFilesCountByTheirNumber) {
  const auto files = [this](bool fails) {
    automation::ClassTable real;
    real.Register(OrvCommonMTS::kFileHandlingProgId,
                  [fails] { return std::make_shared<SharedFiles>(fails); });
    runtime_.classes = {};
    effects::RecordSharedFiles(runtime_.classes, real, recorder_, PlacesInMemory());
    return automation::CreateObject<OrvCommonMTS::FileHandling>(OrvCommonMTS::kFileHandlingProgId);
  };
  files(false)->DeleteAgedFiles("x", 60, OrvCommonMTS::FolderKind::Chat);
  EXPECT_EQ(recorder_.CountsSoFar().Of("shared.delete").done, 3U);
  // Some may be gone when it fails.
  EXPECT_THROW(files(true)->DeleteAgedFiles("x", 60, OrvCommonMTS::FolderKind::Chat), automation::Error);
  EXPECT_EQ(recorder_.CountsSoFar().Of("shared.delete").unknown, 1U);
}

TEST_F(WrappersTest, OfAListThatFailsNobodyKnowsWhichItemsAreGone) {
  real_.Register(OrvCommonMTS::kFileHandlingProgId, [] { return std::make_shared<SharedFiles>(true); });
  effects::RecordSharedFiles(runtime_.classes, real_, recorder_, PlacesInMemory());
  const auto files = automation::CreateObject<OrvCommonMTS::FileHandling>(OrvCommonMTS::kFileHandlingProgId);
  EXPECT_EQ(ErrorOf([&] {
              files->DeleteListedItems("x", automation::VariantArray{"1Q", "2Q"},
                                       OrvCommonMTS::FolderKind::QuestionFolders);
            }).Number(),
            57);
  ASSERT_EQ(heard_.all.size(), 4U);
  EXPECT_THAT(heard_.all[3], testing::HasSubstr(R"j("of":2,)j"));
  EXPECT_THAT(heard_.all[3], testing::HasSubstr(R"j("outcome":"unknown")j"));
}

TEST_F(WrappersTest, CallsOfOtherSystemsAreToldWithTheirArguments) {
  Scripting::RegisterDictionary(runtime_.classes);
  real_.Register(OrvaneBackend::kCallsBProgId, [] { return std::make_shared<Calls>(); });
  real_.Register(OrvaneProcessMTS::kSolveOnNoResponseProgId, [] { return std::make_shared<Escalation>(); });
  real_.Register(OrvServiceRequest::kProspectStateClass, [] { return std::make_shared<ProspectState>(); });
  real_.Register(OrvServiceRequest::kQuestionStateClass, [] { return std::make_shared<QuestionState>(); });
  effects::RecordCalls(runtime_.classes, real_, recorder_);
  EXPECT_FALSE(runtime_.classes.Contains(OrvaneBackend::kCallsAProgId));

  const auto values = automation::CreateObject<Scripting::Dictionary>("Scripting.Dictionary");
  values->Add("CALL", "4711");
  values->Add("STATUS", 160);
  std::string message;
  automation::CreateObject<OrvaneBackend::Calls>(OrvaneBackend::kCallsBProgId)->UpdateCall(message, values);
  EXPECT_EQ(message, "taken");
  automation::CreateObject<OrvServiceRequest::ProspectState>(OrvServiceRequest::kProspectStateClass)
      ->QuestionConcluded("a@x", "", true);
  automation::CreateObject<OrvServiceRequest::QuestionState>(OrvServiceRequest::kQuestionStateClass)
      ->Concluded(26);
  EXPECT_EQ(ErrorOf([] {
              automation::CreateObject<OrvaneProcessMTS::SolveOnNoResponse>(
                  OrvaneProcessMTS::kSolveOnNoResponseProgId)
                  ->SendingEscalationMails();
            }).Number(),
            61);
  EXPECT_THAT(
      heard_.all,
      ElementsAre(
          R"j({"op":"erp.call","component":"OrvaneBackendB.Calls","member":"UpdateCall","arguments":{"CALL":"4711","STATUS":160}})j",
          R"j({"op":"event","component":"{358D4659-648D-403F-8807-B3C2A7F9BFD4}","member":"QuestionConcluded",)j"
          R"j("arguments":{"emailAddress":"a@x","comment":"","concluded":true}})j",
          R"j({"op":"event","component":"{79AC3288-D049-4571-B8E0-58D199F42F54}","member":"Concluded",)j"
          R"j("arguments":{"questionId":26}})j",
          R"j({"op":"event","component":"OrvaneProcessMTS.SolveOnNoResponse",)j"
          R"j("member":"SendingEscalationMails","arguments":{}})j",
          R"j({"op":"failed","of":4,"error":"Disk full (61)","outcome":"no"})j"));
}

}  // namespace
