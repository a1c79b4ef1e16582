#include <gmock/gmock.h>

#include <memory>
#include <string>
#include <vector>

#include "components/interfaces/log.hpp"
#include "effects/failure_listener.hpp"
#include "platform/automation/runtime.hpp"
#include "platform/cdo/message.hpp"
#include "platform/scripting/file_system_object.hpp"
#include "platform/scripting/memory/memory_disk.hpp"
#include "platform/scripting/memory/registration.hpp"
#include "tests/support/raised_error.hpp"

namespace {

using orvane_test::ErrorOf;
using testing::ElementsAre;

class Heard : public effects::FailureListener {
 public:
  void MailRefused(std::string_view to, std::string_view subject,
                   const automation::Error& reason) noexcept override {
    Add("mail", to, subject, reason);
  }
  void FolderNotDeleted(std::string_view path, const automation::Error& reason) noexcept override {
    Add("folder", path, "", reason);
  }
  void ErrorLogged(std::string_view source, std::string_view message) noexcept override {
    all.push_back("entry " + std::string(source) + ": " + std::string(message));
  }

  std::vector<std::string> all;

 private:
  void Add(const char* what, std::string_view first, std::string_view second,
           const automation::Error& reason) {
    all.push_back(std::string(what) + " <" + std::string(first) + "> <" + std::string(second) + "> " +
                  std::to_string(reason.Number()));
  }
};

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

class RecorderTest : public testing::Test {
 protected:
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
    effects::RecordMails(runtime_.classes, real_, heard_);
  }

  Heard heard_;
  automation::ClassTable real_;
  automation::Runtime runtime_;
  automation::RuntimeScope scope_{runtime_};
};

TEST_F(RecorderTest, HearsOfAMailThatIsNotTaken) {
  MailsFailAt("send");
  EXPECT_EQ(ErrorOf(&Mail).Number(), 61);
  EXPECT_THAT(heard_.all, ElementsAre("mail <jdoe@x.example> <Case 26> 61"));
}

TEST_F(RecorderTest, HearsOfAnAttachmentThatIsNotTaken) {
  MailsFailAt("AddAttachment");
  EXPECT_EQ(ErrorOf(&Mail).Number(), 61);
  EXPECT_THAT(heard_.all, ElementsAre("mail <jdoe@x.example> <Case 26> 61"));
}

TEST_F(RecorderTest, HearsOfAMailThatCannotBeMade) {
  effects::RecordMails(runtime_.classes, real_, heard_);
  EXPECT_EQ(ErrorOf(&Mail).Number(), 429);
  EXPECT_THAT(heard_.all, ElementsAre("mail <> <> 429"));
}

TEST_F(RecorderTest, HearsNothingOfAMailThatIsTaken) {
  MailsFailAt("nowhere");
  Mail();
  EXPECT_THAT(heard_.all, testing::IsEmpty());
}

TEST_F(RecorderTest, HearsOfEveryEntryInTheErrorLogAndPassesItOn) {
  real_.Register(Vantrel::kLogProgId, [] { return std::make_shared<FailingLog>(); });
  effects::RecordErrors(runtime_.classes, real_, heard_);
  automation::Variant result;
  const auto log = automation::CreateObject<Vantrel::Log>(Vantrel::kLogProgId);
  log->WriteLogEntry("here", "first", 7, result);
  EXPECT_EQ(result, automation::Variant(true));
  EXPECT_EQ(ErrorOf([&] { log->WriteLogEntry("there", "second", 0, result); }).Number(), 61);
  EXPECT_THAT(heard_.all, ElementsAre("entry here: first", "entry there: second"));
}

TEST_F(RecorderTest, HearsOfAFolderThatCannotBeRemovedAndPassesTheRestOn) {
  const auto disk = std::make_shared<Scripting::memory::MemoryDisk>();
  disk->AddDrive('C');
  disk->AddFolder("C:\\a");
  Scripting::memory::RegisterClasses(real_, disk);
  effects::RecordFolders(runtime_.classes, real_, heard_);
  const auto files =
      automation::CreateObject<Scripting::FileSystemObject>(Scripting::kFileSystemObjectProgId);
  EXPECT_TRUE(files->FolderExists("C:\\a"));
  files->DeleteFolder("C:\\a", false);
  EXPECT_FALSE(files->FolderExists("C:\\a"));
  EXPECT_EQ(ErrorOf([&] { files->DeleteFolder("C:\\a", false); }).Number(), 76);
  EXPECT_THAT(heard_.all, ElementsAre("folder <C:\\a> <> 76"));
}

}  // namespace
